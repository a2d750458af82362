// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/launcher.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include "support/files.h"

namespace desk::cli {
namespace {

using Kind = StartResult::Kind;

constexpr std::chrono::seconds LONG(30);

class CliLauncher : public testing::Test {
 protected:
  /// A program that knows the descriptor given with --ready-fd as $fd.
  std::string Program(const std::string& body) {
    const std::string path = m_directory / "program";
    support::WriteFile(path,
                       "#!/bin/sh\nroot=$1\n"
                       "while [ $# -gt 0 ]; do [ \"$1\" = --ready-fd ] && fd=$2; shift; done\n" +
                           body + "\n");
    EXPECT_EQ(chmod(path.c_str(), 0755), 0);
    return path;
  }

  StartResult Start(const std::string& body, std::chrono::seconds timeout = LONG) {
    return StartInBackground(DeskPaths(m_directory.Path()), Program(body), {m_directory.Path()},
                             timeout);
  }

  support::TempDir m_directory;
};

TEST_F(CliLauncher, AProgramThatSaysReadyIsReady) {
  EXPECT_EQ(Start("eval \"echo ready >&$fd\"").kind, Kind::Ready);
}

TEST_F(CliLauncher, ThePidIsTheProgramsOwn) {
  const StartResult result = Start("echo $$ > $root/pid; eval \"echo ready >&$fd\"");
  pid_t pid = 0;
  std::ifstream(m_directory / "pid") >> pid;
  EXPECT_GT(pid, 0);
  EXPECT_EQ(result.pid, pid);
}

TEST_F(CliLauncher, TheReasonOfAFailureIsHandedOn) {
  const StartResult result = Start("eval \"echo 'failed: no bus' >&$fd\"");
  EXPECT_EQ(result.kind, Kind::Failed);
  EXPECT_EQ(result.reason, "no bus");
}

TEST_F(CliLauncher, AProgramThatEndsWithoutAWordHasFailedWithoutAReason) {
  const StartResult result = Start("exit 1");
  EXPECT_EQ(result.kind, Kind::Failed);
  EXPECT_EQ(result.reason, "");
}

TEST_F(CliLauncher, AProgramThatCannotBeExecutedIsToldAsThat) {
  const StartResult result =
      StartInBackground(DeskPaths(m_directory.Path()), m_directory / "none", {}, LONG);
  EXPECT_EQ(result.kind, Kind::Failed);
  EXPECT_EQ(result.reason, "it cannot be executed (No such file or directory)");
}

TEST_F(CliLauncher, AProgramThatSaysNothingInTimeIsNotWaitedFor) {
  // The program outlives the test by a second at most.
  EXPECT_EQ(Start("exec sleep 1", std::chrono::seconds(0)).kind, Kind::TimedOut);
}

TEST_F(CliLauncher, OutputGoesToTheLogOfTheDesk) {
  Start("echo to out; echo to err >&2; eval \"echo ready >&$fd\"");
  EXPECT_EQ(support::ReadFile(DeskPaths(m_directory.Path()).TvLog()), "to out\nto err\n");
}

TEST_F(CliLauncher, TheProgramLeadsASessionOfItsOwnAndIsNobodysChild) {
  Start("echo $$ > $root/pid; cut -d' ' -f6 /proc/$$/stat > $root/sid; eval \"echo ready >&$fd\"");
  pid_t pid = 0;
  pid_t session = 0;
  std::ifstream(m_directory / "pid") >> pid;
  std::ifstream(m_directory / "sid") >> session;
  EXPECT_GT(pid, 0);
  EXPECT_EQ(session, pid);
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST_F(CliLauncher, AProcessThatIsNotThereHasEnded) {
  const pid_t child = fork();
  if (child == 0) {
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  EXPECT_TRUE(WaitForEnd(child, std::chrono::seconds(0)));
}

TEST_F(CliLauncher, AProcessThatStaysHasNotEnded) {
  EXPECT_FALSE(WaitForEnd(getpid(), std::chrono::seconds(0)));
}

}  // namespace
}  // namespace desk::cli
