// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/callers.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace desk::tv {
namespace {

using Kind = Caller::Kind;

// 1 - 50 desk-tv - 100 sandbox - 101 daemon; 50 - 200 app - 201 - 202; 300 left its parents but not
// the app's session; 400 is a shell of its own.
std::optional<ProcessParents> Tree(pid_t pid) {
  static const std::map<pid_t, ProcessParents> tree = {
      {1, {0, 1}},       {50, {1, 50}},     {100, {50, 100}}, {101, {100, 100}}, {200, {50, 200}},
      {201, {200, 200}}, {202, {201, 202}}, {300, {1, 200}},  {400, {1, 400}}};
  const auto found = tree.find(pid);
  return found == tree.end() ? std::nullopt : std::make_optional(found->second);
}

class Callers : public testing::Test {
 protected:
  Callers() {
    m_table.AddDaemon(100);
    m_table.AddApp(200, "org.app");
  }

  CallerTable m_table{Tree};
};

TEST_F(Callers, TheProcessInTheSandboxIsTheDaemon) {
  const Caller caller = m_table.Identify(101);
  EXPECT_EQ(caller.kind, Kind::Daemon);
  EXPECT_EQ(caller.appId, "com.kalmora.tv.orv-enabler");
  EXPECT_EQ(caller.pid, 101);
}

TEST_F(Callers, AStartedProcessIsItsApp) {
  EXPECT_EQ(m_table.Identify(200).kind, Kind::App);
  EXPECT_EQ(m_table.Identify(200).appId, "org.app");
}

TEST_F(Callers, ADescendantIsItsAncestorsApp) {
  const Caller caller = m_table.Identify(202);
  EXPECT_EQ(caller.appId, "org.app");
  EXPECT_EQ(caller.pid, 202);
}

TEST_F(Callers, AnOrphanIsTheAppOfItsSession) {
  EXPECT_EQ(m_table.Identify(300).appId, "org.app");
}

TEST_F(Callers, AnyOtherProcessIsAnOperator) {
  EXPECT_EQ(m_table.Identify(400).kind, Kind::Operator);
  EXPECT_EQ(m_table.Identify(400).appId, "");
}

TEST_F(Callers, TheTelevisionItselfIsAnOperator) {
  EXPECT_EQ(m_table.Identify(50).kind, Kind::Operator);
}

TEST_F(Callers, AProcessThatIsGoneIsAnOperator) {
  EXPECT_EQ(m_table.Identify(999).kind, Kind::Operator);
}

TEST_F(Callers, AnAppThatWasWaitedForIsForgotten) {
  m_table.Remove(200);
  EXPECT_EQ(m_table.Identify(202).kind, Kind::Operator);
}

TEST(CallerWalk, ATableThatRunsInACircleEnds) {
  const CallerTable table([](pid_t pid) {
    return std::make_optional(ProcessParents{pid == 5 ? 6 : 5, 5});
  });
  EXPECT_EQ(table.Identify(5).kind, Kind::Operator);
}

TEST(ProcessParentsOf, ThisProcessAreWhatTheSystemSays) {
  const std::optional<ProcessParents> parents = ReadProcessParents(getpid());
  ASSERT_TRUE(parents);
  EXPECT_EQ(parents->parent, getppid());
  EXPECT_EQ(parents->session, getsid(0));
}

TEST(ProcessParentsOf, NoProcessAreNone) {
  EXPECT_FALSE(ReadProcessParents(0x7ffffff0));
}

}  // namespace
}  // namespace desk::tv
