// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/checks/package_reader.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "facts.h"
#include "package_maker.h"

namespace desk {
namespace {

PackageMaker Feed() {
  PackageMaker maker;
  maker
      .AddConfig("reader0001", "1.2",
                 MetadataElement(Key("orv_type/ch_feeder_standard"), "extended") +
                     Service("reader0001.S", "bin/feed"))
      .Add("index.html", "")
      .Add("bin/feed", "#!/bin/sh\r\n")
      .Add("reader0001.App.tmg", "no image");
  return maker;
}

TEST(PackageReader, AnArchiveIsReadWithItsImagesAndPrograms) {
  TemporaryDirectory directory;
  Feed().Write(directory.Path() + "/a.wgt");
  std::string tree;
  {
    const ReadablePackage package = ReadArchive(directory.Path() + "/a.wgt");
    tree = package.tree;
    EXPECT_EQ(package.facts.id, "reader0001");
    EXPECT_EQ(package.facts.images, std::vector<std::string>{"reader0001.App.tmg"});
    EXPECT_EQ(ListTree(tree),
              (std::vector<std::string>{"res/", "res/reader0001.App.tmg", "res/wgt/",
                                        "res/wgt/bin/", "res/wgt/bin/feed"}));
  }
  EXPECT_FALSE(std::filesystem::exists(tree));
}

TEST(PackageReader, TheSameFindingsComeFromAnArchiveAndAnInstalledPackage) {
  TemporaryDirectory directory;
  Feed().Write(directory.Path() + "/a.wgt");
  const ReadablePackage archive = ReadArchive(directory.Path() + "/a.wgt");
  const auto fromArchive = Ids(CheckPackage(archive, RuleOnPackage(archive.facts)));
  EXPECT_EQ(fromArchive, (std::vector<std::string>{"no-feed-url", "no-feed-url", "image-unknown",
                                                   "service-cannot-run"}));
  Json::Value info;
  info["id"] = "reader0001";
  info["version"] = "1.2";
  for (const auto& app : archive.facts.apps) {
    Json::Value& item = info["apps"].append(Json::objectValue);
    item["id"] = app.id;
    item["component"] = app.component;
    item["program"] = app.program;
    for (const auto& entry : app.metadata) {
      Json::Value& metadata = item["metadata"].append(Json::objectValue);
      metadata["key"] = entry.first;
      metadata["value"] = entry.second;
    }
  }
  const ReadablePackage installed = ReadInstalled(info, archive.tree);
  EXPECT_EQ(Ids(CheckPackage(installed, RuleOnPackage(installed.facts))), fromArchive);
}

}  // namespace
}  // namespace desk
