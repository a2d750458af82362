// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
//
// Installs and removals of packaged data on two threads.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/filesystem.hpp>
#include <memory>

#include "fake/control/calls.h"
#include "fake/control/mounts.h"
#include "support/files.h"
#include "support/other_thread.h"
#include "utils/FileSystemUtils.h"
#include "utils/PackagedData.h"

namespace {

using FileSystemUtils::InstallPackagedData;
using FileSystemUtils::UninstallPackagedData;
using support::OtherThread;
using testing::ElementsAre;

const std::string TYPE = "ch_feeder_standard";

class PackagedDataThreads : public testing::Test {
 protected:
  PackagedDataThreads() {
    boost::filesystem::remove_all(FileSystemUtils::GetSharedDataPath());
    fake::ClearCalls();
    fake::SetMountHandler([this](const fake::Mount& mount) {
      support::WriteZip(mount.directory + "/orv_app.zip", {{"index.html", mount.directory}});
      if (m_interruption) {
        StartInterruption();
      }
      return 0;
    });
    fake::SetUmountHandler([](const std::string& directory) {
      boost::filesystem::remove(directory + "/orv_app.zip");
      return 0;
    });
  }
  /// Lets the other thread proceed as far as it can while the image is mounted.
  void StartInterruption() {
    const std::function<void()> operation = std::move(m_interruption);
    m_interruption = nullptr;
    m_other = std::make_unique<OtherThread>(operation);
    EXPECT_TRUE(m_other->WaitUntilItStops());
    m_interrupted = m_other->Done();
  }
  static std::string Tree(const std::string& package) {
    return FileSystemUtils::GetHbbTvDirectoryPath() + package;
  }

  std::function<void()> m_interruption;
  std::unique_ptr<OtherThread> m_other;
  bool m_interrupted = false;
};

TEST_F(PackagedDataThreads, ASecondInstallWaitsForTheEndOfTheFirst) {
  m_interruption = [] { EXPECT_TRUE(InstallPackagedData("second", "w", TYPE, 1, false)); };
  EXPECT_TRUE(InstallPackagedData("first", "w", TYPE, 1, false));
  m_other->Join();
  EXPECT_FALSE(m_interrupted);
  EXPECT_THAT(fake::CallNames(),
              ElementsAre("PS_Mount", "PS_Umount", "sync", "PS_Mount", "PS_Umount", "sync"));
  EXPECT_TRUE(support::Exists(Tree("first") + "/index.html"));
  EXPECT_TRUE(support::Exists(Tree("second") + "/index.html"));
}

TEST_F(PackagedDataThreads, AnUninstallWaitsForTheEndOfAnInstall) {
  m_interruption = [] { UninstallPackagedData("first", TYPE, 1); };
  EXPECT_TRUE(InstallPackagedData("first", "w", TYPE, 1, false));
  m_other->Join();
  EXPECT_FALSE(m_interrupted);
  EXPECT_FALSE(support::Exists(Tree("first")));
}

}  // namespace
