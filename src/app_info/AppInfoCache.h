// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "app_info/AppInfo.h"
#include "app_info/AppInfoDB.h"
#include "app_info/SchedulingItem.h"

/// App id and widget id of a web app to be preloaded.
using PreloadingApp = std::pair<std::string, std::string>;

/// The registry of all records, the store behind it, and the list of service apps that are still to
/// run in the present pass.
///
/// Any thread may call. The two locks are recursive and protect the containers, not the records: a
/// pointer from GetAppInfo() is used unlocked, and nothing pins it. They have no single order:
/// AddSchedulingItem() takes the app list before the scheduling list, GetNextSchedulingItem() and
/// ResetSchedulingList() take them the other way round. That is settled; a third lock around these
/// three keeps them from waiting on each other.
class AppInfoCache {
 public:
  /// Created on the first call and never destroyed.
  static AppInfoCache* GetInstance();

  /// Enters or replaces a record; a replaced one is not freed. False only when the row could not be
  /// written: the record is in the cache all the same.
  bool AddAppInfo(const std::string& rPackageID, AppInfo* pAppInfo, bool bUpdateDB);
  /// Replaces a record without freeing the old one, and rewrites its row. Result as AddAppInfo().
  bool UpdateAppInfo(const std::string& rPackageID, AppInfo* pAppInfo);
  /// Drops a record and its row and hands the record over to the caller; null if there was none.
  AppInfo* RemoveAppInfo(const std::string& rPackageID);
  /// Null if there is none. The cache's entry keeps no claim on the result.
  AppInfo* GetAppInfo(const std::string& rPackageID);
  /// Whether this is a record of the cache. The address is only compared, so the record may have
  /// been destroyed.
  bool HasAppInfo(const AppInfo* pAppInfo);
  /// Appends every package id in ascending order. Takes no lock: a snapshot whose ids may be gone.
  void GetAppIDList(std::vector<std::string>& rList) const;
  /// Appends the package ids whose record has a non-empty value of that type. Takes no lock either.
  void GetAppIDListByType(const std::string& rAppType, std::vector<std::string>& rList) const;
  /// Appends the web apps of custom user interfaces, in ascending package id. Takes the lock.
  void GetPreloadingApps(std::vector<PreloadingApp>& rList);
  /// Forgets everything, the store's file included. The records are not freed: this runs before any
  /// exists.
  void ClearCacheAndDB();

  /// Opens the store, with the app list locked.
  void OpenDB();
  /// Reads the store's rows. Takes no lock: nothing else uses the store while the daemon starts.
  bool LoadData(AppInfoDB::RowMap& rRows);

  /// Puts a package at the front of the list, once. Unknown packages are left out.
  void AddSchedulingItem(const std::string& rPackageID);
  void RemoveSchedulingItem(const std::string& rPackageID);
  /// Takes the front off the list. Ids without a record are dropped silently. False, with rItem
  /// untouched, when the list has run out.
  bool GetNextSchedulingItem(SchedulingItem& rItem);
  /// Stores an item's due time in its record and its row.
  bool UpdateSchedulingItem(const SchedulingItem& rItem);
  /// Fills the list with every service-app package, in ascending order, due or not. Returns the
  /// size.
  int ResetSchedulingList();
  int GetSchedulingListSize();
  /// Empties the list.
  void ClearSchedulingList();

 private:
  AppInfoCache() = default;
  ~AppInfoCache() = default;

  bool ReplaceRow(const std::string& rPackageID, const AppInfo* pAppInfo);
  bool CopySchedulingItem(const std::string& rPackageID, SchedulingItem& rItem);

  std::recursive_mutex m_mutexAppList;           ///< guards m_mapAppList and the store
  std::recursive_mutex m_mutexSchedulingList;    ///< guards m_vSchedulingList
  std::map<std::string, AppInfo*> m_mapAppList;  ///< outermost layers; owns nothing
  std::vector<std::string> m_vSchedulingList;    ///< package ids, next first
  AppInfoDB m_AppInfoDB;
};
