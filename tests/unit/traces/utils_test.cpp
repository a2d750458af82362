// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <app_common.h>
#include <app_control.h>
#include <gtest/gtest.h>

#include <boost/filesystem.hpp>
#include <cstdlib>

#include "common/Log.h"
#include "fake/control/fake.h"
#include "support/files.h"
#include "unit/traces/trace.h"
#include "utils/AppControlUtils.h"
#include "utils/AppPreloadingUtils.h"
#include "utils/FileSystemUtils.h"
#include "utils/ResetCount.h"
#include "utils/TimeUtils.h"
#include "utils/WASUtils.h"

namespace {

const std::string OPERATION = ORV_OPERATION_EPG;
constexpr int REJECTED = static_cast<int>(APP_CONTROL_ERROR_LAUNCH_REJECTED);
constexpr int NOT_FOUND = static_cast<int>(APP_CONTROL_ERROR_APP_NOT_FOUND);

std::string WithResult(const std::string& call, int result) {
  return call + " gives " + std::to_string(result);
}

// App control.

void PrintOperationsAndHandles(std::ostream& stream) {
  traces::PrintOperations(stream);
  traces::PrintPlatform(stream, {});
}

TEST(UtilTraces, Launches) {
  Trace trace(&PrintOperationsAndHandles);
  const std::map<std::string, std::string> extra = {{"b", "2"}, {"a", "1"}, {"A", ""}};
  const auto launch = [&](const std::string& title, const std::function<void()>& fault) {
    trace.Prepare(fault);
    trace.Do(title + ": launch", [] { return AppControlUtils::LaunchApp("an.app", OPERATION); });
    trace.Prepare(fault);
    trace.Do(title + ": launch with extra data",
             [&] { return AppControlUtils::LaunchApp("an.app", OPERATION, extra); });
    trace.Prepare(fault);
    trace.Do(title + ": preload", [] { return AppControlUtils::PreloadWebApp("an.app"); });
    trace.Prepare([] { fake::ClearFaults(); });
  };
  launch("no fault", [] {});
  for (const char* call :
       {"app_control_create", "app_control_set_app_id", "app_control_set_operation",
        "app_control_add_extra_data", "app_control_send_launch_request", "app_control_destroy"}) {
    for (const int result : {-22, 0, 1}) {
      launch(WithResult(call, result), [=] { fake::Fail(call, result); });
    }
    launch(WithResult(call, REJECTED) + " after its work",
           [=] { fake::FailAfterwards(call, REJECTED); });
  }
  trace.Compare("Launches");
}

TEST(UtilTraces, AppOperations) {
  Trace trace(&PrintOperationsAndHandles);
  const auto set = [&](const std::string& title, const std::function<void()>& fault) {
    for (const std::string current : {"an.app", "an.app2", "An.app", "", "none"}) {
      for (const bool enable : {true, false}) {
        trace.Prepare([&] {
          fake::ClearFaults();
          fake::SetOperationApp(OPERATION,
                                current == "none" ? std::nullopt : std::make_optional(current));
          fault();
        });
        trace.Do(title + (enable ? ": enable over " : ": disable over ") + current, [&] {
          return AppControlUtils::SetCurrentAppOfAppOperation(OPERATION, "an.app", enable);
        });
      }
    }
  };
  set("no fault", [] {});
  for (const char* call : {"app_operation_get_current_app", "app_operation_set_current_app",
                           "app_operation_reset_current_app"}) {
    for (const int result : {-13, 0, 2}) {
      set(WithResult(call, result), [=] { fake::Fail(call, result); });
    }
    set(WithResult(call, 3) + " after its work", [=] { fake::FailAfterwards(call, 3); });
  }
  trace.Prepare([] { fake::ClearFaults(); });
  trace.Do("disable the empty app", [] {
    return AppControlUtils::SetCurrentAppOfAppOperation(ORV_OPERATION_CHANNEL_LIST, "", false);
  });
  trace.Compare("AppOperations");
}

// Preloading.

constexpr char FIRST[] = "first.app";
constexpr char SECOND[] = "first.app_";
const std::vector<std::string> WORDS = {"init",    "load", "preload", "resume",   "pause",
                                        "destroy", "quit", "Quit",    "preloads", ""};

std::string StatusKey(const std::string& app) {
  return "rtc/memory/WebApp/" + app;
}

void PrintPreloading(std::ostream& stream) {
  traces::PrintPlatform(stream, {"rtc/memory/WebApp/first.app", "rtc/memory/WebApp/first.app_",
                                 "rtc/memory/WebApp/"});
}

/// A callback whose calls are log records, so that the trace has them at their place.
void OnStatus(int eStatus, void* pUserData) {
  ORV_LOG_INFO("[Info] %s is notified of %d", static_cast<const char*>(pUserData), eStatus);
}

bool Preload(const std::string& app, const char* type, bool hasFunction = true) {
  return AppPreloadingUtils::PreloadAppAndRegisterAppStatusChangedCB(
      app, type, {hasFunction ? &OnStatus : nullptr, const_cast<char*>(type)});
}

class PreloadingTraces : public testing::Test {
 protected:
  void Follow(const std::string& app, const char* type, bool hasFunction = true) {
    m_trace.Do(std::string("preload ") + app + " as " + type,
               [&] { return Preload(app, type, hasFunction); });
  }
  void Remove(const std::string& app, const std::string& type) {
    m_trace.Do("remove " + app + " " + type,
               [&] { AppPreloadingUtils::RemoveWebStatusChangedCallback(app, type); });
  }
  void Enter(const std::string& app, const std::string& word) {
    m_trace.Do(app + " enters " + word, [&] {
      fake::StoreKey(StatusKey(app), std::string());
      fake::SetKey(StatusKey(app), word);
      fake::DeliverKeyChanges();
    });
  }
  void Fire(unsigned int period) {
    m_trace.Do("timer of " + std::to_string(period), [&] { return fake::FireTimersOf(period); });
  }
  /// The result of every launch from now on.
  void SetLaunchResult(int result) {
    fake::SetLaunchHook([result](const fake::Launch&) { return result; });
  }

  Trace m_trace{&PrintPreloading};
};

TEST_F(PreloadingTraces, EveryWordAfterEveryWord) {
  Follow(FIRST, "type");
  Follow(FIRST, "Type", false);
  Follow(FIRST, "type_");
  for (const std::string& before : WORDS) {
    for (const std::string& after : WORDS) {
      Enter(FIRST, "resume");  // no check is running now
      Enter(FIRST, before);
      Enter(FIRST, after);
      Fire(2000);
    }
  }
  m_trace.Do("the key is removed", [] {
    fake::UnsetKey(StatusKey(FIRST));
    fake::DeliverKeyChanges();
  });
  Enter(FIRST, "preload");
  Enter(FIRST, "destroy");
  for (int i = 0; i < 25; ++i) Fire(2000);
  Enter(FIRST, "preload");
  Fire(2000);
  Remove(FIRST, "typ");
  Remove(FIRST, "type");
  Remove(FIRST, "Type");
  Remove(SECOND, "type_");
  Remove(SECOND, "type_");
  Enter(FIRST, "resume");
  m_trace.Compare("PreloadingWords");
}

TEST_F(PreloadingTraces, EveryStatusBeforeAPreload) {
  for (const std::string& word : WORDS) {
    Follow(FIRST, "type");
    Enter(FIRST, word);
    Fire(2000);
    Follow(FIRST, "type2");
    Follow(SECOND, "type");
    Enter(FIRST, "load");
    Enter(SECOND, "load");
    Remove(SECOND, "type");
    Remove(FIRST, "type");
    m_trace.Do("unregister", [] { AppPreloadingUtils::UnregisterAppStatusVconfCallback(FIRST); });
    m_trace.Do("notify", [] { AppPreloadingUtils::NotifyWebAppStatus(); });
    // The status outlives the following of the app.
    Follow(FIRST, "type");
    Enter(FIRST, word);
    Remove(FIRST, "type");
    Follow(FIRST, "type");
    Follow(FIRST, "type");
    Remove(FIRST, "type");
  }
  m_trace.Compare("PreloadingStatuses");
}

TEST_F(PreloadingTraces, Results) {
  for (const int result :
       {-5, 1, REJECTED, NOT_FOUND, static_cast<int>(APP_CONTROL_ERROR_LAUNCH_FAILED)}) {
    SetLaunchResult(result);
    Follow(FIRST, "type");
    for (const int retry : {-5, 1, REJECTED, NOT_FOUND, 0}) {
      SetLaunchResult(retry);
      Fire(5000);
    }
    Fire(5000);
    Remove(FIRST, "type");
  }
  for (const int result : {-1, 1, 0}) {
    SetLaunchResult(0);
    m_trace.Prepare([=] { fake::Fail("vconf_notify_key_changed", result, 2); });
    Follow(FIRST, "type");
    SetLaunchResult(REJECTED);
    Follow(FIRST, "type2");
    SetLaunchResult(0);
    Fire(5000);
    Fire(5000);
    m_trace.Prepare([=] {
      fake::ClearFaults();
      fake::Fail("vconf_ignore_key_changed", result, fake::FOREVER);
    });
    Follow(SECOND, "type");
    Remove(SECOND, "type");
    m_trace.Prepare([=] { fake::ClearFaults(); });
    Remove(FIRST, "type");
  }
  m_trace.Compare("PreloadingResults");
}

TEST_F(PreloadingTraces, RejectedForGood) {
  m_trace.Prepare([] {
    fake::SetLaunchHook(
        [](const fake::Launch& launch) { return launch.extra.empty() ? 0 : REJECTED; });
  });
  Follow(FIRST, "type");
  Follow(FIRST, "type2");
  for (int i = 0; i < 24; ++i) Fire(5000);
  Follow(FIRST, "type");
  Fire(5000);
  m_trace.Compare("PreloadingRejectedForGood");
}

// The web-app service and the time.

void PrintNothing(std::ostream& /*stream*/) {}

std::string ListWasApps(WASAppList apps) {
  const bool result = WASUtils::GetAllWASAppList(apps);
  std::string text = result ? "true" : "false";
  for (const auto& [package, isGone] : apps) text += "; " + package + (isGone ? " gone" : " here");
  return text;
}

TEST(UtilTraces, WebAppService) {
  int number = 0;
  for (const std::string package : {"pkg", "Pkg", "pkg_", "pkg%", "pk", "pkg", " pkg"}) {
    for (const auto& [kind, gone] : {std::pair(2, number % 3 - 1), std::pair(number % 5, 1)}) {
      fake::AddWasApp({package, package + ".app" + std::to_string(number),
                       "widget of " + package + std::to_string(number), kind, gone});
      ++number;
    }
  }
  Trace trace(&PrintNothing);
  const auto ask = [&](const std::string& title, const std::function<void()>& fault) {
    trace.Prepare(fault);
    trace.Do(title + ": list", [] { return ListWasApps({{"pkg_", true}, {"mine", false}}); });
    trace.Prepare([] { fake::ClearFaults(); });
    for (const std::string app :
         {"pkg.app0", "pkg.app", "Pkg.app2", "PKG.app2", "pkg", "", "pkg%.app6"}) {
      trace.Prepare(fault);
      trace.Do(title + ": widget id of " + app, [&] { return WASUtils::GetWidgetIDByAppID(app); });
      trace.Prepare([] { fake::ClearFaults(); });
    }
  };
  ask("no fault", [] {});
  for (const char* call : {"was_get_all_app_list", "was_get_app_info_by_tizenid"}) {
    for (const int result : {-1, 0, 1}) {
      ask(WithResult(call, result), [=] { fake::Fail(call, result); });
      ask(WithResult(call, result) + " after its work",
          [=] { fake::FailAfterwards(call, result); });
    }
  }
  trace.Compare("WebAppService");
}

TEST(UtilTraces, Times) {
  Trace trace(&PrintNothing);
  setenv("TZ", "XYZ-9", 1);
  for (const std::string text : {"",
                                 "1970-01-01T00:00:00Z",
                                 "2026-11-21T16:59:30Z",
                                 "2026-11-21T16:59:30",
                                 "2026-11-21",
                                 "2026-11",
                                 "2026",
                                 "x",
                                 "-1",
                                 "2026-13-01T00:00:00Z",
                                 "2026-02-30T00:00:00Z",
                                 "2026-11-21T24:00:00Z",
                                 "2026-11-21T23:60:00Z",
                                 "2026-11-21T23:59:60Z",
                                 "2026-11-21 16:59:30",
                                 " 2026-11-21T16:59:30Z",
                                 "2026-11-21T16:59:30ZZ",
                                 "2026-1-2T3:4:5Z",
                                 "9999-12-31T23:59:59Z",
                                 "2038-01-19T03:14:08Z"}) {
    trace.Do("\"" + text + "\"", [&] { return TimeUtils::GetEpochTime(text); });
  }
  trace.Do("the time zone", [] { return std::string(std::getenv("TZ")); });
  for (const time_t time :
       {time_t{0}, time_t{-1}, time_t{59}, time_t{3600}, time_t{86399}, time_t{1795280370},
        time_t{2147483648}, time_t{253402300800}, time_t{67768036191676800},
        time_t{67768036191676799}, time_t{-67768040609740801}}) {
    trace.Do(std::to_string(time), [&] { return TimeUtils::GetUTCTimeString(&time); });
  }
  trace.Compare("Times");
}

// Reset counters.

const std::string COUNTS = "reset_count_info.txt";

std::string DataPath() {
  char* path = app_get_data_path();
  const std::string copy = path;
  std::free(path);
  return copy;
}

void PrintDataFiles(std::ostream& stream) {
  traces::PrintFiles(stream, DataPath());
  if (support::Exists(COUNTS)) stream << "file here " << support::ReadFile(COUNTS) << "\n";
}

TEST(UtilTraces, ResetCounters) {
  boost::filesystem::create_directories(DataPath());
  Trace trace(&PrintDataFiles);
  const std::string path = DataPath() + COUNTS;
  const auto check = [&](const std::string& title, const std::function<void()>& fault) {
    trace.Prepare(fault);
    trace.Do(title, [] { return FileSystemUtils::CheckTVResetAndUpdateResetCountInfo(); });
    trace.Prepare([] { fake::ClearFaults(); });
  };
  const auto setKeys = [](int factory, int service) {
    fake::StoreKey("db/factory/factory_reset_count", factory);
    fake::StoreKey("db/factory/service_reset_count", service);
  };
  check("no keys and no file", [] {});
  check("no keys again", [] {});
  for (int factory = -1; factory <= 1; ++factory) {
    for (int service = -1; service <= 1; ++service) {
      check(std::to_string(factory) + " and " + std::to_string(service) + " over 0 and 0", [&] {
        support::WriteFile(path, R"({"factory_reset_count":0,"service_reset_count":0})");
        setKeys(factory, service);
      });
    }
  }
  for (const std::string content :
       {"", "{", "[]", "3", "{}", R"({"factory_reset_count":"x","service_reset_count":9})",
        R"({"factory_reset_count":9,"service_reset_count":"x"})",
        R"({"factory_reset_count":9,"service_reset_count":[]})",
        R"({"factory_reset_count":9,"service_reset_count":99999999999})",
        R"({"factory_reset_count":9})", R"({"service_reset_count":9})",
        R"({"factory_reset_count":7,"service_reset_count":4} and more)",
        R"({"factory_reset_count":4.9,"service_reset_count":null})"}) {
    check("7 and 4 over " + content, [&] {
      support::WriteFile(path, content);
      setKeys(7, 4);
    });
  }
  for (const int result : {-1, 0, 1}) {
    for (const int after : {0, 1}) {
      const std::string title = WithResult("vconf_get_int", result) + ", " + std::to_string(after);
      check(title, [&] { fake::Fail("vconf_get_int", result, 1, after); });
    }
    check(WithResult("vconf_get_int", result) + " after its work",
          [&] { fake::FailAfterwards("vconf_get_int", result); });
  }
  check("a link", [&] {
    boost::filesystem::rename(path, DataPath() + "target");
    boost::filesystem::create_symlink(DataPath() + "target", path);
    setKeys(8, 8);
  });
  check("a directory", [&] {
    boost::filesystem::remove(path);
    boost::filesystem::create_directory(path);
  });
  trace.Compare("ResetCounters");
}

// Files.

const std::string FILES = "/tmp/traces/";

void PrintTestFiles(std::ostream& stream) {
  traces::PrintFiles(stream, FILES);
}

TEST(UtilTraces, Files) {
  support::WriteFile(FILES + "file", "first second");
  support::WriteFile(FILES + "blank", " \n\tword\n");
  support::WriteFile(FILES + "spaces", " \n");
  support::MakeDirectories(FILES + "dir");
  boost::filesystem::create_symlink("nowhere", FILES + "dangling");
  boost::filesystem::create_symlink("dir", FILES + "link");
  boost::filesystem::current_path(FILES);
  Trace trace(&PrintTestFiles);
  for (const std::string name :
       {"file", "blank", "spaces", "dir", "dangling", "link", "absent", "absent2/file",
        "file/below", "dir/", "dir/new/", "dir/x/y/z", "", "link/below/"}) {
    const std::string path = name.empty() ? name : FILES + "" + name;
    trace.Do("exists " + name, [&] { return FileSystemUtils::Exists(path); });
    trace.Do("read " + name, [&] {
      std::string content = "before";
      const bool result = FileSystemUtils::ReadFile(path, content);
      return std::string(result ? "true, " : "false, ") + content;
    });
    trace.Do("create " + name, [&] { return FileSystemUtils::CreateDirectories(path); });
    trace.Do("write " + name, [&] { return FileSystemUtils::WriteFile(path, "new " + name); });
    trace.Do("remove " + name, [&] { FileSystemUtils::RemoveDirectories(path); });
  }
  trace.Do("create without a slash", [] { return FileSystemUtils::CreateDirectories("plain"); });
  trace.Do("again", [] { return FileSystemUtils::CreateDirectories("plain"); });
  for (const std::string package : {"pkg", "pkg_", "absent"}) {
    trace.Prepare([&] {
      if (package != "absent") {
        support::MakeDirectories(FileSystemUtils::GetMetaDataDirectoryPath() + package);
      }
    });
    trace.Do("metadata of " + package,
             [&] { return FileSystemUtils::GetPackagedMetaDataDirectoryPath(package); });
  }
  trace.Do("directories", [] {
    return FileSystemUtils::GetHbbTvDirectoryPath() + " " +
           FileSystemUtils::GetMetaDataDirectoryPath() + " " + FileSystemUtils::GetSharedDataPath();
  });
  trace.Compare("Files");
}

}  // namespace
