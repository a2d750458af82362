// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

#include "app_info/AppInfoCache.h"
#include "common/ORVConstants.h"
#include "controller/ORVAppCreator.h"
#include "fake/control/fake.h"
#include "support/log_matchers.h"
#include "unit/app_info/records.h"

using Metadata = std::vector<std::pair<std::string, std::string>>;

inline std::string TypeKey(const std::string& type) {
  return METADATA_PREFIX + "orv_type/" + type;
}
inline std::string DataKey(const std::string& key) {
  return METADATA_PREFIX + "orv_data/" + key;
}

/// A package with one UI application that has this metadata.
inline fake::Package MakePackage(const std::string& id, const Metadata& metadata) {
  fake::Package package;
  package.id = id;
  package.version = "1.2.3";
  fake::App app;
  app.id = id + ".app";
  app.metadata = metadata;
  package.apps.push_back(app);
  return package;
}

/// The arguments with which a layer of TYPE was last created.
template <const char* TYPE>
struct Made {
  static inline records::Layer* s_layer = nullptr;
  static inline RequestEventCallback s_callback = nullptr;
};

/// Registers test layers under a type name. They have the keys "key" and "key of <type>".
template <const char* TYPE>
void RegisterLayer() {
  const auto decorate = [](AppInfo* inner, const std::string& value,
                           RequestEventCallback callback) -> AppInfo* {
    const std::vector<std::string> keys = {"key", std::string("key of ") + TYPE};
    Made<TYPE>::s_layer = new records::Layer(inner, TYPE, value, keys, keys);
    Made<TYPE>::s_callback = callback;
    return Made<TYPE>::s_layer;
  };
  ORVAppCreator::GetInstance()->RegisterAppType(TYPE, {decorate, records::Layer::Release});
}

/// A creator with its store.
class CreatorTest : public testing::Test {
 protected:
  CreatorTest() { records::MakeStoreDirectory(); }
  void TearDown() override { records::ExpectLevelsFitTheirWords(); }

  /// The instance; the first call creates it.
  ORVAppCreator& Creator() { return *ORVAppCreator::GetInstance(); }
  AppInfoCache& Cache() { return *AppInfoCache::GetInstance(); }
  AppInfo* Find(const std::string& package) { return Cache().GetAppInfo(package); }

  std::vector<std::string> Cached() {
    std::vector<std::string> packages;
    Cache().GetAppIDList(packages);
    return packages;
  }
  /// Type names from the outside in, including the bare record's. Destroys the chain: the layers
  /// are released.
  std::vector<std::string> TakeApart(const std::string& package) {
    std::vector<std::string> types;
    AppInfo* layer = Cache().RemoveAppInfo(package);
    while (true) {
      types.push_back(layer->GetAppType());
      AppInfo* next = nullptr;
      AppInfo* extracted = layer->ExtractTargetAppType(layer->GetAppType(), &next);
      layer->GetReleaseFunction()(layer);
      if (extracted == nullptr) {
        return types;
      }
      layer = next;
    }
  }
  /// Clears the log and the recorded calls.
  void Forget() {
    fake::ClearLog();
    fake::ClearCalls();
    records::Journal().clear();
  }
};
