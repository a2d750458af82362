// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// tv explain
#include <filesystem>
#include <ostream>

#include "cli/commands.h"
#include "cli/explain_effects.h"
#include "cli/explain_text.h"
#include "cli/failure.h"
#include "cli/session.h"
#include "cli/store_reader.h"
#include "common/desk_error.h"
#include "package/package_file.h"

namespace desk {
namespace {

namespace fs = std::filesystem;

PackageFacts FromManifest(const PackageManifest& manifest) {
  PackageFacts facts;
  facts.id = manifest.id;
  facts.version = manifest.version;
  for (const auto& app : manifest.apps) {
    PackageFacts::App entry{app.id, ComponentName(app.component), {}};
    for (const auto& metadata : app.metadata) {
      entry.metadata.emplace_back(metadata.key, metadata.value);
    }
    facts.apps.push_back(std::move(entry));
  }
  return facts;
}

PackageFacts FromFile(const std::string& path) {
  const PackageFile package = ReadPackage(path);
  PackageFacts facts = FromManifest(package.manifest);
  for (const auto& entry : package.entries) {
    if (fs::path(entry.name).extension() == ".tmg" && entry.name.find('/') == std::string::npos) {
      facts.images.push_back(entry.name);
    }
  }
  return facts;
}

PackageFacts FromTv(const Json::Value& info, const std::string& directory) {
  PackageFacts facts;
  facts.id = info["id"].asString();
  facts.version = info["version"].asString();
  for (const auto& app : info["apps"]) {
    PackageFacts::App entry{app["id"].asString(), app["component"].asString(), {}};
    for (const auto& metadata : app["metadata"]) {
      entry.metadata.emplace_back(metadata["key"].asString(), metadata["value"].asString());
    }
    facts.apps.push_back(std::move(entry));
  }
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(directory + "/res", error)) {
    if (entry.path().extension() == ".tmg") {
      facts.images.push_back(entry.path().filename().string());
    }
  }
  return facts;
}

PackageFacts Facts(Session& session, const std::string& name) {
  std::error_code error;
  if (fs::is_regular_file(name, error)) {
    return FromFile(name);
  }
  if (name.find('/') != std::string::npos || fs::path(name).extension() == ".wgt") {
    throw Failure(Exit::NotFound, "there is no file " + name + ": give a .wgt or a package id");
  }
  const Json::Value info = session.Call("pkg.info", Object({{"package", name}}));
  if (!info["found"].asBool()) {
    throw Failure(Exit::NotFound, "there is neither a file nor a package \"" + name +
                                      "\": `tv pkg list` shows those that are installed");
  }
  return FromTv(info, session.Paths().Package(name));
}

/// The types of the record that the daemon holds, when its store has the package.
std::map<std::string, std::string> HeldTypes(Session& session, const std::string& package) {
  std::map<std::string, std::string> types;
  try {
    for (const auto& row : ReadStore(StorePath(session.Paths()))) {
      const Json::Value& variables = row["variables"];
      if (row["package_id"].asString() != package || !variables.isObject() ||
          !variables["orv_type"].isObject()) {
        continue;
      }
      for (const auto& name : variables["orv_type"].getMemberNames()) {
        types[name] = variables["orv_type"][name].asString();
      }
    }
  } catch (const Failure&) {
    // Without a store nothing is held.
  }
  return types;
}

int Explain(Session& session, const Invocation& words) {
  const PackageFacts package = Facts(session, words.Text("FILE|PACKAGE"));
  Explanation explanation;
  explanation.ruling = RuleOnPackage(package);
  explanation.effects = TellEffects(package, explanation.ruling);
  const auto held = HeldTypes(session, package.id);
  if (!held.empty()) {
    explanation.changes = TellTypeChanges(explanation.ruling, held);
  }
  if (words.Json()) {
    session.PrintJson(ToJson(package, explanation));
  } else {
    PrintExplanation(session.Out(), package, explanation);
  }
  return 0;
}

}  // namespace

std::vector<Command> ExplainCommands() {
  return {{"explain",
           "what the daemon makes of a package",
           {{"FILE|PACKAGE", "a .wgt archive, or the id of an installed package"}},
           {JsonOption()},
           "Tells for each metadata key the rule that took it or why it is ignored, the layers of\n"
           "behaviour from the inside out, and what the daemon will do on install, update and\n"
           "removal. A file needs no running TV.",
           Explain}};
}

}  // namespace desk
