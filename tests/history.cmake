# The history: what the real program records and exports.
add_test(NAME e2e_history
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/history/history.sh $<TARGET_FILE:narv>)
set_tests_properties(e2e_history PROPERTIES TIMEOUT 240)

# The store on real files, the window's figures from one, and the window loading.
narv_add_gui_test(tst_history history/tst_history.cpp)
target_link_libraries(tst_history PRIVATE narv_historyviews)
