// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <boost/filesystem.hpp>

#include "app_info/AppInfoCache.h"
#include "app_info/AppInfoDB.h"
#include "fake/control/fake.h"
#include "support/files.h"
#include "unit/app_info/records.h"
#include "unit/traces/trace.h"

namespace {

using records::Layer;
using records::Owned;

/// Ids that are prefixes of each other, differ in case only, or contain what LIKE and blanks mean.
const std::vector<std::string> IDS = {"a.b", "a.bc", "A.b", "a_b", "a%b", "a b", "a", ""};

AppBaseInfo LookAlikes(const std::string& package, int generation) {
  AppBaseInfo info;
  info.m_sPackageID = package;
  info.m_sAppID = package + ".app";
  info.m_sWidgetID = package + ".Widget" + std::to_string(generation);
  info.m_sServiceID = package + ".app.service";
  info.m_sVersion = package + " " + std::to_string(generation);
  return info;
}

/// A service feeder with a screen around it.
Owned<Layer> MakeRecord(const std::string& package, int generation = 1,
                        const std::string& feeder = "standard") {
  auto* const inner = new Layer(new ORVAppInfo(LookAlikes(package, generation)), "ch_feeder_custom",
                                feeder, {"expiration_date_str"});
  return Owned<Layer>(new Layer(inner, "custom_ui_extended2", "epg", {"custom_ui_cold_boot_opt"}));
}

std::string Shown(const AppInfo* record) {
  if (record == nullptr) return "null";
  return record->m_sPackageID + " | " + record->m_sAppID + " | " + record->m_sWidgetID + " | " +
         record->m_sServiceID + " | " + record->m_sVersion + " | " +
         record->GetMetadata("orv_data", "expiration_date_str");
}

void PrintCacheAndStore(std::ostream& stream) {
  AppInfoCache& cache = *AppInfoCache::GetInstance();
  std::vector<std::string> ids;
  cache.GetAppIDList(ids);
  for (const std::string& id : ids) {
    stream << "record \"" << id << "\": " << Shown(cache.GetAppInfo(id)) << "\n";
  }
  stream << "scheduled " << cache.GetSchedulingListSize() << "\n";
  traces::PrintStore(stream);
}

class CacheTraces : public testing::Test {
 protected:
  CacheTraces() : m_cache(*AppInfoCache::GetInstance()) {
    records::MakeStoreDirectory();
    m_trace.Do("open", [&] { m_cache.OpenDB(); });
  }
  Layer* Keep(Owned<Layer> record) {
    m_records.push_back(std::move(record));
    return m_records.back().get();
  }
  void Add(const std::string& package, int generation, bool stored) {
    Layer* const record = Keep(MakeRecord(package, generation));
    m_trace.Do("add \"" + package + "\" " + std::to_string(generation) + (stored ? ", stored" : ""),
               [&] { return m_cache.AddAppInfo(package, record, stored); });
  }
  void Update(const std::string& package, int generation) {
    Layer* const record = Keep(MakeRecord(package, generation));
    m_trace.Do("update \"" + package + "\" " + std::to_string(generation),
               [&] { return m_cache.UpdateAppInfo(package, record); });
  }
  void Remove(const std::string& package) {
    m_trace.Do("remove \"" + package + "\"", [&] { return Shown(m_cache.RemoveAppInfo(package)); });
  }
  void Find(const std::string& package) {
    m_trace.Do("find \"" + package + "\"", [&] { return Shown(m_cache.GetAppInfo(package)); });
    m_trace.Do("pin \"" + package + "\"", [&] { return Shown(m_cache.PinAppInfo(package).get()); });
  }
  void Schedule(const std::string& package) {
    m_trace.Do("schedule \"" + package + "\"", [&] { m_cache.AddSchedulingItem(package); });
  }
  void Unschedule(const std::string& package) {
    m_trace.Do("unschedule \"" + package + "\"", [&] { m_cache.RemoveSchedulingItem(package); });
  }
  void PickAll() {
    for (bool more = true; more;) {
      m_trace.Do("pick", [&] {
        SchedulingItem item{"p", "s", "e"};
        more = m_cache.GetNextSchedulingItem(item);
        return std::string(more ? "true " : "false ") + item.package_id + " | " + item.service_id +
               " | " + item.expiration_date;
      });
    }
  }
  void SetDueTime(const std::string& package, const std::string& time) {
    m_trace.Do("due time of \"" + package + "\" is " + time, [&] {
      return m_cache.UpdateSchedulingItem({package, "a service", time});
    });
  }

  AppInfoCache& m_cache;
  std::vector<Owned<Layer>> m_records;
  Trace m_trace{&PrintCacheAndStore};
};

TEST_F(CacheTraces, Records) {
  for (const std::string& id : IDS) Add(id, 1, true);
  for (const std::string id : {"a.b", "A.b", "", "a.", "a.bcd"}) Find(id);
  for (const std::string id : {"a_b", "a%b", "a.b", "a b"}) Update(id, 2);
  Update("new", 1);
  Add("a_b", 3, true);
  Add("a.b", 3, false);
  for (const std::string id : {"a%", "a_b", "a%b", "A.B", "a"}) Remove(id);
  Add("quo'te", 1, true);
  Update("quo'te", 2);
  Remove("quo'te");
  m_trace.Do("ids", [&] {
    std::vector<std::string> ids = {"first"};
    m_cache.GetAppIDList(ids);
    std::string text;
    for (const std::string& id : ids) text += "\"" + id + "\" ";
    return text;
  });
  m_trace.Do("walks", [&] {
    std::vector<std::string> ids = {"first"};
    m_cache.GetAppIDListByType("ch_feeder_custom", ids);
    m_cache.GetAppIDListByType("custom_ui_extended", ids);
    m_cache.GetAppIDListByType("custom_ui_extended2", ids);
    m_cache.GetAppIDListByType("", ids);
    std::string text;
    for (const std::string& id : ids) text += "\"" + id + "\" ";
    return text;
  });
  m_trace.Do("rows", [&] {
    AppInfoDB::RowMap rows = {{"old", {}}};
    std::string text = m_cache.LoadData(rows) ? "true" : "false";
    for (const auto& [package, row] : rows) {
      text += "\n\"" + package + "\"";
      for (const auto& [column, value] : row) text += "; " + column + " = " + value;
    }
    return text;
  });
  m_trace.Do("clear", [&] { m_cache.ClearCacheAndDB(); });
  Add("a", 1, true);
  Update("a", 1);
  Remove("a");
  m_trace.Compare("CacheRecords");
}

TEST_F(CacheTraces, Schedule) {
  for (const std::string& id : IDS) Add(id, 1, true);
  m_trace.Prepare([&] { m_cache.AddAppInfo("web", Keep(MakeRecord("web", 1, "")), false); });
  m_trace.Do("refill", [&] { return m_cache.ResetSchedulingList(); });
  m_trace.Do("refill again", [&] { return m_cache.ResetSchedulingList(); });
  for (const std::string id : {"a_b", "a_b", "A.b", "a.", "absent"}) Schedule(id);
  for (const std::string id : {"a", "a", "a%", "a%b", "absent"}) Unschedule(id);
  for (const std::string id : {"a_b", "a%b", "A.b", "absent", "", "a"})
    SetDueTime(id, "2030 " + id);
  SetDueTime("a.b", "quo'te");
  Remove("a.bc");
  PickAll();
  Schedule("a.b");
  Schedule("web");
  Schedule("a");
  m_trace.Do("empty", [&] { m_cache.ClearSchedulingList(); });
  PickAll();
  Schedule("a.b");
  m_trace.Do("clear", [&] { m_cache.ClearCacheAndDB(); });
  PickAll();
  m_trace.Compare("CacheSchedule");
}

TEST_F(CacheTraces, PreloadingApps) {
  for (const auto& [type, value] :
       std::vector<std::pair<std::string, std::string>>{{"custom_ui_standard", "info"},
                                                        {"custom_ui_standard", ""},
                                                        {"custom_ui_extended", "epg"},
                                                        {"custom_ui_extended", ""},
                                                        {"custom_ui_extended2", "epg"},
                                                        {"ch_feeder_standard", "extended"}}) {
    const std::string package = type + "." + value;
    Layer* const record = Keep(Owned<Layer>(
        new Layer(new ORVAppInfo(LookAlikes(package, 1)), type, value, {"custom_ui_standard"})));
    record->SetMetadata("orv_data", {"custom_ui_standard", "info"}, false);
    m_cache.AddAppInfo(package, record, false);
  }
  m_trace.Do("list", [&] {
    std::vector<PreloadingApp> apps = {{"first", "entry"}};
    m_cache.GetPreloadingApps(apps);
    std::string text;
    for (const auto& [app, widget] : apps) text += app + " | " + widget + "; ";
    return text;
  });
  m_trace.Compare("CachePreloadingApps");
}

// The store's file.

void PrintStoreFile(std::ostream& stream) {
  traces::PrintStore(stream);
  stream << "open " << records::OpenCount() << "\n";
}

/// A table with these columns and one row.
void MakeTable(const std::string& columns, int count) {
  records::ExecuteOnStore("CREATE TABLE appinfo(" + columns + ")");
  std::string values = "'a'";
  for (int i = 1; i < count; ++i) values += ", 'v" + std::to_string(i) + "'";
  records::ExecuteOnStore("INSERT INTO appinfo VALUES(" + values + ")");
}

struct StoreFile {
  std::string title;
  std::function<void()> make;
};

const std::string COLUMNS =
    "package_id TEXT PRIMARY KEY, app_id TEXT, widget_id TEXT, service_id TEXT, version TEXT, "
    "variables TEXT, extra_data1 TEXT, extra_data2 TEXT, extra_data3 TEXT, extra_data4 TEXT";

std::string Replaced(std::string text, const std::string& old, const std::string& now) {
  return text.replace(text.find(old), old.size(), now);
}

/// The kinds of files that the daemon may find. The last one changes the schema for good.
const std::vector<StoreFile>& StoreFiles() {
  static const std::vector<StoreFile> files = {
      {"no directory",
       [] {
         const std::string path = records::StorePath();
         boost::filesystem::remove_all(path.substr(0, path.rfind('/')));
       }},
      {"no file", [] {}},
      {"an empty file", [] { support::WriteFile(records::StorePath(), ""); }},
      {"one byte", [] { support::WriteFile(records::StorePath(), "x"); }},
      {"ten bytes", [] { support::WriteFile(records::StorePath(), "0123456789"); }},
      {"a text", [] { support::WriteFile(records::StorePath(), std::string(5000, 'x')); }},
      {"a directory", [] { support::MakeDirectories(records::StorePath()); }},
      {"the daemon's table", [] { MakeTable(COLUMNS, 10); }},
      {"another table", [] { records::ExecuteOnStore("CREATE TABLE appinfo2(x TEXT)"); }},
      {"another name", [] { MakeTable(Replaced(COLUMNS, "service_id", "service_ids"), 10); }},
      {"another case", [] { MakeTable(Replaced(COLUMNS, "version", "Version"), 10); }},
      {"another type", [] { MakeTable(Replaced(COLUMNS, "version TEXT", "version INTEGER"), 10); }},
      {"no type", [] { MakeTable(Replaced(COLUMNS, "version TEXT", "version"), 10); }},
      {"no key", [] { MakeTable(Replaced(COLUMNS, " PRIMARY KEY", ""), 10); }},
      {"two keys",
       [] {
         MakeTable(Replaced(COLUMNS, " PRIMARY KEY", "") + ", PRIMARY KEY(package_id, app_id)", 10);
       }},
      {"nine columns", [] { MakeTable(Replaced(COLUMNS, ", extra_data4 TEXT", ""), 9); }},
      {"eleven columns", [] { MakeTable(COLUMNS + ", more TEXT", 11); }},
  };
  return files;
}

TEST(StoreTraces, EveryKindOfFile) {
  Trace trace(&PrintStoreFile);
  for (const StoreFile& file : StoreFiles()) {
    trace.Prepare([&] {
      records::MakeStoreDirectory();
      boost::filesystem::remove_all(records::StorePath());
      file.make();
    });
    AppInfoDB database;
    trace.Do(file.title + ": open", [&] { database.OpenDB(); });
    trace.Do("load", [&] {
      AppInfoDB::RowMap rows;
      const bool result = database.LoadData(rows);
      std::string text = result ? "true" : "false";
      for (const auto& [package, row] : rows) text += "; " + package + " " + row.begin()->second;
      return text;
    });
    const auto first = MakeRecord("a", 1);
    const auto second = MakeRecord("b", 1);
    trace.Do("insert", [&] { return database.InsertNewRecord(second.get()); });
    trace.Do("insert again", [&] { return database.InsertNewRecord(second.get()); });
    trace.Do("update", [&] { return database.UpdateRecord(first.get()); });
    trace.Do("delete", [&] { return database.DeleteRecord("b"); });
    trace.Do("delete again", [&] { return database.DeleteRecord("b"); });
    trace.Do("remove", [&] { database.RemoveDBFile(); });
    trace.Do("delete without a file", [&] { return database.DeleteRecord("a"); });
    trace.Do("remove again", [&] { database.RemoveDBFile(); });
  }
  trace.Compare("StoreFiles");
}

std::string Checked(int (*check)(void*, int, char**, char**), std::vector<std::string> texts) {
  std::vector<char*> values;
  for (std::string& text : texts) values.push_back(text == "<null>" ? nullptr : text.data());
  values.push_back(nullptr);
  return std::to_string(check(nullptr, static_cast<int>(texts.size()), values.data(), nullptr));
}

TEST(StoreTraces, RowsOfTheChecks) {
  Trace trace(&PrintStoreFile);
  for (const std::string text : {"ok", "OK", "Ok", "ok ", "o", "okay", "", "<null>", "not ok"}) {
    trace.Do("integrity \"" + text + "\"",
             [&] { return Checked(&AppInfoDB::IntegrityCheckCallBack, {text}); });
  }
  trace.Do("integrity without a value",
           [] { return Checked(&AppInfoDB::IntegrityCheckCallBack, {}); });
  const std::vector<std::string> good[] = {{"0", "package_id", "TEXT", "0", "<null>", "1"},
                                           {"4", "version", "TEXT", "0", "<null>", "0"}};
  for (const auto& row : good) {
    for (std::size_t at = 0; at < row.size(); ++at) {
      for (const std::string value :
           {row[at].c_str(), "<null>", "", "0", "1", "2", "-1", "T", "PRIMARY KEY",
            "TEXT PRIMARY KEY", "text", "app_id", "version "}) {
        if (at == 0 && (value == "-1")) continue;  // would enter an index that stays
        std::vector<std::string> changed = row;
        changed[at] = value;
        trace.Do("schema " + row[1] + ", field " + std::to_string(at) + " is " + value,
                 [&] { return Checked(&AppInfoDB::SchemaCheckCallback, changed); });
      }
    }
    const std::vector<std::string> shorter(row.begin(), row.end() - 1);
    trace.Do("schema " + row[1] + " of five fields",
             [&] { return Checked(&AppInfoDB::SchemaCheckCallback, shorter); });
  }
  trace.Compare("StoreChecks");
}

}  // namespace
