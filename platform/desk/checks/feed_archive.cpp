// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/checks/feed_archive.h"

#include <algorithm>
#include <cctype>

#include "desk/common/desk_error.h"
#include "desk/common/json.h"
#include "desk/package/archive.h"

namespace desk {
namespace {

constexpr std::size_t MOST_TEXT = 256UL << 20;

bool IsDirectlyInMetadata(const std::string& name) {
  const std::string directory = "metadata/";
  return name.size() > directory.size() && name.compare(0, directory.size(), directory) == 0 &&
         name.find('/', directory.size()) == std::string::npos;
}

std::string ReadText(ArchiveReader& archive) {
  std::string text;
  char buffer[16384];
  for (std::size_t count = 0; (count = archive.Read(buffer, sizeof buffer)) > 0;) {
    if (text.size() < MOST_TEXT) {
      text.append(buffer, count);
    }
  }
  return text;
}

}  // namespace

FeedArchive ReadFeedArchive(const std::string& path) {
  FeedArchive feed;
  ArchiveReader archive(path);
  for (RawEntry raw; archive.Next(raw);) {
    if (raw.type != RawEntry::Type::File) {
      continue;
    }
    std::string name = raw.name;
    std::replace(name.begin(), name.end(), '\\', '/');
    feed.files.insert(name);
    if (IsDirectlyInMetadata(name)) {
      feed.texts[name] = ReadText(archive);
    }
  }
  return feed;
}

std::string WhyNotJson(const std::string& text) {
  if (text.empty()) {
    return "it is empty";
  }
  try {
    ParseJson(text);
    return {};
  } catch (const DeskError& error) {
    const std::string intro = "not JSON: ";
    std::string line;
    for (const char c : std::string(error.what()).substr(intro.size())) {
      const bool blank = std::isspace(static_cast<unsigned char>(c)) != 0 || c == '*';
      if (!blank) {
        line += c;
      } else if (!line.empty() && line.back() != ' ') {
        line += ' ';
      }
    }
    line.erase(line.find_last_not_of(". ") + 1);
    return line;
  }
}

}  // namespace desk
