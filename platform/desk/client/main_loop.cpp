// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/client/main_loop.h"

#include <glib.h>

#include <exception>

#include "desk/client/connection.h"
#include "desk/client/environment.h"

namespace desk::client {

MainLoop& MainLoop::Get() {
  // Never destroyed: the thread of the signals may wait for it until the process ends.
  static MainLoop* const loop = new MainLoop;
  return *loop;
}

void MainLoop::NoticeFirstRun() {
  std::call_once(m_noticed, [this] { Post([this] { OnFirstRun(); }); });
}

void MainLoop::WaitForFirstRun() {
  std::unique_lock<std::mutex> lock(m_mutex);
  m_firstRun.wait(lock, [this] { return m_running; });
}

void MainLoop::OnFirstRun() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_running = true;
  }
  m_firstRun.notify_all();
  if (Environment::Get().role != Environment::Role::Daemon) {
    return;
  }
  try {
    Connection::Get().Call("daemon.ready", Request({}));
  } catch (const std::exception&) {
    // Without a TV nothing waits for the report.
  }
}

void MainLoop::Post(std::function<void()> function) {
  // Not the default priority of an idle source: events must not wait until the loop is idle.
  g_idle_add_full(
      G_PRIORITY_DEFAULT,
      [](gpointer data) -> gboolean {
        (*static_cast<std::function<void()>*>(data))();
        return G_SOURCE_REMOVE;
      },
      new std::function<void()>(std::move(function)),
      [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
}

}  // namespace desk::client
