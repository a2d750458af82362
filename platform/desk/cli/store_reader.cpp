// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/store_reader.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

#include "desk/cli/failure.h"
#include "desk/common/desk_error.h"
#include "desk/common/json.h"
#include "desk/common/sqlite.h"

namespace desk::cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* QUERY = "SELECT * FROM appinfo ORDER BY package_id";
constexpr std::chrono::seconds PATIENCE{2};

std::string ReadBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw SqliteError(SQLITE_CANTOPEN, std::strerror(errno));
  }
  return {std::istreambuf_iterator<char>(file), {}};
}

/// A database in memory with these bytes as its file. The bytes must live as long.
SqliteDatabase Open(std::string& bytes) {
  SqliteDatabase db = OpenDatabase(":memory:", "");
  const auto size = static_cast<sqlite3_int64>(bytes.size());
  if (size > 0) {
    const int code =
        sqlite3_deserialize(db.get(), "main", reinterpret_cast<unsigned char*>(bytes.data()), size,
                            size, SQLITE_DESERIALIZE_READONLY);
    if (code != SQLITE_OK) {
      throw SqliteError(code, sqlite3_errmsg(db.get()));
    }
  }
  return db;
}

Json::Value Decoded(const std::string& text) {
  if (text.empty()) {
    return text;
  }
  try {
    return ParseJson(text);
  } catch (const DeskError&) {
    return text;
  }
}

Json::Value Cell(const SqliteStatement& statement, int column) {
  if (statement.IsNull(column)) {
    return Json::Value();
  }
  const std::string value = statement.Text(column);
  return statement.ColumnName(column) == "variables" ? Decoded(value) : Json::Value(value);
}

Json::Value Row(const SqliteStatement& statement) {
  Json::Value row(Json::objectValue);
  for (int i = 0; i < statement.ColumnCount(); ++i) {
    row[statement.ColumnName(i)] = Cell(statement, i);
  }
  return row;
}

Json::Value ReadRows(std::string bytes) {
  const SqliteDatabase db = Open(bytes);
  SqliteStatement statement(db.get(), QUERY, "");
  Json::Value rows(Json::arrayValue);
  while (statement.Step()) {
    rows.append(Row(statement));
  }
  return rows;
}

class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string name = (fs::temp_directory_path() / "tv-store-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
      throw Failure(Exit::Failed, "cannot create a directory for a copy of the store in " +
                                      fs::temp_directory_path().string() + ": is it writable?");
    }
    m_path = name;
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    fs::remove_all(m_path, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  const fs::path& Path() const { return m_path; }

 private:
  fs::path m_path;
};

bool HasJournal(const std::string& path) {
  std::error_code ignored;
  return fs::exists(path + "-journal", ignored);
}

/// SQLite's change counter.
std::string ChangeCounter(const std::string& path) {
  constexpr std::streamoff COUNTER_AT = 24;
  char counter[4] = {};
  std::ifstream file(path, std::ios::binary);
  file.seekg(COUNTER_AT);
  file.read(counter, sizeof(counter));
  return {counter, sizeof(counter)};
}

/// Whether a process holds the lock that SQLite takes for a whole write.
bool IsBeingWritten(const std::string& path) {
  constexpr off_t RESERVED_BYTE = 0x40000001;
  struct flock lock = {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = RESERVED_BYTE;
  lock.l_len = 1;
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    return false;
  }
  const bool asked = fcntl(file, F_GETLK, &lock) == 0;
  close(file);
  return asked && lock.l_type != F_UNLCK;
}

/// The content before an interrupted write; nothing when another write began meanwhile. SQLite
/// rolls the write back by changing the file, so it works on a copy.
std::optional<Json::Value> ReadRolledBackCopy(const std::string& path) {
  const TemporaryDirectory directory;
  const fs::path copy = directory.Path() / "appinfo.db";
  const std::string counter = ChangeCounter(path);
  fs::copy_file(path, copy);
  std::error_code journalGone;
  fs::copy_file(path + "-journal", copy.string() + "-journal", journalGone);
  if (!HasJournal(path) || IsBeingWritten(path) || ChangeCounter(path) != counter) {
    return std::nullopt;
  }
  sqlite3* raw = nullptr;
  sqlite3_open(copy.c_str(), &raw);
  sqlite3_exec(raw, "SELECT count(*) FROM sqlite_master", nullptr, nullptr, nullptr);
  sqlite3_close(raw);
  return ReadRows(ReadBytes(copy.string()));
}

/// The file's bytes; nothing when it was written to meanwhile. The journal of a write exists from
/// before its first page until after its last.
std::optional<std::string> ReadSettled(const std::string& path) {
  const std::string counter = ChangeCounter(path);
  if (HasJournal(path)) {
    return std::nullopt;
  }
  std::string bytes = ReadBytes(path);
  const bool settled = !HasJournal(path) && ChangeCounter(path) == counter &&
                       (bytes.size() < 28 || bytes.compare(24, 4, counter) == 0);
  return settled ? std::optional<std::string>(std::move(bytes)) : std::nullopt;
}

Failure AsFailure(const std::string& path, const SqliteError& error) {
  const std::string reason = error.what();
  switch (error.Result() & 0xff) {
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
      return Failure(Exit::Failed, "the store is damaged (" + reason + "): the daemon removes " +
                                       path + " at its next start");
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return Failure(Exit::Failed, "the store is being written to: try again");
    default:
      return Failure(Exit::Failed, "cannot read the store " + path + " (" + reason +
                                       "): it does not have the daemon's format");
  }
}

/// Takes none of SQLite's locks: the daemon does not wait for a lock, its write would fail.
Json::Value ReadUnlocked(const std::string& path) {
  const auto end = std::chrono::steady_clock::now() + PATIENCE;
  while (std::chrono::steady_clock::now() < end) {
    if (auto bytes = ReadSettled(path)) {
      return ReadRows(std::move(*bytes));
    }
    if (HasJournal(path) && !IsBeingWritten(path)) {
      if (auto rows = ReadRolledBackCopy(path)) {
        return std::move(*rows);
      }
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  throw SqliteError(SQLITE_BUSY, "busy");
}

}  // namespace

std::string StorePath(const DeskPaths& paths) {
  return paths.DaemonData() + "/appinfo.db";
}

Json::Value ReadStore(const std::string& path) {
  std::error_code error;
  if (!fs::exists(path, error)) {
    throw Failure(Exit::NotFound, "there is no store yet at " + path +
                                      ": the daemon creates it when it starts (`tv up`)");
  }
  try {
    return ReadUnlocked(path);
  } catch (const SqliteError& failed) {
    throw AsFailure(path, failed);
  }
}

}  // namespace desk::cli
