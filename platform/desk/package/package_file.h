// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "desk/package/manifest.h"

namespace desk {

struct PackageEntry {
  std::string name;  ///< clean: relative, without "." and ".."
  bool directory = false;
  bool executable = false;
  std::uint64_t size = 0;
};

/// A package archive that has passed every check that is possible without unpacking it.
struct PackageFile {
  PackageManifest manifest;
  std::vector<PackageEntry> entries;  ///< in the archive's order
  std::uint64_t bytes = 0;            ///< unpacked
};

/// The most that an archive may contain.
struct PackageLimits {
  std::size_t entries = 100'000;
  std::uint64_t bytes = std::uint64_t{8} << 30;
  std::uint64_t configBytes = std::uint64_t{8} << 20;
};

/// Reads the archive's directory and its config.xml, and resolves start pages.
///
/// Throws PackageError when the file is not a zip archive; when an entry's name is absolute, leads
/// out of the package or occurs twice; when an entry is a link or a special file; when there are
/// too many entries or too many bytes; when config.xml is missing or ParseConfig refuses it; when a
/// service's program or a UI application's start page is missing. Changes nothing. Callable from
/// any thread.
PackageFile ReadPackage(const std::string& path, const PackageLimits& limits = PackageLimits());

/// True for an image (*.tmg) in the archive's root.
bool IsImage(const PackageEntry& entry);

/// Unpacks what ReadPackage has checked into an existing empty directory: images to res/,
/// everything else to res/wgt/. `progress` is called with rising percentages from 0 to 100; an
/// exception that it throws ends the unpacking. Throws PackageError, also when the file has changed
/// since ReadPackage. What was written until then is left behind.
void UnpackPackage(const std::string& path, const PackageFile& package,
                   const std::string& directory, const std::function<void(int)>& progress);

/// The same for the wanted entries alone.
void UnpackEntries(const std::string& path, const PackageFile& package,
                   const std::string& directory,
                   const std::function<bool(const PackageEntry&)>& wanted);

}  // namespace desk
