// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

/// The channel framework.
namespace fake {

struct ChannelRequest {
  std::string operation;  ///< "CreateAppInfo", "UpdateAppInfo" or "RemoveAppInfo"
  std::string record;     ///< unchanged
  bool accepted = false;
};

/// Every request, accepted or refused, in order. A request is refused by a fault, for invalid JSON,
/// and when it updates or removes a record that does not exist.
std::vector<ChannelRequest> ChannelRequests();
void ClearChannelRequests();
/// The present records, one per package (member "pkg_id"), in the order of their creation. A second
/// create for a package replaces its record.
std::vector<std::string> Channels();
/// Adds a record without a request.
void AddChannel(const std::string& record);

/// While absent, FCAPI::GetOrvAppInfoAPI() returns null.
void SetChannelFrameworkPresent(bool present);

}  // namespace fake
