// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/explain_text.h"

#include <ostream>

#include "desk/cli/table.h"

namespace desk::cli {
namespace {

using Outcome = Ruling::Outcome;

std::string OutcomeText(Outcome outcome) {
  switch (outcome) {
    case Outcome::ChannelBound:
      return "yes";
    case Outcome::NoMetadata:
      return "no: no metadata key begins with the daemon's prefix";
    case Outcome::NoKnownType:
      return "no: no key names an app type that the daemon knows";
  }
  return "";
}

void PrintKeys(std::ostream& out, const std::vector<KeyRuling>& keys) {
  out << "\nMetadata, in the order in which the daemon reads it:\n";
  if (keys.empty()) {
    out << "  none\n";
  }
  std::string app;
  for (const auto& key : keys) {
    if (key.app != app) {
      app = key.app;
      out << "  " << app << '\n';
    }
    const bool taken = key.verdict == KeyRuling::Verdict::Taken;
    const bool ends = key.verdict == KeyRuling::Verdict::Error;
    out << "    "
        << (taken  ? '+'
            : ends ? '!'
                   : '-')
        << ' ' << OneLine(key.key) << " = \"" << OneLine(key.value) << "\"\n      "
        << (taken  ? "taken: "
            : ends ? "error: "
                   : "ignored: ")
        << OneLine(key.reason) << '\n';
  }
}

void PrintLayers(std::ostream& out, const std::vector<Layer>& layers) {
  out << "\nLayers, innermost first:\n";
  int number = 0;
  for (const auto& layer : layers) {
    out << "  " << ++number << ". " << layer.type << " = \"" << OneLine(layer.value) << "\"\n";
    for (const auto& entry : layer.data) {
      out << "       " << entry.first << " = \"" << OneLine(entry.second) << "\"\n";
    }
  }
}

void PrintLines(std::ostream& out, const char* head, const std::vector<std::string>& lines) {
  if (lines.empty()) {
    return;
  }
  out << '\n' << head << ":\n";
  for (const auto& line : lines) {
    out << "  - " << OneLine(line) << '\n';
  }
}

void PrintFindings(std::ostream& out, const std::vector<Finding>& findings) {
  if (findings.empty()) {
    return;
  }
  out << "\nFindings:\n";
  for (const auto& finding : findings) {
    out << "  - " << OneLine(ToLine(finding)) << '\n';
  }
}

Json::Value EffectsJson(const std::vector<Effect>& effects) {
  Json::Value list(Json::arrayValue);
  for (const auto& effect : effects) {
    Json::Value& item = list.append(Json::objectValue);
    item["occasion"] = OccasionName(effect.occasion);
    item["type"] = effect.type;
    item["sentence"] = effect.sentence;
    item["call"] = effect.call;
    item["argument"] = effect.argument;
  }
  return list;
}

Json::Value Lines(const std::vector<std::string>& lines) {
  Json::Value list(Json::arrayValue);
  for (const auto& line : lines) {
    list.append(line);
  }
  return list;
}

const char* VerdictName(KeyRuling::Verdict verdict) {
  switch (verdict) {
    case KeyRuling::Verdict::Taken:
      return "taken";
    case KeyRuling::Verdict::Ignored:
      return "ignored";
    case KeyRuling::Verdict::Error:
      return "error";
  }
  return "";
}

Json::Value KeyJson(const KeyRuling& key) {
  Json::Value value;
  value["app"] = key.app;
  value["key"] = key.key;
  value["value"] = key.value;
  value["verdict"] = VerdictName(key.verdict);
  value["category"] = key.category;
  value["name"] = key.name;
  value["reason"] = key.reason;
  return value;
}

Json::Value LayerJson(const Layer& layer) {
  Json::Value value;
  value["type"] = layer.type;
  value["value"] = layer.value;
  value["data"] = Json::Value(Json::objectValue);
  for (const auto& entry : layer.data) {
    value["data"][entry.first] = entry.second;
  }
  return value;
}

}  // namespace

void PrintExplanation(std::ostream& out, const PackageFacts& package,
                      const Explanation& explanation) {
  const Ruling& ruling = explanation.ruling;
  out << "Package " << OneLine(package.id) << ' ' << OneLine(package.version) << "\n\n"
      << "  UI application       " << (ruling.uiApp.empty() ? "-" : ruling.uiApp) << '\n'
      << "  service application  " << (ruling.serviceApp.empty() ? "-" : ruling.serviceApp) << '\n'
      << "  channel-bound app    " << OutcomeText(ruling.outcome) << '\n';
  PrintKeys(out, ruling.keys);
  if (!ruling.layers.empty()) {
    PrintLayers(out, ruling.layers);
  }
  PrintLines(out, "On this desk", explanation.state);
  const auto& effects = explanation.effects;
  PrintLines(out, "On install", LinesOf(effects, Occasion::Install));
  PrintLines(out, "On update", LinesOf(effects, Occasion::Update));
  PrintLines(out, "Compared with the daemon's record", explanation.changes);
  PrintLines(out, "On removal", LinesOf(effects, Occasion::Removal));
  PrintFindings(out, explanation.findings);
}

Json::Value ToJson(const PackageFacts& package, const Explanation& explanation) {
  const Ruling& ruling = explanation.ruling;
  Json::Value value;
  value["id"] = package.id;
  value["version"] = package.version;
  value["ui_app"] = ruling.uiApp;
  value["service_app"] = ruling.serviceApp;
  value["channel_bound"] = ruling.outcome == Outcome::ChannelBound;
  value["outcome"] = OutcomeText(ruling.outcome);
  value["keys"] = Json::Value(Json::arrayValue);
  for (const auto& key : ruling.keys) {
    value["keys"].append(KeyJson(key));
  }
  value["layers"] = Json::Value(Json::arrayValue);
  for (const auto& layer : ruling.layers) {
    value["layers"].append(LayerJson(layer));
  }
  value["state"] = Lines(explanation.state);
  for (const Occasion occasion : {Occasion::Install, Occasion::Update, Occasion::Removal}) {
    value[OccasionName(occasion)] = Lines(LinesOf(explanation.effects, occasion));
  }
  value["changes"] = Lines(explanation.changes);
  value["effects"] = EffectsJson(explanation.effects);
  value["findings"] = ToJson(explanation.findings);
  return value;
}

}  // namespace desk::cli
