# Installs, with cmake --install, the module, what is built against it, and the tools. The components are the packages of
# packages.cmake.
# SPDX-License-Identifier: MIT

include(CMakePackageConfigHelpers)

# One folder for all headers, because they include each other by folder name.
set(headers ${CMAKE_INSTALL_INCLUDEDIR}/poweroff_protect)
set(documents ${CMAKE_INSTALL_DATAROOTDIR}/doc/poweroff-protect)
set(package_files ${CMAKE_INSTALL_LIBDIR}/cmake/poweroff_protect)

install(TARGETS poweroff_protect EXPORT poweroff_protect
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT module
        INCLUDES DESTINATION ${headers})
install(FILES LICENSE DESTINATION ${documents} RENAME copyright COMPONENT module)

install(DIRECTORY define_header host_interface DESTINATION ${headers} COMPONENT dev FILES_MATCHING PATTERN "*.h")
install(FILES poweroff_protect/poweroff_protect.h poweroff_protect/maintenance_file_info.h poweroff_protect/version.h
        DESTINATION ${headers}/poweroff_protect COMPONENT dev)
install(FILES docs/integration.md docs/upgrading.md docs/binary_interface.md docs/supported_platforms.md docs/reliability.md
              docs/performance.md
        DESTINATION ${documents} COMPONENT dev)
install(FILES docs/images/medium.svg docs/images/performance.svg DESTINATION ${documents}/images COMPONENT dev)
install(DIRECTORY docs/measurements DESTINATION ${documents} COMPONENT dev)
install(DIRECTORY examples/ DESTINATION ${documents}/examples COMPONENT dev
        PATTERN "*.xml" EXCLUDE PATTERN "*.csv" EXCLUDE)

install(EXPORT poweroff_protect NAMESPACE poweroff_protect:: FILE poweroff_protect-targets.cmake
        DESTINATION ${package_files} COMPONENT dev)
configure_package_config_file(packaging/poweroff_protect-config.cmake.in
                              ${PROJECT_BINARY_DIR}/poweroff_protect-config.cmake INSTALL_DESTINATION ${package_files})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/poweroff_protect-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/poweroff_protect-config.cmake
              ${PROJECT_BINARY_DIR}/poweroff_protect-config-version.cmake
        DESTINATION ${package_files} COMPONENT dev)

# The file is in LIBDIR/pkgconfig and finds the prefix from there, wherever the tree was installed or unpacked.
file(RELATIVE_PATH prefix_from_pkgconfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
if(POWEROFF_PROTECT_QT EQUAL 4)
    set(qtcore_module "QtCore >= 4.8")
elseif(POWEROFF_PROTECT_QT EQUAL 5)
    set(qtcore_module "Qt5Core >= 5.15")
else()
    set(qtcore_module "Qt6Core >= 6.2")
endif()
configure_file(packaging/poweroff_protect.pc.in ${PROJECT_BINARY_DIR}/poweroff_protect.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/poweroff_protect.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

if(POWEROFF_PROTECT_TOOLS)
    # The simulated panel's own libraries are for it alone.
    set(own_libraries ${CMAKE_INSTALL_LIBDIR}/poweroff-protect)
    file(RELATIVE_PATH libraries_from_bin /${CMAKE_INSTALL_BINDIR} /${own_libraries})
    set(tools panel_simulator)
    if(TARGET retention_inspector) # not with Qt 4
        list(APPEND tools retention_inspector)
    endif()
    set_target_properties(${tools} PROPERTIES INSTALL_RPATH "\$ORIGIN/${libraries_from_bin}")
    set_target_properties(simulated_host project_tree PROPERTIES INSTALL_RPATH "\$ORIGIN")
    install(TARGETS ${tools} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
    install(TARGETS simulated_host project_tree file_calls LIBRARY DESTINATION ${own_libraries} COMPONENT tools)
    install(FILES docs/man/panel_simulator.1 docs/man/retention_inspector.1
            DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT manuals)
    install(FILES tools/retention_inspector/completion.bash RENAME retention_inspector
            DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions COMPONENT tools)
    install(FILES docs/retention_inspector.md docs/project_format.md docs/file_format.md docs/commissioning_report.html
                  project_tree/project.xsd
            DESTINATION ${documents} COMPONENT tools)
    install(FILES docs/images/retention_map.png DESTINATION ${documents}/images COMPONENT tools)
    install(DIRECTORY examples/ DESTINATION ${documents}/examples COMPONENT tools FILES_MATCHING PATTERN "*.xml"
            PATTERN "*.csv" PATTERN dump_project EXCLUDE PATTERN minimal_runtime EXCLUDE)
endif()
