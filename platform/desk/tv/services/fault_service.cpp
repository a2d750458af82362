// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/fault_service.h"

#include "desk/common/json.h"

namespace desk::tv {
namespace {

Fault ReadFault(const Json::Value& request) {
  Fault fault;
  fault.call = RequireString(request, "call");
  if (!request["result"].isNull()) {
    fault.result = OptionalInt(request, "result", 0);
  }
  fault.times = OptionalInt(request, "times", 0);
  fault.after = OptionalInt(request, "after", 0);
  return fault;
}

Json::Value ToJson(const Fault& fault) {
  Json::Value entry =
      JsonObject({{"call", fault.call}, {"times", fault.times}, {"after", fault.after}});
  if (fault.result) {
    entry["result"] = *fault.result;
  }
  return entry;
}

}  // namespace

FaultService::FaultService(Router& router, const DeskPaths& paths) : m_table(paths.Faults(), true) {
  router.Add("fault.add", [this](const Json::Value& request, const Caller&) {
    m_table.Add(ReadFault(request));
    return Json::Value();
  });
  router.Add("fault.clear", [this](const Json::Value&, const Caller&) {
    m_table.Clear();
    return Json::Value();
  });
  router.Add("fault.list", [this](const Json::Value&, const Caller&) {
    return JsonObject({{"faults", Dump()}});
  });
}

Json::Value FaultService::Dump() const {
  Json::Value faults(Json::arrayValue);
  for (const Fault& fault : m_table.List()) {
    faults.append(ToJson(fault));
  }
  return faults;
}

}  // namespace desk::tv
