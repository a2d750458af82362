// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <utility>

#include "app_info/AppInfo.h"

/// How a layer asks the scheduler for something: an event number and a C string with a package id.
using RequestEventCallback = void (*)(int eType, void* pParam);

/// One layer of a record: an app type with its metadata value and its data.
///
/// Every call goes down the chain first, so the innermost layer acts first. An override of Run,
/// Update or Stop calls the operation of this class before its own work. Each type offers a static
/// DecorateAppType(), which takes ownership of the record that it wraps and returns the new layer,
/// and a static Release(), which accepts null. No lock: see AppInfo.
class AppTypeDecorator : public AppInfo {
 public:
  void RunOperation(bool bStarted) override;
  void UpdateOperation() override;
  void StopOperation() override;
  void SetMetadata(const std::string& rType, const std::pair<std::string, std::string>& rKeyValue,
                   bool bUpdatable) override;
  std::string GetMetadata(const std::string& rType, const std::string& rKey) const override;
  void GetAllMetadata(MetadataMap& rMetadata) const override;
  void RemoveMetadata(const std::string& rFirst, const std::string& rSecond) override;
  /// The extracted layer wraps nothing afterwards, so its release stops at itself.
  AppInfo* ExtractTargetAppType(const std::string& rTargetType, AppInfo** ppNext) override;
  const std::string& GetAppType() const override;

 protected:
  /// Copies the identity of pAppInfo (not null) and owns it from here on. No data key is entered.
  AppTypeDecorator(AppInfo* pAppInfo, const std::string& rType, const std::string& rValue);
  /// Releases what this layer wraps, if anything, before its own members go.
  ~AppTypeDecorator();

  AppInfo* m_pAppInfo;  ///< next layer inward, owned; null once this layer is out of its chain
  std::pair<std::string, std::string> m_AppliedAppType;    ///< type name, value in force
  std::pair<std::string, std::string> m_UpdatableAppType;  ///< type name, staged value or empty
  /// Data in force and data staged for the next UpdateOperation(). Only keys that the type entered
  /// at its creation are ever stored.
  std::map<std::string, std::string> m_mapAppliedData;
  std::map<std::string, std::string> m_mapUpdatableData;

 private:
  void SetUpdatableMetadata(const std::string& rType,
                            const std::pair<std::string, std::string>& rKeyValue);
  void SetAppliedMetadata(const std::string& rType,
                          const std::pair<std::string, std::string>& rKeyValue);
};
