// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// A process without a desk: every call returns a result, and none ends the process.

#include <FCAPI.h>
#include <FCEMSProxy.h>
#include <TVServiceAPI.h>
#include <app_common.h>
#include <app_control.h>
#include <app_info.h>
#include <app_manager.h>
#include <app_operation.h>
#include <gtest/gtest.h>
#include <message_port.h>
#include <package_manager.h>
#include <ps_mount.h>
#include <smart_deadlock.h>
#include <tzplatform_config.h>
#include <vconf.h>
#include <was_db.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

class ClientOffline : public testing::Test {
 protected:
  ClientOffline() {
    for (const char* name : {"TV_BUS", "TV_ROOT", "TV_PREFIX", "TV_ROLE", "TV_APP_ID", "TV_FAULTS",
                             "TV_LOG", "TV_JOURNAL"}) {
      unsetenv(name);
    }
  }
};

std::string Taken(char* text) {
  std::string copy = text == nullptr ? "(null)" : text;
  free(text);
  return copy;
}

TEST_F(ClientOffline, SettingsKeysCannotBeReadWrittenOrWatched) {
  int number = 7;
  EXPECT_EQ(vconf_get_int("db/x", &number), -1);
  EXPECT_EQ(number, 7);
  EXPECT_EQ(vconf_get_str("db/x"), nullptr);
  EXPECT_EQ(vconf_set_int("db/x", 1), -1);
  EXPECT_EQ(vconf_set_str("db/x", "a"), -1);
  const vconf_callback_fn callback = [](keynode_t*, void*) {};
  EXPECT_EQ(vconf_notify_key_changed("db/x", callback, nullptr), -1);
  EXPECT_EQ(vconf_ignore_key_changed("db/x", callback), -1);
}

TEST_F(ClientOffline, TheAppFrameworkAnswersWithIoErrors) {
  bool running = true;
  app_context_h context = nullptr;
  app_info_h info = nullptr;
  EXPECT_EQ(app_manager_is_running("a.b", &running), APP_MANAGER_ERROR_IO_ERROR);
  EXPECT_TRUE(running);
  EXPECT_EQ(app_manager_get_app_context("a.b", &context), APP_MANAGER_ERROR_IO_ERROR);
  EXPECT_EQ(app_info_create("a.b", &info), APP_MANAGER_ERROR_IO_ERROR);
  EXPECT_EQ(app_operation_set_current_app("op", "a.b"), APP_CONTROL_ERROR_IO_ERROR);
  app_control_h control = nullptr;
  ASSERT_EQ(app_control_create(&control), APP_CONTROL_ERROR_NONE);
  EXPECT_EQ(app_control_set_app_id(control, "a.b"), APP_CONTROL_ERROR_NONE);
  EXPECT_EQ(app_control_send_launch_request(control, nullptr, nullptr), APP_CONTROL_ERROR_IO_ERROR);
  EXPECT_EQ(app_control_destroy(control), APP_CONTROL_ERROR_NONE);
}

TEST_F(ClientOffline, PackagesCannotBeAskedFor) {
  package_manager_h manager = nullptr;
  package_info_h info = nullptr;
  EXPECT_EQ(package_manager_create(&manager), PACKAGE_MANAGER_ERROR_IO_ERROR);
  EXPECT_EQ(package_manager_get_package_info("p", &info), PACKAGE_MANAGER_ERROR_IO_ERROR);
}

TEST_F(ClientOffline, NoMessageGoesOut) {
  const message_port_message_cb callback = [](int, const char*, const char*, bool, bundle*, void*) {
  };
  EXPECT_EQ(message_port_register_local_port("p", callback, nullptr), MESSAGE_PORT_ERROR_IO_ERROR);
  bundle* message = bundle_create();
  EXPECT_EQ(message_port_send_message("a.b", "p", message), MESSAGE_PORT_ERROR_IO_ERROR);
  EXPECT_EQ(message_port_send_message("a.b", nullptr, message),
            MESSAGE_PORT_ERROR_INVALID_PARAMETER);
  bundle_free(message);
}

TEST_F(ClientOffline, TheClosedServicesAreAbsent) {
  EXPECT_EQ(FCAPI::GetOrvAppInfoAPI(), nullptr);
  EXPECT_EQ(FIIPCConnection::GetInstance(), nullptr);
  EXPECT_EQ(FCEMSProxy::GetInstance(nullptr, nullptr), nullptr);
  TCService* service = nullptr;
  EXPECT_NE(TVServiceAPI::CreateService(&service), 0);
  EXPECT_EQ(service, nullptr);
  TCSignalSubscriber* subscriber = nullptr;
  EXPECT_NE(
      TVServiceAPI::CreateSignalSubscriber([](int, const void*, void*) { return 1; }, &subscriber),
      0);
  EXPECT_EQ(subscriber, nullptr);
  EXPECT_EQ(smart_deadlock_register_watchdog_service(120), -1);
}

TEST_F(ClientOffline, AMountServiceThatIsNotReachedLeavesTheResult) {
  int result = -1;
  EXPECT_EQ(PS_Mount("-o loop a b", 11, 0, &result), -1);
  EXPECT_EQ(result, -1);
}

TEST_F(ClientOffline, TheWebAppServiceLeavesItsArguments) {
  was_app_list_item_s* list = nullptr;
  int count = 3;
  EXPECT_NE(was_get_all_app_list(&list, &count), 0);
  EXPECT_EQ(count, 3);
}

TEST_F(ClientOffline, AProcessThatIsNoApplicationHasNoDataDirectory) {
  EXPECT_EQ(app_get_data_path(), nullptr);
  EXPECT_EQ(app_get_shared_data_path(), nullptr);
}

TEST_F(ClientOffline, TheDaemonsDirectoriesBearThePrefix) {
  setenv("TV_ROLE", "daemon", 1);
  setenv("TV_PREFIX", "/desk", 1);
  EXPECT_EQ(Taken(app_get_data_path()), "/desk/opt/usr/apps/com.kalmora.tv.orv-enabler/data/");
  EXPECT_EQ(Taken(app_get_shared_data_path()),
            "/desk/opt/usr/apps/com.kalmora.tv.orv-enabler/shared/data/");
  EXPECT_STREQ(tzplatform_getenv(TZ_USER_APP), "/desk/opt/usr/apps");
  EXPECT_STREQ(tzplatform_getenv(TZ_SYS_RW_APP), "/desk/opt/usr/apps");
  EXPECT_EQ(tzplatform_getenv(static_cast<tzplatform_variable>(28)), nullptr);
}

TEST_F(ClientOffline, AnEmptyPrefixGivesTheDirectoriesOfATelevision) {
  setenv("TV_ROLE", "daemon", 1);
  setenv("TV_PREFIX", "", 1);
  setenv("TV_ROOT", "/run/tv-desk", 1);
  EXPECT_EQ(Taken(app_get_data_path()), "/opt/usr/apps/com.kalmora.tv.orv-enabler/data/");
}

TEST_F(ClientOffline, AnAppsDirectoriesAreThoseOfItsPackage) {
  setenv("TV_ROLE", "app", 1);
  setenv("TV_APP_ID", "sports01.Feeder", 1);
  setenv("TV_ROOT", "/desk", 1);
  EXPECT_EQ(Taken(app_get_data_path()), "/desk/opt/usr/apps/sports01/data/");
  EXPECT_EQ(Taken(app_get_shared_data_path()), "/desk/opt/usr/apps/sports01/shared/data/");
}

TEST_F(ClientOffline, AnotherProcessMayHaveTheDeskAtAnAddressWhereNobodyListens) {
  setenv("TV_BUS", "unix:path=/nonexistent/bus", 1);
  EXPECT_EQ(vconf_set_int("db/x", 1), -1);
}

}  // namespace
