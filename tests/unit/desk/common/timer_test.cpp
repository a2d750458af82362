// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/timer.h"

#include <glib.h>
#include <gtest/gtest.h>

#include <memory>

namespace desk {
namespace {

// Runs the main loop until the condition holds; false after ten seconds.
template <typename Condition>
bool RunUntil(Condition condition) {
  bool late = false;
  const guint limit = g_timeout_add_seconds(
      10,
      [](gpointer data) -> gboolean {
        *static_cast<bool*>(data) = true;
        return G_SOURCE_CONTINUE;
      },
      &late);
  while (!late && !condition()) {
    g_main_context_iteration(nullptr, TRUE);
  }
  g_source_remove(limit);
  return condition();
}

TEST(Timer, CallsItsFunctionOnce) {
  int calls = 0;
  int marks = 0;
  Timer timer;
  Timer mark;
  timer.Set(1, [&] { ++calls; });
  EXPECT_TRUE(timer.IsSet());
  mark.Set(50, [&] { ++marks; });
  ASSERT_TRUE(RunUntil([&] { return marks == 1; }));
  EXPECT_EQ(calls, 1);
  EXPECT_FALSE(timer.IsSet());
}

TEST(Timer, MayBeDestroyedByItsOwnFunction) {
  auto held = std::make_shared<int>(1);
  const std::weak_ptr<int> watched = held;
  auto timer = std::make_unique<Timer>();
  bool aliveAfterwards = false;
  timer->Set(1, [&timer, &aliveAfterwards, held = std::move(held)] {
    timer.reset();
    aliveAfterwards = *held == 1;  // the function's captures outlive the timer
  });
  ASSERT_TRUE(RunUntil([&] { return timer == nullptr && watched.expired(); }));
  EXPECT_TRUE(aliveAfterwards);
}

TEST(Timer, MayBeSetAgainByItsOwnFunction) {
  int calls = 0;
  Timer timer;
  std::function<void()> again = [&] {
    if (++calls < 3) {
      timer.Set(1, again);
    }
  };
  timer.Set(1, again);
  ASSERT_TRUE(RunUntil([&] { return calls == 3; }));
  EXPECT_FALSE(timer.IsSet());
}

TEST(Timer, IsNotCalledAfterItWasStoppedOrDestroyed) {
  int calls = 0;
  int marks = 0;
  Timer stopped;
  auto destroyed = std::make_unique<Timer>();
  Timer mark;
  stopped.Set(1, [&] { ++calls; });
  destroyed->Set(1, [&] { ++calls; });
  mark.Set(50, [&] { ++marks; });
  stopped.Stop();
  destroyed.reset();
  ASSERT_TRUE(RunUntil([&] { return marks == 1; }));
  EXPECT_EQ(calls, 0);
  EXPECT_FALSE(stopped.IsSet());
}

TEST(Timer, ASecondSettingReplacesTheFirst) {
  int first = 0;
  int second = 0;
  Timer timer;
  timer.Set(1, [&] { ++first; });
  timer.Set(2, [&] { ++second; });
  ASSERT_TRUE(RunUntil([&] { return second == 1; }));
  EXPECT_EQ(first, 0);
}

}  // namespace
}  // namespace desk
