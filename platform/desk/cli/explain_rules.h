// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace desk {

/// A package as the package manager tells of it. The order of applications and of their metadata is
/// the order in which the daemon reads them.
struct PackageFacts {
  struct App {
    std::string id;
    std::string component;  ///< "ui" or "service"
    std::vector<std::pair<std::string, std::string>> metadata;
  };
  std::string id;
  std::string version;
  std::vector<App> apps;
  std::vector<std::string> images;  ///< names of the *.tmg files that end up in <package>/res/
};

/// What the daemon makes of one metadata key.
struct KeyRuling {
  enum class Verdict { Taken, Ignored, EndsReading };
  std::string app;
  std::string key;
  std::string value;
  Verdict verdict = Verdict::Ignored;
  std::string category;  ///< "orv_type", "orv_data" or empty
  std::string name;      ///< what stands behind the category
  std::string reason;    ///< the rule, one line
};

/// One layer of behaviour, with the data keys that it knows; a key that the package does not give
/// is there with an empty value.
struct Layer {
  std::string type;
  std::string value;
  std::map<std::string, std::string> data;
  /// The value, or an empty text for a key that is not of this layer.
  std::string Data(const std::string& key) const;
};

struct Ruling {
  enum class Outcome {
    ChannelBound,  ///< the daemon makes a record
    NoMetadata,    ///< an ordinary package
    NoKnownType,   ///< something under the namespace, but no type that the daemon knows
    Broken         ///< a key ends the reading, and with it the event
  };
  Outcome outcome = Outcome::NoMetadata;
  std::string uiApp;
  std::string serviceApp;
  std::vector<KeyRuling> keys;
  std::vector<Layer> layers;                 ///< from the inside out
  std::map<std::string, std::string> types;  ///< all names given under orv_type, known or not
};

/// Applies the daemon's rules to the package. Touches nothing.
Ruling RuleOnPackage(const PackageFacts& package);

/// The same for names and values alone, as they stand in a row of the store.
std::vector<Layer> BuildLayers(const std::map<std::string, std::string>& types,
                               const std::map<std::string, std::string>& data);

/// The namespace that every metadata key of the daemon begins with.
std::string MetadataPrefix();

}  // namespace desk
