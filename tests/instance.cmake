# A second start hands over to the running Narv: over a private session bus,
# and with no session bus at all (lock file and local socket).
add_test(NAME e2e_single_instance
    COMMAND dbus-run-session -- ${CMAKE_CURRENT_SOURCE_DIR}/e2e/single_instance.sh $<TARGET_FILE:narv>)
set_tests_properties(e2e_single_instance PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen" TIMEOUT 120)

# The log across midnight: the counting process owns the day's file; its
# window process and a second start write to it and delete nothing.
add_test(NAME e2e_log_across_midnight
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/e2e/log_across_midnight.sh $<TARGET_FILE:narv>)
set_tests_properties(e2e_log_across_midnight PROPERTIES TIMEOUT 120)
