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
install(FILES ${PROJECT_BINARY_DIR}/ruxa-dolq-config-version.cmake
  DESTINATION ${package_dir} COMPONENT development)
install(EXPORT ruxa-dolq-targets FILE ruxa-dolq-config.cmake NAMESPACE ruxa::
  DESTINATION ${package_dir} COMPONENT development)

# For everything else: pkg-config. Made at the installation, which knows its prefix: the system's own,
# of which pkg-config then says nothing, or from where the file lies, so that the whole may be moved.
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pc_to_prefix /${pkgconfig_dir} /)
string(REGEX REPLACE "/$" "" pc_to_prefix ${pc_to_prefix})
set(pc_file ${PROJECT_BINARY_DIR}/ruxa-dolq-${PROJECT_VERSION_MAJOR}.pc)
set(PREFIX @PREFIX@) # stays for the installation
configure_file(${PROJECT_SOURCE_DIR}/cmake/ruxa-dolq.pc.in ${pc_file}.in @ONLY)
install(CODE "
  set(PREFIX \\\${pcfiledir}/${pc_to_prefix})
  if(CMAKE_INSTALL_PREFIX MATCHES ^/usr/?$)
    set(PREFIX /usr)
  endif()
  configure_file(\"${pc_file}.in\" \"${pc_file}\" @ONLY)" COMPONENT development)
install(FILES ${pc_file} DESTINATION ${pkgconfig_dir} COMPONENT development)

install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR}
  COMPONENT development)

# The pages of who operates and integrates. They link to each other, and to nothing else.
install(FILES
    ${PROJECT_SOURCE_DIR}/docs/mapping-files.md
    ${PROJECT_SOURCE_DIR}/docs/probes.md
    ${PROJECT_SOURCE_DIR}/docs/troubleshooting.md
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libruxa-dolq-${PROJECT_VERSION_MAJOR} COMPONENT runtime)

# The tool's page comes with the tool. The formats of the files that integrators write come with the
# development files.
install(FILES ${PROJECT_SOURCE_DIR}/docs/man/libruxa-dolq.7
  DESTINATION ${CMAKE_INSTALL_MANDIR}/man7 COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/schema/ DESTINATION ${CMAKE_INSTALL_DATADIR}/ruxa-dolq
  COMPONENT development FILES_MATCHING PATTERN *.xsd)
