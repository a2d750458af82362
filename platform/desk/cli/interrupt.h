// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <csignal>
#include <string>

namespace desk::cli {

/// While an object lives, Ctrl-C prints the text as one line on standard error before it ends this
/// program by SIGINT: the TV continues with what it was asked to do, and the text says how to stop
/// it. Not nested; main thread only. Does nothing when SIGINT is ignored.
class InterruptNotice {
 public:
  explicit InterruptNotice(const std::string& text);
  ~InterruptNotice();
  InterruptNotice(const InterruptNotice&) = delete;
  InterruptNotice& operator=(const InterruptNotice&) = delete;

 private:
  const std::string m_line;
  struct sigaction m_before {};
};

}  // namespace desk::cli
