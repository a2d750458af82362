// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <json/value.h>

#include <functional>
#include <map>
#include <string>

#include "package/manifest.h"
#include "tv/router.h"
#include "tv/tv_store.h"

namespace desk::tv {

/// The web-app service: a table of web apps, kept over power-off, and was.*. Main loop only.
///
/// It learns of a package when told of it, or a set number of seconds later, and then writes the
/// widget id to the settings key that others wait for. An app's widget id is its app id unless set
/// otherwise. Of a package with several UI applications it knows each; a package with services
/// alone is known by its first service, so that it does not count as gone.
class Was {
 public:
  using SetKey = std::function<void(const std::string& key, const std::string& value)>;

  Was(Router& router, TvStore& store, SetKey setKey);
  ~Was();
  Was(const Was&) = delete;
  Was& operator=(const Was&) = delete;

  /// Power-on, before the daemon is started: no delay is set, and what the service was yet to learn
  /// of when the power went is known at once.
  void TurnOn();

  /// Installed or updated. Apps that are known already stay as they are; apps that the package has
  /// no more are forgotten.
  void Learn(const PackageManifest& package);
  void Forget(const std::string& package);

  /// As the reply of was.list has it in `entries`.
  Json::Value Dump() const;

 private:
  struct Timer;

  void AddMethods(Router& router);
  void Enter(const std::string& package, const Json::Value& apps);
  Json::Value Set(const Json::Value& request);
  Json::Value Find(const std::string& app) const;
  bool Remove(const std::string& package);
  Json::Value Entries() const;
  void Store(const char* member, const Json::Value& value);
  void Delay(const std::string& package, const Json::Value& apps, int seconds);
  void CancelDelay(const std::string& package);

  TvStore& m_store;
  const SetKey m_setKey;
  int m_delay = 0;                         ///< seconds; set until the power goes
  std::map<std::string, unsigned> m_late;  ///< package to the timer's source
};

}  // namespace desk::tv
