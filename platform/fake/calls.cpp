// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fake/control/calls.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <deque>
#include <iterator>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#include "fake/platform_call.h"
#include "fake/resets.h"
#include "framework/backend.h"

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
  std::atomic<int> lateFaultNames{0};
  std::mutex mutex;
  // Guarded by mutex.
  std::deque<Call> calls;
  std::map<std::string, std::deque<Fault>> faults;
  std::map<std::string, std::deque<Fault>> lateFaults;
  std::map<std::string, std::size_t> failures;
  std::map<std::string, std::size_t> handles;
};

/// Never deleted: threads of the daemon may still call while the process ends. Made at the first
/// use: static initialisers may call before those of this file have run.
State& GetState() {
  static auto* state = new State;
  return *state;
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

class MemorySink : public platform::Sink {
 public:
  void Begin(platform::CallRecord& record, const platform::Value* args,
             std::size_t count) override {
    Call call;
    call.name = record.name;
    call.args.reserve(count);
    std::transform(args, args + count, std::back_inserter(call.args), platform::FormatText);
    call.thread = ThreadName();
    call.threadID = std::this_thread::get_id();
    State& state = GetState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    call.seq = NextSequence();
    record.number = call.seq;
    state.calls.push_back(std::move(call));
  }

  // Call::args has no outputs.
  void AddOutput(platform::CallRecord&, const platform::Value&) override {}

  void End(platform::CallRecord& record, const platform::Value& result) override {
    State& state = GetState();
    const std::lock_guard<std::mutex> lock(state.mutex);
    const auto earlier = [](const Call& call, unsigned long seq) { return call.seq < seq; };
    const auto call =
        std::lower_bound(state.calls.begin(), state.calls.end(), record.number, earlier);
    // The list may have been cleared since Begin().
    if (call != state.calls.end() && call->seq == record.number) {
      call->result = platform::FormatText(result);
    }
  }
};

class MemoryBackend : public platform::Backend {
 public:
  platform::Sink* GetSink() override { return GetState().recording ? &m_sink : nullptr; }
  // The fake's faults always name a result.
  std::optional<int> TakeFault(const char* call, int) override { return fake::TakeFault(call); }
  // Hooks of a test throw on purpose.
  void OnException(const char*, const std::exception&) override { throw; }

 private:
  MemorySink m_sink;
};

[[maybe_unused]] const bool INSTALLED = (framework::SetBackend(&GetBackend()), true);

}  // namespace

platform::Backend& GetBackend() {
  // Never deleted, as the state.
  static auto* backend = new MemoryBackend;
  return *backend;
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

std::optional<int> TakeFault(const char* name) {
  State& state = GetState();
  if (state.faultNames == 0) {
    return std::nullopt;  // without the lock, as nearly every call has no fault
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
  if (fault.times != FOREVER && --fault.times == 0) {
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

void FailAfterwards(const std::string& name, int result, int after) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.lateFaults[name].push_back({result, 1, after});
  state.lateFaultNames = static_cast<int>(state.lateFaults.size());
}

std::optional<int> TakeLateFault(const char* name) {
  State& state = GetState();
  if (state.lateFaultNames == 0) {
    return std::nullopt;
  }
  const std::lock_guard<std::mutex> lock(state.mutex);
  const auto found = state.lateFaults.find(name);
  if (found == state.lateFaults.end() || found->second.empty()) {
    return std::nullopt;
  }
  Fault& fault = found->second.front();
  if (fault.after > 0) {
    --fault.after;
    return std::nullopt;
  }
  const int result = fault.result;
  found->second.pop_front();
  ++state.failures[name];
  return result;
}

void ClearFaults() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.faults.clear();
  state.faultNames = 0;
  state.lateFaults.clear();
  state.lateFaultNames = 0;
}

std::size_t FailureCount(const std::string& name) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  const auto found = state.failures.find(name);
  return found == state.failures.end() ? 0 : found->second;
}

void CountHandle(const char* kind, int change) {
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
