// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace desk {

/// A package as the package manager describes it. Applications and their metadata are in the order
/// in which the daemon reads them.
struct PackageFacts {
  struct App {
    std::string id;
    std::string component;  ///< "ui" or "service"
    std::vector<std::pair<std::string, std::string>> metadata;
    std::string program;  ///< relative to the package's files; the start page of a UI application
  };
  std::string id;
  std::string version;
  std::vector<App> apps;
  std::vector<std::string> images;  ///< names of the *.tmg files that end up in <package>/res/
};

/// What the daemon does with one metadata key.
struct KeyRuling {
  enum class Verdict { Taken, Ignored, Error };
  enum class Rule {
    OtherNamespace,  ///< does not begin with the daemon's prefix
    NoWord,          ///< neither orv_type nor orv_data after the prefix
    NameMissing,     ///< too short for a name: the daemon logs an error
    Repeated,        ///< the same name was given before, and the first value is kept
    KnownType,
    UnknownType,
    KnownData,    ///< a layer of the package uses it
    ForeignData,  ///< only layers that the package does not have would use it
    UnknownData   ///< no layer uses it
  };
  std::string app;
  std::string key;
  std::string value;
  Rule rule = Rule::OtherNamespace;
  Verdict verdict = Verdict::Ignored;
  std::string category;  ///< "orv_type", "orv_data" or empty
  std::string name;      ///< the text after the category
  std::string reason;    ///< the rule in words, one line
};

/// One layer of behaviour with all data keys that it uses; the value of a key that the package does
/// not give is empty.
struct Layer {
  std::string type;
  std::string value;
  std::map<std::string, std::string> data;
  /// The value, or an empty text for a key that this layer does not use.
  std::string Data(const std::string& key) const;
};

struct Ruling {
  enum class Outcome {
    ChannelBound,  ///< the daemon creates a record
    NoMetadata,    ///< an ordinary package
    NoKnownType    ///< keys with the prefix, but no app type that the daemon knows
  };
  Outcome outcome = Outcome::NoMetadata;
  std::string uiApp;
  std::string serviceApp;
  std::vector<KeyRuling> keys;
  std::vector<Layer> layers;                 ///< from the innermost to the outermost
  std::map<std::string, std::string> types;  ///< all names given with orv_type, known or not
};

/// Applies the daemon's metadata rules to the package. Pure; callable from any thread.
Ruling RuleOnPackage(const PackageFacts& package);

/// The layers for names and values alone, as a row of the store holds them.
std::vector<Layer> BuildLayers(const std::map<std::string, std::string>& types,
                               const std::map<std::string, std::string>& data);

/// The prefix of every metadata key that the daemon reads.
std::string MetadataPrefix();

/// The app types that the daemon knows, and the data keys that any of them uses. Both sorted.
std::vector<std::string> KnownTypeNames();
std::vector<std::string> KnownDataKeys();

/// Bits of what a standard feeder brings along in its image.
constexpr int PACKAGED_APP = 1;    ///< an app tree
constexpr int PACKAGED_FILES = 2;  ///< metadata files

/// The bits that a layer asks for; 0 for a layer that unpacks nothing.
int PackagedDataOf(const Layer& layer);

/// The text before the first colon, or an empty text.
std::string SchemeOf(const std::string& url);

}  // namespace desk
