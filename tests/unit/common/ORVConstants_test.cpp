// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "common/ORVConstants.h"

#include <gmock/gmock.h>

#include <utility>
#include <vector>

namespace {

using testing::EndsWith;

/// Packages, service apps, stored files and other parts of the TV use these texts.
TEST(ORVConstants, TheSharedVocabularyIsFixed) {
  const std::vector<std::pair<std::string, std::string>> vocabulary = {
      {METADATA_ORV_TYPE, "orv_type"},
      {METADATA_ORV_DATA, "orv_data"},
      {APP_TYPE_ORV_APP, "orv_app"},
      {APP_TYPE_CH_FEEDER_STANDARD, "ch_feeder_standard"},
      {APP_TYPE_CH_FEEDER_CUSTOM, "ch_feeder_custom"},
      {APP_TYPE_CUSTOM_UI_STANDARD, "custom_ui_standard"},
      {APP_TYPE_CUSTOM_UI_EXTENDED, "custom_ui_extended"},
      {APP_TYPE_VALUE_EXTENDED, "extended"},
      {DATA_KEY_CHANNEL_DATA_URL, "channel_data_url"},
      {DATA_KEY_SCHEDULE_DATA_URL, "schedule_data_url"},
      {BOOST_METADATA_KEY, "ch.app.boosting"},
      {DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT, "custom_ui_cold_boot_opt"},
      {DATA_KEY_EXPIRATION_DATE, "expiration_date_str"},
      {CUSTOM_UI_DEFAULT, "default"},
      {CUSTOM_UI_INVISIBLE, "invisible"},
      {CUSTOM_UI_BACKGROUND_IMG, "background_img"},
      {BANNER_TYPE_INFO, "info"},
      {BANNER_TYPE_CHANNEL, "channel"},
      {CUSTOM_APP_CHANNEL_LIST, "channel_list"},
      {CUSTOM_APP_EPG, "epg"},
      {VCONFKEY_TELLAHUB_RESET, "db/tellahub/reset/apps"},
      {VCONFKEY_HBBTV_STATUS, "memory/hbbtv_status"},
      {VCONFKEY_LAST_SERVICE, "db/boot/last_service"},
      {VCONFKEY_WAS_APP_INSTALL, "memory/was/app_install"},
      {VCONFKEY_CUSTOM_UI_TYPE, "db/orv_channel/custom_ui_type"},
      {VCONFKEY_NETWORK_SET_TIME, "memory/menu/network/set_time"},
      {VCONFKEY_FACTORY_RESET_COUNT, "db/factory/factory_reset_count"},
      {VCONFKEY_SERVICE_RESET_COUNT, "db/factory/service_reset_count"},
      {WEB_APP_STATUS_KEY_PREFIX, "rtc/memory/WebApp/"},
      {STORE_PATH, "/com.kalmora.tv.orv-enabler/data/appinfo.db"},
      {STORE_TABLE, "appinfo"},
      {RESET_COUNT_FILE, "reset_count_info.txt"},
      {RESET_COUNT_KEY_FACTORY, "factory_reset_count"},
      {RESET_COUNT_KEY_SERVICE, "service_reset_count"},
      {BOOST_FLAG_FILE, "hbb_boost"},
      {HBB_READY_FILE, "/tmp/hbb_ready"},
      {FIRST_SCREEN_APP_ID, "com.kalmora.tv.csfs"},
      {VIRTUAL_SERVICE_NAME, "vc-service"},
      {REPLACEMENT_UI_FILE, "/opt/share/orv_ch/replacement_ui_info.json"},
      {PACKAGED_HBBTV_APP_DIR, "hbbtv_app/"},
      {PACKAGED_METADATA_DIR, "metadata/"},
      {PACKAGED_APP_TYPE_KEY, "app_type"},
      {PACKAGED_APP_TYPE_FILE, "app_type_file.txt"},
      {PACKAGED_ARCHIVE, "/orv_app.zip"},
      {SCHEDULER_COMMAND, "orv_scheduler_command"},
      {SCHEDULER_COMMAND_PORT, "orv_scheduler_command_port"},
      {SCHEDULER_COMMAND_SET_EXPIRATION_TIME, "command_set_expiration_time"},
      {SCHEDULER_COMMAND_COMPLETE_OPERATION, "command_complete_operation"},
      {SCHEDULER_RESULT, "orv_scheduler_result"},
      {SCHEDULER_RESULT_SUCCESS, "result_success"},
      {SCHEDULER_RESULT_INVALID_PARAMETERS, "result_fail_invalid_parameters"},
      {SCHEDULER_RESULT_UNKNOWN_ERRORS, "result_fail_unknown_errors"},
  };
  for (const auto& [constant, text] : vocabulary) {
    EXPECT_EQ(constant, text);
  }
  EXPECT_EQ(EXPIRATION_TIME_FORMAT, L"%Y-%m-%dT%H:%M:%SZ");
}

TEST(ORVConstants, NamespacesEndInTheirFixedPaths) {
  EXPECT_THAT(METADATA_PREFIX, EndsWith("tv/metadata/"));
  EXPECT_THAT(OPERATION_CHANNEL_LIST, EndsWith("tv/appcontrol/operation/channel-list"));
  EXPECT_THAT(OPERATION_EPG, EndsWith("tv/appcontrol/operation/epg"));
  EXPECT_THAT(LAUNCH_MODE_KEY, EndsWith("launch_mode"));
}

}  // namespace
