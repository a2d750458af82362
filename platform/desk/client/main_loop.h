// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>

namespace desk::client {

/// The main loop of the process, which runs GLib's default context. Callable from any thread.
class MainLoop {
 public:
  static MainLoop& Get();

  /// Makes the first run of the default context release WaitForFirstRun() and, in the daemon's
  /// process, report to desk-tv that the daemon is ready. Only the first call has an effect.
  void NoticeFirstRun();
  void WaitForFirstRun();

  /// Runs the function on the main loop, after the functions that were posted before.
  static void Post(std::function<void()> function);

 private:
  void OnFirstRun();

  std::once_flag m_noticed;
  std::mutex m_mutex;  // guards the following members
  std::condition_variable m_firstRun;
  bool m_running = false;
};

}  // namespace desk::client
