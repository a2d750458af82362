// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <TVServiceAPI.h>

#include <algorithm>

#include "desk/client/call.h"
#include "desk/client/connection.h"
#include "framework/tv_service_fields.h"

using desk::client::Call;
using desk::client::Connection;
using desk::client::Request;
using framework::PACKAGE_ID_FIELD;
using framework::SERVICE_ID_FIELD;

namespace {

constexpr int FAILED = -1;
constexpr int NOT_FOUND = 0;
constexpr int FOUND = 1;

bool Wants(const TCCriteriaHelper& criteria, int field) {
  const std::vector<int>& fields = criteria.GetFields();
  return std::find(fields.begin(), fields.end(), field) != fields.end();
}

// Fetches the fields of one service; false when the service does not exist.
bool Fill(const TCCriteriaHelper& criteria, std::uint64_t id, TCServiceData& data) {
  const Json::Value service =
      Connection::Get().Call("service.find", Request({{"id", Json::UInt64(id)}}));
  if (!service["found"].asBool()) {
    return false;
  }
  if (Wants(criteria, SERVICE_ID_FIELD)) {
    data.Set(SERVICE_ID_FIELD, id);
  }
  if (Wants(criteria, PACKAGE_ID_FIELD)) {
    data.Set(PACKAGE_ID_FIELD, service["package"].asString());
  }
  return true;
}

class Service final : public TCService {
 public:
  int FindService(const TCCriteriaHelper& rCriteria, TCServiceData& rData, int maxCount) override {
    Call call("TCService::FindService", ServiceId(rCriteria), maxCount);
    return call.Run(FAILED, [&] {
      // A desk finds services by their id only.
      const bool searchable = rCriteria.GetConditions().size() == 1 &&
                              rCriteria.GetConditions().count(SERVICE_ID_FIELD);
      if (!searchable || maxCount < 1) {
        return NOT_FOUND;
      }
      return Fill(rCriteria, ServiceId(rCriteria), rData) ? FOUND : NOT_FOUND;
    });
  }

 private:
  static std::uint64_t ServiceId(const TCCriteriaHelper& criteria) {
    const auto found = criteria.GetConditions().find(SERVICE_ID_FIELD);
    return found == criteria.GetConditions().end() ? 0 : found->second;
  }
};

class Navigation final : public TCServiceNavigation {
 public:
  int GetTVMode(TSTvMode& rMode) override {
    Call call("TCServiceNavigation::GetTVMode");
    return call.Run(FAILED, [&] {
      const Json::Value current = Connection::Get().Call("service.current", Request({}));
      rMode.output = current["output"].asInt();
      rMode.source = current["source"].asInt();
      call.AddOutput(rMode.output);
      call.AddOutput(rMode.source);
      return FOUND;
    });
  }

  int GetCurrentServiceInfo(const TSTvMode& rMode, const TCCriteriaHelper& rCriteria,
                            TCServiceData& rData) override {
    Call call("TCServiceNavigation::GetCurrentServiceInfo", rMode.output, rMode.source);
    return call.Run(FAILED, [&] {
      const Json::Value current = Connection::Get().Call("service.current", Request({}));
      if (!current["found"].asBool()) {
        return NOT_FOUND;
      }
      const std::uint64_t id = current["id"].asUInt64();
      call.AddOutput(id);
      if (Wants(rCriteria, SERVICE_ID_FIELD)) {
        rData.Set(SERVICE_ID_FIELD, id);
      }
      // The current service need not be in the list. Only a listed service has a package.
      if (Wants(rCriteria, PACKAGE_ID_FIELD)) {
        Fill(rCriteria, id, rData);
      }
      return FOUND;
    });
  }
};

// Creates an object of the service for the caller; null on a failure.
template <typename Object, typename Interface>
int Create(Call& call, Interface** target) {
  if (target == nullptr) {
    return call.Return(FAILED);
  }
  *target = nullptr;
  return call.Run(FAILED, [&] {
    Connection::Get().Require();
    *target = new Object;  // the caller's, until TVServiceAPI::Destroy()
    return 0;
  });
}

}  // namespace

int TVServiceAPI::CreateService(TCService** ppService) {
  Call call("TVServiceAPI::CreateService");
  return Create<Service>(call, ppService);
}

int TVServiceAPI::CreateServiceNavigation(int output, int source,
                                          TCServiceNavigation** ppNavigation) {
  Call call("TVServiceAPI::CreateServiceNavigation", output, source);
  return Create<Navigation>(call, ppNavigation);
}

void TVServiceAPI::Destroy(TCService* pService) {
  Call call("TVServiceAPI::Destroy", pService);
  call.RunVoid([&] { delete pService; });
}

void TVServiceAPI::Destroy(TCServiceNavigation* pNavigation) {
  Call call("TVServiceAPI::Destroy", pNavigation);
  call.RunVoid([&] { delete pNavigation; });
}
