// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fake/control/calls.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <map>
#include <mutex>

#include "fake/handles.h"
#include "fake/recorder.h"
#include "fake/resets.h"
#include "framework/hooks.h"

namespace fake {
namespace {

struct Fault {
  int result = 0;
  int times = 0;
  int after = 0;
};

struct State {
  std::atomic<bool> recording{true};
  std::atomic<unsigned long> sequence{0};
  std::atomic<int> faultNames{0};
  std::mutex mutex;
  // Guarded by mutex.
  std::deque<Call> calls;
  std::map<std::string, std::deque<Fault>> faults;
  std::map<std::string, std::size_t> failures;
  std::map<std::string, std::size_t> handles;
};

/// Never deleted: threads of the daemon may still call while the process ends, and static
/// initialisers call before this file's own would run.
State& GetState() {
  static auto* s_state = new State;
  return *s_state;
}

std::vector<Call> CallsWith(const std::vector<std::string>& names) {
  std::vector<Call> calls = Calls();
  const auto other = [&names](const Call& call) {
    return std::find(names.begin(), names.end(), call.name) == names.end();
  };
  calls.erase(std::remove_if(calls.begin(), calls.end(), other), calls.end());
  return calls;
}

std::vector<std::string> ToTexts(const std::vector<Call>& calls) {
  std::vector<std::string> texts;
  texts.reserve(calls.size());
  for (const Call& call : calls) {
    texts.push_back(ToText(call));
  }
  return texts;
}

void ResetCounts() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.handles.clear();
  state.failures.clear();
}

// The framework's calls are recorded and failed as all others.
unsigned long BeginFrameworkCall(const char* call, const std::vector<std::string>& args) {
  return BeginCall(call, args);
}

bool FailFrameworkCall(const char* call, int* result) {
  const std::optional<int> fault = TakeFault(call);
  *result = fault.value_or(*result);
  return fault.has_value();
}

constexpr framework::Hooks kHooks = {BeginFrameworkCall, FailFrameworkCall, EndCall};

[[maybe_unused]] const bool g_hooked = (framework::SetHooks(&kHooks), true);

}  // namespace

bool IsRecording() {
  return GetState().recording;
}

void SetRecording(bool enabled) {
  GetState().recording = enabled;
}

unsigned long NextSequence() {
  return ++GetState().sequence;
}

std::string ThreadName() {
  char name[16] = {};
  pthread_getname_np(pthread_self(), name, sizeof(name));
  return name;
}

unsigned long BeginCall(const std::string& name, std::vector<std::string> args) {
  State& state = GetState();
  if (!state.recording) {
    return 0;
  }
  Call call;
  call.name = name;
  call.args = std::move(args);
  call.thread = ThreadName();
  call.threadID = std::this_thread::get_id();
  const std::lock_guard<std::mutex> lock(state.mutex);
  call.seq = NextSequence();
  state.calls.push_back(call);
  return call.seq;
}

void EndCall(unsigned long number, const std::string& result) {
  if (number == 0) {
    return;
  }
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  const auto earlier = [](const Call& call, unsigned long seq) { return call.seq < seq; };
  const auto call = std::lower_bound(state.calls.begin(), state.calls.end(), number, earlier);
  // The list may have been cleared meanwhile.
  if (call != state.calls.end() && call->seq == number) {
    call->result = result;
  }
}

std::optional<int> TakeFault(const std::string& name) {
  State& state = GetState();
  if (state.faultNames == 0) {
    return std::nullopt;
  }
  const std::lock_guard<std::mutex> lock(state.mutex);
  const auto found = state.faults.find(name);
  if (found == state.faults.end() || found->second.empty()) {
    return std::nullopt;
  }
  Fault& fault = found->second.front();
  if (fault.after > 0) {
    --fault.after;
    return std::nullopt;
  }
  const int result = fault.result;
  if (fault.times != kForever && --fault.times == 0) {
    found->second.pop_front();
  }
  ++state.failures[name];
  return result;
}

std::vector<Call> Calls() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return {state.calls.begin(), state.calls.end()};
}

std::vector<Call> Calls(const std::string& name) {
  return CallsWith({name});
}

std::size_t CallCount(const std::string& name) {
  return Calls(name).size();
}

std::vector<std::string> CallNames() {
  std::vector<std::string> names;
  for (const Call& call : Calls()) {
    names.push_back(call.name);
  }
  return names;
}

std::string ToText(const Call& call) {
  std::string text = call.name + "(";
  for (std::size_t i = 0; i < call.args.size(); ++i) {
    text += (i == 0 ? "" : ", ") + call.args[i];
  }
  return text + ") = " + call.result;
}

std::vector<std::string> CallTexts() {
  return ToTexts(Calls());
}

std::vector<std::string> CallTexts(const std::vector<std::string>& names) {
  return ToTexts(CallsWith(names));
}

void ClearCalls() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.calls.clear();
}

void Fail(const std::string& name, int result, int times, int after) {
  if (times == 0) {
    return;
  }
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.faults[name].push_back({result, times, after});
  state.faultNames = static_cast<int>(state.faults.size());
}

void ClearFaults() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.faults.clear();
  state.faultNames = 0;
}

std::size_t FailureCount(const std::string& name) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  const auto found = state.failures.find(name);
  return found == state.failures.end() ? 0 : found->second;
}

void CountHandle(const std::string& kind, int change) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.handles[kind] += static_cast<std::size_t>(change);
}

std::size_t OpenHandles(const std::string& kind) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  const auto found = state.handles.find(kind);
  return found == state.handles.end() ? 0 : found->second;
}

void Reset() {
  ClearFaults();
  ClearCalls();
  SetRecording(true);
  ResetApps();
  ResetBundles();
  ResetChannels();
  ResetClock();
  ResetKeys();
  ResetLaunches();
  ResetLog();
  ResetMainLoop();
  ResetMounts();
  ResetOperations();
  ResetPackages();
  ResetPorts();
  ResetProxy();
  ResetTimers();
  ResetTvService();
  ResetWas();
  ResetCounts();
}

}  // namespace fake
