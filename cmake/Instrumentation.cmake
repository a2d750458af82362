# Sanitizers and coverage, for all targets.
set(ORV_SANITIZE "" CACHE STRING "address (with undefined), thread, fuzzer or empty")
option(ORV_COVERAGE "Count lines and branches" OFF)

if(ORV_SANITIZE STREQUAL "address")
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
elseif(ORV_SANITIZE STREQUAL "thread")
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
elseif(ORV_SANITIZE STREQUAL "fuzzer")
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
elseif(ORV_SANITIZE)
  message(FATAL_ERROR "ORV_SANITIZE is \"${ORV_SANITIZE}\". Use address, thread or fuzzer, or leave it empty.")
endif()

if(ORV_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()
