// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <ps_mount.h>

#include <cstring>
#include <string>

#include "desk/client/call.h"
#include "desk/client/connection.h"

using desk::client::Call;
using desk::client::Connection;
using desk::client::Request;

namespace {

constexpr int NOT_REACHED = -1;

// The text has this length, or ends earlier at a NUL. It need not be terminated.
std::string Text(const char* text, int length) {
  return text == nullptr || length < 0 ? std::string() : std::string(text, strnlen(text, length));
}

// A failure of the call means that the service was not reached. *result is the service's result.
int Ask(Call& call, const char* method, const char* member, const std::string& text, int* result) {
  return call.Run(NOT_REACHED, [&] {
    if (result == nullptr) {
      return NOT_REACHED;
    }
    const Json::Value reply = Connection::Get().Call(method, Request({{member, text}}));
    *result = reply["result"].asInt();
    call.AddOutput(*result);
    return reply["ret"].asInt();
  });
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
