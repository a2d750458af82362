// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "fake/control/fake.h"

/// A package that is a channel-bound app of one type, with a UI app that the web-app service knows.
inline fake::Package ChannelApp(const std::string& id, const std::string& value = "x") {
  fake::App ui;
  ui.id = id + ".ui";
  ui.metadata = {{std::string(ORV_METADATA_PREFIX) + "orv_type/ch_feeder_custom", value}};
  fake::Package package;
  package.id = id;
  package.apps = {ui};
  return package;
}
