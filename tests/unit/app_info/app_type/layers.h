// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "app_info/ORVAppInfo.h"

/// Real layers around a real record, as the tests of the app types need them.
namespace layers {

constexpr char PACKAGE[] = "org.example.pkg";
constexpr char APP[] = "AbCdEfGhIj.app";
constexpr char WIDGET[] = "AbCdEfGhIj.widget";
constexpr char SERVICE[] = "AbCdEfGhIj.service";

/// Owned by the layer that wraps it.
inline AppInfo* NewRecord(const std::string& package = PACKAGE, const std::string& app = APP) {
  AppBaseInfo info;
  info.m_sPackageID = package;
  info.m_sAppID = app;
  info.m_sWidgetID = WIDGET;
  info.m_sServiceID = SERVICE;
  info.m_sVersion = "1.0.0";
  return new ORVAppInfo(info);
}

/// Releases a chain as the daemon does.
struct Releaser {
  void operator()(AppInfo* record) const { record->GetReleaseFunction()(record); }
};
template <class Type>
using Chain = std::unique_ptr<Type, Releaser>;

/// Calls Type's factory with `inner`, or a plain record. `more`: the callback, for the type that
/// has one.
template <class Type, class... More>
Chain<Type> Decorate(AppInfo* inner, const std::string& value, More... more) {
  return Chain<Type>(static_cast<Type*>(Type::DecorateAppType(inner, value, more...)));
}
template <class Type>
Chain<Type> Decorate(const std::string& value) {
  return Decorate<Type>(NewRecord(), value);
}

inline void Apply(AppInfo& record, const std::string& key, const std::string& value) {
  record.SetMetadata("orv_data", {key, value}, false);
}
inline void Stage(AppInfo& record, const std::string& key, const std::string& value) {
  record.SetMetadata("orv_data", {key, value}, true);
}
/// Stages the metadata value of the layer's own type.
inline void StageValue(AppInfo& record, const std::string& value) {
  record.SetMetadata("orv_type", {record.GetAppType(), value}, true);
}

}  // namespace layers
