# Screen lock, mouse activity and the reactions to them.

# The reactions, with stepped time and stand-in sources.
narv_add_core_test(tst_systemevents events/tst_systemevents.cpp)

# The D-Bus sources against services played on two private buses, one of them
# standing in for the system bus.
add_executable(tst_eventsources events/tst_eventsources.cpp)
target_include_directories(tst_eventsources PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(tst_eventsources PRIVATE narv_events Qt6::Test)
add_test(NAME tst_eventsources
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/events/with-buses.sh $<TARGET_FILE:tst_eventsources>)
set_tests_properties(tst_eventsources PROPERTIES
    ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8" TIMEOUT 120)

# The real program on its own X server and session bus, driven with xdotool and
# dbus-send.
add_test(NAME e2e_events COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/e2e/events.sh $<TARGET_FILE:narv>)
set_tests_properties(e2e_events PROPERTIES TIMEOUT 300)

# The Wayland idle source against a compositor of the test's own, with only a
# seat and one of the idle protocols, over a real Wayland socket.
enable_language(C)
pkg_check_modules(WAYLAND_SERVER REQUIRED IMPORTED_TARGET wayland-server)
pkg_get_variable(WAYLAND_SCANNER wayland-scanner wayland_scanner)
pkg_get_variable(WAYLAND_PROTOCOLS_DIR wayland-protocols pkgdatadir)
find_package(PlasmaWaylandProtocols REQUIRED)
set(fake_compositor_out ${CMAKE_CURRENT_BINARY_DIR}/fake_compositor)
set(fake_compositor_protocols)
foreach(protocol ext-idle-notify-v1 kde-idle)
    if(protocol STREQUAL "kde-idle")
        set(xml ${PLASMA_WAYLAND_PROTOCOLS_DIR}/idle.xml)
    else()
        set(xml ${WAYLAND_PROTOCOLS_DIR}/staging/ext-idle-notify/ext-idle-notify-v1.xml)
    endif()
    add_custom_command(
        OUTPUT ${fake_compositor_out}/${protocol}-server-protocol.h
               ${fake_compositor_out}/${protocol}-protocol.c
        COMMAND ${CMAKE_COMMAND} -E make_directory ${fake_compositor_out}
        COMMAND ${WAYLAND_SCANNER} server-header ${xml}
                ${fake_compositor_out}/${protocol}-server-protocol.h
        COMMAND ${WAYLAND_SCANNER} private-code ${xml}
                ${fake_compositor_out}/${protocol}-protocol.c
        DEPENDS ${xml}
        VERBATIM)
    list(APPEND fake_compositor_protocols ${fake_compositor_out}/${protocol}-server-protocol.h
                                          ${fake_compositor_out}/${protocol}-protocol.c)
endforeach()
add_executable(fake_compositor events/fake_compositor.cpp ${fake_compositor_protocols})
target_include_directories(fake_compositor PRIVATE ${fake_compositor_out})
target_link_libraries(fake_compositor PRIVATE PkgConfig::WAYLAND_SERVER)

narv_add_core_test(tst_waylandidle events/tst_waylandidle.cpp)
target_link_libraries(tst_waylandidle PRIVATE narv_events)
target_compile_definitions(tst_waylandidle PRIVATE
    NARV_FAKE_COMPOSITOR="$<TARGET_FILE:fake_compositor>")
add_dependencies(tst_waylandidle fake_compositor)
