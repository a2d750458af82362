// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace desk::tv {

/// A thread for work that would block the main loop, and the way back from it. Jobs run one at a
/// time, in order.
class Worker {
 public:
  explicit Worker(const char* name);
  /// On the main loop's thread. Jobs that have not begun are dropped; one that runs is waited for,
  /// and its calls of OnMainLoop throw from now on.
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  /// What the destructor does, for an owner that has more to do afterwards.
  void Stop();

  /// Callable from any thread. An exception of the job ends the process: catch within.
  void Post(std::function<void()> job);

  /// From within a job: runs the function on the default main context, waits for it and lets its
  /// exception through. Throws DeskError (Failed) when the TV goes down meanwhile.
  void OnMainLoop(std::function<void()> function);

  /// From within a job: throws DeskError (Failed) when the TV goes down.
  void CheckRunning();

 private:
  struct Call;

  void Run();
  static int Dispatch(void* call);

  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::deque<std::function<void()>> m_jobs;  ///< guarded by m_mutex
  bool m_stopping = false;                   ///< guarded by m_mutex
  std::shared_ptr<Call> m_call;              ///< guarded by m_mutex; the one that is waited for
  std::thread m_thread;
};

}  // namespace desk::tv
