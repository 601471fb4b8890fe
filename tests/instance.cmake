# A second start hands over to the running Narv: over a private session bus,
# and with no session bus at all (lock file and local socket).
add_test(NAME e2e_single_instance
    COMMAND dbus-run-session -- ${CMAKE_CURRENT_SOURCE_DIR}/e2e/single_instance.sh $<TARGET_FILE:narv>)
set_tests_properties(e2e_single_instance PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen" TIMEOUT 120)

