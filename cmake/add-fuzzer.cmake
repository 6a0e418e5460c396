# SPDX-License-Identifier: MIT
# morsehandler_add_fuzzer(entry [SOURCES file...] [LIBRARIES target...] [SEEDS folder...])
# fuzz_<entry> from fuzz_<entry>.cpp in the current folder. With MORSEHANDLER_FUZZING it is a
# libFuzzer program; otherwise a plain one that replays files, and the test fuzz/<entry> replays all
# seeds: fuzz/seeds/<entry> and the SEEDS folders. SOURCES compiles classes that the library hides
# into it; LIBRARIES adds targets to the library and the stand-in host.
function(morsehandler_add_fuzzer entry)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES;SEEDS" ${ARGN})
    set(name fuzz_${entry})
    add_executable(${name} ${name}.cpp ${arg_SOURCES})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    target_compile_definitions(${name} PRIVATE PROJECT_DATA_DIR="${PROJECT_SOURCE_DIR}/data")
    target_link_libraries(${name} PRIVATE
        ${arg_LIBRARIES} tables morsehandler hoststandin Qt5::Core morsehandler_options)
    # Literals are fine here, as in the tests.
    target_compile_options(${name} PRIVATE -UQT_NO_CAST_FROM_ASCII)

    list(TRANSFORM arg_SEEDS PREPEND ${PROJECT_SOURCE_DIR}/)
    set(seeds ${CMAKE_CURRENT_SOURCE_DIR}/seeds/${entry} ${arg_SEEDS})
    if(MORSEHANDLER_FUZZING)
        target_link_options(${name} PRIVATE -fsanitize=fuzzer)
        # For scripts/fuzz.sh.
        list(JOIN seeds "\n" lines)
        file(GENERATE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${entry}.seeds CONTENT "${lines}\n")
        add_dependencies(fuzzers ${name})
    else()
        target_sources(${name} PRIVATE replay.cpp)
        add_test(NAME fuzz/${entry} COMMAND ${name} ${seeds})
        set_tests_properties(fuzz/${entry} PROPERTIES LABELS fuzz)
    endif()
endfunction()
