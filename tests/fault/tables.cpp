// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fault/expectations.h"

namespace fault {
namespace {

const char SUBSCRIBED[] = "a subscription is assumed to succeed";
const char START[] =
    "the daemon starts with what is available; its supervisor sees what is missing";
const char TIMER[] = "a timer is assumed to be set, as with every main loop";
const char TARGET[] = "the launch refuses an incomplete request";
const char DESTROYED[] = "results of releasing calls are ignored";
const char PATH[] = "a missing path shows when a file is not found";
const char REPLY[] = "a reply is optional; the sender's timeout is the same as for a lost one";
const char IGNORED[] = "what is removed may already be gone";
const char ENDING[] = "whether an app has ended is checked at its next termination";
const char KEY_DEFAULT[] = "a key that cannot be read counts as 0";
const char PARAMETER[] = "a value that cannot be read counts as empty, and the command as wrong";
const char END_OF_ROWS[] = "a failed step ends the reading as the last row does";
const char NO_SECOND_REPAIR[] =
    "there is no second repair: the daemon keeps running without a store";
const char NO_EVENTS[] = "without the package manager's events no package is handled";

}  // namespace

const std::vector<LogException>& LogExceptions() {
  static const std::vector<LogException> s_exceptions = {
      // Logged, but not as an error.
      {"PS_Umount", "", "[Debug] UnMounting is done. ret[-4242]", "the data is already unpacked"},
      {"app_context_destroy", "", "[Debug] app_context_destroy() failed = ", DESTROYED},
      {"app_context_get_pid", "", "[Debug] Cannot get pid.(ret : -4242)", ENDING},
      {"app_manager_terminate_app", "", "[Debug] app_manager_terminate_app() failed = ", ENDING},
      {"message_port_send_message", "", "[Debug] message_port_send_message() failed : -4242",
       REPLY},
      {"vconf_get_str", "db/boot/last_service", "[Info] key : db/boot/last_service is not valid",
       "a TV without a last service is new"},
      {"vconf_keynode_get_int", "", "[Debug] set_time value = -4242",
       "any value but 1 means no network time"},
      {"vconf_keynode_get_str", "", "[Debug] m_iCurrentWebAppStatus is invalid.",
       "a missing status is an unknown status"},
      {"was_get_app_info_by_tizenid", "", "[Debug] was_get_app_info_by_tizenid() failed.",
       "the service may know the app only later"},

      // Not logged.
      {"FCEMSProxy::Subscribe", "", "", SUBSCRIBED},
      {"TCSignalSubscriber::Subscribe", "", "", SUBSCRIBED},
      {"FCList::Create", "", "", START},
      {"FCStateAlarm::Create", "", "", START},
      {"FCSyncDet::Create", "", "", START},
      {"FCTaskList::FlagInitialize", "", "", "any result but 0 means that the list is usable"},
      {"smart_deadlock_register_watchdog_service", "", "", START},
      {"smart_deadlock_watchdog_notify", "", "", "the next notification follows in ten seconds"},
      {"malloc_trim", "", "", "its result only says whether memory was released"},
      {"FCTask::Send", "ORVInstaller, 1004", "",
       "the alarm posts it, and the framework has no log"},
      {"app_control_add_extra_data", "", "", TARGET},
      {"app_control_set_app_id", "", "", TARGET},
      {"app_control_set_operation", "", "", TARGET},
      {"app_control_destroy", "", "", DESTROYED},
      {"app_info_destroy", "", "", DESTROYED},
      {"package_info_destroy", "", "", DESTROYED},
      {"bundle_free", "", "", DESTROYED},
      {"app_get_data_path", "", "", PATH},
      {"app_get_shared_data_path", "", "", PATH},
      {"tzplatform_getenv", "27", "", PATH},
      {"app_manager_is_running", "", "", ENDING},
      {"kill", "", "", ENDING},
      {"bundle_add_str", "", "", REPLY},
      {"bundle_create", "", "", REPLY},
      {"bundle_foreach", "", "", PARAMETER},
      {"bundle_keyval_get_basic_val", "", "", PARAMETER},
      {"g_source_remove", "", "", TIMER},
      {"g_timeout_add", "", "", TIMER},
      {"g_timeout_add_seconds", "", "", TIMER},
      {"vconf_get_int", "memory/menu/network/set_time", "", KEY_DEFAULT},
      {"vconf_get_int", "db/factory/", "", KEY_DEFAULT},
      {"vconf_ignore_key_changed", "", "", IGNORED},
      {"vconf_set_str", "db/orv_channel/custom_ui_type", "", "the announcement is optional"},
      {"sqlite3.xLock", "(at start)", "", END_OF_ROWS},
      {"sqlite3.xRead", "(at start)", "", END_OF_ROWS},
  };
  return s_exceptions;
}

const std::vector<MissedPackage>& MissedPackages() {
  static const std::vector<MissedPackage> s_missed = {
      {"FCTask::Create", "ORVInstaller", false, "without its task no event is handled"},
      {"package_manager_create", "", false, NO_EVENTS},
      {"package_manager_set_event_cb", "", false, NO_EVENTS},
      {"tzplatform_getenv", "61", false, "the store's path is read once"},
      {"sqlite3.xDelete", "", true, NO_SECOND_REPAIR},
      {"sqlite3.xLock", "", true, NO_SECOND_REPAIR},
      {"sqlite3.xOpen", "", true, NO_SECOND_REPAIR},
      {"sqlite3.xRead", "", true, NO_SECOND_REPAIR},
      {"sqlite3.xSync", "", true, NO_SECOND_REPAIR},
      {"sqlite3.xWrite", "", true, NO_SECOND_REPAIR},
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
