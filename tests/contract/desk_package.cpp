// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk_package.h"

#include "support/files.h"

namespace contract {
namespace {

std::string Escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    switch (c) {
      case '<':
        result += "&lt;";
        break;
      case '&':
        result += "&amp;";
        break;
      case '"':
        result += "&quot;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

std::string Metadata(const App& app) {
  std::string elements;
  for (const auto& [key, value] : app.metadata) {
    elements += "<tizen:metadata key=\"" + Escaped(key) + "\" value=\"" + Escaped(value) + "\"/>\n";
  }
  return elements;
}

std::string Element(const Package& package, const App& app) {
  if (app.service) {
    return "<tizen:service id=\"" + app.id + "\">\n<tizen:content src=\"" + app.id + ".sh\"/>\n" +
           Metadata(app) + "</tizen:service>\n";
  }
  return "<tizen:application id=\"" + app.id + "\" package=\"" + package.id +
         "\" required_version=\"4.0\">\n" + Metadata(app) + "</tizen:application>\n";
}

}  // namespace

void WritePackage(const std::string& path, const Package& package) {
  std::string config =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<widget xmlns=\"http://www.w3.org/ns/widgets\" "
      "xmlns:tizen=\"http://tizen.org/ns/widgets\" id=\"http://contract/package\" version=\"" +
      package.version + "\">\n";
  std::vector<support::ZipEntry> entries;
  for (const App& app : package.apps) {
    config += Element(package, app);
    if (app.service) {
      entries.push_back({app.id + ".sh", "#!/bin/sh\nexec sleep 1000\n"});
    }
  }
  entries.push_back({"config.xml", config + "</widget>\n"});
  support::WriteZip(path, entries);
}

}  // namespace contract
