// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "desk/checks/package_checks.h"
#include "desk/common/nearest.h"

namespace desk {
namespace {

using Rule = KeyRuling::Rule;

constexpr std::size_t INSERT_AT = 6;  // after "file:/", where the daemon inserts the directory

std::string DidYouMean(const std::string& word, const std::vector<std::string>& known) {
  const std::string near = Nearest(word, known);
  if (!near.empty()) {
    return "Did you mean \"" + near + "\"?";
  }
  std::string list;
  for (const auto& name : known) {
    list += (list.empty() ? "" : ", ") + name;
  }
  return "Use one of " + list + ".";
}

std::string TypesUsing(const std::string& dataKey) {
  std::string list;
  for (const auto& type : KnownTypeNames()) {
    if (BuildLayers({{type, ""}}, {}).at(0).data.count(dataKey) != 0) {
      list += (list.empty() ? "" : ", ") + type;
    }
  }
  return list;
}

class MetadataChecks {
 public:
  MetadataChecks(const PackageFacts& package, const Ruling& ruling)
      : m_package(package), m_ruling(ruling) {}

  std::vector<Finding> Run() {
    for (const auto& key : m_ruling.keys) {
      CheckKey(key);
    }
    if (m_ruling.outcome == Ruling::Outcome::ChannelBound) {
      CheckRecord();
      for (const auto& layer : m_ruling.layers) {
        CheckLayer(layer);
      }
    }
    return std::move(m_findings);
  }

 private:
  void Add(Message message, const std::vector<std::string>& arguments = {}) {
    m_findings.push_back(MakeFinding(message, arguments));
  }

  void CheckKey(const KeyRuling& key) {
    switch (key.rule) {
      case Rule::NameMissing:
        Add(Message::NameMissing, {key.key, key.category});
        break;
      case Rule::NoWord:
        Add(Message::UnknownWord, {key.key, MetadataPrefix()});
        break;
      case Rule::UnknownType:
        Add(Message::UnknownType, {key.name, DidYouMean(key.name, KnownTypeNames())});
        break;
      case Rule::UnknownData:
        Add(Message::UnknownDataKey, {key.name, DidYouMean(key.name, KnownDataKeys())});
        break;
      case Rule::ForeignData:
        Add(Message::ForeignDataKey, {key.name, TypesUsing(key.name)});
        break;
      case Rule::OtherNamespace:
        CheckPrefix(key);
        break;
      default:
        break;
    }
  }

  void CheckPrefix(const KeyRuling& key) {
    for (const char* word : {"orv_type", "orv_data"}) {
      if (key.key.find(word) != std::string::npos) {
        Add(Message::OtherPrefix, {key.key, word, MetadataPrefix()});
        return;
      }
    }
  }

  // The daemon puts these values into SQL statements unescaped.
  void CheckRecord() {
    std::vector<std::string> texts = {m_package.id, m_package.version, m_ruling.uiApp,
                                      m_ruling.serviceApp};
    for (const auto& layer : m_ruling.layers) {
      texts.push_back(layer.value);
      for (const auto& entry : layer.data) {
        texts.push_back(entry.second);
      }
    }
    for (const auto& text : texts) {
      if (text.find('\'') != std::string::npos) {
        Add(Message::SingleQuote, {text});
      }
    }
    if (m_ruling.uiApp.empty()) {
      Add(Message::NoUiApp);
    }
  }

  void CheckLayer(const Layer& layer) {
    if (layer.type == "ch_feeder_custom") {
      CheckCustomFeeder(layer);
    } else if (layer.type == "ch_feeder_standard") {
      CheckStandardFeeder(layer);
    } else if (layer.type == "custom_ui_extended") {
      CheckCustomUi(layer, {"channel_list", "epg"});
    } else {
      CheckCustomUi(layer, {"info", "channel"});
    }
  }

  void CheckCustomFeeder(const Layer& layer) {
    if (m_ruling.serviceApp.empty()) {
      Add(Message::NoServiceApp, {layer.type});
    }
    if (layer.value.empty()) {
      Add(Message::EmptyFeederValue, {layer.type});
    }
  }

  void CheckStandardFeeder(const Layer& layer) {
    const bool files = (PackagedDataOf(layer) & PACKAGED_FILES) != 0;
    for (const char* key : {"channel_data_url", "schedule_data_url"}) {
      CheckUrl(layer, key, files);
    }
    const std::string boost = layer.Data("ch.app.boosting");
    if (!boost.empty() && boost != "true") {
      Add(Message::BoostValue, {layer.type, boost});
    }
  }

  void CheckUrl(const Layer& layer, const std::string& key, bool files) {
    const std::string url = layer.Data(key);
    const std::string scheme = SchemeOf(url);
    if (scheme == "file") {
      if (url.size() <= INSERT_AT || url[INSERT_AT] != '/' || url[INSERT_AT - 1] != '/') {
        Add(Message::FileUrlForm, {layer.type, key, url});
      }
      return;
    }
    if (files && url.size() < INSERT_AT) {
      Add(Message::ShortUrl, {layer.type, key, url});
    } else if (files) {
      Add(Message::WebUrlRewritten, {layer.type, key, url});
    } else if (url.empty()) {
      Add(Message::NoFeedUrl, {layer.type, key});
    } else if (scheme != "http" && scheme != "https") {
      Add(Message::UnknownScheme, {layer.type, key, url});
    }
  }

  void CheckCustomUi(const Layer& layer, const std::vector<std::string>& known) {
    std::size_t start = 0;
    while (start <= layer.value.size()) {
      const std::size_t comma = std::min(layer.value.find(',', start), layer.value.size());
      const std::string piece = layer.value.substr(start, comma - start);
      if (std::find(known.begin(), known.end(), piece) == known.end()) {
        Add(Message::ListEntry, {layer.type, piece, known.at(0) + " and " + known.at(1)});
      }
      start = comma + 1;
    }
    const std::string option = layer.Data("custom_ui_cold_boot_opt");
    const bool usual = option.empty() || option == "default" || option == "invisible" ||
                       option == "background_img";
    if (!usual) {
      Add(Message::ColdBootValue, {layer.type, option});
    }
  }

  const PackageFacts& m_package;
  const Ruling& m_ruling;
  std::vector<Finding> m_findings;
};

}  // namespace

std::vector<Finding> CheckMetadata(const PackageFacts& package, const Ruling& ruling) {
  return MetadataChecks(package, ruling).Run();
}

}  // namespace desk
