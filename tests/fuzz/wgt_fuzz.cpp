// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// A package's archive, checked and unpacked. Nothing may be written outside its directory.
#include <filesystem>

#include "desk/package/package_file.h"
#include "fuzz/harness.h"
#include "support/files.h"

namespace {

namespace fs = std::filesystem;

const char ARCHIVE[] = "/home/owner/package.wgt";
const char DIRECTORY[] = "/home/owner/around/package";

std::size_t EntriesOf(const std::string& directory) {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(directory), fs::directory_iterator()));
}

}  // namespace

void fuzz::SetUp() {}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  desk::PackageLimits limits;
  limits.entries = 100;
  limits.bytes = 1 << 20;
  support::WriteFile(ARCHIVE, fuzz::Text(data, size));
  support::MakeDirectories(DIRECTORY);
  try {
    const desk::PackageFile package = desk::ReadPackage(ARCHIVE, limits);
    int last = 0;
    desk::UnpackPackage(ARCHIVE, package, DIRECTORY, [&last](int percent) {
      fuzz::Require(percent >= last && percent <= 100, "progress rises to 100");
      last = percent;
    });
  } catch (const desk::PackageError&) {
    // The error is one line for the user.
  }
  fuzz::Require(EntriesOf("/home/owner") == 2 && EntriesOf("/home/owner/around") == 1,
                "all lies in the package's directory");
  fs::remove_all("/home/owner/around");
  return 0;
}
