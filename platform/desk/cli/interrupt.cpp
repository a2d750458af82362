// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/interrupt.h"

#include <unistd.h>

#include <atomic>

namespace desk::cli {
namespace {

std::atomic<const std::string*> g_line{nullptr};

// Async-signal-safe. SA_RESETHAND has restored the default action, so that the second signal, which
// is delivered on return, ends the program.
void OnInterrupt(int signal) {
  const std::string* line = g_line.load();
  if (line != nullptr) {
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, line->data(), line->size());
  }
  raise(signal);
}

}  // namespace

// The terminal shows ^C where the cursor is, so the text begins on a new line.
InterruptNotice::InterruptNotice(const std::string& text) : m_line("\n" + text + "\n") {
  g_line.store(&m_line);
  sigaction(SIGINT, nullptr, &m_before);
  if (m_before.sa_handler == SIG_IGN) {
    return;
  }
  struct sigaction action {};
  action.sa_handler = OnInterrupt;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  sigaction(SIGINT, &action, nullptr);
}

InterruptNotice::~InterruptNotice() {
  sigaction(SIGINT, &m_before, nullptr);
  g_line.store(nullptr);
}

}  // namespace desk::cli
