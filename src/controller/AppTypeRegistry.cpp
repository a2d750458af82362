// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/AppTypeRegistry.h"

#include "app_info/app_type/ChFeederCustom.h"
#include "app_info/app_type/ChFeederStandard.h"
#include "app_info/app_type/CustomUIExtended.h"
#include "app_info/app_type/CustomUIStandard.h"
#include "common/ORVConstants.h"
#include "controller/ORVAppCreator.h"

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

void RegisterAppTypes(ORVAppCreator& rCreator) {
  rCreator.RegisterAppType(APP_TYPE_CH_FEEDER_STANDARD, MakeCreator<ChFeederStandard>());
  rCreator.RegisterAppType(APP_TYPE_CH_FEEDER_CUSTOM,
                           {ChFeederCustom::DecorateAppType, ChFeederCustom::Release});
  rCreator.RegisterAppType(APP_TYPE_CUSTOM_UI_STANDARD, MakeCreator<CustomUIStandard>());
  rCreator.RegisterAppType(APP_TYPE_CUSTOM_UI_EXTENDED, MakeCreator<CustomUIExtended>());
}
