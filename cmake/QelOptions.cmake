# Options and the settings every target of the project shares.

option(QEL_BUILD_PROGRAM "Build the host library and the qel program (needs GStreamer, cairo, CLI11)" ON)
option(QEL_BUILD_PAGE "Build the page of the server, with the program (needs npm)" ON)
option(QEL_BUILD_TESTS "Build the tests (needs GoogleTest, RapidCheck)" ${PROJECT_IS_TOP_LEVEL})
option(QEL_BUILD_EXAMPLES "Build the example programs" ${PROJECT_IS_TOP_LEVEL})
option(QEL_BUILD_BENCHMARKS "Build the benchmarks (needs Google Benchmark, OpenCV, Leptonica)" OFF)
option(QEL_BUILD_FUZZERS "Build the libFuzzer programs (needs clang)" OFF)
option(QEL_WARNINGS_AS_ERRORS "Stop at the first warning" ${PROJECT_IS_TOP_LEVEL})
set(QEL_SANITIZERS "" CACHE STRING "Sanitizers for every target, as -fsanitize takes them (address,undefined or thread)")
option(QEL_COVERAGE "Measure line and branch coverage" OFF)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Kind of build" FORCE)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# One folder for every shared object: plug-ins are looked for beside libqel_algorithm.so.
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_INSTALL_RPATH "$ORIGIN;$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

find_program(QEL_CCACHE ccache)
if(QEL_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${QEL_CCACHE}")
endif()

# Flags reach only the targets of this project: qel_settings is linked PRIVATE by the functions of QelTargets.
add_library(qel_settings INTERFACE)
# No contraction: a fused multiply-add rounds once where the formulas round twice.
target_compile_options(qel_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow $<$<BOOL:${QEL_WARNINGS_AS_ERRORS}>:-Werror>
  -ffp-contract=off)
target_link_options(qel_settings INTERFACE -Wl,--no-undefined)
if(QEL_SANITIZERS)
  target_compile_options(qel_settings INTERFACE
    -fsanitize=${QEL_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(qel_settings INTERFACE -fsanitize=${QEL_SANITIZERS})
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_compile_options(qel_settings INTERFACE
      "-fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/cmake/sanitizer-ignore.txt")
    # clang links its sanitizer runtime into programs only; libraries find it there.
    target_link_options(qel_settings INTERFACE -Wl,-z,undefs)
  endif()
endif()
if(QEL_COVERAGE)
  target_compile_options(qel_settings INTERFACE --coverage -fno-inline)
  # A function that is copied to wherever it is used would have branches to cover in every copy.
  target_compile_definitions(qel_settings INTERFACE always_inline=unused)
  target_link_options(qel_settings INTERFACE --coverage)
endif()

find_package(Boost 1.81 REQUIRED COMPONENTS filesystem system json)
find_package(Threads REQUIRED)
