// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// The manifest of a package.
#include "desk/package/manifest.h"
#include "fuzz/harness.h"

void fuzz::SetUp() {}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) try {
  const desk::PackageManifest manifest = desk::ParseConfig(fuzz::Text(data, size));
  desk::ToJson(manifest);
  fuzz::Require(desk::IsPackageId(manifest.id), "a package has an id");
  fuzz::Require(!manifest.apps.empty(), "a package has an app");
  for (const desk::PackageApp& app : manifest.apps) {
    fuzz::Require(desk::PackageOfApp(app.id) == manifest.id, "an app is of its package");
  }
  return 0;
} catch (const desk::PackageError&) {
  return 0;
}
