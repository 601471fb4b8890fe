# The heads-up through the Notification portal, behind a Flatpak-like bus.
add_test(NAME e2e_portal COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/notify/e2e_portal.sh $<TARGET_FILE:narv>)
set_tests_properties(e2e_portal PROPERTIES TIMEOUT 300)
