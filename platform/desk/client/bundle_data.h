// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <bundle.h>
#include <json/value.h>

#include <memory>
#include <string>
#include <vector>

/// One value of a bundle: see bundle.h.
struct keyval_t {
  std::string key;
  int type = BUNDLE_TYPE_NONE;
  std::string bytes;               ///< of a string, without its terminator, or of a byte value
  std::vector<std::string> array;  ///< of the array types
};

struct _bundle_t {
  std::vector<std::unique_ptr<keyval_t>> entries;  ///< in the order of insertion
};

namespace desk::client {

/// False, and nothing is added, when the key exists.
bool AddEntry(bundle& target, keyval_t entry);

/// The member "bundle" of the message-port methods and events. ReadBundle throws Json::Exception
/// for anything else; it skips an entry whose key exists.
Json::Value FormatBundle(const bundle& source);
bundle ReadBundle(const Json::Value& value);

}  // namespace desk::client
