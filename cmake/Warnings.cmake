# One interface target with all warnings; each exception gives its reason.
add_library(orv_warnings INTERFACE)
target_compile_options(orv_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wformat=2
  -Wundef -Wcast-align -Wunused -Wnull-dereference -Wimplicit-fallthrough
  # Callbacks of C interfaces have parameters that a handler may not need.
  -Wno-unused-parameter
  # "__dlog_print" and the framework's macros take an empty argument list.
  -Wno-gnu-zero-variadic-macro-arguments)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # A GCC 12 false positive inside std::string when it is inlined at -O2.
  target_compile_options(orv_warnings INTERFACE -Wno-restrict -Wno-null-dereference)
endif()
option(ORV_WERROR "Treat warnings as errors" OFF)
if(ORV_WERROR)
  target_compile_options(orv_warnings INTERFACE -Werror)
endif()
# Log lines name source files relative to the project's root, on every machine.
target_compile_options(orv_warnings INTERFACE -fmacro-prefix-map=${CMAKE_SOURCE_DIR}/=)
