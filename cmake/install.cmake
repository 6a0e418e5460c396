# SPDX-License-Identifier: MIT
# What is installed, in five parts: the library for hosts, the stand-in host's library, what it
# takes to compile against them, the program with its data, and the pages.
include(CMakePackageConfigHelpers)

# The program finds its libraries beside itself, in any folder; where the system looks for
# libraries anyway, nothing has to be said.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set_target_properties(morsehost PROPERTIES
        INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
endif()
install(TARGETS morsehost COMPONENT program)
install(DIRECTORY data/ DESTINATION ${CMAKE_INSTALL_DATADIR}/morsehandler COMPONENT program
    PATTERN slurm EXCLUDE)
install(PROGRAMS data/slurm/morsehost-cluster.sh
    DESTINATION ${CMAKE_INSTALL_DATADIR}/morsehandler/slurm COMPONENT program)
install(FILES station/service/morsehost.service DESTINATION lib/systemd/system COMPONENT program)

if(UNIX AND NOT APPLE)
    foreach(library IN ITEMS morsehandler hoststandin)
        target_link_options(${library} PRIVATE
            LINKER:--version-script=${CMAKE_CURRENT_LIST_DIR}/exports.map)
        set_target_properties(${library} PROPERTIES LINK_DEPENDS ${CMAKE_CURRENT_LIST_DIR}/exports.map)
    endforeach()
endif()

install(TARGETS morsehandler
    LIBRARY COMPONENT library NAMELINK_COMPONENT development)
install(TARGETS hoststandin
    LIBRARY COMPONENT standin NAMELINK_COMPONENT development)

# Public headers are included below morsehandler/ by others, so that "host/tree.h" clashes with nobody's;
# here they name each other from the top of the tree. morsehandler_outward(variable) changes the
# includes of a text to what others say.
foreach(library IN ITEMS morsehandler hoststandin)
    get_target_property(files ${library} HEADER_SET)
    foreach(file IN LISTS files)
        cmake_path(IS_RELATIVE file is_relative)
        if(is_relative)
            get_target_property(folder ${library} SOURCE_DIR)
            set(file ${folder}/${file})
        endif()
        cmake_path(RELATIVE_PATH file BASE_DIRECTORY ${PROJECT_SOURCE_DIR})
        list(APPEND public_headers ${file})
    endforeach()
endforeach()
function(morsehandler_outward variable)
    set(changed "${${variable}}")
    foreach(header IN LISTS public_headers ITEMS morsehandler_export.h)
        string(REPLACE "#include \"${header}\"" "#include \"morsehandler/${header}\"" changed "${changed}")
    endforeach()
    set(${variable} "${changed}" PARENT_SCOPE)
endfunction()

set(outward ${PROJECT_BINARY_DIR}/outward)
file(REMOVE_RECURSE ${outward})
foreach(header IN LISTS public_headers)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${header})
    file(READ ${header} text)
    morsehandler_outward(text)
    file(WRITE ${outward}/include/morsehandler/${header} "${text}")
endforeach()
install(DIRECTORY ${outward}/include/morsehandler DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT development)
install(FILES ${PROJECT_BINARY_DIR}/morsehandler_export.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/morsehandler COMPONENT development)

# For find_package. A major version stands for one binary interface.
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/morsehandler)
configure_package_config_file(cmake/morsehandlerConfig.cmake.in
    ${PROJECT_BINARY_DIR}/morsehandlerConfig.cmake INSTALL_DESTINATION ${package}
    PATH_VARS CMAKE_INSTALL_INCLUDEDIR CMAKE_INSTALL_LIBDIR NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/morsehandlerConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_BINARY_DIR}/morsehandlerConfig.cmake
    ${PROJECT_BINARY_DIR}/morsehandlerConfigVersion.cmake
    DESTINATION ${package} COMPONENT development)

# For pkg-config: relative to the installed files, or where the system looks anyway.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(pkgconfig_prefix /usr)
else()
    file(RELATIVE_PATH root /root/${CMAKE_INSTALL_LIBDIR}/pkgconfig /root)
    string(REGEX REPLACE "/$" "" pkgconfig_prefix "\${pcfiledir}/${root}")
endif()
foreach(library IN ITEMS morsehandler morsehandler-hoststandin)
    configure_file(cmake/${library}.pc.in ${library}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${library}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()

# To be copied and compiled: the examples, and what one may take over from the stand-in's sources.
set(examples ${CMAKE_INSTALL_DATADIR}/doc/libmorsehandler-dev/examples)
install(DIRECTORY examples/ DESTINATION ${examples} COMPONENT development
    FILES_MATCHING PATTERN *.cpp PATTERN CMakeLists.txt)
file(GLOB standin CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR} host/standin/*.cpp)
foreach(source IN LISTS standin ITEMS tables/hostpath.cpp tables/hostpath.h host/standin/printf.h
        host/standin/resultcontent.h host/standin/resultwriter.h host/standin/valuetransactions.h)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
    file(READ ${source} text)
    morsehandler_outward(text)
    file(WRITE ${outward}/examples/${source} "${text}")
endforeach()
install(DIRECTORY ${outward}/examples/ DESTINATION ${examples} COMPONENT development)

include(cmake/pages.cmake)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT licence)
