# SPDX-License-Identifier: MIT
# morsehandler_add_test(tst_stem [SOURCES file...] [LIBRARIES target...])
# One Qt Test program from tst_stem.cpp in the current folder, registered under
# <folder>/<stem> and labelled with the folder. SOURCES compiles classes that the library hides into
# the test, their headers through moc (not when coverage is counted: nothing is hidden then);
# LIBRARIES adds targets to the library, its tables and the stand-in host.
function(morsehandler_add_test name)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES" ${ARGN})
    get_filename_component(folder ${CMAKE_CURRENT_SOURCE_DIR} NAME)
    if(MORSEHANDLER_COVERAGE)
        set(arg_SOURCES)
    endif()
    add_executable(${name})
    set(headers ${arg_SOURCES})
    list(FILTER headers INCLUDE REGEX "h$")
    list(FILTER arg_SOURCES EXCLUDE REGEX "h$")
    target_sources(${name} PRIVATE ${arg_SOURCES})
    morsehandler_add_moc(${name} ${name}.cpp ${headers})
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

# morsehandler_add_moc(target file...)
# Adds the sources and what moc makes of them: x.moc of x.cpp, which includes it, or a source of its
# own of x.h. AUTOMOC would compile one file more for each of some sixty programs.
function(morsehandler_add_moc target)
    target_include_directories(${target} PRIVATE ${CMAKE_CURRENT_BINARY_DIR})
    foreach(file IN LISTS ARGN)
        get_filename_component(file ${file} ABSOLUTE)
        get_filename_component(stem ${file} NAME_WE)
        if(file MATCHES "cpp$")
            set(made ${CMAKE_CURRENT_BINARY_DIR}/${stem}.moc)
            set_property(SOURCE ${file} APPEND PROPERTY OBJECT_DEPENDS ${made})
        else()
            set(made ${CMAKE_CURRENT_BINARY_DIR}/moc_${stem}.cpp)
            target_sources(${target} PRIVATE ${made})
        endif()
        target_sources(${target} PRIVATE ${file})
        add_custom_command(OUTPUT ${made} COMMAND Qt5::moc -o ${made} ${file} DEPENDS ${file}
            COMMENT "moc ${stem}" VERBATIM)
    endforeach()
endfunction()
