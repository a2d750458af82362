// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

/// The channel framework.
namespace fake {

struct ChannelRequest {
  std::string operation;  ///< "CreateAppInfo", "UpdateAppInfo" or "RemoveAppInfo"
  std::string record;     ///< the text as it came
  bool accepted = false;
};

/// Every request, accepted or refused, in order. One is refused by a fault, by ill-formed JSON, and
/// when it updates or removes what is not there.
std::vector<ChannelRequest> ChannelRequests();
void ClearChannelRequests();
/// The records held now, by their member "pkg_id", in the order of their creation. A create for a
/// package that is there replaces its record.
std::vector<std::string> Channels();
/// Puts a record there without a request.
void AddChannel(const std::string& record);

/// While absent FCAPI::GetOrvAppInfoAPI() gives null.
void SetChannelFrameworkPresent(bool present);

}  // namespace fake
