// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fake/control/channels.h"

#include <FCAPI.h>
#include <json/json.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>

#include "fake/platform_call.h"
#include "fake/resets.h"

namespace fake {
namespace {

struct Channel {
  std::string package;
  std::string record;
};

struct State {
  std::atomic<bool> present{true};
  std::mutex mutex;
  // Guarded by mutex.
  std::vector<ChannelRequest> requests;
  std::vector<Channel> channels;
};

State& GetState() {
  static auto* state = new State;
  return *state;
}

/// Nothing when the record is not a JSON object with a package id.
std::optional<std::string> PackageOf(const std::string& record) {
  Json::Value value;
  std::string errors;
  std::istringstream stream(record);
  if (!Json::parseFromStream(Json::CharReaderBuilder(), stream, &value, &errors) ||
      !value.isObject() || !value["pkg_id"].isString()) {
    return std::nullopt;
  }
  return value["pkg_id"].asString();
}

/// The caller holds the mutex.
std::vector<Channel>::iterator Find(State& state, const std::string& package) {
  return std::find_if(state.channels.begin(), state.channels.end(),
                      [&](const Channel& channel) { return channel.package == package; });
}

void Put(State& state, const std::string& package, const std::string& record) {
  const auto found = Find(state, package);
  if (found == state.channels.end()) {
    state.channels.push_back({package, record});
  } else {
    found->record = record;
  }
}

bool Create(State& state, const std::string& package, const std::string& record) {
  Put(state, package, record);
  return true;
}

bool Update(State& state, const std::string& package, const std::string& record) {
  const bool known = Find(state, package) != state.channels.end();
  if (known) {
    Put(state, package, record);
  }
  return known;
}

bool Remove(State& state, const std::string& package, const std::string&) {
  const auto found = Find(state, package);
  if (found == state.channels.end()) {
    return false;
  }
  state.channels.erase(found);
  return true;
}

using Change = bool (*)(State&, const std::string&, const std::string&);

bool Request(const char* name, const std::string& record, Change change) {
  constexpr std::size_t CLASS_LENGTH = sizeof("FCOrvAppInfoAPI::") - 1;
  PlatformCall call(name, record);
  State& state = GetState();
  const auto package = PackageOf(record);
  const std::lock_guard<std::mutex> lock(state.mutex);
  const bool accepted = call.Run(false, [&] { return package && change(state, *package, record); });
  state.requests.push_back({name + CLASS_LENGTH, record, accepted});
  return accepted;
}

class Registry final : public FCOrvAppInfoAPI {
 public:
  bool CreateAppInfo(const std::string& rAppInfo) override {
    return Request("FCOrvAppInfoAPI::CreateAppInfo", rAppInfo, Create);
  }
  bool RemoveAppInfo(const std::string& rAppInfo) override {
    return Request("FCOrvAppInfoAPI::RemoveAppInfo", rAppInfo, Remove);
  }
  bool UpdateAppInfo(const std::string& rAppInfo) override {
    return Request("FCOrvAppInfoAPI::UpdateAppInfo", rAppInfo, Update);
  }
};

}  // namespace

std::vector<ChannelRequest> ChannelRequests() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return state.requests;
}

void ClearChannelRequests() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.requests.clear();
}

std::vector<std::string> Channels() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  std::vector<std::string> records;
  for (const Channel& channel : state.channels) {
    records.push_back(channel.record);
  }
  return records;
}

void AddChannel(const std::string& record) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  Put(state, PackageOf(record).value_or(""), record);
}

void SetChannelFrameworkPresent(bool present) {
  GetState().present = present;
}

void ResetChannels() {
  State& state = GetState();
  state.present = true;
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.requests.clear();
  state.channels.clear();
}

}  // namespace fake

FCOrvAppInfoAPI* FCAPI::GetOrvAppInfoAPI() {
  static fake::Registry registry;
  fake::PlatformCall call("FCAPI::GetOrvAppInfoAPI");
  return call.Run<FCOrvAppInfoAPI*>(nullptr,
                                    [] { return fake::GetState().present ? &registry : nullptr; });
}
