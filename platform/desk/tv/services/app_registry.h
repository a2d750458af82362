// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "common/paths.h"
#include "package/manifest.h"
#include "tv/services/catalogue.h"
#include "tv/tv_store.h"

namespace desk::tv {

/// An app that can be launched.
struct KnownApp {
  enum class Kind { Ui, Service, Program };
  std::string id;
  std::string package;  ///< empty for a program that was declared
  Kind kind = Kind::Program;
  std::string program;    ///< absolute; of a UI application the start page, or empty
  std::string directory;  ///< to run in
  std::vector<Metadata> metadata;
};

/// "ui", "service" or "program".
const char* KindName(KnownApp::Kind kind);

/// The apps of the installed packages, and those that were declared by hand, which are kept over
/// power-off. An installed app hides a declared one of the same id. Main loop only.
class AppRegistry {
 public:
  AppRegistry(const DeskPaths& paths, const Catalogue& catalogue, TvStore& store)
      : m_paths(paths), m_catalogue(catalogue), m_store(store) {}

  std::optional<KnownApp> Find(const std::string& id) const;
  std::vector<KnownApp> All() const;
  /// Throws DeskError: Usage for an id that cannot be, Failed when a package has it or the program
  /// cannot be run.
  void Add(const std::string& id, const std::string& program);

 private:
  KnownApp Describe(const std::string& package, const PackageApp& app) const;
  static KnownApp Describe(const std::string& id, const std::string& program);

  const DeskPaths m_paths;
  const Catalogue& m_catalogue;
  TvStore& m_store;
};

}  // namespace desk::tv
