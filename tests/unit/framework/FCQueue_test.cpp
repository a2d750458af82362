// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <FCQueue.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

using testing::ElementsAre;

class Receiver : public FCHandler {
 public:
  bool t_OnEvent(const FSEvent*) override { return true; }
  bool Destroy() override { return true; }
};

FSEvent Event(unsigned int type, FCHandler* pReceiver = nullptr) {
  return {pReceiver, type, nullptr, nullptr};
}

std::vector<unsigned int> PopAll(FCQueue& queue) {
  std::vector<unsigned int> types;
  FSEvent event;
  while (queue.Size() > 0 && queue.Pop(event)) {
    types.push_back(event.type);
  }
  return types;
}

TEST(FCQueue, GivesEventsInTheOrderInWhichTheyCame) {
  FCQueue queue(8);
  for (unsigned int type = 1; type <= 3; ++type) {
    EXPECT_TRUE(queue.Push(Event(type), false));
  }
  EXPECT_EQ(3, queue.Size());
  EXPECT_THAT(PopAll(queue), ElementsAre(1, 2, 3));
}

TEST(FCQueue, GivesAnUrgentEventFirst) {
  FCQueue queue(8);
  queue.Push(Event(1), false);
  queue.Push(Event(2), true);
  queue.Push(Event(3), true);
  EXPECT_THAT(PopAll(queue), ElementsAre(3, 2, 1));
}

TEST(FCQueue, CopiesTheWholeEvent) {
  FCQueue queue(8);
  Receiver receiver;
  int first = 0;
  int second = 0;
  queue.Push({&receiver, 7, &first, &second}, false);
  FSEvent event;
  ASSERT_TRUE(queue.Pop(event));
  EXPECT_EQ(&receiver, event.pReceiver);
  EXPECT_EQ(7U, event.type);
  EXPECT_EQ(&first, event.P0);
  EXPECT_EQ(&second, event.P1);
}

TEST(FCQueue, TakesNoMoreThanItsCapacity) {
  FCQueue queue(3);
  EXPECT_TRUE(queue.Push(Event(1), false));
  EXPECT_TRUE(queue.Push(Event(2), false));
  EXPECT_TRUE(queue.Push(Event(3), false));
  EXPECT_FALSE(queue.Push(Event(4), false));
  EXPECT_FALSE(queue.Push(Event(4), true));
  EXPECT_EQ(3, queue.Size());
  FSEvent event;
  queue.Pop(event);
  EXPECT_TRUE(queue.Push(Event(5), false));
  EXPECT_THAT(PopAll(queue), ElementsAre(2, 3, 5));
}

TEST(FCQueue, OfNoCapacityTakesNothing) {
  FCQueue queue(0);
  EXPECT_FALSE(queue.Push(Event(1), false));
  EXPECT_FALSE(queue.Push(Event(1), true));
}

TEST(FCQueue, KeepsItsOrderWhileItGrows) {
  FCQueue queue(0x2000);
  std::vector<unsigned int> expected;
  FSEvent event;
  // Moves the head away from slot 0 first, so that the ring wraps around when it grows.
  for (unsigned int type = 0; type < 40; ++type) {
    queue.Push(Event(type), false);
    queue.Pop(event);
  }
  for (unsigned int type = 0; type < 0x2000; ++type) {
    ASSERT_TRUE(queue.Push(Event(type), false));
    expected.push_back(type);
  }
  EXPECT_FALSE(queue.Push(Event(1), false));
  EXPECT_EQ(expected, PopAll(queue));
}

TEST(FCQueue, DropsTheEventsOfOneReceiver) {
  FCQueue queue(8);
  Receiver one;
  Receiver two;
  queue.Push(Event(1, &one), false);
  queue.Push(Event(2, &two), false);
  queue.Push(Event(3, &one), false);
  queue.Push(Event(4, &two), false);
  EXPECT_EQ(2, FCQueue::Delete(&queue, &one));
  EXPECT_EQ(0, FCQueue::Delete(&queue, &one));
  EXPECT_EQ(0, FCQueue::Delete(nullptr, &one));
  EXPECT_THAT(PopAll(queue), ElementsAre(2, 4));
}

TEST(FCQueue, LetsNothingInOrOutWhenClosed) {
  FCQueue queue(8);
  queue.Push(Event(1), false);
  queue.Close();
  FSEvent event = Event(9);
  EXPECT_FALSE(queue.Pop(event));
  EXPECT_EQ(9U, event.type);
  EXPECT_FALSE(queue.Push(Event(2), false));
  EXPECT_EQ(0, queue.Size());
}

TEST(FCQueue, WakesItsReaderWhenItIsClosed) {
  FCQueue queue(8);
  std::atomic<int> popped{-1};
  std::thread reader([&] {
    FSEvent event;
    popped = queue.Pop(event) ? 1 : 0;
  });
  queue.Close();
  reader.join();
  EXPECT_EQ(0, popped);
}

TEST(FCQueue, LosesNothingBetweenManyWritersAndAReader) {
  constexpr unsigned int WRITERS = 4;
  constexpr unsigned int EVENTS = 5000;
  FCQueue queue(64);
  std::vector<std::thread> writers;
  for (unsigned int writer = 0; writer < WRITERS; ++writer) {
    writers.emplace_back([&queue, writer] {
      for (unsigned int i = 0; i < EVENTS; ++i) {
        while (!queue.Push(Event(writer * EVENTS + i), false)) {
          std::this_thread::yield();
        }
      }
    });
  }
  std::vector<unsigned int> next(WRITERS, 0);
  for (unsigned int i = 0; i < WRITERS * EVENTS; ++i) {
    FSEvent event;
    ASSERT_TRUE(queue.Pop(event));
    // The events of each writer arrive in order.
    ASSERT_EQ(next[event.type / EVENTS]++, event.type % EVENTS);
  }
  for (std::thread& writer : writers) {
    writer.join();
  }
  EXPECT_EQ(0, queue.Size());
}

}  // namespace
