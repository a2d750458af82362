// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/explain_state.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>

#include "desk/cli/store_reader.h"
#include "package_maker.h"
#include "unit/desk/checks/facts.h"

namespace desk::cli {
namespace {

class CliExplainState : public ::testing::Test {
 protected:
  void MakeStore(const std::string& rows) {
    const std::string path = StorePath(m_paths);
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
    const std::string sql =
        "CREATE TABLE appinfo(package_id TEXT PRIMARY KEY, app_id TEXT, widget_id TEXT, service_id "
        "TEXT, version TEXT, variables TEXT, extra_data1 TEXT, extra_data2 TEXT, extra_data3 TEXT, "
        "extra_data4 TEXT);" +
        rows;
    ASSERT_EQ(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(db);
  }

  void MakeRow(const std::string& version) {
    MakeStore("INSERT INTO appinfo(package_id, version, variables) VALUES('pkg', '" + version +
              "', '{\"orv_type\":{\"ch_feeder_standard\":\"x\"}}');");
  }

  std::vector<std::string> State(const PackageFacts& package) {
    return TellState(m_paths, package, RuleOnPackage(package), FindRecord(m_paths, package.id));
  }

  static PackageFacts Feed(const std::string& value, const std::string& url) {
    return Package({{Key("orv_type/ch_feeder_standard"), value},
                    {Key("orv_data/channel_data_url"), url},
                    {Key("orv_data/schedule_data_url"), url}});
  }

  TemporaryDirectory m_directory;
  DeskPaths m_paths{m_directory.Path()};
  const std::string m_shared = m_paths.DaemonSharedData();
};

TEST_F(CliExplainState, ARecordOfTheSameVersionIsNothingToReport) {
  MakeRow("1.0.0");
  EXPECT_EQ(State(Feed("x", "https://a")), std::vector<std::string>{});
}

TEST_F(CliExplainState, APackageWithoutARecordIsUnknownToTheDaemon) {
  EXPECT_TRUE(Mentions(State(Feed("x", "https://a")), "installed, but unknown to the daemon: "));
  MakeStore("");
  EXPECT_TRUE(Mentions(State(Feed("x", "https://a")), "installed, but unknown to the daemon: "));
}

TEST_F(CliExplainState, ARecordOfAnotherVersionIsReported) {
  MakeRow("0.9");
  EXPECT_TRUE(Mentions(State(Feed("x", "https://a")), "has the record of version 0.9"));
}

TEST_F(CliExplainState, ARecordOfAnOrdinaryPackageIsReported) {
  MakeRow("0.9");
  EXPECT_TRUE(Mentions(State(Package({})), "still has a record of it"));
}

TEST_F(CliExplainState, AnOrdinaryPackageNeedsNoRecord) {
  EXPECT_EQ(State(Package({})), std::vector<std::string>{});
}

TEST_F(CliExplainState, ATreeWithoutItsListIsAFailedUnpack) {
  MakeRow("1.0.0");
  std::filesystem::create_directories(m_shared + "/hbbtv_app/pkg");
  const auto app = State(Feed("extended", "https://a"));
  EXPECT_TRUE(Mentions(app, "the last unpack failed: "));
  EXPECT_TRUE(Mentions(app, ": uninstall the package and install it again"));
  // Only a feeder with an app removes the tree again.
  EXPECT_TRUE(Mentions(State(Feed("x", "file://c")), "delete that directory"));
  EXPECT_EQ(State(Feed("x", "https://a")), std::vector<std::string>{});
}

TEST_F(CliExplainState, MissingMetadataFilesAreReported) {
  MakeRow("1.0.0");
  WriteFile(m_shared + "/hbbtv_app/pkg/app_type_file.txt", "{}");
  EXPECT_TRUE(Mentions(State(Feed("extended", "file://c")), "the metadata files are missing"));
  std::filesystem::create_directories(m_shared + "/metadata/pkg");
  EXPECT_EQ(State(Feed("extended", "file://c")), std::vector<std::string>{});
}

}  // namespace
}  // namespace desk::cli
