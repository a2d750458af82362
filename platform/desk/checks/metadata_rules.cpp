// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// The daemon's rules for package metadata, implemented a second time on purpose: the desk must not
// use the daemon's sources. tests/unit/controller/metadata_conformance_test.cpp compares both.
#include "desk/checks/metadata_rules.h"

#include <algorithm>
#include <set>

namespace desk {
namespace {

const std::string TYPE = "orv_type";
const std::string DATA = "orv_data";

using Names = std::map<std::string, std::string>;
using Rule = KeyRuling::Rule;
using Verdict = KeyRuling::Verdict;

/// The data keys that each type uses. Types in the order of the layers, innermost first.
const std::map<std::string, std::vector<std::string>>& KnownTypes() {
  static const std::map<std::string, std::vector<std::string>> types = {
      {"ch_feeder_custom", {"expiration_date_str"}},
      {"ch_feeder_standard", {"channel_data_url", "schedule_data_url", "ch.app.boosting"}},
      {"custom_ui_extended", {"custom_ui_cold_boot_opt"}},
      {"custom_ui_standard", {"custom_ui_cold_boot_opt"}}};
  return types;
}

bool Uses(const std::string& type, const std::string& dataKey) {
  const auto found = KnownTypes().find(type);
  return found != KnownTypes().end() &&
         std::find(found->second.begin(), found->second.end(), dataKey) != found->second.end();
}

std::string TypesThatUse(const std::string& dataKey, const Names* among) {
  std::string list;
  for (const auto& type : KnownTypes()) {
    if (Uses(type.first, dataKey) && (among == nullptr || among->count(type.first) != 0)) {
      list += (list.empty() ? "" : " and ") + type.first;
    }
  }
  return list;
}

/// The state of one reading of a package.
class Reading {
 public:
  explicit Reading(Ruling& ruling) : m_ruling(ruling) {}

  void Read(const PackageFacts& package) {
    for (const auto& app : package.apps) {
      (app.component == "service" ? m_ruling.serviceApp : m_ruling.uiApp) = app.id;
      for (const auto& entry : app.metadata) {
        m_ruling.keys.push_back(ReadKey(app.id, entry.first, entry.second));
      }
    }
    RuleOnDataKeys();
    m_ruling.types = m_names[TYPE];
    m_ruling.layers = BuildLayers(m_names[TYPE], m_names[DATA]);
    m_ruling.outcome = Outcome();
  }

 private:
  KeyRuling ReadKey(const std::string& app, const std::string& key, const std::string& value) {
    KeyRuling ruling;
    ruling.app = app;
    ruling.key = key;
    ruling.value = value;
    const std::string prefix = MetadataPrefix();
    if (key.compare(0, prefix.size(), prefix) != 0) {
      ruling.reason = "does not begin with " + prefix;
    } else {
      ReadRest(key.substr(prefix.size()), ruling);
    }
    return ruling;
  }

  void ReadRest(const std::string& rest, KeyRuling& ruling) {
    size_t at = rest.find(TYPE);
    ruling.category = TYPE;
    if (at == std::string::npos) {
      at = rest.find(DATA);
      ruling.category = DATA;
    }
    if (at == std::string::npos) {
      ruling.category.clear();
      ruling.rule = Rule::NoWord;
      ruling.reason = "neither orv_type nor orv_data follows the prefix";
      return;
    }
    if (rest.size() < TYPE.size() + 1) {
      ruling.rule = Rule::NameMissing;
      ruling.verdict = Verdict::Error;
      ruling.reason = "no name follows " + ruling.category +
                      ": the daemon logs an error and goes on with the next key";
      return;
    }
    // The name begins at a fixed position, wherever the word was found.
    ruling.name = rest.substr(TYPE.size() + 1);
    Enter(at, ruling);
  }

  void Enter(size_t at, KeyRuling& ruling) {
    Names& names = m_names[ruling.category];
    const auto entered = names.emplace(ruling.name, ruling.value);
    if (!entered.second) {
      ruling.rule = Rule::Repeated;
      ruling.reason = "given before: the first value \"" + entered.first->second + "\" is kept";
      return;
    }
    if (ruling.category == TYPE) {
      const bool known = KnownTypes().count(ruling.name) != 0;
      ruling.rule = known ? Rule::KnownType : Rule::UnknownType;
      ruling.verdict = known ? Verdict::Taken : Verdict::Ignored;
      ruling.reason = known ? "app type " + ruling.name
                            : "\"" + ruling.name + "\" is not an app type that the daemon knows";
    } else {
      m_dataKeys.push_back(m_ruling.keys.size());
    }
    if (at > 0) {
      ruling.reason += (ruling.reason.empty() ? "" : "; ") + ruling.category +
                       " does not follow the prefix directly, so the name is cut to \"" +
                       ruling.name + "\"";
    }
  }

  /// Only possible when all types are known.
  void RuleOnDataKeys() {
    for (const size_t index : m_dataKeys) {
      KeyRuling& key = m_ruling.keys[index];
      const std::string users = TypesThatUse(key.name, &m_names[TYPE]);
      const std::string possible = TypesThatUse(key.name, nullptr);
      std::string reason = "data of " + users;
      key.rule = Rule::KnownData;
      if (!users.empty()) {
        key.verdict = Verdict::Taken;
      } else if (possible.empty()) {
        key.rule = Rule::UnknownData;
        reason = "\"" + key.name + "\" is not a data key that a layer uses";
      } else {
        key.rule = Rule::ForeignData;
        reason = "the package has no layer that uses it: it belongs to " + possible;
      }
      key.reason = reason + (key.reason.empty() ? "" : "; " + key.reason);
    }
  }

  Ruling::Outcome Outcome() const {
    if (!m_ruling.layers.empty()) {
      return Ruling::Outcome::ChannelBound;
    }
    const bool any =
        std::any_of(m_ruling.keys.begin(), m_ruling.keys.end(), [](const KeyRuling& key) {
          return !key.category.empty() && key.rule != Rule::NameMissing;
        });
    return any ? Ruling::Outcome::NoKnownType : Ruling::Outcome::NoMetadata;
  }

  Ruling& m_ruling;
  std::map<std::string, Names> m_names;
  std::vector<size_t> m_dataKeys;  ///< indices of the data keys that are not repetitions
};

}  // namespace

std::string Layer::Data(const std::string& key) const {
  const auto found = data.find(key);
  return found == data.end() ? std::string() : found->second;
}

std::string MetadataPrefix() {
  return ORV_METADATA_PREFIX;
}

std::vector<std::string> KnownTypeNames() {
  std::vector<std::string> names;
  for (const auto& type : KnownTypes()) {
    names.push_back(type.first);
  }
  return names;
}

std::vector<std::string> KnownDataKeys() {
  std::set<std::string> keys;
  for (const auto& type : KnownTypes()) {
    keys.insert(type.second.begin(), type.second.end());
  }
  return {keys.begin(), keys.end()};
}

std::string SchemeOf(const std::string& url) {
  const auto colon = url.find(':');
  return colon == std::string::npos ? "" : url.substr(0, colon);
}

int PackagedDataOf(const Layer& layer) {
  const bool feeder = layer.type == "ch_feeder_custom" || layer.type == "ch_feeder_standard";
  const bool files = SchemeOf(layer.Data("channel_data_url")) == "file" ||
                     SchemeOf(layer.Data("schedule_data_url")) == "file";
  return (feeder && layer.value == "extended" ? PACKAGED_APP : 0) | (files ? PACKAGED_FILES : 0);
}

std::vector<Layer> BuildLayers(const Names& types, const Names& data) {
  std::vector<Layer> layers;
  for (const auto& type : types) {
    const auto known = KnownTypes().find(type.first);
    if (known == KnownTypes().end()) {
      continue;
    }
    Layer layer{type.first, type.second, {}};
    for (const auto& key : known->second) {
      const auto given = data.find(key);
      layer.data[key] = given == data.end() ? "" : given->second;
    }
    layers.push_back(std::move(layer));
  }
  return layers;
}

Ruling RuleOnPackage(const PackageFacts& package) {
  Ruling ruling;
  Reading(ruling).Read(package);
  return ruling;
}

}  // namespace desk
