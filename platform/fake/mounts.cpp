// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fake/control/mounts.h"

#include <ps_mount.h>

#include <algorithm>
#include <mutex>
#include <optional>
#include <sstream>

#include "fake/platform_call.h"
#include "fake/resets.h"

namespace fake {
namespace {

constexpr int REFUSED = 1;

struct State {
  std::mutex mutex;
  // Guarded by mutex.
  std::function<int(const Mount&)> mountHandler;
  std::function<int(const std::string&)> umountHandler;
  std::vector<Mount> mounts;
};

State& GetState() {
  static auto* state = new State;
  return *state;
}

std::optional<Mount> Parse(const std::string& command) {
  std::istringstream stream(command);
  std::string flag;
  std::string rest;
  Mount mount;
  if (!(stream >> flag >> mount.options >> mount.image >> mount.directory) || flag != "-o" ||
      stream >> rest) {
    return std::nullopt;
  }
  return mount;
}

int DoMount(const std::string& command) {
  const auto mount = Parse(command);
  if (!mount) {
    return REFUSED;
  }
  State& state = GetState();
  std::unique_lock<std::mutex> lock(state.mutex);
  const auto handler = state.mountHandler;
  lock.unlock();
  const int result = handler ? handler(*mount) : 0;
  lock.lock();
  if (result == 0) {
    state.mounts.push_back(*mount);
  }
  return result;
}

int DoUmount(const std::string& directory) {
  State& state = GetState();
  std::unique_lock<std::mutex> lock(state.mutex);
  const auto handler = state.umountHandler;
  const auto found = std::find_if(state.mounts.begin(), state.mounts.end(),
                                  [&](const Mount& m) { return m.directory == directory; });
  if (found == state.mounts.end()) {
    return REFUSED;
  }
  lock.unlock();
  const int result = handler ? handler(directory) : 0;
  lock.lock();
  if (result == 0) {
    // The last mount on a directory is undone first.
    const auto last = std::find_if(state.mounts.rbegin(), state.mounts.rend(),
                                   [&](const Mount& m) { return m.directory == directory; });
    if (last != state.mounts.rend()) {
      state.mounts.erase(std::next(last).base());
    }
  }
  return result;
}

}  // namespace

void SetMountHandler(std::function<int(const Mount&)> handler) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.mountHandler = std::move(handler);
}

void SetUmountHandler(std::function<int(const std::string& directory)> handler) {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.umountHandler = std::move(handler);
}

std::vector<Mount> Mounts() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return state.mounts;
}

void ResetMounts() {
  State& state = GetState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  state.mountHandler = nullptr;
  state.umountHandler = nullptr;
  state.mounts.clear();
}

}  // namespace fake

namespace {

std::string Cut(const char* text, int length) {
  return text == nullptr || length < 0 ? "" : std::string(text, static_cast<std::size_t>(length));
}

}  // namespace

int PS_Mount(const char* command, int length, int flags, int* result) {
  fake::PlatformCall call("PS_Mount", command, length, flags);
  return call.Run(fake::FAILURE, [&]() -> int {
    *result = fake::DoMount(Cut(command, length));
    return 0;
  });
}

int PS_Umount(const char* path, int length, int flags, int* result) {
  fake::PlatformCall call("PS_Umount", path, length, flags);
  return call.Run(fake::FAILURE, [&]() -> int {
    *result = fake::DoUmount(Cut(path, length));
    return 0;
  });
}
