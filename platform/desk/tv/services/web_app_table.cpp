// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "tv/services/web_app_table.h"

#include <glib.h>

#include <algorithm>
#include <utility>

#include "common/desk_error.h"
#include "common/json.h"

namespace desk::tv {
namespace {

constexpr char kSection[] = "was";
constexpr char kKey[] = "memory/was/app_install";
constexpr int kWebApp = 2;

Json::Value AppsKnownFor(const PackageManifest& package) {
  Json::Value apps(Json::arrayValue);
  for (const PackageApp& app : package.apps) {
    if (app.component == Component::Ui) {
      apps.append(app.id);
    }
  }
  if (apps.empty() && !package.apps.empty()) {
    apps.append(package.apps.front().id);
  }
  return apps;
}

Json::Value NewEntry(const std::string& package, const std::string& app) {
  Json::Value entry(Json::objectValue);
  entry["package"] = package;
  entry["app"] = app;
  entry["widget"] = app;
  entry["kind"] = kWebApp;
  entry["gone"] = false;
  return entry;
}

bool Contains(const Json::Value& texts, const std::string& text) {
  return std::any_of(texts.begin(), texts.end(),
                     [&](const Json::Value& item) { return item == Json::Value(text); });
}

Json::Value Without(const Json::Value& entries,
                    const std::function<bool(const Json::Value&)>& unwanted) {
  Json::Value kept(Json::arrayValue);
  for (const Json::Value& entry : entries) {
    if (!unwanted(entry)) {
      kept.append(entry);
    }
  }
  return kept;
}

}  // namespace

struct Was::Timer {
  Was* was;
  std::string package;
  Json::Value apps;
};

Was::Was(Router& router, TvStore& store, SetKey setKey)
    : m_store(store), m_setKey(std::move(setKey)) {
  AddMethods(router);
}

Was::~Was() {
  for (const auto& [package, source] : m_late) {
    g_source_remove(source);
  }
}

void Was::TurnOn() {
  m_delay = 0;
  const Json::Value late = m_store.Get(kSection)["late"];
  for (const std::string& package : late.getMemberNames()) {
    Enter(package, late[package]);
  }
}

void Was::AddMethods(Router& router) {
  router.Add("was.all", [this](const Json::Value&, const Caller&) {
    Json::Value answer(Json::objectValue);
    answer["result"] = 0;
    answer["list"] = Json::Value(Json::arrayValue);
    for (const Json::Value& entry : Entries()) {
      Json::Value& item = answer["list"].append(Json::objectValue);
      item["package"] = entry["package"];
      item["kind"] = entry["kind"];
      item["gone"] = entry["gone"];
    }
    return answer;
  });
  router.Add("was.find", [this](const Json::Value& request, const Caller&) {
    return Find(RequireString(request, "app"));
  });
  router.Add("was.list", [this](const Json::Value&, const Caller&) {
    Json::Value answer(Json::objectValue);
    answer["entries"] = Entries();
    return answer;
  });
  router.Add("was.set", [this](const Json::Value& request, const Caller&) { return Set(request); });
  router.Add("was.remove", [this](const Json::Value& request, const Caller&) {
    Json::Value answer(Json::objectValue);
    answer["found"] = Remove(RequireString(request, "package"));
    return answer;
  });
  router.Add("was.delay", [this](const Json::Value& request, const Caller&) {
    const int seconds = OptionalInt(request, "seconds", -1);
    if (seconds < 0) {
      throw DeskError(DeskError::Usage, "the delay must be a number of seconds, 0 or more");
    }
    m_delay = seconds;
    return Json::Value(Json::objectValue);
  });
}

void Was::Learn(const PackageManifest& package) {
  const Json::Value apps = AppsKnownFor(package);
  Store("entries", Without(Entries(), [&](const Json::Value& entry) {
          return entry["package"] == Json::Value(package.id) &&
                 !Contains(apps, entry["app"].asString());
        }));
  if (m_delay == 0) {
    Enter(package.id, apps);
  } else {
    Delay(package.id, apps, m_delay);
  }
}

void Was::Forget(const std::string& package) {
  CancelDelay(package);
  Remove(package);
}

Json::Value Was::Dump() const {
  return Entries();
}

void Was::Enter(const std::string& package, const Json::Value& apps) {
  CancelDelay(package);
  Json::Value entries = Entries();
  std::vector<std::string> learned;
  for (const Json::Value& app : apps) {
    const bool known = std::any_of(entries.begin(), entries.end(), [&](const Json::Value& entry) {
      return entry["package"] == Json::Value(package) && entry["app"] == app;
    });
    if (!known) {
      entries.append(NewEntry(package, app.asString()));
      learned.push_back(app.asString());
    }
  }
  if (learned.empty()) {
    return;
  }
  Store("entries", entries);
  for (const std::string& widget : learned) {
    m_setKey(kKey, widget);
  }
}

// An entry that is set by hand may be of a package that is not installed.
Json::Value Was::Set(const Json::Value& request) {
  const std::string package = RequireString(request, "package");
  Json::Value entries = Entries();
  const auto found = std::find_if(entries.begin(), entries.end(), [&](const Json::Value& entry) {
    return entry["package"] == Json::Value(package);
  });
  Json::Value& entry = found == entries.end() ? entries.append(NewEntry(package, package)) : *found;
  entry["app"] = OptionalString(request, "app", entry["app"].asString());
  entry["widget"] = OptionalString(request, "widget", entry["widget"].asString());
  entry["kind"] = OptionalInt(request, "kind", entry["kind"].asInt());
  entry["gone"] = OptionalBool(request, "gone", entry["gone"].asBool());
  Json::Value answer = entry;
  Store("entries", entries);
  return answer;
}

Json::Value Was::Find(const std::string& app) const {
  Json::Value answer(Json::objectValue);
  answer["result"] = -1;
  for (const Json::Value& entry : Entries()) {
    if (!app.empty() && entry["app"] == Json::Value(app)) {
      answer["result"] = 0;
      answer["widget"] = entry["widget"];
      answer["app"] = entry["app"];
      break;
    }
  }
  return answer;
}

bool Was::Remove(const std::string& package) {
  const Json::Value entries = Entries();
  const Json::Value kept = Without(
      entries, [&](const Json::Value& entry) { return entry["package"] == Json::Value(package); });
  if (kept.size() == entries.size()) {
    return false;
  }
  Store("entries", kept);
  return true;
}

Json::Value Was::Entries() const {
  const Json::Value& section = m_store.Get(kSection);
  return section["entries"].isArray() ? section["entries"] : Json::Value(Json::arrayValue);
}

void Was::Store(const char* member, const Json::Value& value) {
  Json::Value section = m_store.Get(kSection);
  section[member] = value;
  m_store.Set(kSection, section);
}

void Was::Delay(const std::string& package, const Json::Value& apps, int seconds) {
  CancelDelay(package);
  Json::Value late = m_store.Get(kSection)["late"];
  late[package] = apps;
  Store("late", late);
  m_late[package] = g_timeout_add_seconds_full(
      G_PRIORITY_DEFAULT, static_cast<guint>(seconds),
      [](gpointer data) -> gboolean {
        // Ended by Enter, which forgets the source first; the copy outlives the timer's own data.
        const Timer timer = *static_cast<Timer*>(data);
        try {
          timer.was->Enter(timer.package, timer.apps);
        } catch (const DeskError& error) {
          g_printerr("desk-tv: the web-app service: %s\n", error.what());
        }
        return G_SOURCE_REMOVE;
      },
      new Timer{this, package, apps}, [](gpointer data) { delete static_cast<Timer*>(data); });
}

void Was::CancelDelay(const std::string& package) {
  const auto source = m_late.find(package);
  if (source != m_late.end()) {
    g_source_remove(source->second);
    m_late.erase(source);
  }
  Json::Value late = m_store.Get(kSection)["late"];
  if (late.isObject() && late.isMember(package)) {
    late.removeMember(package);
    Store("late", late);
  }
}

}  // namespace desk::tv
