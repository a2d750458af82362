// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "framework/hooks.h"

#include <FCTask.h>
#include <FCTaskList.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <vector>

#include "manual_alarm_clock.h"

namespace {

using testing::ElementsAre;

struct Seen {
  std::mutex mutex;
  std::vector<std::string> calls;
  std::string failing;
  int result = 0;
};

Seen& GetSeen() {
  static auto* s_seen = new Seen;
  return *s_seen;
}

unsigned long Begin(const char* call, const std::vector<std::string>& args) {
  const std::lock_guard<std::mutex> lock(GetSeen().mutex);
  std::string text = call;
  for (const std::string& arg : args) {
    text += " " + arg;
  }
  GetSeen().calls.push_back(text);
  return GetSeen().calls.size() - 1;
}

bool Fails(const char* call, int* result) {
  const std::lock_guard<std::mutex> lock(GetSeen().mutex);
  if (GetSeen().failing != call) {
    return false;
  }
  *result = GetSeen().result;
  return true;
}

void End(unsigned long number, const std::string& result) {
  const std::lock_guard<std::mutex> lock(GetSeen().mutex);
  GetSeen().calls[number] += " = " + result;
}

constexpr framework::Hooks kHooks = {Begin, Fails, End};

/// Installs the hooks, and lets one call fail.
class Hooked {
 public:
  explicit Hooked(const std::string& failing = "", int result = 0) {
    GetSeen().calls.clear();
    GetSeen().failing = failing;
    GetSeen().result = result;
    framework::SetHooks(&kHooks);
  }
  ~Hooked() { framework::SetHooks(nullptr); }
  Hooked(const Hooked&) = delete;
  Hooked& operator=(const Hooked&) = delete;
};

TEST(Hooks, SeeTheCallsWithArgumentsAndResults) {
  const Hooked hooked;
  const ManualAlarmClock clock;
  FCTask task;
  task.Create("Task", 1000, 0x2000);
  task.Send({task.GetHandler(), 0x7FFF0001, nullptr, nullptr}, true, true);
  FCStateAlarm alarm;
  alarm.Create(&task, 1004, 1000, 1);
  alarm.Destroy();
  task.Destroy();
  EXPECT_THAT(GetSeen().calls,
              ElementsAre("FCTask::Create Task 1000 8192 = true",
                          "FCTask::Send Task 2147418113 true true = true",
                          "FCStateAlarm::Create Task 1004 1000 1 = true",
                          "FCStateAlarm::Destroy = true", "FCTask::Destroy Task = true"));
}

TEST(Hooks, LetATaskNotStart) {
  const Hooked hooked("FCTask::Create");
  FCTask task;
  EXPECT_FALSE(task.Create("Task", 0, 8));
  EXPECT_FALSE(task.Destroy());
}

TEST(Hooks, LetAnEventBeRefused) {
  const Hooked hooked("FCTask::Send");
  FCTask task;
  task.Create("Task", 0, 8);
  EXPECT_FALSE(task.Send({task.GetHandler(), 5, nullptr, nullptr}, false, false));
  EXPECT_FALSE(task.Send({task.GetHandler(), 5, nullptr, nullptr}, false, true));
}

TEST(Hooks, ChooseTheResultOfFlagInitialize) {
  const Hooked hooked("FCTaskList::FlagInitialize", 1);
  EXPECT_EQ(1, FCTaskList::FlagInitialize());
}

TEST(Hooks, LetTheListAndTheDetectorFail) {
  FCList list;
  {
    const Hooked hooked("FCList::Create");
    EXPECT_FALSE(list.Create());
  }
  {
    const Hooked hooked("FCSyncDet::Create");
    EXPECT_FALSE(FCSyncDet::Create());
  }
  EXPECT_TRUE(list.Create());
  EXPECT_TRUE(FCSyncDet::Create());
  {
    const Hooked hooked("FCList::Destroy");
    EXPECT_FALSE(list.Destroy());
  }
  {
    const Hooked hooked("FCSyncDet::Destroy");
    EXPECT_FALSE(FCSyncDet::Destroy());
  }
  EXPECT_TRUE(list.Destroy());
  EXPECT_TRUE(FCSyncDet::Destroy());
}

TEST(Hooks, LetAnAlarmNotStart) {
  const Hooked hooked("FCStateAlarm::Create");
  FCTask task;
  FCStateAlarm alarm;
  EXPECT_FALSE(alarm.Create(&task, 5, 1000, 1));
  EXPECT_FALSE(alarm.IsRunning());
}

}  // namespace
