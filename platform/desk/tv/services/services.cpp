// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/services.h"

#include <utility>

#include "desk/common/desk_error.h"
#include "desk/tv/services/apps.h"
#include "desk/tv/services/broadcast.h"
#include "desk/tv/services/catalogue.h"
#include "desk/tv/services/channels.h"
#include "desk/tv/services/mounts.h"
#include "desk/tv/services/operations.h"
#include "desk/tv/services/packages.h"
#include "desk/tv/services/ports.h"
#include "desk/tv/services/web_app_table.h"
#include "desk/tv/tv_store.h"

namespace desk::tv {
namespace {

constexpr char WEB_APP_SERVICE[] = "the web-app service";

// An event that has happened stays valid even if its settings key cannot be written.
Needs WithLoggedKeyErrors(Needs needs) {
  needs.setKey = [set = needs.setKey, log = needs.log](const std::string& key,
                                                       const std::string& value) {
    try {
      set(key, value);
    } catch (const DeskError& error) {
      log("cannot set " + key + ": " + error.what());
    }
  };
  return needs;
}

}  // namespace

// Created in this order, destroyed in reverse.
struct Services::Parts {
  explicit Parts(Needs wanted)
      : needs(WithLoggedKeyErrors(std::move(wanted))),
        store(needs.paths.TvState()),
        catalogue(needs.paths.PackagesDb()),
        webApps(needs, store),
        channels(needs.router, store),
        broadcast(needs, store, channels),
        operations(needs.router),
        ports(needs.router),
        mounts(needs.router, needs.paths),
        apps(needs, catalogue, store),
        packages(needs.router, needs.paths, catalogue, Hooks()) {}

  PackageHooks Hooks() {
    PackageHooks hooks;
    hooks.beforeChange = [this](const std::string& package) { apps.EndPackage(package); };
    hooks.present = [this](const PackageManifest& now, const PackageManifest* before) {
      // An app may have been launched while the tree was exchanged.
      if (before != nullptr) {
        apps.EndPackage(now.id);
      }
      Try(WEB_APP_SERVICE, [&] { webApps.Learn(now); });
    };
    hooks.removed = [this](const PackageManifest& before) {
      apps.EndPackage(before.id);
      Try(WEB_APP_SERVICE, [&] { webApps.Forget(before.id); });
    };
    return hooks;
  }

  void Try(const char* service, const std::function<void()>& function) {
    try {
      function();
    } catch (const DeskError& error) {
      needs.log(std::string(service) + ": " + error.what());
    }
  }

  const Needs needs;
  TvStore store;
  Catalogue catalogue;
  WebAppTable webApps;
  Channels channels;
  Broadcast broadcast;
  Operations operations;
  Ports ports;
  Mounts mounts;
  Apps apps;
  Packages packages;
};

Services::Services(Needs needs) : m_parts(std::make_unique<Parts>(std::move(needs))) {}

Services::~Services() = default;

void Services::TurnOff() {
  m_parts->apps.EndAll();
  m_parts->operations.Clear();
  m_parts->mounts.UnmountAll();
}

void Services::TurnOn() {
  m_parts->broadcast.TurnOn();
  m_parts->Try(WEB_APP_SERVICE, [this] { m_parts->webApps.TurnOn(); });
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
          {"was", [&parts] { return parts.webApps.Dump(); }},
          {"services", [&parts] { return parts.broadcast.Dump(); }},
          {"tuned", [&parts] { return parts.broadcast.Tuned(); }},
          {"ports", [&parts] { return parts.ports.Dump(); }},
          {"mounts", [&parts] { return parts.mounts.Dump(); }}};
}

}  // namespace desk::tv
