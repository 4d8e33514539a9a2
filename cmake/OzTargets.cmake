# How every target of this project is compiled, and the functions that make its targets.

include_guard(GLOBAL)

# Compiles `target` as this project compiles its own code. All of it is private: what a client compiles
# with is the client's business.
function(oz_compile_options target)
  set_target_properties(${target} PROPERTIES
    CXX_STANDARD 17
    CXX_STANDARD_REQUIRED ON
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual)
  if(OZ_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()

  # Paths in reports and debug information count from the source root, so that they are the same in
  # every checkout. The coverage tools have to find the sources and get full paths in their notes.
  if(OZ_COVERAGE)
    target_compile_options(${target} PRIVATE "-fmacro-prefix-map=${oz_SOURCE_DIR}/=")
  else()
    target_compile_options(${target} PRIVATE "-ffile-prefix-map=${oz_SOURCE_DIR}/=")
  endif()

  if(OZ_SANITIZE)
    target_compile_options(${target} PRIVATE
      "-fsanitize=${OZ_SANITIZE}" -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE "-fsanitize=${OZ_SANITIZE}")
  endif()
  if(OZ_COVERAGE)
    # Counters are atomic, since worker threads count too.
    target_compile_options(${target} PRIVATE --coverage -fprofile-update=atomic)
    target_link_options(${target} PRIVATE --coverage)
  endif()
endfunction()

# oz_add_library(NAME HEADER_DIR dir HEADERS ... SOURCES ...)
#
# A shared library with its public headers. Without sources there is no library yet: the target is left
# out with a message, and whatever would link to it has to ask whether it exists.
function(oz_add_library name)
  cmake_parse_arguments(arg "" "HEADER_DIR" "HEADERS;SOURCES" ${ARGN})
  if(NOT arg_SOURCES)
    message(STATUS "${name}: no sources, left out")
    return()
  endif()

  add_library(${name} SHARED ${arg_SOURCES})
  add_library(oz::${name} ALIAS ${name})
  oz_compile_options(${name})
  # Nobody replaces single functions of the libraries by others of the same name: calls within them are direct.
  target_compile_options(${name} PRIVATE -fno-semantic-interposition)
  target_compile_features(${name} PUBLIC cxx_std_17)
  target_sources(${name} PUBLIC
    FILE_SET HEADERS
    BASE_DIRS "${oz_SOURCE_DIR}/${arg_HEADER_DIR}"
    FILES ${arg_HEADERS})
  set_target_properties(${name} PROPERTIES
    VERSION ${oz_VERSION}
    SOVERSION ${oz_VERSION_MAJOR}
    VERIFY_INTERFACE_HEADER_SETS ${oz_IS_TOP_LEVEL})
  if(NOT OZ_SANITIZE)
    # The sanitizers' own symbols come from the executable.
    target_link_options(${name} PRIVATE -Wl,--no-undefined)
  endif()
endfunction()


# oz_add_test_executable(SOURCE [LABEL label] [TIMEOUT seconds] [LIBRARIES ...] [INCLUDES ...])
#
# One executable per test file, named after it. Its cases are found when ctest starts, since a sanitizer
# build may need settings to run at all that only ctest has.
function(oz_add_test_executable source)
  cmake_parse_arguments(arg "" "LABEL;TIMEOUT" "LIBRARIES;INCLUDES" ${ARGN})
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  if(OZ_COVERAGE)
    # Without optimisation, and with a counter for each line that all threads share.
    math(EXPR arg_TIMEOUT "5 * ${arg_TIMEOUT}")
  endif()
  cmake_path(GET source STEM name)

  add_executable(${name} "${source}")
  oz_compile_options(${name})
  target_include_directories(${name} PRIVATE ${arg_INCLUDES})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES} GTest::gmock GTest::gtest_main)
  set(properties TIMEOUT ${arg_TIMEOUT})
  if(arg_LABEL)
    list(APPEND properties LABELS ${arg_LABEL})
    # What the thread sanitizer is for.
    if(NOT TARGET threaded_tests)
      add_custom_target(threaded_tests)
    endif()
    add_dependencies(threaded_tests ${name})
  endif()
  gtest_discover_tests(${name}
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 60
    WORKING_DIRECTORY "${oz_SOURCE_DIR}"
    PROPERTIES ${properties})
endfunction()
