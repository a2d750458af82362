// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <app_control.h>

#include <string>

/// The names and texts that the daemon shares with packages and with the platform. All of them are
/// compared or passed on byte by byte. Initialised during static initialisation: a static
/// initialiser of another file may use a constant if it includes this header first.

/// Namespaces come from the build (cmake/Platform.cmake).
inline const std::string METADATA_PREFIX = ORV_METADATA_PREFIX;
inline const std::string METADATA_ORV_TYPE = "orv_type";
inline const std::string METADATA_ORV_DATA = "orv_data";

/// Type names. APP_TYPE_ORV_APP is the bare record; the others are named in package metadata.
inline const std::string APP_TYPE_ORV_APP = "orv_app";
inline const std::string APP_TYPE_CH_FEEDER_STANDARD = "ch_feeder_standard";
inline const std::string APP_TYPE_CH_FEEDER_CUSTOM = "ch_feeder_custom";
inline const std::string APP_TYPE_CUSTOM_UI_STANDARD = "custom_ui_standard";
inline const std::string APP_TYPE_CUSTOM_UI_EXTENDED = "custom_ui_extended";
/// Value of a feeder type whose package contains an HbbTV app.
inline const std::string APP_TYPE_VALUE_EXTENDED = "extended";

/// Keys under METADATA_ORV_DATA.
inline const std::string DATA_KEY_CHANNEL_DATA_URL = "channel_data_url";
inline const std::string DATA_KEY_SCHEDULE_DATA_URL = "schedule_data_url";
inline const std::string BOOST_METADATA_KEY = "ch.app.boosting";
inline const std::string DATA_KEY_CUSTOM_UI_COLD_BOOT_OPT = "custom_ui_cold_boot_opt";
inline const std::string DATA_KEY_EXPIRATION_DATE = "expiration_date_str";

/// Tokens of the custom user interfaces. The names of each family are listed in order of number.
inline const std::string CUSTOM_UI_DEFAULT = "default";
inline const std::string CUSTOM_UI_INVISIBLE = "invisible";
inline const std::string CUSTOM_UI_BACKGROUND_IMG = "background_img";
inline const std::string BANNER_TYPE_INFO = "info";
inline const std::string BANNER_TYPE_CHANNEL = "channel";
inline const std::string CUSTOM_APP_CHANNEL_LIST = "channel_list";
inline const std::string CUSTOM_APP_EPG = "epg";
inline const std::string OPERATION_CHANNEL_LIST = ORV_OPERATION_CHANNEL_LIST;
inline const std::string OPERATION_EPG = ORV_OPERATION_EPG;
inline const std::string OPERATION_DEFAULT = APP_CONTROL_OPERATION_DEFAULT;
inline const std::string LAUNCH_MODE_KEY = ORV_LAUNCH_MODE_KEY;

/// Settings keys.
inline const std::string VCONFKEY_TELLAHUB_RESET = "db/tellahub/reset/apps";
inline const std::string VCONFKEY_HBBTV_STATUS = "memory/hbbtv_status";
inline const std::string VCONFKEY_LAST_SERVICE = "db/boot/last_service";
inline const std::string VCONFKEY_WAS_APP_INSTALL = "memory/was/app_install";
inline const std::string VCONFKEY_CUSTOM_UI_TYPE = "db/orv_channel/custom_ui_type";
inline const std::string VCONFKEY_NETWORK_SET_TIME = "memory/menu/network/set_time";
inline const std::string VCONFKEY_FACTORY_RESET_COUNT = "db/factory/factory_reset_count";
inline const std::string VCONFKEY_SERVICE_RESET_COUNT = "db/factory/service_reset_count";
/// Followed by an app id.
inline const std::string WEB_APP_STATUS_KEY_PREFIX = "rtc/memory/WebApp/";

/// The store. The path follows the directory of TZ_SYS_RW_APP.
inline const std::string STORE_PATH = "/com.kalmora.tv.orv-enabler/data/appinfo.db";
inline const std::string STORE_TABLE = "appinfo";

/// Reset counters: the file follows app_get_data_path() and contains the keys.
inline const std::string RESET_COUNT_FILE = "reset_count_info.txt";
inline const std::string RESET_COUNT_KEY_FACTORY = "factory_reset_count";
inline const std::string RESET_COUNT_KEY_SERVICE = "service_reset_count";

/// Channel boost. The first file follows app_get_data_path().
inline const std::string BOOST_FLAG_FILE = "hbb_boost";
inline const std::string HBB_READY_FILE = "/tmp/hbb_ready";
inline const std::string FIRST_SCREEN_APP_ID = "com.kalmora.tv.csfs";
inline const std::string VIRTUAL_SERVICE_NAME = "vc-service";

inline const std::string REPLACEMENT_UI_FILE = "/opt/share/orv_ch/replacement_ui_info.json";

/// Packaged data: the two directories follow app_get_shared_data_path().
inline const std::string PACKAGED_HBBTV_APP_DIR = "hbbtv_app/";
inline const std::string PACKAGED_METADATA_DIR = "metadata/";
inline const std::string PACKAGED_APP_TYPE_KEY = "app_type";
inline const std::string PACKAGED_APP_TYPE_FILE = "app_type_file.txt";
inline const std::string PACKAGED_ARCHIVE = "/orv_app.zip";

/// Message port of the scheduler.
inline const std::string SCHEDULER_COMMAND = "orv_scheduler_command";
inline const std::string SCHEDULER_COMMAND_PORT = "orv_scheduler_command_port";
inline const std::string SCHEDULER_COMMAND_SET_EXPIRATION_TIME = "command_set_expiration_time";
inline const std::string SCHEDULER_COMMAND_COMPLETE_OPERATION = "command_complete_operation";
inline const std::string SCHEDULER_RESULT = "orv_scheduler_result";
inline const std::string SCHEDULER_RESULT_SUCCESS = "result_success";
inline const std::string SCHEDULER_RESULT_INVALID_PARAMETERS = "result_fail_invalid_parameters";
inline const std::string SCHEDULER_RESULT_UNKNOWN_ERRORS = "result_fail_unknown_errors";

/// Format in which a due time is read; "%X", with which it is written, is the same in the C locale.
inline const std::wstring EXPIRATION_TIME_FORMAT = L"%Y-%m-%dT%H:%M:%SZ";
