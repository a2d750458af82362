// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// The settings key that announces custom user interfaces, with values that other programs may set.
#include <json/json.h>

#include "app_info/ORVAppInfo.h"
#include "app_info/app_type/CustomUIExtended.h"
#include "app_info/app_type/CustomUIStandard.h"
#include "common/JsonText.h"
#include "fake/control/fake.h"
#include "fuzz/daemon_world.h"
#include "fuzz/harness.h"

namespace {

const char KEY[] = "db/orv_channel/custom_ui_type";
const char TYPE[] = "orv_type";

/// Sets the key, then runs, updates and stops the record.
void Live(AppInfo* record, const std::string& typeName, const std::string& newValue,
          const std::string& key) {
  fake::StoreKey(KEY, key);
  fuzz::Contain([record] { record->RunOperation(false); });
  record->SetMetadata(TYPE, {typeName, newValue}, true);
  fuzz::Contain([record] { record->UpdateOperation(); });
  fuzz::Contain([record] { record->StopOperation(); });
  record->GetReleaseFunction()(record);
  // The daemon does not change the key, or writes a text that it can read again.
  Json::Value root;
  const std::string left = fake::StringKey(KEY).value_or("");
  fuzz::Require(left == key || JsonText::Parse(left, root), "the key stays JSON");
}

AppInfo* NewRecord() {
  return new ORVAppInfo({"fuzzpackag", "fuzzpackag.App", "fuzzpackag.App", "", "1"});
}

}  // namespace

void fuzz::SetUp() {
  MakeWorld();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string key = fuzz::UpToNul(fuzz::Text(data, size));
  Live(CustomUIStandard::DecorateAppType(NewRecord(), "info"), "custom_ui_standard", "channel",
       key);
  Live(CustomUIExtended::DecorateAppType(NewRecord(), "epg"), "custom_ui_extended", "channel_list",
       key);
  fuzz::ForgetInput();
  return 0;
}
