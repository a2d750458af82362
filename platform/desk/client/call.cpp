// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "client/call.h"

#include <dlog.h>

#include "client/faults.h"
#include "client/framework_hooks.h"
#include "client/main_loop.h"

namespace desk {

Call::Call(const char* name, Tag) : m_journal(Journal::Get()) {
  HookFramework();
  MainLoop::Get().NoticeFirstRun();
  m_entry.call = name;
  m_entry.result = "null";
  if (m_journal != nullptr) {
    m_journal->Begin(m_entry);
  }
}

Call::~Call() {
  if (m_journal != nullptr) {
    m_journal->Write(m_entry);
  }
}

std::optional<int> Call::Fault(int usualFailure) {
  return CheckFault(m_entry.call, usualFailure);
}

void Call::LogFailure(const std::exception& failure) {
  __dlog_print(LOG_ID_MAIN, DLOG_ERROR, "desk-client", "%s failed: %s", m_entry.call,
               failure.what());
}

}  // namespace desk
