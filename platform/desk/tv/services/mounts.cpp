// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/mounts.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "desk/common/desk_error.h"
#include "desk/common/json.h"
#include "desk/tv/services/image_mount.h"

namespace desk::tv {
namespace {

constexpr int REFUSED = 1;

}  // namespace

Mounts::Mounts(Router& router, const DeskPaths& paths) : m_paths(paths), m_worker("mounts") {
  const auto add = [&](const char* method, const char* member, auto operation) {
    router.AddDeferred(method, [this, member, operation](const Json::Value& request, const Caller&,
                                                         const std::shared_ptr<Reply>& reply) {
      const std::string text = RequireString(request, member);
      m_worker.Post([this, operation, text, reply] { reply->Return((this->*operation)(text)); });
    });
  };
  add("mount.mount", "command", &Mounts::Mount);
  add("mount.umount", "path", &Mounts::Unmount);
  router.Add("mount.check", [this](const Json::Value& request, const Caller&) {
    return Check(RequireString(request, "package"));
  });
}

Mounts::~Mounts() {
  m_worker.Stop();
  UnmountAll();
}

std::string Mounts::Describe() const {
  std::string text = "loop";
  const std::string whyNoLoop = WhyNoLoopNow();
  if (!whyNoLoop.empty()) {
    const std::string whyNoFuse = WhyNoFuse();
    text = whyNoFuse.empty() ? "fuse (" + FuseDrivers() + "): " + whyNoLoop
                             : "none: " + whyNoLoop + "; " + whyNoFuse;
  }
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_lastFailure.empty() ? text : text + "; last failure: " + m_lastFailure;
}

std::string Mounts::WhyNoLoopNow() const {
  const std::string reason = WhyNoLoop();
  const std::lock_guard<std::mutex> lock(m_mutex);
  return reason.empty() ? m_loopTrouble : reason;
}

// A missing or foreign directory has no images.
Json::Value Mounts::Check(const std::string& package) const {
  Json::Value answer(Json::objectValue);
  Json::Value& unmountable = answer["unmountable"] = Json::Value(Json::arrayValue);
  const std::string whyNoLoop = WhyNoLoopNow();
  if (whyNoLoop.empty() || package.find('/') != std::string::npos) {
    return answer;
  }
  const std::string whyNoFuse = WhyNoFuse();
  std::error_code ignored;
  for (const auto& entry :
       std::filesystem::directory_iterator(m_paths.Package(package) + "/res", ignored)) {
    std::string reason = whyNoFuse;
    if (entry.path().extension() != ".tmg" ||
        (reason.empty() && !FuseDriverFor(entry.path().string(), reason).empty())) {
      continue;
    }
    Json::Value& item = unmountable.append(Json::objectValue);
    item["image"] = entry.path().filename().string();
    item["reason"] = whyNoLoop + "; " + reason;
  }
  return answer;
}

Json::Value Mounts::Dump() const {
  Json::Value list(Json::arrayValue);
  const std::lock_guard<std::mutex> lock(m_mutex);
  for (const Mounted& mounted : m_mounted) {
    Json::Value& item = list.append(Json::objectValue);
    item["image"] = mounted.command.image;
    item["directory"] = mounted.command.directory;
    item["options"] = mounted.command.options;
    item["how"] = mounted.how;
  }
  return list;
}

void Mounts::UnmountAll() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  // The latest mount first: it may cover another one.
  for (; !m_mounted.empty(); m_mounted.pop_back()) {
    UnmountDirectory(m_mounted.back().command.directory, m_lastFailure);
  }
}

Json::Value Mounts::Mount(const std::string& text) {
  Outcome outcome;
  try {
    const MountCommand command = ParseMountCommand(text, m_paths);
    outcome = MountImage(command);
    if (outcome.result == 0) {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_mounted.push_back({command, outcome.how});
    }
  } catch (const DeskError& error) {
    outcome.result = REFUSED;
    outcome.reason = error.what();
  }
  return Answer(outcome);
}

Mounts::Outcome Mounts::MountImage(const MountCommand& command) {
  const std::string whyNoLoop = WhyNoLoop();
  if (!whyNoLoop.empty()) {
    return MountByDriver(command, whyNoLoop);
  }
  Outcome outcome;
  outcome.how = "loop";
  outcome.result = LoopMount(command, outcome.reason);
  const bool noDevice = outcome.result == NO_LOOP_DEVICE;
  NoteLoop(noDevice ? outcome.reason : "");
  return noDevice ? MountByDriver(command, outcome.reason) : outcome;
}

void Mounts::NoteLoop(const std::string& trouble) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_loopTrouble = trouble;
}

Mounts::Outcome Mounts::MountByDriver(const MountCommand& command, const std::string& whyNoLoop) {
  Outcome outcome;
  outcome.reason = WhyNoFuse();
  if (outcome.reason.empty()) {
    outcome.how = FuseDriverFor(command.image, outcome.reason);
  }
  if (outcome.how.empty()) {
    outcome.result = REFUSED;
    outcome.reason = whyNoLoop + "; " + outcome.reason;
    return outcome;
  }
  outcome.result = FuseMount(outcome.how, command, outcome.reason);
  return outcome;
}

Json::Value Mounts::Unmount(const std::string& path) {
  Outcome outcome;
  try {
    const std::string directory = ResolveMountPath(path, m_paths);
    outcome.result = UnmountDirectory(directory, outcome.reason);
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto last = std::find_if(m_mounted.rbegin(), m_mounted.rend(), [&](const Mounted& entry) {
      return entry.command.directory == directory;
    });
    if (outcome.result == 0 && last != m_mounted.rend()) {
      m_mounted.erase(std::next(last).base());
    }
  } catch (const DeskError& error) {
    outcome.result = REFUSED;
    outcome.reason = error.what();
  }
  return Answer(outcome);
}

// `ret` tells whether the service was reached, `result` whether it succeeded.
Json::Value Mounts::Answer(const Outcome& outcome) {
  Json::Value answer(Json::objectValue);
  answer["ret"] = 0;
  answer["result"] = outcome.result;
  answer["reason"] = outcome.reason;
  if (outcome.result != 0) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_lastFailure = outcome.reason;
  }
  return answer;
}

}  // namespace desk::tv
