// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/app_registry.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <utility>

#include "desk/common/desk_error.h"

namespace desk::tv {
namespace {

constexpr char SECTION[] = "apps";

std::map<std::string, std::string> ReadPrograms(const Json::Value& section) {
  std::map<std::string, std::string> programs;
  if (!section.isObject()) {
    return programs;
  }
  for (const std::string& id : section.getMemberNames()) {
    programs[id] = section[id].asString();
  }
  return programs;
}

Json::Value ToJson(const std::map<std::string, std::string>& programs) {
  Json::Value section(Json::objectValue);
  for (const auto& [id, program] : programs) {
    section[id] = program;
  }
  return section;
}

bool IsAppId(const std::string& id) {
  return !id.empty() && id.size() <= 255 && id != DeskPaths::DAEMON_ID &&
         std::all_of(id.begin(), id.end(), [](unsigned char c) {
           return std::isalnum(c) != 0 || c == '.' || c == '_' || c == '-';
         });
}

}  // namespace

const char* KindName(KnownApp::Kind kind) {
  switch (kind) {
    case KnownApp::Kind::Ui:
      return "ui";
    case KnownApp::Kind::Service:
      return "service";
    case KnownApp::Kind::Program:
      break;
  }
  return "program";
}

AppRegistry::AppRegistry(const DeskPaths& paths, const Catalogue& catalogue, TvStore& store)
    : m_paths(paths),
      m_catalogue(catalogue),
      m_store(store),
      m_programs(ReadPrograms(store.Get(SECTION))) {}

std::optional<KnownApp> AppRegistry::Find(const std::string& id) const {
  const PackageApp* app = m_catalogue.FindApp(id);
  if (app != nullptr) {
    return Describe(PackageOfApp(id), *app);
  }
  const auto program = m_programs.find(id);
  if (program != m_programs.end()) {
    return Describe(id, program->second);
  }
  return std::nullopt;
}

std::vector<KnownApp> AppRegistry::All() const {
  std::vector<KnownApp> apps;
  for (const auto& [id, package] : m_catalogue.All()) {
    for (const PackageApp& app : package.apps) {
      apps.push_back(Describe(id, app));
    }
  }
  for (const auto& [id, program] : m_programs) {
    if (m_catalogue.FindApp(id) == nullptr) {
      apps.push_back(Describe(id, program));
    }
  }
  return apps;
}

void AppRegistry::Add(const std::string& id, const std::string& program) {
  if (!IsAppId(id)) {
    throw DeskError(DeskError::USAGE,
                    "\"" + id + "\" is not an app id: use letters, digits, \".\", \"_\", \"-\"");
  }
  if (m_catalogue.FindApp(id) != nullptr) {
    throw DeskError(DeskError::FAILED,
                    id + " is an app of an installed package: choose another id");
  }
  if (program.empty() || program.front() != '/' || access(program.c_str(), X_OK) != 0) {
    throw DeskError(DeskError::FAILED,
                    program + " cannot be run: give the path of an executable file");
  }
  std::map<std::string, std::string> programs = m_programs;
  programs[id] = program;
  m_store.Set(SECTION, ToJson(programs));
  m_programs = std::move(programs);
}

KnownApp AppRegistry::Describe(const std::string& package, const PackageApp& app) const {
  KnownApp known;
  known.id = app.id;
  known.package = package;
  known.kind = app.component == Component::Ui ? KnownApp::Kind::Ui : KnownApp::Kind::Service;
  known.directory = m_paths.Package(package) + "/res/wgt";
  known.program = app.program.empty() ? "" : known.directory + "/" + app.program;
  known.metadata = app.metadata;
  return known;
}

KnownApp AppRegistry::Describe(const std::string& id, const std::string& program) {
  KnownApp known;
  known.id = id;
  known.program = program;
  known.directory = "/";
  return known;
}

}  // namespace desk::tv
