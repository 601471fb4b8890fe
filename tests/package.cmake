# The installable pieces: launcher and AppStream files validate, and the .deb
# unpacks to the files a desktop needs.
add_test(NAME package_contents
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/e2e/package.sh ${CMAKE_BINARY_DIR} ${CMAKE_SOURCE_DIR})
set_tests_properties(package_contents PROPERTIES TIMEOUT 300 RUN_SERIAL TRUE)
