# What keeps the program small: Qt Quick loaded only at the first window (the
# real binary). (The log file's date without ICU on most days is in
# tst_logging.)

# The real binary on a private X server and bus: nothing of Qt Quick, QML,
# QtWidgets, QtNetwork or fontconfig's font list in the process until the
# first break, then the windows from the views module; the update check from
# its module.
# With a StatusNotifierWatcher on the bus, as on most desktops (the program
# is then a QGuiApplication, without QtWidgets), which then goes away.
find_package(Qt6 6.4 REQUIRED COMPONENTS DBus)
add_executable(narv_fakewatcher statusbar/fakewatcher.cpp statusbar/FakeStatusNotifierWatcher.h)
target_link_libraries(narv_fakewatcher PRIVATE Qt6::DBus)
add_test(NAME e2e_footprint COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/e2e/footprint.sh $<TARGET_FILE:narv>
    $<TARGET_FILE:narv_fakewatcher>)
set_tests_properties(e2e_footprint PROPERTIES TIMEOUT 120)

# The benchmark's scripts still run: every step once, briefly, Narv alone.
add_test(NAME bench_smoke COMMAND ${CMAKE_SOURCE_DIR}/bench/run --quick ${CMAKE_BINARY_DIR})
set_tests_properties(bench_smoke PROPERTIES TIMEOUT 180 LABELS bench)
