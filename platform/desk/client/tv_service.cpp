// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <TVServiceAPI.h>

#include <algorithm>

#include "client/call.h"
#include "client/connection.h"

using desk::Call;
using desk::Connection;
using desk::Request;

namespace {

// Field numbers of the TV service that a desk fills.
constexpr int FIELD_SERVICE_ID = 12;
constexpr int FIELD_PACKAGE_ID = 179;

constexpr int FAILED = -1;
constexpr int NOT_FOUND = 0;
constexpr int FOUND = 1;

bool Wants(const TCCriteriaHelper& criteria, int field) {
  const std::vector<int>& fields = criteria.GetFields();
  return std::find(fields.begin(), fields.end(), field) != fields.end();
}

// Brings the wanted fields of one service; false when there is no such service.
bool Fill(const TCCriteriaHelper& criteria, std::uint64_t id, TCServiceData& data) {
  const Json::Value service =
      Connection::Get().Call("service.find", Request({{"id", Json::UInt64(id)}}));
  if (!service["found"].asBool()) {
    return false;
  }
  if (Wants(criteria, FIELD_SERVICE_ID)) {
    data.Set(FIELD_SERVICE_ID, id);
  }
  if (Wants(criteria, FIELD_PACKAGE_ID)) {
    data.Set(FIELD_PACKAGE_ID, service["package"].asString());
  }
  return true;
}

class Service final : public TCService {
 public:
  int FindService(const TCCriteriaHelper& rCriteria, TCServiceData& rData, int maxCount) override {
    Call call("TCService::FindService", ServiceId(rCriteria), maxCount);
    return call.Run(FAILED, [&] {
      // Services of a desk are told apart by their id alone.
      const bool searchable = rCriteria.GetConditions().size() == 1 &&
                              rCriteria.GetConditions().count(FIELD_SERVICE_ID);
      if (!searchable || maxCount < 1) {
        return NOT_FOUND;
      }
      return Fill(rCriteria, ServiceId(rCriteria), rData) ? FOUND : NOT_FOUND;
    });
  }

 private:
  static std::uint64_t ServiceId(const TCCriteriaHelper& criteria) {
    const auto found = criteria.GetConditions().find(FIELD_SERVICE_ID);
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
      call.Out(rMode.output);
      call.Out(rMode.source);
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
      call.Out(id);
      if (Wants(rCriteria, FIELD_SERVICE_ID)) {
        rData.Set(FIELD_SERVICE_ID, id);
      }
      // The current service may be one that no list holds; it has a package only when one does.
      if (Wants(rCriteria, FIELD_PACKAGE_ID)) {
        Fill(rCriteria, id, rData);
      }
      return FOUND;
    });
  }
};

// Gives the caller a new object of the service; null on a failure.
template <typename Object, typename Interface>
int Create(Call& call, Interface** target) {
  if (target == nullptr) {
    return call.Finish(FAILED);
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
