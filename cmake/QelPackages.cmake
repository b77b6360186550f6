# Debian packages, made by cpack: one an install component (see QelInstall).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qel)
set(CPACK_PACKAGE_VENDOR "the authors of qel")
set(CPACK_PACKAGE_CONTACT "the authors of qel <authors@qel.invalid>")
# Each package has a summary of its own.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/package/complete_debian_packages.cmake")
set(CPACK_POST_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/package/finish_debian_packages.cmake")
set(CPACK_COMPONENTS_ALL libraries plugins development)
if(QEL_BUILD_PROGRAM)
  list(APPEND CPACK_COMPONENTS_ALL program)
endif()
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
# The packages are packed again when they are finished.
set(CPACK_DEBIAN_COMPRESSION_TYPE gzip)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Packages of the system that libraries and program are linked with; our own are named below.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(version "${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}")
file(STRINGS cmake/package/changelog newest LIMIT_COUNT 1)
if(NOT newest MATCHES "^qel \\(${version}\\) ")
  message(FATAL_ERROR "cmake/package/changelog begins with \"${newest}\": add an entry for ${version}")
endif()
set(library_package libqel${PROJECT_VERSION_MAJOR})

# qel_debian_package(<component> <name> SECTION <section> SUMMARY "..." [DEPENDS "..."] [RECOMMENDS "..."] TEXT "...")
function(qel_debian_package component name)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" "SECTION;SUMMARY;DEPENDS;RECOMMENDS;TEXT" "")
  string(TOUPPER ${component} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${arg_SECTION} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${arg_DEPENDS}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_RECOMMENDS "${arg_RECOMMENDS}" PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_DESCRIPTION "${arg_SUMMARY}\n${arg_TEXT}" PARENT_SCOPE)
endfunction()
qel_debian_package(libraries ${library_package} SECTION libs SUMMARY "video-analytics algorithm library"
  TEXT "One-bit masks and their morphology, connected components, reference-counted
frames, camera calibration, a live tree of settings, and the framework that
loads video algorithms as plug-ins.")
qel_debian_package(plugins qel-plugins SECTION libs SUMMARY "video algorithms of the qel library"
  DEPENDS "${library_package} (= ${version})"
  TEXT "Plug-ins that find moving objects in videos and that hide people and zones.
They lie beside the library, which loads them.")
qel_debian_package(development libqel-dev SECTION libdevel SUMMARY "video-analytics algorithm library (development files)"
  DEPENDS "${library_package} (= ${version}), libboost1.81-dev, libboost-filesystem1.81-dev, libcereal-dev"
  TEXT "Headers, the CMake package qel and pkg-config files for programs that use
the library and for plug-ins of one's own.")
qel_debian_package(program qel SECTION video SUMMARY "finds and measures what moves in videos"
  DEPENDS "${library_package} (= ${version}), qel-plugins (= ${version}), gstreamer1.0-plugins-base, gstreamer1.0-plugins-good"
  RECOMMENDS "gstreamer1.0-libav, gstreamer1.0-plugins-ugly"
  TEXT "Runs video algorithms on a file, a camera or a stream and writes what they
find as JSON, as an annotated video or as a contact sheet. Calibrates cameras
and measures in their pictures.")

include(CPack)
