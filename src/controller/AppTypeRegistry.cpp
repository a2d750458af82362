// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/AppTypeRegistry.h"

#include "app_info/app_type/ChFeederCustom.h"
#include "app_info/app_type/ChFeederStandard.h"
#include "app_info/app_type/CustomUIExtended.h"
#include "app_info/app_type/CustomUIStandard.h"
#include "common/ORVConstants.h"

namespace {

/// A type whose factory asks for no callback.
template <class Type>
AppTypeCreator MakeCreator() {
  return {[](AppInfo* pAppInfo, const std::string& rValue, RequestEventCallback) {
            return Type::DecorateAppType(pAppInfo, rValue);
          },
          Type::Release};
}

}  // namespace

AppTypeTable GetAppTypes() {
  return {
      {APP_TYPE_CH_FEEDER_STANDARD, MakeCreator<ChFeederStandard>()},
      {APP_TYPE_CH_FEEDER_CUSTOM, {ChFeederCustom::DecorateAppType, ChFeederCustom::Release}},
      {APP_TYPE_CUSTOM_UI_STANDARD, MakeCreator<CustomUIStandard>()},
      {APP_TYPE_CUSTOM_UI_EXTENDED, MakeCreator<CustomUIExtended>()},
  };
}
