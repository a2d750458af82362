// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <string>
#include <vector>

#include "desk/common/desk_error.h"

namespace desk {

/// A package that cannot be taken as it is. what() is one line for people: what is wrong, and
/// where.
class PackageError : public DeskError {
 public:
  explicit PackageError(const std::string& message) : DeskError(DeskError::FAILED, message) {}
};

enum class Component { Ui, Service };

/// "ui" or "service".
const char* ComponentName(Component component);

struct Metadata {
  std::string key;
  std::string value;
};

struct PackageApp {
  std::string id;
  Component component = Component::Ui;
  /// Relative to the unpacked archive. Of a service the file to run; of a UI application the start
  /// page, or empty.
  std::string program;
  std::vector<Metadata> metadata;
};

/// What a package says of itself in config.xml.
struct PackageManifest {
  std::string id;
  std::string version;
  std::string label;             ///< may be empty
  std::vector<PackageApp> apps;  ///< in the order of the file, at least one
};

/// Reads config.xml. Elements are known by their namespace, whatever the prefix. Metadata inside a
/// service or an application belongs to that one; metadata under the widget belongs to every UI
/// application, or to every service where the package has no UI application.
///
/// Throws PackageError. A document type declaration is refused before anything in it is read, so no
/// entity is ever expanded and no other file is opened. Callable from any thread.
PackageManifest ParseConfig(const std::string& xml);

/// The form of `pkg.info`, without `found` and `path`.
Json::Value ToJson(const PackageManifest& manifest);
Json::Value ToJson(const std::vector<Metadata>& metadata);

/// True for a start page that is a URL instead of a file of the package.
bool IsRemotePage(const std::string& page);

/// 1 to 64 letters, digits, "_" and "-": usable as a directory's name as it stands.
bool IsPackageId(const std::string& text);

/// What stands before the first ".", or the whole text.
std::string PackageOfApp(const std::string& appId);

/// A relative name without "." and doubled separators. Throws PackageError for an absolute name,
/// one that leaves its directory, a name too long for a file system, and characters that people
/// cannot see or that other systems take for separators.
std::string CleanRelativeName(const std::string& name);

}  // namespace desk
