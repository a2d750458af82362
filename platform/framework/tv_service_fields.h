// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>

/// Numbers of the TV service that its backends share: see TVServiceAPI.h.
namespace framework {

constexpr int SERVICE_ID_FIELD = 12;
constexpr int PACKAGE_ID_FIELD = 179;

/// Bytes. A shorter payload of a signal is padded with zeros to this length.
constexpr std::size_t SHORTEST_PAYLOAD = 8;

}  // namespace framework
