# The status item, its menu, the feedback mail and the update check.

# A test program that runs on a private session bus of its own.
function(narv_add_bus_test name)
    add_executable(${name} ${ARGN})
    target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
    target_link_libraries(${name} PRIVATE narv_iconfont Qt6::Test)
    add_test(NAME ${name} COMMAND dbus-run-session -- $<TARGET_FILE:${name}>)
    set_tests_properties(${name} PROPERTIES TIMEOUT 120
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8")
endfunction()

# The menu model, the water item, the actions, the feedback text, translations.
narv_add_core_test(tst_menu statusbar/tst_menu.cpp)

# The icon theme lookup that stands in for QIcon's in the counting process.
narv_add_core_test(tst_icontheme statusbar/tst_icontheme.cpp)
target_link_libraries(tst_icontheme PRIVATE narv_tray)

# The item and its menu read the way a panel reads them, with a small
# StatusNotifierWatcher of the test's own.
find_package(Qt6 6.4 REQUIRED COMPONENTS Widgets)
narv_add_bus_test(tst_tray statusbar/tst_tray.cpp statusbar/FakeStatusNotifierWatcher.h
    ${CMAKE_SOURCE_DIR}/src/platform/tray/TrayIconFallback.cpp
    ${CMAKE_SOURCE_DIR}/resources/icons/menu/menu.qrc)
target_link_libraries(tst_tray PRIVATE narv_tray Qt6::Widgets)

# xdg-email (a stand-in on PATH), the Email portal (a stand-in on the bus) and
# mailto: links.
narv_add_bus_test(tst_mail statusbar/tst_mail.cpp)
target_link_libraries(tst_mail PRIVATE narv_mail)

# The appcast check against a feed the test serves on 127.0.0.1.
if(NARV_UPDATE_CHECK)
    narv_add_gui_test(tst_update statusbar/tst_update.cpp)
    target_link_libraries(tst_update PRIVATE narv_updatefetch narv_updatewindow)
endif()

# The real binary with its session bus behind xdg-dbus-proxy's filter, as in
# Flatpak: the item lives on, and comes back when the connection breaks.
add_test(NAME e2e_bus_proxy COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/e2e/bus_proxy.sh $<TARGET_FILE:narv>
    $<TARGET_FILE:narv_fakewatcher>)
set_tests_properties(e2e_bus_proxy PROPERTIES TIMEOUT 120)
