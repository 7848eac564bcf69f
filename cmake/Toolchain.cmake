# What the project is compiled with: g++ alone, for the generator works in __float128 and the kernels' arithmetic is
# held by its flags.
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU" OR CMAKE_CXX_COMPILER_VERSION VERSION_LESS 11)
  message(FATAL_ERROR "Xfm needs g++ 11 or newer; this is ${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION} (${CMAKE_CXX_COMPILER}).")
endif()
if(NOT CMAKE_C_COMPILER_ID STREQUAL "GNU")
  message(FATAL_ERROR "Xfm needs gcc beside g++; this is ${CMAKE_C_COMPILER_ID} (${CMAKE_C_COMPILER}).")
endif()
if(NOT CMAKE_SYSTEM_NAME STREQUAL "Linux" OR NOT CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
  message(FATAL_ERROR "Xfm is for x86-64 Linux; this is ${CMAKE_SYSTEM_PROCESSOR} ${CMAKE_SYSTEM_NAME}.")
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS ON)

# Under a user's -ffast-math the compiler would link a start file that sets flush-to-zero in whatever program loads the library.
add_link_options(-fno-fast-math)

get_property(multi_config GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
if(PROJECT_IS_TOP_LEVEL AND NOT multi_config AND NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Debug, Release, RelWithDebInfo or MinSizeRel" FORCE)
endif()

# What runs during the build is optimised also where the build itself is not, and its arithmetic is that of the language;
# g++ 12 misjudges joined strings.
set(XFM_GENERATOR_FLAGS -O2 -Wall -Wextra -Wno-restrict -fno-fast-math -ffp-contract=off)
