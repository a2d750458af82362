// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fault/daemon.h"

#include <filesystem>
#include <stdexcept>

#include "controller/ORVInstaller.h"
#include "controller/ORVScheduler.h"
#include "fake/control/fake.h"
#include "fault/packages.h"
#include "support/drain.h"
#include "support/files.h"
#include "support/sandbox.h"

/// The daemon's entry point, under its name in this program.
int OrvEnablerMain(int argc, char* argv[]);

namespace fault {
namespace {

namespace fs = std::filesystem;

constexpr std::time_t NOW = 1700000000;  // 2023-11-14T22:13:20Z
constexpr pid_t FIRST_PID = 4711;

void Empty(const std::string& directory) {
  for (const auto& entry : fs::directory_iterator(directory)) {
    fs::remove_all(entry.path());
  }
}

/// The contents of every image.
int MountArchive(const fake::Mount& mount) {
  support::WriteZip(mount.directory + "/orv_app.zip", {{"index.html", "<html></html>"},
                                                       {"js/app.js", "start();"},
                                                       {"metadata/channel.json", "{}"},
                                                       {"metadata/schedule.json", "{}"}});
  return 0;
}

/// A launched service runs until it is terminated.
int RunService(const fake::Launch& launch) {
  static pid_t s_pid = FIRST_PID;
  const std::string service = ".Feed";
  if (launch.app.size() > service.size() &&
      launch.app.compare(launch.app.size() - service.size(), service.size(), service) == 0) {
    fake::SetRunning(launch.app, s_pid++);
  }
  return 0;
}

}  // namespace

const std::string DATA_DIRECTORY = "/opt/usr/apps/com.kalmora.tv.orv-enabler/data/";

void MakeFreshDirectories() {
  if (!support::InSandbox()) {
    throw std::runtime_error("not in a sandbox: these are the machine's own directories");
  }
  for (const char* directory : {"/opt/usr/apps", "/opt/share", "/home/owner"}) {
    Empty(directory);
  }
  fs::remove("/tmp/hbb_ready");
  support::MakeDirectories(DATA_DIRECTORY);
  support::MakeDirectories("/opt/usr/apps/com.kalmora.tv.orv-enabler/shared/data");
  support::WriteFile("/opt/share/orv_ch/replacement_ui_info.json", "{\"appid\":\"layout.App\"}");
}

void MakeTelevision() {
  fake::SetTime(NOW);
  fake::SetWaits(fake::Waits::TimeOut);
  fake::StoreKey("db/orv_channel/custom_ui_type", "");
  fake::StoreKey("db/factory/factory_reset_count", 0);
  fake::StoreKey("db/factory/service_reset_count", 0);
  fake::StoreKey("db/tellahub/reset/apps", 1);
  fake::StoreKey("db/boot/last_service", "");
  fake::StoreKey("memory/menu/network/set_time", 0);
  fake::SetPlatformOperationApp(ORV_OPERATION_CHANNEL_LIST, "platform.ChannelList");
  fake::SetPlatformOperationApp(ORV_OPERATION_EPG, "platform.Guide");
  fake::SetMountHandler(MountArchive);
  fake::SetLaunchHook(RunService);
}

void MakeKnown(const fake::Package& package) {
  MakeKnownWithoutWidgetId(package);
  fake::RemoveWasPackage(package.id);
  fake::AddWasApp({package.id, package.apps.front().id, WidgetID(package)});
}

void MakeKnownWithoutWidgetId(const fake::Package& package) {
  fake::AddPackage(package);
}

bool RunDaemon(const std::function<void()>& body) {
  bool reached = false;
  fake::SetMainLoopBody([&] {
    reached = true;
    body();
  });
  char name[] = "orv-enabler";
  char* argv[] = {name, nullptr};
  OrvEnablerMain(1, argv);
  return reached;
}

void Settle() {
  do {
    fake::DeliverKeyChanges();
    support::Drain(*ORVInstaller::GetInstance());
    support::Drain(*ORVScheduler::GetInstance());
  } while (fake::PendingKeyChanges() > 0);
}

void TellPackageEvent(const std::string& package, package_manager_event_type_e type) {
  fake::FirePackageEvent(package, type);
  Settle();
}

void Install(const fake::Package& package) {
  MakeKnown(package);
  TellPackageEvent(package.id, PACKAGE_MANAGER_EVENT_TYPE_INSTALL);
}

void Update(const fake::Package& package) {
  MakeKnown(package);
  TellPackageEvent(package.id, PACKAGE_MANAGER_EVENT_TYPE_UPDATE);
}

void Uninstall(const std::string& package) {
  fake::RemovePackage(package);
  fake::RemoveWasPackage(package);
  TellPackageEvent(package, PACKAGE_MANAGER_EVENT_TYPE_UNINSTALL);
}

}  // namespace fault
