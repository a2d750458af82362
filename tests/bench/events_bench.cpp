// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Events through a task's queue, against a bare mutex, condition variable and deque.
#include <FCTask.h>
#include <benchmark/benchmark.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include "bench/bench_place.h"

namespace {

constexpr unsigned int LAST = 2;
constexpr int BATCH = 4096;  // half of the queue, so that no event is refused

/// Notifies the sender when the last event of a batch was handled.
class Gate {
 public:
  void Open() {
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_open = true;
    }
    m_opened.notify_one();
  }
  void Pass() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_opened.wait(lock, [this] { return m_open; });
    m_open = false;
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_opened;
  bool m_open = false;
};

class CountingTask : public FCTask {
 public:
  CountingTask() { Create("bench", 1000, 0x2000); }
  ~CountingTask() override { Destroy(); }
  bool t_OnEvent(const FSEvent* pEvent) override {
    if (pEvent->type == LAST) {
      m_gate.Open();
    }
    return true;
  }
  Gate m_gate;
};

class BareTask {
 public:
  BareTask() : m_thread([this] { Run(); }) {}
  ~BareTask() {
    Send({nullptr, 0, nullptr, nullptr});
    m_thread.join();
  }
  void Send(const FSEvent& event) {
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_events.push_back(event);
    }
    m_filled.notify_one();
  }
  Gate m_gate;

 private:
  void Run() {
    for (;;) {
      FSEvent event;
      {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_filled.wait(lock, [this] { return !m_events.empty(); });
        event = m_events.front();
        m_events.pop_front();
      }
      if (event.type == 0) {
        return;
      }
      if (event.type == LAST) {
        m_gate.Open();
      }
    }
  }

  std::mutex m_mutex;
  std::condition_variable m_filled;
  std::deque<FSEvent> m_events;
  std::thread m_thread;
};

template <typename Send>
void RunBatches(benchmark::State& state, Gate& gate, const Send& send) {
  for (auto _ : state) {
    FSEvent event;
    event.type = 1;
    for (int i = 1; i < BATCH; ++i) {
      send(event);
    }
    event.type = LAST;
    send(event);
    gate.Pass();
  }
  state.SetItemsProcessed(state.iterations() * BATCH);
}

void EventsDaemon(benchmark::State& state) {
  bench::LeaveTheFakeAside();
  CountingTask task;
  RunBatches(state, task.m_gate, [&task](FSEvent& event) {
    event.pReceiver = &task;
    task.Send(event, false, false);
  });
}

void EventsFloor(benchmark::State& state) {
  BareTask task;
  RunBatches(state, task.m_gate, [&task](const FSEvent& event) { task.Send(event); });
}

BENCHMARK(EventsDaemon)->Name("events/daemon")->UseRealTime();
BENCHMARK(EventsFloor)->Name("events/floor")->UseRealTime();

}  // namespace
