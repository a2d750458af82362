// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/explain_state.h"

#include <filesystem>

#include "desk/cli/failure.h"
#include "desk/cli/store_reader.h"

namespace desk::cli {
namespace {

namespace fs = std::filesystem;

bool Exists(const std::string& path) {
  std::error_code error;
  return fs::exists(path, error);
}

int PackagedDataOf(const Ruling& ruling) {
  int packaged = 0;
  for (const auto& layer : ruling.layers) {
    packaged |= PackagedDataOf(layer);
  }
  return packaged;
}

/// The daemon writes the list of app types last, so a tree without it is a failed unpack. It never
/// unpacks into an existing tree.
std::string TellUnpack(const DeskPaths& paths, const std::string& package, int packaged) {
  const std::string tree = paths.DaemonSharedData() + "/hbbtv_app/" + package;
  if (packaged == 0 || !Exists(tree)) {
    return {};
  }
  // Without an app the daemon leaves the tree behind when the package is removed.
  const std::string remedy = (packaged & PACKAGED_APP) != 0
                                 ? "uninstall the package and install it again"
                                 : "uninstall the package, delete that directory and install again";
  if (!Exists(tree + "/app_type_file.txt")) {
    return "the last unpack failed: " + tree +
           " is incomplete (it has no app_type_file.txt), and the daemon does not try again while "
           "the directory exists: " +
           remedy;
  }
  const std::string files = paths.DaemonSharedData() + "/metadata/" + package;
  if ((packaged & PACKAGED_FILES) != 0 && !Exists(files)) {
    return "the metadata files are missing: " + files +
           " does not exist, and the daemon does not " + "unpack them again while " + tree +
           " exists: " + remedy;
  }
  return {};
}

}  // namespace

std::optional<HeldRecord> FindRecord(const DeskPaths& paths, const std::string& package) {
  try {
    for (const auto& row : ReadStore(StorePath(paths))) {
      if (row["package_id"].asString() != package) {
        continue;
      }
      HeldRecord record;
      record.version = row["version"].asString();
      const Json::Value& variables = row["variables"];
      if (variables.isObject() && variables["orv_type"].isObject()) {
        for (const auto& name : variables["orv_type"].getMemberNames()) {
          record.types[name] = variables["orv_type"][name].asString();
        }
      }
      return record;
    }
  } catch (const Failure&) {
    // Without a readable store the daemon has no records.
  }
  return std::nullopt;
}

std::vector<std::string> TellState(const DeskPaths& paths, const PackageFacts& package,
                                   const Ruling& ruling, const std::optional<HeldRecord>& record) {
  std::vector<std::string> lines;
  const bool bound = ruling.outcome == Ruling::Outcome::ChannelBound;
  if (bound && !record) {
    lines.push_back(
        "installed, but unknown to the daemon: it has no record of the package. It was installed "
        "while the daemon did not run, or the daemon could not create the record (see `tv log`). "
        "Uninstall it and install it again while the daemon runs");
  } else if (bound && record->version != package.version) {
    lines.push_back("installed, but the daemon has the record of version " + record->version +
                    ": it was updated while the daemon did not run, or the update failed. Update "
                    "it again while the daemon runs");
  } else if (!bound && record) {
    lines.push_back(
        "the daemon still has a record of it: an earlier version was channel-bound, and was "
        "replaced while the daemon did not run. Uninstall it while the daemon runs");
  }
  const std::string unpack = TellUnpack(paths, package.id, PackagedDataOf(ruling));
  if (!unpack.empty()) {
    lines.push_back(unpack);
  }
  return lines;
}

}  // namespace desk::cli
