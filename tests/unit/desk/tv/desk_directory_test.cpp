// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/desk_directory.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "desk/common/desk_error.h"
#include "desk/tv/process.h"
#include "desk/tv/tv_log.h"
#include "support/files.h"
#include "support/wait_for.h"

namespace desk::tv {
namespace {

using support::Exists;

class Directory : public testing::Test {
 protected:
  support::TempDir m_dir;
  const DeskPaths m_paths{m_dir / "tv"};
};

TEST_F(Directory, ANewTvHasAllItsPlaces) {
  const DeskDirectory directory(m_paths);
  for (const std::string& path :
       {m_paths.DaemonData(), m_paths.DaemonSharedData(), m_paths.OptShare(), m_paths.HomeOwner(),
        m_paths.Tmp(), m_paths.Run(), m_paths.Log(), m_paths.Db()}) {
    EXPECT_TRUE(Exists(path)) << path;
  }
}

TEST_F(Directory, ItsPidIsToldWhileItRuns) {
  {
    const DeskDirectory directory(m_paths);
    EXPECT_EQ(support::ReadFile(m_paths.PidFile()), std::to_string(getpid()) + "\n");
  }
  EXPECT_FALSE(Exists(m_paths.PidFile()));
}

TEST_F(Directory, ASecondTvIsRefusedWithThePidOfTheFirst) {
  const DeskDirectory directory(m_paths);
  try {
    const DeskDirectory second(m_paths);
    FAIL() << "no error";
  } catch (const DeskError& e) {
    EXPECT_NE(std::string(e.what()).find("pid " + std::to_string(getpid())), std::string::npos);
  }
  EXPECT_TRUE(Exists(m_paths.PidFile()));
}

TEST_F(Directory, AfterTheFirstHasEndedTheNextOneMayStart) {
  { const DeskDirectory directory(m_paths); }
  EXPECT_NO_THROW(DeskDirectory{m_paths});
}

TEST_F(Directory, ADirectoryThatCannotBeCreatedIsNamed) {
  support::WriteFile(m_dir / "tv", "a file");
  try {
    const DeskDirectory directory(m_paths);
    FAIL() << "no error";
  } catch (const DeskError& e) {
    EXPECT_NE(std::string(e.what()).find(m_paths.Root()), std::string::npos);
  }
}

TEST_F(Directory, ADirectoryOfOtherFilesIsRefusedAndNotTouched) {
  support::WriteFile(m_dir / "tv/tmp/mine", "x");
  EXPECT_THROW(DeskDirectory{m_paths}, DeskError);
  EXPECT_EQ(support::ListTree(m_paths.Root()), (std::vector<std::string>{"tmp/", "tmp/mine"}));
}

pid_t StartApp(const DeskPaths& paths) {
  ProcessSpec spec;
  spec.arguments = {"sleep", "1000"};
  spec.environment = {"TV_ROOT=" + paths.Root(), "TV_ROLE=app"};
  return StartProcess(spec);
}

bool Runs(pid_t pid) {
  return waitpid(pid, nullptr, WNOHANG) == 0;
}

TEST_F(Directory, AppsThatAKilledTvLeftAreEnded) {
  DeskDirectory directory(m_paths);
  TvLog log(m_dir / "log");
  const pid_t app = StartApp(m_paths);
  directory.ClearLeftovers(log);
  EXPECT_TRUE(support::WaitFor([app] { return !Runs(app); }, "the app's end"));
  EXPECT_NE(support::ReadFile(m_dir / "log").find("1 processes"), std::string::npos);
}

TEST_F(Directory, TemporaryFilesThatAKilledTvLeftAreGoneAndNothingElseIs) {
  DeskDirectory directory(m_paths);
  TvLog log(m_dir / "log");
  support::WriteFile(m_paths.Tmp() + "/hbb_ready", "");
  support::WriteFile(m_paths.Tmp() + "/deep/file", "");
  support::WriteFile(m_paths.DaemonData() + "/hbb_boost", "");
  directory.ClearLeftovers(log);
  EXPECT_TRUE(Exists(m_paths.Tmp()));
  EXPECT_TRUE(support::ListTree(m_paths.Tmp()).empty());
  EXPECT_TRUE(Exists(m_paths.DaemonData() + "/hbb_boost"));
}

TEST_F(Directory, AppsOfAnotherTvAreLeftAlone) {
  const pid_t app = StartApp(DeskPaths(m_dir / "tv2"));
  EXPECT_EQ(KillStrayApps(m_paths), 0);
  EXPECT_TRUE(Runs(app));
  kill(app, SIGKILL);
  waitpid(app, nullptr, 0);
}

TEST_F(Directory, AnOperatorsShellIsNoApp) {
  ProcessSpec spec;
  spec.arguments = {"sleep", "1000"};
  spec.environment = {"TV_ROOT=" + m_paths.Root()};
  const pid_t other = StartProcess(spec);
  EXPECT_EQ(KillStrayApps(m_paths), 0);
  kill(other, SIGKILL);
  waitpid(other, nullptr, 0);
}

TEST_F(Directory, ANamesakeInTheEnvironmentIsNoApp) {
  ProcessSpec spec;
  spec.arguments = {"sleep", "1000"};
  spec.environment = {"MY_TV_ROOT=" + m_paths.Root(), "TV_ROOT=" + m_paths.Root() + "x",
                      "TV_ROLE=app"};
  const pid_t other = StartProcess(spec);
  EXPECT_EQ(KillStrayApps(m_paths), 0);
  kill(other, SIGKILL);
  waitpid(other, nullptr, 0);
}

TEST_F(Directory, EmptyingRemovesWhatIsInsideAndFollowsNoLink) {
  support::WriteFile(m_dir / "outside/file", "x");
  support::WriteFile(m_dir / "in/deep/er/file", "x");
  ASSERT_EQ(symlink((m_dir / "outside").c_str(), (m_dir / "in/link").c_str()), 0);
  EmptyDirectory(m_dir / "in");
  EXPECT_TRUE(support::ListTree(m_dir / "in").empty());
  EXPECT_TRUE(Exists(m_dir / "outside/file"));
}

TEST_F(Directory, EmptyingALinkToADirectoryDeletesNothing) {
  support::WriteFile(m_dir / "outside/file", "x");
  ASSERT_EQ(symlink((m_dir / "outside").c_str(), (m_dir / "link").c_str()), 0);
  EmptyDirectory(m_dir / "link");
  EXPECT_TRUE(Exists(m_dir / "outside/file"));
}

TEST_F(Directory, EmptyingWhatIsNotThereIsWithoutEffect) {
  EmptyDirectory(m_dir / "none");
  EXPECT_FALSE(Exists(m_dir / "none"));
}

TEST_F(Directory, WithoutMountsThereIsNothingToUnmount) {
  EXPECT_EQ(UnmountAllUnder(m_paths), 0);
}

}  // namespace
}  // namespace desk::tv
