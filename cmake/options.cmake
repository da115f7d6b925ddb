# Choices of a build, and the flags that every target gets.

option(NBX_TESTS "Build the tests" ON)
option(NBX_BENCH "Build the benchmarks" ON)
option(NBX_WERROR "Treat warnings as errors" ON)
option(NBX_CUDA "Build the CUDA path where the toolkit is found" OFF)
set(NBX_SANITIZE "" CACHE STRING "Sanitizers, as in -fsanitize=")
option(NBX_FUZZ "Build the fuzz targets (needs clang)" OFF)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()

# Where `cmake --install` puts the libraries and the plug-in: ../lib/nimbrix as seen from the program.
include(GNUInstallDirs)
set(NBX_INSTALL_LIB lib/nimbrix)

# Kernels for AVX2 and AVX-512 beside the baseline, chosen at run time (util/isa.h).
set(NBX_ISA_LEVELS OFF)
if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64" AND NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
  set(NBX_ISA_LEVELS ON)
endif()

find_program(NBX_CCACHE ccache)
if(NBX_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${NBX_CCACHE})
endif()

add_library(nbx_flags INTERFACE)
target_compile_options(nbx_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual
  # The same source gives the same bits with and without fused multiply-add.
  -ffp-contract=off
  # Calls within a shared library may be inlined.
  -fno-semantic-interposition)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # False alarms of GCC 12 on std::string's operator+.
  target_compile_options(nbx_flags INTERFACE -Wno-restrict)
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  # Instrumented loops can't always be vectorised as asked.
  target_compile_options(nbx_flags INTERFACE -Wno-pass-failed)
endif()
if(NBX_WERROR)
  target_compile_options(nbx_flags INTERFACE -Werror)
endif()
if(NBX_ISA_LEVELS)
  target_compile_definitions(nbx_flags INTERFACE NBX_ISA_LEVELS)
endif()
if(NBX_SANITIZE)
  target_compile_options(nbx_flags INTERFACE -fsanitize=${NBX_SANITIZE} -fno-omit-frame-pointer -g)
  target_link_options(nbx_flags INTERFACE -fsanitize=${NBX_SANITIZE})
  target_compile_definitions(nbx_flags INTERFACE NBX_SANITIZED)
endif()

set(NBX_HAVE_CUDA OFF)
if(NBX_CUDA)
  find_package(CUDAToolkit 12)
  if(CUDAToolkit_FOUND)
    set(NBX_HAVE_CUDA ON)
  endif()
endif()
if(NBX_HAVE_CUDA)
  message(STATUS "CUDA ${CUDAToolkit_VERSION}: the GPU path is built")
else()
  message(STATUS "CUDA off: everything runs on the CPU, the software device serves the tests")
endif()
