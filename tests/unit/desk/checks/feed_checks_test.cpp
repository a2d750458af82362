// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Faults in the image of a feed: real images of the kinds that a TV mounts.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "desk/checks/package_checks.h"
#include "facts.h"
#include "package_maker.h"

namespace desk {
namespace {

using Names = std::vector<std::string>;

class FeedChecks : public ::testing::Test {
 protected:
  /// The image res/pkg.ui.tmg of a feed whose archive the maker creates.
  void MakeImage(const PackageMaker& archive, const std::string& kind = "squashfs") {
    const std::string root = m_directory.Path() + "/root";
    std::filesystem::remove_all(root);
    std::filesystem::create_directories(root);
    archive.Write(root + "/orv_app.zip");
    PackImage(root, kind);
  }

  void PackImage(const std::string& root, const std::string& kind) {
    std::filesystem::create_directories(m_tree + "/res");
    std::filesystem::remove(m_image);
    const std::string command =
        kind == "ext" ? "PATH=$PATH:/usr/sbin mke2fs -q -t ext4 -d " + root + " " + m_image + " 1M"
        : kind == "iso" ? "bsdtar -c --format=iso9660 -f " + m_image + " -C " + root + " ."
                        : "mksquashfs " + root + " " + m_image + " -quiet -no-progress";
    ASSERT_EQ(std::system((command + " >/dev/null 2>&1").c_str()), 0) << command;
  }

  std::vector<Finding> Check(const std::string& channel = "file://channel.json",
                             const std::string& schedule = "file://schedule.json") {
    PackageFacts package = Package({{Key("orv_type/ch_feeder_standard"), "extended"},
                                    {Key("orv_data/channel_data_url"), channel},
                                    {Key("orv_data/schedule_data_url"), schedule}});
    package.images = m_images;
    return CheckFeeds(package, RuleOnPackage(package), m_tree);
  }

  static PackageMaker GoodArchive() {
    return PackageMaker()
        .Add("index.html", "")
        .Add("metadata/channel.json", "{\"channels\": []}")
        .Add("metadata/schedule.json", "[]");
  }

  TemporaryDirectory m_directory;
  const std::string m_tree = m_directory.Path() + "/tree";
  const std::string m_image = m_tree + "/res/pkg.ui.tmg";
  std::vector<std::string> m_images = {"pkg.ui.tmg"};
};

TEST_F(FeedChecks, AGoodFeedHasNoFindingsInAnyKindOfImage) {
  for (const char* kind : {"squashfs", "ext", "iso"}) {
    MakeImage(GoodArchive(), kind);
    EXPECT_EQ(Texts(Check()), Names{}) << kind;
  }
}

TEST_F(FeedChecks, AMissingFileIsReportedInAnyKindOfImage) {
  for (const char* kind : {"squashfs", "ext", "iso"}) {
    MakeImage(PackageMaker().Add("metadata/channel.json", "{}"), kind);
    const auto findings = Check();
    ASSERT_EQ(Ids(findings), Names{"feed-file-missing"}) << kind;
    EXPECT_EQ(findings[0].text,
              "ch_feeder_standard: schedule_data_url names schedule.json, but orv_app.zip of the "
              "image has no metadata/schedule.json.");
  }
}

TEST_F(FeedChecks, AFileOutsideMetadataIsReported) {
  MakeImage(PackageMaker().Add("metadata/channel.json", "{}").Add("data\\schedule.json", "{}"));
  const auto findings = Check();
  ASSERT_EQ(Ids(findings), Names{"feed-file-elsewhere"});
  EXPECT_NE(findings[0].text.find("has it as data/schedule.json"), std::string::npos);
}

TEST_F(FeedChecks, AFileInASubdirectoryIsReported) {
  MakeImage(
      PackageMaker().Add("metadata/channel.json", "{}").Add("metadata/day/schedule.json", "{}"));
  EXPECT_EQ(Ids(Check("file://channel.json", "file://day/schedule.json")),
            Names{"feed-file-nested"});
}

TEST_F(FeedChecks, InvalidJsonIsReportedWithItsLine) {
  MakeImage(PackageMaker()
                .Add("metadata/channel.json", "{\n\"a\": oops}")
                .Add("metadata/schedule.json", ""));
  const auto findings = Check();
  ASSERT_EQ(Ids(findings), (Names{"feed-file-not-json", "feed-file-not-json"}));
  EXPECT_NE(findings[0].text.find("metadata/channel.json"), std::string::npos);
  EXPECT_NE(findings[0].text.find("Line 2"), std::string::npos) << findings[0].text;
  EXPECT_NE(findings[1].text.find("it is empty"), std::string::npos) << findings[1].text;
}

TEST_F(FeedChecks, AnImageWithoutTheArchiveIsReported) {
  const std::string root = m_directory.Path() + "/empty";
  WriteFile(root + "/app.zip", "x");
  for (const char* kind : {"squashfs", "ext", "iso"}) {
    PackImage(root, kind);
    EXPECT_EQ(Ids(Check()), Names{"archive-missing"}) << kind;
  }
}

TEST_F(FeedChecks, ADamagedArchiveIsReported) {
  const std::string root = m_directory.Path() + "/damaged";
  WriteFile(root + "/orv_app.zip", "this is no archive");
  PackImage(root, "squashfs");
  const auto findings = Check();
  ASSERT_EQ(Ids(findings), Names{"archive-damaged"});
  EXPECT_NE(findings[0].text.find("pkg.ui.tmg: it is not a zip archive"), std::string::npos)
      << findings[0].text;
}

TEST_F(FeedChecks, AZipNamedLikeAnImageIsReported) {
  GoodArchive().Write(m_image);
  EXPECT_EQ(Ids(Check()), Names{"image-is-zip"});
}

TEST_F(FeedChecks, AnImageOfNoKnownKindIsReported) {
  WriteFile(m_image, "nothing that can be mounted");
  EXPECT_EQ(Ids(Check()), Names{"image-unknown"});
}

TEST_F(FeedChecks, ADamagedImageIsReported) {
  for (const char* kind : {"squashfs", "ext"}) {
    MakeImage(GoodArchive(), kind);
    // The rest of a small squashfs image is padding.
    std::filesystem::resize_file(m_image, std::string(kind) == "ext" ? 2000 : 120);
    EXPECT_EQ(Ids(Check()), Names{"image-unreadable"}) << kind;
  }
}

TEST_F(FeedChecks, AMissingImageNamesTheOneThatIsThere) {
  m_images = {"feed.tmg"};
  const auto findings = Check();
  ASSERT_EQ(Ids(findings), (Names{"image-unused", "image-missing"}));
  EXPECT_NE(findings[1].text.find("no image pkg.ui.tmg"), std::string::npos);
  EXPECT_NE(findings[1].text.find("in its root, but feed.tmg."), std::string::npos);
}

TEST_F(FeedChecks, AnImageThatNoTypeUnpacksIsReported) {
  PackageFacts package = Package({{Key("orv_type/custom_ui_standard"), "info"}});
  package.images = m_images;
  EXPECT_EQ(Ids(CheckFeeds(package, RuleOnPackage(package), m_tree)), Names{"image-unused"});
}

}  // namespace
}  // namespace desk
