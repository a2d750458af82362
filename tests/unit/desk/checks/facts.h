// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "desk/checks/finding.h"
#include "desk/checks/metadata_rules.h"

namespace desk {

using Entries = std::vector<std::pair<std::string, std::string>>;

inline std::string Key(const std::string& rest) {
  return MetadataPrefix() + rest;
}

/// A package "pkg" with one UI application "pkg.ui" that has the metadata.
inline PackageFacts Package(const Entries& metadata) {
  PackageFacts package;
  package.id = "pkg";
  package.version = "1.0.0";
  package.apps = {{"pkg.ui", "ui", metadata, ""}};
  return package;
}

inline bool Mentions(const std::vector<std::string>& lines, const std::string& text) {
  return std::any_of(lines.begin(), lines.end(),
                     [&](const std::string& line) { return line.find(text) != std::string::npos; });
}

/// "<id>: <text>" of each finding.
inline std::vector<std::string> Texts(const std::vector<Finding>& findings) {
  std::vector<std::string> texts;
  for (const auto& finding : findings) {
    texts.push_back(finding.id + ": " + finding.text + " " + finding.fix);
  }
  return texts;
}

inline std::vector<std::string> Ids(const std::vector<Finding>& findings) {
  std::vector<std::string> ids;
  for (const auto& finding : findings) {
    ids.push_back(finding.id);
  }
  return ids;
}

}  // namespace desk
