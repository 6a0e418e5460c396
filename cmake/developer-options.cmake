# SPDX-License-Identifier: MIT
# Compiler flags for every target of the project, as one interface target.
add_library(morsehandler_options INTERFACE)
target_compile_features(morsehandler_options INTERFACE cxx_std_17)
target_compile_definitions(morsehandler_options INTERFACE
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_URL_CAST_FROM_STRING
    QT_NO_KEYWORDS)
target_compile_options(morsehandler_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align
    -Wundef -Wvla -Wformat=2)
if(MORSEHANDLER_DEVELOPER)
    target_compile_options(morsehandler_options INTERFACE -Werror)
    # Some 150 programs are linked. Libraries are not: their symbols are what is shipped.
    find_program(MORSEHANDLER_MOLD mold)
    if(MORSEHANDLER_MOLD)
        string(APPEND CMAKE_EXE_LINKER_FLAGS " -fuse-ld=mold -Wl,--no-as-needed")
    endif()
endif()
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # It takes a source that is joined with others for a header.
    target_compile_options(morsehandler_options INTERFACE -Wno-subobject-linkage)
endif()
if(MORSEHANDLER_COVERAGE)
    # Counted is what is shipped; a test would only dilute the figures, and takes longer to build when
    # it is counted. Each source is compiled once, so that all counts are of one object: what is hidden
    # otherwise is visible here, and no test compiles it into itself.
    set(MORSEHANDLER_COUNTED --coverage)
    # Of what goes through seconds of sound, sample by sample.
    set(MORSEHANDLER_LONG_LOOPS -O1)
    target_link_options(morsehandler_options INTERFACE --coverage)
endif()
if(MORSEHANDLER_SANITIZERS)
    # For all targets: a shared library and its user must agree on the run-time.
    add_compile_options(-fsanitize=${MORSEHANDLER_SANITIZERS} -fno-omit-frame-pointer
        -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${MORSEHANDLER_SANITIZERS})
endif()
if(MORSEHANDLER_FUZZING)
    # Edges are counted in every target, the fuzzer itself is linked to the fuzz targets only.
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# One target, "autogen", that writes what moc makes: the static checks need it.
set(CMAKE_GLOBAL_AUTOGEN_TARGET ON)

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
if(NOT MORSEHANDLER_COVERAGE)
    set(CMAKE_CXX_VISIBILITY_PRESET hidden)
    set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
endif()
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
