// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <FCTask.h>
#include <FCTaskList.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "framework/events.h"
#include "recording_task.h"
#include "support/wait_for.h"

namespace {

using support::WaitFor;
using testing::ElementsAre;

TEST(FCTask, CallsCreateOnceOnItsThreadBeforeTheFirstEvent) {
  RecordingTask task;
  EXPECT_TRUE(task.Post(5));
  EXPECT_TRUE(WaitFor([&] { return task.Types().size() == 2; }, "the event"));
  EXPECT_THAT(task.Types(), ElementsAre(0, 5));
  EXPECT_EQ(1, task.Creations());
}

TEST(FCTask, GoesOnWhenCreateGivesFalse) {
  RecordingTask task;
  EXPECT_TRUE(task.Post(5, false, true));
  EXPECT_THAT(task.Types(), ElementsAre(0, 5));
}

TEST(FCTask, NamesItsThreadWithFifteenCharacters) {
  RecordingTask task;
  task.Post(5, false, true);
  EXPECT_EQ("RecordingTaskLo", task.ThreadName());
  EXPECT_EQ("RecordingTaskLong", task.GetName());
}

TEST(FCTask, HandlesEventsOneAtATimeInOrder) {
  RecordingTask task;
  for (unsigned int type = 10; type < 15; ++type) {
    task.Post(type);
  }
  task.Post(15, false, true);
  EXPECT_THAT(task.Types(), ElementsAre(0, 10, 11, 12, 13, 14, 15));
}

TEST(FCTask, HandlesAnUrgentEventNext) {
  RecordingTask task;
  task.Post(RecordingTask::HOLD);
  ASSERT_TRUE(WaitFor([&] { return task.IsHeld(); }, "the task in its event"));
  task.Post(5);
  task.Post(6, true);
  task.LetGo();
  task.Post(7, false, true);
  EXPECT_THAT(task.Types(), ElementsAre(0, RecordingTask::HOLD, 6, 5, 7));
}

TEST(FCTask, TakesNoEventWhenItsQueueIsFull) {
  RecordingTask task(2);
  task.Post(RecordingTask::HOLD);
  ASSERT_TRUE(WaitFor([&] { return task.IsHeld(); }, "the task in its event"));
  EXPECT_TRUE(task.Post(5));
  EXPECT_TRUE(task.Post(6));
  EXPECT_FALSE(task.Post(7));
  EXPECT_FALSE(task.Post(7, false, true));
  EXPECT_EQ(2, task.GetQueue()->Size());
}

TEST(FCTask, TakesNoEventWhenItDoesNotRun) {
  FCTask task;
  EXPECT_FALSE(task.Send({task.GetHandler(), 5, nullptr, nullptr}, false, false));
  EXPECT_EQ(0, task.GetQueue()->Size());
  RecordingTask ended;
  EXPECT_TRUE(ended.Destroy());
  EXPECT_FALSE(ended.Post(5));
  EXPECT_FALSE(ended.Post(5, false, true));
}

TEST(FCTask, IsCreatedOnceUntilItIsDestroyed) {
  RecordingTask task;
  EXPECT_FALSE(task.Create("Again", 0, 4));
  EXPECT_EQ("RecordingTaskLong", task.GetName());
  EXPECT_TRUE(task.Destroy());
  EXPECT_TRUE(task.Create("Again", 0, 4));
  EXPECT_TRUE(task.Post(5, false, true));
  EXPECT_EQ("Again", task.ThreadName());
  EXPECT_EQ(2, task.Creations());
}

TEST(FCTask, EndsAfterTheEventInHandAndDropsTheRest) {
  RecordingTask task;
  task.Post(RecordingTask::HOLD);
  ASSERT_TRUE(WaitFor([&] { return task.IsHeld(); }, "the task in its event"));
  task.Post(5);
  std::atomic<bool> ended{false};
  std::thread other([&] {
    EXPECT_TRUE(task.Destroy());
    ended = true;
  });
  // The queue is closed before the thread is joined.
  ASSERT_TRUE(WaitFor([&] { return !task.Post(6); }, "the closed queue"));
  EXPECT_FALSE(ended);
  task.LetGo();
  other.join();
  EXPECT_TRUE(ended);
  EXPECT_THAT(task.Types(), testing::Not(testing::Contains(5U)));
}

TEST(FCTask, IsDestroyedOnce) {
  RecordingTask task;
  EXPECT_TRUE(task.Destroy());
  EXPECT_FALSE(task.Destroy());
}

TEST(FCTask, IsDestroyedByOneOfManyThreads) {
  RecordingTask task;
  std::atomic<int> ended{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] { ended += task.Destroy() ? 1 : 0; });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(1, ended);
}

/// Destroys itself in its first event.
class EndingTask : public FCTask {
 public:
  EndingTask() { Create("Ending", 0, 8); }
  ~EndingTask() override { Destroy(); }
  bool t_OnEvent(const FSEvent*) override {
    ++m_events;
    m_destroyed = Destroy();
    m_sentAfterwards = Send({GetHandler(), 6, nullptr, nullptr}, false, false);
    return true;
  }
  std::atomic<int> m_events{0};
  std::atomic<bool> m_destroyed{true};
  std::atomic<bool> m_sentAfterwards{true};
};

TEST(FCTask, OnItsOwnThreadOnlyAsksForTheEnd) {
  EndingTask task;
  task.Send({task.GetHandler(), 5, nullptr, nullptr}, false, false);
  task.Send({task.GetHandler(), 5, nullptr, nullptr}, false, false);
  ASSERT_TRUE(WaitFor([&] { return task.m_events > 0; }, "the event"));
  EXPECT_TRUE(task.Destroy());
  EXPECT_EQ(1, task.m_events);
  EXPECT_FALSE(task.m_destroyed);
  EXPECT_FALSE(task.m_sentAfterwards);
}

TEST(FCTask, ASynchronousSendWaitsUntilTheEventWasHandled) {
  RecordingTask task;
  task.Post(RecordingTask::HOLD);
  ASSERT_TRUE(WaitFor([&] { return task.IsHeld(); }, "the task in its event"));
  std::atomic<bool> sent{false};
  std::thread sender([&] {
    EXPECT_TRUE(task.Post(5, false, true));
    sent = true;
  });
  ASSERT_TRUE(WaitFor([&] { return task.GetQueue()->Size() == 1; }, "the waiting event"));
  EXPECT_FALSE(sent);
  task.LetGo();
  sender.join();
  EXPECT_THAT(task.Types(), ElementsAre(0, RecordingTask::HOLD, 5));
}

TEST(FCTask, ASynchronousSendFailsWhenItsEventIsDropped) {
  RecordingTask task;
  task.Post(RecordingTask::HOLD);
  ASSERT_TRUE(WaitFor([&] { return task.IsHeld(); }, "the task in its event"));
  std::thread sender([&] { EXPECT_FALSE(task.Post(5, false, true)); });
  ASSERT_TRUE(WaitFor([&] { return task.GetQueue()->Size() == 1; }, "the waiting event"));
  task.t_PurgeEvents();
  sender.join();
  EXPECT_EQ(0, task.GetQueue()->Size());
  std::thread second([&] { EXPECT_FALSE(task.Post(5, false, true)); });
  ASSERT_TRUE(WaitFor([&] { return task.GetQueue()->Size() == 1; }, "the waiting event"));
  task.GetQueue()->Close();
  second.join();
}

/// Sends a synchronous event to itself, which would block forever.
class SelfishTask : public FCTask {
 public:
  SelfishTask() { Create("Selfish", 0, 8); }
  ~SelfishTask() override { Destroy(); }
  bool t_OnEvent(const FSEvent*) override {
    m_sent = Send({GetHandler(), 6, nullptr, nullptr}, false, true);
    return true;
  }
  std::atomic<bool> m_sent{true};
};

TEST(FCTask, ASynchronousSendOnTheOwnThreadFails) {
  SelfishTask task;
  EXPECT_TRUE(task.Send({task.GetHandler(), 5, nullptr, nullptr}, false, true));
  EXPECT_FALSE(task.m_sent);
}

/// Counts its suspensions; refuses to resume.
class SuspendableTask : public FCTask {
 public:
  int m_suspended = 0;
  int m_resumed = 0;

 protected:
  void t_OnSuspend() override { ++m_suspended; }
  void t_OnResume() override { ++m_resumed; }
  bool t_CanResume() override { return false; }
};

TEST(FCTask, ConsumesTheFrameworksOwnEvents) {
  SuspendableTask task;
  FSEvent event;
  event.type = framework::EVENT_SUSPEND;
  EXPECT_TRUE(task.t_OnEvent(&event));
  event.type = framework::EVENT_RESUME;
  EXPECT_TRUE(task.t_OnEvent(&event));
  event.type = 1000;
  EXPECT_FALSE(task.t_OnEvent(&event));
  EXPECT_EQ(1, task.m_suspended);
  EXPECT_EQ(0, task.m_resumed);
}

TEST(FCTask, StandsInTheTaskListWhileItRuns) {
  FCList list;
  ASSERT_TRUE(list.Create());
  FCTaskList::m_pTaskList = &list;
  {
    RecordingTask task;
    EXPECT_EQ(1U, list.Size());
  }
  EXPECT_EQ(0U, list.Size());
  FCTaskList::m_pTaskList = nullptr;
  EXPECT_TRUE(list.Destroy());
}

TEST(FCTask, TakesANullNameAndANegativeQueueSize) {
  FCTask task;
  EXPECT_TRUE(task.Create(nullptr, 0, -1));
  EXPECT_EQ("", task.GetName());
  EXPECT_FALSE(task.Send({task.GetHandler(), 5, nullptr, nullptr}, false, false));
}

}  // namespace
