// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/desk_root.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "desk/common/desk_error.h"
#include "support/files.h"

namespace desk {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class DeskRoot : public testing::Test {
 protected:
  static std::string ErrorOf(const DeskPaths& paths) {
    try {
      PrepareDeskDirectory(paths);
    } catch (const DeskError& error) {
      return error.Code() + ": " + error.what();
    }
    return "accepted";
  }
  // The directories of a TV from before marker files were introduced.
  void MakeLayout() {
    for (const std::string& place : {m_paths.DaemonData(), m_paths.OptShare(), m_paths.HomeOwner(),
                                     m_paths.Tmp(), m_paths.Run(), m_paths.Log(), m_paths.Db()}) {
      support::MakeDirectories(place);
    }
  }

  support::TempDir m_dir;
  const DeskPaths m_paths{m_dir / "tv"};
};

TEST_F(DeskRoot, ANewDirectoryIsCreatedWithItsMark) {
  EXPECT_EQ(ErrorOf(m_paths), "accepted");
  EXPECT_THAT(support::ReadFile(m_paths.Mark()), StartsWith("tv-desk format 1\n"));
  EXPECT_EQ(support::ListTree(m_paths.Root()), std::vector<std::string>{".tv-desk"});
}

TEST_F(DeskRoot, AnEmptyDirectoryIsAccepted) {
  support::MakeDirectories(m_paths.Root() + "/lost+found");
  EXPECT_EQ(ErrorOf(m_paths), "accepted");
  EXPECT_TRUE(support::Exists(m_paths.Mark()));
}

TEST_F(DeskRoot, AMarkedDirectoryIsAcceptedWithWhateverItHolds) {
  PrepareDeskDirectory(m_paths);
  support::WriteFile(m_paths.Root() + "/notes.txt", "x");
  EXPECT_EQ(ErrorOf(m_paths), "accepted");
}

TEST_F(DeskRoot, AMarkThatIsBeingWrittenDoesNotCountAsAFile) {
  support::WriteFile(m_paths.Mark() + ".4711", "");
  EXPECT_EQ(ErrorOf(m_paths), "accepted");
}

TEST_F(DeskRoot, AnyOtherDirectoryIsRefusedUnchanged) {
  support::WriteFile(m_paths.Root() + "/tmp/file", "x");
  EXPECT_THAT(ErrorOf(m_paths), StartsWith("Failed: " + m_paths.Root() + " contains files"));
  EXPECT_EQ(support::ListTree(m_paths.Root()), (std::vector<std::string>{"tmp/", "tmp/file"}));
}

TEST_F(DeskRoot, ADeskFromBeforeTheMarkIsUpgraded) {
  MakeLayout();
  support::WriteFile(m_paths.KeysDb(), "keys");
  EXPECT_EQ(ErrorOf(m_paths), "accepted");
  EXPECT_TRUE(support::Exists(m_paths.Mark()));
  EXPECT_EQ(support::ReadFile(m_paths.KeysDb()), "keys");
}

TEST_F(DeskRoot, HalfOfADesksLayoutIsNotADesk) {
  MakeLayout();
  std::filesystem::remove_all(m_paths.Db());
  EXPECT_THAT(ErrorOf(m_paths), StartsWith("Failed: "));
}

TEST_F(DeskRoot, ADamagedMarkIsReplacedOnADesk) {
  MakeLayout();
  support::WriteFile(m_paths.Mark(), "");
  EXPECT_EQ(ErrorOf(m_paths), "accepted");
  EXPECT_THAT(support::ReadFile(m_paths.Mark()), StartsWith("tv-desk format 1\n"));
}

TEST_F(DeskRoot, ANewerFormatIsRefused) {
  support::WriteFile(m_paths.Mark(), "tv-desk format 2\n");
  EXPECT_THAT(ErrorOf(m_paths), HasSubstr("made by a newer tv (format 2, this tv knows 1)"));
}

TEST_F(DeskRoot, AFileIsRefused) {
  support::WriteFile(m_paths.Root(), "x");
  EXPECT_THAT(ErrorOf(m_paths), HasSubstr(m_paths.Root()));
}

TEST_F(DeskRoot, ADirectoryThatCannotBeCreatedIsNamedWithTheReason) {
  const DeskPaths paths("/proc/tv");
  EXPECT_THAT(ErrorOf(paths), StartsWith("Failed: cannot create the TV's directory /proc/tv: "));
  EXPECT_THAT(ErrorOf(paths), HasSubstr("choose another directory with --root"));
}

TEST_F(DeskRoot, SystemDirectoriesAreNeverADesk) {
  for (const char* root : {"/", "/tmp", "/etc", "/usr", "/var/tmp", "/home", "//tmp/"}) {
    EXPECT_THAT(ErrorOf(DeskPaths(root)), StartsWith("Usage: a TV needs a directory of its own"))
        << root;
  }
}

TEST_F(DeskRoot, TheHomeDirectoryIsNeverADeskByAnyName) {
  support::MakeDirectories(m_dir / "users/me");
  std::filesystem::create_directory_symlink(m_dir / "users/me", m_dir / "link");
  setenv("HOME", (m_dir / "users/me").c_str(), 1);
  for (const char* root : {"users/me", "users", "link", "users/../link"}) {
    EXPECT_THAT(ErrorOf(DeskPaths(m_dir / root)), StartsWith("Usage: ")) << root;
  }
  EXPECT_EQ(ErrorOf(DeskPaths(m_dir / "users/me/tv")), "accepted");
}

TEST_F(DeskRoot, WhatThisUserOwnsHasNoForeignOwner) {
  EXPECT_EQ(ForeignOwner(m_dir.Path()), "");
  EXPECT_EQ(ForeignOwner(m_dir / "not/there"), "");
}

}  // namespace
}  // namespace desk
