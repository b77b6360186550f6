# Installs libraries, plug-ins, public headers and the CMake package "qel".
include(CMakePackageConfigHelpers)

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/qel")
get_property(targets GLOBAL PROPERTY QEL_INSTALL_TARGETS)
get_property(plugins GLOBAL PROPERTY QEL_INSTALL_PLUGINS)
install(TARGETS ${targets} EXPORT qel-targets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
if(plugins)
  install(TARGETS ${plugins} LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
endif()
install(EXPORT qel-targets NAMESPACE qel:: DESTINATION "${package_folder}")

list(TRANSFORM targets REPLACE "^qel_" "" OUTPUT_VARIABLE libraries)
list(SORT libraries)
configure_package_config_file(cmake/qel-config.cmake.in "${PROJECT_BINARY_DIR}/qel-config.cmake"
  INSTALL_DESTINATION "${package_folder}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/qel-config-version.cmake" COMPATIBILITY SameMajorVersion)
configure_file(cmake/qel-add-plugin.cmake.in "${PROJECT_BINARY_DIR}/qel-add-plugin.cmake" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/qel-config.cmake" "${PROJECT_BINARY_DIR}/qel-config-version.cmake"
  "${PROJECT_BINARY_DIR}/qel-add-plugin.cmake" DESTINATION "${package_folder}")
