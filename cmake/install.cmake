# What `cmake --install` puts under the prefix, and the .deb that cpack makes of it:
#   bin/quillix                          the command-line host
#   lib/libxsisdk.so                     the offline SDK and host engine it loads plug-ins with
#   lib/quillix/libQuillix.so            the plug-in
#   lib/libquillix_core.a                the host-neutral cores ...
#   include/quillix/{core,kernel}/...    ... and their headers
#   lib/cmake/Quillix/                   find_package(Quillix) → Quillix::core
#   lib/pkgconfig/quillix-core.pc        the same for pkg-config
# Run paths are relative ($ORIGIN), so the tree can be moved or unpacked anywhere.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(QUILLIX_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/Quillix)
set(QUILLIX_INSTALL_PLUGINDIR ${CMAKE_INSTALL_LIBDIR}/quillix)

set_target_properties(quillix PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
set_target_properties(Quillix PROPERTIES INSTALL_RPATH "$ORIGIN/..")
set_target_properties(quillix_core PROPERTIES EXPORT_NAME core)
target_include_directories(quillix_core INTERFACE
                           $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/quillix>)

install(TARGETS quillix RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS xsisdk LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS Quillix LIBRARY DESTINATION ${QUILLIX_INSTALL_PLUGINDIR})
install(TARGETS quillix_core EXPORT QuillixTargets ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/core ${PROJECT_SOURCE_DIR}/kernel
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/quillix FILES_MATCHING PATTERN "*.h")

install(EXPORT QuillixTargets NAMESPACE Quillix:: DESTINATION ${QUILLIX_INSTALL_CMAKEDIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/QuillixConfig.cmake.in
                              ${PROJECT_BINARY_DIR}/QuillixConfig.cmake
                              INSTALL_DESTINATION ${QUILLIX_INSTALL_CMAKEDIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/QuillixConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/QuillixConfig.cmake
              ${PROJECT_BINARY_DIR}/QuillixConfigVersion.cmake
        DESTINATION ${QUILLIX_INSTALL_CMAKEDIR})

configure_file(${PROJECT_SOURCE_DIR}/cmake/quillix-core.pc.in
               ${PROJECT_BINARY_DIR}/quillix-core.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/quillix-core.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

set(CPACK_PACKAGE_NAME quillix)
set(CPACK_PACKAGE_VENDOR "Quillix developers")
set(CPACK_PACKAGE_CONTACT "developers@quillix.example")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Node toolbox with its offline host and host-neutral cores")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
include(CPack)
