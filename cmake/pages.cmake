# SPDX-License-Identifier: MIT
# The pages as they are installed: data lies elsewhere than in a clone, and what is not installed is
# named, not linked.
file(GLOB_RECURSE pages CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR}/docs docs/*.md)
foreach(page IN LISTS pages)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS docs/${page})
    file(READ docs/${page} text)
    string(REGEX REPLACE "[^/]+" ".." up ${page}) # from the page to the folder above docs/
    string(REPLACE "](${up}/data/" "](${up}/../morsehandler/" text "${text}")
    string(REPLACE "." "[.]" up ${up})
    string(REGEX REPLACE "\\[([^]]*)\\]\\(${up}/[a-zA-Z][^)]*\\)" "\\1" text "${text}")
    file(WRITE ${PROJECT_BINARY_DIR}/pages/${page} "${text}")
endforeach()

set(documents ${CMAKE_INSTALL_DATADIR}/doc/morsehandler)
install(DIRECTORY ${PROJECT_BINARY_DIR}/pages/ DESTINATION ${documents} COMPONENT documents)
install(DIRECTORY docs/ DESTINATION ${documents} COMPONENT documents
    FILES_MATCHING PATTERN *.svg)

if(MORSEHANDLER_API_PAGES)
    find_program(MORSEHANDLER_DOXYGEN doxygen REQUIRED)
    set(api ${PROJECT_BINARY_DIR}/api-pages)
    list(TRANSFORM public_headers PREPEND ${PROJECT_SOURCE_DIR}/ OUTPUT_VARIABLE described)
    add_custom_command(OUTPUT ${api}/html/index.html
        COMMAND scripts/api-pages.sh ${api}
        DEPENDS ${described} docs/Doxyfile docs/api-pages.md scripts/api-pages.sh
        WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
        COMMENT "Pages of the public headers" VERBATIM)
    add_custom_target(api-pages ALL DEPENDS ${api}/html/index.html)
    install(DIRECTORY ${api}/html/ DESTINATION ${documents}/api COMPONENT documents)
endif()
