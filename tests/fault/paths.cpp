// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "fault/paths.h"

#include <algorithm>
#include <stdexcept>

#include "controller/ORVScheduler.h"
#include "fake/control/fake.h"
#include "fault/daemon.h"
#include "fault/packages.h"

namespace fault {
namespace {

constexpr unsigned int VALIDATION_MS = 1800 * 1000;
constexpr unsigned int PRELOAD_RETRY_MS = 5 * 1000;
constexpr unsigned int LOW_MEMORY_CHECK_MS = 2 * 1000;
constexpr unsigned int BOOST_TIMER_EVENT = 1004;
constexpr int LAUNCH_REJECTED = static_cast<int>(0xFEF00023);
constexpr int TUNED = 103;
constexpr std::uint64_t FEEDER_SERVICE = 7;
constexpr std::uint64_t OTHER_SERVICE = 8;

const char NETWORK_TIME_KEY[] = "memory/menu/network/set_time";
const char GUIDE_STATUS_KEY[] = "rtc/memory/WebApp/guidepacka.App";

std::vector<fake::Package> OfEveryKind() {
  return {PackagedFeeder(), ServiceFeeder("servicefda", "extended"), ServiceFeeder("servicefdb"),
          Banner(), Guide()};
}

void MakeServices() {
  fake::AddService(fake::MakeService(FEEDER_SERVICE, PackagedFeeder().id));
  fake::AddService(fake::MakeService(OTHER_SERVICE, ""));
}

void Tune(std::uint64_t service) {
  fake::FireTvSignalOnThread(TUNED, fake::Payload(service));
}

void Signal(int signal) {
  fake::FireTvSignalOnThread(signal);
  Settle();
}

void SetKey(const std::string& key, const std::string& value) {
  fake::SetKey(key, value);
  Settle();
}
void SetKey(const std::string& key, int value) {
  fake::SetKey(key, value);
  Settle();
}

void Fire(unsigned int timerMs) {
  fake::FireTimersOf(timerMs);
  Settle();
}

void Tick() {
  // A race for the first start may have left an older timer; this one is current.
  fake::FireTimer(g_nSchedulerTimerID);
  Settle();
}

void Say(const std::vector<std::pair<std::string, std::string>>& message) {
  fake::Incoming incoming;
  incoming.port = "orv_scheduler_command_port";
  incoming.app = "servicefda.Feed";
  incoming.replyPort = "answers";
  incoming.message = fake::Strings(message);
  fake::SendMessage(incoming);
  Settle();
}

/// No start has both network time and stored service feeders, except in a race; see below.
std::vector<Path> Starts() {
  const auto setNetworkTime = [] { fake::StoreKey(NETWORK_TIME_KEY, 1); };
  return {
      {"StartWithStoredApps", OfEveryKind(), {}, {}, {}},
      {"StartWithAnEmptyStore", {}, setNetworkTime, {}, {}},
      {"StartAfterAFactoryReset",
       OfEveryKind(),
       [] { fake::StoreKey("db/factory/factory_reset_count", 1); },
       {},
       {}},
      {"StartWithNetworkTime", {PackagedFeeder(), Guide()}, setNetworkTime, {}, {}},
  };
}

std::vector<Path> Installs() {
  return {
      {"InstallOfAPackagedFeeder", {}, {}, {}, [] { Install(PackagedFeeder()); }},
      {"InstallOfAWebFeeder", {}, {}, {}, [] { Install(WebFeeder("webfeederp")); }},
      {"InstallOfAServiceFeeder", {}, {}, {}, [] { Install(ServiceFeeder("servicefda")); }},
      {"InstallOfAPackagedServiceFeeder",
       {},
       {},
       {},
       [] { Install(ServiceFeeder("servicefda", "extended")); }},
      {"InstallOfABanner", {}, {}, {}, [] { Install(Banner()); }},
      {"InstallOfAGuide", {}, {}, {}, [] { Install(Guide()); }},
      {"InstallOfABridgedGuide", {}, {}, {}, [] { Install(BridgedGuide()); }},
      {"InstallBeforeTheWidgetIdIsKnown",
       {},
       {},
       {},
       [] {
         MakeKnownWithoutWidgetId(WebFeeder("webfeederp"));
         TellPackageEvent("webfeederp", PACKAGE_MANAGER_EVENT_TYPE_INSTALL);
         SetKey("memory/was/app_install", "webfeederp-Widget");
       }},
      {"InstallOfAnOrdinaryPackage", {}, {}, {}, [] { Install(Ordinary(Banner())); }},
  };
}

std::vector<Path> Updates() {
  return {
      {"UpdateOfAPackagedFeeder", {PackagedFeeder()}, {}, {}, [] { Update(PackagedFeeder()); }},
      {"UpdateOfAServiceFeeder",
       {ServiceFeeder("servicefda")},
       {},
       {},
       [] { Update(ServiceFeeder("servicefda", "extended")); }},
      {"UpdateOfABanner", {Banner("info")}, {}, {}, [] { Update(Banner("channel")); }},
      {"UpdateOfAGuide", {Guide("epg")}, {}, {}, [] { Update(Guide("channel_list")); }},
      {"UpdateThatTradesTypes",
       {With(Banner(), {{"orv_type/ch_feeder_standard", "standard"}})},
       {},
       {},
       [] {
         fake::Package package = Ordinary(Banner());
         Update(With(package, {{"orv_type/ch_feeder_standard", "standard"},
                               {"orv_type/custom_ui_extended", "epg"}}));
       }},
      {"UpdateToAnOrdinaryPackage", {Banner()}, {}, {}, [] { Update(Ordinary(Banner())); }},
  };
}

std::vector<Path> Removals() {
  return {
      {"UninstallOfAPackagedFeeder",
       {PackagedFeeder()},
       {},
       {},
       [] { Uninstall(PackagedFeeder().id); }},
      {"UninstallOfARunningServiceFeeder",
       {ServiceFeeder("servicefda", "extended")},
       {},
       {},
       [] { Uninstall("servicefda"); }},
      {"UninstallOfABanner", {Banner()}, {}, {}, [] { Uninstall(Banner().id); }},
      {"UninstallOfAGuide", {Guide()}, {}, {}, [] { Uninstall(Guide().id); }},
      {"ResetOfAllApps", OfEveryKind(), {}, {}, [] { SetKey("db/tellahub/reset/apps", 0); }, false},
      {"Validation",
       OfEveryKind(),
       {},
       [] {
         fake::RemoveWasPackage(PackagedFeeder().id);
         fake::RemoveWasPackage(Guide().id);
         fake::AddWasApp({Guide().id, "guidepacka.App", WidgetID(Guide()), 2, 1});
       },
       [] { Fire(VALIDATION_MS); }},
  };
}

std::vector<Path> Signals() {
  std::vector<Path> paths = {
      {"TuneToABoostingChannel",
       {PackagedFeeder()},
       {},
       MakeServices,
       [] { Tune(FEEDER_SERVICE); }},
      {"TuneToAnotherChannel",
       {PackagedFeeder()},
       {},
       [] {
         MakeServices();
         Tune(FEEDER_SERVICE);
       },
       [] { Tune(OTHER_SERVICE); }},
      {"Activation", OfEveryKind(), {}, {}, [] { Signal(75); }},
      {"VirtualServices",
       OfEveryKind(),
       {},
       {},
       [] {
         fake::FireProxySignal(90014);
         Settle();
       },
       false},
  };
  for (const auto& [name, signal] :
       std::vector<std::pair<std::string, int>>{{"SignalTwentyFive", 25},
                                                {"SignalOneHundredThirtyFive", 135},
                                                {"SignalOneHundredSeventy", 170},
                                                {"SignalTwoThousandFiveHundredSixty", 2560}}) {
    const int number = signal;
    paths.push_back({name, {PackagedFeeder()}, {}, {}, [number] { Signal(number); }});
  }
  return paths;
}

std::vector<Path> Boosts() {
  const auto bootOnTheFeeder = [] {
    fake::StoreKey("db/boot/last_service", "vc-service");
    MakeServices();
    fake::SetCurrentService(fake::MakeService(FEEDER_SERVICE, PackagedFeeder().id));
  };
  const auto fireTimer = [] {
    fake::FireAlarms(BOOST_TIMER_EVENT);
    Settle();
  };
  return {
      {"BoostTimerOnABoostingChannel", {PackagedFeeder()}, bootOnTheFeeder, {}, fireTimer},
      {"BoostTimerWithALeftoverFlag",
       {PackagedFeeder()},
       {},
       [] {
         MakeServices();
         Tune(FEEDER_SERVICE);
       },
       fireTimer},
      {"HbbtvReady",
       {PackagedFeeder()},
       bootOnTheFeeder,
       fireTimer,
       [] {
         SetKey("memory/hbbtv_status", 6);
         SetKey("memory/hbbtv_status", 6);
       }},
  };
}

std::vector<Path> Schedules() {
  const std::vector<fake::Package> feeders = {ServiceFeeder("servicefda"),
                                              ServiceFeeder("servicefdb")};
  return {
      {"TickOfTheScheduler", feeders, {}, {}, Tick},
      {"TickWithoutServiceFeeders",
       {ServiceFeeder("servicefda")},
       {},
       [] { Uninstall("servicefda"); },
       Tick},
      {"NetworkTimeArrives", feeders, {}, {}, [] { SetKey(NETWORK_TIME_KEY, 1); }, false},
      {"MessageWithADueTime",
       feeders,
       {},
       {},
       [] {
         Say({{"orv_scheduler_command", "command_set_expiration_time"},
              {"expiration_time", "3600"}});
       }},
      {"MessageOfCompletion",
       feeders,
       {},
       Tick,
       [] {
         Say({{"orv_scheduler_command", "command_complete_operation"}});
       }},
      {"MessageWithoutSense",
       feeders,
       {},
       {},
       [] {
         Say({{"orv_scheduler_command", "dance"}});
       }},
  };
}

std::vector<Path> WebAppLives() {
  return {
      {"LifeOfAWebApp",
       {Guide()},
       {},
       {},
       [] {
         for (const char* word : {"init", "load", "preload", "resume", "pause", "quit"}) {
           SetKey(GUIDE_STATUS_KEY, word);
         }
       }},
      {"EndOfAWebAppInLowMemory",
       {Guide()},
       {},
       [] {
         SetKey(GUIDE_STATUS_KEY, "preload");
         SetKey(GUIDE_STATUS_KEY, "destroy");
       },
       [] {
         Fire(LOW_MEMORY_CHECK_MS);
         SetKey(GUIDE_STATUS_KEY, "preload");
         Fire(LOW_MEMORY_CHECK_MS);
       }},
      {"RejectedPreload",
       {},
       {},
       [] {
         fake::QueueLaunchResults({LAUNCH_REJECTED, LAUNCH_REJECTED});
         Install(Guide());
       },
       [] {
         Fire(PRELOAD_RETRY_MS);
         Fire(PRELOAD_RETRY_MS);
       }},
      {"PreloadThatIsRejectedForGood",
       {},
       {},
       [] {
         fake::QueueLaunchResults(std::vector<int>(22, LAUNCH_REJECTED));
         Install(Guide());
         for (int i = 0; i < 21; ++i) {
           Fire(PRELOAD_RETRY_MS);
         }
       },
       [] { Fire(PRELOAD_RETRY_MS); }},
      {"Housekeeping",
       {},
       {},
       {},
       [] {
         fake::AdvanceTimers(60 * 1000);
         Settle();
       }},
  };
}

/// Records run on one thread while the scheduler works on its own thread.
std::vector<Path> Races() {
  return {
      {"StartOfTheSchedulerWithStoredApps",
       OfEveryKind(),
       [] { fake::StoreKey(NETWORK_TIME_KEY, 1); },
       {},
       {},
       true,
       true},
      {"ResetOfAllAppsBesideTheScheduler",
       OfEveryKind(),
       {},
       {},
       [] { SetKey("db/tellahub/reset/apps", 0); },
       true,
       true},
      {"VirtualServicesBesideTheScheduler",
       OfEveryKind(),
       {},
       {},
       [] {
         fake::FireProxySignal(90014);
         Settle();
       },
       true,
       true},
  };
}

std::vector<Path> MakePaths() {
  std::vector<Path> paths;
  for (auto make :
       {Starts, Installs, Updates, Removals, Signals, Boosts, Schedules, WebAppLives, Races}) {
    const std::vector<Path> some = make();
    paths.insert(paths.end(), some.begin(), some.end());
  }
  return paths;
}

}  // namespace

const std::vector<Path>& Paths() {
  static const std::vector<Path> s_paths = MakePaths();
  return s_paths;
}

const Path& FindPath(const std::string& name) {
  const auto found = std::find_if(Paths().begin(), Paths().end(),
                                  [&](const Path& path) { return path.name == name; });
  if (found == Paths().end()) {
    throw std::runtime_error("unknown path: " + name);
  }
  return *found;
}

}  // namespace fault
