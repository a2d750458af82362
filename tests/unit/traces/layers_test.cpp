// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <app_control.h>
#include <gtest/gtest.h>

#include <array>
#include <boost/filesystem.hpp>

#include "app_info/ORVAppInfo.h"
#include "app_info/app_type/ChFeederCustom.h"
#include "app_info/app_type/ChFeederStandard.h"
#include "app_info/app_type/CustomUIExtended.h"
#include "app_info/app_type/CustomUIStandard.h"
#include "common/Log.h"
#include "fake/control/fake.h"
#include "support/files.h"
#include "unit/app_info/records.h"
#include "unit/traces/trace.h"
#include "utils/AppPreloadingUtils.h"
#include "utils/FileSystemUtils.h"

namespace {

constexpr char UIKEY[] = "db/orv_channel/custom_ui_type";
constexpr char UIFILE[] = "/opt/share/orv_ch/replacement_ui_info.json";
constexpr char APP_KEY[] = "rtc/memory/WebApp/org.example.a_b.app";

/// The five strings begin alike and differ.
AppBaseInfo LookAlikes() {
  AppBaseInfo info;
  info.m_sPackageID = "org.example.a_b";
  info.m_sAppID = "org.example.a_b.app";
  info.m_sWidgetID = "org.example.a_b.Widget";
  info.m_sServiceID = "org.example.a_b.app.service";
  info.m_sVersion = "org.example.a_b 1.0";
  return info;
}

/// Reads what a layer keeps to itself.
struct Insight : AppTypeDecorator {
  static AppInfo* Inner(AppTypeDecorator& layer) { return layer.*&Insight::m_pAppInfo; }
  static void Print(std::ostream& stream, const std::string& name, AppTypeDecorator& layer) {
    stream << name << " applied value " << (layer.*&Insight::m_AppliedAppType).first << " = "
           << (layer.*&Insight::m_AppliedAppType).second << "\n";
    stream << name << " staged value " << (layer.*&Insight::m_UpdatableAppType).first << " = "
           << (layer.*&Insight::m_UpdatableAppType).second << "\n";
    for (const auto& [key, value] : layer.*&Insight::m_mapAppliedData) {
      stream << name << " applied " << key << " = " << value << "\n";
    }
    for (const auto& [key, value] : layer.*&Insight::m_mapUpdatableData) {
      stream << name << " staged " << key << " = " << value << "\n";
    }
  }

 protected:
  ~Insight() = default;
};

/// The chains whose layers belong to the state; the outermost layer of each.
std::array<AppInfo*, 2>& Chains() {
  static std::array<AppInfo*, 2> chains = {};
  return chains;
}

void PrintChain(std::ostream& stream, const std::string& name, AppInfo* record) {
  for (int depth = 0; record != nullptr; ++depth) {
    const std::string layer = name + std::to_string(depth);
    stream << layer << " is " << record->GetAppType() << " of " << record->m_sPackageID << " | "
           << record->m_sAppID << " | " << record->m_sWidgetID << " | " << record->m_sServiceID
           << " | " << record->m_sVersion << "\n";
    auto* const decorator = dynamic_cast<AppTypeDecorator*>(record);
    if (decorator != nullptr) Insight::Print(stream, layer, *decorator);
    record = decorator == nullptr ? nullptr : Insight::Inner(*decorator);
  }
}

void PrintState(std::ostream& stream) {
  PrintChain(stream, "layer ", Chains()[0]);
  PrintChain(stream, "extracted ", Chains()[1]);
  traces::PrintKeys(stream, {UIKEY, APP_KEY});
  traces::PrintPlatform(stream, {APP_KEY, UIKEY});
  traces::PrintOperations(stream);
  traces::PrintFiles(stream, FileSystemUtils::GetSharedDataPath());
}

/// The scheduler's part. A log record, so that the trace has it at its place.
void OnEvent(int eType, void* pParam) {
  ORV_LOG_INFO("[Info] event %d for %s", eType, static_cast<const char*>(pParam));
}

AppInfo* NewStandard(const std::string& value) {
  return ChFeederStandard::DecorateAppType(new ORVAppInfo(LookAlikes()), value);
}
AppInfo* NewCustom(const std::string& value) {
  return ChFeederCustom::DecorateAppType(new ORVAppInfo(LookAlikes()), value, &OnEvent);
}
AppInfo* NewBanner(const std::string& value) {
  return CustomUIStandard::DecorateAppType(new ORVAppInfo(LookAlikes()), value);
}
AppInfo* NewScreen(const std::string& value) {
  return CustomUIExtended::DecorateAppType(new ORVAppInfo(LookAlikes()), value);
}

using Data = std::vector<std::pair<std::string, std::string>>;

class LayerTraces : public testing::Test {
 protected:
  LayerTraces() : m_trace((Prepare(), &PrintState)) {}

  static void Prepare() {
    boost::filesystem::remove_all(FileSystemUtils::GetSharedDataPath());
    fake::SetMountHandler([](const fake::Mount& mount) {
      support::WriteZip(mount.directory + "/orv_app.zip",
                        {{"index.html", "page"}, {"metadata/list.json", "[]"}});
      return 0;
    });
    fake::SetUmountHandler([](const std::string& directory) {
      boost::filesystem::remove(directory + "/orv_app.zip");
      return 0;
    });
    fake::SetWaits(fake::Waits::TimeOut);
    fake::StoreKey(UIKEY, std::string());
  }
  void Create(const std::string& title, AppInfo* (*create)(const std::string&),
              const std::string& value) {
    m_trace.Do(title + ": create", [&] { Chains()[0] = create(value); });
  }
  void Set(const Data& data, bool updatable) {
    m_trace.Prepare([&] {
      for (const auto& entry : data) Chains()[0]->SetMetadata("orv_data", entry, updatable);
    });
  }
  void StageValue(const std::string& value) {
    m_trace.Prepare([&] {
      Chains()[0]->SetMetadata("orv_type", {Chains()[0]->GetAppType(), value}, true);
    });
  }
  void RunNew() {
    m_trace.Do("run of a new app", [] { Chains()[0]->RunOperation(false); });
  }
  void RunKnown() {
    m_trace.Do("run of a known app", [] { Chains()[0]->RunOperation(true); });
  }
  void Update() {
    m_trace.Do("update", [] { Chains()[0]->UpdateOperation(); });
  }
  void Stop() {
    m_trace.Do("stop", [] { Chains()[0]->StopOperation(); });
  }
  void Release() {
    m_trace.Do("release", [] {
      AppInfo* const record = std::exchange(Chains()[0], nullptr);
      record->GetReleaseFunction()(record);
    });
  }
  /// What outlives the layer is taken away, so that each case begins alike.
  void Clean() {
    m_trace.Prepare([] {
      fake::ClearFaults();
      Prepare();
      for (const char* operation : {ORV_OPERATION_CHANNEL_LIST, ORV_OPERATION_EPG}) {
        fake::SetOperationApp(operation, std::nullopt);
      }
      AppPreloadingUtils::RemoveWebStatusChangedCallback("org.example.a_b.app",
                                                         "custom_ui_standard");
      AppPreloadingUtils::RemoveWebStatusChangedCallback("org.example.a_b.app",
                                                         "custom_ui_extended");
      fake::SetChannelFrameworkPresent(true);
      for (const fake::Timer& timer : fake::Timers()) fake::FireTimer(timer.id);
    });
  }

  Trace m_trace;
};

TEST_F(LayerTraces, StandardFeeder) {
  struct Case {
    std::string value;
    Data data;
    std::string staged;
    Data stagedData;
  };
  const std::string channels = "channel_data_url";
  const std::string schedule = "schedule_data_url";
  const std::vector<Case> cases = {
      {"extended",
       {{channels, "file://c.json"}, {schedule, "http://example.org/s"}},
       "x",
       {{channels, "https://example.org/c"}, {schedule, "file://s.json"}}},
      {"extended2",
       {{channels, "files:/c"}, {schedule, "FILE:/s"}},
       "extended",
       {{channels, "http:c"}, {schedule, "httpss:/s"}, {"ch.app.boosting", "on"}}},
      {"Extended",
       {{channels, "https://example.org"}, {schedule, "file:/s"}},
       " extended",
       {{channels, "file"}, {schedule, ":file:"}}},
      {"",
       {{channels, "file:/c"}, {schedule, "short"}},
       "",
       {{channels, "short"}, {schedule, "file:/s"}}},
      {"extended", {{"ch.app.boosting", "file:/x"}}, "extended", {}},
  };
  for (const Case& one : cases) {
    Create("\"" + one.value + "\"", &NewStandard, one.value);
    Set(one.data, false);
    RunNew();
    RunKnown();
    RunNew();
    StageValue(one.staged);
    Set(one.stagedData, true);
    Update();
    Update();
    Stop();
    Stop();
    RunNew();
    Release();
    Clean();
  }
  m_trace.Compare("StandardFeeder");
}

TEST_F(LayerTraces, StandardFeederWithFaults) {
  const Data data = {{"channel_data_url", "file://c.json"}, {"schedule_data_url", "file://s.json"}};
  const std::vector<std::pair<std::string, std::function<void()>>> faults = {
      {"no framework", [] { fake::SetChannelFrameworkPresent(false); }},
      {"refused create", [] { fake::Fail("FCOrvAppInfoAPI::CreateAppInfo", 0); }},
      {"refused update", [] { fake::Fail("FCOrvAppInfoAPI::UpdateAppInfo", 0); }},
      {"refused remove", [] { fake::Fail("FCOrvAppInfoAPI::RemoveAppInfo", 0); }},
      {"no mount", [] { fake::SetMountHandler([](const fake::Mount&) { return 1; }); }},
      {"no metadata directory",
       [] { support::WriteFile(FileSystemUtils::GetSharedDataPath() + "metadata", "a file"); }},
  };
  for (const auto& [title, fault] : faults) {
    Create(title, &NewStandard, "extended");
    Set(data, false);
    m_trace.Prepare(fault);
    RunNew();
    StageValue("extended");
    Set(data, true);
    Update();
    Stop();
    Release();
    Clean();
  }
  m_trace.Compare("StandardFeederWithFaults");
}

TEST_F(LayerTraces, CustomFeeder) {
  for (const std::string value : {"extended", "extended2", "Extended", ""}) {
    Create("\"" + value + "\"", &NewCustom, value);
    Set({{"expiration_date_str", "2030-01-01T00:00:00Z"}, {"channel_data_url", "file:/c"}}, false);
    Set({{"expiration_date_str", "2031-01-01T00:00:00Z"}}, true);
    RunNew();
    RunKnown();
    for (const std::string staged : {"extended", "extended3", value.c_str(), "", "extended"}) {
      StageValue(staged);
      Update();
    }
    Stop();
    Release();
    Clean();
  }
  // Without a scheduler.
  m_trace.Do("no scheduler: create", [] {
    Chains()[0] = ChFeederCustom::DecorateAppType(new ORVAppInfo(LookAlikes()), "extended",
                                                  static_cast<RequestEventCallback>(nullptr));
  });
  m_trace.Prepare([] { fake::SetMountHandler([](const fake::Mount&) { return -1; }); });
  RunNew();
  Stop();
  Release();
  m_trace.Compare("CustomFeeder");
}

/// A banner or a screen through its life, over the contents that the key may have.
void PutKey(const std::string& text) {
  fake::StoreKey(UIKEY, text);
}

TEST_F(LayerTraces, Banner) {
  for (const std::string value : {"info,channel", "Info, channel,info", "unknown", ""}) {
    Create("\"" + value + "\"", &NewBanner, value);
    Set({{"custom_ui_cold_boot_opt", value.empty() ? "" : "invisible"}}, false);
    RunNew();
    RunKnown();
    Update();  // nothing is staged yet
    for (const std::string staged : {"channel,info", "channel,info", "", "info"}) {
      StageValue(staged);
      Set({{"custom_ui_cold_boot_opt", staged == "info" ? "default" : "background_img"}}, true);
      Update();
    }
    Stop();
    Release();
    Clean();
  }
  // Another text with the same known names is no change; the option is empty on both sides.
  Create("the same names", &NewBanner, "info,channel");
  for (const std::string staged : {"info,unknown,channel", "info,channel,", "info,channel,info"}) {
    StageValue(staged);
    Update();
  }
  Release();
  m_trace.Compare("Banner");
}

TEST_F(LayerTraces, BannerOverKeys) {
  const std::vector<std::string> contents = {
      "{\"CustomApp\":{\"a\":1},\"CustomBanner\":{\"old\":2},\"CustomBanner2\":3}",
      "{\"CustomBanner\":[1]}",
      "{broken",
      "[]",
      "\"text\"",
      "null",
      " "};
  for (const std::string& content : contents) {
    Create(content, &NewBanner, "info");
    m_trace.Prepare([&] { PutKey(content); });
    RunNew();
    StageValue("channel");
    Update();
    Stop();
    Release();
    Clean();
  }
  for (const int result : {-1, 1, 0}) {
    Create("vconf_set_str gives " + std::to_string(result), &NewBanner, "info");
    m_trace.Prepare([&] { fake::Fail("vconf_set_str", result, fake::FOREVER); });
    RunNew();
    Stop();
    Release();
    Clean();
  }
  Create("no key", &NewBanner, "info");
  m_trace.Prepare([] { fake::Fail("vconf_get_str", 0, fake::FOREVER); });
  RunNew();
  RunKnown();
  StageValue("channel");
  Update();
  Update();
  Stop();
  Release();
  m_trace.Compare("BannerOverKeys");
}

TEST_F(LayerTraces, Screen) {
  for (const std::string option : {"", "default", "background_img2", "background_img"}) {
    Create("option \"" + option + "\"", &NewScreen, "epg,EPG,channel_list,epg ,channel_lists");
    m_trace.Prepare([] { support::WriteFile(UIFILE, "{\"appid\" : \"lay out.app\"}"); });
    Set({{"custom_ui_cold_boot_opt", option}}, false);
    RunNew();
    RunKnown();
    Update();  // nothing is staged yet
    for (const std::string staged : {"channel_list", "channel_list", "", "epg"}) {
      StageValue(staged);
      Set({{"custom_ui_cold_boot_opt", staged == "epg" ? "background_img" : "default"}}, true);
      Update();
    }
    for (int status = -1; status <= 7; ++status) {
      m_trace.Do("status " + std::to_string(status),
                 [status] { CustomUIExtended::OnAppStatusChanged(status, Chains()[0]); });
    }
    Stop();
    AppInfo* const released = Chains()[0];
    Release();
    m_trace.Do("status of a layer that is gone",
               [released] { CustomUIExtended::OnAppStatusChanged(6, released); });
    Clean();
  }
  Create("no screens", &NewScreen, "");
  Update();  // creates no staged option
  Release();
  m_trace.Compare("Screen");
}

TEST_F(LayerTraces, ScreenWithFaults) {
  std::vector<std::pair<std::string, int>> faults;
  for (const int result : {-1, 1}) {
    for (const char* call : {"app_operation_get_current_app", "app_operation_set_current_app",
                             "app_operation_reset_current_app", "vconf_notify_key_changed",
                             "vconf_ignore_key_changed", "app_control_send_launch_request"}) {
      faults.emplace_back(call, result);
    }
  }
  faults.emplace_back("app_control_create", 1);
  faults.emplace_back("app_control_send_launch_request",
                      static_cast<int>(APP_CONTROL_ERROR_LAUNCH_REJECTED));
  for (const std::string option : {"default", "background_img"}) {
    for (const auto& [call, result] : faults) {
      Create(option + ", " + call + " gives " + std::to_string(result), &NewScreen,
             "epg,channel_list");
      Set({{"custom_ui_cold_boot_opt", option}}, false);
      m_trace.Prepare([&call = call, result = result] {
        support::WriteFile(UIFILE, "{\"appid\":\"layout\"}");
        fake::Fail(call, result, fake::FOREVER);
      });
      RunNew();
      Stop();
      Release();
      Clean();
    }
  }
  m_trace.Compare("ScreenWithFaults");
}

TEST_F(LayerTraces, ScreenOverFilesAndKeys) {
  for (const std::string file : {"", "{broken", "{}", "[]", "{\"appid\":3}", "{\"appid\":null}",
                                 "{\"appid\":[]}", "\"text\"", "{\"appid\":\"a\\\"b\"} x"}) {
    Create("file " + file, &NewScreen, "epg");
    Set({{"custom_ui_cold_boot_opt", "background_img"}}, false);
    m_trace.Prepare([&] { support::WriteFile(UIFILE, file); });
    RunKnown();
    Stop();
    Release();
    Clean();
  }
  for (const std::string content :
       {"{\"CustomApp\":{\"old\":1},\"CustomBanner\":2}", "{broken", "3"}) {
    Create("key " + content, &NewScreen, "epg");
    m_trace.Prepare([&] { PutKey(content); });
    RunNew();
    Stop();
    Release();
    Clean();
  }
  Create("no key", &NewScreen, "epg");
  m_trace.Prepare([] { fake::Fail("vconf_get_str", 0, fake::FOREVER); });
  RunNew();
  RunKnown();
  Stop();
  Release();
  m_trace.Compare("ScreenOverFilesAndKeys");
}

// The base of all layers.

using records::Layer;

/// Three layers with look-alike types, two of which share a key. An outer type is the beginning of
/// an inner one.
AppInfo* NewChain(const std::string& value) {
  auto* const inner =
      new Layer(new ORVAppInfo(LookAlikes()), "Type", value + " 1", {"key", "other"}, {"key"});
  auto* const middle = new Layer(inner, "type_", value + " 2", {"key", "Key"}, {"Key", "key_"});
  return new Layer(middle, "type", value + " 3", {}, {"key"});
}

const std::vector<std::string>& Types() {
  static const std::vector<std::string> types = {"type", "type_",   "Type", "typ",
                                                 "",     "orv_app", "key",  "other"};
  return types;
}

TEST_F(LayerTraces, ChainMetadata) {
  Create("chain", &NewChain, "value");
  for (const std::string category : {"orv_type", "orv_data", "orv_data2", ""}) {
    for (const std::string key :
         {"type", "type_", "Type", "typ", "key", "Key", "key_", "other", ""}) {
      for (const bool updatable : {true, false}) {
        const std::string text = category + " " + key + (updatable ? ", staged" : ", applied");
        m_trace.Do("set " + text, [&] {
          Chains()[0]->SetMetadata(category, {key, "value of " + text}, updatable);
        });
      }
      m_trace.Do("get " + category + " " + key,
                 [&] { return Chains()[0]->GetMetadata(category, key); });
    }
  }
  m_trace.Do("get all", [] {
    MetadataMap metadata = {{"orv_type", {{"type_", "kept"}}}, {"foreign", {}}};
    Chains()[0]->GetAllMetadata(metadata);
    std::string text;
    for (const auto& [category, values] : metadata) {
      text += "\n" + category;
      for (const auto& [key, value] : values) text += "\n  " + key + " = " + value;
    }
    return text;
  });
  for (const auto& [first, second] : Data{{"key", "absent"},
                                          {"absent", "key"},
                                          {"Key", "key"},
                                          {"other", "other"},
                                          {"key", "key"},
                                          {"", "Key"}}) {
    m_trace.Do("remove " + first + ", " + second,
               [&first = first, &second = second] { Chains()[0]->RemoveMetadata(first, second); });
  }
  Release();
  m_trace.Compare("ChainMetadata");
}

TEST_F(LayerTraces, ChainExtraction) {
  for (const std::string& type : Types()) {
    records::Journal().clear();
    Create("extract " + type, &NewChain, "value");
    m_trace.Do("without a place for the next", [&] {
      return Chains()[0]->ExtractTargetAppType(type, nullptr) == nullptr ? "null" : "a layer";
    });
    m_trace.Do("extract", [&] {
      AppInfo* next = nullptr;
      Chains()[1] = Chains()[0]->ExtractTargetAppType(type, &next);
      const bool isTop = Chains()[1] == Chains()[0];
      if (isTop) Chains()[0] = next;
      return std::string(isTop ? "the top, next is " : "next is ") +
             (next == nullptr ? "null" : next->GetAppType());
    });
    m_trace.Do("run, update, stop", [] {
      Chains()[0]->RunOperation(true);
      Chains()[0]->RunOperation(false);
      Chains()[0]->UpdateOperation();
      Chains()[0]->StopOperation();
    });
    m_trace.Do("release of the extracted layer", [] {
      AppInfo* const layer = std::exchange(Chains()[1], nullptr);
      if (layer != nullptr) layer->GetReleaseFunction()(layer);
    });
    Release();
    m_trace.Do("what the layers did", [] {
      std::string text;
      for (const std::string& entry : records::Journal()) text += entry + "; ";
      return text;
    });
  }
  m_trace.Compare("ChainExtraction");
}

}  // namespace
