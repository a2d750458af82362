// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// The store's file. Whatever it contains, afterwards there is a store that accepts a row, or none.
#include "app_info/AppInfoDB.h"
#include "app_info/ORVAppInfo.h"
#include "fuzz/daemon_world.h"
#include "fuzz/harness.h"
#include "support/files.h"

namespace fuzz {

/// The schema that the class checks against. A file with an unexpected table changes it for
/// the rest of the process, so it is restored before the next input. It is private; explicit
/// template instantiation is the one place that ignores access.
auto& Columns();
template <auto MEMBER>
struct Reach {
  friend auto& Columns() { return *MEMBER; }
};
template struct Reach<&AppInfoDB::s_mapColumnInfo>;

}  // namespace fuzz

namespace {

AppInfo* g_record = nullptr;

}  // namespace

void fuzz::SetUp() {
  MakeWorld();
  g_record =
      new ORVAppInfo({"fuzzpackag", "fuzzpackag.App", "", "", "1.0.0"});  // until the process ends
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const auto s_columns = fuzz::Columns();
  support::WriteFile(fuzz::DATA_DIRECTORY + "appinfo.db", fuzz::Text(data, size));
  {
    AppInfoDB store;
    AppInfoDB::RowMap rows;
    store.OpenDB();
    store.LoadData(rows);
    store.InsertNewRecord(g_record);
    store.UpdateRecord(g_record);
    const bool stored = store.LoadData(rows) && rows.count("fuzzpackag") != 0;
    const bool removed = store.DeleteRecord("fuzzpackag");
    fuzz::Require(!stored || removed, "a row that was written can be removed");
    store.RemoveDBFile();
  }
  fuzz::Columns() = s_columns;
  fuzz::ForgetInput();
  return 0;
}
