// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "package/manifest.h"

namespace desk {

struct PackageEntry {
  std::string name;  ///< clean: relative, without "." and ".."
  bool directory = false;
  bool executable = false;
  std::uint64_t size = 0;
};

/// A package archive that has passed every check that can be made without unpacking it.
struct PackageFile {
  PackageManifest manifest;
  std::vector<PackageEntry> entries;  ///< in the archive's order
  std::uint64_t bytes = 0;            ///< unpacked
};

/// What an archive may hold at most.
struct PackageLimits {
  std::size_t entries = 100'000;
  std::uint64_t bytes = std::uint64_t{8} << 30;
  std::uint64_t configBytes = std::uint64_t{8} << 20;
};

/// Reads the archive's directory and its config.xml. Throws PackageError when the file is no zip
/// archive, has a name that is absolute, leads out or stands twice, a link or another special file,
/// too many or too large entries, no config.xml or one that ParseConfig refuses, or lacks a file
/// that a service is to run. Changes nothing. Callable from any thread.
PackageFile ReadPackage(const std::string& path, const PackageLimits& limits = PackageLimits());

/// Unpacks what ReadPackage has checked into an existing empty directory: images (*.tmg) of the
/// archive's root to res/, all else to res/wgt/. progress gets percentages from 0 to 100, rising,
/// and may throw to give up. Throws PackageError, also when the file is not any more what was
/// checked; what was written by then stays behind.
void UnpackPackage(const std::string& path, const PackageFile& package,
                   const std::string& directory, const std::function<void(int)>& progress);

}  // namespace desk
