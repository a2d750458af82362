// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

/// What a backend may see and decide of the calls into the framework.
namespace framework {

/// Functions that run within the calls, on the caller's thread and without a lock of the framework.
/// The names are "FCTask::Create", "FCTask::Send", "FCTask::Destroy", "FCStateAlarm::Create",
/// "FCStateAlarm::Destroy", "FCTaskList::FlagInitialize", "FCList::Create", "FCList::Destroy",
/// "FCSyncDet::Create" and "FCSyncDet::Destroy".
struct Hooks {
  /// At the beginning of a call. The number that it gives comes back in `end`.
  unsigned long (*begin)(const char* call, const std::vector<std::string>& args);
  /// True when the call shall fail: it does nothing and returns *result, a bool as *result > 0.
  bool (*fails)(const char* call, int* result);
  void (*end)(unsigned long number, const std::string& result);
};

/// Null takes the hooks away, as at the start of a process. The structure must live until the
/// process ends, and so must all three functions.
void SetHooks(const Hooks* hooks);
const Hooks* GetHooks();

}  // namespace framework
