// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <ps_mount.h>

#include <cstring>
#include <string>

#include "client/call.h"
#include "client/connection.h"

using desk::Call;
using desk::Connection;
using desk::Request;

namespace {

constexpr int NOT_REACHED = -1;

// The text need not be terminated: its length counts. It ends early at a NUL, as no command or
// path reaches behind one.
std::string Text(const char* text, int length) {
  return text == nullptr || length < 0 ? std::string() : std::string(text, strnlen(text, length));
}

// An ordered failure is one of the service, which was not reached then.
int Ask(Call& call, const char* method, const char* member, const std::string& text, int* result) {
  if (result == nullptr) {
    return call.Finish(NOT_REACHED);
  }
  const auto fault = call.Fault(NOT_REACHED);
  if (fault.has_value()) {
    return call.Finish(*fault);
  }
  try {
    const Json::Value reply = Connection::Get().Call(method, Request({{member, text}}));
    *result = reply["result"].asInt();
    call.Out(*result);
    return call.Finish(reply["ret"].asInt());
  } catch (const std::exception& e) {
    call.LogFailure(e);
    return call.Finish(NOT_REACHED);
  }
}

}  // namespace

int PS_Mount(const char* command, int length, int flags, int* result) {
  const std::string text = Text(command, length);
  Call call("PS_Mount", text, length, flags);
  return Ask(call, "mount.mount", "command", text, result);
}

int PS_Umount(const char* path, int length, int flags, int* result) {
  const std::string text = Text(path, length);
  Call call("PS_Umount", text, length, flags);
  return Ask(call, "mount.umount", "path", text, result);
}
