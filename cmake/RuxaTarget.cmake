include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
check_cxx_compiler_flag(-fcf-protection RUXA_DOLQ_HAVE_CF_PROTECTION)

# What every target of this project has in common: the language, the warnings, hidden symbols, and
# what makes an overrun end the program instead of being used.
function(ruxa_target target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wformat=2 -Wnon-virtual-dtor
    -Woverloaded-virtual -Wold-style-cast
    # No path of the build machine in assertions and traces.
    -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=
    -fstack-protector-strong $<$<BOOL:${RUXA_DOLQ_HAVE_CF_PROTECTION}>:-fcf-protection>)
  if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    # It does nothing without optimisation, and hides calls from the sanitizers. -U: some compilers
    # and packagers define it themselves.
    target_compile_options(${target} PRIVATE
      "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:SHELL:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>")
  elseif(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # GCC 12 takes what std::regex is made of for uninitialised once it is instrumented.
    target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
  endif()
  # Search paths in a binary are RUNPATHs: LD_LIBRARY_PATH comes first.
  target_link_options(${target} PRIVATE
    LINKER:-z,relro LINKER:-z,now LINKER:--enable-new-dtags)
endfunction()

# Exports the symbols of exports.map in the current folder alone.
function(ruxa_export target)
  set(map ${CMAKE_CURRENT_SOURCE_DIR}/exports.map)
  target_link_options(${target} PRIVATE
    LINKER:--version-script=${map} LINKER:--no-undefined-version)
  set_target_properties(${target} PROPERTIES LINK_DEPENDS ${map})
endfunction()

# A shared object of the embedded platform, platform::<part>: `name` is its file name without "lib"
# and ".so". A real one with the same symbols and SONAME takes its place through the loader path.
function(ruxa_platform_library part name soversion)
  add_library(platform-${part} SHARED ${ARGN})
  add_library(platform::${part} ALIAS platform-${part})
  ruxa_target(platform-${part})
  # It needs none of this project's libraries.
  set_target_properties(platform-${part} PROPERTIES
    OUTPUT_NAME ${name} SOVERSION ${soversion} INSTALL_RPATH "")
  # SYSTEM: to the library these are foreign headers.
  target_include_directories(platform-${part} SYSTEM PUBLIC
    $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>)
  target_link_libraries(platform-${part} PRIVATE ruxa-common)
  target_link_options(platform-${part} PRIVATE LINKER:--no-undefined)
  install(TARGETS platform-${part}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
      COMPONENT platform NAMELINK_COMPONENT platform-development)
  # In a folder of their own: the headers of a real platform may lie beside it.
  install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ruxa-platform
    COMPONENT platform-development)
endfunction()

# The headers of these parts of the platform, without their libraries.
function(ruxa_platform_headers target)
  foreach(part IN LISTS ARGN)
    target_include_directories(${target} SYSTEM PUBLIC
      $<TARGET_PROPERTY:platform::${part},INTERFACE_INCLUDE_DIRECTORIES>)
  endforeach()
endfunction()

# A program of GoogleTest tests, whose names begin with `prefix`.
function(ruxa_test_program target prefix)
  add_executable(${target} ${ARGN})
  ruxa_target(${target})
  target_link_libraries(${target} PRIVATE GTest::gtest_main)
  gtest_discover_tests(${target} TEST_PREFIX "${prefix}" NO_PRETTY_VALUES
    DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60)
endfunction()
