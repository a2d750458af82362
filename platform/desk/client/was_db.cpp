// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <was_db.h>

#include <cstdlib>
#include <new>
#include <string>

#include "desk/client/call.h"
#include "desk/client/connection.h"
#include "framework/fixed_text.h"

using desk::client::Call;
using desk::client::Connection;
using desk::client::Request;
using framework::FillText;

namespace {

constexpr int FAILED = -1;

int Copy(const Json::Value& entries, was_app_list_item_s** list, int* count) {
  const auto size = static_cast<std::size_t>(entries.size());
  auto* items = static_cast<was_app_list_item_s*>(std::calloc(size, sizeof(was_app_list_item_s)));
  if (items == nullptr && size > 0) {
    throw std::bad_alloc();
  }
  for (Json::ArrayIndex i = 0; i < entries.size(); ++i) {
    FillText(items[i].package_id, entries[i]["package"].asString());
    items[i].kind = entries[i]["kind"].asInt();
    items[i].gone = entries[i]["gone"].isBool() ? (entries[i]["gone"].asBool() ? 1 : 0)
                                                : entries[i]["gone"].asInt();
  }
  *list = items;
  *count = static_cast<int>(size);
  return 0;
}

}  // namespace

int was_get_all_app_list(was_app_list_item_s** list, int* count) {
  Call call("was_get_all_app_list");
  return call.Run(FAILED, [&] {
    if (list == nullptr || count == nullptr) {
      return FAILED;
    }
    const Json::Value reply = Connection::Get().Call("was.all", Request({}));
    const int result = reply["result"].asInt();
    if (result != 0) {
      return result;
    }
    Copy(reply["list"], list, count);
    call.AddOutput(*count);
    return 0;
  });
}

int was_get_app_info_by_tizenid(const char* app_tizen_id, was_app_info_s* info) {
  Call call("was_get_app_info_by_tizenid", app_tizen_id);
  return call.Run(FAILED, [&] {
    if (app_tizen_id == nullptr || info == nullptr) {
      return FAILED;
    }
    const Json::Value reply = Connection::Get().Call("was.find", Request({{"app", app_tizen_id}}));
    const int result = reply["result"].asInt();
    if (result != 0) {
      return result;
    }
    *info = was_app_info_s{};
    FillText(info->widget_id, reply["widget"].asString());
    FillText(info->app_tizen_id, reply["app"].asString());
    call.AddOutput(info->widget_id);
    return 0;
  });
}
