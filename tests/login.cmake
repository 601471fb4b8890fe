narv_add_core_test(tst_login platform/tst_login.cpp)
target_link_libraries(tst_login PRIVATE narv_login)
