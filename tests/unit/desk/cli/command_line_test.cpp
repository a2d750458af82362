// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/command_line.h"

#include <gtest/gtest.h>

#include "desk/cli/commands.h"
#include "desk/cli/failure.h"
#include "desk/common/nearest.h"

namespace desk::cli {
namespace {

Request Read(const std::vector<std::string>& words) {
  return ReadCommandLine(TvCommands(), words);
}

/// The usage error for these arguments; empty if there is none.
std::string UsageError(const std::vector<std::string>& words) {
  try {
    Read(words);
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Code(), Exit::Usage);
    return failure.what();
  }
  return "";
}

TEST(CliCommandLine, AVerbOfOneWordIsFound) {
  const Request request = Read({"status"});
  ASSERT_NE(request.command, nullptr);
  EXPECT_EQ(request.command->path, "status");
}

TEST(CliCommandLine, AVerbOfTwoWordsIsFoundWithItsArgument) {
  const Request request = Read({"pkg", "install", "a.wgt"});
  ASSERT_NE(request.command, nullptr);
  EXPECT_EQ(request.command->path, "pkg install");
  EXPECT_EQ(request.words.Text("FILE"), "a.wgt");
}

TEST(CliCommandLine, TheRootMayStandBeforeTheVerb) {
  EXPECT_EQ(Read({"--root", "/d", "status"}).root, "/d");
  EXPECT_EQ(Read({"--root=/d", "status"}).root, "/d");
}

TEST(CliCommandLine, TheRootMayStandBehindTheVerb) {
  EXPECT_EQ(Read({"status", "--root", "/d"}).root, "/d");
  EXPECT_EQ(Read({"key", "set", "a", "--root=/d", "b"}).root, "/d");
}

TEST(CliCommandLine, TheLaterRootWins) {
  EXPECT_EQ(Read({"--root", "/a", "status", "--root", "/b"}).root, "/b");
}

TEST(CliCommandLine, ARootWithoutADirectoryIsAnError) {
  EXPECT_EQ(UsageError({"--root"}), "--root needs a directory");
}

TEST(CliCommandLine, AnEmptyArgumentIsAnArgument) {
  const Request request = Read({"key", "set", "db/a", ""});
  EXPECT_TRUE(request.words.Has("VALUE"));
  EXPECT_EQ(request.words.Text("VALUE"), "");
}

TEST(CliCommandLine, ANegativeNumberIsNoOption) {
  EXPECT_EQ(Read({"key", "set", "db/a", "-1"}).words.Text("VALUE"), "-1");
  EXPECT_EQ(Read({"fail", "vconf_get_int", "-22"}).words.Text("RESULT"), "-22");
}

TEST(CliCommandLine, BehindTwoDashesEverythingIsAnArgument) {
  EXPECT_EQ(Read({"key", "set", "--", "db/a", "--json"}).words.Text("VALUE"), "--json");
}

TEST(CliCommandLine, BracketsAndCommasInAnArgumentStayAsTheyAre) {
  EXPECT_EQ(Read({"wait", "[.a,.b]"}).words.Text("EXPRESSION"), "[.a,.b]");
  EXPECT_EQ(Read({"key", "set", "k", "{}"}).words.Text("VALUE"), "{}");
  const auto pairs = Read({"port", "send", "p", "a=[1,2]", "b={}"}).words.All("PAIR");
  EXPECT_EQ(pairs, (std::vector<std::string>{"a=[1,2]", "b={}"}));
}

TEST(CliCommandLine, OptionsAndArgumentsMix) {
  const Request request =
      Read({"port", "send", "p", "--from", "app", "a=1", "--reply-port=r", "b=2"});
  EXPECT_EQ(request.words.Text("from"), "app");
  EXPECT_EQ(request.words.Text("reply-port"), "r");
  EXPECT_EQ(request.words.All("PAIR"), (std::vector<std::string>{"a=1", "b=2"}));
}

TEST(CliCommandLine, AShortOptionIsFoundByItsLongName) {
  const Request request = Read({"log", "-f", "-l", "E", "-g", "text"});
  EXPECT_TRUE(request.words.Has("follow"));
  EXPECT_EQ(request.words.Text("level"), "E");
  EXPECT_EQ(request.words.Text("grep"), "text");
}

TEST(CliCommandLine, AnUnknownVerbNamesTheNearest) {
  EXPECT_EQ(UsageError({"stats"}), "\"tv stats\" is not a command: did you mean `tv status`?");
  EXPECT_EQ(UsageError({"pkg", "instal", "x"}),
            "\"tv pkg instal\" is not a command: did you mean `tv pkg install`?");
}

TEST(CliCommandLine, AVerbThatResemblesNonePointsToTheHelp) {
  EXPECT_EQ(UsageError({"zzzzzz"}), "\"tv zzzzzz\" is not a command: see `tv help`");
}

TEST(CliCommandLine, AGroupAloneNamesItsVerbs) {
  EXPECT_EQ(UsageError({"daemon"}), "tv daemon needs one of: stop, start, kill, restart");
}

TEST(CliCommandLine, AMissingArgumentShowsTheUsage) {
  EXPECT_EQ(UsageError({"tune"}), "ID is required: usage is `tv tune ID`");
}

TEST(CliCommandLine, AnArgumentTooManyIsNamed) {
  EXPECT_EQ(UsageError({"tune", "1", "2"}),
            "\"2\" is one argument too many: usage is `tv tune ID`");
}

TEST(CliCommandLine, AnUnknownOptionIsNamed) {
  EXPECT_EQ(
      UsageError({"tune", "1", "--fast"}),
      "\"--fast\" is not an option of this command (write -- before a value that begins with a "
      "dash): usage is `tv tune ID`");
}

TEST(CliCommandLine, AnOptionGivenTwiceIsNamed) {
  EXPECT_EQ(UsageError({"up", "--speed", "1", "--speed", "2"}).substr(0, 22),
            "--speed is given twice");
}

TEST(CliCommandLine, NoWordGivesTheOverviewWithEveryVerb) {
  const Request request = Read({});
  EXPECT_EQ(request.command, nullptr);
  for (const auto& word : TvCommands().Words("")) {
    if (word != "help") {
      EXPECT_NE(request.text.find("\n  " + word + " "), std::string::npos) << word;
    }
  }
}

TEST(CliCommandLine, HelpIsGivenInEachOfItsForms) {
  const std::string help = Help(TvCommands(), "pkg install");
  EXPECT_EQ(Read({"help", "pkg", "install"}).text, help);
  EXPECT_EQ(Read({"pkg", "install", "--help"}).text, help);
  EXPECT_EQ(Read({"pkg", "install", "a.wgt", "-h"}).text, help);
  EXPECT_EQ(Read({"--help", "pkg", "install"}).text, help);
  EXPECT_EQ(Read({"pkg", "--help"}).text, Help(TvCommands(), "pkg"));
}

TEST(CliCommandLine, EveryCommandHasHelpThatBeginsWithItsName) {
  for (const auto& command : TvCommands().commands) {
    const std::string help = Help(TvCommands(), command.path);
    EXPECT_EQ(help.find("tv " + command.path + " - " + command.summary), 0U);
    EXPECT_NE(help.find(UsageLine(command)), std::string::npos) << command.path;
  }
}

TEST(CliCommandLine, HelpForAnUnknownVerbNamesTheNearest) {
  EXPECT_EQ(UsageError({"help", "key", "gte"}),
            "there is no help for \"key gte\": did you mean `tv help key get`?");
}

TEST(CliCommandLine, TheVersionIsPrinted) {
  EXPECT_EQ(Read({"--version"}).text.find("tv (orv-enabler) "), 0U);
}

TEST(CliCommandLine, TheUsageLineShowsWhatMayBeLeftOut) {
  EXPECT_EQ(UsageLine(*TvCommands().Find("fail")),
            "tv fail [--times N] [--after N] [--clear] [--json] [CALL] [RESULT]");
  EXPECT_EQ(UsageLine(*TvCommands().Find("app launch")),
            "tv app launch [--operation OPERATION] [--json] ID [PAIR...]");
}

TEST(CliNearest, NothingIsNearAShortStrangeWord) {
  EXPECT_EQ(Nearest("x", {"up", "down"}), "");
}

TEST(CliNearest, TheBeginningOfAWordIsNear) {
  EXPECT_EQ(Nearest("uninst", {"install", "uninstall"}), "uninstall");
}

TEST(CliNearest, TwoLettersInTheWrongOrderAreOneDifference) {
  EXPECT_EQ(Nearest("lits", {"lift", "list"}), "list");
}

TEST(CliInvocation, ANumberIsDecimalUnlessItSays0x) {
  Invocation words;
  words.Set("N", {"0x10"});
  words.Set("Z", {"010"});
  EXPECT_EQ(words.Number("N", 0), 16);
  EXPECT_EQ(words.Unsigned("N", 0), 16U);
  EXPECT_EQ(words.Number("Z", 0), 10);
  EXPECT_EQ(words.Unsigned("Z", 0), 10U);
  EXPECT_EQ(words.Number("M", 7), 7);
}

TEST(CliInvocation, ANumberOutOfItsBoundsIsAnError) {
  Invocation words;
  words.Set("speed", {"0"});
  try {
    words.Number("speed", 1, 1, 100);
    FAIL() << "0 was accepted";
  } catch (const Failure& failure) {
    EXPECT_STREQ(failure.what(), "speed is \"0\": give 1 to 100");
  }
}

TEST(CliInvocation, AServiceIdMayHaveAllBitsSet) {
  Invocation words;
  words.Set("ID", {"18446744073709551615"});
  EXPECT_EQ(words.Unsigned("ID", 0), UINT64_MAX);
}

TEST(CliInvocation, ANegativeServiceIdIsAnError) {
  Invocation words;
  words.Set("ID", {"-1"});
  EXPECT_THROW(words.Unsigned("ID", 0), Failure);
}

TEST(CliInvocation, ATimeoutThatIsNotANumberIsAnError) {
  for (const char* text : {"x", "", "-1", "nan", "inf", "1s", "1e300"}) {
    Invocation words;
    words.Set("timeout", {text});
    EXPECT_THROW(words.Seconds("timeout", 1), Failure) << text;
  }
}

TEST(CliInvocation, ATimeoutMayHaveAFraction) {
  Invocation words;
  words.Set("timeout", {"0.25"});
  EXPECT_EQ(Milliseconds(words.Seconds("timeout", 1)), std::chrono::milliseconds(250));
}

}  // namespace
}  // namespace desk::cli
