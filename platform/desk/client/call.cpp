// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/client/call.h"

#include <dlog.h>

#include "desk/client/environment.h"
#include "desk/client/faults.h"
#include "desk/client/journal.h"
#include "desk/client/main_loop.h"
#include "framework/backend.h"

namespace desk::client {
namespace {

class ClientBackend : public platform::Backend {
 public:
  platform::Sink* GetSink() override { return m_journal; }
  std::optional<int> TakeFault(const char* call, int usualFailure) override {
    return CheckFault(call, usualFailure);
  }
  void OnException(const char* call, const std::exception& exception) override {
    __dlog_print(LOG_ID_MAIN, DLOG_ERROR, "desk-client", "%s failed: %s", call, exception.what());
  }

 private:
  Journal* const m_journal = Journal::Get();
};

ClientBackend* MakeBackend() {
  auto* backend = new ClientBackend;
  if (!Environment::Get().journal.empty() || !Environment::Get().faults.empty()) {
    framework::SetBackend(backend);
  }
  MainLoop::Get().NoticeFirstRun();
  return backend;
}

}  // namespace

platform::Backend& GetBackend() {
  // Never destroyed: threads may still call while the process ends.
  static ClientBackend* const backend = MakeBackend();
  return *backend;
}

}  // namespace desk::client
