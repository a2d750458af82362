// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "call/call.h"

namespace framework {

/// The backend of the calls into the framework. Null, as at the start of a process: they are
/// neither recorded nor failed. Not owned; must live until the process ends. Its functions run on
/// the caller's thread, and no lock of the framework is held when a call begins or takes a fault.
///
/// The calls are "FCTask::Create", "FCTask::Send", "FCTask::Destroy", "FCStateAlarm::Create",
/// "FCStateAlarm::Destroy", "FCTaskList::FlagInitialize", "FCList::Create", "FCList::Destroy",
/// "FCSyncDet::Create" and "FCSyncDet::Destroy". No fault fails the Destroy of a task or an alarm.
void SetBackend(platform::Backend* backend);
platform::Backend* GetBackend();

/// A call into the framework.
class Call : public platform::Call {
 public:
  template <typename... Args>
  explicit Call(const char* name, const Args&... args)
      : platform::Call(GetBackend(), name, args...) {}
};

}  // namespace framework
