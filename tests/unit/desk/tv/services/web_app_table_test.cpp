// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/web_app_table.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "memory_router.h"
#include "package_maker.h"

namespace desk::tv {
namespace {

PackageManifest Package(const std::string& elements) {
  return ParseConfig(Config(elements));
}

class WebAppTableTest : public ::testing::Test {
 protected:
  WebAppTableTest() { PowerOn(); }
  void PowerOn() {
    m_table.reset();
    m_store = std::make_unique<TvStore>(m_directory.Path() + "/tv.json");
    const Needs needs{m_router,
                      DeskPaths(m_directory.Path()),
                      m_callers,
                      "",
                      "",
                      [this](const std::string& key, const std::string& value) {
                        m_keys.push_back(key + "=" + value);
                      },
                      [this](const std::string& line) { m_lines.push_back(line); }};
    m_table = std::make_unique<WebAppTable>(needs, *m_store);
    m_table->TurnOn();
  }
  Json::Value Find(const std::string& app) {
    Json::Value request;
    request["app"] = app;
    return m_router.Call("was.find", request);
  }
  Json::Value Set(const std::string& package, const char* member, const Json::Value& value) {
    Json::Value request;
    request["package"] = package;
    request[member] = value;
    return m_router.Call("was.set", request);
  }
  void Delay(int seconds) {
    Json::Value request;
    request["seconds"] = seconds;
    m_router.Call("was.delay", request);
  }
  Json::Value Entries() { return m_router.Call("was.list")["entries"]; }

  TemporaryDirectory m_directory;
  MemoryRouter m_router;
  CallerTable m_callers;
  std::vector<std::string> m_lines;
  std::vector<std::string> m_keys;
  std::unique_ptr<TvStore> m_store;
  std::unique_ptr<WebAppTable> m_table;
};

using Texts = std::vector<std::string>;

TEST_F(WebAppTableTest, LearnsOfAWebAppAtOnceAndWritesItsWidgetId) {
  m_table->Learn(Package(UiApp("learn00001")));
  const Json::Value found = Find("learn00001.App");
  EXPECT_EQ(found["result"], 0);
  EXPECT_EQ(found["widget"], "learn00001.App");
  EXPECT_EQ(found["app"], "learn00001.App");
  EXPECT_EQ(m_keys, Texts{"memory/was/app_install=learn00001.App"});
  const Json::Value all = m_router.Call("was.all");
  EXPECT_EQ(all["result"], 0);
  ASSERT_EQ(all["list"].size(), 1u);
  EXPECT_EQ(all["list"][0]["package"], "learn00001");
  EXPECT_EQ(all["list"][0]["kind"], 2);
  EXPECT_EQ(all["list"][0]["gone"], false);
}

TEST_F(WebAppTableTest, DoesNotKnowServicesNorTheEmptyId) {
  m_table->Learn(Package(UiApp("both000001") + Service("both000001.S", "s")));
  EXPECT_EQ(Find("both000001.S")["result"], -1);
  EXPECT_EQ(Find("")["result"], -1);
  EXPECT_FALSE(Find("unknown.App").isMember("widget"));
  EXPECT_EQ(Entries().size(), 1u);
}

TEST_F(WebAppTableTest, KnowsAPackageWithoutAUiByItsFirstService) {
  m_table->Learn(Package(Service("service001.A", "s") + Service("service001.B", "s")));
  ASSERT_EQ(Entries().size(), 1u);
  EXPECT_EQ(Entries()[0]["app"], "service001.A");
}

TEST_F(WebAppTableTest, LearnsLaterWhenADelayIsSet) {
  Delay(1);
  m_table->Learn(Package(UiApp("late000001")));
  EXPECT_EQ(Find("late000001.App")["result"], -1);
  EXPECT_TRUE(m_keys.empty());
  RunUntil("the widget id", [&] { return !m_keys.empty(); });
  EXPECT_EQ(m_keys, Texts{"memory/was/app_install=late000001.App"});
  EXPECT_EQ(Find("late000001.App")["result"], 0);
}

TEST_F(WebAppTableTest, AWebAppRemovedDuringTheDelayIsNeverEntered) {
  Delay(1);
  m_table->Learn(Package(UiApp("gone000001")));
  m_table->Learn(Package(UiApp("stays00001")));
  m_table->Forget("gone000001");
  RunUntil("the other widget id", [&] { return !m_keys.empty(); });
  EXPECT_EQ(m_keys, Texts{"memory/was/app_install=stays00001.App"});
  EXPECT_EQ(Find("gone000001.App")["result"], -1);
}

TEST_F(WebAppTableTest, ALateEntryIsMadeAfterPowerOff) {
  Delay(1000);
  m_table->Learn(Package(UiApp("late000001")));
  PowerOn();
  EXPECT_EQ(Find("late000001.App")["result"], 0);
  EXPECT_EQ(m_keys, Texts{"memory/was/app_install=late000001.App"});
}

TEST_F(WebAppTableTest, ALateEntryIsMadeOnceAfterAPowerCycle) {
  Delay(1);
  m_table->Learn(Package(UiApp("late000001")));
  m_table->TurnOn();
  EXPECT_EQ(m_keys, Texts{"memory/was/app_install=late000001.App"});
  Delay(1);
  m_table->Learn(Package(UiApp("late000002")));
  RunUntil("the other widget id", [&] { return m_keys.size() > 1; });
  EXPECT_EQ(m_keys.back(), "memory/was/app_install=late000002.App");
}

TEST_F(WebAppTableTest, ADelayLastsUntilPowerOff) {
  Delay(1000);
  m_table->TurnOn();
  m_table->Learn(Package(UiApp("quick00001")));
  EXPECT_EQ(Find("quick00001.App")["result"], 0);
}

TEST_F(WebAppTableTest, ALateEntryThatCannotBeStoredIsLogged) {
  Delay(1);
  m_table->Learn(Package(UiApp("late000001")));
  std::filesystem::remove_all(m_directory.Path());
  RunUntil("the line in the log", [&] { return !m_lines.empty(); });
  EXPECT_EQ(m_lines.front().find("the web-app service: cannot write "), 0u) << m_lines.front();
  EXPECT_TRUE(m_keys.empty());
}

TEST_F(WebAppTableTest, ANegativeDelayIsRefused) {
  EXPECT_THROW(Delay(-1), DeskError);
}

TEST_F(WebAppTableTest, KeepsChangesByHandOverAnUpdate) {
  m_table->Learn(Package(UiApp("update0001")));
  Set("update0001", "widget", "other");
  m_table->Learn(Package(UiApp("update0001")));
  EXPECT_EQ(Find("update0001.App")["widget"], "other");
  EXPECT_EQ(m_keys.size(), 1u);
}

TEST_F(WebAppTableTest, FollowsTheApplicationsOfAnUpdate) {
  m_table->Learn(Package(UiApp("update0001", "Old")));
  m_table->Learn(Package(UiApp("update0001", "New")));
  EXPECT_EQ(Find("update0001.Old")["result"], -1);
  EXPECT_EQ(Find("update0001.New")["result"], 0);
  EXPECT_EQ(m_keys.back(), "memory/was/app_install=update0001.New");
}

TEST_F(WebAppTableTest, SetChangesOneFieldOnly) {
  m_table->Learn(Package(UiApp("set0000001")));
  EXPECT_EQ(Set("set0000001", "gone", true)["gone"], true);
  const Json::Value entry = Set("set0000001", "kind", 3);
  EXPECT_EQ(entry["kind"], 3);
  EXPECT_EQ(entry["gone"], true);
  EXPECT_EQ(entry["widget"], "set0000001.App");
  EXPECT_EQ(entry["app"], "set0000001.App");
}

TEST_F(WebAppTableTest, SetCreatesAnEntryForAnUnknownPackage) {
  Set("stranger01", "gone", true);
  const Json::Value all = m_router.Call("was.all");
  ASSERT_EQ(all["list"].size(), 1u);
  EXPECT_EQ(all["list"][0]["package"], "stranger01");
  EXPECT_EQ(all["list"][0]["gone"], true);
  EXPECT_TRUE(m_keys.empty());
}

TEST_F(WebAppTableTest, RemoveReportsWhetherThereWasAnEntry) {
  m_table->Learn(Package(UiApp("remove0001")));
  Json::Value request;
  request["package"] = "remove0001";
  EXPECT_EQ(m_router.Call("was.remove", request)["found"], true);
  EXPECT_EQ(m_router.Call("was.remove", request)["found"], false);
  EXPECT_TRUE(Entries().empty());
}

TEST_F(WebAppTableTest, TheTableSurvivesPowerOff) {
  m_table->Learn(Package(UiApp("keep000001")));
  Set("keep000001", "widget", "w1");
  PowerOn();
  EXPECT_EQ(Find("keep000001.App")["widget"], "w1");
  EXPECT_EQ(m_keys.size(), 1u);
}

}  // namespace
}  // namespace desk::tv
