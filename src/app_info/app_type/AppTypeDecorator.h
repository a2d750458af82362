// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "app_info/AppInfo.h"

/// How a layer calls the scheduler: with an event number and a package id as a C string.
using RequestEventCallback = void (*)(int eType, void* pParam);

/// One layer of a record: an app type with its metadata value and its data.
///
/// Every call is forwarded to the inner layer first, so the innermost layer acts first. An override
/// of Run, Update or Stop calls the operation of this class before its own work. Concrete types
/// derive through AppTypeLayer. The metadata may be read and set on any thread; for the identity
/// and the operations see AppInfo.
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
  /// The extracted layer wraps nothing afterwards, so its release destroys that layer only.
  AppInfo* ExtractTargetAppType(const std::string& rTargetType, AppInfo** ppNext) override;
  const std::string& GetAppType() const override;

 protected:
  using DataMap = std::map<std::string, std::string>;

  /// Copies the identity of pAppInfo (not null) and owns it from then on. Enters no data key.
  AppTypeDecorator(AppInfo* pAppInfo, const std::string& rType, const std::string& rValue);
  /// Releases the inner layer, if there is one.
  ~AppTypeDecorator();

  // Copies of the metadata value and of the data: staged with bUpdatable, otherwise in force.
  std::string GetValue(bool bUpdatable) const;
  DataMap GetData(bool bUpdatable) const;
  /// A key that is missing is created, empty.
  std::string GetDataOrCreate(bool bUpdatable, const std::string& rKey);
  void ClearUpdatableValue();

  AppInfo* m_pAppInfo;  ///< next layer inward, owned; null once this layer is out of its chain

  /// Leaf: held for accesses to the four members below only, never across a call or another lock.
  /// The type names and, in constructors, everything may be accessed without it.
  mutable std::mutex m_mutexMetadata;
  std::pair<std::string, std::string> m_AppliedAppType;    ///< type name, value in force
  std::pair<std::string, std::string> m_UpdatableAppType;  ///< type name, staged value or empty
  /// Data in force and data staged for the next UpdateOperation(). SetMetadata() stores only keys
  /// that are already there: those that the type enters in its constructor.
  DataMap m_mapAppliedData;
  DataMap m_mapUpdatableData;

 private:
  void SetUpdatableMetadata(const std::string& rType,
                            const std::pair<std::string, std::string>& rKeyValue);
  void SetAppliedMetadata(const std::string& rType,
                          const std::pair<std::string, std::string>& rKeyValue);
};
