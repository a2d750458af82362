# The one place that knows which platform the daemon is built for.
set(ORV_PLATFORM desk CACHE STRING "desk: the TV on a desk; tizen: the target's own libraries")
set_property(CACHE ORV_PLATFORM PROPERTY STRINGS desk tizen)

# Names that packages and callers use on the target; the daemon only compares and forwards them.
set(ORV_METADATA_PREFIX "http://kalmora.com/tv/metadata/" CACHE STRING
    "Namespace of the metadata keys, ending in tv/metadata/")
set(ORV_OPERATION_CHANNEL_LIST "http://kalmora.com/tv/appcontrol/operation/channel-list" CACHE STRING
    "App operation of the channel list")
set(ORV_OPERATION_EPG "http://kalmora.com/tv/appcontrol/operation/epg" CACHE STRING
    "App operation of the programme guide")
set(ORV_LAUNCH_MODE_KEY "http://kalmora.com/appcontrol/data/launch_mode" CACHE STRING
    "Extra-data key of a background launch")

# Headers of the platform, and the values above.
add_library(orv_platform_headers INTERFACE)
target_compile_definitions(orv_platform_headers INTERFACE
  ORV_METADATA_PREFIX="${ORV_METADATA_PREFIX}"
  ORV_OPERATION_CHANNEL_LIST="${ORV_OPERATION_CHANNEL_LIST}"
  ORV_OPERATION_EPG="${ORV_OPERATION_EPG}"
  ORV_LAUNCH_MODE_KEY="${ORV_LAUNCH_MODE_KEY}")

# The libraries that the daemon is linked with.
add_library(orv_platform INTERFACE)
target_link_libraries(orv_platform INTERFACE orv_platform_headers)

# What is built besides src/: for the desk, the platform and the tests; for the target, only the pins,
# which compare the daemon with the SDK.
if(ORV_PLATFORM STREQUAL "desk")
  target_include_directories(orv_platform_headers INTERFACE ${CMAKE_SOURCE_DIR}/platform/include)
  target_link_libraries(orv_platform INTERFACE orv_desk_client)
  set(ORV_PLATFORM_DIRECTORIES platform/call platform/framework platform/desk samples)
  if(BUILD_TESTING)
    list(APPEND ORV_PLATFORM_DIRECTORIES platform/fake tests)
  endif()
elseif(ORV_PLATFORM STREQUAL "tizen")
  include(PlatformTizen)
  target_link_libraries(orv_platform_headers INTERFACE orv_tizen)
  set(ORV_PLATFORM_DIRECTORIES tests/pins)
else()
  message(FATAL_ERROR "ORV_PLATFORM is \"${ORV_PLATFORM}\". Use desk or tizen.")
endif()
