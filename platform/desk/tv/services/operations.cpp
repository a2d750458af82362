// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/operations.h"

#include "app_control.h"
#include "desk/common/json.h"

namespace desk::tv {
namespace {

Json::Value ResultFor(const std::string& operation) {
  return JsonObject({{"result", operation.empty() ? APP_CONTROL_ERROR_INVALID_PARAMETER
                                                  : APP_CONTROL_ERROR_NONE}});
}

}  // namespace

Operations::Operations(Router& router) {
  router.Add("op.get", [this](const Json::Value& request, const Caller&) {
    const std::string operation = RequireString(request, "operation");
    const std::optional<std::string> app = Find(operation);
    Json::Value reply = ResultFor(operation);
    if (app) {
      reply["app"] = *app;
    }
    return reply;
  });
  router.Add("op.set", [this](const Json::Value& request, const Caller&) {
    const std::string operation = RequireString(request, "operation");
    const std::string app = RequireString(request, "app");
    if (!operation.empty()) {
      m_apps[operation] = app;
    }
    return ResultFor(operation);
  });
  router.Add("op.reset", [this](const Json::Value& request, const Caller&) {
    const std::string operation = RequireString(request, "operation");
    m_apps.erase(operation);
    return ResultFor(operation);
  });
  router.Add("op.list", [this](const Json::Value&, const Caller&) {
    return JsonObject({{"operations", Dump()}});
  });
}

std::optional<std::string> Operations::Find(const std::string& operation) const {
  const auto found = m_apps.find(operation);
  return found == m_apps.end() ? std::nullopt : std::make_optional(found->second);
}

Json::Value Operations::Dump() const {
  Json::Value list(Json::arrayValue);
  for (const auto& [operation, app] : m_apps) {
    list.append(JsonObject({{"operation", operation}, {"app", app}}));
  }
  return list;
}

}  // namespace desk::tv
