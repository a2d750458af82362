// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace desk {

/// The names on a desk's private bus: see docs/desk-protocol.md.
constexpr const char* BUS_NAME = "org.tvdesk.Television1";  ///< also of the interface
constexpr const char* BUS_PATH = "/org/tvdesk/Television1";
constexpr const char* BUS_CALL = "Call";
constexpr const char* BUS_EVENT = "Event";
constexpr const char* BUS_ERROR_PREFIX = "org.tvdesk.Error.";

}  // namespace desk
