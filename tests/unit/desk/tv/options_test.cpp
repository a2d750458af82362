// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/options.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

#include "desk/common/desk_error.h"

namespace desk::tv {
namespace {

TvOptions Parse(std::vector<const char*> words) {
  words.insert(words.begin(), "desk-tv");
  return TvOptions::Parse(static_cast<int>(words.size()), words.data());
}

std::string ErrorOf(const std::vector<const char*>& words) {
  try {
    Parse(words);
  } catch (const DeskError& e) {
    return e.Code() + ": " + e.what();
  }
  return "";
}

TEST(TvOptions, WithoutAnyTheTvIsOnlineAtItsSpeedInASandbox) {
  setenv("TV_ROOT", "/r", 1);
  const TvOptions options = Parse({});
  EXPECT_EQ(options.paths.Root(), "/r");
  EXPECT_FALSE(options.offline);
  EXPECT_EQ(options.speed, 1);
  EXPECT_TRUE(options.sandbox);
  EXPECT_EQ(options.log, "/r/log/desk-tv.log");
  EXPECT_EQ(options.readyFd, -1);
}

TEST(TvOptions, AllOfThemAreTaken) {
  const TvOptions options = Parse({"--root", "/x", "--offline", "--speed", "720", "--no-sandbox",
                                   "--reset-clock", "--log", "/tmp/l", "--ready-fd", "7"});
  EXPECT_EQ(options.paths.Root(), "/x");
  EXPECT_TRUE(options.offline);
  EXPECT_EQ(options.speed, 720);
  EXPECT_FALSE(options.sandbox);
  EXPECT_TRUE(options.resetClock);
  EXPECT_EQ(options.log, "/tmp/l");
  EXPECT_EQ(options.readyFd, 7);
}

TEST(TvOptions, AValueMayFollowAnEqualsSign) {
  const TvOptions options = Parse({"--root=/x=y", "--speed=2"});
  EXPECT_EQ(options.paths.Root(), "/x=y");
  EXPECT_EQ(options.speed, 2);
}

TEST(TvOptions, NumbersAreReadAsTheCommandLineOfTheUserReadsThem) {
  EXPECT_EQ(Parse({"--root", "/x", "--speed", "010"}).speed, 10);
  EXPECT_EQ(Parse({"--root", "/x", "--speed", "0x10"}).speed, 16);
}

TEST(TvOptions, WhatIsWrongIsAUsageErrorThatNamesIt) {
  EXPECT_EQ(ErrorOf({"--root", "/x", "--speed", "0"}),
            "Usage: --speed takes a number from 1 to 100000, not \"0\": see desk-tv --help");
  EXPECT_EQ(ErrorOf({"--fast"}), "Usage: unknown option --fast: see desk-tv --help");
  EXPECT_EQ(ErrorOf({"--offline=1"}), "Usage: unknown option --offline: see desk-tv --help");
  EXPECT_EQ(ErrorOf({"--root"}), "Usage: --root takes a value: see desk-tv --help");
  EXPECT_EQ(ErrorOf({"--root", "/"}),
            "Usage: a TV needs a directory of its own, not /: choose another directory with "
            "--root");
  EXPECT_NE(ErrorOf({"--root", "/x", "--speed", "2x"}), "");
  EXPECT_NE(ErrorOf({"--root", "/x", "--speed", ""}), "");
  EXPECT_NE(ErrorOf({"--root", "/x", "--ready-fd", "-1"}), "");
}

TEST(TvOptions, TheHelpNamesEveryOption) {
  const std::string help = TvOptions::HelpText();
  for (const char* option :
       {"--root", "--offline", "--speed", "--reset-clock", "--no-sandbox", "--log", "--ready-fd"}) {
    EXPECT_NE(help.find(option), std::string::npos) << option;
  }
}

}  // namespace
}  // namespace desk::tv
