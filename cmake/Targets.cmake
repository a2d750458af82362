# Small helpers around add_library and add_executable, so that all targets are built the same way.

# A comma-separated list of directories that limits the build to a part of the tree.
set(ORV_ONLY "" CACHE STRING "Directories to build, comma-separated; empty for all")
option(ORV_STRICT_SOURCES "Fail when a source file belongs to no target" ON)

function(orv_subdirectory dir)
  if(NOT EXISTS ${CMAKE_CURRENT_SOURCE_DIR}/${dir}/CMakeLists.txt)
    return()
  endif()
  file(RELATIVE_PATH path ${CMAKE_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR}/${dir})
  if(ORV_ONLY)
    set(wanted FALSE)
    string(REPLACE "," ";" only "${ORV_ONLY}")
    foreach(entry ${only})
      string(FIND "${entry}/" "${path}/" inner)
      string(FIND "${path}/" "${entry}/" outer)
      if(inner EQUAL 0 OR outer EQUAL 0)
        set(wanted TRUE)
      endif()
    endforeach()
    if(NOT wanted)
      return()
    endif()
  endif()
  add_subdirectory(${dir})
endfunction()

function(orv_register_sources)
  foreach(source ${ARGN})
    if(source MATCHES "\\.(cpp|c)$")
      get_filename_component(path ${source} ABSOLUTE)
      set_property(GLOBAL APPEND PROPERTY ORV_SOURCES ${path})
    endif()
  endforeach()
endfunction()

# Libraries to build as shared libraries, comma-separated: then a changed source does not relink the
# programs.
set(ORV_SHARED_LIBRARIES "" CACHE STRING "Libraries to build as shared libraries; empty for none")

# orv_library(name SOURCES... ): a static library with the project's warnings.
function(orv_library name)
  string(REPLACE "," ";" shared "${ORV_SHARED_LIBRARIES}")
  set(type STATIC)
  if(name IN_LIST shared)
    set(type SHARED)
  endif()
  add_library(${name} ${type} ${ARGN})
  orv_register_sources(${ARGN})
  target_link_libraries(${name} PRIVATE orv_warnings)
endfunction()

function(orv_executable name)
  add_executable(${name} ${ARGN})
  orv_register_sources(${ARGN})
  target_link_libraries(${name} PRIVATE orv_warnings)
endfunction()

# orv_test(name LABEL label SOURCES ... LIBRARIES ...): a GoogleTest program; each of its tests is a
# CTest test.
function(orv_test name)
  cmake_parse_arguments(arg "" "LABEL;TIMEOUT" "SOURCES;LIBRARIES" ${ARGN})
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  orv_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LIBRARIES})
  if("orv_daemon" IN_LIST arg_LIBRARIES AND "orv_fake" IN_LIST arg_LIBRARIES)
    target_link_libraries(${name} PRIVATE orv_log_levels)
  endif()
  set(environment)
  if(ORV_SANITIZE STREQUAL "thread")
    # The list of accepted races, and a long history, so that a report shows both stacks.
    set(environment ENVIRONMENT
      "TSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/support/tsan.supp:history_size=7")
  endif()
  include(GoogleTest)
  gtest_discover_tests(${name} TEST_PREFIX ${name}. DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
    PROPERTIES LABELS "${arg_LABEL}" TIMEOUT ${arg_TIMEOUT} ${environment})
endfunction()

# A file that belongs to no target would escape the formatter, the linter and the compiler.
function(orv_check_every_source_is_registered)
  # Only a desk build with tests has all targets.
  if(ORV_ONLY OR NOT ORV_STRICT_SOURCES OR NOT TARGET desk-tv OR NOT BUILD_TESTING)
    return()
  endif()
  get_property(registered GLOBAL PROPERTY ORV_SOURCES)
  file(GLOB_RECURSE found CONFIGURE_DEPENDS
    src/*.cpp platform/*.cpp platform/*.c samples/*.cpp tests/*.cpp)
  foreach(source ${found})
    if(NOT source IN_LIST registered)
      message(FATAL_ERROR "${source} belongs to no target: name it in the CMakeLists.txt beside it")
    endif()
  endforeach()
endfunction()
