// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// The daemon's rules for package metadata, told a second time on purpose: the desk looks at a
// package from outside, and what it says can be held against what the daemon does.
#include "cli/explain_rules.h"

#include <algorithm>

namespace desk {
namespace {

const std::string TYPE = "orv_type";
const std::string DATA = "orv_data";

using Names = std::map<std::string, std::string>;

/// The data keys that each type knows. The order of the types is the order of the layers, from the
/// inside out.
const std::map<std::string, std::vector<std::string>>& KnownTypes() {
  static const std::map<std::string, std::vector<std::string>> types = {
      {"ch_feeder_custom", {"expiration_date_str"}},
      {"ch_feeder_standard", {"channel_data_url", "schedule_data_url", "ch.app.boosting"}},
      {"custom_ui_extended", {"custom_ui_cold_boot_opt"}},
      {"custom_ui_standard", {"custom_ui_cold_boot_opt"}}};
  return types;
}

bool Knows(const std::string& type, const std::string& dataKey) {
  const auto found = KnownTypes().find(type);
  return found != KnownTypes().end() &&
         std::find(found->second.begin(), found->second.end(), dataKey) != found->second.end();
}

std::string TypesThatKnow(const std::string& dataKey, const Names* among) {
  std::string list;
  for (const auto& type : KnownTypes()) {
    if (Knows(type.first, dataKey) && (among == nullptr || among->count(type.first) != 0)) {
      list += (list.empty() ? "" : " and ") + type.first;
    }
  }
  return list;
}

/// Everything that one reading of a package collects.
class Reading {
 public:
  explicit Reading(Ruling& ruling) : m_ruling(ruling) {}

  void Read(const PackageFacts& package) {
    for (const auto& app : package.apps) {
      if (!m_ended) {
        (app.component == "service" ? m_ruling.serviceApp : m_ruling.uiApp) = app.id;
      }
      for (const auto& entry : app.metadata) {
        m_ruling.keys.push_back(ReadKey(app.id, entry.first, entry.second));
      }
    }
    ExplainDataKeys();
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
    if (m_ended) {
      ruling.reason = "not read: a key before it has ended the reading";
    } else if (key.compare(0, prefix.size(), prefix) != 0) {
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
      ruling.reason = "behind the prefix stands neither orv_type nor orv_data";
      return;
    }
    if (rest.size() < TYPE.size() + 1) {
      m_ended = true;
      ruling.verdict = KeyRuling::Verdict::EndsReading;
      ruling.reason = "nothing stands behind " + ruling.category +
                      ": the daemon's reading of the package ends here with an error";
      return;
    }
    // The name is cut at a fixed place, wherever the word was found.
    ruling.name = rest.substr(TYPE.size() + 1);
    Enter(at, ruling);
  }

  void Enter(size_t at, KeyRuling& ruling) {
    Names& names = m_names[ruling.category];
    const auto entered = names.emplace(ruling.name, ruling.value);
    if (!entered.second) {
      ruling.reason = "given before: the first value \"" + entered.first->second + "\" stays";
      return;
    }
    if (ruling.category == TYPE) {
      const bool known = KnownTypes().count(ruling.name) != 0;
      ruling.verdict = known ? KeyRuling::Verdict::Taken : KeyRuling::Verdict::Ignored;
      ruling.reason = known ? "app type " + ruling.name
                            : "\"" + ruling.name + "\" is no app type that the daemon knows";
    } else {
      m_dataKeys.push_back(m_ruling.keys.size());
    }
    if (at > 0) {
      ruling.reason += (ruling.reason.empty() ? "" : "; ") + ruling.category +
                       " does not stand directly behind the prefix, so the name is cut to \"" +
                       ruling.name + "\"";
    }
  }

  /// Which layer takes a data key is known only when all types are.
  void ExplainDataKeys() {
    for (const size_t index : m_dataKeys) {
      KeyRuling& key = m_ruling.keys[index];
      const std::string takers = TypesThatKnow(key.name, &m_names[TYPE]);
      const std::string knowers = TypesThatKnow(key.name, nullptr);
      std::string reason = "data of " + takers;
      if (!takers.empty()) {
        key.verdict = KeyRuling::Verdict::Taken;
      } else if (knowers.empty()) {
        reason = "\"" + key.name + "\" is no data key that a layer takes";
      } else {
        reason = "the package has no layer that takes it: it belongs to " + knowers;
      }
      key.reason = reason + (key.reason.empty() ? "" : "; " + key.reason);
    }
  }

  Ruling::Outcome Outcome() const {
    if (m_ended) {
      return Ruling::Outcome::Broken;
    }
    if (!m_ruling.layers.empty()) {
      return Ruling::Outcome::ChannelBound;
    }
    const bool any = std::any_of(m_ruling.keys.begin(), m_ruling.keys.end(),
                                 [](const KeyRuling& key) { return !key.category.empty(); });
    return any ? Ruling::Outcome::NoKnownType : Ruling::Outcome::NoMetadata;
  }

  Ruling& m_ruling;
  std::map<std::string, Names> m_names;
  std::vector<size_t> m_dataKeys;  ///< places of the data keys that are no repetitions
  bool m_ended = false;
};

}  // namespace

std::string Layer::Data(const std::string& key) const {
  const auto found = data.find(key);
  return found == data.end() ? std::string() : found->second;
}

std::string MetadataPrefix() {
  return ORV_METADATA_PREFIX;
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
  if (ruling.outcome == Ruling::Outcome::Broken) {
    ruling.layers.clear();
  }
  return ruling;
}

}  // namespace desk
