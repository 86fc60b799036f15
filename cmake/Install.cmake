# Program and libraries lie side by side, as they must to find each other; bin/ gets a link to the program.
include(CMakePackageConfigHelpers)

set(AVEFFECT_INSTALL_DIR ${CMAKE_INSTALL_LIBDIR}/aveffect)
set(AVEFFECT_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/aveffect)

install(TARGETS aveffect RUNTIME DESTINATION ${AVEFFECT_INSTALL_DIR})
install(TARGETS AVEffect LIBRARY DESTINATION ${AVEFFECT_INSTALL_DIR})
install(TARGETS aveffect_headers AVBaseTools AVBaseMedia EXPORT aveffectTargets
  LIBRARY DESTINATION ${AVEFFECT_INSTALL_DIR})
install(CODE "
  file(MAKE_DIRECTORY \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
  file(RELATIVE_PATH program \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\"
    \"\${CMAKE_INSTALL_PREFIX}/${AVEFFECT_INSTALL_DIR}/aveffect\")
  file(CREATE_LINK \"\${program}\" \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/aveffect\" SYMBOLIC)
")
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/aveffect DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})

install(EXPORT aveffectTargets NAMESPACE aveffect:: DESTINATION ${AVEFFECT_CMAKE_DIR})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/aveffectConfig.cmake.in
  ${PROJECT_BINARY_DIR}/aveffectConfig.cmake
  INSTALL_DESTINATION ${AVEFFECT_CMAKE_DIR} PATH_VARS AVEFFECT_INSTALL_DIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/aveffectConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/aveffectConfig.cmake ${PROJECT_BINARY_DIR}/aveffectConfigVersion.cmake
  DESTINATION ${AVEFFECT_CMAKE_DIR})
