// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/services.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>

#include "memory_router.h"
#include "package_maker.h"

namespace desk::tv {
namespace {

using Texts = std::vector<std::string>;

// How the services notify each other.
class ServicesTest : public ::testing::Test {
 protected:
  ServicesTest() : m_paths(m_directory.Path() + "/tv") {
    for (const std::string& path : {m_paths.Apps(), m_paths.Db(), m_paths.Log()}) {
      std::filesystem::create_directories(path);
    }
    Needs needs{m_router,
                m_paths,
                m_callers,
                "unix:path=/the/bus",
                m_directory.Path() + "/tools",
                [this](const std::string& key, const std::string& value) {
                  if (m_keysFail) {
                    throw DeskError(DeskError::FAILED, "the disk is full");
                  }
                  m_router.Emit("key", key + "=" + value);
                },
                [this](const std::string& line) { m_lines.push_back(line); }};
    m_services = std::make_unique<Services>(needs);
  }

  void Install(const std::string& package, const std::string& version, bool update = false) {
    const std::string file = m_directory.Path() + "/" + package + ".wgt";
    PackageMaker()
        .AddConfig(package, version, Service(package + ".Feed", "feed"))
        .Add("feed", "#!/bin/sh\nexec sleep 1000\n")
        .Write(file);
    Json::Value request;
    request["file"] = file;
    request["update"] = update;
    m_router.Call("pkg.install", request);
  }
  void Uninstall(const std::string& package) {
    Json::Value request;
    request["package"] = package;
    m_router.Call("pkg.uninstall", request);
  }
  pid_t Launch(const std::string& app) {
    Json::Value request;
    request["app"] = app;
    return m_router.Call("app.launch", request)["pid"].asInt();
  }
  Json::Value Dump(const std::string& member) { return m_services->Dumps().at(member)(); }

  TemporaryDirectory m_directory;
  DeskPaths m_paths;
  MemoryRouter m_router;
  CallerTable m_callers;
  bool m_keysFail = false;
  Texts m_lines;
  std::unique_ptr<Services> m_services;
};

TEST_F(ServicesTest, TheWebAppServiceKnowsAnAppBeforeItsInstallIsReported) {
  bool knownBefore = false;
  Install("known00001", "1.0.0");
  for (const auto& event : m_router.AllEvents()) {
    if (event.topic == "key") {
      EXPECT_EQ(event.body.asString(), "memory/was/app_install=known00001.App");
      knownBefore = true;
    } else if (event.body["state"] == Json::Value("completed")) {
      EXPECT_TRUE(knownBefore);
    }
  }
  EXPECT_EQ(Dump("was").size(), 1u);
}

TEST_F(ServicesTest, AnUninstallEndsTheProcessesAndIsForgottenByTheWebAppService) {
  Install("goes000001", "1.0.0");
  const pid_t pid = Launch("goes000001.Feed");
  ASSERT_GT(pid, 0);
  Uninstall("goes000001");
  RunUntil("the end of the service", [&] { return kill(pid, 0) != 0; });
  EXPECT_TRUE(Dump("was").empty());
  EXPECT_TRUE(Dump("apps").empty());
  EXPECT_TRUE(Dump("packages").empty());
}

TEST_F(ServicesTest, AnUpdateEndsTheProcessesAndKeepsTheEntry) {
  Install("update0001", "1.0.0");
  const pid_t pid = Launch("update0001.Feed");
  Install("update0001", "2.0.0", true);
  RunUntil("the end of the service", [&] { return kill(pid, 0) != 0; });
  EXPECT_EQ(Dump("was").size(), 1u);
  EXPECT_EQ(m_router.Events("key").size(), 1u) << "the app is not announced again";
  EXPECT_EQ(Dump("packages")[0]["version"], "2.0.0");
}

TEST_F(ServicesTest, AKeyThatCannotBeWrittenDoesNotUndoAnInstall) {
  m_keysFail = true;
  Install("known00001", "1.0.0");
  EXPECT_EQ(Dump("packages").size(), 1u);
  EXPECT_EQ(m_lines, Texts{"cannot set memory/was/app_install: the disk is full"});
}

TEST_F(ServicesTest, PowerOffEndsAppsAndOperations) {
  Install("off0000001", "1.0.0");
  const pid_t pid = Launch("off0000001.Feed");
  Json::Value request;
  request["operation"] = "o";
  request["app"] = "a";
  m_router.Call("op.set", request);
  m_services->TurnOff();
  RunUntil("the end of the service", [&] { return kill(pid, 0) != 0; });
  EXPECT_TRUE(Dump("operations").empty());
  EXPECT_EQ(Dump("packages").size(), 1u);
}

TEST_F(ServicesTest, PowerOnTakesTheDelayOfTheWebAppServiceBack) {
  Json::Value request;
  request["seconds"] = 1000;
  m_router.Call("was.delay", request);
  m_services->TurnOff();
  m_services->TurnOn();
  Install("quick00001", "1.0.0");
  EXPECT_EQ(Dump("was").size(), 1u);
}

TEST_F(ServicesTest, TheDumpHasAllMembers) {
  Texts members;
  for (const auto& entry : m_services->Dumps()) {
    members.push_back(entry.first);
    EXPECT_TRUE(entry.second().isArray() || entry.first == "tuned") << entry.first;
  }
  EXPECT_EQ(members, (Texts{"apps", "channels", "mounts", "operations", "packages", "ports",
                            "services", "tuned", "was"}));
}

}  // namespace
}  // namespace desk::tv
