// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fault/expectations.h"

namespace fault {
namespace {

const char kSubscribed[] = "a subscription is taken as made";
const char kStart[] = "the daemon starts with what it gets; its supervisor sees what is missing";
const char kTimer[] = "a timer is taken as set, as it is with every main loop";
const char kTarget[] = "a request without its parts is the launch's to refuse";
const char kDestroyed[] = "what is given back is not asked about";
const char kPath[] = "a path that is missing shows itself when a file is not found";
const char kReply[] =
    "a reply is a courtesy; the sender waits no longer for it than for a lost one";
const char kIgnored[] = "what is taken back may be gone already";
const char kEnding[] = "whether an app ended is looked at when it is to end again";
const char kKeyDefault[] = "a key that cannot be read counts as 0";
const char kParameter[] = "a value that cannot be read counts as empty, and the command as wrong";
const char kEndOfRows[] = "a failed step ends the reading as the last row does";
const char kNoSecondRepair[] = "there is no second repair: the daemon runs on without a store";
const char kNoEvents[] = "without the package manager's events there is nothing to take in";

}  // namespace

const std::vector<Telling>& Tellings() {
  static const std::vector<Telling> s_tellings = {
      // Told, but not as an error.
      {"PS_Umount", "", "[Debug] UnMounting is done. ret[-4242]", "the data is unpacked by then"},
      {"app_context_destroy", "", "[Debug] app_context_destroy() failed = ", kDestroyed},
      {"app_context_get_pid", "", "[Debug] Cannot get pid.(ret : -4242)", kEnding},
      {"app_manager_terminate_app", "", "[Debug] app_manager_terminate_app() failed = ", kEnding},
      {"message_port_send_message", "", "[Debug] message_port_send_message() failed : -4242",
       kReply},
      {"vconf_get_str", "db/boot/last_service", "[Info] key : db/boot/last_service is not valid",
       "a television without a last service is a new one"},
      {"vconf_keynode_get_int", "", "[Debug] set_time value = -4242", "any value but 1 is no time"},
      {"vconf_keynode_get_str", "", "[Debug] m_iCurrentWebAppStatus is invalid.",
       "no word is a word that is not known"},
      {"was_get_app_info_by_tizenid", "", "[Debug] was_get_app_info_by_tizenid() failed.",
       "the service may learn of an app later"},

      // Not told.
      {"FCEMSProxy::Subscribe", "", "", kSubscribed},
      {"TCSignalSubscriber::Subscribe", "", "", kSubscribed},
      {"FCList::Create", "", "", kStart},
      {"FCStateAlarm::Create", "", "", kStart},
      {"FCSyncDet::Create", "", "", kStart},
      {"FCTaskList::FlagInitialize", "", "", "any result but 0 says that the list is usable"},
      {"smart_deadlock_register_watchdog_service", "", "", kStart},
      {"smart_deadlock_watchdog_notify", "", "", "the next sign of life follows in ten seconds"},
      {"malloc_trim", "", "", "its result only says whether memory was given back"},
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
      {"vconf_set_str", "db/orv_channel/custom_ui_type", "", "the announcement is a courtesy"},
      {"sqlite3.xLock", "(at start)", "", kEndOfRows},
      {"sqlite3.xRead", "(at start)", "", kEndOfRows},
  };
  return s_tellings;
}

const std::vector<Deafness>& Deafnesses() {
  static const std::vector<Deafness> s_deafnesses = {
      {"FCTask::Create", "ORVInstaller", false, "without its task nothing handles an event"},
      {"package_manager_create", "", false, kNoEvents},
      {"package_manager_set_event_cb", "", false, kNoEvents},
      {"tzplatform_getenv", "61", false, "the store's place is asked for once"},
      {"sqlite3.xDelete", "", true, kNoSecondRepair},
      {"sqlite3.xLock", "", true, kNoSecondRepair},
      {"sqlite3.xOpen", "", true, kNoSecondRepair},
      {"sqlite3.xRead", "", true, kNoSecondRepair},
      {"sqlite3.xSync", "", true, kNoSecondRepair},
      {"sqlite3.xWrite", "", true, kNoSecondRepair},
  };
  return s_deafnesses;
}

const std::vector<Leak>& Leaks() {
  static const std::vector<Leak> s_leaks = {
      {"MessageOfCompletion", "", "bundle", "the reply that is not sent is abandoned: settled"},
      {"", "app_manager_terminate_app", "app_context", "such a context stays: settled"},
      {"", "app_context_destroy", "app_context", "that is the handle"},
      {"", "app_control_destroy", "app_control", "that is the handle"},
      {"", "app_info_destroy", "app_info", "that is the handle"},
      {"", "package_info_destroy", "package_info", "that is the handle"},
      {"", "bundle_free", "bundle", "that is the handle"},
  };
  return s_leaks;
}

}  // namespace fault
