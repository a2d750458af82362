// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "tv/services/operations.h"

#include "app_control.h"
#include "common/json.h"

namespace desk::tv {
namespace {

Json::Value Result(const std::string& operation) {
  Json::Value answer(Json::objectValue);
  answer["result"] =
      operation.empty() ? APP_CONTROL_ERROR_INVALID_PARAMETER : APP_CONTROL_ERROR_NONE;
  return answer;
}

}  // namespace

Operations::Operations(Router& router) {
  router.Add("op.get", [this](const Json::Value& request, const Caller&) {
    const std::string operation = RequireString(request, "operation");
    Json::Value answer = Result(operation);
    const auto found = m_apps.find(operation);
    if (found != m_apps.end()) {
      answer["app"] = found->second;
    }
    return answer;
  });
  router.Add("op.set", [this](const Json::Value& request, const Caller&) {
    const std::string operation = RequireString(request, "operation");
    const std::string app = RequireString(request, "app");
    if (!operation.empty()) {
      m_apps[operation] = app;
    }
    return Result(operation);
  });
  router.Add("op.reset", [this](const Json::Value& request, const Caller&) {
    const std::string operation = RequireString(request, "operation");
    m_apps.erase(operation);
    return Result(operation);
  });
  router.Add("op.list", [this](const Json::Value&, const Caller&) {
    Json::Value answer(Json::objectValue);
    answer["operations"] = Dump();
    return answer;
  });
}

Json::Value Operations::Dump() const {
  Json::Value list(Json::arrayValue);
  for (const auto& [operation, app] : m_apps) {
    Json::Value& item = list.append(Json::objectValue);
    item["operation"] = operation;
    item["app"] = app;
  }
  return list;
}

}  // namespace desk::tv
