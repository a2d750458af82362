// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "call/call.h"

#include <utility>

namespace platform {

std::optional<int> Call::TakeFault(int usualFailure) {
  return m_backend == nullptr ? std::nullopt : m_backend->TakeFault(m_record.name, usualFailure);
}

void Call::OnException(const std::exception& exception) {
  if (m_backend == nullptr) {
    throw;
  }
  m_backend->OnException(m_record.name, exception);
}

void Call::End(const Value& result) {
  if (Sink* sink = std::exchange(m_sink, nullptr)) {
    sink->End(m_record, result);
  }
}

}  // namespace platform
