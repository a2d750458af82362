// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <utility>

/// Identity of a package on its way from the package manager or the store into a record.
struct AppBaseInfo {
  std::string m_sPackageID;  ///< key of every lookup
  std::string m_sAppID;      ///< the UI application; empty if there is none
  std::string m_sWidgetID;   ///< empty until the web-app service knows the UI application
  std::string m_sServiceID;  ///< the service application; empty if there is none
  std::string m_sVersion;
};

/// Category (METADATA_ORV_TYPE, METADATA_ORV_DATA) to key to value. The key order fixes the order
/// of the layers of a record.
using MetadataMap = std::map<std::string, std::map<std::string, std::string>>;

/// One channel-bound app: a plain record inside a chain of decorators, each of them an AppInfo with
/// its own copy of the identity. Callers hold the outermost layer.
///
/// Never deleted through this class: pass an object to the function that GetReleaseFunction()
/// returns. The identity and the operations have no lock. A caller that found the record in the
/// cache uses it unlocked, and pins it where another thread may remove it (see PinnedAppInfo).
class AppInfo {
 public:
  using ReleaseFunction = void (*)(AppInfo* pAppInfo);

  AppInfo(const AppInfo&) = delete;
  AppInfo& operator=(const AppInfo&) = delete;

  /// bStarted: true when the daemon starts or runs all apps again, false after an install.
  virtual void RunOperation(bool bStarted) {}
  virtual void UpdateOperation() {}
  virtual void StopOperation() {}

  /// bUpdatable stages the value for the next UpdateOperation(); otherwise it is in force at once.
  /// A key that no layer has entered is ignored.
  virtual void SetMetadata(const std::string& rType,
                           const std::pair<std::string, std::string>& rKeyValue,
                           bool bUpdatable) = 0;
  /// The value in force, of the outermost layer that has the key; empty if none has.
  virtual std::string GetMetadata(const std::string& rType, const std::string& rKey) const = 0;
  /// Adds what is in force, innermost layer first; a key already in rMetadata keeps its value.
  virtual void GetAllMetadata(MetadataMap& rMetadata) const = 0;
  virtual void RemoveMetadata(const std::string& rFirst, const std::string& rSecond) = 0;

  /// Removes the layer of that type from the chain and passes its ownership to the caller; null if
  /// there is none. *ppNext receives the layer below it when the outermost layer was removed.
  virtual AppInfo* ExtractTargetAppType(const std::string& rTargetType, AppInfo** ppNext) = 0;

  /// Type name of this layer; lives as long as the layer.
  virtual const std::string& GetAppType() const = 0;
  /// A function that destroys and frees an object of this layer's type with everything that it
  /// wraps; it accepts null.
  virtual ReleaseFunction GetReleaseFunction() const = 0;

  std::string m_sPackageID;
  std::string m_sAppID;
  std::string m_sWidgetID;
  std::string m_sServiceID;
  std::string m_sVersion;

 protected:
  AppInfo() = default;
  ~AppInfo() = default;
};
