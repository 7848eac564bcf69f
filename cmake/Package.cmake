# What an installed tree offers to find_package(Xfm) and to pkg-config, and the target that takes the tree away again.
include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Xfm)
install(EXPORT XfmTargets FILE XfmConfig.cmake NAMESPACE Xfm:: DESTINATION ${package_folder})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/XfmConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/XfmConfigVersion.cmake DESTINATION ${package_folder})

# The tree may be moved: the prefix is found from the file's own place, unless that place is fixed.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(XFM_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
else()
  file(RELATIVE_PATH way_up /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
  string(REGEX REPLACE "/$" "" way_up ${way_up})
  set(XFM_PC_PREFIX "\${pcfiledir}/${way_up}")
endif()
foreach(folder LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${folder}}")
    set(XFM_PC_${folder} ${CMAKE_INSTALL_${folder}})
  else()
    set(XFM_PC_${folder} "\${prefix}/${CMAKE_INSTALL_${folder}}")
  endif()
endforeach()
set(XFM_PC_LIBS "-lxfmgene9")
if(NOT BUILD_SHARED_LIBS)
  string(APPEND XFM_PC_LIBS " -lxfmcorex64 -lm -Wl,--gc-sections")
endif()
configure_file(${CMAKE_CURRENT_LIST_DIR}/xfm.pc.in ${PROJECT_BINARY_DIR}/xfm.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/xfm.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(NOT TARGET uninstall)
  add_custom_target(uninstall
    COMMAND ${CMAKE_COMMAND} -D FOLDER=${CMAKE_BINARY_DIR} -P ${CMAKE_CURRENT_LIST_DIR}/uninstall.cmake
    COMMENT "Removing what was installed" VERBATIM)
endif()

if(PROJECT_IS_TOP_LEVEL)
  include(packaging/CPack.cmake)
endif()
