// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/dump.h"

#include <filesystem>

#include "desk/cli/failure.h"
#include "desk/cli/session.h"
#include "desk/cli/store_reader.h"

namespace desk::cli {
namespace {

namespace fs = std::filesystem;

/// The members that come from desk-tv. Named here so that others do not become part of the dump.
constexpr const char* TV_MEMBERS[] = {"daemon",   "packages",   "keys",  "apps",
                                      "channels", "operations", "was",   "services",
                                      "tuned",    "ports",      "mounts"};
constexpr const char* FLAG_AND_DATA_FILES[] = {"hbb_boost", "reset_count_info.txt", "appinfo.db",
                                               "appinfo.db-journal"};
constexpr const char* TREES[] = {"hbbtv_app", "metadata"};

void AddFile(const DeskPaths& paths, const fs::path& path, Json::Value& files) {
  std::error_code error;
  const auto status = fs::symlink_status(path, error);
  if (error || !fs::exists(status)) {
    return;
  }
  const std::string seen = path.string().substr(paths.Root().size());
  if (fs::is_directory(status)) {
    files[seen + "/"] = 0;
    return;
  }
  const auto size = fs::is_regular_file(status) ? fs::file_size(path, error) : 0;
  files[seen] = static_cast<Json::UInt64>(error ? 0 : size);
}

/// The tree may change or vanish while it is walked.
void AddTree(const DeskPaths& paths, const fs::path& top, Json::Value& files) {
  std::error_code error;
  fs::recursive_directory_iterator entry(top, fs::directory_options::skip_permission_denied, error);
  const fs::recursive_directory_iterator end;
  while (!error && entry != end) {
    AddFile(paths, entry->path(), files);
    entry.increment(error);
  }
}

}  // namespace

Json::Value ListFiles(const DeskPaths& paths) {
  Json::Value files(Json::objectValue);
  AddFile(paths, paths.Tmp() + "/hbb_ready", files);
  for (const char* name : FLAG_AND_DATA_FILES) {
    AddFile(paths, paths.DaemonData() + "/" + name, files);
  }
  for (const char* name : TREES) {
    AddTree(paths, paths.DaemonSharedData() + "/" + name, files);
  }
  return files;
}

Json::Value ComposeDump(Television& tv, const DeskPaths& paths, std::string& trouble) {
  const Json::Value known = tv.Call("dump", Json::Value(Json::objectValue));
  Json::Value dump(Json::objectValue);
  for (const char* member : TV_MEMBERS) {
    dump[member] = known[member];
  }
  dump["store"] = Json::Value(Json::arrayValue);
  trouble.clear();
  try {
    dump["store"] = ReadStore(StorePath(paths));
  } catch (const Failure& failure) {
    // A store that does not exist counts as empty.
    if (failure.Code() != Exit::NotFound) {
      trouble = failure.what();
    }
  }
  dump["files"] = ListFiles(paths);
  return dump;
}

}  // namespace desk::cli
