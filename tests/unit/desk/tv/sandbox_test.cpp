// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/sandbox.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>

#include "support/files.h"

namespace desk::tv {
namespace {

using testing::Contains;
using testing::Not;

SandboxPlan Plan() {
  SandboxPlan plan;
  plan.paths = DeskPaths("/var/tmp/tv");
  plan.program = "/home/user/build/bin/orv-enabler";
  plan.tools = "/work/bin";
  plan.socket = plan.paths.BusSocket();
  plan.environment = {"TV_ROOT=/run/tv-desk", "TV_PREFIX=", "X=a=b"};
  plan.root = {{"bin", "usr/bin", true}, {"dev", "", true},  {"etc", "", true},
               {"file", "", false},      {"home", "", true}, {"opt", "", true},
               {"proc", "", true},       {"run", "", true},  {"tmp", "", true}};
  plan.opt = {{"share", "", true}, {"tool", "", true}, {"usr", "", true}};
  plan.home = {{"owner", "", true}, {"user", "", true}};
  return plan;
}

// The arguments that follow these, wherever these occur in a row.
bool Has(const std::vector<std::string>& arguments, const std::vector<std::string>& row) {
  return std::search(arguments.begin(), arguments.end(), row.begin(), row.end()) != arguments.end();
}

long At(const std::vector<std::string>& arguments, const std::vector<std::string>& row) {
  return std::search(arguments.begin(), arguments.end(), row.begin(), row.end()) -
         arguments.begin();
}

TEST(Sandbox, TheMachineIsReadOnlyAtItsOwnPaths) {
  const auto arguments = SandboxArguments(Plan());
  EXPECT_TRUE(Has(arguments, {"--ro-bind-try", "/etc", "/etc"}));
  EXPECT_TRUE(Has(arguments, {"--symlink", "usr/bin", "/bin"}));
  EXPECT_TRUE(Has(arguments, {"--ro-bind-try", "/opt/tool", "/opt/tool"}));
  EXPECT_TRUE(Has(arguments, {"--ro-bind-try", "/home/user", "/home/user"}));
  EXPECT_FALSE(Has(arguments, {"/file"}));
}

TEST(Sandbox, WhatTheTvHasItsOwnOfIsNotTheMachines) {
  const auto arguments = SandboxArguments(Plan());
  for (const char* path :
       {"/tmp", "/run", "/home", "/opt", "/opt/share", "/opt/usr", "/home/owner"}) {
    EXPECT_FALSE(Has(arguments, {"--ro-bind-try", path, path})) << path;
  }
  EXPECT_TRUE(Has(arguments, {"--bind", "/var/tmp/tv/tmp", "/tmp"}));
  EXPECT_TRUE(Has(arguments, {"--bind", "/var/tmp/tv/opt/share", "/opt/share"}));
  EXPECT_TRUE(Has(arguments, {"--bind", "/var/tmp/tv/home/owner", "/home/owner"}));
}

TEST(Sandbox, OfThePackagesOnlyTheDaemonsCanBeWritten) {
  const auto arguments = SandboxArguments(Plan());
  const std::vector<std::string> all = {"--ro-bind", "/var/tmp/tv/opt/usr/apps", "/opt/usr/apps"};
  const std::vector<std::string> own = {"--bind",
                                        "/var/tmp/tv/opt/usr/apps/com.kalmora.tv.orv-enabler",
                                        "/opt/usr/apps/com.kalmora.tv.orv-enabler"};
  EXPECT_TRUE(Has(arguments, all));
  EXPECT_TRUE(Has(arguments, own));
  EXPECT_LT(At(arguments, all), At(arguments, own));
}

TEST(Sandbox, TheDaemonRunsFromAPlaceThatNothingHides) {
  const auto arguments = SandboxArguments(Plan());
  EXPECT_TRUE(Has(arguments, {"--ro-bind", "/home/user/build/bin", "/run/tv-programs"}));
  EXPECT_TRUE(Has(arguments, {"--ro-bind", "/work/bin", "/run/tv-tools"}));
  EXPECT_TRUE(Has(arguments, {"--", "/run/tv-programs/orv-enabler"}));
  EXPECT_EQ(arguments.back(), "/run/tv-programs/orv-enabler");
}

TEST(Sandbox, LogsLieOverTheRunDirectoryAndBothCanOnlyBeRead) {
  const auto arguments = SandboxArguments(Plan());
  const std::vector<std::string> run = {"--ro-bind", "/var/tmp/tv/run", "/run/tv-desk"};
  const std::vector<std::string> log = {"--ro-bind", "/var/tmp/tv/log", "/run/tv-desk/log"};
  ASSERT_TRUE(Has(arguments, run));
  ASSERT_TRUE(Has(arguments, log));
  EXPECT_LT(At(arguments, run), At(arguments, log));
}

TEST(Sandbox, TheFaultTableTheLogAndTheJournalCanBeWritten) {
  const auto arguments = SandboxArguments(Plan());
  const long log = At(arguments, {"--ro-bind", "/var/tmp/tv/log", "/run/tv-desk/log"});
  for (const auto& [path, inside] : std::vector<std::pair<std::string, std::string>>{
           {"/var/tmp/tv/run/faults", "/run/tv-desk/faults"},
           {"/var/tmp/tv/log/daemon.log", "/run/tv-desk/log/daemon.log"},
           {"/var/tmp/tv/log/journal.jsonl", "/run/tv-desk/log/journal.jsonl"}}) {
    ASSERT_TRUE(Has(arguments, {"--bind-try", path, inside})) << path;
    EXPECT_LT(log, At(arguments, {"--bind-try", path, inside})) << path;
  }
}

TEST(Sandbox, VariablesAreSetInsideEmptyOnesToo) {
  const auto arguments = SandboxArguments(Plan());
  EXPECT_TRUE(Has(arguments, {"--setenv", "TV_ROOT", "/run/tv-desk"}));
  EXPECT_TRUE(Has(arguments, {"--setenv", "TV_PREFIX", ""}));
  EXPECT_TRUE(Has(arguments, {"--setenv", "X", "a=b"}));
}

TEST(Sandbox, TheBusIsInTheRunDirectory) {
  EXPECT_EQ(SandboxSocket(Plan()), "/run/tv-desk/bus");
  EXPECT_THAT(SandboxArguments(Plan()), Not(Contains("/run/tv-bus")));
}

TEST(Sandbox, ABusThatIsElsewhereIsBroughtIn) {
  SandboxPlan plan = Plan();
  plan.socket = "/tmp/tv-desk-bus-1/bus";
  EXPECT_EQ(SandboxSocket(plan), "/run/tv-bus");
  EXPECT_TRUE(Has(SandboxArguments(plan), {"--bind", "/tmp/tv-desk-bus-1/bus", "/run/tv-bus"}));
}

TEST(Sandbox, TheRootCannotBeWrittenOnceAllPlacesAreMade) {
  const auto arguments = SandboxArguments(Plan());
  ASSERT_TRUE(Has(arguments, {"--remount-ro", "/"}));
  EXPECT_GT(At(arguments, {"--remount-ro", "/"}),
            At(arguments, {"--ro-bind", "/work/bin", "/run/tv-tools"}));
}

TEST(Sandbox, TheDaemonDiesWithTheTvAndHasNoPrivileges) {
  const auto arguments = SandboxArguments(Plan());
  EXPECT_EQ(arguments.front(), "bwrap");
  EXPECT_THAT(arguments, Contains("--die-with-parent"));
  EXPECT_TRUE(Has(arguments, {"--cap-drop", "ALL"}));
}

TEST(Sandbox, ThePidIsToldOnlyWhereItIsAskedFor) {
  SandboxPlan plan = Plan();
  EXPECT_THAT(SandboxArguments(plan), Not(Contains("--info-fd")));
  plan.infoFd = 9;
  EXPECT_TRUE(Has(SandboxArguments(plan), {"--info-fd", "9"}));
}

TEST(HostEntries, AreSortedAndTellLinksFromDirectories) {
  const support::TempDir dir;
  support::MakeDirectories(dir / "z");
  support::WriteFile(dir / "file", "");
  ASSERT_EQ(symlink("z", (dir / "a").c_str()), 0);
  const auto entries = ListHost(dir.Path());
  ASSERT_EQ(entries.size(), 3U);
  EXPECT_EQ(entries[0].name, "a");
  EXPECT_EQ(entries[0].link, "z");
  EXPECT_EQ(entries[1].name, "file");
  EXPECT_FALSE(entries[1].directory);
  EXPECT_EQ(entries[2].name, "z");
  EXPECT_TRUE(entries[2].directory);
  EXPECT_EQ(entries[2].link, "");
}

TEST(HostEntries, OfADirectoryThatIsNotThereAreNone) {
  EXPECT_TRUE(ListHost("/no/such/directory").empty());
}

}  // namespace
}  // namespace desk::tv
