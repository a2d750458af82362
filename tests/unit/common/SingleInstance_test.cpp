// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "common/SingleInstance.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

class Counted {
 public:
  static std::atomic<int> s_created;
  static std::atomic<int> s_deleted;

 private:
  friend class SingleInstance<Counted>;
  Counted() { ++s_created; }
  ~Counted() { ++s_deleted; }
};
std::atomic<int> Counted::s_created{0};
std::atomic<int> Counted::s_deleted{0};

TEST(SingleInstance, IsCreatedByTheFirstCallOnly) {
  EXPECT_EQ(Counted::s_created, 0);
  Counted* const instance = SingleInstance<Counted>::Get();
  EXPECT_NE(instance, nullptr);
  EXPECT_EQ(SingleInstance<Counted>::Get(), instance);
  EXPECT_EQ(Counted::s_created, 1);
  EXPECT_EQ(Counted::s_deleted, 0);
}

TEST(SingleInstance, OfSeveralCreatedAtOnceOneStays) {
  constexpr int THREADS = 8;
  std::atomic<int> ready{0};
  std::vector<Counted*> seen(THREADS);
  std::vector<std::thread> threads;
  for (int i = 0; i < THREADS; ++i) {
    threads.emplace_back([&, i] {
      ++ready;
      while (ready < THREADS) {
        std::this_thread::yield();
      }
      seen[static_cast<unsigned>(i)] = SingleInstance<Counted>::Get();
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (Counted* const instance : seen) {
    EXPECT_EQ(instance, seen.front());
  }
  EXPECT_EQ(Counted::s_created - Counted::s_deleted, 1);
}

/// Requests its own instance while it is created, as a second thread might do.
struct Overtaken {
  Overtaken() {
    if (!s_asked) {
      s_asked = true;
      s_ahead = SingleInstance<Overtaken>::Get();
    }
  }
  ~Overtaken() { ++s_deleted; }
  static bool s_asked;
  static Overtaken* s_ahead;
  static int s_deleted;
};
bool Overtaken::s_asked = false;
Overtaken* Overtaken::s_ahead = nullptr;
int Overtaken::s_deleted = 0;

TEST(SingleInstance, IsPublishedOnlyOnceItsConstructorHasEnded) {
  Overtaken* const instance = SingleInstance<Overtaken>::Get();
  EXPECT_EQ(instance, Overtaken::s_ahead);
  EXPECT_EQ(Overtaken::s_deleted, 1);
  EXPECT_EQ(SingleInstance<Overtaken>::Get(), instance);
}

struct Refusing {
  Refusing() {
    if (++s_tries == 1) {
      throw std::runtime_error("not yet");
    }
  }
  static int s_tries;
};
int Refusing::s_tries = 0;

TEST(SingleInstance, AConstructorThatThrowsIsTriedAgain) {
  EXPECT_THROW(SingleInstance<Refusing>::Get(), std::runtime_error);
  EXPECT_NE(SingleInstance<Refusing>::Get(), nullptr);
  SingleInstance<Refusing>::Get();
  EXPECT_EQ(Refusing::s_tries, 2);
}

}  // namespace
