# Gentler interruptions: the core on stepped time, and the real program on a
# private bus and X server with a real notification server (dunst).
narv_add_core_test(tst_interruptions interruptions/tst_interruptions.cpp)
add_test(NAME e2e_interruptions
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/interruptions/e2e_interruptions.sh $<TARGET_FILE:narv>)
set_tests_properties(e2e_interruptions PROPERTIES TIMEOUT 300)
# Under a real window manager (openbox); the heads-up through the real
# Notification portal behind a Flatpak-like bus.
foreach(script e2e_fullscreen e2e_portal)
    add_test(NAME ${script} COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/interruptions/${script}.sh $<TARGET_FILE:narv>)
    set_tests_properties(${script} PROPERTIES TIMEOUT 300)
endforeach()
