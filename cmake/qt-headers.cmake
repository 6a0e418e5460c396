# SPDX-License-Identifier: MIT
# morsehandler_use_qt_headers(target...)
# Qt Core's headers, read once for all targets: most of the time that a source takes to build. Each
# source includes what it uses all the same; `CMAKE_DISABLE_PRECOMPILE_HEADERS` shows that.
file(WRITE ${PROJECT_BINARY_DIR}/qtheaders.cpp "")
add_library(qtheaders OBJECT ${PROJECT_BINARY_DIR}/qtheaders.cpp)
target_link_libraries(qtheaders PRIVATE Qt5::Core morsehandler_options)
target_precompile_headers(qtheaders PRIVATE
    <QtCore>
    <algorithm> <array> <cmath> <cstdint> <functional> <map> <memory> <optional> <string> <utility>
    <vector>)

function(morsehandler_use_qt_headers)
    foreach(target IN LISTS ARGN)
        target_precompile_headers(${target} REUSE_FROM qtheaders)
    endforeach()
endfunction()
