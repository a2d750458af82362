// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Makes every platform call and every file operation of the store fail, on every path that uses it,
// at each of its uses, once and permanently.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <ostream>

#include "fake/control/calls.h"
#include "fault/child.h"
#include "fault/expectations.h"
#include "fault/paths.h"

namespace fault {
namespace {

using testing::IsEmpty;

/// The run without a fault, made once per process.
const Report& Faultless(const std::string& path) {
  static std::map<std::string, Report> s_reports;
  auto found = s_reports.find(path);
  if (found == s_reports.end()) {
    found = s_reports.emplace(path, RunInChild({path, std::nullopt, false})).first;
  }
  return found->second;
}

struct Use {
  std::string path;
  std::string call;
  int count = 0;
};

std::ostream& operator<<(std::ostream& stream, const Use& use) {
  return stream << use.call << " on the path " << use.path;
}

/// CTest runs each test in a process of its own, by its full name: then the other paths need not be
/// run.
bool IsWanted(const Path& path) {
  const std::string filter = testing::GTEST_FLAG(filter);
  return filter.find('*') != std::string::npos || filter.find(path.name) != std::string::npos;
}

std::vector<Use> FindUses() {
  std::vector<Use> uses;
  for (const Path& path : Paths()) {
    if (path.isRace || !IsWanted(path)) {
      continue;
    }
    for (const auto& [call, count] : Faultless(path.name).calls) {
      if (!ResultsOf(call).empty()) {
        uses.push_back({path.name, call, count});
      }
    }
  }
  return uses;
}

std::vector<std::string> FindPathNames(bool races) {
  std::vector<std::string> names;
  for (const Path& path : Paths()) {
    if (path.isRace == races) {
      names.push_back(path.name);
    }
  }
  return names;
}

std::string NameOf(const testing::TestParamInfo<Use>& info) {
  std::string name = info.param.path + "_" + info.param.call;
  std::replace_if(
      name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
}

class AFailingCall : public testing::TestWithParam<Use> {
 protected:
  static void RunWith(const Fault& fault) {
    const Request request{GetParam().path, fault, false};
    const Report report = RunInChild(request);
    EXPECT_THAT(WhatIsWrong(request, report, Faultless(request.path)), IsEmpty())
        << request.path << ": " << ToText(fault)
        << "; calls that failed: " << testing::PrintToString(report.failed)
        << "\nlog: " << testing::PrintToString(report.log);
    const Report after = RunInChild({request.path, std::nullopt, true});
    EXPECT_THAT(WhatIsWrongAfterRestart(after), IsEmpty())
        << "after a restart following: " << request.path << ": " << ToText(fault);
  }
};

TEST_P(AFailingCall, IsLoggedAndLeavesAWorkingDaemonAndStore) {
  for (const int result : ResultsOf(GetParam().call)) {
    for (int after = 0; after < GetParam().count; ++after) {
      RunWith({GetParam().call, result, 1, after});
      RunWith({GetParam().call, result, fake::FOREVER, after});
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Sweep, AFailingCall, testing::ValuesIn(FindUses()), NameOf);

class APath : public testing::TestWithParam<std::string> {
 protected:
  /// Ignores the order of the two threads. At start they also race for what the scheduler does
  /// first, so there only the names of the calls are compared.
  static std::vector<std::string> Sorted(const Report& report) {
    std::vector<std::string> calls = report.callTexts;
    if (FindPath(GetParam()).IsStart()) {
      calls.clear();
      for (const auto& [name, count] : report.calls) {
        calls.push_back(name);
      }
    }
    std::sort(calls.begin(), calls.end());
    return calls;
  }
};

TEST_P(APath, EndsWellWithoutAFault) {
  const Request request{GetParam(), std::nullopt, false};
  const Report& report = Faultless(GetParam());
  EXPECT_TRUE(report.reachedMainLoop);
  EXPECT_THAT(WhatIsWrong(request, report, report), IsEmpty());
  EXPECT_THAT(WhatIsWrongAfterRestart(RunInChild({request.path, std::nullopt, true})), IsEmpty());
}

TEST_P(APath, IsTheSameWhenEveryLogRecordIsLost) {
  const Report report =
      RunInChild({GetParam(), Fault{"__dlog_print", -1, fake::FOREVER, 0}, false});
  EXPECT_THAT(report.end, IsEmpty());
  EXPECT_THAT(report.log, IsEmpty());
  EXPECT_THAT(report.problems, IsEmpty());
  EXPECT_EQ(Sorted(report), Sorted(Faultless(GetParam())));
}

INSTANTIATE_TEST_SUITE_P(Sweep, APath, testing::ValuesIn(FindPathNames(false)),
                         [](const auto& path) { return path.param; });

class ARace : public testing::TestWithParam<std::string> {};

TEST_P(ARace, EndsWellEveryTime) {
  constexpr int TIMES = 60;
  for (int i = 0; i < TIMES; ++i) {
    const Report report = RunInChild({GetParam(), std::nullopt, false});
    ASSERT_THAT(report.end, IsEmpty()) << "time " << i;
    ASSERT_THAT(report.problems, IsEmpty()) << "time " << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Sweep, ARace, testing::ValuesIn(FindPathNames(true)),
                         [](const auto& path) { return path.param; });

}  // namespace
}  // namespace fault
