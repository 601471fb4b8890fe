# Start-up on desktops that lack something (no session bus, no tray host, an
# unwritable settings folder, Wayland without X11).
add_test(NAME e2e_degraded_startup
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/e2e/degraded_startup.sh $<TARGET_FILE:narv>)
set_tests_properties(e2e_degraded_startup PROPERTIES TIMEOUT 180)
