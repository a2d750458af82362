// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/web_app_table.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include "desk/common/desk_error.h"
#include "desk/common/json.h"

namespace desk::tv {
namespace {

constexpr char SECTION[] = "was";
constexpr char INSTALL_KEY[] = "memory/was/app_install";

using AppIds = std::vector<std::string>;

AppIds AppsKnownFor(const PackageManifest& package) {
  AppIds apps;
  for (const PackageApp& app : package.apps) {
    if (app.component == Component::Ui) {
      apps.push_back(app.id);
    }
  }
  if (apps.empty() && !package.apps.empty()) {
    apps.push_back(package.apps.front().id);
  }
  return apps;
}

WebAppEntry NewEntry(const std::string& package, const std::string& app) {
  WebAppEntry entry;
  entry.package = package;
  entry.app = app;
  entry.widget = app;
  return entry;
}

WebAppEntry ReadEntry(const Json::Value& row) {
  WebAppEntry entry;
  entry.package = row["package"].asString();
  entry.app = row["app"].asString();
  entry.widget = row["widget"].asString();
  entry.kind = row["kind"].asInt();
  entry.gone = row["gone"].asBool();
  return entry;
}

Json::Value ToJson(const WebAppEntry& entry) {
  return JsonObject({{"package", entry.package},
                     {"app", entry.app},
                     {"widget", entry.widget},
                     {"kind", entry.kind},
                     {"gone", entry.gone}});
}

Json::Value ToJson(const std::vector<WebAppEntry>& entries) {
  Json::Value list(Json::arrayValue);
  for (const WebAppEntry& entry : entries) {
    list.append(ToJson(entry));
  }
  return list;
}

AppIds ReadIds(const Json::Value& list) {
  AppIds ids;
  for (const Json::Value& id : list) {
    ids.push_back(id.asString());
  }
  return ids;
}

Json::Value ToJson(const AppIds& ids) {
  Json::Value list(Json::arrayValue);
  for (const std::string& id : ids) {
    list.append(id);
  }
  return list;
}

WebAppChange ReadChange(const Json::Value& request) {
  WebAppChange change;
  change.package = RequireString(request, "package");
  if (!request["app"].isNull()) {
    change.app = RequireString(request, "app");
  }
  if (!request["widget"].isNull()) {
    change.widget = RequireString(request, "widget");
  }
  if (!request["kind"].isNull()) {
    change.kind = OptionalInt(request, "kind", 0);
  }
  if (!request["gone"].isNull()) {
    change.gone = OptionalBool(request, "gone", false);
  }
  return change;
}

int ReadDelay(const Json::Value& request) {
  const int seconds = OptionalInt(request, "seconds", -1);
  if (seconds < 0) {
    throw DeskError(DeskError::USAGE, "the delay must be a number of seconds, 0 or more");
  }
  return seconds;
}

// Delays are limited to 49 days, the range of the timer.
unsigned Milliseconds(int seconds) {
  const std::int64_t milliseconds = std::int64_t{seconds} * 1000;
  return static_cast<unsigned>(
      std::min<std::int64_t>(milliseconds, std::numeric_limits<unsigned>::max()));
}

bool Contains(const AppIds& ids, const std::string& id) {
  return std::find(ids.begin(), ids.end(), id) != ids.end();
}

}  // namespace

WebAppTable::WebAppTable(const Needs& needs, TvStore& store) : m_needs(needs), m_store(store) {
  const Json::Value& section = store.Get(SECTION);
  if (section.isObject()) {
    for (const Json::Value& row : section["entries"]) {
      m_entries.push_back(ReadEntry(row));
    }
    const Json::Value& waiting = section["late"];
    for (const std::string& package : waiting.getMemberNames()) {
      m_waiting[package] = ReadIds(waiting[package]);
    }
  }
  AddMethods(needs.router);
  AddChanges(needs.router);
}

void WebAppTable::TurnOn() {
  m_delay = 0;
  const std::map<std::string, AppIds> waiting = m_waiting;
  for (const auto& [package, apps] : waiting) {
    Enter(package, apps);
  }
}

void WebAppTable::AddMethods(Router& router) {
  router.Add("was.all", [this](const Json::Value&, const Caller&) {
    Json::Value list(Json::arrayValue);
    for (const WebAppEntry& entry : m_entries) {
      list.append(
          JsonObject({{"package", entry.package}, {"kind", entry.kind}, {"gone", entry.gone}}));
    }
    return JsonObject({{"result", 0}, {"list", list}});
  });
  router.Add("was.find", [this](const Json::Value& request, const Caller&) {
    const WebAppEntry* entry = Find(RequireString(request, "app"));
    return entry == nullptr
               ? JsonObject({{"result", -1}})
               : JsonObject({{"result", 0}, {"widget", entry->widget}, {"app", entry->app}});
  });
  router.Add("was.list", [this](const Json::Value&, const Caller&) {
    return JsonObject({{"entries", Dump()}});
  });
}

void WebAppTable::AddChanges(Router& router) {
  router.Add("was.set", [this](const Json::Value& request, const Caller&) {
    return ToJson(Set(ReadChange(request)));
  });
  router.Add("was.remove", [this](const Json::Value& request, const Caller&) {
    return JsonObject({{"found", Remove(RequireString(request, "package"))}});
  });
  router.Add("was.delay", [this](const Json::Value& request, const Caller&) {
    m_delay = ReadDelay(request);
    return Json::Value(Json::objectValue);
  });
}

void WebAppTable::Learn(const PackageManifest& package) {
  const AppIds apps = AppsKnownFor(package);
  Entries kept;
  std::copy_if(m_entries.begin(), m_entries.end(), std::back_inserter(kept),
               [&](const WebAppEntry& entry) {
                 return entry.package != package.id || Contains(apps, entry.app);
               });
  Store(std::move(kept), m_waiting);
  if (m_delay == 0) {
    Enter(package.id, apps);
  } else {
    Delay(package.id, apps);
  }
}

void WebAppTable::Forget(const std::string& package) {
  CancelDelay(package);
  Remove(package);
}

Json::Value WebAppTable::Dump() const {
  return ToJson(m_entries);
}

void WebAppTable::Enter(const std::string& package, const AppIds& apps) {
  CancelDelay(package);
  Entries entries = m_entries;
  AppIds learned;
  for (const std::string& app : apps) {
    const bool known = std::any_of(entries.begin(), entries.end(), [&](const WebAppEntry& entry) {
      return entry.package == package && entry.app == app;
    });
    if (!known) {
      entries.push_back(NewEntry(package, app));
      learned.push_back(app);
    }
  }
  if (learned.empty()) {
    return;
  }
  Store(std::move(entries), m_waiting);
  for (const std::string& widget : learned) {
    m_needs.setKey(INSTALL_KEY, widget);
  }
}

// The package need not be installed.
WebAppEntry WebAppTable::Set(const WebAppChange& change) {
  Entries entries = m_entries;
  auto entry = std::find_if(entries.begin(), entries.end(), [&](const WebAppEntry& candidate) {
    return candidate.package == change.package;
  });
  if (entry == entries.end()) {
    entry = entries.insert(entries.end(), NewEntry(change.package, change.package));
  }
  entry->app = change.app.value_or(entry->app);
  entry->widget = change.widget.value_or(entry->widget);
  entry->kind = change.kind.value_or(entry->kind);
  entry->gone = change.gone.value_or(entry->gone);
  const WebAppEntry changed = *entry;
  Store(std::move(entries), m_waiting);
  return changed;
}

const WebAppEntry* WebAppTable::Find(const std::string& app) const {
  const auto found =
      std::find_if(m_entries.begin(), m_entries.end(),
                   [&](const WebAppEntry& entry) { return !app.empty() && entry.app == app; });
  return found == m_entries.end() ? nullptr : &*found;
}

bool WebAppTable::Remove(const std::string& package) {
  Entries kept;
  std::copy_if(m_entries.begin(), m_entries.end(), std::back_inserter(kept),
               [&](const WebAppEntry& entry) { return entry.package != package; });
  if (kept.size() == m_entries.size()) {
    return false;
  }
  Store(std::move(kept), m_waiting);
  return true;
}

void WebAppTable::Store(Entries entries, std::map<std::string, AppIds> waiting) {
  Json::Value late(Json::objectValue);
  for (const auto& [package, apps] : waiting) {
    late[package] = ToJson(apps);
  }
  m_store.Set(SECTION, JsonObject({{"entries", ToJson(entries)}, {"late", late}}));
  m_entries = std::move(entries);
  m_waiting = std::move(waiting);
}

void WebAppTable::Delay(const std::string& package, const AppIds& apps) {
  CancelDelay(package);
  std::map<std::string, AppIds> waiting = m_waiting;
  waiting[package] = apps;
  Store(m_entries, std::move(waiting));
  std::unique_ptr<Timer>& timer = m_timers[package];
  timer = std::make_unique<Timer>();
  timer->Set(Milliseconds(m_delay), [this, package, apps] {
    try {
      Enter(package, apps);
    } catch (const DeskError& error) {
      m_needs.log(std::string("the web-app service: ") + error.what());
    }
  });
}

void WebAppTable::CancelDelay(const std::string& package) {
  m_timers.erase(package);
  std::map<std::string, AppIds> waiting = m_waiting;
  if (waiting.erase(package) > 0) {
    Store(m_entries, std::move(waiting));
  }
}

}  // namespace desk::tv
