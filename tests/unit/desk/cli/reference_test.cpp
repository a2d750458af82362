// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Texts that exist in two places must agree.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>

#include "desk/cli/commands.h"
#include "desk/cli/platform_calls.h"

namespace desk::cli {
namespace {

namespace fs = std::filesystem;

const fs::path SOURCE = ORV_SOURCE_DIR;

std::string Content(const fs::path& path) {
  std::ifstream file(path);
  EXPECT_TRUE(file.good()) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The names of the calls in the sources.
struct Calls {
  std::set<std::string> asking;  ///< calls that ask for their faults
  std::set<std::string> deaf;
};

/// Whether the rest of a call's function asks for its faults, directly or through a helper to which
/// it passes the call.
bool Asks(const std::string& function) {
  static const std::regex form("call\\.(?:Run|RunVoid|Fault|Fails)\\b|\\(call,");
  return std::regex_search(function, form);
}

/// The text up to the end of the function: a brace in the column of the line with the call, minus
/// one indentation step.
std::string RestOfFunction(const std::string& text, std::size_t call) {
  const std::size_t line = text.rfind('\n', call) + 1;
  const std::string end =
      "\n" + std::string(text.find_first_not_of(' ', line) - line - 2, ' ') + "}";
  return text.substr(call, text.find(end, call) - call);
}

void AddCallsOf(const fs::path& directory, Calls& calls) {
  static const std::regex form("(?:Hooked)?Call call\\(\\s*\"([^\"]+)\"");
  for (const auto& entry : fs::directory_iterator(directory)) {
    if (entry.path().extension() != ".cpp") {
      continue;
    }
    const std::string text = Content(entry.path());
    for (std::sregex_iterator match(text.begin(), text.end(), form), end; match != end; ++match) {
      const auto at = static_cast<std::size_t>(match->position());
      (Asks(RestOfFunction(text, at)) ? calls.asking : calls.deaf).insert((*match)[1]);
    }
  }
}

std::set<std::string> SetOf(const std::vector<std::string>& texts) {
  return {texts.begin(), texts.end()};
}

TEST(CliReference, TheCallsThatCanFailAreThoseThatAskWhetherTheyShall) {
  Calls made;
  made.asking = {"__dlog_print"};
  AddCallsOf(SOURCE / "platform/desk/client", made);
  AddCallsOf(SOURCE / "platform/framework", made);
  EXPECT_EQ(SetOf(PlatformCalls()), made.asking);
  EXPECT_EQ(SetOf(CallsThatCannotFail()), made.deaf);
}

TEST(CliReference, AHelperThatIsHandedACallAsks) {
  static const std::regex form("\\n[^\\n]*\\b\\w+\\((?:desk::)?Call& call,");
  int helpers = 0;
  for (const auto& entry : fs::directory_iterator(SOURCE / "platform/desk/client")) {
    if (entry.path().extension() != ".cpp") {
      continue;
    }
    const std::string text = Content(entry.path());
    for (std::sregex_iterator match(text.begin(), text.end(), form), end; match != end; ++match) {
      const auto at = static_cast<std::size_t>(match->position());
      const std::string helper = text.substr(at, text.find("\n}", at) - at);
      EXPECT_TRUE(std::regex_search(helper, std::regex("call\\.(?:Run|RunVoid|Fault)\\b")))
          << entry.path() << ": " << match->str();
      ++helpers;
    }
  }
  EXPECT_GT(helpers, 0);
}

TEST(CliReference, EveryCommandIsInTheManual) {
  const std::string manual = Content(SOURCE / "docs/tv.md");
  for (const auto& command : TvCommands().commands) {
    EXPECT_NE(manual.find("`" + UsageLine(command) + "`"), std::string::npos) << UsageLine(command);
  }
}

TEST(CliReference, TheHelpOfEveryCommandIsInTheManual) {
  const std::string manual = Content(SOURCE / "docs/tv.md");
  for (const auto& command : TvCommands().commands) {
    std::string details = command.details;
    std::replace(details.begin(), details.end(), '\n', ' ');
    EXPECT_NE(manual.find(details), std::string::npos) << command.path << ": " << details;
  }
}

TEST(CliReference, AResetThatOnlyCountsIsNotSaidToRestart) {
  const std::string help = Help(TvCommands(), "reset");
  EXPECT_NE(help.find("takes effect at the daemon's next start"), std::string::npos);
  EXPECT_EQ(help.find("restart"), std::string::npos);
}

TEST(CliReference, EveryOptionIsInTheManual) {
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
}  // namespace desk::cli
