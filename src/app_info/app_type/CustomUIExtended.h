// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "app_info/app_type/AppTypeDecorator.h"

/// The layer of an app that replaces whole screens: makes the app the current one of their app
/// operations, announces it in the member "CustomApp" of the settings key and preloads it.
///
/// With the cold-boot option "background_img" a replacement UI serves the operations until the app
/// is up, for 20 seconds at most. That work runs on a thread of its own, but the caller of Run,
/// Update or Stop waits for it. Run and Stop throw std::logic_error without the settings key.
class CustomUIExtended final : public AppTypeDecorator {
 public:
  enum SupportedAppType { SUPPORTED_APP_TYPE_CHANNEL_LIST = 0, SUPPORTED_APP_TYPE_EPG = 1 };

  /// Takes ownership of pAppInfo.
  static AppInfo* DecorateAppType(AppInfo* pAppInfo, const std::string& rMetadataValue);
  /// Frees the object with all that it wraps; settings key and operations stay as they are.
  static void Release(AppInfo* pAppInfo);

  /// With bStarted the key keeps the text of the earlier run.
  void RunOperation(bool bStarted) override;
  /// Works only when the text or the cold-boot option changed. Leaves the settings key alone.
  void UpdateOperation() override;
  void StopOperation() override;
  ReleaseFunction GetReleaseFunction() const override;

  /// Appends the screens that the comma-separated text names, in its order, repeats included.
  static void GetEnabledAppTypes(const std::string& rMetadataValue,
                                 std::vector<SupportedAppType>& rTypes);
  /// True when the key was written. See CustomUITypes::WriteAppInfoVconfKey().
  bool WriteAppInfoVconfKey(bool bClear);
  /// Makes the app the current one of each screen's operation or takes it back from there. A failed
  /// operation is logged and the next one follows. Callable from any thread.
  static void SetOperationByAppType(const std::vector<SupportedAppType>& rTypes,
                                    const std::string& rAppID, bool bEnable);
  /// Takes the operations over or hands them back. With "background_img" it takes them over
  /// whatever bEnable says, and blocks until that is done.
  void SetOperation(const std::vector<SupportedAppType>& rTypes, bool bEnable);
  /// Told of the app's state by AppPreloadingUtils, on the main-loop thread. pUserData is the
  /// layer, which may be gone by then. Blocks as SetOperation() does when the app has quit.
  static void OnAppStatusChanged(int eStatus, void* pUserData);

 private:
  friend void SetOperationAsynchronously(std::vector<SupportedAppType> vTypes, std::string sAppID,
                                         void* pUserData);

  static const std::map<std::string, SupportedAppType> s_mapAppTypes;
  static const std::map<SupportedAppType, std::string> s_mapOperations;

  // Shared by all layers of this type, so one app's state can end another one's wait. The callback
  // looks at the flag and notifies without the mutex: a state told too early is lost.
  static std::condition_variable s_condAppStatus;
  static std::mutex s_mutexAppStatus;
  static std::atomic<bool> s_bWaitingForApp;

  CustomUIExtended(AppInfo* pAppInfo, const std::string& rMetadataValue);
  ~CustomUIExtended();

  std::vector<SupportedAppType> GetAppliedAppTypes() const;
  static void RunSetOperationAsynchronously(const std::vector<SupportedAppType>& rTypes,
                                            const std::string& rAppID, void* pUserData);
  static void WakeWaiter();
  /// The app has quit: the replacement UI answers again until the app is back.
  static void Rearm(void* pUserData);
};

/// Body of the worker: puts the replacement UI in place, preloads the app, waits for it and hands
/// the operations to it. pUserData is only passed on to the status callback.
void SetOperationAsynchronously(std::vector<CustomUIExtended::SupportedAppType> vTypes,
                                std::string sAppID, void* pUserData);
