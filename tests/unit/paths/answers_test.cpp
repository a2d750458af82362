// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// What changes on a path when one platform call gives another result: a failure that does nothing
// (-1, 0 or 1), or a result of -1 or 1 of a call that has done its work. Each call of the path gets
// each of these results. The differences from the path without a fault are compared with a text
// file; a call that is not listed there makes no difference.
//
// A failure writes what it found below the build directory. After an intended change, read the
// difference and copy that file to answers/.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iomanip>
#include <set>
#include <sstream>
#include <system_error>

#include "fake/control/fake.h"
#include "fault/paths.h"
#include "support/files.h"
#include "unit/paths/more_paths.h"
#include "unit/paths/path_runner.h"

namespace {

constexpr unsigned int DEADLINE_SECONDS = 60;
/// Of a missing line, which is in sequences/ in full.
constexpr std::size_t SHOWN_LENGTH = 80;

using Lines = std::vector<std::string>;

struct Answer {
  const char* name;
  int result;
  bool isFalse;  ///< the call does its work nevertheless
};

const Answer ANSWERS[] = {{"FailsWithMinusOne", -1, false},
                          {"FailsWithZero", 0, false},
                          {"FailsWithOne", 1, false},
                          {"WorksButSaysMinusOne", -1, true},
                          {"WorksButSaysOne", 1, true}};

void Arm(const Answer& answer, const paths::Use& use) {
  if (answer.isFalse) {
    fake::FailAfterwards(use.name, answer.result, use.before);
  } else {
    fake::Fail(use.name, answer.result, 1, use.before);
  }
}

std::string ReadAll(int pipe) {
  std::string text;
  char buffer[4096];
  ssize_t count = 0;
  while ((count = read(pipe, buffer, sizeof(buffer))) > 0 || (count < 0 && errno == EINTR)) {
    text.append(buffer, count > 0 ? static_cast<std::size_t>(count) : 0);
  }
  return text;
}

void WriteAll(int pipe, const std::string& text) {
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t written = write(pipe, text.data() + done, text.size() - done);
    if (written <= 0) {
      _exit(1);
    }
    done += static_cast<std::size_t>(written);
  }
}

/// Runs the work in a child process, because a process can run only one daemon. This process has no
/// other threads.
template <typename Work>
std::string InAChild(const Work& work) {
  int ends[2] = {};
  if (pipe(ends) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  const pid_t child = fork();
  if (child < 0) {
    throw std::system_error(errno, std::generic_category(), "fork");
  }
  if (child == 0) {
    close(ends[0]);
    alarm(DEADLINE_SECONDS);
    WriteAll(ends[1], work());
    _exit(0);
  }
  close(ends[1]);
  std::string text = ReadAll(ends[0]);
  close(ends[0]);
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (status != 0) {
    text += "the daemon ended with the status " + std::to_string(status) + "\n";
  }
  return text;
}

Lines Split(const std::string& text) {
  Lines lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

/// The calls of the path in alphabetical order, each with its arguments once.
std::vector<paths::Use> UsesOn(const fault::Path& path) {
  const std::string text = InAChild([&] {
    std::ostringstream stream;
    for (const paths::Use& use : paths::RunPath(path).uses) {
      stream << use.name << '\n'
             << use.before << '\n'
             << std::quoted(use.text) << '\n'
             << use.isOfOneThread << '\n';
    }
    return stream.str();
  });
  std::vector<paths::Use> uses;
  std::set<std::string> seen;
  std::istringstream stream(text);
  paths::Use use;
  while (stream >> use.name >> use.before >> std::quoted(use.text) >> use.isOfOneThread) {
    // The threads of a start race for the first call of such a name.
    if (path.IsStart() && !use.isOfOneThread) {
      continue;
    }
    if (seen.insert(use.text).second) {
      uses.push_back(use);
    }
  }
  // The threads of a start may come in any order.
  std::sort(uses.begin(), uses.end(),
            [](const paths::Use& left, const paths::Use& right) { return left.text < right.text; });
  return uses;
}

/// The length of the longest common subsequence of the rest of the lines, for each pair of places.
std::vector<std::vector<int>> CommonLengths(const Lines& left, const Lines& right) {
  std::vector<std::vector<int>> lengths(left.size() + 1, std::vector<int>(right.size() + 1));
  for (std::size_t i = left.size(); i-- > 0;) {
    for (std::size_t j = right.size(); j-- > 0;) {
      lengths[i][j] = left[i] == right[j] ? lengths[i + 1][j + 1] + 1
                                          : std::max(lengths[i + 1][j], lengths[i][j + 1]);
    }
  }
  return lengths;
}

/// The first line and the number of the others: they are in sequences/.
void PrintMissing(std::ostream& stream, const Lines& missing) {
  if (missing.empty()) {
    return;
  }
  stream << "-" << missing.front().substr(0, SHOWN_LENGTH);
  if (missing.size() > 1) {
    stream << " ... " << missing.size() - 1 << " more";
  }
  stream << "\n";
}

/// "-" before what is missing in the right lines, "+" before what is only there.
std::string Difference(const Lines& left, const Lines& right) {
  const auto lengths = CommonLengths(left, right);
  std::ostringstream stream;
  Lines missing;
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < left.size() || j < right.size()) {
    if (i < left.size() && j < right.size() && left[i] == right[j]) {
      PrintMissing(stream, missing);
      missing.clear();
      ++i;
      ++j;
    } else if (j == right.size() || (i < left.size() && lengths[i + 1][j] >= lengths[i][j + 1])) {
      missing.push_back(left[i++]);
    } else {
      PrintMissing(stream, missing);
      missing.clear();
      stream << "+" << right[j++] << "\n";
    }
  }
  PrintMissing(stream, missing);
  return stream.str();
}

/// The result of the use itself is no difference.
Lines WithoutResult(Lines lines, const paths::Use& use) {
  const std::string begin = use.text + " = ";
  const auto call = std::find_if(lines.begin(), lines.end(), [&begin](const std::string& line) {
    return line.compare(0, begin.size(), begin) == 0;
  });
  if (call != lines.end()) {
    *call = use.text;
  }
  return lines;
}

std::string Differences(const fault::Path& path, const Answer& answer) {
  const Lines faultless = Split(InAChild([&] { return paths::RunPath(path).text; }));
  std::ostringstream stream;
  for (const paths::Use& use : UsesOn(path)) {
    // The log record of a refused event shows the size of the queue, which the task empties
    // meanwhile.
    if (answer.isFalse && use.name == "FCTask::Send") {
      continue;
    }
    const Lines found =
        Split(InAChild([&] { return paths::RunPath(path, [&] { Arm(answer, use); }).text; }));
    const std::string difference =
        Difference(WithoutResult(faultless, use), WithoutResult(found, use));
    if (!difference.empty()) {
      stream << "[" << use.text << "]\n" << difference << "\n";
    }
  }
  return stream.str();
}

/// For the names of the tests that CTest shows.
std::ostream& operator<<(std::ostream& stream, const Answer& answer) {
  return stream << answer.name;
}

class AnAnswer : public testing::TestWithParam<std::pair<std::string, Answer>> {};

TEST_P(AnAnswer, ChangesThePathAsRecorded) {
  const auto& [path, answer] = GetParam();
  const std::string found = Differences(FindAnyPath(path), answer);
  const std::string file = "/" + path + "." + answer.name + ".txt";
  const bool isRecorded = support::Exists(ORV_ANSWERS + file);
  const std::string expected = isRecorded ? support::ReadFile(ORV_ANSWERS + file) : "";
  if (found != expected) {
    support::WriteFile(ORV_FOUND_ANSWERS + file, found);
  }
  EXPECT_EQ(found, expected) << "found: " << ORV_FOUND_ANSWERS << file;
}

/// Between them, these make every call of the daemon.
const char* const PATHS[] = {"StartOfAFreshTelevision",
                             "InstallOfAPackagedFeeder",
                             "InstallOfAPackagedServiceFeeder",
                             "InstallOfABanner",
                             "InstallOfAGuide",
                             "InstallOfABridgedGuide",
                             "InstallBeforeTheWidgetIdIsKnown",
                             "UpdateThatTradesTypes",
                             "UpdateOfAPackagedFeeder",
                             "UpdateToAnOrdinaryPackage",
                             "UninstallOfAPackagedFeeder",
                             "UninstallOfARunningServiceFeeder",
                             "UninstallOfABanner",
                             "UninstallOfAGuide",
                             "Validation",
                             "TuneToABoostingChannel",
                             "TuneToAnotherChannel",
                             "Activation",
                             "BoostTimerOnABoostingChannel",
                             "BoostTimerWithALeftoverFlag",
                             "HbbtvReady",
                             "NetworkTimeArrives",
                             "MessageWithADueTime",
                             "MessageOfCompletion",
                             "MessageWithoutSense",
                             "EndOfAWebAppInLowMemory",
                             "RejectedPreload",
                             "PreloadThatIsRejectedForGood"};

std::vector<std::pair<std::string, Answer>> All() {
  std::vector<std::pair<std::string, Answer>> all;
  for (const char* path : PATHS) {
    for (const Answer& answer : ANSWERS) {
      all.emplace_back(path, answer);
    }
  }
  return all;
}

std::string NameOf(const testing::TestParamInfo<std::pair<std::string, Answer>>& answer) {
  return answer.param.first + "_" + answer.param.second.name;
}

INSTANTIATE_TEST_SUITE_P(Daemon, AnAnswer, testing::ValuesIn(All()), NameOf);

}  // namespace
