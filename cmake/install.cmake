# SPDX-License-Identifier: MIT
# What is installed, in five parts: the library for hosts, the stand-in host's library, what it
# takes to compile against them, the program with its data, and the pages.
include(CMakePackageConfigHelpers)

# The program finds its libraries beside itself, wherever that is; where the system looks for
# libraries anyway, nothing has to be said.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set_target_properties(morsehost PROPERTIES
        INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
endif()
install(TARGETS morsehost COMPONENT program)
install(DIRECTORY data/ DESTINATION ${CMAKE_INSTALL_DATADIR}/morsehandler COMPONENT program)
install(FILES station/service/morsehost.service DESTINATION lib/systemd/system COMPONENT program)

if(UNIX AND NOT APPLE)
    foreach(library IN ITEMS morsehandler hoststandin)
        target_link_options(${library} PRIVATE
            LINKER:--version-script=${CMAKE_CURRENT_LIST_DIR}/exports.map)
        set_target_properties(${library} PROPERTIES LINK_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/exports.map)
    endforeach()
endif()

set(headers ${CMAKE_INSTALL_INCLUDEDIR}/morsehandler)
install(TARGETS morsehandler EXPORT morsehandlerTargets
    LIBRARY COMPONENT library NAMELINK_COMPONENT development
    FILE_SET HEADERS DESTINATION ${headers} COMPONENT development
    FILE_SET generated DESTINATION ${headers} COMPONENT development)
install(TARGETS hoststandin EXPORT morsehandlerTargets
    LIBRARY COMPONENT standin NAMELINK_COMPONENT development
    FILE_SET HEADERS DESTINATION ${headers} COMPONENT development)

# For find_package. A major version stands for one binary interface.
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/morsehandler)
install(EXPORT morsehandlerTargets NAMESPACE morsehandler:: DESTINATION ${package}
    COMPONENT development)
configure_package_config_file(cmake/morsehandlerConfig.cmake.in
    ${PROJECT_BINARY_DIR}/morsehandlerConfig.cmake INSTALL_DESTINATION ${package}
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/morsehandlerConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/morsehandlerConfig.cmake
    ${PROJECT_BINARY_DIR}/morsehandlerConfigVersion.cmake
    DESTINATION ${package} COMPONENT development)

# For pkg-config, from wherever the files come to lie.
file(RELATIVE_PATH root_from_pkgconfig
    /root/${CMAKE_INSTALL_LIBDIR}/pkgconfig /root)
string(REGEX REPLACE "/$" "" root_from_pkgconfig ${root_from_pkgconfig})
foreach(library IN ITEMS morsehandler morsehandler-hoststandin)
    configure_file(cmake/${library}.pc.in ${library}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${library}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()

# To be copied and compiled: the examples, and what one may take over from the stand-in's sources.
set(examples ${CMAKE_INSTALL_DATADIR}/doc/libmorsehandler-dev/examples)
install(DIRECTORY examples/ DESTINATION ${examples} COMPONENT development
    FILES_MATCHING PATTERN *.cpp PATTERN CMakeLists.txt)
install(DIRECTORY host/standin DESTINATION ${examples}/host COMPONENT development
    FILES_MATCHING PATTERN *.cpp PATTERN printf.h PATTERN resultcontent.h PATTERN resultwriter.h
    PATTERN valuetransactions.h)
install(FILES tables/hostpath.cpp tables/hostpath.h DESTINATION ${examples}/tables
    COMPONENT development)

include(cmake/pages.cmake)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT licence)
