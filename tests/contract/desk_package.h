// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "contract_control.h"

namespace contract {

/// Packs an archive that the desk can install. Its services are scripts that wait for a signal.
void WritePackage(const std::string& path, const Package& package);

}  // namespace contract
