include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
check_cxx_compiler_flag(-fcf-protection RUXA_DOLQ_HAVE_CF_PROTECTION)

# What makes an overrun end the program instead of being used: in every build, not only the packages.
function(ruxa_harden target)
  target_compile_options(${target} PRIVATE -fstack-protector-strong
    $<$<BOOL:${RUXA_DOLQ_HAVE_CF_PROTECTION}>:-fcf-protection>)
  # It does nothing without optimisation, and hides calls from the sanitizers. -U: some compilers and
  # packagers define it themselves.
  if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    target_compile_options(${target} PRIVATE
      "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:SHELL:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2>")
  endif()
  target_link_options(${target} PRIVATE LINKER:-z,relro LINKER:-z,now)
endfunction()

# What every target of this project has in common: the language, the warnings, hidden symbols.
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
    -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
  # GCC 12 takes what std::regex is made of for uninitialised once it is instrumented.
  if(CMAKE_CXX_FLAGS MATCHES "-fsanitize" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
  endif()
  ruxa_harden(${target})
  # Search paths in a binary are RUNPATHs: LD_LIBRARY_PATH comes first.
  target_link_options(${target} PRIVATE LINKER:--enable-new-dtags)
endfunction()

# A shared object of the embedded platform: `name` is its file name without "lib" and ".so".
# A real one with the same symbols and SONAME takes its place through the loader path alone.
function(ruxa_platform_library target name soversion)
  add_library(${target} SHARED)
  ruxa_target(${target})
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ${name} SOVERSION ${soversion})
  # SYSTEM: to the library these are foreign headers.
  target_include_directories(${target} SYSTEM PUBLIC
    $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>)
  # It needs none of this project's libraries.
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "")
  install(TARGETS ${target}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
      COMPONENT platform NAMELINK_COMPONENT platform-development)
  # In a folder of their own: the headers of a real platform may lie beside it.
  install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/ruxa-platform
    COMPONENT platform-development)
  target_link_options(${target} PRIVATE LINKER:--no-undefined)
endfunction()
