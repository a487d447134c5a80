# What `cmake --install` puts where, but for the targets, which their own folders install. The
# components are the packages: runtime, development, platform, platform-development, tools.
include(CMakePackageConfigHelpers)

# The installed library looks beside itself for the embedded platform, so that an installation may
# lie anywhere. It is a RUNPATH (never an RPATH): the loader asks LD_LIBRARY_PATH first. Under /usr
# there is none: the loader's own configuration finds the libraries and can put others first.
if(CMAKE_INSTALL_PREFIX MATCHES "^/usr/?$")
  set(RUXA_DOLQ_LIBRARY_RUNPATH "")
else()
  set(RUXA_DOLQ_LIBRARY_RUNPATH "$ORIGIN")
  file(RELATIVE_PATH RUXA_DOLQ_BIN_TO_LIB ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set(CMAKE_INSTALL_RPATH "$ORIGIN/${RUXA_DOLQ_BIN_TO_LIB}") # of programs
endif()

# For CMake: find_package(ruxa-dolq) and the target ruxa::dolq.
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ruxa-dolq)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ruxa-dolq-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
    ${PROJECT_SOURCE_DIR}/cmake/ruxa-dolq-config.cmake
    ${PROJECT_BINARY_DIR}/ruxa-dolq-config-version.cmake
  DESTINATION ${package_dir} COMPONENT development)
install(EXPORT ruxa-dolq-targets NAMESPACE ruxa:: DESTINATION ${package_dir} COMPONENT development)

# For everything else: pkg-config.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH RUXA_DOLQ_PC_TO_PREFIX
  ${CMAKE_INSTALL_PREFIX}/${pkgconfig_dir} ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" RUXA_DOLQ_PC_TO_PREFIX "${RUXA_DOLQ_PC_TO_PREFIX}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/ruxa-dolq.pc.in
  ${PROJECT_BINARY_DIR}/ruxa-dolq-${PROJECT_VERSION_MAJOR}.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/ruxa-dolq-${PROJECT_VERSION_MAJOR}.pc
  DESTINATION ${pkgconfig_dir} COMPONENT development)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR}
  COMPONENT development)

# Section 7 tells about the library, section 1 about the tools. The formats of the files that
# integrators write come with the development files.
file(GLOB manuals_1 CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/*.1)
file(GLOB manuals_7 CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/docs/man/*.7)
file(GLOB schemas CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/schema/*.xsd)
install(FILES ${manuals_1} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
install(FILES ${manuals_7} DESTINATION ${CMAKE_INSTALL_MANDIR}/man7 COMPONENT development)
install(FILES ${schemas} DESTINATION ${CMAKE_INSTALL_DATADIR}/ruxa-dolq COMPONENT development)
