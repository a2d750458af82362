// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <bundle.h>

#include <string>
#include <utility>
#include <vector>

/// Message ports and their messages.
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

/// Calls the callback of the local port on the calling thread. The sender's reply port exists from
/// then on, so a reply reaches it. False when the local port is not registered.
bool SendMessage(const Incoming& incoming);

struct Outgoing {
  std::string app;
  std::string port;
  std::vector<BundleEntry> message;
  int localPort = 0;  ///< 0 when the sender named none
  int result = 0;
};

/// Every message that was sent, also to a port that does not exist, in order. A null app or port is
/// the text "null".
std::vector<Outgoing> SentMessages();
void ClearSentMessages();

void AddRemotePort(const std::string& app, const std::string& port);
/// The names of the registered local ports, in the order of their ids.
std::vector<std::string> LocalPorts();

}  // namespace fake
