# The break windows: BreakView drawn offscreen; the window backend on a private
# X server with two monitors (run-on-xvfb).

add_executable(tst_breakview gui/tst_breakview.cpp)
target_include_directories(tst_breakview PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(tst_breakview PRIVATE narv_windows Qt6::Test)
add_test(NAME tst_breakview COMMAND tst_breakview)
set_tests_properties(tst_breakview PROPERTIES
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8" TIMEOUT 120)

add_executable(tst_breakwindows gui/tst_breakwindows.cpp)
target_include_directories(tst_breakwindows PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(tst_breakwindows PRIVATE narv_windows Qt6::Test)
add_test(NAME tst_breakwindows
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/run-on-xvfb $<TARGET_FILE:tst_breakwindows>)
set_tests_properties(tst_breakwindows PROPERTIES ENVIRONMENT "LC_ALL=C.UTF-8" TIMEOUT 120)

# The window process's line to the counting process and its lifetime, with
# this test program standing in for the window process.
narv_add_core_test(tst_viewsprocess views/tst_viewsprocess.cpp)
target_link_libraries(tst_viewsprocess PRIVATE narv_viewloader)

# Windows closed from outside (the window manager's or compositor's close), on
# X11 and on Wayland.
pkg_check_modules(WINDOWS_TEST_XCB REQUIRED IMPORTED_TARGET xcb)
add_executable(tst_windowclose gui/tst_windowclose.cpp)
target_include_directories(tst_windowclose PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(tst_windowclose PRIVATE narv_windows Qt6::Test PkgConfig::WINDOWS_TEST_XCB)
add_test(NAME tst_windowclose_x11
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/run-on-xvfb $<TARGET_FILE:tst_windowclose>)
add_test(NAME tst_windowclose_wayland
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/run-on-weston $<TARGET_FILE:tst_windowclose>)
set_tests_properties(tst_windowclose_x11 tst_windowclose_wayland PROPERTIES
    ENVIRONMENT "LC_ALL=C.UTF-8" TIMEOUT 120)
