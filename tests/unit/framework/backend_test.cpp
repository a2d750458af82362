// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "framework/backend.h"

#include <FCTask.h>
#include <FCTaskList.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "manual_alarm_clock.h"

namespace {

using testing::ElementsAre;

/// Records every call and lets one of them fail.
class RecordingBackend : public platform::Backend, public platform::Sink {
 public:
  explicit RecordingBackend(std::string failing = "", int result = 0)
      : m_failing(std::move(failing)), m_result(result) {
    framework::SetBackend(this);
  }
  ~RecordingBackend() override { framework::SetBackend(nullptr); }

  std::vector<std::string> Calls() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_calls;
  }

  platform::Sink* GetSink() override { return this; }
  std::optional<int> TakeFault(const char* call, int) override {
    return m_failing == call ? std::optional<int>(m_result) : std::nullopt;
  }
  void OnException(const char*, const std::exception&) override { throw; }

  void Begin(platform::CallRecord& record, const platform::Value* args,
             std::size_t count) override {
    std::string text = record.name;
    for (std::size_t i = 0; i < count; ++i) {
      text += " " + platform::FormatText(args[i]);
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    record.number = m_calls.size();
    m_calls.push_back(text);
  }
  void AddOutput(platform::CallRecord&, const platform::Value&) override {}
  void End(platform::CallRecord& record, const platform::Value& result) override {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_calls[record.number] += " = " + platform::FormatText(result);
  }

 private:
  const std::string m_failing;
  const int m_result;
  mutable std::mutex m_mutex;
  std::vector<std::string> m_calls;  // guarded by m_mutex
};

TEST(FrameworkBackend, RecordsCallsWithArgumentsAndResults) {
  const RecordingBackend backend;
  const ManualAlarmClock clock;
  FCTask task;
  task.Create("Task", 1000, 0x2000);
  task.Send({task.GetHandler(), 0x7FFF0001, nullptr, nullptr}, true, true);
  FCStateAlarm alarm;
  alarm.Create(&task, 1004, 1000, 1);
  alarm.Destroy();
  task.Destroy();
  EXPECT_THAT(backend.Calls(),
              ElementsAre("FCTask::Create Task 1000 8192 = true",
                          "FCTask::Send Task 2147418113 true true = true",
                          "FCStateAlarm::Create Task 1004 1000 1 = true",
                          "FCStateAlarm::Destroy = true", "FCTask::Destroy Task = true"));
}

TEST(FrameworkBackend, CanFailTheStartOfATask) {
  const RecordingBackend backend("FCTask::Create");
  FCTask task;
  EXPECT_FALSE(task.Create("Task", 0, 8));
  EXPECT_FALSE(task.Destroy());
}

TEST(FrameworkBackend, CanRefuseAnEvent) {
  const RecordingBackend backend("FCTask::Send");
  FCTask task;
  task.Create("Task", 0, 8);
  EXPECT_FALSE(task.Send({task.GetHandler(), 5, nullptr, nullptr}, false, false));
  EXPECT_FALSE(task.Send({task.GetHandler(), 5, nullptr, nullptr}, false, true));
}

TEST(FrameworkBackend, ChoosesTheResultOfFlagInitialize) {
  const RecordingBackend backend("FCTaskList::FlagInitialize", 1);
  EXPECT_EQ(1, FCTaskList::FlagInitialize());
}

TEST(FrameworkBackend, CanFailTheListAndTheDetector) {
  FCList list;
  {
    const RecordingBackend backend("FCList::Create");
    EXPECT_FALSE(list.Create());
  }
  {
    const RecordingBackend backend("FCSyncDet::Create");
    EXPECT_FALSE(FCSyncDet::Create());
  }
  EXPECT_TRUE(list.Create());
  EXPECT_TRUE(FCSyncDet::Create());
  {
    const RecordingBackend backend("FCList::Destroy");
    EXPECT_FALSE(list.Destroy());
  }
  {
    const RecordingBackend backend("FCSyncDet::Destroy");
    EXPECT_FALSE(FCSyncDet::Destroy());
  }
  EXPECT_TRUE(list.Destroy());
  EXPECT_TRUE(FCSyncDet::Destroy());
}

TEST(FrameworkBackend, CanFailTheStartOfAnAlarm) {
  const RecordingBackend backend("FCStateAlarm::Create");
  FCTask task;
  FCStateAlarm alarm;
  EXPECT_FALSE(alarm.Create(&task, 5, 1000, 1));
  EXPECT_FALSE(alarm.IsRunning());
}

}  // namespace
