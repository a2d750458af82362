// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/packages.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "memory_router.h"
#include "package_maker.h"
#include "package_manager.h"

namespace desk::tv {
namespace {

class PackagesTest : public ::testing::Test {
 protected:
  PackagesTest() : m_paths(m_directory.Path() + "/tv") {
    std::filesystem::create_directories(m_paths.Apps());
    std::filesystem::create_directories(m_paths.Db());
    PowerOn();
  }

  void PowerOn() {
    m_packages.reset();
    m_catalogue.reset();
    m_catalogue = std::make_unique<Catalogue>(m_paths.PackagesDb());
    PackageHooks hooks;
    hooks.beforeChange = [this](const std::string& package) {
      m_calls.push_back("before " + package + (TreeOf(package) ? " with tree" : ""));
      if (!m_refusal.empty()) {
        throw DeskError(DeskError::FAILED, m_refusal);
      }
    };
    hooks.present = [this](const PackageManifest& now, const PackageManifest* before) {
      m_calls.push_back("present " + now.id + " " + now.version +
                        (before == nullptr ? "" : " was " + before->version) +
                        (Completed() ? " after completed" : ""));
    };
    hooks.removed = [this](const PackageManifest& before) {
      m_calls.push_back("gone " + before.id + (TreeOf(before.id) ? " with tree" : "") +
                        (Completed() ? " after completed" : ""));
    };
    m_packages = std::make_unique<Packages>(m_router, m_paths, *m_catalogue, hooks);
  }

  bool TreeOf(const std::string& package) const {
    return std::filesystem::exists(m_paths.Package(package));
  }
  bool Completed() const {
    for (const auto& event : m_router.Events("package")) {
      if (event.body["state"] == Json::Value("completed")) {
        return true;
      }
    }
    return false;
  }

  std::string Make(const std::string& package, const std::string& version,
                   const std::string& content = "x") {
    const std::string file = m_directory.Path() + "/" + package + ".wgt";
    PackageMaker()
        .AddConfig(package, version)
        .Add("index.html", content)
        .Add(package + ".App.tmg", "image of " + version)
        .Write(file);
    return file;
  }
  Json::Value Install(const std::string& file, bool update = false) {
    Json::Value request;
    request["file"] = file;
    request["update"] = update;
    return m_router.Call("pkg.install", request);
  }
  std::string InstallError(const std::string& file, bool update = false) {
    try {
      Install(file, update);
    } catch (const DeskError& error) {
      return error.Code() + ": " + error.what();
    }
    return "done";
  }
  Json::Value Uninstall(const std::string& package) {
    Json::Value request;
    request["package"] = package;
    return m_router.Call("pkg.uninstall", request);
  }
  Json::Value Info(const std::string& package) {
    Json::Value request;
    request["package"] = package;
    return m_router.Call("pkg.info", request);
  }
  std::vector<std::string> States() const {
    std::vector<std::string> states;
    for (const auto& event : m_router.Events("package")) {
      const std::string state =
          event.body["type"].asString() + " " + event.body["state"].asString();
      if (states.empty() || states.back() != state) {
        states.push_back(state);
      }
    }
    return states;
  }

  TemporaryDirectory m_directory;
  DeskPaths m_paths;
  MemoryRouter m_router;
  std::vector<std::string> m_calls;
  std::string m_refusal;
  std::unique_ptr<Catalogue> m_catalogue;
  std::unique_ptr<Packages> m_packages;
};

using Texts = std::vector<std::string>;

TEST_F(PackagesTest, AnInstallUnpacksListsAndTells) {
  const Json::Value answer = Install(Make("install001", "1.0.0"));
  EXPECT_EQ(answer["package"], "install001");
  EXPECT_EQ(answer["version"], "1.0.0");
  EXPECT_EQ(ListTree(m_paths.Apps()),
            (Texts{"install001/", "install001/res/", "install001/res/install001.App.tmg",
                   "install001/res/wgt/", "install001/res/wgt/config.xml",
                   "install001/res/wgt/index.html"}));
  const Json::Value info = Info("install001");
  EXPECT_TRUE(info["found"].asBool());
  EXPECT_EQ(info["path"].asString(), m_paths.Package("install001"));
  EXPECT_EQ(info["apps"][0]["id"], "install001.App");
  EXPECT_EQ(info["apps"][0]["component"], "ui");
  EXPECT_EQ(States(), (Texts{"install started", "install processing", "install completed"}));
  EXPECT_EQ(m_calls, (Texts{"present install001 1.0.0"}));
}

TEST_F(PackagesTest, ProgressRisesAndEndsAtHundred) {
  Install(Make("progress01", "1.0.0", std::string(5000000, 'x')));
  int last = -1;
  for (const auto& event : m_router.Events("package")) {
    EXPECT_GE(event.body["progress"].asInt(), last);
    last = event.body["progress"].asInt();
    EXPECT_EQ(event.body["package"], "progress01");
    EXPECT_EQ(event.body["kind"], "wgt");
    EXPECT_EQ(event.body["error"], 0);
  }
  EXPECT_EQ(last, 100);
  EXPECT_GT(m_router.Events("package").size(), 10u);
  EXPECT_LT(m_router.Events("package").size(), 30u);
}

TEST_F(PackagesTest, TheTreeIsReadableForOthers) {
  Install(Make("mode000001", "1.0.0"));
  const auto mode = std::filesystem::status(m_paths.Package("mode000001")).permissions();
  EXPECT_NE(mode & std::filesystem::perms::others_exec, std::filesystem::perms::none);
}

TEST_F(PackagesTest, AnInstalledPackageIsThereAfterPowerOff) {
  const std::string file = m_directory.Path() + "/m.wgt";
  PackageMaker()
      .AddConfig("keep000001", "2.1",
                 MetadataElement("k", "a &quot;quoted&quot; \xE2\x82\xAC") +
                     Service("keep000001.S", "run"))
      .Add("run", "")
      .Write(file);
  Install(file);
  const Json::Value before = Info("keep000001");
  PowerOn();
  EXPECT_EQ(Info("keep000001"), before);
  EXPECT_EQ(before["apps"][0]["metadata"].size(), 1u);
  EXPECT_EQ(before["apps"][1]["program"], "run");
}

TEST_F(PackagesTest, AnInstallOfAnInstalledPackageIsRefused) {
  Install(Make("again00001", "1.0.0"));
  EXPECT_EQ(InstallError(Make("again00001", "2.0.0")),
            "Failed: again00001 is installed: use `tv pkg update`");
  EXPECT_EQ(Info("again00001")["version"], "1.0.0");
  EXPECT_EQ(States().back(), "install failed");
}

TEST_F(PackagesTest, AnUpdateOfWhatIsNotInstalledIsRefused) {
  EXPECT_EQ(InstallError(Make("missing001", "1.0.0"), true),
            "NotFound: missing001 is not installed: use `tv pkg install`");
  EXPECT_EQ(ListTree(m_paths.Apps()), Texts{});
  EXPECT_EQ(States(), (Texts{"update failed"}));
}

TEST_F(PackagesTest, TheListHoldsPackagesAndNotWhetherTheyWereFound) {
  Install(Make("listed0001", "1.0.0"));
  const Json::Value list = m_router.Call("pkg.list")["packages"];
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].getMemberNames(),
            (Json::Value::Members{"apps", "id", "label", "path", "version"}));
  EXPECT_EQ(m_packages->Dump(), list);
}

TEST_F(PackagesTest, AnUpdateReplacesResourcesAndKeepsData) {
  Install(Make("update0001", "1.0.0", "old"));
  WriteFile(m_paths.Package("update0001") + "/data/state", "mine");
  WriteFile(m_paths.Package("update0001") + "/res/wgt/stale", "goes");
  m_calls.clear();
  Install(Make("update0001", "2.0.0", "new"), true);
  const std::string place = m_paths.Package("update0001");
  EXPECT_EQ(ReadFile(place + "/res/wgt/index.html"), "new");
  EXPECT_EQ(ReadFile(place + "/res/update0001.App.tmg"), "image of 2.0.0");
  EXPECT_EQ(ReadFile(place + "/data/state"), "mine");
  EXPECT_FALSE(std::filesystem::exists(place + "/res/wgt/stale"));
  EXPECT_EQ(Info("update0001")["version"], "2.0.0");
  EXPECT_EQ(States().back(), "update completed");
  EXPECT_EQ(m_calls, (Texts{"before update0001 with tree",
                            "present update0001 2.0.0 was 1.0.0 after completed"}));
}

TEST_F(PackagesTest, ARefusedUpdateLeavesEverythingAsItWas) {
  Install(Make("refuse0001", "1.0.0", "old"));
  const Texts before = ListTree(m_paths.Apps());
  m_refusal = "not now";
  EXPECT_EQ(InstallError(Make("refuse0001", "2.0.0", "new"), true), "Failed: not now");
  EXPECT_EQ(ListTree(m_paths.Apps()), before);
  EXPECT_EQ(ReadFile(m_paths.Package("refuse0001") + "/res/wgt/index.html"), "old");
  EXPECT_EQ(Info("refuse0001")["version"], "1.0.0");
}

TEST_F(PackagesTest, AnUninstallRemovesTreeAndRowBeforeItIsTold) {
  Install(Make("remove0001", "1.0.0"));
  WriteFile(m_paths.Package("remove0001") + "/data/state", "mine");
  PowerOn();
  m_calls.clear();
  EXPECT_EQ(Uninstall("remove0001")["package"], "remove0001");
  EXPECT_EQ(ListTree(m_paths.Apps()), Texts{});
  EXPECT_FALSE(Info("remove0001")["found"].asBool());
  EXPECT_EQ(States().back(), "uninstall completed");
  EXPECT_EQ(m_calls, (Texts{"before remove0001 with tree", "gone remove0001 after completed"}));
  PowerOn();
  EXPECT_FALSE(Info("remove0001")["found"].asBool());
}

TEST_F(PackagesTest, OthersLearnOfARemovalBeforeItsCompletion) {
  Install(Make("order00001", "1.0.0"));
  const std::size_t told = m_router.Events("package").size();
  Uninstall("order00001");
  const auto events = m_router.Events("package");
  ASSERT_EQ(events.size(), told + 3);
  EXPECT_EQ(events.back().body["state"], "completed");
}

TEST_F(PackagesTest, AnUninstallOfWhatIsNotInstalledFindsNothing) {
  try {
    Uninstall("missing001");
    FAIL() << "done";
  } catch (const DeskError& error) {
    EXPECT_EQ(error.Code(), DeskError::NOT_FOUND);
  }
  const auto events = m_router.Events("package");
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0].body["state"], "failed");
  EXPECT_EQ(events[0].body["error"], PACKAGE_MANAGER_ERROR_NO_SUCH_PACKAGE);
}

TEST_F(PackagesTest, AFileThatIsNotThereIsNotFound) {
  EXPECT_EQ(InstallError(m_directory.Path() + "/none.wgt"),
            "NotFound: there is no file " + m_directory.Path() + "/none.wgt");
}

TEST_F(PackagesTest, ADamagedArchiveLeavesNothingBehind) {
  const std::string file = Make("damage0001", "1.0.0", std::string(200000, 'x') + "needle");
  std::string bytes = ReadFile(file);
  bytes[bytes.find("needle")] = 'N';
  WriteFile(file, bytes);
  const std::string error = InstallError(file);
  EXPECT_NE(error.find("is damaged at index.html"), std::string::npos) << error;
  EXPECT_EQ(ListTree(m_paths.Apps()), Texts{});
  EXPECT_FALSE(Info("damage0001")["found"].asBool());
  EXPECT_EQ(States().back(), "install failed");
  EXPECT_TRUE(m_calls.empty());
}

TEST_F(PackagesTest, ATreeWithoutARowIsReplacedByAnInstall) {
  WriteFile(m_paths.Package("leftover01") + "/res/wgt/stale", "from an interrupted run");
  Install(Make("leftover01", "1.0.0"));
  EXPECT_FALSE(std::filesystem::exists(m_paths.Package("leftover01") + "/res/wgt/stale"));
  EXPECT_TRUE(std::filesystem::exists(m_paths.Package("leftover01") + "/res/wgt/index.html"));
}

TEST_F(PackagesTest, PowerOnRemovesWhatAnInterruptedInstallLeft) {
  WriteFile(m_paths.Apps() + "/.install-abcdef/tree/res/wgt/half", "");
  Install(Make("whole00001", "1.0.0"));
  Install(Make("treeless01", "1.0.0"));
  std::filesystem::remove_all(m_paths.Package("treeless01"));
  PowerOn();
  EXPECT_FALSE(std::filesystem::exists(m_paths.Apps() + "/.install-abcdef"));
  EXPECT_TRUE(Info("whole00001")["found"].asBool());
  EXPECT_FALSE(Info("treeless01")["found"].asBool());
}

TEST_F(PackagesTest, WithoutItsRowNoTreeIsLeftOrReplaced) {
  Install(Make("there00001", "1.0.0", "old"));
  const Texts before = ListTree(m_paths.Apps());
  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open(m_paths.PackagesDb().c_str(), &db), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(db, "DROP TABLE app", nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(db);
  const std::string expected = "Failed: the catalogue of packages cannot be used: no such table";
  EXPECT_EQ(InstallError(Make("fresh00001", "1.0.0")).substr(0, expected.size()), expected);
  EXPECT_EQ(InstallError(Make("there00001", "2.0.0", "new"), true).substr(0, expected.size()),
            expected);
  EXPECT_THROW(Uninstall("there00001"), DeskError);
  EXPECT_EQ(ListTree(m_paths.Apps()), before);
  EXPECT_EQ(ReadFile(m_paths.Package("there00001") + "/res/wgt/index.html"), "old");
  EXPECT_EQ(Info("there00001")["version"], "1.0.0");
}

TEST_F(PackagesTest, OrdersAreCarriedOutOneAfterTheOther) {
  Json::Value first;
  first["file"] = Make("queue00001", "1.0.0", std::string(3000000, 'x'));
  Json::Value second;
  second["file"] = Make("queue00002", "1.0.0");
  const auto firstDone = m_router.Begin("pkg.install", first);
  const auto secondDone = m_router.Begin("pkg.install", second);
  RunUntil("both installs", [&] { return firstDone() && secondDone(); });
  Texts packages;
  for (const auto& event : m_router.Events("package")) {
    packages.push_back(event.body["package"].asString());
  }
  EXPECT_TRUE(std::is_sorted(packages.begin(), packages.end()));
  EXPECT_EQ(m_router.Call("pkg.list")["packages"].size(), 2u);
}

TEST_F(PackagesTest, PowerOffInTheMiddleOfAnInstallLeavesNothingBehind) {
  Json::Value request;
  request["file"] = Make("poweroff01", "1.0.0", std::string(40000000, 'x'));
  const auto done = m_router.Begin("pkg.install", request);
  RunUntil("the install's first progress", [&] { return m_router.Events("package").size() > 1; });
  m_packages.reset();
  EXPECT_TRUE(done());
  EXPECT_EQ(States().back(), "install failed");
  EXPECT_EQ(ListTree(m_paths.Apps()), Texts{});
}

TEST_F(PackagesTest, AFullDiskIsNamedAndLeavesNothingBehind) {
  if (geteuid() != 0 || mount("none", m_paths.Apps().c_str(), "tmpfs", 0, "size=1m") != 0) {
    GTEST_SKIP() << "needs a small file system of its own: this user may not mount";
  }
  const std::string error = InstallError(Make("full000001", "1.0.0", std::string(2000000, 'x')));
  const Texts left = ListTree(m_paths.Apps());
  const std::string small = InstallError(Make("small00001", "1.0.0"));
  umount(m_paths.Apps().c_str());
  EXPECT_NE(error.find("no space left on the device"), std::string::npos) << error;
  EXPECT_EQ(left, Texts{});
  EXPECT_EQ(small, "done");
}

}  // namespace
}  // namespace desk::tv
