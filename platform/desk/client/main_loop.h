// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>

namespace desk {

/// The main loop of the process: whoever runs GLib's default context. Callable from any thread.
class MainLoop {
 public:
  static MainLoop& Get();

  /// Arranges, once, that the first run of the default context is noticed: it lets WaitForFirstRun
  /// return and, in the daemon's process, tells desk-tv that the daemon is ready.
  void NoticeFirstRun();
  void WaitForFirstRun();

  /// Runs the function there, after what was posted before.
  static void Post(std::function<void()> function);

 private:
  void OnFirstRun();

  std::once_flag m_noticed;
  std::mutex m_mutex;  // guards what follows
  std::condition_variable m_firstRun;
  bool m_running = false;
};

}  // namespace desk
