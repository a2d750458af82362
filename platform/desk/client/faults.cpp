// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "client/faults.h"

#include "client/environment.h"
#include "common/desk_error.h"
#include "common/faults.h"

namespace desk {
namespace {

// A table that cannot be mapped is no table: the daemon works as it would without a desk's orders.
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

}  // namespace desk
