# Gentler interruptions: the core on stepped time, and the real program on a
# private bus and X server with a real notification server (dunst) and window
# manager (openbox).
narv_add_core_test(tst_interruptions interruptions/tst_interruptions.cpp)
add_test(NAME e2e_interruptions
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/interruptions/e2e_interruptions.sh $<TARGET_FILE:narv>)
set_tests_properties(e2e_interruptions PROPERTIES TIMEOUT 300)
# The heads-up through the real Notification portal behind a Flatpak-like bus.
add_test(NAME e2e_portal COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/interruptions/e2e_portal.sh $<TARGET_FILE:narv>)
set_tests_properties(e2e_portal PROPERTIES TIMEOUT 300)
