// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/store_reader.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <string>

#include "desk/cli/failure.h"

namespace desk::cli {
namespace {

namespace fs = std::filesystem;

class CliStore : public testing::Test {
 protected:
  CliStore() {
    std::string name = (fs::temp_directory_path() / "cli-store-XXXXXX").string();
    EXPECT_NE(mkdtemp(name.data()), nullptr);
    m_directory = name;
  }
  ~CliStore() override { fs::remove_all(m_directory); }

  std::string Path() const { return (m_directory / "appinfo.db").string(); }

  static sqlite3* OpenAt(const std::string& path) {
    sqlite3* db = nullptr;
    EXPECT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
    return db;
  }

  static void Run(sqlite3* db, const std::string& statement) {
    char* error = nullptr;
    EXPECT_EQ(sqlite3_exec(db, statement.c_str(), nullptr, nullptr, &error), SQLITE_OK) << error;
  }

  void Make(const std::string& rows) {
    sqlite3* db = OpenAt(Path());
    Run(db,
        "CREATE TABLE appinfo(package_id TEXT PRIMARY KEY, app_id TEXT, widget_id TEXT, service_id "
        "TEXT, version TEXT, variables TEXT, extra_data1 TEXT, extra_data2 TEXT, extra_data3 TEXT, "
        "extra_data4 TEXT);" +
            rows);
    sqlite3_close(db);
  }

  std::string Content() const {
    std::ifstream file(Path(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  Failure ReadFails() {
    try {
      ReadStore(Path());
    } catch (const Failure& failure) {
      return failure;
    }
    ADD_FAILURE() << "the store was read";
    return Failure(Exit::Done, "");
  }

  /// Nothing when a write did not end within the reader's patience.
  std::optional<Json::Value> ReadUnlessBusy() {
    try {
      return ReadStore(Path());
    } catch (const Failure& failure) {
      EXPECT_STREQ(failure.what(), BUSY);
      return std::nullopt;
    }
  }

  static constexpr char BUSY[] = "the store is being written to: try again";

  fs::path m_directory;
};

/// The highest package id, which is a number here; -1 without rows.
int Newest(const Json::Value& rows) {
  int newest = -1;
  for (const Json::Value& row : rows) {
    newest = std::max(newest, std::stoi(row["package_id"].asString()));
  }
  return newest;
}

/// Each write adds and deletes rows in pairs.
void ExpectWholeWrites(const Json::Value& rows, const std::string& values) {
  EXPECT_EQ(rows.size() % 2, 0U);
  EXPECT_NE(Newest(rows) % 2, 0) << "half a pair";
  for (const Json::Value& row : rows) {
    EXPECT_EQ(row["variables"], values);
  }
}

std::string Insert(const std::string& package, const std::string& variables) {
  return "INSERT INTO appinfo VALUES('" + package + "','app','widget','','1.0','" + variables +
         "','','','','');";
}

TEST_F(CliStore, ARowHasAMemberForEachColumn) {
  Make(Insert("a", R"({"orv_type":{"ch_feeder_custom":"extended"}})"));
  const Json::Value rows = ReadStore(Path());
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(rows[0].size(), 10U);
  EXPECT_EQ(rows[0]["package_id"], "a");
  EXPECT_EQ(rows[0]["widget_id"], "widget");
  EXPECT_EQ(rows[0]["extra_data4"], "");
}

TEST_F(CliStore, VariablesIsAnObject) {
  Make(Insert("a", R"({"orv_type":{"ch_feeder_custom":"extended"}})"
                   "\n"));
  EXPECT_EQ(ReadStore(Path())[0]["variables"]["orv_type"]["ch_feeder_custom"], "extended");
}

TEST_F(CliStore, VariablesThatAreNotJsonStayText) {
  Make(Insert("a", "{broken") + Insert("b", ""));
  const Json::Value rows = ReadStore(Path());
  EXPECT_EQ(rows[0]["variables"], "{broken");
  EXPECT_EQ(rows[1]["variables"], "");
}

TEST_F(CliStore, ANullColumnIsNull) {
  Make("INSERT INTO appinfo(package_id) VALUES('a');");
  EXPECT_TRUE(ReadStore(Path())[0]["variables"].isNull());
}

TEST_F(CliStore, RowsComeInAscendingPackageId) {
  Make(Insert("b", "") + Insert("a", ""));
  const Json::Value rows = ReadStore(Path());
  EXPECT_EQ(rows[0]["package_id"], "a");
  EXPECT_EQ(rows[1]["package_id"], "b");
}

TEST_F(CliStore, AStoreWithoutRowsIsAnEmptyList) {
  Make("");
  EXPECT_EQ(ReadStore(Path()), Json::Value(Json::arrayValue));
}

TEST_F(CliStore, AMissingFileIsNoSuchThing) {
  EXPECT_EQ(ReadFails().Code(), Exit::NotFound);
  EXPECT_FALSE(fs::exists(Path()));
}

TEST_F(CliStore, ADamagedFileIsOneClearLine) {
  std::ofstream(Path()) << std::string(4096, 'x');
  const Failure failure = ReadFails();
  EXPECT_EQ(failure.Code(), Exit::Failed);
  EXPECT_EQ(std::string(failure.what()),
            "the store is damaged (file is not a database): the daemon removes " + Path() +
                " at its next start");
}

TEST_F(CliStore, ADatabaseWithoutTheTableIsSaidToBeSomethingElse) {
  sqlite3* db = OpenAt(Path());
  Run(db, "CREATE TABLE other(a TEXT);");
  sqlite3_close(db);
  EXPECT_EQ(std::string(ReadFails().what()),
            "cannot read the store " + Path() +
                " (no such table: appinfo): it does not have the daemon's format");
}

TEST_F(CliStore, ReadingChangesNothing) {
  Make(Insert("a", ""));
  const std::string before = Content();
  fs::permissions(Path(), fs::perms::owner_read);
  ReadStore(Path());
  EXPECT_EQ(Content(), before);
  EXPECT_EQ(std::distance(fs::directory_iterator(m_directory), fs::directory_iterator()), 1);
}

/// Another process, because locks belong to a process. It reports when the work begins, and works
/// until it is ended.
class Other {
 public:
  explicit Other(const std::function<void(std::function<void()>& begun)>& work) {
    int said[2];
    EXPECT_EQ(pipe(said), 0);
    m_pid = fork();
    if (m_pid == 0) {
      std::function<void()> begun = [&said, told = false]() mutable {
        told = told || write(said[1], "x", 1) == 1;
      };
      work(begun);
      pause();
    }
    char byte = 0;
    EXPECT_EQ(read(said[0], &byte, 1), 1);
    close(said[0]);
    close(said[1]);
  }
  ~Other() { End(); }
  Other(const Other&) = delete;
  Other& operator=(const Other&) = delete;

  void End() {
    if (m_pid > 0) {
      kill(m_pid, SIGKILL);
      waitpid(m_pid, nullptr, 0);
    }
    m_pid = 0;
  }

 private:
  pid_t m_pid = 0;
};

TEST_F(CliStore, AReaderIsNeverInAWritersWay) {
  Make("");
  const Other reader([this](auto& begun) {
    while (true) {
      ReadStore(Path());
      begun();
    }
  });
  sqlite3* db = OpenAt(Path());
  for (int i = 0; i < 200; ++i) {
    Run(db, Insert(std::to_string(i), ""));  // does not wait
  }
  sqlite3_close(db);
}

TEST_F(CliStore, AReaderSeesWholeWritesOnly) {
  constexpr int ROUNDS = 20;
  constexpr int WRITES_PER_ROUND = 4;
  Make("");
  const std::string values(6000, 'v');  // several pages
  int rounds[2];
  ASSERT_EQ(pipe(rounds), 0);
  const Other writer([&](auto& begun) {
    sqlite3* db = OpenAt(Path());
    Run(db, "PRAGMA synchronous = OFF;");
    begun();
    char byte = 0;
    for (int number = 0; read(rounds[0], &byte, 1) == 1;) {
      for (int i = 0; i < WRITES_PER_ROUND; ++i, number += 2) {
        Run(db, "BEGIN; " + Insert(std::to_string(number), values) +
                    Insert(std::to_string(number + 1), values) +
                    "DELETE FROM appinfo WHERE package_id + 20 < " + std::to_string(number) +
                    "; COMMIT;");
      }
    }
  });
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  for (int round = 1; round <= ROUNDS; ++round) {
    ASSERT_EQ(write(rounds[1], "x", 1), 1);
    const int last = round * WRITES_PER_ROUND * 2 - 1;
    for (bool seen = false; !seen;) {
      ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "row " << last << " is missing";
      const std::optional<Json::Value> rows = ReadUnlessBusy();
      seen = rows && Newest(*rows) == last;
      ExpectWholeWrites(rows.value_or(Json::Value(Json::arrayValue)), values);
    }
  }
  close(rounds[0]);
  close(rounds[1]);
}

TEST_F(CliStore, AWriteThatLastsIsToldSo) {
  Make(Insert("a", ""));
  Other writer([this](auto& begun) {
    Run(OpenAt(Path()), "BEGIN; " + Insert("b", ""));
    begun();
  });
  EXPECT_STREQ(ReadFails().what(), BUSY);
  writer.End();
  // What remains is not a row.
  EXPECT_EQ(ReadStore(Path()).size(), 1U);
}

TEST_F(CliStore, AnInterruptedWriteIsReadAsItWasBefore) {
  Make(Insert("a", ""));
  sqlite3* db = OpenAt(Path());
  Run(db, "PRAGMA cache_size = 1; BEGIN;");
  for (int i = 0; i < 200; ++i) {
    Run(db, Insert("new" + std::to_string(i), std::string(4000, 'v')));
  }
  // What the daemon leaves if it is killed now: a partly written file and its journal.
  const fs::path killed = m_directory / "killed";
  fs::create_directory(killed);
  fs::copy_file(Path(), killed / "appinfo.db");
  fs::copy_file(Path() + "-journal", killed / "appinfo.db-journal");
  Run(db, "ROLLBACK;");
  sqlite3_close(db);

  const Json::Value rows = ReadStore((killed / "appinfo.db").string());
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(rows[0]["package_id"], "a");
  EXPECT_TRUE(fs::exists(killed / "appinfo.db-journal"));
}

TEST_F(CliStore, TheStoreLiesInTheDaemonsDataDirectory) {
  EXPECT_EQ(StorePath(DeskPaths("/d")),
            "/d/opt/usr/apps/com.kalmora.tv.orv-enabler/data/appinfo.db");
}

}  // namespace
}  // namespace desk::cli
