# The history: the store on real SQLite files, and what the real program
# records and exports.
narv_add_core_test(tst_historystore history/tst_historystore.cpp)
target_link_libraries(tst_historystore PRIVATE narv_historystore)

add_test(NAME e2e_history
    COMMAND dbus-run-session -- ${CMAKE_CURRENT_SOURCE_DIR}/history/history.sh $<TARGET_FILE:narv>)
set_tests_properties(e2e_history PROPERTIES ENVIRONMENT "QT_QPA_PLATFORM=offscreen" TIMEOUT 240)
