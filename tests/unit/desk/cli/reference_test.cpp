// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// What is written in two places has to say the same in both.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>

#include "cli/commands.h"
#include "cli/platform_calls.h"

namespace desk {
namespace {

namespace fs = std::filesystem;

const fs::path SOURCE = ORV_SOURCE_DIR;

std::string Content(const fs::path& path) {
  std::ifstream file(path);
  EXPECT_TRUE(file.good()) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The names that the sources of a directory give to their calls.
void AddCallsOf(const fs::path& directory, std::set<std::string>& calls) {
  const std::regex form("(?:Hooked)?Call call\\(\\s*\"([^\"]+)\"");
  for (const auto& entry : fs::directory_iterator(directory)) {
    if (entry.path().extension() != ".cpp") continue;
    const std::string text = Content(entry.path());
    for (std::sregex_iterator match(text.begin(), text.end(), form), end; match != end; ++match) {
      calls.insert((*match)[1]);
    }
  }
}

TEST(CliReference, TheCallsThatCanFailAreThoseThatThePlatformMakes) {
  std::set<std::string> made = {"__dlog_print"};
  AddCallsOf(SOURCE / "platform/desk/client", made);
  AddCallsOf(SOURCE / "platform/framework", made);
  const std::set<std::string> known(PlatformCalls().begin(), PlatformCalls().end());
  EXPECT_EQ(known, made);
}

TEST(CliReference, EveryCommandStandsInTheManual) {
  const std::string manual = Content(SOURCE / "docs/tv.md");
  for (const auto& command : TvCommands().commands) {
    EXPECT_NE(manual.find("`" + UsageLine(command) + "`"), std::string::npos) << UsageLine(command);
  }
}

TEST(CliReference, EveryOptionStandsInTheManual) {
  const std::string manual = Content(SOURCE / "docs/tv.md");
  for (const auto& command : TvCommands().commands) {
    for (const auto& option : command.options) {
      EXPECT_NE(manual.find("--" + option.Key()), std::string::npos) << option.names;
    }
  }
}

TEST(CliReference, EveryVerbIsCompleted) {
  const std::string script = Content(SOURCE / "packaging/bash-completion/tv");
  for (const auto& command : TvCommands().commands) {
    const auto blank = command.path.find(' ');
    const std::string word = command.path.substr(blank == std::string::npos ? 0 : blank + 1);
    EXPECT_TRUE(std::regex_search(script, std::regex("\\b" + word + "\\b"))) << command.path;
    for (const auto& option : command.options) {
      EXPECT_NE(script.find("--" + option.Key()), std::string::npos) << option.names;
    }
  }
}

}  // namespace
}  // namespace desk
