// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/filesystem.hpp>
#include <stdexcept>

#include "fake/control/calls.h"
#include "fake/control/log.h"
#include "fake/control/mounts.h"
#include "support/files.h"
#include "utils/FileSystemUtils.h"
#include "utils/PackagedData.h"

/// What an install leaves behind when it fails after the unpacking.
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class PackagedDataFailures : public testing::Test {
 protected:
  PackagedDataFailures() {
    boost::filesystem::remove_all(FileSystemUtils::GetSharedDataPath());
    fake::ClearLog();
    fake::ClearCalls();
  }

  static void PutIntoImage(const std::vector<support::ZipEntry>& entries) {
    fake::SetMountHandler([entries](const fake::Mount& mount) {
      support::WriteZip(mount.directory + "/orv_app.zip", entries);
      return 0;
    });
  }
  static bool Install() {
    return FileSystemUtils::InstallPackagedData("pkg", "widget", "ch_feeder_standard",
                                                PACKAGED_TYPE_HBBTV_APP, false);
  }

  const std::string m_hbbtv = FileSystemUtils::GetHbbTvDirectoryPath();
  const std::string m_tree = m_hbbtv + "pkg";
};

TEST_F(PackagedDataFailures, ADirectoryInPlaceOfTheListIsAFailureThatLeavesTheTree) {
  PutIntoImage({{"index.html", "x"}, {"app_type_file.txt/", ""}});
  EXPECT_FALSE(Install());
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR), ElementsAre("[ERROR] filePath is empty."));
  EXPECT_EQ(fake::CallCount("PS_Umount"), 1u);
  EXPECT_THAT(fake::Mounts(), IsEmpty());
  EXPECT_THAT(support::ListTree(m_tree), ElementsAre("app_type_file.txt/", "index.html"));
}

TEST_F(PackagedDataFailures, AnExceptionBeforeTheUnmountIsDoneLeavesTheMountInPlace) {
  PutIntoImage({{"index.html", "x"}});
  fake::SetUmountHandler([](const std::string&) -> int { throw std::runtime_error("torn off"); });
  EXPECT_FALSE(Install());
  EXPECT_EQ(fake::LogTexts().back(), "[Info] exception : torn off");
  EXPECT_EQ(fake::CallCount("PS_Umount"), 1u);
  ASSERT_THAT(fake::Mounts(), SizeIs(1));
  EXPECT_EQ(fake::Mounts()[0].directory, m_hbbtv + "temp_app");
  // Without a list file.
  EXPECT_THAT(support::ListTree(m_tree), ElementsAre("index.html"));
}

}  // namespace
