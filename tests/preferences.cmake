# The settings window. Its tabs are driven with Qt Quick tests (real mouse and
# key events, offscreen) against a real settings file; the window itself, as
# the window backend makes it, runs on a private X server.
find_package(Qt6 6.4 REQUIRED COMPONENTS QuickTest)

add_executable(tst_prefviews preferences/tst_prefviews.cpp)
target_include_directories(tst_prefviews PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(tst_prefviews PRIVATE narv_windows narv_login Qt6::QuickTest)
target_compile_definitions(tst_prefviews PRIVATE
    QUICK_TEST_SOURCE_DIR="${CMAKE_CURRENT_SOURCE_DIR}/preferences")
add_test(NAME tst_prefviews COMMAND tst_prefviews)
set_tests_properties(tst_prefviews PROPERTIES
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;QT_QUICK_CONTROLS_STYLE=Fusion"
    TIMEOUT 120)

add_executable(tst_prefwindow preferences/tst_prefwindow.cpp)
target_include_directories(tst_prefwindow PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(tst_prefwindow PRIVATE narv_windows narv_login Qt6::Test)
add_test(NAME tst_prefwindow
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/run-on-xvfb $<TARGET_FILE:tst_prefwindow>)
set_tests_properties(tst_prefwindow PROPERTIES ENVIRONMENT "LC_ALL=C.UTF-8" TIMEOUT 120)

# The real program: a second start opens the window with the keyboard, Ctrl+W
# closes it; midnight passes and every process keeps the day's log.
# The script starts its own X server and session bus.
add_test(NAME e2e_preferences_window
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/e2e/preferences_window.sh $<TARGET_FILE:narv>)
set_tests_properties(e2e_preferences_window PROPERTIES TIMEOUT 120)
