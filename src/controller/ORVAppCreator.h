// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <app_info.h>
#include <package_info.h>

#include <map>
#include <string>
#include <vector>

#include "app_info/AppInfo.h"
#include "common/SingleInstance.h"
#include "controller/AppTypeRegistry.h"

/// Package id to the metadata of the package.
using AppMetadataTable = std::map<std::string, MetadataMap>;

/// What the caller of UpdateApp() does next.
enum UpdateResult {
  UPDATE_RESULT_UPDATE = 0,
  UPDATE_RESULT_CREATE = 1,
  UPDATE_RESULT_REMOVE = 2,
  UPDATE_RESULT_FAIL = 3
};

/// Turns packages and stored rows into decorated records, makes a record fit an updated package,
/// and destroys records: the one place that knows which layer belongs to which type name.
///
/// Used on the installer task's thread; RemoveApp() also on the main loop's. Updates and removals
/// hold the RecordGuard of their package. Nothing is retried: a failure is a log line and a false.
class ORVAppCreator {
 public:
  /// See SingleInstance. The creation registers the types, forgets all records after a reset of the
  /// TV, and opens the store.
  static ORVAppCreator* GetInstance();

  /// Turns the store's rows into records. Ends at the first row that cannot be read.
  void LoadAndCreateAppInfo();

  /// True if a record was created. False on failure and for a package that is not channel-bound.
  bool CreateApp(const std::string& rPackageID);
  /// Adapts the chain of the package's record to the new metadata and stages the new values.
  UpdateResult UpdateApp(const std::string& rPackageID);
  /// Removes the record from cache and store and destroys its chain from the outside in. Blocks
  /// while another thread is inside an operation of the record.
  void RemoveApp(const std::string& rPackageID);
  /// Removes the apps that the web-app service does not list or marks as gone.
  void RunValidationTesting();

  /// The caller sets the package id of rInfo. On success its app ids and version are filled, and
  /// the table holds the first value of each key of the package's metadata.
  bool ExtractAppInfoFromMetadata(AppBaseInfo& rInfo);
  /// Builds the chain and enters it in the cache. A record whose row could not be written stays in
  /// the cache although the result is false.
  bool AddAppInfoToAppCache(const AppBaseInfo& rInfo, const MetadataMap& rMetadata, bool bUpdateDB);
  /// Replaces rpAppInfo by the new outermost layer, which owns it. Unknown types change nothing.
  void AddAppTypeDecorator(AppInfo*& rpAppInfo, const std::string& rType,
                           const std::string& rValue);

  static bool IsSupportedAppType(const std::string& rType);
  void AddSupportedAppType(const std::string& rType);
  /// Adds a type to the list of supported types and to the table of creators.
  void RegisterAppType(const std::string& rType, const AppTypeCreator& rCreator);

  /// Platform callbacks, called within ExtractAppInfoFromMetadata(); user data is its AppBaseInfo.
  /// No exception leaves them.
  static bool PackageInfoAppCB(package_info_app_component_type_e eType, const char* pAppID,
                               void* pUserData);
  static bool AppInfoMetadataCB(const char* pKey, const char* pValue, void* pUserData);

 private:
  friend class SingleInstance<ORVAppCreator>;

  using AppTypeMap = std::map<std::string, std::string>;

  ORVAppCreator();
  ~ORVAppCreator() = default;

  void AddMetadata(const std::string& rPackageID, const std::string& rType, const std::string& rKey,
                   const std::string& rValue);
  AppInfo* DecorateAppTypeByMatadata(const AppBaseInfo& rInfo, const MetadataMap& rMetadata);

  void RemoveDeactivatedAppTypes(AppInfo*& rpAppInfo, const AppTypeMap& rOldTypes,
                                 const AppTypeMap& rNewTypes);
  void AddActivatedAppTypes(AppInfo* pAppInfo, const AppTypeMap& rOldTypes,
                            const AppTypeMap& rNewTypes);
  void UpdateChangedMetadata(AppInfo* pAppInfo, const AppTypeMap& rOldTypes,
                             const AppTypeMap& rNewTypes);

  AppMetadataTable m_mapMetadata;
  std::map<std::string, AppTypeCreator> m_mapAppTypeCreators;
  static std::vector<std::string> s_vSupportedAppTypes;
};
