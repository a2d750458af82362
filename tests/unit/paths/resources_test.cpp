// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Descriptors, SQLite's allocations and heap blocks on each path, in any build: a path that returns
// to its initial state leaves nothing behind.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "controller/ORVScheduler.h"
#include "fake/control/fake.h"
#include "fault/daemon.h"
#include "fault/packages.h"
#include "support/resources.h"

namespace {

using support::LeavesNothingBehind;
using support::Resources;

constexpr int TUNED = 103;

void Forget() {
  fake::ClearLog();
  fake::ClearLaunches();
  fake::ClearChannelRequests();
  fake::ClearSentMessages();
}

class PathResources : public testing::Test {
 protected:
  PathResources() {
    fault::MakeFreshDirectories();
    fault::MakeTelevision();
  }

  /// In the main loop of an idle daemon.
  static void InDaemon(const std::function<void()>& body) {
    ASSERT_TRUE(fault::RunDaemon([&] {
      fault::Settle();
      fake::SetRecording(false);
      body();
    }));
  }
  static void SetNetworkTime() {
    fake::SetKey("memory/menu/network/set_time", 1);
    fault::Settle();
  }
  static void Tune(std::uint64_t service) {
    fake::FireTvSignalOnThread(TUNED, fake::Payload(service));
    fault::Settle();
  }
  static void Tick() {
    fake::FireTimer(g_nSchedulerTimerID);
    fault::Settle();
  }
  static void Say(const std::vector<std::pair<std::string, std::string>>& message) {
    fake::Incoming incoming;
    incoming.port = "orv_scheduler_command_port";
    incoming.app = "servicefda.Feed";
    incoming.replyPort = "answers";
    incoming.message = fake::Strings(message);
    ASSERT_TRUE(fake::SendMessage(incoming));
    fault::Settle();
  }
  static void ExpectRoundTrip(const fake::Package& package) {
    InDaemon([&] {
      EXPECT_TRUE(LeavesNothingBehind(
          [&] {
            fault::Install(package);
            fault::Uninstall(package.id);
          },
          Forget));
    });
  }
  static void ExpectUpdates(const fake::Package& first, const fake::Package& second) {
    InDaemon([&] {
      fault::Install(first);
      EXPECT_TRUE(LeavesNothingBehind(
          [&] {
            fault::Update(second);
            fault::Update(first);
          },
          Forget));
    });
  }
};

TEST_F(PathResources, OfAPackagedFeederAreGivenBackByItsRemoval) {
  ExpectRoundTrip(fault::PackagedFeeder());
}
TEST_F(PathResources, OfAWebFeederAreGivenBackByItsRemoval) {
  ExpectRoundTrip(fault::WebFeeder("webfeederp"));
}
TEST_F(PathResources, OfAServiceFeederAreGivenBackByItsRemoval) {
  ExpectRoundTrip(fault::ServiceFeeder("servicefda"));
}
TEST_F(PathResources, OfABannerAreGivenBackByItsRemoval) {
  ExpectRoundTrip(fault::Banner());
}
TEST_F(PathResources, OfAGuideAreGivenBackByItsRemoval) {
  ExpectRoundTrip(fault::Guide());
}
TEST_F(PathResources, OfABridgedGuideAreGivenBackByItsRemoval) {
  ExpectRoundTrip(fault::BridgedGuide());
}

TEST_F(PathResources, OfAPackagedFeederDoNotGrowWithItsUpdates) {
  ExpectUpdates(fault::PackagedFeeder(), fault::PackagedFeeder());
}
TEST_F(PathResources, OfAServiceFeederDoNotGrowWithItsUpdates) {
  ExpectUpdates(fault::ServiceFeeder("servicefda"), fault::ServiceFeeder("servicefda", "extended"));
}
TEST_F(PathResources, OfABannerDoNotGrowWithItsUpdates) {
  ExpectUpdates(fault::Banner("info"), fault::Banner("channel"));
}
TEST_F(PathResources, OfAGuideDoNotGrowWithItsUpdates) {
  ExpectUpdates(fault::Guide("epg"), fault::Guide("channel_list"));
}
TEST_F(PathResources, DoNotGrowWhenTypesComeAndGo) {
  ExpectUpdates(fault::With(fault::Banner(), {{"orv_type/ch_feeder_standard", "standard"}}),
                fault::Banner());
}

TEST_F(PathResources, DoNotGrowWithTunes) {
  InDaemon([] {
    fault::Install(fault::PackagedFeeder());
    fake::AddService(fake::MakeService(7, fault::PackagedFeeder().id));
    fake::AddService(fake::MakeService(8, ""));
    EXPECT_TRUE(LeavesNothingBehind(
        [] {
          Tune(7);
          Tune(8);
          Tune(9);
        },
        Forget));
  });
}

TEST_F(PathResources, DoNotGrowWithTicks) {
  InDaemon([] {
    fault::Install(fault::ServiceFeeder("servicefda"));
    fault::Install(fault::ServiceFeeder("servicefdb"));
    SetNetworkTime();
    EXPECT_TRUE(LeavesNothingBehind(
        [] {
          Tick();
          Tick();
        },
        Forget));
  });
}

TEST_F(PathResources, DoNotGrowWithDueTimesThatServicesSend) {
  InDaemon([] {
    fault::Install(fault::ServiceFeeder("servicefda"));
    SetNetworkTime();
    EXPECT_TRUE(LeavesNothingBehind(
        [] {
          Say({{"orv_scheduler_command", "command_set_expiration_time"},
               {"expiration_time", "3600"}});
          Say({{"orv_scheduler_command", "dance"}});
        },
        Forget));
  });
}

TEST_F(PathResources, GrowByOneBundleWithEachMessageOfCompletion) {
  InDaemon([] {
    fault::Install(fault::ServiceFeeder("servicefda"));
    SetNetworkTime();
    const std::size_t before = fake::OpenHandles("bundle");
    constexpr int MESSAGES = 5;
    const Resources resources = support::CountResources();
    for (int i = 0; i < MESSAGES; ++i) {
      Say({{"orv_scheduler_command", "command_complete_operation"}});
    }
    EXPECT_EQ(fake::OpenHandles("bundle"), before + MESSAGES);
    EXPECT_EQ(support::CountResources().descriptors, resources.descriptors);
    EXPECT_EQ(support::CountResources().sqliteBlocks, resources.sqliteBlocks);
  });
}

TEST_F(PathResources, OfTheDaemonsStartAreOneDescriptor) {
  const long before = support::CountResources().descriptors;
  InDaemon([before] { EXPECT_EQ(support::CountResources().descriptors, before + 1); });
}

// The counting itself.

TEST(Resources, AreCountedByTheirKind) {
  const Resources before = support::CountResources();
  const int descriptor = open("/dev/null", O_RDONLY | O_CLOEXEC);
  auto* block = new char[100];
  const Resources after = support::CountResources();
  EXPECT_EQ(after.descriptors, before.descriptors + 1);
  EXPECT_EQ(after.heapBlocks, before.heapBlocks + (support::CountsHeapBlocks() ? 1 : 0));
  delete[] block;
  close(descriptor);
  EXPECT_EQ(support::CountResources(), before);
}

TEST(Resources, ThatAPathLeavesBehindAreAFailure) {
  std::vector<int> kept;
  EXPECT_FALSE(
      LeavesNothingBehind([&] { kept.push_back(open("/dev/null", O_RDONLY | O_CLOEXEC)); }, [] {}));
  for (const int descriptor : kept) {
    close(descriptor);
  }
}

}  // namespace
