// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "app_info/app_type/AppTypeLayer.h"

/// The layer of an app that replaces whole screens: makes the app the current one of their app
/// operations, announces it in the member "CustomApp" of the settings key and preloads it. A
/// release leaves settings key and operations as they are.
///
/// With the cold-boot option "background_img" a replacement UI serves the operations until the app
/// is up, for at most 20 seconds. That work runs on another thread, but the caller of Run, Update
/// or Stop waits for it. Run and Stop throw std::logic_error when the settings key does not exist.
class CustomUIExtended final : public AppTypeLayer<CustomUIExtended> {
 public:
  enum SupportedAppType { SUPPORTED_APP_TYPE_CHANNEL_LIST = 0, SUPPORTED_APP_TYPE_EPG = 1 };

  /// With bStarted the key keeps the text of the earlier run.
  void RunOperation(bool bStarted) override;
  /// Acts only when the text or the cold-boot option changed. Leaves the settings key alone.
  void UpdateOperation() override;
  void StopOperation() override;

  /// Appends the screens that the comma-separated text names, in its order, repeats included.
  static void GetEnabledAppTypes(const std::string& rMetadataValue,
                                 std::vector<SupportedAppType>& rTypes);
  /// True when the key was written. See CustomUIAnnouncement::WriteAppInfoVconfKey().
  bool WriteAppInfoVconfKey(bool bClear);
  /// Makes the app the current one of each screen's operation, or gives the operation back. A
  /// failed operation is logged and the next one follows. Callable from any thread.
  static void SetOperationByAppType(const std::vector<SupportedAppType>& rTypes,
                                    const std::string& rAppID, bool bEnable);
  /// Takes the operations over or gives them back. With "background_img" it always takes them over,
  /// and blocks until that is done.
  void SetOperation(const std::vector<SupportedAppType>& rTypes, bool bEnable);
  /// Called by AppPreloadingUtils on the main-loop thread. pUserData is the layer, which may have
  /// been destroyed. Blocks as SetOperation() does when the app has quit.
  static void OnAppStatusChanged(int eStatus, void* pUserData);

 private:
  friend class AppTypeLayer<CustomUIExtended>;
  friend void SetOperationAsynchronously(std::vector<SupportedAppType> vTypes, std::string sAppID,
                                         void* pUserData);

  static const std::map<std::string, SupportedAppType> s_mapAppTypes;
  static const std::map<SupportedAppType, std::string> s_mapOperations;

  // Shared by all layers of this type, so one app's state can end another app's wait. The callback
  // reads the flag and notifies without the mutex: a state that arrives too early is lost.
  static std::condition_variable s_condAppStatus;
  static std::mutex s_mutexAppStatus;
  static std::atomic<bool> s_bWaitingForApp;

  CustomUIExtended(AppInfo* pAppInfo, const std::string& rMetadataValue);
  ~CustomUIExtended();

  std::vector<SupportedAppType> GetAppliedAppTypes() const;
  bool IsUpdateNeeded();
  static void RunSetOperationAsynchronously(const std::vector<SupportedAppType>& rTypes,
                                            const std::string& rAppID, void* pUserData);
  static void WakeWaiter();
  /// After the app has quit: the replacement UI serves the operations until the app is up again.
  static void Rearm(void* pUserData);
};

/// Body of the worker: makes the replacement UI the current app, preloads the real app, waits for
/// it and makes it the current one. pUserData is only passed on to the status callback.
void SetOperationAsynchronously(std::vector<CustomUIExtended::SupportedAppType> vTypes,
                                std::string sAppID, void* pUserData);
