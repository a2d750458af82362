// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <bundle.h>

#include <string>
#include <utility>
#include <vector>

/// Message ports and the bundles that go through them.
namespace fake {

struct BundleEntry {
  std::string key;
  int type = BUNDLE_TYPE_STR;
  /// One text for a string or bytes, one each for an array of strings.
  std::vector<std::string> values;
};

/// Entries of strings, the usual case.
std::vector<BundleEntry> Strings(const std::vector<std::pair<std::string, std::string>>& entries);
std::vector<BundleEntry> Entries(bundle* bundle);

struct Incoming {
  std::string port;                 ///< the receiver's local port
  const char* app = nullptr;        ///< the sender; may be null
  const char* replyPort = nullptr;  ///< null when the sender named none
  bool trusted = false;
  std::vector<BundleEntry> message;
};

/// Calls the callback of the local port on the calling thread. The sender's app and reply port
/// count as registered from now on, so an answer reaches them. False when nobody registered the
/// port.
bool SendMessage(const Incoming& incoming);

struct Outgoing {
  std::string app;
  std::string port;
  std::vector<BundleEntry> message;
  int localPort = 0;  ///< 0 when the sender named none
  int result = 0;
};

/// Every message that was sent, also those that found no port, in order. One with a null app or
/// port has the text "null" there.
std::vector<Outgoing> SentMessages();
void ClearSentMessages();

void AddRemotePort(const std::string& app, const std::string& port);
void RemoveRemotePort(const std::string& app, const std::string& port);
/// Names of the local ports that are registered, in the order of their ids.
std::vector<std::string> LocalPorts();

}  // namespace fake
