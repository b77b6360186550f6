# Run by cpack between staging and packing: adds to each package what Debian's policy asks for.
set(source "${CMAKE_CURRENT_LIST_DIR}/../..")

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} key)
  set(package ${CPACK_DEBIAN_${key}_PACKAGE_NAME})
  set(usr "${CPACK_TEMPORARY_DIRECTORY}/${component}/usr")

  # Of a system's libraries the loader knows the folder: paths relative to the file serve copies that may be moved.
  file(GLOB binaries LIST_DIRECTORIES false "${usr}/bin/*" "${usr}/lib/*/lib*.so*" "${usr}/lib/*/qel/*")
  foreach(binary IN LISTS binaries)
    if(NOT IS_SYMLINK "${binary}")
      file(RPATH_REMOVE FILE "${binary}")
      execute_process(COMMAND strip --strip-unneeded --remove-section=.comment --remove-section=.note "${binary}"
        COMMAND_ERROR_IS_FATAL ANY)
    endif()
  endforeach()

  file(MAKE_DIRECTORY "${usr}/share/doc/${package}")
  file(COPY_FILE "${source}/COPYRIGHT" "${usr}/share/doc/${package}/copyright")
  file(COPY_FILE "${source}/cmake/package/changelog" "${usr}/share/doc/${package}/changelog.Debian")
  file(COPY_FILE "${source}/CHANGELOG.md" "${usr}/share/doc/${package}/changelog")
  configure_file("${source}/cmake/package/lintian/${component}" "${usr}/share/lintian/overrides/${package}" @ONLY)
  file(GLOB pages "${usr}/share/man/man1/*.1")
  execute_process(COMMAND gzip -9n "${usr}/share/doc/${package}/changelog.Debian" "${usr}/share/doc/${package}/changelog"
    ${pages} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
