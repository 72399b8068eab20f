include(CMakePackageConfigHelpers)

# Two components, which become the two Debian packages: "runtime" is the shared library with
# its SONAME link, "development" everything a build needs (headers, the static library, the
# unversioned link, the CMake package and the pkg-config file).
install(TARGETS tessera tessera_static EXPORT TesseraTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(EXPORT TesseraTargets NAMESPACE Tessera::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Tessera COMPONENT development)

configure_package_config_file(cmake/TesseraConfig.cmake.in
  ${PROJECT_BINARY_DIR}/TesseraConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Tessera)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TesseraConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TesseraConfig.cmake ${PROJECT_BINARY_DIR}/TesseraConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Tessera COMPONENT development)

# Relative to the .pc file, so an install to any --prefix works; a build for /usr (the Debian
# packages) names /usr itself, which pkg-config recognises as a system directory and leaves out
# of the flags.
if(CMAKE_INSTALL_PREFIX MATCHES "^/usr/?$")
  set(TESSERA_PC_PREFIX "/usr")
else()
  file(RELATIVE_PATH TESSERA_PC_TO_PREFIX "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
  set(TESSERA_PC_PREFIX "\${pcfiledir}/${TESSERA_PC_TO_PREFIX}")
endif()
configure_file(cmake/tessera.pc.in ${PROJECT_BINARY_DIR}/tessera.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tessera.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
