// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "unit/paths/more_paths.h"

#include "controller/ORVScheduler.h"
#include "fake/control/fake.h"
#include "fault/daemon.h"
#include "fault/packages.h"

namespace {

using fault::Banner;
using fault::Guide;
using fault::Install;
using fault::PackagedFeeder;
using fault::Path;
using fault::ServiceFeeder;
using fault::Settle;
using fault::Uninstall;
using fault::Update;
using fault::WebFeeder;
using fault::With;

/// Ids that are prefixes of each other, or differ in case or in a character with a special meaning
/// in SQL.
const std::vector<std::string> LOOK_ALIKES = {"look_alike", "lookXalike", "look%alike",
                                              "Look_alike", "look_alik",  "look_alike2",
                                              "look alike"};

std::vector<fake::Package> LookAlikes() {
  std::vector<fake::Package> packages;
  for (const std::string& id : LOOK_ALIKES) {
    packages.push_back(ServiceFeeder(id));
  }
  return packages;
}

fake::Package EveryType() {
  return With(ServiceFeeder("everything", "extended"),
              {{"orv_type/ch_feeder_standard", "extended"},
               {"orv_type/custom_ui_extended", "epg"},
               {"orv_type/custom_ui_standard", "info,channel"},
               {"orv_data/channel_data_url", "file://channel.json"},
               {"orv_data/schedule_data_url", "http://example.org/schedule.json"},
               {"orv_data/custom_ui_cold_boot_opt", "invisible"}});
}

/// Values that begin with a word that the daemon compares with.
fake::Package AlmostEveryType() {
  return With(ServiceFeeder("almosteach", "extended2"),
              {{"orv_type/ch_feeder_standard", "extended2"},
               {"orv_type/custom_ui_extended", "epg2,channel_lists"},
               {"orv_type/custom_ui_standard", "information,channels"},
               {"orv_type/ch_feeder_standard2", "extended"},
               {"orv_data/channel_data_url", "files://channel.json"},
               {"orv_data/schedule_data_url", "File://schedule.json"},
               {"orv_data/ch.app.boosting", "true2"},
               {"orv_data/custom_ui_cold_boot_opt", "background_img2"}});
}

void Say(const char* app, const std::vector<std::pair<std::string, std::string>>& message) {
  fake::Incoming incoming;
  incoming.port = "orv_scheduler_command_port";
  incoming.app = app;
  incoming.replyPort = "answers";
  incoming.message = fake::Strings(message);
  fake::SendMessage(incoming);
  Settle();
}

void SetDue(const char* app, const std::string& seconds) {
  Say(app,
      {{"orv_scheduler_command", "command_set_expiration_time"}, {"expiration_time", seconds}});
}

void Tick() {
  fake::FireTimer(g_nSchedulerTimerID);
  Settle();
}

std::vector<Path> Starts() {
  const std::vector<fake::Package> stored = {PackagedFeeder(), WebFeeder("webfeederp"),
                                             ServiceFeeder("servicefda", "extended"), Banner(),
                                             Guide()};
  return {
      {"StartOfAFreshTelevision", {}, {}, {}, {}},
      {"StartWithARowOfEachKind", stored, {}, {}, {}},
      {"StartWithRowsAfterAServiceReset",
       stored,
       [] { fake::StoreKey("db/factory/service_reset_count", 3); },
       {},
       {}},
  };
}

std::vector<Path> LookAlikePaths() {
  return {
      {"RemovalBesideLookAlikes", LookAlikes(), {}, {}, [] { Uninstall("look_alike"); }},
      {"UpdateBesideLookAlikes",
       LookAlikes(),
       {},
       {},
       [] { Update(ServiceFeeder("look_alike", "extended")); }},
      {"DueTimesOfLookAlikes",
       LookAlikes(),
       {},
       {},
       [] {
         SetDue("look_alik.Feed", "720");
         SetDue("look_alike.Feed", "719");
         SetDue("look_alike2.Feed", "721");
         SetDue("LOOK_ALIKE.Feed", "3600");
         SetDue("look", "3600");
       }},
      {"ValuesThatBeginWithAKnownWord",
       {AlmostEveryType()},
       {},
       {},
       [] {
         Update(AlmostEveryType());
         Uninstall("almosteach");
       }},
  };
}

std::vector<Path> Lives() {
  return {
      {"LifeOfAnAppOfEveryType",
       {},
       {},
       {},
       [] {
         Install(EveryType());
         Update(EveryType());
         Tick();
         SetDue("everything.Feed", "900");
         Tick();
         fake::AdvanceTime(901);
         Tick();
         Uninstall("everything");
       }},
      {"ScheduleOfThreeServices",
       {ServiceFeeder("servicefda"), ServiceFeeder("servicefdb"), ServiceFeeder("servicefdc")},
       {},
       {},
       [] {
         for (int i = 0; i < 7; ++i) {
           Tick();
         }
         Say("servicefdb.Feed", {{"orv_scheduler_command", "command_complete_operation"}});
         SetDue("servicefda.Feed", "1440");
         Uninstall("servicefdb");
         for (int i = 0; i < 3; ++i) {
           Tick();
         }
         fake::AdvanceTime(1440);
         for (int i = 0; i < 3; ++i) {
           Tick();
         }
       }},
      {"InstallTwiceAndRemoveTwice",
       {},
       {},
       {},
       [] {
         Install(WebFeeder("webfeederp"));
         Install(WebFeeder("webfeederp"));
         Uninstall("webfeederp");
         Uninstall("webfeederp");
       }},
      {"UpdateOfAnUnknownPackage", {}, {}, {}, [] { Update(Banner()); }},
      {"EventsThatAreNotComplete",
       {},
       {},
       {},
       [] {
         fault::MakeKnown(Banner());
         for (const auto state :
              {PACKAGE_MANAGER_EVENT_STATE_STARTED, PACKAGE_MANAGER_EVENT_STATE_PROCESSING,
               PACKAGE_MANAGER_EVENT_STATE_FAILED}) {
           fake::FirePackageEvent(Banner().id, PACKAGE_MANAGER_EVENT_TYPE_INSTALL, state);
         }
         Settle();
       }},
  };
}

}  // namespace

std::vector<Path> MorePaths() {
  std::vector<Path> paths;
  for (auto make : {Starts, LookAlikePaths, Lives}) {
    const std::vector<Path> some = make();
    paths.insert(paths.end(), some.begin(), some.end());
  }
  return paths;
}

Path FindAnyPath(const std::string& name) {
  for (const Path& path : MorePaths()) {
    if (path.name == name) {
      return path;
    }
  }
  return fault::FindPath(name);
}
