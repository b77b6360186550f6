# Run by cpack on the packages it has made: cpack has packages of shared libraries call ldconfig in scripts of theirs, where
# Debian's policy wants a trigger. Without scripts a package also installs into a folder that holds no system.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  set(folder "${package}.d")
  execute_process(COMMAND dpkg-deb --raw-extract "${package}" "${folder}" COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE "${folder}/DEBIAN/postinst" "${folder}/DEBIAN/postrm")

  # What packages of others that are linked with the libraries will depend on.
  execute_process(COMMAND dpkg-deb --show "--showformat=\${Package}" "${package}" OUTPUT_VARIABLE name)
  set(shlibs "")
  file(GLOB libraries RELATIVE "${folder}/usr/lib" "${folder}/usr/lib/*/lib*.so.*")
  foreach(library IN LISTS libraries)
    if(library MATCHES "/lib([^/]+)\\.so\\.([0-9]+)$")
      string(APPEND shlibs "lib${CMAKE_MATCH_1} ${CMAKE_MATCH_2} ${name} (>= ${CPACK_PACKAGE_VERSION})\n")
    endif()
  endforeach()
  if(shlibs)
    file(WRITE "${folder}/DEBIAN/shlibs" "${shlibs}")
    file(WRITE "${folder}/DEBIAN/triggers" "activate-noawait ldconfig\n")
    # Libraries of several architectures may be installed side by side.
    file(READ "${folder}/DEBIAN/control" control)
    file(WRITE "${folder}/DEBIAN/control" "Multi-Arch: same\n${control}")
  endif()

  execute_process(COMMAND dpkg-deb --root-owner-group -Zxz --build "${folder}" "${package}"
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE_RECURSE "${folder}")
endforeach()
