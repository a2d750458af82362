// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "tv/services/fault_service.h"

#include "common/json.h"

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

Json::Value Describe(const Fault& fault) {
  Json::Value entry;
  entry["call"] = fault.call;
  entry["times"] = fault.times;
  entry["after"] = fault.after;
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
    Json::Value reply;
    reply["faults"] = Dump();
    return reply;
  });
}

Json::Value FaultService::Dump() const {
  Json::Value faults(Json::arrayValue);
  for (const Fault& fault : m_table.List()) {
    faults.append(Describe(fault));
  }
  return faults;
}

}  // namespace desk::tv
