// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <FCAPI.h>

#include "desk/client/call.h"
#include "desk/client/connection.h"

using desk::client::Call;
using desk::client::Connection;
using desk::client::Request;

namespace {

class Records final : public FCOrvAppInfoAPI {
 public:
  bool CreateAppInfo(const std::string& rAppInfo) override {
    Call call("FCOrvAppInfoAPI::CreateAppInfo", rAppInfo);
    return Hand(call, "channel.create", rAppInfo);
  }
  bool RemoveAppInfo(const std::string& rAppInfo) override {
    Call call("FCOrvAppInfoAPI::RemoveAppInfo", rAppInfo);
    return Hand(call, "channel.remove", rAppInfo);
  }
  bool UpdateAppInfo(const std::string& rAppInfo) override {
    Call call("FCOrvAppInfoAPI::UpdateAppInfo", rAppInfo);
    return Hand(call, "channel.update", rAppInfo);
  }

 private:
  static bool Hand(Call& call, const char* method, const std::string& record) {
    return call.Run(false, [&] {
      return Connection::Get().Call(method, Request({{"record", record}}))["ok"].asBool();
    });
  }
};

}  // namespace

FCOrvAppInfoAPI* FCAPI::GetOrvAppInfoAPI() {
  Call call("FCAPI::GetOrvAppInfoAPI");
  return call.Run<FCOrvAppInfoAPI*>(nullptr, [] {
    Connection::Get().Require();
    static Records records;
    return &records;
  });
}
