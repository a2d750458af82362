// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "desk/common/paths.h"
#include "desk/package/manifest.h"
#include "desk/tv/services/catalogue.h"
#include "desk/tv/tv_store.h"

namespace desk::tv {

/// An app that can be launched.
struct KnownApp {
  enum class Kind { Ui, Service, Program };
  std::string id;
  std::string package;  ///< empty for a program that was added by hand
  Kind kind = Kind::Program;
  std::string program;    ///< absolute path; for a UI application its start page, or empty
  std::string directory;  ///< working directory of the process
  std::vector<Metadata> metadata;
};

/// "ui", "service" or "program".
const char* KindName(KnownApp::Kind kind);

/// The apps of the installed packages, and the programs that were added by hand, which survive
/// power-off. An app of a package hides a program with the same id. Main loop only.
class AppRegistry {
 public:
  AppRegistry(const DeskPaths& paths, const Catalogue& catalogue, TvStore& store);

  std::optional<KnownApp> Find(const std::string& id) const;
  std::vector<KnownApp> All() const;
  /// Throws DeskError: Usage for an invalid id, Failed when a package has the id, when the program
  /// cannot be run, and when the store cannot be written.
  void Add(const std::string& id, const std::string& program);

 private:
  KnownApp Describe(const std::string& package, const PackageApp& app) const;
  static KnownApp Describe(const std::string& id, const std::string& program);

  const DeskPaths m_paths;
  const Catalogue& m_catalogue;
  TvStore& m_store;
  std::map<std::string, std::string> m_programs;  ///< added by hand: id to program
};

}  // namespace desk::tv
