// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "app_info/AppInfo.h"
#include "app_info/AppInfoDB.h"
#include "app_info/PinnedAppInfo.h"
#include "app_info/SchedulingItem.h"
#include "common/SingleInstance.h"

/// App id and widget id of a web app to be preloaded.
using PreloadingApp = std::pair<std::string, std::string>;

/// The registry of all records, the store behind it, and the list of service apps that are still to
/// run in the present pass.
///
/// Any thread may call. The locks protect the containers, not the records: a pointer from
/// GetAppInfo() is used unlocked. A thread that runs an operation of a record pins it.
class AppInfoCache {
 public:
  /// See SingleInstance.
  static AppInfoCache* GetInstance();

  /// Enters or replaces a record; a replaced one is not freed. False only when the row could not be
  /// written: the record is in the cache all the same.
  bool AddAppInfo(const std::string& rPackageID, AppInfo* pAppInfo, bool bUpdateDB);
  /// Replaces a record without freeing the old one, and rewrites its row. Result as AddAppInfo().
  bool UpdateAppInfo(const std::string& rPackageID, AppInfo* pAppInfo);
  /// Drops a record and its row and hands the record over to the caller, who calls
  /// WaitUntilUnpinned() before destroying it. Null if there was none.
  AppInfo* RemoveAppInfo(const std::string& rPackageID);
  /// Null if there is none. The record may be destroyed at any time unless it is pinned.
  AppInfo* GetAppInfo(const std::string& rPackageID);
  /// Whether this is a record of the cache. The address is only compared, so the record may have
  /// been destroyed.
  bool HasAppInfo(const AppInfo* pAppInfo);
  /// Appends every package id in ascending order. The app list stays unlocked: a snapshot whose ids
  /// may be gone.
  void GetAppIDList(std::vector<std::string>& rList) const;
  /// Appends the package ids whose record has a non-empty value of that type. The app list stays
  /// unlocked here too.
  void GetAppIDListByType(const std::string& rAppType, std::vector<std::string>& rList);
  /// Appends the web apps of custom user interfaces, in ascending package id.
  void GetPreloadingApps(std::vector<PreloadingApp>& rList);
  /// Forgets all records and deletes the store's file. The records are not freed: this runs before
  /// any exists.
  void ClearCacheAndDB();

  /// GetAppInfo() with a pin on the record; logs like it.
  PinnedAppInfo PinAppInfo(const std::string& rPackageID);
  /// Pins a record that is in the cache. The address is only compared, as in HasAppInfo().
  PinnedAppInfo PinAppInfo(AppInfo* pAppInfo);
  /// Blocks until no other thread pins the record. Called without any lock, before the record is
  /// destroyed; a record that has left the cache gets no new pin. Pins of the calling thread do not
  /// count.
  void WaitUntilUnpinned(const AppInfo* pAppInfo);

  /// Opens the store.
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

  /// Keeps the app list locked over several calls, which leave the scheduling list alone: no record
  /// leaves the map, and no chain changes.
  [[nodiscard]] auto LockAppList() { return std::unique_lock(m_mutexAppList); }

 private:
  friend class SingleInstance<AppInfoCache>;
  friend struct UnpinAppInfo;

  AppInfoCache() = default;
  ~AppInfoCache() = default;

  bool ReplaceRow(const std::string& rPackageID, const AppInfo* pAppInfo);
  bool CopySchedulingItem(const std::string& rPackageID, SchedulingItem& rItem);
  PinnedAppInfo Pin(AppInfo* pAppInfo);
  /// The first record, or the one behind rPackageID, which is set to the id of the result.
  PinnedAppInfo PinNext(std::optional<std::string>& rPackageID);
  void Unpin(const AppInfo* pAppInfo);

  // GetNextSchedulingItem() and ResetSchedulingList() hold m_mutexSchedulingList while they wait
  // for m_mutexAppList. AddSchedulingItem() needs both and takes the app list first, but never
  // waits for one while it holds the other (std::scoped_lock backs off). Nobody else holds one of
  // them while taking the other, so there is no cycle of waiting threads.
  std::recursive_mutex m_mutexAppList;  ///< guards the store and every change of m_mapAppList
  std::recursive_mutex m_mutexSchedulingList;  ///< guards m_vSchedulingList
  // Leaf: held for accesses to the containers only, never across a call or another lock. A change
  // of m_mapAppList takes it besides m_mutexAppList, so either lock is enough to read the map.
  mutable std::mutex m_mutexRecords;                         ///< guards m_mapAppList and m_mapPins
  std::condition_variable m_condPins;                        ///< notified when a pin ends
  std::map<std::string, AppInfo*> m_mapAppList;              ///< outermost layers; owns nothing
  std::multimap<const AppInfo*, std::thread::id> m_mapPins;  ///< record to a thread that pins it
  std::vector<std::string> m_vSchedulingList;                ///< package ids, next first
  AppInfoDB m_AppInfoDB;
};
