# Sets the names, dependencies and additional contents of the Debian packages.
# SPDX-License-Identifier: MIT
set(qt_development_package qtbase5-dev)
if(POWEROFF_PROTECT_QT EQUAL 6)
    set(qt_development_package qt6-base-dev)
endif()

set(CPACK_COMPONENTS_ALL module dev dbgsym)
if(POWEROFF_PROTECT_TOOLS)
    list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    ${PROJECT_BINARY_DIR}/project_tree ${PROJECT_BINARY_DIR}/simulated_host
    ${PROJECT_BINARY_DIR}/simulated_host/file_calls)
configure_file(packaging/debian/shlibdeps.in ${PROJECT_BINARY_DIR}/debian/shlibdeps @ONLY
               FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
file(WRITE ${PROJECT_BINARY_DIR}/debian/cpack.cmake
     "set(SHLIBDEPS_EXECUTABLE ${PROJECT_BINARY_DIR}/debian/shlibdeps CACHE FILEPATH \"\" FORCE)\n")
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/debian/cpack.cmake)

# multi_arch(COMPONENT): its packages for different processors may be installed together.
macro(multi_arch component)
    if(CMAKE_VERSION VERSION_GREATER_EQUAL 3.31)
        set(CPACK_DEBIAN_${component}_PACKAGE_MULTIARCH same)
    else()
        set(CPACK_DEBIAN_${component}_PACKAGE_PRIORITY "optional\nMulti-Arch: same") # CPack has no variable for this field
    endif()
endmacro()
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(exact_module "poweroff-protect (= ${PROJECT_VERSION})")

set(CPACK_DEBIAN_MODULE_PACKAGE_NAME poweroff-protect)
set(CPACK_DEBIAN_MODULE_PACKAGE_SECTION libs)
multi_arch(MODULE)
set(CPACK_COMPONENT_MODULE_DESCRIPTION
    "retention of an operator panel's values across power loss
The panel's runtime loads this module. It keeps chosen contents of the areas
LB, LW and RWI in files of the project directory and puts them back at the
next start.")
set(CPACK_DEBIAN_MODULE_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/packaging/debian/triggers)

set(CPACK_DEBIAN_DEV_PACKAGE_NAME poweroff-protect-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${exact_module}, ${qt_development_package}")
multi_arch(DEV)
set(CPACK_COMPONENT_DEV_DESCRIPTION
    "retention of an operator panel's values, for building runtimes
Headers, CMake package, pkg-config file, the integration guide and two
small example runtimes.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME poweroff-protect-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS ${exact_module})
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
    "retention of an operator panel's values, desktop tools
retention_inspector shows, checks, edits and migrates the values that a panel
retains; panel_simulator runs the module against a project, as the panel's
runtime would.")

# Pages of one refer to pages of the other.
set(CPACK_DEBIAN_DEV_PACKAGE_SUGGESTS poweroff-protect-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS poweroff-protect-dev)

# In 1.0 one package had what is now in several.
foreach(component DEV TOOLS)
    set(CPACK_DEBIAN_${component}_PACKAGE_BREAKS "poweroff-protect (<< 1.1.0)")
    set(CPACK_DEBIAN_${component}_PACKAGE_REPLACES "poweroff-protect (<< 1.1.0)")
endforeach()

set(CPACK_DEBIAN_DBGSYM_PACKAGE_NAME poweroff-protect-dbgsym)
set(CPACK_DEBIAN_DBGSYM_PACKAGE_SECTION debug)
set(CPACK_DEBIAN_DBGSYM_PACKAGE_DEPENDS ${exact_module})
set(CPACK_DEBIAN_DBGSYM_PACKAGE_SHLIBDEPS OFF)
multi_arch(DBGSYM)
set(CPACK_COMPONENT_DBGSYM_DESCRIPTION
    "retention of an operator panel's values, debugging symbols
The names of functions, lines and variables of the module and the tools, for
debuggers.")
set(programs poweroff_protect)
if(POWEROFF_PROTECT_TOOLS)
    list(APPEND programs panel_simulator retention_inspector simulated_host project_tree file_calls)
endif()
list(TRANSFORM programs REPLACE "(.+)" "$<TARGET_FILE:\\1>")
install(CODE "set(files ${programs})\nset(readelf ${CMAKE_READELF})\nset(objcopy ${CMAKE_OBJCOPY})"
        COMPONENT dbgsym EXCLUDE_FROM_ALL)
install(SCRIPT packaging/debian/debug_symbols.cmake COMPONENT dbgsym EXCLUDE_FROM_ALL)

# What every Debian package has, and other packages do not need.
set(extras ${PROJECT_BINARY_DIR}/debian)
execute_process(COMMAND sh -c "\"$1\" \"$2\" \"$3\" \"$4\" \"$5\" | gzip -9n >\"$6\"" sh
                        ${CMAKE_CURRENT_SOURCE_DIR}/packaging/debian/changelog ${CMAKE_CURRENT_SOURCE_DIR}/CHANGELOG.md
                        poweroff-protect ${PROJECT_VERSION} ${POWEROFF_PROTECT_MAINTAINER} ${extras}/changelog.gz
                COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS CHANGELOG.md)
foreach(component ${CPACK_COMPONENTS_ALL})
    string(TOUPPER ${component} upper)
    set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    set(folder ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package})
    install(FILES ${extras}/changelog.gz DESTINATION ${folder} COMPONENT ${component} EXCLUDE_FROM_ALL)
    if(NOT component STREQUAL module)
        install(FILES LICENSE DESTINATION ${folder} RENAME copyright COMPONENT ${component} EXCLUDE_FROM_ALL)
    endif()
    if(EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/packaging/debian/${package}.lintian-overrides)
        install(FILES packaging/debian/${package}.lintian-overrides RENAME ${package}
                DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides COMPONENT ${component} EXCLUDE_FROM_ALL)
    endif()
endforeach()
if(POWEROFF_PROTECT_TOOLS)
    foreach(tool panel_simulator retention_inspector)
        execute_process(COMMAND gzip -9nc docs/man/${tool}.1 WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}
                        OUTPUT_FILE ${extras}/${tool}.1.gz COMMAND_ERROR_IS_FATAL ANY)
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS docs/man/${tool}.1)
        install(FILES ${extras}/${tool}.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
                COMPONENT tools EXCLUDE_FROM_ALL)
    endforeach()
endif()
