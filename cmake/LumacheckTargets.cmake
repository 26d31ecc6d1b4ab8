# What every target of the tree shares: the language, the warnings, the sanitizers, and where the products go.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
# What -O3 inlines makes g++ 12 warn of overlaps in std::string that are not there.
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# One prefix-like layout in the build folder, so that a program finds its module there as it does when installed.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(LUMACHECK_MODULE_DIR lib/lumacheck)

find_program(LUMACHECK_CCACHE ccache)
if(LUMACHECK_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${LUMACHECK_CCACHE})
endif()

add_library(lumacheck_options INTERFACE)
target_compile_options(lumacheck_options INTERFACE -Wall -Wextra -Wconversion -Wshadow -Wnon-virtual-dtor)
if(LUMACHECK_WERROR)
  target_compile_options(lumacheck_options INTERFACE -Werror)
endif()
if(LUMACHECK_SANITIZERS)
  add_compile_options(-fsanitize=${LUMACHECK_SANITIZERS} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${LUMACHECK_SANITIZERS})
endif()

if(LUMACHECK_FUZZ)
  # Everything tells the fuzzer which way it went; only the fuzzers bring its main function.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# lumacheck_library(NAME FILES... [PUBLIC libs...] [PRIVATE libs...]): a layer of the tree. Includes are written from
# the root.
function(lumacheck_library name)
  cmake_parse_arguments(ARG "" "" "FILES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${ARG_FILES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${ARG_PUBLIC} PRIVATE lumacheck_options ${ARG_PRIVATE})
endfunction()

# lumacheck_test(NAME FILES... [LIBS libs...] [LABELS labels...]): one GoogleTest program, every test of it known to
# CTest.
function(lumacheck_test name)
  cmake_parse_arguments(ARG "" "" "FILES;LIBS;LABELS" ${ARGN})
  include(GoogleTest)
  add_executable(${name} ${ARG_FILES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE
    lumacheck_options ${ARG_LIBS} test_support GTest::gmock GTest::gtest GTest::gtest_main)
  if(TARGET movie_ffmpeg)
    add_dependencies(${name} movie_ffmpeg)
  endif()
  gtest_discover_tests(${name} DISCOVERY_TIMEOUT 120 PROPERTIES TIMEOUT 300 LABELS "${ARG_LABELS}")
  foreach(label ${ARG_LABELS})
    if(NOT TARGET tests_${label})
      add_custom_target(tests_${label})
    endif()
    add_dependencies(tests_${label} ${name})
  endforeach()
endfunction()
