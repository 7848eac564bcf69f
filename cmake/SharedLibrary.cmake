# xfm_shared_library(target): what both shared objects have in common: lib/lib<target>.so.6.1, whose soname is the
# file's name, with the development link beside it; found by its sister in the same folder; installed.
function(xfm_shared_library target)
  set_target_properties(${target} PROPERTIES
    VERSION 6.1
    SOVERSION 6.1
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib
    BUILD_WITH_INSTALL_RPATH ON
    INSTALL_RPATH "$ORIGIN")
  target_link_options(${target} PRIVATE -Wl,--as-needed -Wl,--no-undefined -Wl,-z,relro -Wl,-z,now)
  if(XFM_INSTALL)
    install(TARGETS ${target} EXPORT XfmTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  endif()
endfunction()
