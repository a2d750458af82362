// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/client/faults.h"

#include "desk/client/environment.h"
#include "desk/common/desk_error.h"
#include "desk/common/faults.h"

namespace desk::client {
namespace {

// Without a usable table the daemon works, and no call fails.
FaultTable* Open() {
  const std::string& path = Environment::Get().faults;
  if (path.empty()) {
    return nullptr;
  }
  try {
    return new FaultTable(path, false);
  } catch (const DeskError&) {
    return nullptr;
  }
}

}  // namespace

std::optional<int> CheckFault(const char* call, int usualFailure) {
  // Never destroyed: threads may still call while the process ends.
  static FaultTable* const table = Open();
  return table == nullptr ? std::nullopt : table->Check(call, usualFailure);
}

}  // namespace desk::client
