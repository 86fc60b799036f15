# Program and libraries lie side by side, as they must to find each other; bin/ gets a link to the program. Components are
# what packages are made of: program, libraries, development, plugins, doc.
include(CMakePackageConfigHelpers)

set(AVEFFECT_INSTALL_DIR ${CMAKE_INSTALL_LIBDIR}/aveffect)
set(AVEFFECT_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/aveffect)
set(AVEFFECT_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
# The host library's headers name each other from the top of the source tree.
set(AVEFFECT_HOST_INCLUDE_DIR ${CMAKE_INSTALL_INCLUDEDIR}/aveffect-host)

install(TARGETS aveffect RUNTIME DESTINATION ${AVEFFECT_INSTALL_DIR} COMPONENT program)
install(CODE "
  file(MAKE_DIRECTORY \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\")
  file(RELATIVE_PATH program \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}\"
    \"\${CMAKE_INSTALL_PREFIX}/${AVEFFECT_INSTALL_DIR}/aveffect\")
  file(CREATE_LINK \"\${program}\" \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/aveffect\" SYMBOLIC)
" COMPONENT program)

install(TARGETS AVEffect LIBRARY DESTINATION ${AVEFFECT_INSTALL_DIR} COMPONENT libraries)
install(TARGETS aveffect_headers AVBaseTools AVBaseMedia EXPORT aveffectTargets
  LIBRARY DESTINATION ${AVEFFECT_INSTALL_DIR} COMPONENT libraries)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/aveffect DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  FILES_MATCHING PATTERN "*.h")

# The host library, for programs that want clips rendered.
install(TARGETS aveffect_host mediabridge EXPORT aveffectHostTargets
  ARCHIVE DESTINATION ${AVEFFECT_INSTALL_DIR} COMPONENT development
  INCLUDES DESTINATION ${AVEFFECT_HOST_INCLUDE_DIR})
foreach(header ${AVEFFECT_HOST_HEADERS})
  get_filename_component(room ${header} DIRECTORY)
  install(FILES ${PROJECT_SOURCE_DIR}/${header} DESTINATION ${AVEFFECT_HOST_INCLUDE_DIR}/${room} COMPONENT development)
endforeach()

foreach(set aveffectTargets aveffectHostTargets)
  install(EXPORT ${set} NAMESPACE aveffect:: DESTINATION ${AVEFFECT_CMAKE_DIR} COMPONENT development)
endforeach()
string(REPLACE ";" " " AVEFFECT_FFMPEG "${AVEFFECT_FFMPEG}")
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/aveffectConfig.cmake.in
  ${PROJECT_BINARY_DIR}/aveffectConfig.cmake
  INSTALL_DESTINATION ${AVEFFECT_CMAKE_DIR} PATH_VARS AVEFFECT_INSTALL_DIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/aveffectConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/aveffectConfig.cmake ${PROJECT_BINARY_DIR}/aveffectConfigVersion.cmake
  DESTINATION ${AVEFFECT_CMAKE_DIR} COMPONENT development)
# It names the folder, which is known when it is installed.
set(AVEFFECT_PC_PREFIX "@CMAKE_INSTALL_PREFIX@")
configure_file(${PROJECT_SOURCE_DIR}/cmake/aveffect.pc.in ${PROJECT_BINARY_DIR}/aveffect.pc.in @ONLY)
install(CODE "
  configure_file(\"${PROJECT_BINARY_DIR}/aveffect.pc.in\"
    \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${AVEFFECT_PKGCONFIG_DIR}/aveffect.pc\" @ONLY)
" COMPONENT development)

if(TARGET aveffect_mlt)
  install(FILES ${PROJECT_BINARY_DIR}/share/man/man7/aveffect-mlt.7 DESTINATION ${CMAKE_INSTALL_MANDIR}/man7 COMPONENT mlt)
endif()
if(TARGET aveffect_gst)
  install(FILES ${PROJECT_BINARY_DIR}/share/man/man7/aveffect-gstreamer.7 DESTINATION ${CMAKE_INSTALL_MANDIR}/man7 COMPONENT gstreamer)
endif()
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT license)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc
  FILES_MATCHING PATTERN "*.md" PATTERN "pictures/*" PATTERN "api" EXCLUDE)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc)
# Built by targets of their own; what has not been built is not installed.
install(DIRECTORY ${PROJECT_BINARY_DIR}/share/doc/aveffect/api DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT doc OPTIONAL)
