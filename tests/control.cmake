# The `narv` commands, clients of the control interface, against the real
# program on a private session bus.
add_test(NAME e2e_control_commands
    COMMAND dbus-run-session -- ${CMAKE_CURRENT_SOURCE_DIR}/e2e/control_commands.sh $<TARGET_FILE:narv>)
set_tests_properties(e2e_control_commands PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen" TIMEOUT 120)
