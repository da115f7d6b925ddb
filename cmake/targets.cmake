# nbx_folder(NAME SOURCES ... LINKS ...): the one target of a folder.
#
# The sources see the headers of src and of the repository's root, but link only what LINKS names: a
# call against the arrows between the folders fails at the link of the plug-in, whose libraries are
# linked with no undefined symbols allowed.
function(nbx_folder name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  add_library(${name} SHARED ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${ARG_LINKS} PRIVATE nbx_flags ${ARG_PRIVATE_LINKS})
  if(NOT NBX_SANITIZE)  # clang's runtimes of the sanitizers come in with the program
    target_link_options(${name} PRIVATE -Wl,--no-undefined)
  endif()
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION 1 INSTALL_RPATH "$ORIGIN")
  install(TARGETS ${name} LIBRARY DESTINATION ${NBX_INSTALL_LIB} NAMELINK_SKIP)
endfunction()

# nbx_test(NAME SOURCES ... LINKS ... TIMEOUT seconds): one test program, one ctest entry per test.
function(nbx_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINKS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 300)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/tests)
  target_link_libraries(${name} PRIVATE ${ARG_LINKS} nbx_flags nbx_test_support)
  # Tests run side by side: workers that wait must sleep, or they take the time of those that work.
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT ${ARG_TIMEOUT} ENVIRONMENT "OMP_WAIT_POLICY=passive;QT_QPA_PLATFORM=offscreen")
endfunction()

# nbx_kernels(TARGET FILE ...): compiles each file once per instruction set into TARGET.
#
# The file puts its functions into the namespace NBX_ISA (see util/isa.h). In builds without
# optimisation only the baseline exists: inline functions of the standard library that the compiler
# doesn't inline would otherwise be emitted for a processor that may lack the instructions.
function(nbx_kernels target)
  set(levels baseline)
  if(NBX_ISA_LEVELS)
    list(APPEND levels avx2 avx512)
  endif()
  foreach(level IN LISTS levels)
    set(objects ${target}_${level})
    add_library(${objects} OBJECT ${ARGN})
    target_include_directories(${objects} PRIVATE ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(${objects} PRIVATE nbx_flags Qt6::Core)
    target_compile_definitions(${objects} PRIVATE NBX_ISA=isa_${level})
    target_compile_options(${objects} PRIVATE -fno-math-errno -fno-trapping-math)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      # False alarms of GCC 12 on its own AVX-512 intrinsics.
      target_compile_options(${objects} PRIVATE -Wno-maybe-uninitialized -Wno-uninitialized)
    endif()
    if(level STREQUAL avx2)
      target_compile_options(${objects} PRIVATE -march=x86-64-v3)
    elseif(level STREQUAL avx512)
      target_compile_options(${objects} PRIVATE -march=x86-64-v4 -mprefer-vector-width=512)
    endif()
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:${objects}>)
  endforeach()
endfunction()
