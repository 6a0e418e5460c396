# SPDX-License-Identifier: MIT
# `cpack -G DEB`: one package for each part of install.cmake.
set(MORSEHANDLER_MAINTAINER "morsehandler authors <authors@morsehandler.invalid>" CACHE STRING
    "Who answers for the packages: Name <address>")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_VENDOR "")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_STRIP_FILES OFF) # into the packages of debug information
set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL library standin development program documents)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library standin)
set(CPACK_COMPONENT_PROGRAM_DEPENDS library standin)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SOURCE morsehandler)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${MORSEHANDLER_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libmorsehandler${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "readable text from the output of radio decoders
A plug-in library that a radio-monitoring host loads into its process. It turns
Morse symbol codes into text through a selectable alphabet, and the characters
of ITA2 and ASCII decoders through tables that the operator chooses.
The host brings the classes that the library expects of it.")

set(CPACK_DEBIAN_STANDIN_PACKAGE_NAME libhoststandin${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_STANDIN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_STANDIN_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_STANDIN_DESCRIPTION "host for libmorsehandler in place of the host application
Value tree, observers, traces, times, configuration and result documents as
libmorsehandler expects them of its host: for the program morsehost, for tests,
and for trying the library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libmorsehandler-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "qtbase5-dev (>= 5.15)")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "morsehandler-doc, morsehost")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "headers for hosts of libmorsehandler
What it takes to compile against libmorsehandler and against the host that can
stand in for one's own: headers, find_package and pkg-config files, examples.")

set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME morsehost)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION hamradio)
# Loaded when an archive is opened, so that no dependency of the program shows it.
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS libqt5sql5-sqlite)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SUGGESTS "morsehandler-doc, libqt5sql5-psql")
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION "decode Morse code from recordings and pipes
Reads a recording or raw samples of a receiver, finds tone and speed by
itself and writes text as it is decided; keeps code files, text files and
XML documents on request. It also translates the 8-bit characters of other
radio decoders, and brings Morse alphabets and character maps.")

set(CPACK_DEBIAN_DOCUMENTS_PACKAGE_NAME morsehandler-doc)
set(CPACK_DEBIAN_DOCUMENTS_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOCUMENTS_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCUMENTS_DESCRIPTION "guides and formats of morsehost and libmorsehandler
For operators: from sound to text, alphabets and maps. For developers: using
the library in a host. Beside them the file formats, and what was measured.")

# What a Debian package says about itself. An ordinary installation has no use for it.
string(TIMESTAMP package_date "%a, %d %b %Y %H:%M:%S +0000" UTC) # heeds SOURCE_DATE_EPOCH
file(READ LICENSE licence)
string(REGEX REPLACE "^[^\n]*\n\nCopyright \\(c\\) ([^\n]*)\n\n" "" licence_text "${licence}")
set(copyright_holder ${CMAKE_MATCH_1})
string(REGEX REPLACE "\n\n" "\n.\n" licence_text "${licence_text}")
string(REGEX REPLACE "\n(.)" "\n \\1" licence_text "${licence_text}")
set(about ${PROJECT_BINARY_DIR}/debian)
configure_file(cmake/debian/copyright.in ${about}/copyright @ONLY)
configure_file(cmake/debian/changelog.in ${about}/changelog.Debian @ONLY)
configure_file(CHANGELOG.md ${about}/changelog COPYONLY)
execute_process(COMMAND gzip -9nkf changelog changelog.Debian WORKING_DIRECTORY ${about}
    COMMAND_ERROR_IS_FATAL ANY)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} COMPONENT)
    install(FILES ${about}/copyright ${about}/changelog.gz ${about}/changelog.Debian.gz
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME}
        COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

# The first version with each exported symbol, so that a host depends on no later one than it needs.
# Names follow the machine: elsewhere the version of the library has to do.
if(CMAKE_SYSTEM_PROCESSOR STREQUAL x86_64)
    foreach(component IN ITEMS library standin)
        string(TOUPPER ${component} COMPONENT)
        set(name ${CPACK_DEBIAN_${COMPONENT}_PACKAGE_NAME})
        configure_file(cmake/debian/${name}.symbols ${about}/${name}/symbols COPYONLY)
        list(APPEND CPACK_DEBIAN_${COMPONENT}_PACKAGE_CONTROL_EXTRA ${about}/${name}/symbols)
    endforeach()
endif()

include(CPack)
