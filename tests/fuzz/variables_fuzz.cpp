// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// The column "variables" of a stored row, from the load at start over its run to its removal.
#include <sqlite3.h>

#include "app_info/AppInfoCache.h"
#include "controller/ORVAppCreator.h"
#include "fake/control/fake.h"
#include "fuzz/daemon_world.h"
#include "fuzz/harness.h"

namespace {

sqlite3* g_store = nullptr;
sqlite3_stmt* g_insert = nullptr;

void Store(const std::string& variables) {
  sqlite3_reset(g_insert);
  sqlite3_bind_text(g_insert, 1, variables.data(), static_cast<int>(variables.size()),
                    SQLITE_STATIC);
  fuzz::Require(sqlite3_step(g_insert) == SQLITE_DONE, "the row can be written");
  sqlite3_reset(g_insert);
}

}  // namespace

void fuzz::SetUp() {
  MakeWorld();
  ORVAppCreator::GetInstance();  // creates the store
  const std::string path = DATA_DIRECTORY + "appinfo.db";
  const char sql[] =
      "INSERT OR REPLACE INTO appinfo VALUES"
      "('fuzzpackag','fuzzpackag.App','fuzzpackag.App','fuzzpackag.Feed','1.0.0',?,'','','','')";
  Require(sqlite3_open(path.c_str(), &g_store) == SQLITE_OK &&
              sqlite3_prepare_v2(g_store, sql, -1, &g_insert, nullptr) == SQLITE_OK,
          "the store can be opened");
  sqlite3_exec(g_store, "PRAGMA synchronous=OFF", nullptr, nullptr, nullptr);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Store(fuzz::Text(data, size));
  ORVAppCreator::GetInstance()->LoadAndCreateAppInfo();
  AppInfo* record = AppInfoCache::GetInstance()->GetAppInfo("fuzzpackag");
  if (record != nullptr) {
    MetadataMap metadata;
    record->GetAllMetadata(metadata);
    fuzz::Contain([record] { record->RunOperation(true); });
    fuzz::Contain([record] { record->StopOperation(); });
    fuzz::Contain([] { ORVAppCreator::GetInstance()->RemoveApp("fuzzpackag"); });
  }
  fuzz::ForgetInput();
  return 0;
}
