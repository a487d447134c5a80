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
