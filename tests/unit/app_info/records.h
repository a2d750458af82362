// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <tzplatform_config.h>

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "app_info/ORVAppInfo.h"
#include "app_info/app_type/AppTypeDecorator.h"
#include "fake/control/log.h"
#include "support/files.h"

/// Records, layers and the store's file, as the tests of the records need them.
namespace records {

inline AppBaseInfo Info(const std::string& package) {
  AppBaseInfo info;
  info.m_sPackageID = package;
  info.m_sAppID = package + ".app";
  info.m_sWidgetID = package + "-widget";
  info.m_sServiceID = package + ".service";
  info.m_sVersion = "1.2.3";
  return info;
}

/// What the layers did, in order: "ch run true", "ch release".
inline std::vector<std::string>& Journal() {
  static std::vector<std::string> journal;
  return journal;
}

/// Runs when a layer is released, before it is freed.
inline std::function<void(AppInfo*)>& ReleaseHook() {
  static std::function<void(AppInfo*)> hook;
  return hook;
}

/// A layer of any type name that only records its calls.
class Layer final : public AppTypeDecorator {
 public:
  Layer(AppInfo* inner, const std::string& type, const std::string& value,
        const std::vector<std::string>& applied = {},
        const std::vector<std::string>& updatable = {})
      : AppTypeDecorator(inner, type, value) {
    for (const std::string& key : applied) {
      m_mapAppliedData[key];
    }
    for (const std::string& key : updatable) {
      m_mapUpdatableData[key];
    }
  }

  static void Release(AppInfo* layer) {
    if (layer == nullptr) {
      return;
    }
    Journal().push_back(layer->GetAppType() + " release");
    if (ReleaseHook()) {
      ReleaseHook()(layer);
    }
    delete static_cast<Layer*>(layer);
  }

  void RunOperation(bool bStarted) override {
    AppTypeDecorator::RunOperation(bStarted);
    Journal().push_back(m_AppliedAppType.first + (bStarted ? " run true" : " run false"));
  }
  void UpdateOperation() override {
    AppTypeDecorator::UpdateOperation();
    Journal().push_back(m_AppliedAppType.first + " update");
  }
  void StopOperation() override {
    AppTypeDecorator::StopOperation();
    Journal().push_back(m_AppliedAppType.first + " stop");
  }
  ReleaseFunction GetReleaseFunction() const override { return &Release; }

  AppInfo* Inner() const { return m_pAppInfo; }
  const std::pair<std::string, std::string>& AppliedType() const { return m_AppliedAppType; }
  const std::pair<std::string, std::string>& StagedType() const { return m_UpdatableAppType; }
  const std::map<std::string, std::string>& Applied() const { return m_mapAppliedData; }
  const std::map<std::string, std::string>& Staged() const { return m_mapUpdatableData; }

 private:
  ~Layer() = default;
};

/// Releases a chain at the end of a test.
struct ReleaseRecord {
  void operator()(AppInfo* record) const { record->GetReleaseFunction()(record); }
};
template <class Record = AppInfo>
using Owned = std::unique_ptr<Record, ReleaseRecord>;

inline Owned<ORVAppInfo> MakeRecord(const AppBaseInfo& info) {
  return Owned<ORVAppInfo>(new ORVAppInfo(info));
}

/// A record inside one layer.
inline Owned<Layer> MakeLayer(const std::string& package, const std::string& type,
                              const std::string& value,
                              const std::vector<std::string>& applied = {}) {
  return Owned<Layer>(new Layer(new ORVAppInfo(Info(package)), type, value, applied));
}

inline std::string StorePath() {
  return std::string(tzplatform_getenv(TZ_SYS_RW_APP)) +
         "/com.kalmora.tv.orv-enabler/data/appinfo.db";
}

/// How often this process has the store's file open, or a deleted file of that path.
inline int OpenCount() {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code error;
    const std::string target = std::filesystem::read_symlink(entry.path(), error);
    if (target == StorePath() || target == StorePath() + " (deleted)") {
      ++count;
    }
  }
  return count;
}

inline void MakeStoreDirectory() {
  const std::string path = StorePath();
  support::MakeDirectories(path.substr(0, path.rfind('/')));
}

/// A second connection to the store's file.
class Connection {
 public:
  Connection() {
    MakeStoreDirectory();
    if (sqlite3_open(StorePath().c_str(), &m_db) != SQLITE_OK) {
      Throw("open");
    }
  }
  ~Connection() { sqlite3_close(m_db); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  void Execute(const std::string& sql) {
    if (sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
      Throw(sql);
    }
  }
  /// Rows of texts; null is "<null>".
  std::vector<std::vector<std::string>> Query(const std::string& sql) {
    std::vector<std::vector<std::string>> rows;
    const auto collect = [](void* context, int count, char** texts, char**) {
      auto* found = static_cast<std::vector<std::vector<std::string>>*>(context);
      found->emplace_back();
      for (int i = 0; i < count; ++i) {
        found->back().push_back(texts[i] ? texts[i] : "<null>");
      }
      return 0;
    };
    if (sqlite3_exec(m_db, sql.c_str(), collect, &rows, nullptr) != SQLITE_OK) {
      Throw(sql);
    }
    return rows;
  }

 private:
  [[noreturn]] void Throw(const std::string& what) {
    throw std::runtime_error("store: " + what + ": " + sqlite3_errmsg(m_db));
  }

  sqlite3* m_db = nullptr;
};

inline void ExecuteOnStore(const std::string& sql) {
  Connection().Execute(sql);
}
inline std::vector<std::vector<std::string>> QueryStore(const std::string& sql) {
  return Connection().Query(sql);
}
/// The package ids that have a row, in ascending order.
inline std::vector<std::string> StoredPackages() {
  std::vector<std::string> packages;
  for (const auto& row : QueryStore("SELECT package_id FROM appinfo ORDER BY package_id")) {
    packages.push_back(row[0]);
  }
  return packages;
}

/// Every record so far has the priority of its level word.
inline void ExpectLevelsFitTheirWords() {
  for (const int priority : {4, 6}) {
    for (const std::string& text : fake::LogTexts(priority)) {
      EXPECT_EQ(text.rfind("[ERROR]", 0) == 0, priority == 6) << text;
    }
  }
}

/// The table as the daemon creates it.
constexpr char CREATE_TABLE[] =
    "CREATE TABLE IF NOT EXISTS appinfo(package_id TEXT PRIMARY KEY, app_id TEXT, widget_id TEXT, "
    "service_id TEXT, version TEXT, variables TEXT, extra_data1 TEXT, extra_data2 TEXT, "
    "extra_data3 TEXT, extra_data4 TEXT);";

/// Adds a row with these variables, without checking them.
inline void StoreRow(const std::string& package, const std::string& variables) {
  Connection connection;
  connection.Execute(CREATE_TABLE);
  const AppBaseInfo info = Info(package);
  char* sql =
      sqlite3_mprintf("INSERT INTO appinfo VALUES(%Q,%Q,%Q,%Q,%Q,%Q,'','','','')",
                      info.m_sPackageID.c_str(), info.m_sAppID.c_str(), info.m_sWidgetID.c_str(),
                      info.m_sServiceID.c_str(), info.m_sVersion.c_str(), variables.c_str());
  const std::string text = sql;
  sqlite3_free(sql);
  connection.Execute(text);
}

}  // namespace records
