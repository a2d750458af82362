// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/checks/package_reader.h"

#include <algorithm>
#include <filesystem>

#include "desk/checks/package_checks.h"
#include "desk/package/package_file.h"

namespace desk {
namespace {

PackageFacts FactsOf(const PackageManifest& manifest) {
  PackageFacts facts;
  facts.id = manifest.id;
  facts.version = manifest.version;
  for (const auto& app : manifest.apps) {
    PackageFacts::App entry{app.id, ComponentName(app.component), {}, app.program};
    for (const auto& metadata : app.metadata) {
      entry.metadata.emplace_back(metadata.key, metadata.value);
    }
    facts.apps.push_back(std::move(entry));
  }
  return facts;
}

}  // namespace

ReadablePackage ReadArchive(const std::string& path) {
  const PackageFile file = ReadPackage(path);
  ReadablePackage package;
  package.facts = FactsOf(file.manifest);
  for (const auto& entry : file.entries) {
    if (IsImage(entry)) {
      package.facts.images.push_back(entry.name);
    }
  }
  package.scratch = std::make_unique<ScratchDirectory>();
  package.tree = package.scratch->Path();
  UnpackEntries(path, file, package.tree, [&](const PackageEntry& entry) {
    const auto& apps = package.facts.apps;
    return IsImage(entry) || std::any_of(apps.begin(), apps.end(), [&](const auto& app) {
             return app.component == "service" && app.program == entry.name;
           });
  });
  return package;
}

ReadablePackage ReadInstalled(const Json::Value& info, const std::string& directory) {
  ReadablePackage package;
  PackageFacts& facts = package.facts;
  facts.id = info["id"].asString();
  facts.version = info["version"].asString();
  for (const auto& app : info["apps"]) {
    PackageFacts::App entry{
        app["id"].asString(), app["component"].asString(), {}, app["program"].asString()};
    for (const auto& metadata : app["metadata"]) {
      entry.metadata.emplace_back(metadata["key"].asString(), metadata["value"].asString());
    }
    facts.apps.push_back(std::move(entry));
  }
  package.tree = directory;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(directory + "/res", error)) {
    if (entry.path().extension() == ".tmg") {
      facts.images.push_back(entry.path().filename().string());
    }
  }
  std::sort(facts.images.begin(), facts.images.end());
  return package;
}

std::vector<Finding> CheckPackage(const ReadablePackage& package, const Ruling& ruling) {
  return CheckPackage(package.facts, ruling, package.tree);
}

}  // namespace desk
