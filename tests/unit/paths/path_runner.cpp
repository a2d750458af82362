// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "unit/paths/path_runner.h"

#include <pthread.h>

#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <thread>

#include "app_info/AppInfoCache.h"
#include "fake/control/fake.h"
#include "fault/daemon.h"
#include "fault/packages.h"
#include "fault/store.h"
#include "support/files.h"
#include "unit/app_info/records.h"

namespace paths {
namespace {

/// Calls and log records by their place in the common order.
using Steps = std::map<unsigned long, std::string>;

const char MAIN_LOOP[] = "main loop";

std::string ThreadName(const std::string& name, const std::string& mainName) {
  return name == mainName ? MAIN_LOOP : name;
}

/// Addresses differ from run to run.
std::string WithoutAddresses(const std::string& text) {
  static const std::regex s_address("0x[0-9a-f]+|P0\\[-?[1-9][0-9]*\\]");
  return std::regex_replace(text, s_address, "(an address)");
}

/// Handles are numbered in the order in which all threads create them: numbers them by thread.
class HandleNames {
 public:
  std::string Rename(const std::string& text) {
    static const std::regex s_handle("[A-Za-z_]+#[0-9]+");
    std::string renamed;
    std::string rest = text;
    for (std::smatch match; std::regex_search(rest, match, s_handle); rest = match.suffix()) {
      renamed += match.prefix().str() + NameOf(match.str());
    }
    return renamed + rest;
  }

 private:
  std::string NameOf(const std::string& handle) {
    const auto known = m_names.find(handle);
    if (known != m_names.end()) {
      return known->second;
    }
    const std::string kind = handle.substr(0, handle.find('#') + 1);
    return m_names[handle] = kind + std::to_string(++m_counts[kind]);
  }

  std::map<std::string, std::string> m_names;
  std::map<std::string, int> m_counts;
};

/// What each thread did, by its name. Workers have the name of the thread that waits for them.
std::map<std::string, Steps> StepsByThread() {
  std::map<std::string, Steps> threads;
  const std::string mainName = [] {
    char name[16] = {};
    pthread_getname_np(pthread_self(), name, sizeof(name));
    return std::string(name);
  }();
  for (const fake::Call& call : fake::Calls()) {
    threads[ThreadName(call.thread, mainName)][call.seq] = fake::ToText(call);
  }
  for (const fake::LogRecord& record : fake::Logs()) {
    threads[ThreadName(record.thread, mainName)][record.seq] =
        "log " + std::to_string(record.priority) + ": " +
        WithoutAddresses(fake::WithoutHead(record.text));
  }
  return threads;
}

void PrintRecords(std::ostream& stream) {
  std::vector<std::string> packages;
  AppInfoCache::GetInstance()->GetAppIDList(packages);
  for (const std::string& package : packages) {
    AppInfo* record = AppInfoCache::GetInstance()->GetAppInfo(package);
    stream << package << ": " << record->m_sPackageID << ", " << record->m_sAppID << ", "
           << record->m_sWidgetID << ", " << record->m_sServiceID << ", " << record->m_sVersion
           << "\n";
    MetadataMap metadata;
    record->GetAllMetadata(metadata);
    for (const auto& [category, values] : metadata) {
      for (const auto& [key, value] : values) {
        stream << "  " << category << " " << key << " = " << value << "\n";
      }
    }
  }
}

void PrintStore(std::ostream& stream) {
  for (const auto& row : records::QueryStore("SELECT * FROM appinfo ORDER BY package_id")) {
    for (const std::string& text : row) {
      stream << text << " | ";
    }
    stream << "\n";
  }
}

/// The state at the end of the path. Read after the sequence, because reading it logs.
std::string State() {
  std::ostringstream stream;
  stream << "\n[records]\n";
  PrintRecords(stream);
  stream << "\n[store]\n";
  PrintStore(stream);
  stream << "\n[files]\n";
  for (const char* directory : {"/opt/usr/apps", "/opt/share", "/tmp"}) {
    for (const std::string& file : support::ListTree(directory)) {
      stream << directory << "/" << file << "\n";
    }
  }
  stream << "\n[timers]\n";
  for (const fake::Timer& timer : fake::Timers()) {
    stream << timer.intervalMs << " ms\n";
  }
  stream << "\n[open handles]\n";
  for (const char* kind : {"app_control", "app_info", "app_context", "package_info",
                           "package_manager", "bundle", "TCService", "TCServiceNavigation"}) {
    stream << kind << " " << fake::OpenHandles(kind) << "\n";
  }
  return stream.str();
}

std::string Sequences() {
  std::ostringstream stream;
  for (const auto& [thread, steps] : StepsByThread()) {
    stream << "[" << thread << "]\n";
    HandleNames handles;
    for (const auto& step : steps) {
      stream << handles.Rename(step.second) << "\n";
    }
    stream << "\n";
  }
  return stream.str();
}

void Store(const std::vector<fake::Package>& packages) {
  for (const fake::Package& package : packages) {
    fault::Install(package);
  }
}

std::vector<Use> Uses() {
  std::vector<Use> uses;
  std::map<std::string, int> counts;
  std::map<std::string, std::set<std::thread::id>> threads;
  const std::vector<fake::Call> calls = fake::Calls();
  for (const fake::Call& call : calls) {
    threads[call.name].insert(call.threadID);
  }
  for (const fake::Call& call : calls) {
    const std::string text = fake::ToText(call);
    uses.push_back({call.name, text.substr(0, text.rfind(" = ")), counts[call.name]++,
                    threads[call.name].size() == 1});
  }
  return uses;
}

}  // namespace

Record RunPath(const fault::Path& path, const std::function<void()>& arm) {
  fault::MakeFreshDirectories();
  fault::MakeTelevision();
  if (path.IsStart() && !path.stored.empty()) {
    fault::StoreRows(path.stored);
    for (const fake::Package& package : path.stored) {
      fault::MakeKnown(package);
    }
  }
  if (path.before) {
    path.before();
  }
  if (path.IsStart() && arm) {
    arm();
  }
  Record record;
  record.reachedMainLoop = fault::RunDaemon([&] {
    fault::Settle();
    if (!path.IsStart()) {
      Store(path.stored);
      if (path.hasNetworkTime) {
        fake::SetKey("memory/menu/network/set_time", 1);
        fault::Settle();
      }
      if (path.prepare) {
        path.prepare();
      }
      fault::Settle();
      fake::ClearCalls();
      fake::ClearLog();
      if (arm) {
        arm();
      }
      path.run();
      fault::Settle();
    }
    fake::ClearFaults();
    record.uses = Uses();
    record.text = Sequences();
    record.text += State();
  });
  return record;
}

}  // namespace paths
