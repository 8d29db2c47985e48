# Headers, libraries, the CMake package and the pkg-config file; component `library`.
include(CMakePackageConfigHelpers)

set(IMGTUNE_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/imgtune)
if(NOT ANDROID)
  # The stand-ins have the names of other packages' libraries: they lie in a folder of their own, in
  # which the library finds them, and so do their headers.
  set(IMGTUNE_STAND_INS_DIR ${CMAKE_INSTALL_LIBDIR}/imgtune)
  install(TARGETS cutils log EXPORT imgtuneTargets COMPONENT library
    DESTINATION ${IMGTUNE_STAND_INS_DIR})
  set_target_properties(ispfeature PROPERTIES INSTALL_RPATH "$ORIGIN/imgtune")
  install(DIRECTORY platform/include/ COMPONENT library
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/imgtune/platform)
  if(TARGET imgtune)
    file(RELATIVE_PATH lib_from_bin ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
    set_target_properties(imgtune PROPERTIES
      INSTALL_RPATH "$ORIGIN/${lib_from_bin};$ORIGIN/${lib_from_bin}/imgtune")
  endif()
endif()
set_target_properties(imgtune_headers PROPERTIES EXPORT_NAME headers)

install(TARGETS ispfeature imgtune_headers EXPORT imgtuneTargets COMPONENT library)
install(EXPORT imgtuneTargets NAMESPACE imgtune:: DESTINATION ${IMGTUNE_PACKAGE_DIR}
  COMPONENT library)

# The installed camera_state.h names the record's header that the library was built with, so that
# no consumer can be compiled against another.
install(DIRECTORY include/imgtune DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT library
  PATTERN camera_state.h EXCLUDE)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS include/imgtune/camera_state.h)
file(READ include/imgtune/camera_state.h camera_state)
if(IMGTUNE_CAMERA_STATE_HEADER)
  set(switch "#ifdef IMGTUNE_CAMERA_STATE_HEADER\n")
  if(NOT camera_state MATCHES "${switch}")
    message(FATAL_ERROR "camera_state.h no longer has the line: ${switch}")
  endif()
  string(REPLACE "${switch}" "#ifndef IMGTUNE_CAMERA_STATE_HEADER\n\
#define IMGTUNE_CAMERA_STATE_HEADER <${IMGTUNE_CAMERA_STATE_HEADER}>\n#endif\n\n${switch}"
    camera_state "${camera_state}")
endif()
file(CONFIGURE OUTPUT installed/camera_state.h CONTENT "${camera_state}" @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/installed/camera_state.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/imgtune COMPONENT library)

configure_package_config_file(cmake/imgtuneConfig.cmake.in imgtuneConfig.cmake
  INSTALL_DESTINATION ${IMGTUNE_PACKAGE_DIR})
write_basic_package_version_file(imgtuneConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/imgtuneConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/imgtuneConfigVersion.cmake
  DESTINATION ${IMGTUNE_PACKAGE_DIR} COMPONENT library)

# Paths relative to the file: an installed tree may be moved.
set(pkgconfig_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH include_from_pkgconfig ${pkgconfig_dir} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(cmake/imgtune.pc.in imgtune.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/imgtune.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT library)

# The workbench, for C++ programs of one's own; component `workbench`. find_package(imgtune
# COMPONENTS workbench) asks for the libraries that it stands on.
if(TARGET imgtune_workbench)
  set_target_properties(imgtune_workbench PROPERTIES EXPORT_NAME workbench)
  set_target_properties(imgtune_workbench_files PROPERTIES EXPORT_NAME workbench_files)
  install(TARGETS imgtune_workbench imgtune_workbench_files EXPORT imgtuneWorkbenchTargets
    COMPONENT workbench)
  install(EXPORT imgtuneWorkbenchTargets NAMESPACE imgtune:: DESTINATION ${IMGTUNE_PACKAGE_DIR}
    COMPONENT workbench)
  install(DIRECTORY workbench common DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/imgtune-workbench
    COMPONENT workbench FILES_MATCHING PATTERN "*.h")
endif()
