// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/packages.h"

#include <filesystem>
#include <utility>
#include <vector>

#include "desk/common/desk_error.h"
#include "desk/common/json.h"
#include "desk/tv/services/package_tree.h"
#include "package_manager.h"

namespace desk::tv {
namespace {

// Progress when everything is unpacked, and between two events, in percent.
constexpr int UNPACKED = 90;
constexpr int PROGRESS_STEP = 5;

void RemoveRowsWithoutTree(const DeskPaths& paths, Catalogue& catalogue) {
  std::vector<std::string> lost;
  for (const auto& [id, manifest] : catalogue.All()) {
    if (!std::filesystem::exists(paths.Package(id) + "/res/wgt")) {
      lost.push_back(id);
    }
  }
  for (const std::string& id : lost) {
    catalogue.Remove(id);
  }
}

}  // namespace

// One call, until its reply. Used by the worker's thread once it was posted.
struct Packages::Job {
  JobKind kind = JobKind::Install;
  std::string file;     // of an install or update
  std::string package;  // of an install or update: empty until the archive was read
  std::string version;  // of an install or update: the same
  std::shared_ptr<Reply> reply;
};

const char* Packages::Name(JobKind kind) {
  switch (kind) {
    case JobKind::Install:
      return "install";
    case JobKind::Update:
      return "update";
    case JobKind::Uninstall:
      break;
  }
  return "uninstall";
}

const char* Packages::Name(JobState state) {
  switch (state) {
    case JobState::Started:
      return "started";
    case JobState::Processing:
      return "processing";
    case JobState::Completed:
      return "completed";
    case JobState::Failed:
      break;
  }
  return "failed";
}

Packages::Packages(Router& router, const DeskPaths& paths, Catalogue& catalogue, PackageHooks hooks)
    : m_router(router),
      m_paths(paths),
      m_catalogue(catalogue),
      m_hooks(std::move(hooks)),
      m_worker("packages") {
  StagingDirectory::RemoveLeftovers(m_paths);
  RemoveRowsWithoutTree(m_paths, m_catalogue);
  AddMethods(router);
}

Packages::~Packages() = default;

void Packages::AddMethods(Router& router) {
  router.Add("pkg.list", [this](const Json::Value&, const Caller&) {
    return JsonObject({{"packages", Dump()}});
  });
  router.Add("pkg.info", [this](const Json::Value& request, const Caller&) {
    const PackageManifest* manifest = m_catalogue.Find(RequireString(request, "package"));
    Json::Value reply = manifest == nullptr ? Json::Value(Json::objectValue) : Encode(*manifest);
    reply["found"] = manifest != nullptr;
    return reply;
  });
  router.AddDeferred("pkg.install", [this](const Json::Value& request, const Caller&,
                                           std::shared_ptr<Reply> reply) {
    Job job;
    job.kind = OptionalBool(request, "update", false) ? JobKind::Update : JobKind::Install;
    job.file = RequireString(request, "file");
    job.reply = std::move(reply);
    Post(std::move(job));
  });
  router.AddDeferred("pkg.uninstall", [this](const Json::Value& request, const Caller&,
                                             std::shared_ptr<Reply> reply) {
    Job job;
    job.kind = JobKind::Uninstall;
    job.package = RequireString(request, "package");
    job.reply = std::move(reply);
    Post(std::move(job));
  });
}

Json::Value Packages::Dump() const {
  Json::Value list(Json::arrayValue);
  for (const auto& [id, manifest] : m_catalogue.All()) {
    list.append(Encode(manifest));
  }
  return list;
}

Json::Value Packages::Encode(const PackageManifest& manifest) const {
  Json::Value info = ToJson(manifest);
  info["path"] = m_paths.Package(manifest.id);
  return info;
}

void Packages::Post(Job job) {
  m_worker.Post([this, job = std::move(job)]() mutable { Run(job); });
}

void Packages::Run(Job& job) {
  try {
    if (job.kind == JobKind::Uninstall) {
      Uninstall(job);
      job.reply->Return(JsonObject({{"package", job.package}}));
    } else {
      Install(job);
      job.reply->Return(JsonObject({{"package", job.package}, {"version", job.version}}));
    }
  } catch (const DeskError& error) {
    const bool missing = error.Code() == DeskError::NOT_FOUND;
    SendEvent(job, JobState::Failed, 0,
              missing ? PACKAGE_MANAGER_ERROR_NO_SUCH_PACKAGE : PACKAGE_MANAGER_ERROR_SYSTEM_ERROR);
    job.reply->Fail(error.Code(), error.what());
  } catch (const std::exception& error) {
    SendEvent(job, JobState::Failed, 0, PACKAGE_MANAGER_ERROR_SYSTEM_ERROR);
    job.reply->Fail(DeskError::FAILED, error.what());
  }
}

void Packages::Install(Job& job) {
  if (!std::filesystem::exists(job.file)) {
    throw DeskError(DeskError::NOT_FOUND, "there is no file " + job.file);
  }
  const PackageFile package = ReadPackage(job.file);
  const PackageManifest& manifest = package.manifest;
  job.package = manifest.id;
  job.version = manifest.version;
  m_worker.OnMainLoop([&] { CheckInstallable(job, manifest); });
  SendEvent(job, JobState::Started, 0);
  Place(job, package);
}

void Packages::Place(Job& job, const PackageFile& package) {
  StagingDirectory staging(m_paths);
  UnpackPackage(job.file, package, staging.Tree(), [&, sent = -PROGRESS_STEP](int percent) mutable {
    m_worker.CheckRunning();
    if (percent >= sent + PROGRESS_STEP) {
      sent = percent;
      SendEvent(job, JobState::Processing, percent * UNPACKED / 100);
    }
  });
  const std::string place = m_paths.Package(job.package);
  const bool update = job.kind == JobKind::Update;
  if (update) {
    CallBeforeChange(job.package);
    staging.ExchangeResources(place);
  } else {
    staging.MoveTo(place);
  }
  try {
    m_worker.OnMainLoop([&] { Commit(job, package.manifest); });
  } catch (...) {  // any failure: a tree without a row must not stay
    update ? staging.ExchangeResources(place) : staging.TakeAway(place);
    throw;
  }
}

void Packages::CallBeforeChange(const std::string& package) {
  m_worker.OnMainLoop([&] {
    if (m_hooks.beforeChange) {
      m_hooks.beforeChange(package);
    }
  });
}

void Packages::CheckInstallable(const Job& job, const PackageManifest& manifest) const {
  const bool installed = m_catalogue.Find(manifest.id) != nullptr;
  if (job.kind == JobKind::Install && installed) {
    throw DeskError(DeskError::FAILED, manifest.id + " is installed: use `tv pkg update`");
  }
  if (job.kind == JobKind::Update && !installed) {
    throw DeskError(DeskError::NOT_FOUND, manifest.id + " is not installed: use `tv pkg install`");
  }
}

// On the main loop.
void Packages::Commit(const Job& job, const PackageManifest& manifest) {
  const PackageManifest* row = m_catalogue.Find(manifest.id);
  const PackageManifest before = row == nullptr ? PackageManifest() : *row;
  m_catalogue.Put(manifest);
  if (m_hooks.present) {
    m_hooks.present(manifest, row == nullptr ? nullptr : &before);
  }
  SendEvent(job, JobState::Completed, 100);
}

void Packages::Uninstall(Job& job) {
  PackageManifest before;
  m_worker.OnMainLoop([&] {
    const PackageManifest* row = m_catalogue.Find(job.package);
    if (row == nullptr) {
      throw DeskError(DeskError::NOT_FOUND, job.package + " is not installed: see `tv pkg list`");
    }
    before = *row;
  });
  SendEvent(job, JobState::Started, 0);
  CallBeforeChange(job.package);
  {
    StagingDirectory staging(m_paths);
    staging.TakeAway(m_paths.Package(job.package));
    try {
      m_worker.OnMainLoop([&] { m_catalogue.Remove(job.package); });
    } catch (...) {  // any failure: a package with a row needs its tree
      staging.GiveBack(m_paths.Package(job.package));
      throw;
    }
    SendEvent(job, JobState::Processing, 50);
  }
  m_worker.OnMainLoop([&] {
    if (m_hooks.removed) {
      m_hooks.removed(before);
    }
    SendEvent(job, JobState::Completed, 100);
  });
}

void Packages::SendEvent(const Job& job, JobState state, int progress, int error) {
  m_router.Emit("package", JsonObject({{"type", Name(job.kind)},
                                       {"package", job.package},
                                       {"state", Name(state)},
                                       {"progress", progress},
                                       {"error", error},
                                       {"kind", "wgt"}}));
}

}  // namespace desk::tv
