# Installs libraries, plug-ins and public headers, and what makes them usable from CMake and pkg-config. Every file finds
# the others by its own place, so that a prefix may be moved. The components are the packages of QelPackages.
include(CMakePackageConfigHelpers)

get_property(targets GLOBAL PROPERTY QEL_INSTALL_TARGETS)
get_property(plugins GLOBAL PROPERTY QEL_INSTALL_PLUGINS)
set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/qel")
set(pkgconfig_folder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
set(generated "${PROJECT_BINARY_DIR}/package")

install(TARGETS ${targets} EXPORT qel-targets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT libraries NAMELINK_COMPONENT development
  FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development)
install(TARGETS ${plugins} LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT plugins)

# All libraries and their list, for tools/abi.
add_custom_target(qel_libraries DEPENDS ${targets})
list(JOIN targets "\n" lines)
file(WRITE "${PROJECT_BINARY_DIR}/libraries.txt" "${lines}\n")

# The CMake package.
list(TRANSFORM targets REPLACE "^qel_" "" OUTPUT_VARIABLE libraries)
list(SORT libraries)
configure_package_config_file(cmake/package/qel-config.cmake.in "${generated}/qel-config.cmake"
  INSTALL_DESTINATION "${package_folder}")
write_basic_package_version_file("${generated}/qel-config-version.cmake" COMPATIBILITY SameMajorVersion)
configure_file(cmake/package/qel-add-plugin.cmake.in "${generated}/qel-add-plugin.cmake" @ONLY)
install(EXPORT qel-targets NAMESPACE qel:: DESTINATION "${package_folder}" COMPONENT development)
install(FILES "${generated}/qel-config.cmake" "${generated}/qel-config-version.cmake" "${generated}/qel-add-plugin.cmake"
  DESTINATION "${package_folder}" COMPONENT development)

# pkg-config: qel_<library>.pc, named like the library, requires what the library's headers include.
function(qel_install_pkgconfig target)
  get_target_property(public ${target} INTERFACE_LINK_LIBRARIES)
  get_target_property(all ${target} LINK_LIBRARIES)
  get_target_property(description ${target} QEL_DESCRIPTION)
  set(requires "")
  set(requires_private "")
  set(libraries "")
  foreach(library IN LISTS public all)
    if(library MATCHES "^qel::(.+)")
      if(library IN_LIST public)
        list(APPEND requires qel_${CMAKE_MATCH_1})
      else()
        list(APPEND requires_private qel_${CMAKE_MATCH_1})
      endif()
    elseif(library STREQUAL Boost::filesystem AND library IN_LIST public)
      set(libraries " -lboost_filesystem")
    endif()
  endforeach()
  list(REMOVE_DUPLICATES requires)
  list(JOIN requires ", " requires)
  list(JOIN requires_private ", " requires_private)
  set(prefix /prefix)
  # The way back from the folder of the file to the prefix.
  cmake_path(RELATIVE_PATH prefix BASE_DIRECTORY "/prefix/${pkgconfig_folder}" OUTPUT_VARIABLE to_prefix)
  configure_file(cmake/package/library.pc.in "${generated}/${target}.pc" @ONLY)
  install(FILES "${generated}/${target}.pc" DESTINATION "${pkgconfig_folder}" COMPONENT development)
endfunction()
foreach(target IN LISTS targets)
  qel_install_pkgconfig(${target})
endforeach()
install(FILES COPYRIGHT DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/qel" RENAME copyright COMPONENT notes)
