// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fault/expectations.h"

namespace fault {
namespace {

const char kSubscribed[] = "a subscription is assumed to succeed";
const char kStart[] =
    "the daemon starts with what is available; its supervisor sees what is missing";
const char kTimer[] = "a timer is assumed to be set, as with every main loop";
const char kTarget[] = "the launch refuses an incomplete request";
const char kDestroyed[] = "results of releasing calls are ignored";
const char kPath[] = "a missing path shows when a file is not found";
const char kReply[] = "a reply is optional; the sender's timeout is the same as for a lost one";
const char kIgnored[] = "what is removed may already be gone";
const char kEnding[] = "whether an app has ended is checked at its next termination";
const char kKeyDefault[] = "a key that cannot be read counts as 0";
const char kParameter[] = "a value that cannot be read counts as empty, and the command as wrong";
const char kEndOfRows[] = "a failed step ends the reading as the last row does";
const char kNoSecondRepair[] =
    "there is no second repair: the daemon keeps running without a store";
const char kNoEvents[] = "without the package manager's events no package is handled";

}  // namespace

const std::vector<LogException>& LogExceptions() {
  static const std::vector<LogException> s_exceptions = {
      // Logged, but not as an error.
      {"PS_Umount", "", "[Debug] UnMounting is done. ret[-4242]", "the data is already unpacked"},
      {"app_context_destroy", "", "[Debug] app_context_destroy() failed = ", kDestroyed},
      {"app_context_get_pid", "", "[Debug] Cannot get pid.(ret : -4242)", kEnding},
      {"app_manager_terminate_app", "", "[Debug] app_manager_terminate_app() failed = ", kEnding},
      {"message_port_send_message", "", "[Debug] message_port_send_message() failed : -4242",
       kReply},
      {"vconf_get_str", "db/boot/last_service", "[Info] key : db/boot/last_service is not valid",
       "a TV without a last service is new"},
      {"vconf_keynode_get_int", "", "[Debug] set_time value = -4242",
       "any value but 1 means no network time"},
      {"vconf_keynode_get_str", "", "[Debug] m_iCurrentWebAppStatus is invalid.",
       "a missing status is an unknown status"},
      {"was_get_app_info_by_tizenid", "", "[Debug] was_get_app_info_by_tizenid() failed.",
       "the service may know the app only later"},

      // Not logged.
      {"FCEMSProxy::Subscribe", "", "", kSubscribed},
      {"TCSignalSubscriber::Subscribe", "", "", kSubscribed},
      {"FCList::Create", "", "", kStart},
      {"FCStateAlarm::Create", "", "", kStart},
      {"FCSyncDet::Create", "", "", kStart},
      {"FCTaskList::FlagInitialize", "", "", "any result but 0 means that the list is usable"},
      {"smart_deadlock_register_watchdog_service", "", "", kStart},
      {"smart_deadlock_watchdog_notify", "", "", "the next notification follows in ten seconds"},
      {"malloc_trim", "", "", "its result only says whether memory was released"},
      {"FCTask::Send", "ORVInstaller, 1004", "",
       "the alarm posts it, and the framework has no log"},
      {"app_control_add_extra_data", "", "", kTarget},
      {"app_control_set_app_id", "", "", kTarget},
      {"app_control_set_operation", "", "", kTarget},
      {"app_control_destroy", "", "", kDestroyed},
      {"app_info_destroy", "", "", kDestroyed},
      {"package_info_destroy", "", "", kDestroyed},
      {"bundle_free", "", "", kDestroyed},
      {"app_get_data_path", "", "", kPath},
      {"app_get_shared_data_path", "", "", kPath},
      {"tzplatform_getenv", "27", "", kPath},
      {"app_manager_is_running", "", "", kEnding},
      {"kill", "", "", kEnding},
      {"bundle_add_str", "", "", kReply},
      {"bundle_create", "", "", kReply},
      {"bundle_foreach", "", "", kParameter},
      {"bundle_keyval_get_basic_val", "", "", kParameter},
      {"g_source_remove", "", "", kTimer},
      {"g_timeout_add", "", "", kTimer},
      {"g_timeout_add_seconds", "", "", kTimer},
      {"vconf_get_int", "memory/menu/network/set_time", "", kKeyDefault},
      {"vconf_get_int", "db/factory/", "", kKeyDefault},
      {"vconf_ignore_key_changed", "", "", kIgnored},
      {"vconf_set_str", "db/orv_channel/custom_ui_type", "", "the announcement is optional"},
      {"sqlite3.xLock", "(at start)", "", kEndOfRows},
      {"sqlite3.xRead", "(at start)", "", kEndOfRows},
  };
  return s_exceptions;
}

const std::vector<MissedPackage>& MissedPackages() {
  static const std::vector<MissedPackage> s_missed = {
      {"FCTask::Create", "ORVInstaller", false, "without its task no event is handled"},
      {"package_manager_create", "", false, kNoEvents},
      {"package_manager_set_event_cb", "", false, kNoEvents},
      {"tzplatform_getenv", "61", false, "the store's path is read once"},
      {"sqlite3.xDelete", "", true, kNoSecondRepair},
      {"sqlite3.xLock", "", true, kNoSecondRepair},
      {"sqlite3.xOpen", "", true, kNoSecondRepair},
      {"sqlite3.xRead", "", true, kNoSecondRepair},
      {"sqlite3.xSync", "", true, kNoSecondRepair},
      {"sqlite3.xWrite", "", true, kNoSecondRepair},
  };
  return s_missed;
}

const std::vector<Leak>& Leaks() {
  static const std::vector<Leak> s_leaks = {
      {"MessageOfCompletion", "", "bundle", "the reply is created but not sent, and not freed"},
      {"", "app_manager_terminate_app", "app_context",
       "the context is not destroyed after this failure"},
      {"", "app_context_destroy", "app_context",
       "the call that failed should have released the handle"},
      {"", "app_control_destroy", "app_control",
       "the call that failed should have released the handle"},
      {"", "app_info_destroy", "app_info", "the call that failed should have released the handle"},
      {"", "package_info_destroy", "package_info",
       "the call that failed should have released the handle"},
      {"", "bundle_free", "bundle", "the call that failed should have released the handle"},
  };
  return s_leaks;
}

}  // namespace fault
