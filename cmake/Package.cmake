# What an installed tree offers to find_package(Xfm) and to pkg-config.
include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Xfm)
install(EXPORT XfmTargets FILE XfmConfig.cmake NAMESPACE Xfm:: DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/XfmConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/XfmConfigVersion.cmake DESTINATION ${package_folder})

# The tree may be moved: the prefix is found from the file's own place.
file(RELATIVE_PATH XFM_PREFIX_FROM_PC ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${CMAKE_CURRENT_LIST_DIR}/xfm.pc.in ${PROJECT_BINARY_DIR}/xfm.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/xfm.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
