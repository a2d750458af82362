// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/timer.h"

#include <glib.h>

#include <utility>

namespace desk {
namespace {

// Belongs to the GLib source, so that it outlives a timer that its own function destroys.
struct Expiry {
  unsigned* source;  ///< of the timer; not to be used once the function has begun
  std::function<void()> function;
};

}  // namespace

void Timer::Set(unsigned milliseconds, std::function<void()> function) {
  Stop();
  m_source = g_timeout_add_full(
      G_PRIORITY_DEFAULT, milliseconds,
      [](gpointer data) -> gboolean {
        const auto* expiry = static_cast<Expiry*>(data);
        *expiry->source = 0;
        expiry->function();
        return G_SOURCE_REMOVE;
      },
      new Expiry{&m_source, std::move(function)},
      [](gpointer data) { delete static_cast<Expiry*>(data); });
}

void Timer::Stop() {
  if (m_source != 0) {
    g_source_remove(std::exchange(m_source, 0));
  }
}

}  // namespace desk
