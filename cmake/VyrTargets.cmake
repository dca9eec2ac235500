# What every target of the project shares: warnings, sanitizers and Qt's stricter rules.

option(VYR_SANITIZE "Build with the address and undefined-behaviour sanitizers" OFF)
option(VYR_COVERAGE "Count which lines and branches run; clang++ only" OFF)
option(VYR_FUZZ "Build the fuzzers, too; clang++ only" OFF)

add_library(vyr_options INTERFACE)
target_compile_options(vyr_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor
  -Woverloaded-virtual -Wold-style-cast -Wcast-align -Wformat=2 -Wundef -Werror)
target_compile_definitions(vyr_options INTERFACE
  QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_NO_URL_CAST_FROM_STRING
  QT_USE_QSTRINGBUILDER QT_DEPRECATED_WARNINGS QT_DISABLE_DEPRECATED_BEFORE=0x050F00)
if(VYR_SANITIZE)
  target_compile_options(vyr_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  target_link_options(vyr_options INTERFACE -fsanitize=address,undefined)
endif()
if(VYR_COVERAGE)
  target_compile_options(vyr_options INTERFACE -fprofile-instr-generate -fcoverage-mapping)
  target_link_options(vyr_options INTERFACE -fprofile-instr-generate)
endif()
if(VYR_FUZZ)
  # The fuzzer sees which way an input takes through everything that is compiled so.
  target_compile_options(vyr_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# vyr_add_library(NAME SOURCES... ): one static library of a folder, whose headers are reached as "folder/Header.h".
function(vyr_add_library name)
  add_library(${name} STATIC ${ARGN})
  get_filename_component(above "${CMAKE_CURRENT_SOURCE_DIR}" DIRECTORY)
  target_include_directories(${name} PUBLIC "${above}")
  target_link_libraries(${name} PRIVATE vyr_options)
endfunction()

# Where a session of a desktop would put what belongs to it alone; Qt warns when there is none.
set(VYR_TEST_RUNTIME_DIR "${CMAKE_BINARY_DIR}/test-runtime")
file(MAKE_DIRECTORY "${VYR_TEST_RUNTIME_DIR}")
file(CHMOD "${VYR_TEST_RUNTIME_DIR}" DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)

# vyr_add_test(NAME SOURCES file... LIBRARIES target... [TIMEOUT seconds])
# One QtTest program, run by CTest on the offscreen platform with settings and home of its own.
function(vyr_add_test name)
  cmake_parse_arguments(arg "" "TIMEOUT" "SOURCES;LIBRARIES" ${ARGN})
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE vyr_options Qt::Test ${arg_LIBRARIES})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
  add_test(NAME ${name} COMMAND ${name})
  set(environment
    QT_QPA_PLATFORM=offscreen
    QT_FONT_DPI=96
    XDG_RUNTIME_DIR=${VYR_TEST_RUNTIME_DIR}
    XDG_CONFIG_HOME=${CMAKE_BINARY_DIR}/test-homes/${name}
    LC_ALL=C.UTF-8
    LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0)
  set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT} ENVIRONMENT "${environment}")
endfunction()
