# The services of the television that need no bus of their own to be tested: what stands behind each
# group of methods in docs/desk-protocol.md.
pkg_check_modules(LIBMOUNT REQUIRED IMPORTED_TARGET GLOBAL mount)

orv_library(orv_desk_services
  app_registry.cpp
  apps.cpp
  broadcast.cpp
  catalogue.cpp
  channels.cpp
  image_mount.cpp
  mount_command.cpp
  mounts.cpp
  operations.cpp
  package_tree.cpp
  packages.cpp
  ports.cpp
  services.cpp
  tv_store.cpp
  was.cpp
  web_app_orders.cpp
  worker.cpp)
target_include_directories(orv_desk_services PUBLIC ${CMAKE_SOURCE_DIR}/platform/desk)
target_link_libraries(orv_desk_services
  PUBLIC orv_desk_core orv_desk_common orv_desk_package PkgConfig::JSONCPP
  PRIVATE orv_platform_headers PkgConfig::GLIB PkgConfig::SQLITE PkgConfig::LIBMOUNT
          Threads::Threads)
