// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "tv/services/packages.h"

#include <filesystem>
#include <utility>
#include <vector>

#include "common/desk_error.h"
#include "common/json.h"
#include "package_manager.h"
#include "tv/services/package_tree.h"

namespace desk::tv {
namespace {

// Unpacking is most of the work, but not all.
constexpr int kUnpacked = 90;
constexpr int kStep = 5;

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

// One order, from the call until its reply. Belongs to the worker's thread once it was posted.
struct Packages::Job {
  std::string type;     // "install", "update" or "uninstall"
  std::string file;     // of an install or update
  std::string package;  // empty until it is known
  std::shared_ptr<Reply> reply;
};

Packages::Packages(Router& router, const DeskPaths& paths, Catalogue& catalogue, PackageHooks hooks)
    : m_router(router),
      m_paths(paths),
      m_catalogue(catalogue),
      m_hooks(std::move(hooks)),
      m_worker("packages") {
  StagingDirectory::RemoveLeftovers(m_paths);
  RemoveRowsWithoutTree(m_paths, m_catalogue);
  m_router.Add("pkg.list", [this](const Json::Value&, const Caller&) {
    Json::Value answer(Json::objectValue);
    answer["packages"] = Dump();
    return answer;
  });
  m_router.Add("pkg.info", [this](const Json::Value& request, const Caller&) {
    return Info(RequireString(request, "package"));
  });
  m_router.AddDeferred("pkg.install", [this](const Json::Value& request, const Caller&,
                                             std::shared_ptr<Reply> reply) {
    auto job = std::make_shared<Job>();
    job->type = OptionalBool(request, "update", false) ? "update" : "install";
    job->file = RequireString(request, "file");
    job->reply = std::move(reply);
    Start(job);
  });
  m_router.AddDeferred("pkg.uninstall", [this](const Json::Value& request, const Caller&,
                                               std::shared_ptr<Reply> reply) {
    auto job = std::make_shared<Job>();
    job->type = "uninstall";
    job->package = RequireString(request, "package");
    job->reply = std::move(reply);
    Start(job);
  });
}

Packages::~Packages() = default;

Json::Value Packages::Dump() const {
  Json::Value list(Json::arrayValue);
  for (const auto& [id, manifest] : m_catalogue.All()) {
    list.append(Info(id)).removeMember("found");
  }
  return list;
}

Json::Value Packages::Info(const std::string& package) const {
  const PackageManifest* manifest = m_catalogue.Find(package);
  Json::Value answer(Json::objectValue);
  if (manifest != nullptr) {
    answer = ToJson(*manifest);
    answer["path"] = m_paths.Package(package);
  }
  answer["found"] = manifest != nullptr;
  return answer;
}

void Packages::Start(const std::shared_ptr<Job>& job) {
  m_worker.Post([this, job] { Run(*job); });
}

void Packages::Run(Job& job) {
  try {
    if (job.type == "uninstall") {
      Uninstall(job);
    } else {
      Install(job);
    }
  } catch (const DeskError& error) {
    const bool missing = error.Code() == DeskError::NotFound;
    Tell(job, "failed", 0,
         missing ? PACKAGE_MANAGER_ERROR_NO_SUCH_PACKAGE : PACKAGE_MANAGER_ERROR_SYSTEM_ERROR);
    job.reply->Fail(error.Code(), error.what());
  } catch (const std::exception& error) {
    Tell(job, "failed", 0, PACKAGE_MANAGER_ERROR_SYSTEM_ERROR);
    job.reply->Fail(DeskError::Failed, error.what());
  }
}

void Packages::Install(Job& job) {
  if (!std::filesystem::exists(job.file)) {
    throw DeskError(DeskError::NotFound, "there is no file " + job.file);
  }
  const PackageFile package = ReadPackage(job.file);
  const PackageManifest& manifest = package.manifest;
  job.package = manifest.id;
  m_worker.OnMainLoop([&] { CheckInstallable(job, manifest); });
  Tell(job, "started", 0, PACKAGE_MANAGER_ERROR_NONE);
  Place(job, package);
  Json::Value answer(Json::objectValue);
  answer["package"] = manifest.id;
  answer["version"] = manifest.version;
  job.reply->Return(answer);
}

void Packages::Place(Job& job, const PackageFile& package) {
  StagingDirectory staging(m_paths);
  UnpackPackage(job.file, package, staging.Tree(), [&, told = -kStep](int percent) mutable {
    m_worker.CheckRunning();
    if (percent >= told + kStep) {
      told = percent;
      Tell(job, "processing", percent * kUnpacked / 100, PACKAGE_MANAGER_ERROR_NONE);
    }
  });
  const std::string place = m_paths.Package(job.package);
  const bool update = job.type == "update";
  if (update) {
    CallBeforeChange(job.package);
    staging.ExchangeResources(place);
  } else {
    staging.MoveTo(place);
  }
  try {
    m_worker.OnMainLoop([&] { Commit(job, package.manifest); });
  } catch (...) {  // whatever it was: without a row the tree must not stay
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
  if (job.type == "install" && installed) {
    throw DeskError(DeskError::Failed, manifest.id + " is installed: use `tv pkg update`");
  }
  if (job.type == "update" && !installed) {
    throw DeskError(DeskError::NotFound, manifest.id + " is not installed: use `tv pkg install`");
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
  Tell(job, "completed", 100, PACKAGE_MANAGER_ERROR_NONE);
}

void Packages::Uninstall(Job& job) {
  PackageManifest before;
  m_worker.OnMainLoop([&] {
    const PackageManifest* row = m_catalogue.Find(job.package);
    if (row == nullptr) {
      throw DeskError(DeskError::NotFound, job.package + " is not installed: see `tv pkg list`");
    }
    before = *row;
  });
  Tell(job, "started", 0, PACKAGE_MANAGER_ERROR_NONE);
  CallBeforeChange(job.package);
  {
    StagingDirectory staging(m_paths);
    staging.TakeAway(m_paths.Package(job.package));
    try {
      m_worker.OnMainLoop([&] { m_catalogue.Remove(job.package); });
    } catch (...) {  // whatever it was: with its row the tree must stay
      staging.GiveBack(m_paths.Package(job.package));
      throw;
    }
    Tell(job, "processing", 50, PACKAGE_MANAGER_ERROR_NONE);
  }
  m_worker.OnMainLoop([&] {
    if (m_hooks.gone) {
      m_hooks.gone(before);
    }
    Tell(job, "completed", 100, PACKAGE_MANAGER_ERROR_NONE);
  });
  Json::Value answer(Json::objectValue);
  answer["package"] = job.package;
  job.reply->Return(answer);
}

void Packages::Tell(const Job& job, const char* state, int progress, int error) {
  Json::Value body(Json::objectValue);
  body["type"] = job.type;
  body["package"] = job.package;
  body["state"] = state;
  body["progress"] = progress;
  body["error"] = error;
  body["kind"] = "wgt";
  m_router.Emit("package", body);
}

}  // namespace desk::tv
