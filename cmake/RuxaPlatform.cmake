# Where a part of the platform comes from: `embedded` builds the stand-in in platform/<part>,
# `system` takes what a real platform has installed. Either way it is the target platform::<part>.
# `option` is the choice, `header` and `library` are what clients of the part include and link.
function(ruxa_platform_part option part header library)
  set(${option} embedded CACHE STRING "Platform part ${library}: embedded or system")
  if(${option} STREQUAL "embedded")
    add_subdirectory(${part})
    return()
  elseif(NOT ${option} STREQUAL "system")
    message(FATAL_ERROR "${option} is '${${option}}': choose embedded (the stand-in in "
      "platform/${part}) or system (a real platform's, installed on this machine).")
  endif()
  find_path(${option}_INCLUDE_DIR ${header} PATH_SUFFIXES opensaf)
  find_library(${option}_LIBRARY ${library} PATH_SUFFIXES opensaf)
  if(NOT EXISTS "${${option}_INCLUDE_DIR}/${header}")
    string(APPEND missing "\n  header ${header}: set ${option}_INCLUDE_DIR to the folder it is in")
  endif()
  if(NOT EXISTS "${${option}_LIBRARY}")
    string(APPEND missing "\n  library lib${library}.so: set ${option}_LIBRARY to its full path")
  endif()
  if(missing)
    message(FATAL_ERROR "${option}=system, but this was not found:${missing}\n"
      "Or build the stand-in: ${option}=embedded.")
  endif()
  add_library(platform::${part} UNKNOWN IMPORTED GLOBAL)
  set_target_properties(platform::${part} PROPERTIES
    IMPORTED_LOCATION "${${option}_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${${option}_INCLUDE_DIR}")
endfunction()

# Stops unless the NTF headers in `include_dir` are for names of 600 bytes.
function(ruxa_check_ntf_names include_dir)
  set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
  try_compile(compiled
    SOURCES ${PROJECT_SOURCE_DIR}/cmake/check-ntf-names.cpp
    CMAKE_FLAGS "-DINCLUDE_DIRECTORIES=${include_dir}"
    CXX_STANDARD 17
    OUTPUT_VARIABLE output
    NO_CACHE)
  if(NOT compiled)
    string(REGEX MATCH "error: ([^\n]*)" error "${output}")
    message(FATAL_ERROR "The NTF headers in ${include_dir} cannot be used (${error})\n"
      "The NTF service has to be built for names of 600 bytes, or every alarm would overrun its heap. "
      "docs/real-platform.md says how.")
  endif()
endfunction()
