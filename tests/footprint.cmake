# The real binary's window process on a private X server and bus, with a
# StatusNotifierWatcher (narv_fakewatcher, also the other scripts') that then
# goes away. What the processes keep out of memory is bench/run's.
find_package(Qt6 6.4 REQUIRED COMPONENTS DBus)
add_executable(narv_fakewatcher statusbar/fakewatcher.cpp statusbar/FakeStatusNotifierWatcher.h)
target_link_libraries(narv_fakewatcher PRIVATE Qt6::DBus)
add_test(NAME e2e_window_process
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/e2e/window_process.sh $<TARGET_FILE:narv>
    $<TARGET_FILE:narv_fakewatcher>)
set_tests_properties(e2e_window_process PROPERTIES TIMEOUT 120)

# The benchmark's scripts still run: every step once, briefly, Narv alone.
add_test(NAME bench_smoke COMMAND ${CMAKE_SOURCE_DIR}/bench/run --quick ${CMAKE_BINARY_DIR})
set_tests_properties(bench_smoke PROPERTIES TIMEOUT 180 LABELS bench)
