// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/SchedulerMessagePort.h"

#include <limits>

#include "unit/controller/allocations.h"
#include "unit/controller/scheduler_fixture.h"

namespace {

using support::HasLog;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

const char PORT[] = "orv_scheduler_command_port";
const char SENDER[] = "a.service";

/// Messages of service apps, handled on the test's thread as on the main loop's. Package "a" has a
/// record that accepts any value; its store is not open, so a write of its row fails unless a
/// test opens one.
class MessagePort : public SchedulerTest {
 protected:
  using Pairs = std::vector<std::pair<std::string, std::string>>;

  void Send(const Pairs& message, const char* app = SENDER, const char* replyPort = "reply") {
    SendEntries(fake::Strings(message), app, replyPort);
  }
  void SendEntries(const std::vector<fake::BundleEntry>& message, const char* app = SENDER,
                   const char* replyPort = "reply") {
    Scheduler();
    fake::Incoming incoming;
    incoming.port = PORT;
    incoming.app = app;
    incoming.replyPort = replyPort;
    incoming.message = message;
    ASSERT_TRUE(fake::SendMessage(incoming));
  }
  /// The result texts of the replies so far.
  static std::vector<std::string> Results() {
    std::vector<std::string> results;
    for (const fake::Outgoing& reply : fake::SentMessages()) {
      EXPECT_THAT(reply.message, SizeIs(1));
      EXPECT_EQ(reply.message.at(0).key, "orv_scheduler_result");
      results.push_back(reply.message.at(0).values.at(0));
    }
    return results;
  }
  /// The values set in the record of "a".
  static std::vector<std::string> Sets() { return RecordingApp::Operations(); }
  void OpenStore() {
    support::MakeDirectories("/opt/usr/apps/com.kalmora.tv.orv-enabler/data");
    AppInfoCache::GetInstance()->OpenDB();
    AppInfoCache::GetInstance()->AddAppInfo("a", &m_feeder.record, true);
  }

  static Pairs SetTime(const std::string& seconds) {
    return {{"orv_scheduler_command", "command_set_expiration_time"}, {"expiration_time", seconds}};
  }

  CustomFeeder m_feeder{"a"};
};

TEST_F(MessagePort, ADueTimeIsStoredInTheRecordAndItsRow) {
  OpenStore();
  Send(SetTime("720"));
  EXPECT_THAT(Sets(),
              ElementsAre("a.set(orv_data,expiration_date_str,2023-11-14T22:25:20Z,false)"));
  AppInfoDB::RowMap rows;
  ASSERT_TRUE(AppInfoCache::GetInstance()->LoadData(rows));
  EXPECT_THAT(rows["a"]["variables"], testing::HasSubstr("2023-11-14T22:25:20Z"));
  EXPECT_THAT(Results(), ElementsAre("result_success"));
  EXPECT_EQ(fake::SentMessages()[0].app, SENDER);
  EXPECT_EQ(fake::SentMessages()[0].port, "reply");
  EXPECT_THAT(fake::LogTexts(),
              support::HasLogsInOrder(support::Texts(
                  {"[Debug] key : orv_scheduler_command, value : command_set_expiration_time",
                   "[Debug] key : expiration_time, value : 720", "[Info] eCommand : 0",
                   "[Debug] timeUTCStr : 2023-11-14T22:25:20Z", "[Debug] sTargetPackageID : a"})));
  EXPECT_EQ(AppInfoCache::GetInstance()->GetSchedulingListSize(), 0) << "the list is not changed";
}

TEST_F(MessagePort, ATimeBelowTheTickIsRefused) {
  OpenStore();
  for (const char* seconds : {"719", "0", "-720", "-2147483648"}) {
    Send(SetTime(seconds));
  }
  EXPECT_THAT(Results(), testing::Each("result_fail_invalid_parameters"));
  EXPECT_THAT(Results(), SizeIs(4));
  EXPECT_THAT(Sets(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), Not(HasLog("[Debug] sTargetPackageID : a")));
}

TEST_F(MessagePort, WhatFollowsTheDigitsIsIgnored) {
  OpenStore();
  Send(SetTime("720s"));
  Send(SetTime("  +900x"));
  EXPECT_THAT(Results(), ElementsAre("result_success", "result_success"));
  EXPECT_THAT(Sets(),
              ElementsAre("a.set(orv_data,expiration_date_str,2023-11-14T22:25:20Z,false)",
                          "a.set(orv_data,expiration_date_str,2023-11-14T22:28:20Z,false)"));
}

TEST_F(MessagePort, TheGreatestTimeIsTaken) {
  OpenStore();
  Send(SetTime("2147483647"));
  EXPECT_THAT(Results(), ElementsAre("result_success"));
  EXPECT_THAT(Sets(),
              ElementsAre("a.set(orv_data,expiration_date_str,2091-12-03T01:27:27Z,false)"));
}

TEST_F(MessagePort, WhatIsNoNumberOrTooGreatIsRefusedWithAnException) {
  OpenStore();
  for (const char* seconds : {"soon", " ", "12345678901", "2147483648", "-2147483649"}) {
    fake::ClearLog();
    Send(SetTime(seconds));
    EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] exception : stoi")) << seconds;
  }
  EXPECT_THAT(Results(), testing::Each("result_fail_invalid_parameters"));
  EXPECT_THAT(Results(), SizeIs(5));
  EXPECT_THAT(Sets(), IsEmpty());
}

TEST_F(MessagePort, ATimeWhoseYearNoTextHoldsIsRefused) {
  OpenStore();
  fake::SetTime(std::numeric_limits<time_t>::max() - 720);
  Send(SetTime("720"));
  EXPECT_THAT(Results(), ElementsAre("result_fail_invalid_parameters"));
  EXPECT_THAT(fake::LogTexts().back(), "[Debug] timeUTCStr : ");
  EXPECT_THAT(Sets(), IsEmpty());
}

TEST_F(MessagePort, AnEmptyOrMissingTimeIsRefusedSilently) {
  Send(SetTime(""));
  Send({{"orv_scheduler_command", "command_set_expiration_time"}});
  EXPECT_THAT(Results(),
              ElementsAre("result_fail_invalid_parameters", "result_fail_invalid_parameters"));
  EXPECT_THAT(
      fake::LogTexts(),
      ElementsAre("[Debug] key : orv_scheduler_command, value : command_set_expiration_time",
                  "[Debug] key : expiration_time, value : ", "[Info] eCommand : 0",
                  "[Debug] key : orv_scheduler_command, value : command_set_expiration_time",
                  "[Info] eCommand : 0"));
}

TEST_F(MessagePort, AnEmptySenderIsRefusedSilently) {
  RecordingApp nameless("");  // the record of the empty package id
  fake::AddRemotePort("", "reply");
  Send(SetTime("720"), "");
  EXPECT_THAT(Results(), ElementsAre("result_fail_invalid_parameters"));
  EXPECT_THAT(
      fake::LogTexts(),
      ElementsAre("[Debug] key : orv_scheduler_command, value : command_set_expiration_time",
                  "[Debug] key : expiration_time, value : 720", "[Info] eCommand : 0"));
  EXPECT_THAT(Sets(), IsEmpty());
}

TEST_F(MessagePort, ASenderWithoutAnIdIsNobodysPackage) {
  Send(SetTime("720"), nullptr);
  EXPECT_THAT(Results(), ElementsAre("result_fail_invalid_parameters"));
  EXPECT_THAT(fake::LogTexts().back(), "[Debug] message_port_send_message() failed : -22");
  EXPECT_THAT(Sets(), IsEmpty());
}

TEST_F(MessagePort, AnUnknownPackageIsRefused) {
  Send(SetTime("720"), "stranger.service");
  EXPECT_THAT(Results(), ElementsAre("result_fail_invalid_parameters"));
  EXPECT_THAT(fake::LogTexts(),
              support::HasLogsInOrder(support::Texts(
                  {"[Debug] sTargetPackageID : stranger", "[Debug] Cannot find target AppInfo.",
                   "[Debug] Cannot find TargetApp[PackageID : stranger]"})));
}

TEST_F(MessagePort, AStoreThatRefusesIsAFailureAndTheRecordKeepsTheTime) {
  Send(SetTime("720"));
  EXPECT_THAT(Results(), ElementsAre("result_fail_invalid_parameters"));
  EXPECT_THAT(fake::LogTexts(6), HasLog("[ERROR] AppInfoDB::InsertNewRecord() return false."));
  EXPECT_THAT(Sets(), SizeIs(1));
}

TEST_F(MessagePort, ThePackageIsTheSenderUpToTheFirstDot) {
  OpenStore();
  Send(SetTime("720"), "a.b.c");
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] sTargetPackageID : a"));
  EXPECT_THAT(Results(), ElementsAre("result_success"));
}

TEST_F(MessagePort, ASenderWithoutADotIsLookedUpByItsWholeId) {
  OpenStore();
  Send(SetTime("720"), "a");
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] sTargetPackageID : a"));
  EXPECT_THAT(Results(), ElementsAre("result_success"));
}

TEST_F(MessagePort, AnUnknownCommandIsRefusedWithoutBeingRun) {
  Send({{"orv_scheduler_command", "command_dance"}});
  Send({{"orv_scheduler_command", ""}});
  EXPECT_THAT(Results(),
              ElementsAre("result_fail_invalid_parameters", "result_fail_invalid_parameters"));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Debug] key : orv_scheduler_command, value : command_dance",
                          "[Debug] key : orv_scheduler_command, value : "));
}

TEST_F(MessagePort, AMessageWithoutACommandIsRefused) {
  Send({{"expiration_time", "720"}});
  Send({});
  EXPECT_THAT(Results(),
              ElementsAre("result_fail_invalid_parameters", "result_fail_invalid_parameters"));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Debug] key : expiration_time, value : 720"));
}

TEST_F(MessagePort, ACommandThatIsNoStringCountsAsAbsent) {
  fake::BundleEntry bytes;
  bytes.key = "orv_scheduler_command";
  bytes.type = BUNDLE_TYPE_BYTE;
  bytes.values = {"command_complete_operation"};
  SendEntries({bytes});
  EXPECT_THAT(Results(), ElementsAre("result_fail_invalid_parameters"));
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
  EXPECT_THAT(Sent(), IsEmpty());
}

TEST_F(MessagePort, OtherKeysAreCollectedAndIgnored) {
  OpenStore();
  Send({{"colour", "red"},
        {"expiration_time", "720"},
        {"orv_scheduler_command", "command_set_expiration_time"}});
  EXPECT_EQ(fake::LogTexts().at(0), "[Debug] key : colour, value : red");
  EXPECT_THAT(Results(), ElementsAre("result_success"));
}

TEST_F(MessagePort, OnlyTheNamedCommandIsRun) {
  OpenStore();
  Send({{"orv_scheduler_command", "command_complete_operation"}, {"expiration_time", "720"}});
  EXPECT_THAT(Sets(), IsEmpty());
  EXPECT_THAT(Sent(), ElementsAre("1006"));
  Drain();
}

TEST_F(MessagePort, AFinishedAppGetsNoReplyAndMovesTheScheduleOn) {
  Send({{"orv_scheduler_command", "command_complete_operation"}}, "anybody.at.all");
  EXPECT_THAT(fake::SentMessages(), IsEmpty());
  EXPECT_THAT(Sent(), ElementsAre("1006"));
  EXPECT_EQ(fake::OpenHandles("bundle"), 1u) << "the unsent reply is not freed";
  Drain();
  EXPECT_THAT(fake::LogTexts(), support::HasLogsInOrder(support::Texts(
                                    {"[Info] eCommand : 1", "[Debug] [EVENT_APP_TERMINATED]"})));
}

TEST_F(MessagePort, AFullQueueDoesNotChangeTheAnswerToAFinishedApp) {
  Scheduler();
  fake::Fail("FCTask::Send", 0);
  Send({{"orv_scheduler_command", "command_complete_operation"}});
  EXPECT_THAT(fake::SentMessages(), IsEmpty());
  EXPECT_THAT(
      fake::LogTexts(6),
      ElementsAre("[ERROR] Send() return False!!, Name[ORVScheduler] Type[1006] P0[0] P1[0] "
                  "Size[0]"));
}

TEST_F(MessagePort, RepliesAreFreedOnEveryOtherPath) {
  OpenStore();
  Send(SetTime("720"));
  Send(SetTime("1"));
  Send({});
  EXPECT_EQ(fake::OpenHandles("bundle"), 0u);
}

TEST_F(MessagePort, AReplyWithoutAPortIsLoggedAndTheTimeIsStored) {
  OpenStore();
  Send(SetTime("720"), SENDER, nullptr);
  EXPECT_THAT(fake::LogTexts().back(), "[Debug] message_port_send_message() failed : -22");
  EXPECT_THAT(Sets(), SizeIs(1));
}

TEST_F(MessagePort, AnUndeliveredReplyIsALogLine) {
  OpenStore();
  Scheduler();
  fake::Fail("message_port_send_message", -18612223);
  Send(SetTime("720"));
  EXPECT_THAT(fake::LogTexts().back(), "[Debug] message_port_send_message() failed : -18612223");
}

TEST_F(MessagePort, AReplyIsSentThenFreedAndThenItsFailureLogged) {
  Scheduler();
  for (const char* command : {"command_set_expiration_time", "command_dance"}) {
    Forget();
    fake::Fail("message_port_send_message", -5);
    Send({{"orv_scheduler_command", command}});
    EXPECT_EQ(fake::LogTexts().back(), "[Debug] message_port_send_message() failed : -5");
    ASSERT_EQ(fake::CallCount("message_port_send_message"), 1u);
    ASSERT_EQ(fake::CallCount("bundle_free"), 1u);
    const unsigned long freed = fake::Calls("bundle_free")[0].seq;
    EXPECT_LT(fake::Calls("message_port_send_message")[0].seq, freed);
    EXPECT_LT(freed, fake::Logs().back().seq);
  }
}

TEST_F(MessagePort, ACommandNumberWithoutAHandlerIsAnUnknownError) {
  Scheduler();
  std::map<std::string, std::string> params;
  EXPECT_EQ(RunMessagePortCommand(2, "a", params), "result_fail_unknown_errors");
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] eCommand : 2", "[ERROR] Invalid eCommand : 2"));
}

TEST_F(MessagePort, AnExceptionOfTheRecordIsTheSendersFailure) {
  m_feeder.record.Throw("a cannot be set");
  Send(SetTime("720"));
  EXPECT_THAT(Results(), ElementsAre("result_fail_invalid_parameters"));
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] exception : a cannot be set"));
}

TEST_F(MessagePort, AnExceptionEndsInTheHandler) {
  Scheduler();
  bundle* message = bundle_create();
  allocations::FailNext();
  EXPECT_NO_THROW(MessagePortCommandCallback(1, SENDER, "reply", false, message, nullptr));
  EXPECT_FALSE(allocations::CancelFailure());
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] exception : std::bad_alloc"));
  bundle_free(message);
}

}  // namespace
