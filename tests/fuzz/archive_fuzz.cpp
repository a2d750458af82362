// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// "orv_app.zip" of an image, from the install of its data to its removal.
#include "fake/control/fake.h"
#include "fuzz/daemon_world.h"
#include "fuzz/harness.h"
#include "support/files.h"
#include "utils/PackagedData.h"

namespace {

std::string g_archive;

int MountArchive(const fake::Mount& mount) {
  support::WriteFile(mount.directory + "/orv_app.zip", g_archive);
  return 0;
}

}  // namespace

void fuzz::SetUp() {
  MakeWorld();
  fake::SetMountHandler(MountArchive);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr int ALL = PACKAGED_TYPE_HBBTV_APP | PACKAGED_TYPE_META_DATA;
  const std::string type = "ch_feeder_standard";
  g_archive = fuzz::Text(data, size);
  fuzz::Contain([&] {
    FileSystemUtils::InstallPackagedData("fuzzpackag", "fuzzpackag.App", type, ALL, false);
    // The tree exists: adds another type, whatever list of types the archive contains.
    FileSystemUtils::InstallPackagedData("fuzzpackag", "fuzzpackag.App", "ch_feeder_custom",
                                         PACKAGED_TYPE_HBBTV_APP, false);
  });
  fuzz::Contain([&] { FileSystemUtils::UninstallPackagedData("fuzzpackag", type, ALL); });
  fuzz::Contain([&] {
    FileSystemUtils::UninstallPackagedData("fuzzpackag", "ch_feeder_custom",
                                           PACKAGED_TYPE_HBBTV_APP);
  });
  fuzz::ForgetInput();
  return 0;
}
