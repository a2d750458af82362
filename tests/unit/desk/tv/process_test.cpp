// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "desk/common/desk_error.h"
#include "memory_router.h"
#include "support/files.h"

namespace desk::tv {
namespace {

int RunToEnd(const ProcessSpec& spec) {
  int status = 0;
  EXPECT_GT(waitpid(StartProcess(spec), &status, 0), 0);
  return status;
}

ProcessSpec Shell(const std::string& script, const std::string& output) {
  ProcessSpec spec;
  spec.arguments = {"sh", "-c", script};
  spec.output = output;
  return spec;
}

TEST(Process, ItsOutputAndErrorsAreAppended) {
  const support::TempDir dir;
  RunToEnd(Shell("echo one; echo two >&2", dir / "out"));
  RunToEnd(Shell("echo three", dir / "out"));
  EXPECT_EQ(support::ReadFile(dir / "out"), "one\ntwo\nthree\n");
}

TEST(Process, ItHasTheChangedEnvironmentOverOurs) {
  const support::TempDir dir;
  setenv("MINE", "old", 1);
  setenv("KEPT", "kept", 1);
  ProcessSpec spec = Shell("echo $MINE $KEPT $EQUALS", dir / "out");
  spec.environment = {"MINE=new", "EQUALS=a=b"};
  RunToEnd(spec);
  EXPECT_EQ(support::ReadFile(dir / "out"), "new kept a=b\n");
}

TEST(Process, TheServiceManagersWordsAreNotPassedOn) {
  const support::TempDir dir;
  setenv("NOTIFY_SOCKET", "/tmp/notify", 1);
  setenv("WATCHDOG_USEC", "1000000", 1);
  setenv("WATCHDOG_PID", "1", 1);
  RunToEnd(Shell("echo [$NOTIFY_SOCKET$WATCHDOG_USEC$WATCHDOG_PID]", dir / "out"));
  EXPECT_EQ(support::ReadFile(dir / "out"), "[]\n");
}

TEST(Process, ItStartsInTheGivenDirectory) {
  const support::TempDir dir;
  ProcessSpec spec = Shell("pwd", dir / "out");
  spec.directory = "/usr";
  RunToEnd(spec);
  EXPECT_EQ(support::ReadFile(dir / "out"), "/usr\n");
}

TEST(Process, ItLeadsASessionOfItsOwn) {
  const support::TempDir dir;
  RunToEnd(Shell("set -- $(cat /proc/$$/stat); echo $(($1 == $6)) $(($1 == $5))", dir / "out"));
  EXPECT_EQ(support::ReadFile(dir / "out"), "1 1\n");
}

TEST(Process, ItGetsDefaultSignalsAlsoWhenOursAreIgnored) {
  const support::TempDir dir;
  signal(SIGTERM, SIG_IGN);
  EXPECT_EQ(WTERMSIG(RunToEnd(Shell("kill -TERM $$; sleep 5", dir / "out"))), SIGTERM);
}

TEST(Process, OnlyTheGivenDescriptorsStayOpen) {
  const support::TempDir dir;
  const int kept = open("/dev/null", O_RDONLY | O_CLOEXEC);
  const int closed = open("/dev/null", O_RDONLY | O_CLOEXEC);
  ProcessSpec spec = Shell("for fd in " + std::to_string(kept) + " " + std::to_string(closed) +
                               "; do [ -e /proc/$$/fd/$fd ] && echo $fd; done",
                           dir / "out");
  spec.keep = {kept};
  RunToEnd(spec);
  EXPECT_EQ(support::ReadFile(dir / "out"), std::to_string(kept) + "\n");
}

TEST(Process, AProgramThatIsNotThereIsNotFound) {
  ProcessSpec spec;
  for (const char* program : {"/no/such/program", "no-such-program"}) {
    spec.arguments = {program};
    try {
      StartProcess(spec);
      FAIL() << "no error for " << program;
    } catch (const DeskError& e) {
      EXPECT_EQ(e.Code(), "NotFound");
      EXPECT_NE(std::string(e.what()).find(program), std::string::npos);
    }
  }
}

TEST(Process, AFileThatIsNoProgramFails) {
  const support::TempDir dir;
  support::WriteFile(dir / "file", "x");
  ProcessSpec spec;
  spec.arguments = {dir / "file"};
  try {
    StartProcess(spec);
    FAIL() << "no error";
  } catch (const DeskError& e) {
    EXPECT_EQ(e.Code(), "Failed");
  }
}

TEST(Process, ItsEndIsTold) {
  int told = -1;
  WatchProcess(StartProcess(Shell("exit 3", "")), [&told](int status) { told = status; });
  RunUntil("the end of the process", [&] { return told != -1; });
  EXPECT_EQ(DescribeStatus(told), "exit status 3");
}

TEST(Process, ADeathBySignalIsToldByName) {
  EXPECT_EQ(DescribeStatus(RunToEnd(Shell("kill -KILL $$", ""))), "signal 9 (Killed)");
}

TEST(Process, ADirectoryThatIsNotThereFails) {
  ProcessSpec spec = Shell("true", "");
  spec.directory = "/no/such/directory";
  EXPECT_THROW(StartProcess(spec), DeskError);
}

TEST(Programs, AreFoundOnThePath) {
  EXPECT_NE(FindProgram("sh"), "");
  EXPECT_EQ(FindProgram("no-such-program"), "");
}

}  // namespace
}  // namespace desk::tv
