# xfm_library(target): what both libraries have in common: shared, lib/lib<target>.so.6.1, whose soname is the file's
# name, with the development link beside it, found by its sister in the same folder; or static, lib/lib<target>.a.
function(xfm_library target)
  set_target_properties(${target} PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
  if(BUILD_SHARED_LIBS)
    set_target_properties(${target} PROPERTIES
      VERSION ${PROJECT_VERSION}
      SOVERSION ${PROJECT_VERSION}
      BUILD_WITH_INSTALL_RPATH ON
      INSTALL_RPATH "$ORIGIN")
    target_link_options(${target} PRIVATE -Wl,--as-needed -Wl,--no-undefined -Wl,-z,relro -Wl,-z,now)
  endif()
  if(XFM_INSTALL)
    install(TARGETS ${target} EXPORT XfmTargets
      LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${target} NAMELINK_COMPONENT development
      ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
  endif()
endfunction()
