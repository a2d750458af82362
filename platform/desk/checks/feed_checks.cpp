// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <filesystem>

#include "desk/checks/feed_archive.h"
#include "desk/checks/package_checks.h"
#include "desk/checks/scratch_directory.h"
#include "desk/package/image.h"
#include "desk/package/manifest.h"

namespace desk {
namespace {

constexpr std::size_t INSERT_AT = 6;
const char* const ARCHIVE = "orv_app.zip";

/// The name that a file URL has behind "file://", or an empty text for another URL.
std::string FileOf(const std::string& url) {
  if (SchemeOf(url) != "file" || url.size() <= INSERT_AT || url[INSERT_AT] != '/') {
    return {};
  }
  return url.substr(std::min(url.find_first_not_of('/', INSERT_AT), url.size()));
}

class FeedChecks {
 public:
  FeedChecks(const PackageFacts& package, const Ruling& ruling, const std::string& tree)
      : m_package(package), m_ruling(ruling), m_tree(tree) {}

  std::vector<Finding> Run() {
    const auto& layers = m_ruling.layers;
    const auto user = std::find_if(layers.begin(), layers.end(),
                                   [](const Layer& layer) { return PackagedDataOf(layer) != 0; });
    const std::string used = user == layers.end() ? "" : m_ruling.uiApp + ".tmg";
    for (const auto& image : m_package.images) {
      if (image != used && m_ruling.outcome == Ruling::Outcome::ChannelBound) {
        Add(Message::ImageUnused, {image});
      }
    }
    if (user != layers.end()) {
      CheckImage(*user, used);
    }
    return std::move(m_findings);
  }

 private:
  void Add(Message message, const std::vector<std::string>& arguments) {
    m_findings.push_back(MakeFinding(message, arguments));
  }

  void CheckImage(const Layer& user, const std::string& image) {
    const auto& images = m_package.images;
    if (std::find(images.begin(), images.end(), image) == images.end()) {
      Add(Message::ImageMissing, {user.type, m_ruling.uiApp.empty() ? "<widget id>.tmg" : image,
                                  images.empty() ? "" : ", but " + images.front()});
      return;
    }
    const std::string path = m_tree + "/res/" + image;
    switch (KindOfImage(path)) {
      case ImageKind::Zip:
        Add(Message::ImageIsZip, {user.type, image});
        break;
      case ImageKind::Unknown:
        Add(Message::ImageUnknown, {user.type, image});
        break;
      default:
        CheckArchive(user, image, path);
    }
  }

  void CheckArchive(const Layer& user, const std::string& image, const std::string& path) {
    FeedArchive archive;
    try {
      const ScratchDirectory scratch;
      const std::string copy = scratch.Path() + "/" + ARCHIVE;
      if (!CopyFromImage(path, ARCHIVE, copy)) {
        Add(Message::ArchiveMissing, {user.type, image});
        return;
      }
      if (!ReadArchive(user, image, copy, archive)) {
        return;
      }
    } catch (const DeskError& error) {
      Add(Message::ImageUnreadable, {user.type, image, error.what()});
      return;
    }
    for (const auto& layer : m_ruling.layers) {
      for (const char* key : {"channel_data_url", "schedule_data_url"}) {
        CheckFile(layer, key, archive);
      }
    }
  }

  bool ReadArchive(const Layer& user, const std::string& image, const std::string& copy,
                   FeedArchive& archive) {
    try {
      archive = ReadFeedArchive(copy);
      return true;
    } catch (const PackageError& error) {
      // The reason begins with the path of the copy, which means nothing to the reader.
      std::string reason = error.what();
      if (reason.compare(0, copy.size() + 1, copy + " ") == 0) {
        reason = "it " + reason.substr(copy.size() + 1);
      }
      Add(Message::ArchiveDamaged, {user.type, image, reason});
      return false;
    }
  }

  void CheckFile(const Layer& layer, const char* key, const FeedArchive& archive) {
    const std::string name = FileOf(layer.Data(key));
    if (name.empty()) {
      return;
    }
    const auto text = archive.texts.find("metadata/" + name);
    if (text != archive.texts.end()) {
      const std::string why = WhyNotJson(text->second);
      if (!why.empty()) {
        Add(Message::FeedFileNotJson, {layer.type, key, name, why});
      }
      return;
    }
    if (archive.files.count("metadata/" + name) != 0) {
      Add(Message::FeedFileNested, {layer.type, key, name});
      return;
    }
    const std::string elsewhere = FindElsewhere(name, archive);
    if (elsewhere.empty()) {
      Add(Message::FeedFileMissing, {layer.type, key, name});
    } else {
      Add(Message::FeedFileElsewhere, {layer.type, key, name, elsewhere});
    }
  }

  static std::string FindElsewhere(const std::string& name, const FeedArchive& archive) {
    const auto found =
        std::find_if(archive.files.begin(), archive.files.end(), [&](const std::string& file) {
          return std::filesystem::path(file).filename() == std::filesystem::path(name).filename();
        });
    return found == archive.files.end() ? "" : *found;
  }

  const PackageFacts& m_package;
  const Ruling& m_ruling;
  const std::string& m_tree;
  std::vector<Finding> m_findings;
};

}  // namespace

std::vector<Finding> CheckFeeds(const PackageFacts& package, const Ruling& ruling,
                                const std::string& tree) {
  return FeedChecks(package, ruling, tree).Run();
}

std::vector<Finding> CheckPackage(const PackageFacts& package, const Ruling& ruling,
                                  const std::string& tree) {
  std::vector<Finding> findings = CheckMetadata(package, ruling);
  for (auto& more : {CheckFeeds(package, ruling, tree), CheckPrograms(package, tree)}) {
    findings.insert(findings.end(), more.begin(), more.end());
  }
  return findings;
}

}  // namespace desk
