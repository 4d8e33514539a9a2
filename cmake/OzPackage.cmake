# What gets installed, and how clients find it: find_package(oz CONFIG) and pkg-config oz, both from an
# installed tree, which may be moved as a whole, and from the build tree.

include_guard(GLOBAL)
include(CMakePackageConfigHelpers)

set(OZ_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/oz")
set(OZ_PC_DIR "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

# liboz finds the platform library beside itself.
set_target_properties(oz PROPERTIES INSTALL_RPATH "$ORIGIN")

install(TARGETS oz
  EXPORT ozTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/oz")
install(TARGETS LumSysTS
  EXPORT ozTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/LumSysTS")
install(EXPORT ozTargets NAMESPACE oz:: DESTINATION "${OZ_CMAKE_DIR}")

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/ozConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/cmake/ozConfig.cmake"
  INSTALL_DESTINATION "${OZ_CMAKE_DIR}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/cmake/ozConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/cmake/ozConfig.cmake"
  "${PROJECT_BINARY_DIR}/cmake/ozConfigVersion.cmake"
  DESTINATION "${OZ_CMAKE_DIR}")
export(EXPORT ozTargets NAMESPACE oz:: FILE "${PROJECT_BINARY_DIR}/cmake/ozTargets.cmake")

# The prefix is found from where the file lies, unless the library folder was given as a path of its own.
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(OZ_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
else()
  file(RELATIVE_PATH up "/${OZ_PC_DIR}" "/")
  string(REGEX REPLACE "/$" "" up "${up}")
  set(OZ_PC_PREFIX "\${pcfiledir}/${up}")
endif()
cmake_path(APPEND libdir "\${prefix}" "${CMAKE_INSTALL_LIBDIR}")
cmake_path(APPEND includedir "\${prefix}" "${CMAKE_INSTALL_INCLUDEDIR}")
set(OZ_PC_LIBDIR "${libdir}")
set(OZ_PC_CFLAGS "-I${includedir}/oz -I${includedir}/LumSysTS")
configure_file("${PROJECT_SOURCE_DIR}/cmake/oz.pc.in" "${PROJECT_BINARY_DIR}/pkgconfig/installed/oz.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/pkgconfig/installed/oz.pc" DESTINATION "${OZ_PC_DIR}")

# pkg-config prefers a file of this name to oz.pc.
if(PROJECT_IS_TOP_LEVEL)
  set(OZ_PC_PREFIX "${PROJECT_BINARY_DIR}")
  set(OZ_PC_LIBDIR "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
  set(OZ_PC_CFLAGS "-I${PROJECT_SOURCE_DIR}/ProtectedInterfaces -I${PROJECT_SOURCE_DIR}/LumSysTS")
  configure_file("${PROJECT_SOURCE_DIR}/cmake/oz.pc.in" "${PROJECT_BINARY_DIR}/pkgconfig/oz-uninstalled.pc" @ONLY)
endif()
