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
  # Presets and checkouts share what the cache holds: paths count from the folder of the sources, and precompiled headers
  # by what is in them. The compiler itself tells which headers it read; the preprocessor would only run to learn that.
  set(CMAKE_CXX_COMPILER_LAUNCHER env
    CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_DEPEND=1 CCACHE_SLOPPINESS=pch_defines,time_macros ${LUMACHECK_CCACHE})
endif()

# Most of the time of a test would go into optimising GoogleTest: tests are compiled as they stand, and run a product that is
# optimised. The C library can fortify only what is.
set(LUMACHECK_TEST_OPTIONS -O0 -U_FORTIFY_SOURCE)
if(LUMACHECK_SANITIZERS MATCHES address)
  # By calls instead of in line: the same checks, and a sixth less to compile. What a test itself does does not take long.
  list(APPEND LUMACHECK_TEST_OPTIONS -mllvm -asan-instrumentation-with-call-threshold=0)
endif()

add_library(lumacheck_options INTERFACE)
# The presets but `dev` compile the sources of a target a dozen at a time: most of a compilation goes into the headers that
# they share. Names in unnamed namespaces are therefore unique within a room.
set(CMAKE_UNITY_BUILD_BATCH_SIZE 12)
if(CMAKE_UNITY_BUILD AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # It takes what a source keeps to itself for part of a header.
  target_compile_options(lumacheck_options INTERFACE -Wno-subobject-linkage)
endif()
target_compile_options(lumacheck_options INTERFACE -Wall -Wextra -Wconversion -Wshadow -Wnon-virtual-dtor)
if(LUMACHECK_WERROR)
  target_compile_options(lumacheck_options INTERFACE -Werror)
endif()
if(LUMACHECK_SANITIZERS)
  add_compile_options(-fsanitize=${LUMACHECK_SANITIZERS} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${LUMACHECK_SANITIZERS})
  # Full of the sanitizers' checks, code takes long to optimise: only what works through bytes and pictures is, which are the
  # rooms without Qt and what the fuzzers try. The rest waits, for people and for disks. Below -O2 clang++ inlines nothing, and
  # each step of an array is a call; it takes as long to compile.
  set(LUMACHECK_WORKING_OPTIONS -O2)
endif()

# lumacheck_fuzzed(TARGET): what the fuzzers try tells them which way it went. What -fsanitize=fuzzer-no-link stands for; that
# itself would ask for precompiled headers of its own.
function(lumacheck_fuzzed target)
  if(LUMACHECK_FUZZ)
    target_compile_options(${target} PRIVATE
      ${LUMACHECK_WORKING_OPTIONS} -fsanitize-coverage=inline-8bit-counters,indirect-calls,trace-cmp,pc-table)
    get_target_property(headers ${target} PRECOMPILE_HEADERS_REUSE_FROM)
    if(NOT headers STREQUAL precompiled_library_standard)
      # Those that come with Qt are not optimised.
      set_target_properties(${target} PROPERTIES DISABLE_PRECOMPILE_HEADERS ON)
    endif()
  endif()
endfunction()

# lumacheck_room([FUZZED] [PUBLIC libs...] [PRIVATE libs...]): the folder as a library: all its sources but main.cpp. It is
# called as the folder lies in the tree, `movie_atoms`, `shared_log`. PUBLIC is what its headers include, PRIVATE what only its
# sources do; tools/check_layers.py holds it to that. Includes are written from the root.
function(lumacheck_room)
  cmake_parse_arguments(ARG "FUZZED" "" "PUBLIC;PRIVATE" ${ARGN})
  file(RELATIVE_PATH room ${PROJECT_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
  string(REPLACE "SharedFiles/" "shared/" room ${room})
  string(REPLACE "/" "_" room ${room})
  string(TOLOWER ${room} room)
  file(GLOB files CONFIGURE_DEPENDS *.cpp *.h)
  list(FILTER files EXCLUDE REGEX "/main\\.cpp$")
  add_library(${room} STATIC ${files})
  target_include_directories(${room} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${room} PUBLIC ${ARG_PUBLIC} PRIVATE lumacheck_options ${ARG_PRIVATE})
  precompiled_headers_for(${room} library ${ARG_PUBLIC} ${ARG_PRIVATE})
  if(ARG_FUZZED)
    lumacheck_fuzzed(${room})
  endif()
endfunction()

# lumacheck_installed(TARGET...): what is made for an installation, with install() beside it; `product` makes all of it.
function(lumacheck_installed)
  set_property(GLOBAL APPEND PROPERTY LUMACHECK_PRODUCT ${ARGN})
endfunction()

# lumacheck_module(NAME OUTPUT_NAME file FILES... [LIBS libs...]): what a program loads only where it needs it, so that nobody waits
# for the libraries that it links.
function(lumacheck_module name)
  cmake_parse_arguments(ARG "" "OUTPUT_NAME" "FILES;LIBS" ${ARGN})
  add_library(${name} MODULE ${ARG_FILES})
  set_target_properties(${name} PROPERTIES
    PREFIX "" OUTPUT_NAME ${ARG_OUTPUT_NAME} LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/${LUMACHECK_MODULE_DIR})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE lumacheck_options ${ARG_LIBS})
  precompiled_headers_for(${name} library ${ARG_LIBS})
  lumacheck_installed(${name})
  install(TARGETS ${name} LIBRARY DESTINATION ${LUMACHECK_MODULE_DIR})
endfunction()

# lumacheck_test_library(NAME FILES... [LIBS libs...]): what several test programs share, optimised as the product is.
function(lumacheck_test_library name)
  cmake_parse_arguments(ARG "" "" "FILES;LIBS" ${ARGN})
  add_library(${name} STATIC EXCLUDE_FROM_ALL ${ARG_FILES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PUBLIC ${ARG_LIBS} PRIVATE lumacheck_options GTest::gtest)
  precompiled_headers_for(${name} library ${ARG_LIBS})
endfunction()

# lumacheck_test(NAME FILES... [LIBS libs...] [LABELS labels...]): one GoogleTest program. Every test of it is run by itself;
# under the sanitizers they share one process, which so meets what one of them leaves to the next, and starts once.
function(lumacheck_test name)
  cmake_parse_arguments(ARG "" "" "FILES;LIBS;LABELS" ${ARGN})
  add_executable(${name} ${ARG_FILES})
  target_compile_options(${name} PRIVATE ${LUMACHECK_TEST_OPTIONS})
  # All at once: what tests instantiate of GoogleTest is compiled anew in every batch.
  set_target_properties(${name} PROPERTIES UNITY_BUILD_BATCH_SIZE 0)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE
    lumacheck_options ${ARG_LIBS} test_support GTest::gmock GTest::gtest GTest::gtest_main)
  precompiled_headers_for(${name} test ${ARG_LIBS})
  if(TARGET movie_ffmpeg)
    add_dependencies(${name} movie_ffmpeg)
  endif()
  libraries_of(libraries ${ARG_LIBS})
  if("movie_decode" IN_LIST libraries AND NOT "accuracy" IN_LIST ARG_LABELS)
    list(APPEND ARG_LABELS optional)
  endif()
  if((LUMACHECK_SANITIZERS AND "accuracy" IN_LIST ARG_LABELS) OR NOT (LUMACHECK_FFMPEG OR "optional" IN_LIST ARG_LABELS))
    set_target_properties(${name} PROPERTIES EXCLUDE_FROM_ALL ON)
  endif()
  if(LUMACHECK_SANITIZERS)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 900 LABELS "${ARG_LABELS}")
  else()
    include(GoogleTest)
    # One word: it takes no lists, and `ctest -L` looks for any part of a label.
    string(REPLACE ";" "-" labels "${ARG_LABELS}")
    set(patience 300)
    if("accuracy" IN_LIST ARG_LABELS)
      set(patience 900)  # on a machine that has other things to do
    endif()
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 120 PROPERTIES TIMEOUT ${patience} LABELS "${labels}")
  endif()
  foreach(label ${ARG_LABELS})
    if(NOT TARGET tests_${label})
      add_custom_target(tests_${label})
    endif()
    add_dependencies(tests_${label} ${name})
  endforeach()
endfunction()

include(PrecompiledHeaders)
