// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/syscall.h>
#include <sys/types.h>

#include <fstream>
#include <string>

namespace support {

/// Whether a thread of this process (its gettid()) waits for a lock, that is, is in the futex
/// system call.
inline bool SleepsOnALock(pid_t thread) {
  std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/syscall");
  long number = -1;
  return (file >> number) && number == SYS_futex;
}

}  // namespace support
