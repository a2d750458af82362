// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <functional>
#include <memory>
#include <string>

#include "desk/common/paths.h"
#include "desk/package/package_file.h"
#include "desk/tv/router.h"
#include "desk/tv/services/catalogue.h"
#include "desk/tv/worker.h"

namespace desk::tv {

/// How other services follow changes of packages. All functions run on the main loop; empty ones
/// are skipped. `beforeChange` may throw DeskError to refuse the change; the others must not throw.
struct PackageHooks {
  /// Before the tree of an installed package is exchanged or removed.
  std::function<void(const std::string& package)> beforeChange;
  /// Once the tree and the row are in place, before the event "completed". `before` is null on an
  /// install.
  std::function<void(const PackageManifest& now, const PackageManifest* before)> present;
  /// Once the tree and the row are removed, before the event "completed".
  std::function<void(const PackageManifest& before)> removed;
};

/// The package manager: pkg.list, pkg.info, pkg.install, pkg.uninstall and the topic "package".
///
/// A thread of its own reads archives and creates and removes trees, one package at a time, in the
/// order of the calls. The catalogue, the hooks and everything else stay on the main loop. A
/// package is installed, updated or removed completely or not at all.
class Packages {
 public:
  /// Removes the remains of an interrupted install, and rows whose tree is missing. The catalogue
  /// must outlive this object. Throws DeskError (Failed).
  Packages(Router& router, const DeskPaths& paths, Catalogue& catalogue, PackageHooks hooks);
  /// On the main loop's thread; see Worker.
  ~Packages();

  /// As `packages` in the reply of pkg.list.
  Json::Value Dump() const;

 private:
  enum class JobKind { Install, Update, Uninstall };
  enum class JobState { Started, Processing, Completed, Failed };
  struct Job;

  static const char* Name(JobKind kind);
  static const char* Name(JobState state);

  void AddMethods(Router& router);
  Json::Value Encode(const PackageManifest& manifest) const;
  void Post(Job job);
  void Run(Job& job);
  void Install(Job& job);
  void Place(Job& job, const PackageFile& package);
  void Uninstall(Job& job);
  void CallBeforeChange(const std::string& package);
  void CheckInstallable(const Job& job, const PackageManifest& manifest) const;
  void Commit(const Job& job, const PackageManifest& manifest);
  void SendEvent(const Job& job, JobState state, int progress, int error = 0);

  Router& m_router;
  const DeskPaths m_paths;
  Catalogue& m_catalogue;
  const PackageHooks m_hooks;
  Worker m_worker;  ///< last member: its thread ends first
};

}  // namespace desk::tv
