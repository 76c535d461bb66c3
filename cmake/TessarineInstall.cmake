# Headers, library, CMake package and pkg-config file.

include(CMakePackageConfigHelpers)

install(DIRECTORY "${PROJECT_SOURCE_DIR}/tessarine" DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        FILES_MATCHING PATTERN "*.h" PATTERN "detail" EXCLUDE)
install(TARGETS tessarine EXPORT tessarineTargets
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION ${CMAKE_INSTALL_DOCDIR})

set(_package "${CMAKE_INSTALL_LIBDIR}/cmake/tessarine")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/tessarineConfig.cmake.in"
                              "${PROJECT_BINARY_DIR}/tessarineConfig.cmake" INSTALL_DESTINATION ${_package})
write_basic_package_version_file("${PROJECT_BINARY_DIR}/tessarineConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(EXPORT tessarineTargets NAMESPACE tessarine:: DESTINATION ${_package})
install(FILES "${PROJECT_BINARY_DIR}/tessarineConfig.cmake" "${PROJECT_BINARY_DIR}/tessarineConfigVersion.cmake"
        DESTINATION ${_package})

# A static library needs its dependencies from every user; a shared one brings them along.
list(JOIN TESSARINE_LIBRARY_MODULES ", " _modules)
if(TESSARINE_SHARED)
  set(TESSARINE_PC_REQUIRES "Requires.private: ${_modules}")
  set(TESSARINE_PC_LIBS "Libs.private: -pthread")
  set(TESSARINE_PC_CFLAGS "")
else()
  set(TESSARINE_PC_REQUIRES "Requires: ${_modules}")
  set(TESSARINE_PC_LIBS "")
  set(TESSARINE_PC_CFLAGS " -DTESSARINE_STATIC -pthread")
endif()
foreach(_name INCLUDEDIR LIBDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${_name}}")
    set(TESSARINE_PC_${_name} "${CMAKE_INSTALL_${_name}}")
  else()
    set(TESSARINE_PC_${_name} "\${prefix}/${CMAKE_INSTALL_${_name}}")
  endif()
endforeach()
# The prefix follows from the place of the file, so that an installation can be moved, or made with --prefix.
file(RELATIVE_PATH TESSARINE_PC_UP "/p/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/p")
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(TESSARINE_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
else()
  string(REGEX REPLACE "/$" "" TESSARINE_PC_UP "${TESSARINE_PC_UP}")
  set(TESSARINE_PC_PREFIX "\${pcfiledir}/${TESSARINE_PC_UP}")
endif()
configure_file("${PROJECT_SOURCE_DIR}/cmake/tessarine.pc.in" "${PROJECT_BINARY_DIR}/tessarine.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/tessarine.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
