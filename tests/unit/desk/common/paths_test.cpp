// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/paths.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

#include "desk/common/desk_error.h"

namespace desk {
namespace {

class SelectedPaths : public testing::Test {
 protected:
  SelectedPaths() {
    unsetenv("TV_ROOT");
    unsetenv("XDG_STATE_HOME");
    unsetenv("HOME");
  }
};

TEST_F(SelectedPaths, TheOptionIsFirst) {
  setenv("TV_ROOT", "/b", 1);
  EXPECT_EQ(DeskPaths::Select("/a").Root(), "/a");
}

TEST_F(SelectedPaths, ThenTvRoot) {
  setenv("TV_ROOT", "/b", 1);
  setenv("XDG_STATE_HOME", "/c", 1);
  EXPECT_EQ(DeskPaths::Select("").Root(), "/b");
}

TEST_F(SelectedPaths, ThenTheUsersStateDirectory) {
  setenv("XDG_STATE_HOME", "/c", 1);
  setenv("HOME", "/d", 1);
  EXPECT_EQ(DeskPaths::Select("").Root(), "/c/tv-desk");
}

TEST_F(SelectedPaths, ThenTheOneInTheHomeDirectory) {
  setenv("TV_ROOT", "", 1);
  setenv("HOME", "/d", 1);
  EXPECT_EQ(DeskPaths::Select("").Root(), "/d/.local/state/tv-desk");
}

TEST_F(SelectedPaths, WithoutAnyOfThemItIsAUsageError) {
  EXPECT_THROW(DeskPaths::Select(""), DeskError);
}

TEST(Paths, ARelativeRootIsMadeAbsolute) {
  ASSERT_EQ(chdir("/usr"), 0);
  EXPECT_EQ(DeskPaths("x/../tv").Root(), "/usr/tv");
}

TEST(Paths, AClosingSlashIsNoPartOfTheRoot) {
  EXPECT_EQ(DeskPaths("/a/b//").Root(), "/a/b");
}

TEST(Paths, ThePlacesAreUnderTheRoot) {
  const DeskPaths paths("/r");
  EXPECT_EQ(paths.DaemonData(), "/r/opt/usr/apps/com.kalmora.tv.orv-enabler/data");
  EXPECT_EQ(paths.DaemonSharedData(), "/r/opt/usr/apps/com.kalmora.tv.orv-enabler/shared/data");
  EXPECT_EQ(paths.BusSocket(), "/r/run/bus");
  EXPECT_EQ(paths.KeysDb(), "/r/db/keys.sqlite");
}

TEST(Paths, TheProgramsDirectoryIsTheTests) {
  EXPECT_EQ(access((ProgramDirectory() + "/desk_paths_test").c_str(), X_OK), 0);
}

}  // namespace
}  // namespace desk
