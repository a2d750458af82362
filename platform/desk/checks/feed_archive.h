// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <set>
#include <string>

namespace desk {

/// What the archive orv_app.zip of an image contains.
struct FeedArchive {
  std::set<std::string> files;               ///< all names, with slashes
  std::map<std::string, std::string> texts;  ///< of the files directly in metadata/
};

/// Reads an archive from front to back. Blocks; callable from any thread. Throws PackageError when
/// it is not a whole zip archive.
FeedArchive ReadFeedArchive(const std::string& path);

/// Empty when the text is valid JSON, otherwise where and why it is not, on one line.
std::string WhyNotJson(const std::string& text);

}  // namespace desk
