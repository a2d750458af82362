// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "client/main_loop.h"

#include <glib.h>

#include <exception>

#include "client/connection.h"
#include "client/environment.h"

namespace desk {

MainLoop& MainLoop::Get() {
  // Never destroyed: the signals' thread waits on it until the process is gone.
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
    // Without a TV there is nobody to tell.
  }
}

void MainLoop::Post(std::function<void()> function) {
  // Not an idle source's own priority: what a desk delivers must not wait for a quiet moment.
  g_idle_add_full(
      G_PRIORITY_DEFAULT,
      [](gpointer data) -> gboolean {
        (*static_cast<std::function<void()>*>(data))();
        return G_SOURCE_REMOVE;
      },
      new std::function<void()>(std::move(function)),
      [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
}

}  // namespace desk
