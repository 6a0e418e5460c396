# SPDX-License-Identifier: MIT
# morsehandler_add_fuzzer(entry [SOURCES file...] [LIBRARIES target...] [SEEDS folder...])
# fuzz_<entry> from fuzz_<entry>.cpp in the current folder. With MORSEHANDLER_FUZZING it is a
# libFuzzer program, otherwise a plain one that replays files. The test fuzz/<entry> replays all seeds:
# fuzz/seeds/<entry> and the SEEDS folders. SOURCES compiles classes that the library hides
# into it; LIBRARIES adds targets to the library and the stand-in host.
function(morsehandler_add_fuzzer entry)
    cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES;SEEDS" ${ARGN})
    set(name fuzz_${entry})
    add_executable(${name} ${name}.cpp ${arg_SOURCES})
    target_compile_definitions(${name} PRIVATE PROJECT_DATA_DIR="${PROJECT_SOURCE_DIR}/data")
    target_link_libraries(${name} PRIVATE
        ${arg_LIBRARIES} fuzzsupport tables morsehandler hoststandin morsehandler_options)
    target_precompile_headers(${name} REUSE_FROM fuzzheaders)

    list(TRANSFORM arg_SEEDS PREPEND ${PROJECT_SOURCE_DIR}/)
    set(seeds ${CMAKE_CURRENT_SOURCE_DIR}/seeds/${entry} ${arg_SEEDS})
    if(MORSEHANDLER_FUZZING)
        # Of one input in so many the targets that use it check every property.
        target_compile_definitions(${name} PRIVATE FUZZING_SHARE=256)
        target_link_options(${name} PRIVATE -fsanitize=fuzzer)
        # For scripts/fuzz.sh.
        list(JOIN seeds "\n" lines)
        file(GENERATE OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/${entry}.seeds CONTENT "${lines}\n")
        add_test(NAME fuzz/${entry} COMMAND ${name} -runs=0 ${seeds})
    else()
        target_link_libraries(${name} PRIVATE replay)
        add_test(NAME fuzz/${entry} COMMAND ${name} ${seeds})
    endif()
    set_tests_properties(fuzz/${entry} PROPERTIES LABELS fuzz)
    add_dependencies(tests_fuzz ${name})
endfunction()
