// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <functional>
#include <memory>
#include <string>

#include "common/paths.h"
#include "package/package_file.h"
#include "tv/router.h"
#include "tv/services/catalogue.h"
#include "tv/worker.h"

namespace desk::tv {

/// What other parts of the TV do when packages come and go. All run on the main loop; empty ones
/// are passed over; the first throws DeskError to refuse the change, the others must not throw.
struct PackageHooks {
  /// Before the tree of an installed package is exchanged or removed.
  std::function<void(const std::string& package)> beforeChange;
  /// When tree and row are in place, before "completed" is told. before is null on an install.
  std::function<void(const PackageManifest& now, const PackageManifest* before)> present;
  /// When tree and row are gone, before "completed" is told.
  std::function<void(const PackageManifest& before)> gone;
};

/// The package manager: pkg.list, pkg.info, pkg.install, pkg.uninstall and the topic "package".
///
/// Archives are read, trees are made and removed on a thread of its own, one package at a time in
/// the order of the calls; catalogue, hooks and everything else stay on the main loop. A package is
/// installed, updated or removed whole or not at all.
class Packages {
 public:
  /// Removes what an interrupted install left, and rows whose tree is gone. The catalogue must live
  /// longer. Throws DeskError (Failed).
  Packages(Router& router, const DeskPaths& paths, Catalogue& catalogue, PackageHooks hooks);
  /// On the main loop's thread; see Worker.
  ~Packages();

  /// As the reply of pkg.list has it in `packages`.
  Json::Value Dump() const;
  /// As pkg.info replies.
  Json::Value Info(const std::string& package) const;

 private:
  struct Job;

  void Start(const std::shared_ptr<Job>& job);
  void Run(Job& job);
  void Install(Job& job);
  void Place(Job& job, const PackageFile& package);
  void Uninstall(Job& job);
  void CallBeforeChange(const std::string& package);
  void CheckInstallable(const Job& job, const PackageManifest& manifest) const;
  void Commit(const Job& job, const PackageManifest& manifest);
  void Tell(const Job& job, const char* state, int progress, int error);

  Router& m_router;
  const DeskPaths m_paths;
  Catalogue& m_catalogue;
  const PackageHooks m_hooks;
  Worker m_worker;  ///< last, so that its thread ends first
};

}  // namespace desk::tv
