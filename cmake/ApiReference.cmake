# The reference of the interfaces and of the host library, which no other target needs: cmake --build build --target api
find_program(DOXYGEN doxygen)
if(NOT DOXYGEN)
  return()
endif()
set(AVEFFECT_DOCUMENTED_HEADERS)
foreach(header ${AVEFFECT_HOST_HEADERS})
  string(APPEND AVEFFECT_DOCUMENTED_HEADERS " \"${PROJECT_SOURCE_DIR}/${header}\"")
endforeach()
configure_file(${PROJECT_SOURCE_DIR}/docs/api/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
add_custom_target(api
  COMMAND ${CMAKE_COMMAND} -E rm -rf ${PROJECT_BINARY_DIR}/share/doc/aveffect/api
  COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/share/doc/aveffect
  COMMAND ${DOXYGEN} ${PROJECT_BINARY_DIR}/Doxyfile
  VERBATIM)
