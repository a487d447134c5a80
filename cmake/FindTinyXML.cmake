# Finds TinyXML (version 2.6, not TinyXML-2) and defines the imported target TinyXML::TinyXML.
find_path(TinyXML_INCLUDE_DIR tinyxml.h)
find_library(TinyXML_LIBRARY tinyxml)
mark_as_advanced(TinyXML_INCLUDE_DIR TinyXML_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(TinyXML
  REQUIRED_VARS TinyXML_LIBRARY TinyXML_INCLUDE_DIR
  REASON_FAILURE_MESSAGE "on Debian it is the package libtinyxml-dev")

if(TinyXML_FOUND AND NOT TARGET TinyXML::TinyXML)
  add_library(TinyXML::TinyXML UNKNOWN IMPORTED)
  # Include directories of imported targets are SYSTEM ones.
  set_target_properties(TinyXML::TinyXML PROPERTIES
    IMPORTED_LOCATION "${TinyXML_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${TinyXML_INCLUDE_DIR}")
endif()
