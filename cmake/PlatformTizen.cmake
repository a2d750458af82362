# The target's headers and libraries. Each interface of the platform has one cache variable that
# holds pkg-config modules, full paths of libraries, or both, as a list. Interfaces that have the same
# names in every SDK have a default; the others must be set.
set(ORV_TIZEN_INCLUDE_DIRS "" CACHE STRING
    "Directories of platform headers that no pkg-config module provides")

add_library(orv_tizen INTERFACE)
target_include_directories(orv_tizen SYSTEM INTERFACE ${ORV_TIZEN_INCLUDE_DIRS})
set(orv_tizen_headers "")
set(orv_tizen_directories ${ORV_TIZEN_INCLUDE_DIRS} ${CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES})
set(orv_tizen_faults "")

# Links one entry of a variable. Faults are collected and reported together at the end.
macro(orv_tizen_link variable entry)
  string(MAKE_C_IDENTIFIER "TIZEN_${entry}" module)
  if(IS_ABSOLUTE "${entry}")
    if(EXISTS "${entry}")
      target_link_libraries(orv_tizen INTERFACE "${entry}")
    else()
      list(APPEND orv_tizen_faults "${variable}: the library ${entry} does not exist")
    endif()
  else()
    pkg_check_modules(${module} QUIET IMPORTED_TARGET "${entry}")
    if(${module}_FOUND)
      target_link_libraries(orv_tizen INTERFACE PkgConfig::${module})
      list(APPEND orv_tizen_directories ${${module}_INCLUDE_DIRS})
    else()
      list(APPEND orv_tizen_faults "${variable}: pkg-config does not know the module ${entry}")
    endif()
  endif()
endmacro()

# orv_tizen_interface(VARIABLE what default header...): the headers are those that the daemon
# includes; a header may be part of another interface's module.
macro(orv_tizen_interface variable what default)
  set(${variable} "${default}" CACHE STRING
      "The ${what}: pkg-config modules or full paths of libraries")
  set(headers ${ARGN})
  if("${${variable}}" STREQUAL "")
    list(JOIN headers ", " names)
    list(APPEND orv_tizen_faults "${variable} is empty: name the modules or libraries of the ${what} (${names})")
  else()
    foreach(entry IN LISTS ${variable})
      orv_tizen_link(${variable} "${entry}")
    endforeach()
    list(TRANSFORM headers PREPEND "${variable}:")
    list(APPEND orv_tizen_headers ${headers})
  endif()
endmacro()

orv_tizen_interface(ORV_TIZEN_APPLICATION "application framework"
  "capi-appfw-app-common;capi-appfw-app-control;capi-appfw-app-manager"
  app_common.h app_context.h app_control.h app_info.h app_manager.h app_manager_extension.h)
orv_tizen_interface(ORV_TIZEN_APP_OPERATION "app operations" "capi-appfw-app-control"
  app_operation.h)
orv_tizen_interface(ORV_TIZEN_PACKAGE_MANAGER "package manager" "capi-appfw-package-manager"
  package_info.h package_manager.h)
orv_tizen_interface(ORV_TIZEN_SETTINGS "settings keys" "vconf" vconf.h)
orv_tizen_interface(ORV_TIZEN_MESSAGE_PORT "message port" "capi-message-port;bundle"
  bundle.h message_port.h)
orv_tizen_interface(ORV_TIZEN_CONFIG "platform configuration" "libtzplatform-config"
  tzplatform_config.h)
orv_tizen_interface(ORV_TIZEN_LOG "log service" "dlog" dlog.h)
orv_tizen_interface(ORV_TIZEN_TASK_FRAMEWORK "task framework" ""
  FCEMSProxy.h FCTask.h FCTaskList.h)
orv_tizen_interface(ORV_TIZEN_CHANNEL_FRAMEWORK "channel framework" "" FCAPI.h)
orv_tizen_interface(ORV_TIZEN_TV_SERVICE "TV service" "" TVServiceAPI.h)
orv_tizen_interface(ORV_TIZEN_WEBAPP_SERVICE "web-app service" "" was_db.h)
orv_tizen_interface(ORV_TIZEN_MOUNT_SERVICE "mount service" "" ps_mount.h)
orv_tizen_interface(ORV_TIZEN_WATCHDOG "deadlock watchdog" "" smart_deadlock.h)

# Check for missing headers here; the compiler would report them file by file.
foreach(pair IN LISTS orv_tizen_headers)
  string(REGEX MATCH "^([^:]+):(.+)$" pair "${pair}")
  set(variable ${CMAKE_MATCH_1})
  set(header ${CMAKE_MATCH_2})
  set(found FALSE)
  foreach(directory IN LISTS orv_tizen_directories)
    if(EXISTS "${directory}/${header}")
      set(found TRUE)
      break()
    endif()
  endforeach()
  if(NOT found)
    list(APPEND orv_tizen_faults
      "${header} is not in a directory of the modules: correct ${variable}, or add its directory to ORV_TIZEN_INCLUDE_DIRS")
  endif()
endforeach()

if(orv_tizen_faults)
  list(JOIN orv_tizen_faults "\n  " faults)
  message(FATAL_ERROR "The target's platform is not complete:\n  ${faults}\n"
    "See \"Building for the target\" in docs/integrator-guide.md.")
endif()
