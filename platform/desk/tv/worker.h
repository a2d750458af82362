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

/// A thread for work that would block the main loop. Jobs run one at a time, in order, and may call
/// back into the main loop.
class Worker {
 public:
  explicit Worker(const char* name);
  /// On the main loop's thread. Calls Stop().
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  /// Drops the jobs that have not begun and waits for the running one, whose calls of OnMainLoop()
  /// and CheckRunning() throw from now on. On the main loop's thread.
  void Stop();

  /// Callable from any thread. An exception that leaves the job ends the process.
  void Post(std::function<void()> job);

  /// Within a job: runs the function on the default main context, waits for it and rethrows its
  /// exception. Throws DeskError (Failed) when the TV is shutting down.
  void OnMainLoop(std::function<void()> function);

  /// Within a job: throws DeskError (Failed) when the TV is shutting down.
  void CheckRunning();

 private:
  struct Call;

  void Run();
  static int Dispatch(void* call);

  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::deque<std::function<void()>> m_jobs;  ///< guarded by m_mutex
  bool m_stopping = false;                   ///< guarded by m_mutex
  std::shared_ptr<Call> m_call;              ///< guarded by m_mutex; the call in OnMainLoop()
  std::thread m_thread;
};

}  // namespace desk::tv
