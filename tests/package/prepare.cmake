# Installs the project into a fresh PREFIX, then builds the projects of PROJECTS against it, each in a fresh folder of
# BINARY_DIR named after it. Compiler settings are those of the main build.
file(REMOVE_RECURSE "${PREFIX}" "${BINARY_DIR}")

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "failed (${result}): ${command}\n${output}")
  endif()
endfunction()

run("${CMAKE_COMMAND}" --install "${MAIN_BINARY_DIR}" --prefix "${PREFIX}")
foreach(project ${PROJECTS})
  cmake_path(GET project FILENAME name)
  run("${CMAKE_COMMAND}" -S "${project}" -B "${BINARY_DIR}/${name}" -G Ninja "-DCMAKE_PREFIX_PATH=${PREFIX}"
    "-DCMAKE_BUILD_TYPE=${BUILD_TYPE}" "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}"
    "-DCMAKE_CXX_COMPILER_LAUNCHER=${CXX_COMPILER_LAUNCHER}"
    "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror ${CXX_FLAGS}")
  run("${CMAKE_COMMAND}" --build "${BINARY_DIR}/${name}")
endforeach()
