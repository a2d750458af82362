// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// The output and arguments of `tv log`, `tv journal` and `tv port send`.
#include <bundle.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "desk/cli/bundle_args.h"
#include "desk/cli/failure.h"
#include "desk/cli/journal_view.h"
#include "desk/cli/log_view.h"
#include "desk/cli/tail.h"
#include "desk/cli/time_text.h"
#include "desk/common/base64.h"
#include "desk/common/json.h"

namespace desk::cli {
namespace {

const std::string INFO_LINE =
    "11-21 00:00:01.250   123   124 I/orv-enabler: src/a.cpp: f(1) > [Info] x";
const std::string ERROR_LINE =
    "11-21 00:00:01.250   123   124 E/orv-enabler: src/a.cpp: f(1) > [ERROR] y";

TEST(CliLogView, ALineFallsIntoItsParts) {
  const auto record = ParseLogLine(INFO_LINE);
  ASSERT_TRUE(record.has_value());
  EXPECT_EQ(record->time, "11-21 00:00:01.250");
  EXPECT_EQ(record->pid, 123);
  EXPECT_EQ(record->tid, 124);
  EXPECT_EQ(record->level, 'I');
  EXPECT_EQ(record->tag, "orv-enabler");
  EXPECT_EQ(record->text, "src/a.cpp: f(1) > [Info] x");
}

TEST(CliLogView, AnotherFormIsNoRecord) {
  EXPECT_FALSE(ParseLogLine("==1== ERROR").has_value());
}

TEST(CliLogView, ALevelTakesItselfAndTheGraverOnes) {
  const LogFilter filter{'W', ""};
  EXPECT_FALSE(filter.Wants(INFO_LINE));
  EXPECT_TRUE(filter.Wants(ERROR_LINE));
}

TEST(CliLogView, ALineOfAnotherFormIsGrave) {
  EXPECT_TRUE((LogFilter{'F', ""}.Wants("abort()")));
}

TEST(CliLogView, TheTextHasToStandInTheLine) {
  const LogFilter filter{'V', "[Info]"};
  EXPECT_TRUE(filter.Wants(INFO_LINE));
  EXPECT_FALSE(filter.Wants(ERROR_LINE));
}

TEST(CliLogView, ALevelIsALetterOrAName) {
  EXPECT_EQ(ParseLevel("e"), 'E');
  EXPECT_EQ(ParseLevel("Info"), 'I');
  EXPECT_EQ(ParseLevel("WARN"), 'W');
  EXPECT_THROW(ParseLevel("loud"), Failure);
  EXPECT_THROW(ParseLevel(""), Failure);
}

TEST(CliJournalView, AnEntryIsOneReadableLine) {
  const Json::Value entry = ParseJson(
      R"({"seq":12,"time":"2026-11-21T00:34:58.850Z","thread":"main","call":"vconf_get_int",)"
      R"("args":["db/x"],"result":0})");
  EXPECT_EQ(JournalText(entry), "11-21 00:34:58.850   12 main   vconf_get_int(\"db/x\") = 0");
}

TEST(CliJournalView, SeveralArgumentsKeepTheirOrderAndKinds) {
  const Json::Value entry = ParseJson(
      R"({"seq":12345,"thread":"ORVInstaller","call":"f","args":["a",1,null,true],"result":"r"})");
  EXPECT_EQ(JournalText(entry), "- 12345 ORVInstaller f(\"a\", 1, null, true) = \"r\"");
}

TEST(CliJournalView, EntriesComeInTheOrderOfTheirNumbers) {
  const auto entries = SortedEntries({R"({"seq":3})", R"({"seq":1})", R"({"seq":2})"});
  ASSERT_EQ(entries.size(), 3U);
  EXPECT_EQ(entries[0]["seq"].asInt(), 1);
  EXPECT_EQ(entries[2]["seq"].asInt(), 3);
}

TEST(CliJournalView, ALineThatWasCutOffIsLeftOut) {
  EXPECT_EQ(SortedEntries({R"({"seq":1})", R"({"seq":2,"ca)", "[]", ""}).size(), 1U);
}

const Json::Value TIMED_ENTRY = ParseJson(
    R"({"seq":1,"time":"2026-11-21T00:34:58.850Z","thread":"main","call":"vconf_get_int"})");

TEST(CliJournalFilter, AnEmptyFilterWantsAll) {
  EXPECT_TRUE(JournalFilter().Wants(TIMED_ENTRY));
  EXPECT_TRUE(JournalFilter().Wants(ParseJson(R"({"seq":1})")));
}

TEST(CliJournalFilter, ACallIsItsWholeNameOrAPattern) {
  EXPECT_TRUE((JournalFilter{"vconf_get_int", "", {}}.Wants(TIMED_ENTRY)));
  EXPECT_TRUE((JournalFilter{"vconf_*", "", {}}.Wants(TIMED_ENTRY)));
  EXPECT_FALSE((JournalFilter{"vconf_get", "", {}}.Wants(TIMED_ENTRY)));
}

TEST(CliJournalFilter, AThreadIsItsWholeNameOrAPattern) {
  EXPECT_TRUE((JournalFilter{"", "main", {}}.Wants(TIMED_ENTRY)));
  EXPECT_FALSE((JournalFilter{"", "ORV*", {}}.Wants(TIMED_ENTRY)));
}

TEST(CliJournalFilter, ATimeTakesItselfAndLaterOnes) {
  const Timestamp time = *ParseTimestamp("2026-11-21T00:34:58.850Z");
  EXPECT_TRUE((JournalFilter{"", "", time}.Wants(TIMED_ENTRY)));
  EXPECT_FALSE((JournalFilter{"", "", time + Timestamp(1)}.Wants(TIMED_ENTRY)));
  EXPECT_FALSE((JournalFilter{"", "", time}.Wants(ParseJson(R"({"seq":1})"))));
}

TEST(CliTimeText, ADurationHasTwoUnitsAtMost) {
  using std::chrono::seconds;
  EXPECT_EQ(DurationText(seconds(-5)), "0 seconds");
  EXPECT_EQ(DurationText(seconds(1)), "1 second");
  EXPECT_EQ(DurationText(seconds(125)), "2 minutes 5 seconds");
  EXPECT_EQ(DurationText(seconds(120)), "2 minutes");
  EXPECT_EQ(DurationText(seconds(42 * 60 + 30)), "42 minutes");
  EXPECT_EQ(DurationText(seconds(3900)), "1 hour 5 minutes");
  EXPECT_EQ(DurationText(seconds(90000)), "1 day 1 hour");
}

TEST(CliTimeText, SinceIsATimeOrHowLongAgo) {
  const Timestamp now = std::chrono::seconds(1000000);
  EXPECT_EQ(ParseSince("90", now), now - std::chrono::seconds(90));
  EXPECT_EQ(ParseSince("90s", now), now - std::chrono::seconds(90));
  EXPECT_EQ(ParseSince("10m", now), now - std::chrono::minutes(10));
  EXPECT_EQ(ParseSince("2h", now), now - std::chrono::hours(2));
  EXPECT_EQ(ParseSince("1d", now), now - std::chrono::hours(24));
  EXPECT_EQ(ParseSince("1970-01-01T00:00:07Z", now), std::chrono::seconds(7));
}

TEST(CliTimeText, AnyOtherSinceIsAUsageError) {
  for (const char* text : {"", "m", "-5", "yesterday", "5x", "99999999999999999d"}) {
    EXPECT_THROW(ParseSince(text, Timestamp(0)), Failure) << text;
  }
}

TEST(CliBundle, AWordIsAText) {
  const Json::Value entry = ParseBundleWord("orv_scheduler_command=a=b");
  EXPECT_EQ(entry["key"], "orv_scheduler_command");
  EXPECT_EQ(entry["type"], BUNDLE_TYPE_STR);
  EXPECT_EQ(entry["value"], "a=b");
}

TEST(CliBundle, AnIntIsFourBytesWithTheLowestFirst) {
  const Json::Value entry = ParseBundleWord("n:int=258");
  EXPECT_EQ(entry["key"], "n");
  EXPECT_EQ(entry["type"], BUNDLE_TYPE_BYTE);
  EXPECT_EQ(FromBase64(entry["bytes"].asString()), std::string("\x02\x01\x00\x00", 4));
}

TEST(CliBundle, BytesAreGivenInHex) {
  const Json::Value entry = ParseBundleWord("b:bytes=00fF");
  EXPECT_EQ(entry["type"], BUNDLE_TYPE_BYTE_ARRAY);
  EXPECT_EQ(FromBase64(entry["bytes"].asString()), std::string("\x00\xff", 2));
}

TEST(CliBundle, AnArrayIsCutAtCommas) {
  const Json::Value entry = ParseBundleWord("l:array=a,,b");
  EXPECT_EQ(entry["type"], BUNDLE_TYPE_STR_ARRAY);
  EXPECT_EQ(FormatJson(entry["value"]), R"(["a","","b"])");
}

TEST(CliBundle, AColonThatNamesNoTypeBelongsToTheKey) {
  EXPECT_EQ(ParseBundleWord("http://a/b=c")["key"], "http://a/b");
  EXPECT_EQ(ParseBundleWord("a:b=c")["key"], "a:b");
}

TEST(CliBundle, AnEmptyTextIsAText) {
  EXPECT_EQ(ParseBundleWord("a=")["value"], "");
}

TEST(CliBundle, WhatIsNoPairIsAnError) {
  for (const char* word : {"a", "=b", "a:int=x", "a:int=5000000000", "a:bytes=0", "a:bytes=zz"}) {
    EXPECT_THROW(ParseBundleWord(word), Failure) << word;
  }
}

TEST(CliBundle, AReceivedEntryIsShownAsAPair) {
  EXPECT_EQ(BundleEntryText(ParseBundleWord("a=b")), "a=b");
  EXPECT_EQ(BundleEntryText(ParseBundleWord("a:bytes=00ff")), "a=00ff");
  EXPECT_EQ(BundleEntryText(ParseBundleWord("a:array=x,y")), "a=x,y");
}

TEST(CliBundle, PairsOfALaunchAreAnObject) {
  EXPECT_EQ(FormatJson(ParsePairs({"a=1", "b=x=y"})), R"({"a":"1","b":"x=y"})");
  EXPECT_THROW(ParsePairs({"a"}), Failure);
}

class CliTail : public testing::Test {
 protected:
  CliTail() {
    std::string name = (std::filesystem::temp_directory_path() / "cli-tail-XXXXXX").string();
    EXPECT_NE(mkdtemp(name.data()), nullptr);
    m_directory = name;
    m_path = name + "/file";
  }
  ~CliTail() override { std::filesystem::remove_all(m_directory); }
  void Append(const std::string& text) { std::ofstream(m_path, std::ios::app) << text; }

  std::string m_directory;
  std::string m_path;
};

TEST_F(CliTail, AFileThatIsNotThereIsEmpty) {
  Tail tail(m_path);
  EXPECT_FALSE(tail.Exists());
  EXPECT_TRUE(tail.Read().empty());
}

TEST_F(CliTail, OnlyNewLinesAreRead) {
  Append("a\nb\n");
  Tail tail(m_path);
  EXPECT_EQ(tail.Read(), (std::vector<std::string>{"a", "b"}));
  Append("c\n");
  EXPECT_EQ(tail.Read(), std::vector<std::string>{"c"});
}

TEST_F(CliTail, ALineIsReadWhenItIsWhole) {
  Append("ab");
  Tail tail(m_path);
  EXPECT_TRUE(tail.Read().empty());
  Append("c\n");
  EXPECT_EQ(tail.Read(), std::vector<std::string>{"abc"});
}

TEST_F(CliTail, TheLastLinesAreWholeOnes) {
  Append("first\nsecond\nthird\nhalf");
  EXPECT_EQ(LastLines(m_path, 1000), (std::vector<std::string>{"first", "second", "third"}));
  EXPECT_EQ(LastLines(m_path, 17), (std::vector<std::string>{"second", "third"}));
  EXPECT_EQ(LastLines(m_path, 16), std::vector<std::string>{"third"});
  EXPECT_TRUE(LastLines(m_path + ".none", 10).empty());
}

TEST_F(CliTail, AFileThatWasReplacedIsReadFromItsStart) {
  Append("old line\n");
  Tail tail(m_path);
  tail.Read();
  std::ofstream(m_path + ".new") << "new\n";
  std::filesystem::rename(m_path + ".new", m_path);
  EXPECT_EQ(tail.Read(), std::vector<std::string>{"new"});
}

TEST_F(CliTail, AFileThatWasCutShortIsReadFromItsStart) {
  Append("old line\n");
  Tail tail(m_path);
  tail.Read();
  std::ofstream(m_path, std::ios::trunc) << "new\n";
  EXPECT_EQ(tail.Read(), std::vector<std::string>{"new"});
}

}  // namespace
}  // namespace desk::cli
