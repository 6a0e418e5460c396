# SPDX-License-Identifier: MIT
# morsehandler_add_test(tst_stem [SOURCES file...] [LIBRARIES target...])
# One Qt Test program from tst_stem.cpp in the current folder, registered under
# <folder>/<stem> and labelled with the folder. SOURCES compiles classes that the library hides into
# the test; LIBRARIES adds targets to the library, its tables and the stand-in host.
function(morsehandler_add_test name)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES" ${ARGN})
    get_filename_component(folder ${CMAKE_CURRENT_SOURCE_DIR} NAME)
    add_executable(${name} ${name}.cpp ${arg_SOURCES})
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    target_link_libraries(${name} PRIVATE
        ${arg_LIBRARIES} testsupport tables morsehandler hoststandin Qt5::Test morsehandler_options)
    if(MORSEHANDLER_SANITIZERS MATCHES thread)
        target_sources(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests/support/threadsanitizer.cpp)
        target_link_libraries(${name} PRIVATE ${CMAKE_DL_LIBS})
    endif()
    target_precompile_headers(${name} REUSE_FROM testheaders)
    target_compile_definitions(${name} PRIVATE
        TEST_DATA_DIR="${PROJECT_SOURCE_DIR}/tests/data"
        PROJECT_DATA_DIR="${PROJECT_SOURCE_DIR}/data"
        MORSEHOST_PATH="${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/morsehost")
    string(REGEX REPLACE "^tst_" "" stem ${name})
    add_test(NAME ${folder}/${stem} COMMAND ${name})
    set_tests_properties(${folder}/${stem} PROPERTIES LABELS ${folder})

    # `--target tests_morse` builds what `ctest -L morse` runs.
    if(NOT TARGET tests_${folder})
        add_custom_target(tests_${folder})
    endif()
    add_dependencies(tests_${folder} ${name})
endfunction()
