// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// The file that names the replacement UI, read before a bridged guide takes over.
#include "app_info/app_type/CustomUIExtended.h"
#include "fake/control/fake.h"
#include "fuzz/daemon_world.h"
#include "fuzz/harness.h"
#include "support/files.h"

void fuzz::SetUp() {
  MakeWorld();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<CustomUIExtended::SupportedAppType> types;
  CustomUIExtended::GetEnabledAppTypes("channel_list,epg", types);
  support::WriteFile("/opt/share/orv_ch/replacement_ui_info.json", fuzz::Text(data, size));
  fake::SetOperationApp(ORV_OPERATION_EPG, "platform.Guide");
  SetOperationAsynchronously(types, "fuzzpackag.App", nullptr);
  const auto app = fake::OperationApp(ORV_OPERATION_EPG);
  fuzz::Require(app == "fuzzpackag.App" || app == "platform.Guide",
                "the app has taken over in the end, or nothing has changed");
  fuzz::ForgetInput();
  return 0;
}
