# Every text the program translates has a finished entry in every table.
file(GLOB translation_tables ${CMAKE_SOURCE_DIR}/resources/translations/*.ts)
add_test(NAME translations_complete
    COMMAND python3 ${CMAKE_CURRENT_SOURCE_DIR}/translations/check_complete.py
            ${CMAKE_SOURCE_DIR}/src ${translation_tables})
