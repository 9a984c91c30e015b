# cmake --install: the module, its headers, and what find_package(poweroff_protect) reads.
# SPDX-License-Identifier: MIT
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# One folder for all headers, because they include each other by the names of their rooms.
set(headers ${CMAKE_INSTALL_INCLUDEDIR}/poweroff_protect)
set(documents ${CMAKE_INSTALL_DATAROOTDIR}/doc/poweroff-protect)
set(package_files ${CMAKE_INSTALL_LIBDIR}/cmake/poweroff_protect)

install(TARGETS poweroff_protect EXPORT poweroff_protect
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        INCLUDES DESTINATION ${headers})
install(DIRECTORY define_header host_interface DESTINATION ${headers} FILES_MATCHING PATTERN "*.h")
install(FILES poweroff_protect/poweroff_protect.h poweroff_protect/maintenance_file_info.h
        DESTINATION ${headers}/poweroff_protect)
install(FILES docs/integration.md docs/binary_interface.md docs/supported_platforms.md docs/reliability.md
              DESTINATION ${documents})
install(FILES LICENSE DESTINATION ${documents} RENAME copyright)

install(EXPORT poweroff_protect NAMESPACE poweroff_protect:: FILE poweroff_protect-targets.cmake
        DESTINATION ${package_files})
configure_package_config_file(packaging/poweroff_protect-config.cmake.in
                              ${PROJECT_BINARY_DIR}/poweroff_protect-config.cmake INSTALL_DESTINATION ${package_files})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/poweroff_protect-config-version.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/poweroff_protect-config.cmake
              ${PROJECT_BINARY_DIR}/poweroff_protect-config-version.cmake
        DESTINATION ${package_files})
