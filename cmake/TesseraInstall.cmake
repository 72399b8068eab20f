include(CMakePackageConfigHelpers)

install(TARGETS tessera tessera_static EXPORT TesseraTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT TesseraTargets NAMESPACE Tessera::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Tessera)

configure_package_config_file(cmake/TesseraConfig.cmake.in
  ${PROJECT_BINARY_DIR}/TesseraConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Tessera)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/TesseraConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/TesseraConfig.cmake ${PROJECT_BINARY_DIR}/TesseraConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Tessera)

file(RELATIVE_PATH TESSERA_PC_TO_PREFIX "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
configure_file(cmake/tessera.pc.in ${PROJECT_BINARY_DIR}/tessera.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/tessera.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
