// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "tv/timer.h"

#include <glib.h>

#include <utility>

namespace desk::tv {

void Timer::Set(unsigned milliseconds, std::function<void()> function) {
  Stop();
  m_function = std::move(function);
  m_source = g_timeout_add(milliseconds, Fire, this);
}

void Timer::Stop() {
  if (m_source != 0) {
    g_source_remove(m_source);
    m_source = 0;
  }
}

int Timer::Fire(void* self) {
  auto* timer = static_cast<Timer*>(self);
  timer->m_source = 0;
  const std::function<void()> function = std::move(timer->m_function);
  function();
  return G_SOURCE_REMOVE;
}

}  // namespace desk::tv
