# Tests of the services of the television and of its packages.
orv_library(orv_desk_test_support package_maker.cpp)
pkg_check_modules(ZLIB REQUIRED IMPORTED_TARGET zlib)
target_include_directories(orv_desk_test_support PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
target_link_libraries(orv_desk_test_support
  PUBLIC orv_desk_services orv_platform_headers GTest::gtest_main PkgConfig::GLIB PkgConfig::SQLITE
  PRIVATE PkgConfig::ZLIB)

foreach(name apps broadcast channels manifest mounts package_file packages ports services was)
  orv_test(desk_${name}_test LABEL unit
    SOURCES ${name}_test.cpp
    LIBRARIES orv_desk_test_support)
endforeach()
