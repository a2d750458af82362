// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Descriptors, SQLite's allocations and heap blocks over single operations, failures included: each
// gives back what it took.
#include "support/resources.h"

#include <app_control.h>
#include <gtest/gtest.h>

#include <boost/filesystem.hpp>

#include "app_info/AppInfoCache.h"
#include "app_info/app_type/ChFeederCustom.h"
#include "app_info/app_type/ChFeederStandard.h"
#include "app_info/app_type/CustomUIExtended.h"
#include "app_info/app_type/CustomUIStandard.h"
#include "fake/control/fake.h"
#include "support/files.h"
#include "unit/app_info/app_type/layers.h"
#include "unit/app_info/records.h"
#include "utils/AppControlUtils.h"
#include "utils/AppPreloadingUtils.h"
#include "utils/FileSystemUtils.h"
#include "utils/PackagedData.h"
#include "utils/ResetCount.h"
#include "utils/TimeUtils.h"
#include "utils/WASUtils.h"

namespace {

const std::string LONG = "an.identifier.of.more.than.forty.characters.";
constexpr int REJECTED = static_cast<int>(APP_CONTROL_ERROR_LAUNCH_REJECTED);

void Forget() {
  fake::ClearLog();
  fake::ClearCalls();
  fake::ClearLaunches();
  fake::ClearChannelRequests();
  fake::DropKeyChanges();
  fake::ClearFaults();
}

void ExpectNothingLeft(const std::string& name, const std::function<void()>& operation) {
  EXPECT_TRUE(support::LeavesNothingBehind(operation, Forget)) << name;
}

class OperationResources : public testing::Test {
 protected:
  OperationResources() {
    boost::filesystem::remove_all(FileSystemUtils::GetSharedDataPath());
    fake::SetWaits(fake::Waits::TimeOut);
    fake::StoreKey("db/orv_channel/custom_ui_type", std::string());
    fake::SetUmountHandler([](const std::string& directory) {
      boost::filesystem::remove(directory + "/orv_app.zip");
      return 0;
    });
    PutIntoImage([](const std::string& path) {
      support::WriteZip(path, {{"metadata/a", "1"}, {"b/c", "2"}});
    });
  }
  static void PutIntoImage(const std::function<void(const std::string&)>& make) {
    fake::SetMountHandler([make](const fake::Mount& mount) {
      make(mount.directory + "/orv_app.zip");
      return 0;
    });
  }
};

template <class Type>
void Live(layers::Chain<Type> layer, const std::string& staged) {
  layers::Apply(*layer, "channel_data_url", "file://" + LONG);
  layers::Apply(*layer, "schedule_data_url", "file://" + LONG);
  layers::Stage(*layer, "channel_data_url", "http://" + LONG);
  layer->RunOperation(false);
  layer->RunOperation(true);
  layers::StageValue(*layer, staged);
  layer->UpdateOperation();
  layer->StopOperation();
}

TEST_F(OperationResources, OfTheLayersAreGivenBack) {
  ExpectNothingLeft("a standard feeder",
                    [] { Live(layers::Decorate<ChFeederStandard>("extended"), LONG); });
  ExpectNothingLeft("a custom feeder", [] {
    Live(layers::Decorate<ChFeederCustom>(layers::NewRecord(), "extended",
                                          static_cast<RequestEventCallback>(nullptr)),
         LONG);
  });
  ExpectNothingLeft("a banner", [] {
    Live(layers::Decorate<CustomUIStandard>("info"), "channel," + LONG);
    AppPreloadingUtils::RemoveWebStatusChangedCallback(layers::APP, "custom_ui_standard");
    fake::StoreKey("db/orv_channel/custom_ui_type", std::string());
  });
  for (const std::string option : {"default", "background_img"}) {
    support::WriteFile("/opt/share/orv_ch/replacement_ui_info.json", "{\"appid\":\"layout\"}");
    ExpectNothingLeft("a screen, " + option, [&] {
      auto screen = layers::Decorate<CustomUIExtended>("epg");
      layers::Apply(*screen, "custom_ui_cold_boot_opt", option);
      Live(std::move(screen), "channel_list," + LONG);
      AppPreloadingUtils::RemoveWebStatusChangedCallback(layers::APP, "custom_ui_extended");
      fake::StoreKey("db/orv_channel/custom_ui_type", std::string());
    });
  }
}

TEST_F(OperationResources, OfLaunchesAndOperationsAreGivenBack) {
  for (const char* call : {"none", "app_control_create", "app_control_set_app_id",
                           "app_control_send_launch_request", "app_operation_set_current_app"}) {
    ExpectNothingLeft(call, [&] {
      const auto fail = [&] { fake::Fail(call, REJECTED); };
      fail();
      AppControlUtils::LaunchApp(LONG, ORV_OPERATION_EPG);
      fake::ClearFaults();
      fail();
      AppControlUtils::PreloadWebApp(LONG);
      fake::ClearFaults();
      fail();
      AppControlUtils::SetCurrentAppOfAppOperation(ORV_OPERATION_EPG, LONG, true);
      AppControlUtils::SetCurrentAppOfAppOperation(ORV_OPERATION_EPG, LONG, false);
      EXPECT_EQ(fake::OpenHandles("app_control"), 0U);
    });
  }
  ExpectNothingLeft("following", [] {
    fake::Fail("app_control_send_launch_request", REJECTED, 3);
    AppPreloadingUtils::PreloadAppAndRegisterAppStatusChangedCB(LONG, LONG, {nullptr, nullptr});
    for (int i = 0; i < 4; ++i) fake::FireTimersOf(5000);
    AppPreloadingUtils::RemoveWebStatusChangedCallback(LONG, LONG);
    EXPECT_TRUE(fake::Timers().empty());
  });
}

TEST_F(OperationResources, OfTheSmallHelpersAreGivenBack) {
  fake::AddWasApp({"pkg", "app", LONG, 2, 0});
  ExpectNothingLeft("the web-app service", [] {
    WASAppList apps;
    EXPECT_TRUE(WASUtils::GetAllWASAppList(apps));
    EXPECT_EQ(WASUtils::GetWidgetIDByAppID("app"), LONG);
  });
  ExpectNothingLeft("the reset counters",
                    [] { FileSystemUtils::CheckTVResetAndUpdateResetCountInfo(); });
  ExpectNothingLeft("the times", [] {
    const time_t time = TimeUtils::GetEpochTime("2026-11-21T16:59:30Z");
    TimeUtils::GetUTCTimeString(&time);
  });
  ExpectNothingLeft("the files", [] {
    std::string content;
    FileSystemUtils::WriteFile("/tmp/file", LONG);
    FileSystemUtils::ReadFile("/tmp/file", content);
    FileSystemUtils::ReadFile("/tmp/absent", content);
    FileSystemUtils::GetPackagedMetaDataDirectoryPath("absent");
    FileSystemUtils::RemoveDirectories("/tmp/file");
  });
}

TEST_F(OperationResources, OfPackagedDataAreGivenBack) {
  const auto installAndUninstall = [] {
    FileSystemUtils::InstallPackagedData(LONG, LONG, "type", 3, false);
    FileSystemUtils::InstallPackagedData(LONG, LONG, "type2", 3, false);
    FileSystemUtils::UninstallPackagedData(LONG, "type", 3);
    FileSystemUtils::UninstallPackagedData(LONG, "type2", 3);
    boost::filesystem::remove_all(FileSystemUtils::GetSharedDataPath());
  };
  ExpectNothingLeft("a good archive", installAndUninstall);
  PutIntoImage([](const std::string& path) { support::WriteFile(path, LONG); });
  ExpectNothingLeft("a text", installAndUninstall);
  PutIntoImage([](const std::string& path) { support::WriteZip(path, {}); });
  ExpectNothingLeft("an empty archive", installAndUninstall);
  PutIntoImage([](const std::string& path) {
    support::WriteZip(path, {{"a", "1"}, {"a/b", "2"}});
  });
  ExpectNothingLeft("an entry that cannot be written", installAndUninstall);
}

TEST_F(OperationResources, OfTheStoreAreGivenBack) {
  records::MakeStoreDirectory();
  const auto record = records::MakeLayer("pkg", "type", LONG);
  const auto quoted = records::MakeLayer("quo'ted", "type", LONG);
  const std::vector<std::string> contents = {"", "x", std::string(5000, 'x')};
  for (const std::string& content : contents) {
    ExpectNothingLeft("a file of " + std::to_string(content.size()) + " bytes", [&] {
      support::WriteFile(records::StorePath(), content);
      AppInfoDB database;
      database.OpenDB();
      database.InsertNewRecord(record.get());
      database.InsertNewRecord(record.get());
      database.InsertNewRecord(quoted.get());
      database.UpdateRecord(quoted.get());
      AppInfoDB::RowMap rows;
      EXPECT_TRUE(database.LoadData(rows));
      EXPECT_EQ(rows.size(), 1U);
      database.DeleteRecord("quo'ted");
      database.DeleteRecord("pkg");
      database.RemoveDBFile();
    });
  }
  ExpectNothingLeft("another schema", [&] {
    boost::filesystem::remove(records::StorePath());
    records::ExecuteOnStore("CREATE TABLE appinfo(package_id TEXT, x TEXT)");
    AppInfoDB database;
    database.OpenDB();
    database.RemoveDBFile();
  });
  ExpectNothingLeft("the cache", [&] {
    AppInfoCache& cache = *AppInfoCache::GetInstance();
    cache.OpenDB();
    cache.AddAppInfo("pkg", record.get(), true);
    cache.AddSchedulingItem("pkg");
    SchedulingItem item;
    cache.GetNextSchedulingItem(item);
    cache.PinAppInfo("pkg").reset();
    cache.RemoveAppInfo("pkg");
    cache.ClearCacheAndDB();
  });
}

}  // namespace
