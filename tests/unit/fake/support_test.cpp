// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <minizip/unzip.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "support/files.h"
#include "support/sandbox.h"
#include "support/wait_for.h"

namespace {

using support::TempDir;
using testing::ElementsAre;

TEST(Sandbox, HasFreshWritableDirectories) {
  ASSERT_TRUE(support::InSandbox()) << "needs the sandbox: unset ORV_TEST_NO_SANDBOX";
  for (const std::string directory : {"/tmp", "/opt/usr/apps", "/opt/share", "/home/owner"}) {
    const std::string file = directory + "/only-in-this-test";
    EXPECT_FALSE(support::Exists(file));
    support::WriteFile(file, "x");
    EXPECT_EQ("x", support::ReadFile(file));
  }
}

TEST(Sandbox, KeepsTheRestReadOnly) {
  ASSERT_TRUE(support::InSandbox()) << "needs the sandbox: unset ORV_TEST_NO_SANDBOX";
  for (const std::string directory : {"/etc", "/usr", "/var", "/opt", "/home"}) {
    EXPECT_THROW(support::WriteFile(directory + "/orv-test", ""), std::runtime_error) << directory;
  }
}

TEST(Sandbox, KeepsTheProgramAndTheDevicesInReach) {
  EXPECT_EQ(0, access("/proc/self/exe", X_OK));
  EXPECT_EQ(0, access("/dev/null", W_OK));
}

TEST(TempDir, IsGoneWithWhatItHeld) {
  std::string path;
  {
    const TempDir directory;
    path = directory.Path();
    support::WriteFile(directory / "a/b.txt", "text");
    EXPECT_EQ("text", support::ReadFile(directory / "a/b.txt"));
    EXPECT_THAT(support::ListTree(path), ElementsAre("a/", "a/b.txt"));
  }
  EXPECT_FALSE(support::Exists(path));
}

TEST(Zip, HoldsWhatWasPutIn) {
  const TempDir directory;
  support::WriteZip(directory / "a.zip", {{"d/", ""}, {"d/f", "content"}, {"../x", "y", true}});
  const unzFile archive = unzOpen((directory / "a.zip").c_str());
  ASSERT_NE(nullptr, archive);
  unz_global_info info{};
  EXPECT_EQ(UNZ_OK, unzGetGlobalInfo(archive, &info));
  EXPECT_EQ(3U, info.number_entry);
  EXPECT_EQ(UNZ_OK, unzLocateFile(archive, "../x", 1));
  EXPECT_EQ(UNZ_OK, unzLocateFile(archive, "d/f", 1));
  EXPECT_EQ(UNZ_OK, unzOpenCurrentFile(archive));
  char text[16] = {};
  EXPECT_EQ(7, unzReadCurrentFile(archive, text, sizeof(text)));
  EXPECT_STREQ("content", text);
  unzCloseCurrentFile(archive);
  unzClose(archive);
}

TEST(WaitFor, NamesWhatWasMissing) {
  const auto result =
      support::WaitFor([] { return false; }, "the moon", std::chrono::milliseconds(1));
  EXPECT_FALSE(result);
  EXPECT_STREQ("still missing after 1 ms: the moon", result.message());
}

}  // namespace
