# Builds the page in FOLDER of copies of SOURCE and TESTS, with NODE and NPM: packages, check of the types, Vite.
# Where nothing has changed since it was built last, nothing is done; where the list of packages has not, nothing is
# fetched. Several may call this at once.
#
# FOLDER/node_modules   packages          FOLDER/src, tests   copies of the sources
# FOLDER/dist           the page          FOLDER/*.stamp      what the others were made of
file(MAKE_DIRECTORY "${FOLDER}")
file(LOCK "${FOLDER}/lock" TIMEOUT 1200)

# digest(<variable> FILES <file>...): changes when a file does, comes or goes.
function(digest variable)
  execute_process(COMMAND "${NODE}" --version OUTPUT_VARIABLE text)
  foreach(file IN LISTS ARGN)
    file(SHA256 "${file}" hash)
    string(APPEND text "${file} ${hash}\n")
  endforeach()
  string(SHA256 hash "${text}")
  set(${variable} ${hash} PARENT_SCOPE)
endfunction()

# is_done(<variable> <name> <digest>): whether FOLDER/<name>.stamp holds the digest.
function(is_done variable name hash)
  set(${variable} OFF PARENT_SCOPE)
  if(EXISTS "${FOLDER}/${name}.stamp")
    file(READ "${FOLDER}/${name}.stamp" last)
    if(last STREQUAL hash)
      set(${variable} ON PARENT_SCOPE)
    endif()
  endif()
endfunction()

# run(<doing> <program> <argument>...): in FOLDER; tells what was said only when it fails.
function(run doing)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY "${FOLDER}" RESULT_VARIABLE result OUTPUT_VARIABLE said ERROR_VARIABLE said)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message("${said}")
    message(FATAL_ERROR "${doing} failed (${result}) in ${FOLDER}: ${command}")
  endif()
endfunction()

file(GLOB_RECURSE sources "${SOURCE}/*")
file(GLOB_RECURSE tests "${TESTS}/*.ts" "${TESTS}/*.tsx")
digest(everything ${sources} ${tests})
is_done(built page ${everything})
if(built AND EXISTS "${FOLDER}/dist/index.html")
  return()
endif()
file(REMOVE "${FOLDER}/page.stamp")

file(REMOVE_RECURSE "${FOLDER}/src" "${FOLDER}/public" "${FOLDER}/tests")
file(COPY "${SOURCE}/" DESTINATION "${FOLDER}" PATTERN CMakeLists.txt EXCLUDE PATTERN "*.cmake" EXCLUDE
  PATTERN node_modules EXCLUDE)
file(COPY "${TESTS}" DESTINATION "${FOLDER}/tests" FILES_MATCHING PATTERN "*.ts" PATTERN "*.tsx")

digest(packages "${SOURCE}/package.json" "${SOURCE}/package-lock.json" "${SOURCE}/.npmrc")
is_done(fetched packages ${packages})
if(NOT fetched)
  file(REMOVE "${FOLDER}/packages.stamp")
  run("Fetching the packages of the page" "${NPM}" ci --loglevel=error --prefer-offline)
  file(WRITE "${FOLDER}/packages.stamp" ${packages})
endif()
run("The check of the page's types" "${NODE}" node_modules/typescript/bin/tsc --noEmit)
run("Building the page" "${NODE}" node_modules/vite/bin/vite.js build --logLevel warn)
file(WRITE "${FOLDER}/page.stamp" ${everything})
