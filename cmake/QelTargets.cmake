# The functions that every CMakeLists.txt of the project uses: one line says what a folder holds.
include(GenerateExportHeader)

# Settings that shared libraries of ours have in common.
function(qel_shared_library target base_name)
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} VERIFY_INTERFACE_HEADER_SETS ON)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:qel_settings>)
  target_compile_features(${target} PUBLIC cxx_std_20)
endfunction()

# qel_platform_library(<name> DESCRIPTION "..." SOURCES ... HEADERS ... [DEPENDS ...] [PRIVATE_DEPENDS ...])
# The shared library libqel_<name>.so, alias qel::<name>. HEADERS stand under include/qel/<name>/ of the folder;
# qel/<name>/export.hpp with QEL_<NAME>_EXPORT is generated.
function(qel_platform_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "DESCRIPTION" "SOURCES;HEADERS;DEPENDS;PRIVATE_DEPENDS")
  set(target qel_${name})
  add_library(${target} SHARED ${arg_SOURCES})
  add_library(qel::${name} ALIAS ${target})
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name} QEL_DESCRIPTION "${arg_DESCRIPTION}")
  set(generated "${CMAKE_CURRENT_BINARY_DIR}/generated")
  generate_export_header(${target} EXPORT_FILE_NAME "${generated}/qel/${name}/export.hpp")
  target_sources(${target} PUBLIC FILE_SET HEADERS
    BASE_DIRS include "${generated}" FILES ${arg_HEADERS} "${generated}/qel/${name}/export.hpp")
  target_link_libraries(${target} PUBLIC ${arg_DEPENDS} PRIVATE ${arg_PRIVATE_DEPENDS})
  qel_shared_library(${target} ${name})
  set_property(GLOBAL APPEND PROPERTY QEL_INSTALL_TARGETS ${target})
endfunction()

# qel_algorithm_part(<name> SOURCES ... [HEADERS ...])
# One folder of src/: an OBJECT library that becomes part of libqel_algorithm.so. HEADERS are given relative to
# include/ of the project and become public headers of the library.
function(qel_algorithm_part name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;HEADERS")
  set(target qel_algorithm_${name}_objects)
  add_library(${target} OBJECT ${arg_SOURCES})
  target_compile_definitions(${target} PRIVATE qel_algorithm_EXPORTS)
  target_link_libraries(${target} PRIVATE qel_settings qel_algorithm_dependencies)
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}/include" "${PROJECT_SOURCE_DIR}/src")
  target_sources(qel_algorithm PRIVATE $<TARGET_OBJECTS:${target}>)
  list(TRANSFORM arg_HEADERS PREPEND "${PROJECT_SOURCE_DIR}/include/")
  target_sources(qel_algorithm PUBLIC FILE_SET HEADERS FILES ${arg_HEADERS})
endfunction()

# qel_plugin(<name> SOURCES ... [LIBS ...])
# The plug-in libqel_algorithm_<name>.so, built against public headers only, beside libqel_algorithm.so. QEL_VERSION is
# the project's version as a text.
function(qel_plugin name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBS")
  set(target qel_algorithm_${name})
  add_library(${target} MODULE ${arg_SOURCES})
  target_link_libraries(${target} PRIVATE qel_settings qel::algorithm ${arg_LIBS})
  target_include_directories(${target} PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}")
  target_compile_definitions(${target} PRIVATE "QEL_VERSION=\"${PROJECT_VERSION}\"")
  set_property(GLOBAL APPEND PROPERTY QEL_INSTALL_PLUGINS ${target})
  set_property(GLOBAL APPEND PROPERTY QEL_PLUGINS ${target})
endfunction()

# After so many seconds a test hangs. ThreadSanitizer makes programs some twenty times slower, counting lines without
# optimising them some ten times.
set(QEL_TEST_TIMEOUT 300)
if(QEL_SANITIZERS OR QEL_COVERAGE)
  set(QEL_TEST_TIMEOUT 900)
endif()

# qel_test(<name> SOURCES ... [LIBS ...] [INCLUDES ...])
# The GoogleTest program qel_<name>_test; each of its tests becomes a test of CTest, labelled <name>.
function(qel_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBS;INCLUDES")
  set(target qel_${name}_test)
  add_executable(${target} ${arg_SOURCES})
  target_link_libraries(${target} PRIVATE qel_settings ${arg_LIBS} GTest::gmock GTest::gtest_main)
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}/tests" ${arg_INCLUDES})
  gtest_discover_tests(${target} TEST_PREFIX "${name}/" DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
    PROPERTIES LABELS ${name} TIMEOUT ${QEL_TEST_TIMEOUT})
endfunction()

# qel_benchmark(<name> SOURCES ... [LIBS ...])
# The Google Benchmark program qel_<name>_bench.
function(qel_benchmark name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBS")
  set(target qel_${name}_bench)
  add_executable(${target} ${arg_SOURCES})
  target_link_libraries(${target} PRIVATE qel_settings ${arg_LIBS} benchmark::benchmark)
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}/benchmarks")
endfunction()

# qel_fuzzer(<name> SOURCES ... [LIBS ...])
# The libFuzzer program qel_<name>_fuzz; its seeds stand in fuzz/corpus/<name>/.
function(qel_fuzzer name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBS")
  set(target qel_${name}_fuzz)
  add_executable(${target} ${arg_SOURCES})
  target_compile_options(${target} PRIVATE -fsanitize=fuzzer)
  target_link_options(${target} PRIVATE -fsanitize=fuzzer)
  target_link_libraries(${target} PRIVATE qel_settings ${arg_LIBS})
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}/tests" "${PROJECT_SOURCE_DIR}/fuzz")
endfunction()

# qel_replay_test(<name> SOURCES ... [LIBS ...])
# The test replay/<name>: the body of the fuzzer of that name over every file of fuzz/corpus/<name>/.
function(qel_replay_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBS")
  set(target qel_${name}_replay)
  add_executable(${target} ${arg_SOURCES} "${PROJECT_SOURCE_DIR}/tests/support/replay.cpp")
  target_link_libraries(${target} PRIVATE qel_settings ${arg_LIBS})
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}/tests" "${PROJECT_SOURCE_DIR}/fuzz")
  add_test(NAME replay/${name} COMMAND ${target} "${PROJECT_SOURCE_DIR}/fuzz/corpus/${name}")
  set_tests_properties(replay/${name} PROPERTIES LABELS replay TIMEOUT 300)
endfunction()
