// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/daemon_launcher.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>

#include "desk/common/desk_error.h"
#include "desk/tv/desk_directory.h"
#include "support/files.h"

namespace desk::tv {
namespace {

using testing::HasSubstr;

// The daemon is a script; its effects and output are checked after it has ended.
class Launching : public testing::Test {
 protected:
  Launching() {
    m_options.paths = m_paths;
    setenv("ORV_ENABLER", m_program.c_str(), 1);
    const DeskDirectory made(m_paths);
  }

  void Script(const std::string& text) {
    support::WriteFile(m_program, "#!/bin/sh\n" + text + "\n");
    ASSERT_EQ(chmod(m_program.c_str(), 0755), 0);
  }

  // The script's output.
  std::string Run() { return Run(DaemonLauncher(m_options, m_paths.BusSocket())); }
  std::string Run(const DaemonLauncher& launcher) {
    const DeskDirectory directory(m_paths);
    support::WriteFile(m_paths.BusSocket(), "");
    support::WriteFile(m_paths.Log() + "/daemon-output.log", "");
    const DaemonProcess process = launcher.Launch();
    int status = 0;
    EXPECT_EQ(waitpid(process.pid, &status, 0), process.pid);
    if (process.infoFd >= 0) {
      close(process.infoFd);
    }
    return support::ReadFile(process.output);
  }

  support::TempDir m_dir;
  const DeskPaths m_paths{m_dir / "tv"};
  const std::string m_program = m_dir / "programs/daemon";
  TvOptions m_options;
};

TEST_F(Launching, InTheSandboxTheDaemonIsToldTheSandboxesPaths) {
  Script("env");
  const std::string said = Run();
  EXPECT_THAT(said, HasSubstr("TV_ROOT=/run/tv-desk\n"));
  EXPECT_THAT(said, HasSubstr("TV_BUS=unix:path=/run/tv-desk/bus\n"));
  EXPECT_THAT(said, HasSubstr("TV_PREFIX=\n"));
  EXPECT_THAT(said, HasSubstr("TV_ROLE=daemon\n"));
  EXPECT_THAT(said, HasSubstr("TV_FAULTS=/run/tv-desk/faults\n"));
  EXPECT_THAT(said, HasSubstr("TV_LOG=/run/tv-desk/log/daemon.log\n"));
  EXPECT_THAT(said, HasSubstr("TV_JOURNAL=/run/tv-desk/log/journal.jsonl\n"));
}

TEST_F(Launching, WithoutOneItIsToldTheMachinesPaths) {
  m_options.sandbox = false;
  Script("env; pwd");
  const std::string said = Run();
  EXPECT_THAT(said, HasSubstr("TV_ROOT=" + m_paths.Root() + "\n"));
  EXPECT_THAT(said, HasSubstr("TV_BUS=unix:path=" + m_paths.BusSocket() + "\n"));
  EXPECT_THAT(said, HasSubstr("TV_PREFIX=" + m_paths.Root() + "\n"));
  EXPECT_THAT(said, HasSubstr("TV_FAULTS=" + m_paths.Faults() + "\n"));
  EXPECT_THAT(said, HasSubstr("TV_LOG=" + m_paths.DaemonLog() + "\n"));
  EXPECT_THAT(said, testing::EndsWith("\n/\n"));
}

TEST_F(Launching, WhatTheDaemonWritesAtThePlatformsPathsLandsInTheTv) {
  Script(
      "echo 1 > /tmp/hbb_ready; echo 2 > /opt/share/x; echo 3 > /home/owner/y\n"
      "echo 4 > /opt/usr/apps/com.kalmora.tv.orv-enabler/data/z");
  EXPECT_EQ(Run(), "");
  EXPECT_EQ(support::ReadFile(m_paths.Tmp() + "/hbb_ready"), "1\n");
  EXPECT_EQ(support::ReadFile(m_paths.OptShare() + "/x"), "2\n");
  EXPECT_EQ(support::ReadFile(m_paths.HomeOwner() + "/y"), "3\n");
  EXPECT_EQ(support::ReadFile(m_paths.DaemonData() + "/z"), "4\n");
}

TEST_F(Launching, NothingElseCanBeWritten) {
  support::MakeDirectories(m_paths.Package("org.other"));
  Script(
      "for d in / /usr /etc /opt /opt/usr /home /run /opt/usr/apps /opt/usr/apps/org.other; do\n"
      "  touch $d/x 2> /dev/null && echo wrote $d\n"
      "done; true");
  EXPECT_EQ(Run(), "");
  EXPECT_FALSE(support::Exists(m_paths.Package("org.other") + "/x"));
}

TEST_F(Launching, OfTheTvsFilesOnlyFaultsLogAndJournalCanBeWritten) {
  support::WriteFile(m_paths.Address(), "address\n");
  support::WriteFile(m_paths.Faults(), "faults\n");
  support::WriteFile(m_paths.TvLog(), "of the TV\n");
  Script(
      "cd /run/tv-desk\n"
      "for file in address bus lock x log/x log/desk-tv.log log/daemon-output.log; do\n"
      "  { echo lies >> $file; } 2> /dev/null && echo wrote $file\n"
      "  rm -f $file 2> /dev/null && [ -e $file ] || true\n"
      "done\n"
      "echo 1 >> $TV_LOG; echo 2 >> $TV_JOURNAL; echo 3 >> $TV_FAULTS; cat address");
  EXPECT_EQ(Run(), "address\n");
  EXPECT_EQ(support::ReadFile(m_paths.DaemonLog()), "1\n");
  EXPECT_EQ(support::ReadFile(m_paths.Journal()), "2\n");
  EXPECT_EQ(support::ReadFile(m_paths.TvLog()), "of the TV\n");
}

TEST_F(Launching, ALogThatCannotBeMadeDoesNotKeepTheDaemonFromItsWork) {
  support::MakeDirectories(m_paths.DaemonLog());
  Script("echo works");
  EXPECT_EQ(Run(), "works\n");
}

TEST_F(Launching, APackageCanBeRead) {
  support::WriteFile(m_paths.Package("org.other") + "/res/file", "content\n");
  Script("cat /opt/usr/apps/org.other/res/file");
  EXPECT_EQ(Run(), "content\n");
}

TEST_F(Launching, AFasterClockIsLoadedIntoTheDaemon) {
  m_options.speed = 50;
  Script("echo $LD_PRELOAD $DESK_CLOCK_SPEED");
  EXPECT_EQ(Run(), "/run/tv-tools/libdesk_clock.so 50\n");
}

TEST_F(Launching, TheFasterTimeOfDayGoesOnOverRestarts) {
  m_options.speed = 50;
  Script("echo $DESK_CLOCK_SINCE");
  const DaemonLauncher launcher(m_options, m_paths.BusSocket());
  const std::string since = Run(launcher);
  EXPECT_GT(std::stoll(since), 1700000000000000000);
  EXPECT_EQ(Run(launcher), since);
}

TEST_F(Launching, AfterAFastRunTheClockContinuesFromWhereItWas) {
  m_options.speed = 100000;
  Script("date +%s");
  const long fast = std::stol(Run());
  m_options.speed = 1;
  EXPECT_GE(std::stol(Run()), fast);
}

TEST_F(Launching, ResetClockReturnsToTheMachinesTime) {
  m_options.speed = 100000;
  Script("date +%s; echo $LD_PRELOAD");
  Run();
  m_options.speed = 1;
  m_options.resetClock = true;
  const std::string said = Run();
  EXPECT_LE(std::stol(said), std::time(nullptr));
  EXPECT_THAT(said, testing::EndsWith("\n\n"));
}

TEST_F(Launching, AProgramThatIsMissingIsToldByName) {
  try {
    DaemonLauncher(m_options, m_paths.BusSocket());
    FAIL() << "no error";
  } catch (const DeskError& e) {
    EXPECT_EQ(e.Code(), "NotFound");
    EXPECT_THAT(e.what(), HasSubstr(m_program));
  }
}

TEST_F(Launching, WithoutBubblewrapItIsRefusedUnlessNoSandboxIsWanted) {
  Script("true");
  setenv("PATH", m_dir.Path().c_str(), 1);
  try {
    DaemonLauncher(m_options, m_paths.BusSocket());
    FAIL() << "no error";
  } catch (const DeskError& e) {
    EXPECT_EQ(e.Code(), "NotFound");
    EXPECT_THAT(e.what(), HasSubstr("--no-sandbox"));
  }
  m_options.sandbox = false;
  EXPECT_NO_THROW(DaemonLauncher(m_options, m_paths.BusSocket()));
}

}  // namespace
}  // namespace desk::tv
