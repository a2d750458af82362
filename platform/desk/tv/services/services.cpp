// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "tv/services/services.h"

#include <utility>

#include "common/desk_error.h"
#include "tv/services/apps.h"
#include "tv/services/broadcast.h"
#include "tv/services/catalogue.h"
#include "tv/services/channels.h"
#include "tv/services/mounts.h"
#include "tv/services/operations.h"
#include "tv/services/packages.h"
#include "tv/services/ports.h"
#include "tv/services/web_app_table.h"
#include "tv/tv_store.h"

namespace desk::tv {

// In the order of their making; destroyed the other way round.
struct Services::Parts {
  Parts(Router& router, const DeskPaths& paths, ServiceNeeds wanted)
      : needs(std::move(wanted)),
        store(paths.TvState()),
        catalogue(paths.PackagesDb()),
        was(router, store, SetKey()),
        channels(router, store),
        broadcast(router, store, channels, SetKey()),
        operations(router),
        ports(router),
        mounts(router, paths),
        apps(router, paths, catalogue, store,
             {needs.callers, needs.busAddress, needs.tools, SetKey(), needs.log}),
        packages(router, paths, catalogue, Hooks()) {}

  // A key that cannot be written must not undo what it tells of.
  std::function<void(const std::string&, const std::string&)> SetKey() {
    return [this](const std::string& key, const std::string& value) {
      try {
        needs.setKey(key, value);
      } catch (const DeskError& error) {
        needs.log("cannot set " + key + ": " + error.what());
      }
    };
  }

  PackageHooks Hooks() {
    PackageHooks hooks;
    hooks.beforeChange = [this](const std::string& package) { apps.EndPackage(package); };
    hooks.present = [this](const PackageManifest& now, const PackageManifest* before) {
      // An app may have been launched while the tree was exchanged.
      if (before != nullptr) {
        apps.EndPackage(now.id);
      }
      Try("the web-app service", [&] { was.Learn(now); });
    };
    hooks.gone = [this](const PackageManifest& before) {
      apps.EndPackage(before.id);
      Try("the web-app service", [&] { was.Forget(before.id); });
    };
    return hooks;
  }

  void Try(const char* who, const std::function<void()>& function) {
    try {
      function();
    } catch (const DeskError& error) {
      needs.log(std::string(who) + ": " + error.what());
    }
  }

  const ServiceNeeds needs;
  TvStore store;
  Catalogue catalogue;
  Was was;
  Channels channels;
  Broadcast broadcast;
  Operations operations;
  Ports ports;
  Mounts mounts;
  Apps apps;
  Packages packages;
};

Services::Services(Router& router, const DeskPaths& paths, ServiceNeeds needs)
    : m_parts(std::make_unique<Parts>(router, paths, std::move(needs))) {}

Services::~Services() = default;

void Services::TurnOff() {
  m_parts->apps.EndAll();
  m_parts->operations.Clear();
  m_parts->mounts.UnmountAll();
}

void Services::TurnOn() {
  m_parts->broadcast.TurnOn();
  m_parts->Try("the web-app service", [this] { m_parts->was.TurnOn(); });
}

std::string Services::DescribeMounts() const {
  return m_parts->mounts.Describe();
}

std::map<std::string, std::function<Json::Value()>> Services::Dumps() const {
  Parts& parts = *m_parts;
  return {{"packages", [&parts] { return parts.packages.Dump(); }},
          {"apps", [&parts] { return parts.apps.Dump(); }},
          {"channels", [&parts] { return parts.channels.Dump(); }},
          {"operations", [&parts] { return parts.operations.Dump(); }},
          {"was", [&parts] { return parts.was.Dump(); }},
          {"services", [&parts] { return parts.broadcast.Dump(); }},
          {"tuned", [&parts] { return parts.broadcast.Tuned(); }},
          {"ports", [&parts] { return parts.ports.Dump(); }},
          {"mounts", [&parts] { return parts.mounts.Dump(); }}};
}

}  // namespace desk::tv
