// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "desk/common/timer.h"
#include "desk/package/manifest.h"
#include "desk/tv/services/needs.h"
#include "desk/tv/tv_store.h"

namespace desk::tv {

/// One row of the table of the web-app service.
struct WebAppEntry {
  static constexpr int WEB_APP = 2;

  std::string package;
  std::string app;
  std::string widget;  ///< widget id; the app id unless it was set by hand
  int kind = WEB_APP;
  bool gone = false;
};

/// A change by hand; empty members stay as they are.
struct WebAppChange {
  std::string package;
  std::optional<std::string> app;
  std::optional<std::string> widget;
  std::optional<int> kind;
  std::optional<bool> gone;
};

/// The web-app service: a table of web apps, and was.*. Survives power-off. Main loop only.
///
/// The service learns of a package when it is installed, or a set number of seconds later, and then
/// writes the widget id to the settings key that the daemon waits for. It knows each UI application
/// of a package. A package that only has services is known by its first service, so that it does
/// not count as gone.
class WebAppTable {
 public:
  WebAppTable(const Needs& needs, TvStore& store);
  WebAppTable(const WebAppTable&) = delete;
  WebAppTable& operator=(const WebAppTable&) = delete;

  /// Power-on, before the daemon is started: resets the delay, and enters the packages that were
  /// still waiting when the power went off. Throws DeskError.
  void TurnOn();

  /// A package was installed or updated. Known apps keep their entries; entries of apps that the
  /// package no longer has are removed. Throws DeskError.
  void Learn(const PackageManifest& package);
  /// A package was removed. Throws DeskError.
  void Forget(const std::string& package);

  /// As `entries` in the reply of was.list.
  Json::Value Dump() const;

 private:
  using Entries = std::vector<WebAppEntry>;
  using AppIds = std::vector<std::string>;

  void AddMethods(Router& router);
  void AddChanges(Router& router);
  void Enter(const std::string& package, const AppIds& apps);
  WebAppEntry Set(const WebAppChange& change);
  const WebAppEntry* Find(const std::string& app) const;
  bool Remove(const std::string& package);
  void Store(Entries entries, std::map<std::string, AppIds> waiting);
  void Delay(const std::string& package, const AppIds& apps);
  void CancelDelay(const std::string& package);

  const Needs m_needs;
  TvStore& m_store;
  Entries m_entries;
  std::map<std::string, AppIds> m_waiting;                 ///< packages that are not entered yet
  int m_delay = 0;                                         ///< seconds; lasts until power-off
  std::map<std::string, std::unique_ptr<Timer>> m_timers;  ///< by package
};

}  // namespace desk::tv
