# The history: the store on real SQLite files, and what the real program
# records and exports.
narv_add_core_test(tst_historystore history/tst_historystore.cpp)
target_link_libraries(tst_historystore PRIVATE narv_historystore)

add_test(NAME e2e_history
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/history/history.sh $<TARGET_FILE:narv>)
set_tests_properties(e2e_history PROPERTIES TIMEOUT 240)

# The window's figures from a real file, and the window loading.
narv_add_gui_test(tst_historychart history/tst_historychart.cpp)
target_link_libraries(tst_historychart PRIVATE narv_historyviews)
