// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <ctime>
#include <mutex>
#include <thread>

#include "fake/control/fake.h"
#include "fake_fixture.h"
#include "support/wait_for.h"

namespace {

using std::chrono::seconds;
using support::WaitFor;

/// One wait of 20 seconds without a predicate, on a new thread.
class Wait {
 public:
  Wait() : m_thread([this] { Run(); }) {}
  ~Wait() { m_thread.join(); }
  Wait(const Wait&) = delete;
  Wait& operator=(const Wait&) = delete;

  void Notify() { m_condition.notify_all(); }
  bool Done() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_done;
  }
  bool TimedOut() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_timedOut;
  }

 private:
  void Run() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_timedOut = m_condition.wait_for(lock, seconds(20)) == std::cv_status::timeout;
    m_done = true;
  }

  std::mutex m_mutex;
  std::condition_variable m_condition;
  bool m_done = false;
  bool m_timedOut = false;
  std::thread m_thread;
};

class Time : public FakeTest {};

TEST_F(Time, StandsWhereItWasSet) {
  fake::SetTime(1000);
  EXPECT_EQ(1000, std::time(nullptr));
  fake::AdvanceTime(720);
  std::time_t now = 0;
  EXPECT_EQ(1720, std::time(&now));
  EXPECT_EQ(1720, now);
  fake::UseRealTime();
  EXPECT_GT(std::time(nullptr), 1000000);
}

class Waits : public FakeTest {};

TEST_F(Waits, TimeOutAtOnce) {
  fake::SetWaits(fake::Waits::TimeOut);
  Wait wait;
  EXPECT_TRUE(WaitFor([&] { return wait.Done(); }, "the end of the wait"));
  EXPECT_TRUE(wait.TimedOut());
}

TEST_F(Waits, WithAPredicateTimeOutAtOnceToo) {
  fake::SetWaits(fake::Waits::TimeOut);
  std::mutex mutex;
  std::condition_variable condition;
  std::unique_lock<std::mutex> lock(mutex);
  EXPECT_FALSE(condition.wait_for(lock, seconds(3600), [] { return false; }));
}

TEST_F(Waits, LastInManualModeUntilANotification) {
  fake::SetWaits(fake::Waits::Manual);
  Wait wait;
  ASSERT_TRUE(WaitFor([] { return fake::WaitingThreads() == 1; }, "the thread in its wait"));
  wait.Notify();
  EXPECT_TRUE(WaitFor([&] { return wait.Done(); }, "the end of the wait"));
  EXPECT_FALSE(wait.TimedOut());
  EXPECT_EQ(0U, fake::WaitingThreads());
}

TEST_F(Waits, LastInManualModeUntilTheTimeHasPassed) {
  fake::SetWaits(fake::Waits::Manual);
  Wait wait;
  ASSERT_TRUE(WaitFor([] { return fake::WaitingThreads() == 1; }, "the thread in its wait"));
  EXPECT_EQ(0U, fake::AdvanceWaits(19999));
  EXPECT_FALSE(wait.Done());
  EXPECT_EQ(1U, fake::AdvanceWaits(1));
  EXPECT_TRUE(WaitFor([&] { return wait.Done(); }, "the end of the wait"));
  EXPECT_TRUE(wait.TimedOut());
}

TEST_F(Waits, OfSeveralThreadsPassTogether) {
  fake::SetWaits(fake::Waits::Manual);
  Wait one;
  Wait two;
  ASSERT_TRUE(WaitFor([] { return fake::WaitingThreads() == 2; }, "both threads in their waits"));
  EXPECT_EQ(2U, fake::AdvanceWaits(20000));
  EXPECT_TRUE(WaitFor([&] { return one.Done() && two.Done(); }, "the ends of the waits"));
  EXPECT_TRUE(one.TimedOut());
  EXPECT_TRUE(two.TimedOut());
}

TEST_F(Waits, AreRealWhenNothingIsSet) {
  std::mutex mutex;
  std::condition_variable condition;
  std::unique_lock<std::mutex> lock(mutex);
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(std::cv_status::timeout, condition.wait_for(lock, std::chrono::milliseconds(5)));
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(5));
}

TEST_F(Waits, AreRealAgainAfterAManualTime) {
  fake::SetWaits(fake::Waits::Manual);
  fake::AdvanceWaits(3600 * 1000);
  const auto manual = std::chrono::steady_clock::now();
  fake::SetWaits(fake::Waits::Real);
  EXPECT_GE(std::chrono::steady_clock::now(), manual);
  std::mutex mutex;
  std::condition_variable condition;
  std::unique_lock<std::mutex> lock(mutex);
  EXPECT_EQ(std::cv_status::timeout, condition.wait_for(lock, std::chrono::milliseconds(5)));
}

}  // namespace
