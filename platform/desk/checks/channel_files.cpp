// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/checks/channel_files.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "desk/checks/feed_archive.h"
#include "desk/checks/metadata_rules.h"

namespace desk {

std::string StateOfFeed(const DeskPaths& paths, const std::string& url) {
  const std::string scheme = SchemeOf(url);
  if (url.empty()) {
    return "no URL";
  }
  if (scheme == "http" || scheme == "https") {
    return "web";
  }
  if (scheme != "file") {
    return "not a file or web URL";
  }
  const std::string path = url.substr(scheme.size() + 1);
  std::error_code error;
  for (const std::string& place : {path, paths.Root() + path}) {
    if (std::filesystem::is_regular_file(place, error)) {
      std::ifstream file(place, std::ios::binary);
      const std::string why = WhyNotJson({std::istreambuf_iterator<char>(file), {}});
      return why.empty() ? "ok" : "not JSON: " + why;
    }
  }
  return "missing";
}

}  // namespace desk
