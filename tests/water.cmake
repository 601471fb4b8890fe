# The water panel: its views drawn offscreen (Qt Quick Test), its window on a
# private X server with two monitors. (The real program opens it from the
# status menu on three desktops: tests/desktops/run.)
find_package(Qt6 6.4 REQUIRED COMPONENTS QuickTest)

add_executable(tst_waterview water/tst_waterview.cpp)
target_include_directories(tst_waterview PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(tst_waterview PRIVATE narv_water Qt6::QuickTest)
add_test(NAME tst_waterview
    COMMAND tst_waterview -input ${CMAKE_CURRENT_SOURCE_DIR}/water/tst_waterview.qml)
set_tests_properties(tst_waterview PROPERTIES
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8" TIMEOUT 120)

# The window: on a private X server with two monitors.
add_executable(tst_waterwindow water/tst_waterwindow.cpp)
target_include_directories(tst_waterwindow PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(tst_waterwindow PRIVATE narv_windows Qt6::Test)
add_test(NAME tst_waterwindow
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/run-on-xvfb $<TARGET_FILE:tst_waterwindow>)
set_tests_properties(tst_waterwindow PROPERTIES ENVIRONMENT "LC_ALL=C.UTF-8" TIMEOUT 120)
