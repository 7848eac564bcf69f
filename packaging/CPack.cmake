# The Debian packages: cpack --config build/debian/CPackConfig.cmake. A component of the installation is a package.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME xfm)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "Xfm maintainers <maintainers@xfm.invalid>")
set(CPACK_PACKAGE_VENDOR "Xfm")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/documents.cmake)
set(CPACK_XFM_PACKAGING ${CMAKE_CURRENT_LIST_DIR})

# xfm_package(component package section depends summary text)
set(CPACK_COMPONENTS_ALL)
macro(xfm_package component package section depends summary text)
  list(APPEND CPACK_COMPONENTS_ALL ${component})
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${package})
  set(CPACK_DEBIAN_${upper}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${upper}_PACKAGE_DEPENDS "${depends}")
  set(CPACK_DEBIAN_${upper}_DESCRIPTION "${summary}\n${text}")
endmacro()

# xfm_library_package(component soname...): the loader's cache is renewed, and who is linked with the library depends on it.
macro(xfm_library_package component)
  string(TOUPPER ${component} upper)
  set(control ${PROJECT_BINARY_DIR}/packaging/${component})
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  file(WRITE ${control}/shlibs "lib${component} ${PROJECT_VERSION} ${package} (>= ${PROJECT_VERSION})\n")
  file(WRITE ${control}/triggers "activate-noawait ldconfig\n")
  set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA ${control}/shlibs ${control}/triggers)
endmacro()

set(same "(= ${PROJECT_VERSION})")
set(library libxfmgene9-${PROJECT_VERSION})
set(core libxfmcorex64-${PROJECT_VERSION})
set(about "\
Xfm transforms short signals: complex and real DFT and Hartley transform of
every length from 2 to 64, Walsh-Hadamard transform to 8192 and DCT-IV to 2^26
points, in single and double precision.
.
This package has ")
xfm_package(xfmgene9 ${library} libs "${core} ${same}" "fixed-size signal transforms for processors with AVX"
  "${about}the shared library, with copies for newer processors,\nof which the loader takes the best.")
xfm_library_package(xfmgene9)
xfm_package(xfmcorex64 ${core} libs "" "allocator of the Xfm signal transforms"
  "${about}the stand-in for the core library, from which the\ntransforms take their memory.")
xfm_library_package(xfmcorex64)
xfm_package(development libxfm-dev libdevel "${library} ${same}, ${core} ${same}" "fixed-size signal transforms - development files"
  "${about}the headers for C and C++, the source of the Fortran\nmodule, and what CMake and pkg-config need.")
if(TARGET xfm_python)
  get_directory_property(minor DIRECTORY ${PROJECT_SOURCE_DIR}/bindings/python DEFINITION Python_VERSION_MINOR)
  math(EXPR next "${minor} + 1")
  xfm_package(python python3-xfm python "${library} ${same}, python3-numpy, python3 (>= 3.${minor}), python3 (<< 3.${next})"
    "fixed-size signal transforms - Python module" "${about}the module for NumPy arrays, which is a backend of\nscipy.fft, too.")
endif()
if(TARGET xfm)
  xfm_package(tool xfm science "${library} ${same}" "fixed-size signal transforms - tool"
    "${about}the program xfm, which tests and times the library\nand analyses recordings.")
endif()
if(TARGET manual)
  xfm_package(documentation libxfm-doc doc "" "fixed-size signal transforms - manual" "${about}the manual in HTML.")
  set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
endif()
include(CPack)
