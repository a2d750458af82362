// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>
#include <string>

#include "app_info/app_type/AppTypeDecorator.h"
#include "common/Log.h"

/// Factory and release of the app type `Type`, which derives from AppTypeLayer<Type> and makes it a
/// friend. A type that has to clean up before its destruction declares `void CleanUp()`.
template <class Type>
class AppTypeLayer : public AppTypeDecorator {
 public:
  /// Wraps pAppInfo (not null) in a new layer, which owns it from then on; the caller owns the
  /// layer until Release(). When the constructor throws, pAppInfo stays the caller's. `extra` are
  /// further arguments of the type's constructor.
  template <class... Extra>
  static AppInfo* DecorateAppType(AppInfo* pAppInfo, const std::string& rMetadataValue,
                                  Extra... extra) {
    ORV_LOG_INFO("[Info] rMetadataValue : %s", rMetadataValue.c_str());
    auto* const pLayer = new Type(pAppInfo, rMetadataValue, extra...);
    pLayer->m_bConstructed = true;
    return pLayer;
  }

  /// Cleans up, then destroys and frees the layer with everything that it wraps. Accepts null. No
  /// exception leaves it: the next layer outward calls it in its destructor.
  static void Release(AppInfo* pAppInfo) {
    if (pAppInfo == nullptr) {
      return;
    }
    auto* const pLayer = static_cast<Type*>(pAppInfo);
    try {
      pLayer->CleanUp();
    } catch (const std::exception& e) {
      ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
    }
    delete pLayer;
  }

  ReleaseFunction GetReleaseFunction() const final { return &Release; }

 protected:
  using AppTypeDecorator::AppTypeDecorator;
  ~AppTypeLayer() {
    // The constructor of Type has thrown: what is wrapped still belongs to the caller.
    if (!m_bConstructed) {
      m_pAppInfo = nullptr;
    }
  }

  void CleanUp() {}

 private:
  bool m_bConstructed = false;  ///< set once Type's constructor has ended
};
