// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fault/packages.h"

namespace fault {

fake::Package MakePackage(const std::string& id, const Metadata& metadata) {
  fake::Package package;
  package.id = id;
  package.apps.push_back({id + ".App", PACKAGE_INFO_UIAPP, {}});
  return With(package, metadata);
}

fake::Package PackagedFeeder() {
  return MakePackage("packagedfd", {{"orv_type/ch_feeder_standard", "extended"},
                                    {"orv_data/channel_data_url", "file://channel.json"},
                                    {"orv_data/schedule_data_url", "file://schedule.json"},
                                    {"orv_data/ch.app.boosting", "true"}});
}

fake::Package WebFeeder(const std::string& id) {
  return MakePackage(id, {{"orv_type/ch_feeder_standard", "standard"},
                          {"orv_data/channel_data_url", "http://example.org/channel.json"},
                          {"orv_data/schedule_data_url", "http://example.org/schedule.json"}});
}

fake::Package ServiceFeeder(const std::string& id, const std::string& value) {
  fake::Package package = MakePackage(id, {{"orv_type/ch_feeder_custom", value}});
  package.apps.push_back({id + ".Feed", PACKAGE_INFO_SERVICEAPP, {}});
  return package;
}

fake::Package Banner(const std::string& types) {
  return MakePackage("bannerpack", {{"orv_type/custom_ui_standard", types}});
}

fake::Package Guide(const std::string& screens) {
  return MakePackage("guidepacka", {{"orv_type/custom_ui_extended", screens}});
}

fake::Package BridgedGuide(const std::string& screens) {
  return With(Guide(screens), {{"orv_data/custom_ui_cold_boot_opt", "background_img"}});
}

std::string WidgetID(const fake::Package& package) {
  return package.id + "-Widget";
}

fake::Package Ordinary(fake::Package package) {
  for (fake::App& app : package.apps) {
    app.metadata.clear();
  }
  return package;
}

fake::Package With(fake::Package package, const Metadata& metadata) {
  for (const auto& [key, value] : metadata) {
    package.apps.front().metadata.emplace_back(ORV_METADATA_PREFIX + key, value);
  }
  return package;
}

}  // namespace fault
