// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Every call through the wall and every file operation of the store, on every road that uses it,
// failed at each of its uses, once and for good.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <ostream>

#include "fake/control/calls.h"
#include "fault/child.h"
#include "fault/expectations.h"
#include "fault/roads.h"

namespace fault {
namespace {

using testing::IsEmpty;

/// The journey without a fault, made once for a process.
const Report& Faultless(const std::string& road) {
  static std::map<std::string, Report> s_reports;
  auto found = s_reports.find(road);
  if (found == s_reports.end()) {
    found = s_reports.emplace(road, RunInChild({road, std::nullopt, false})).first;
  }
  return found->second;
}

struct Use {
  std::string road;
  std::string call;
  int count = 0;
};

std::ostream& operator<<(std::ostream& stream, const Use& use) {
  return stream << use.call << " on the road " << use.road;
}

/// CTest runs each test in a process of its own, by its full name: then there is no need to travel
/// the other roads.
bool IsWanted(const Road& road) {
  const std::string filter = testing::GTEST_FLAG(filter);
  return filter.find('*') != std::string::npos || filter.find(road.name) != std::string::npos;
}

std::vector<Use> FindUses() {
  std::vector<Use> uses;
  for (const Road& road : Roads()) {
    if (road.isRace || !IsWanted(road)) {
      continue;
    }
    for (const auto& [call, count] : Faultless(road.name).calls) {
      if (!ResultsOf(call).empty()) {
        uses.push_back({road.name, call, count});
      }
    }
  }
  return uses;
}

std::vector<std::string> FindRoadNames(bool races) {
  std::vector<std::string> names;
  for (const Road& road : Roads()) {
    if (road.isRace == races) {
      names.push_back(road.name);
    }
  }
  return names;
}

std::string NameOf(const testing::TestParamInfo<Use>& info) {
  std::string name = info.param.road + "_" + info.param.call;
  std::replace_if(
      name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
}

class AFailingCall : public testing::TestWithParam<Use> {
 protected:
  static void Travel(const Fault& fault) {
    const Order order{GetParam().road, fault, false};
    const Report report = RunInChild(order);
    EXPECT_THAT(WhatIsWrong(order, report, Faultless(order.road)), IsEmpty())
        << order.road << ": " << ToText(fault)
        << "; calls that failed: " << testing::PrintToString(report.failed)
        << "\nlog: " << testing::PrintToString(report.log);
    const Report after = RunInChild({order.road, std::nullopt, true});
    EXPECT_THAT(WhatIsWrongAfterRestart(after), IsEmpty())
        << "after a restart behind: " << order.road << ": " << ToText(fault);
  }
};

TEST_P(AFailingCall, IsToldAndLeavesAWorkingDaemonAndAWholeStore) {
  for (const int result : ResultsOf(GetParam().call)) {
    for (int after = 0; after < GetParam().count; ++after) {
      Travel({GetParam().call, result, 1, after});
      Travel({GetParam().call, result, fake::kForever, after});
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Sweep, AFailingCall, testing::ValuesIn(FindUses()), NameOf);

class ARoad : public testing::TestWithParam<std::string> {
 protected:
  /// The order of two threads is left out. At start they also race for what the scheduler does
  /// first, so there only the names of the calls remain.
  static std::vector<std::string> Sorted(const Report& report) {
    std::vector<std::string> calls = report.callTexts;
    if (FindRoad(GetParam()).IsStart()) {
      calls.clear();
      for (const auto& [name, count] : report.calls) {
        calls.push_back(name);
      }
    }
    std::sort(calls.begin(), calls.end());
    return calls;
  }
};

TEST_P(ARoad, EndsWellWithoutAFault) {
  const Order order{GetParam(), std::nullopt, false};
  const Report& report = Faultless(GetParam());
  EXPECT_TRUE(report.reachedMainLoop);
  EXPECT_THAT(WhatIsWrong(order, report, report), IsEmpty());
  EXPECT_THAT(WhatIsWrongAfterRestart(RunInChild({order.road, std::nullopt, true})), IsEmpty());
}

TEST_P(ARoad, IsTheSameWhenEveryLogRecordIsLost) {
  const Report report =
      RunInChild({GetParam(), Fault{"__dlog_print", -1, fake::kForever, 0}, false});
  EXPECT_THAT(report.end, IsEmpty());
  EXPECT_THAT(report.log, IsEmpty());
  EXPECT_THAT(report.problems, IsEmpty());
  EXPECT_EQ(Sorted(report), Sorted(Faultless(GetParam())));
}

INSTANTIATE_TEST_SUITE_P(Sweep, ARoad, testing::ValuesIn(FindRoadNames(false)),
                         [](const auto& road) { return road.param; });

class ARace : public testing::TestWithParam<std::string> {};

TEST_P(ARace, EndsWellEveryTime) {
  constexpr int kTimes = 60;
  for (int i = 0; i < kTimes; ++i) {
    const Report report = RunInChild({GetParam(), std::nullopt, false});
    ASSERT_THAT(report.end, IsEmpty()) << "time " << i;
    ASSERT_THAT(report.problems, IsEmpty()) << "time " << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Sweep, ARace, testing::ValuesIn(FindRoadNames(true)),
                         [](const auto& road) { return road.param; });

}  // namespace
}  // namespace fault
