# Settings every target shares, and the functions that declare targets.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

add_library(tavek_settings INTERFACE)
target_include_directories(tavek_settings INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(tavek_settings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # Raised wrongly for joined std::strings by these versions (GCC bug 105651).
  target_compile_options(tavek_settings INTERFACE -Wno-restrict)
endif()
# Archives beyond 2 GiB, whatever the machine.
target_compile_definitions(tavek_settings INTERFACE _FILE_OFFSET_BITS=64)
# Every build but the one that is shipped ends at once when an index or an iterator leaves its container.
target_compile_definitions(tavek_settings INTERFACE $<$<NOT:$<CONFIG:Release>>:_GLIBCXX_ASSERTIONS>)

if(TAVEK_SANITIZE)
  target_compile_options(tavek_settings INTERFACE
    -fsanitize=${TAVEK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tavek_settings INTERFACE -fsanitize=${TAVEK_SANITIZE})
endif()
if(TAVEK_FUZZ)
  target_compile_options(tavek_settings INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(TAVEK_COVERAGE)
  # Atomic, for counters that two threads raise at once may else turn out negative, which gcovr refuses.
  target_compile_options(tavek_settings INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(tavek_settings INTERFACE --coverage)
endif()
if(WIN32)
  enable_language(RC)
  # One file, no DLLs of the compiler beside it.
  target_link_options(tavek_settings INTERFACE -static)
  target_compile_definitions(tavek_settings INTERFACE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0A00)
endif()

# tavek_library(NAME SOURCES... [USES LIBRARY...]): one layer of the tree as a static library.
function(tavek_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC tavek_settings ${ARG_USES})
endfunction()

# tavek_shipped(NAME): a program that is given to users. Outside Windows the optimised build is one file that needs no
# libraries of the system's, so it runs on any distribution and starts without the time that loading them takes.
function(tavek_shipped name)
  if(NOT WIN32 AND CMAKE_BUILD_TYPE STREQUAL "Release")
    target_link_options(${name} PRIVATE -static-pie -Wl,--gc-sections -s)
  endif()
endfunction()

# tavek_program_resources(NAME DESCRIPTION): gives a program its Windows manifest (UTF-8, long paths, no elevation) and
# a version resource with the project's version; its OUTPUT_NAME, if any, must be set before. Nothing on other systems.
function(tavek_program_resources name description)
  if(NOT WIN32)
    return()
  endif()
  get_target_property(PROGRAM_NAME ${name} OUTPUT_NAME)
  if(NOT PROGRAM_NAME)
    set(PROGRAM_NAME ${name})
  endif()
  set(PROGRAM_DESCRIPTION "${description}")
  set(resources ${CMAKE_CURRENT_BINARY_DIR}/${name}.rc)
  configure_file(${PROJECT_SOURCE_DIR}/packaging/windows/program.rc.in ${resources} @ONLY)
  set_source_files_properties(${resources} PROPERTIES
    OBJECT_DEPENDS ${PROJECT_SOURCE_DIR}/packaging/windows/program.manifest)
  target_sources(${name} PRIVATE ${resources})
endfunction()

# tavek_test(NAME SOURCES... [USES LIBRARY...]): one GoogleTest program, registered with CTest.
function(tavek_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;USES" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_USES} tavek_testing GTest::gmock_main)
  tavek_program_resources(${name} "Tests of ${PROJECT_NAME}")
  add_test(NAME ${name} COMMAND ${name})
endfunction()
