// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <FCAPI.h>
#include <FCEMSProxy.h>
#include <TVServiceAPI.h>
#include <app_common.h>
#include <dlog.h>
#include <ps_mount.h>
#include <tzplatform_config.h>

#include <cstring>

#include "contract_test.h"

namespace contract {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class Channels : public Contract {
 protected:
  FCOrvAppInfoAPI& Api() { return *FCAPI::GetOrvAppInfoAPI(); }
};

TEST_F(Channels, ACreatedRecordIsListed) {
  EXPECT_TRUE(Api().CreateAppInfo("{\"pkg_id\":\"org.a\",\"url\":\"x\\\"y\"}\n"));
  ASSERT_EQ(1U, Tv().Channels().size());
  EXPECT_THAT(Tv().Channels()[0], Contains(Pair("pkg_id", "org.a")));
  EXPECT_THAT(Tv().Channels()[0], Contains(Pair("url", "x\"y")));
}

TEST_F(Channels, AnUpdatedRecordHasItsNewMembers) {
  Api().CreateAppInfo("{\"pkg_id\":\"org.a\",\"url\":\"old\"}\n");
  EXPECT_TRUE(Api().UpdateAppInfo("{\"pkg_id\":\"org.a\",\"url\":\"new\"}\n"));
  ASSERT_EQ(1U, Tv().Channels().size());
  EXPECT_THAT(Tv().Channels()[0], Contains(Pair("url", "new")));
}

TEST_F(Channels, ARemovedRecordIsGone) {
  Api().CreateAppInfo("{\"pkg_id\":\"org.a\"}\n");
  Api().CreateAppInfo("{\"pkg_id\":\"org.b\"}\n");
  EXPECT_TRUE(Api().RemoveAppInfo("{\"pkg_id\":\"org.a\"}\n"));
  ASSERT_EQ(1U, Tv().Channels().size());
  EXPECT_THAT(Tv().Channels()[0], Contains(Pair("pkg_id", "org.b")));
}

TEST_F(Channels, WhatIsNotThereCannotBeRemovedOrUpdated) {
  EXPECT_FALSE(Api().RemoveAppInfo("{\"pkg_id\":\"org.a\"}\n"));
  EXPECT_FALSE(Api().UpdateAppInfo("{\"pkg_id\":\"org.a\"}\n"));
  EXPECT_THAT(Tv().Channels(), IsEmpty());
}

TEST_F(Channels, ATextThatIsNoRecordIsRefused) {
  EXPECT_FALSE(Api().CreateAppInfo("no record"));
  EXPECT_FALSE(Api().CreateAppInfo("{\"url\":\"x\"}"));
  EXPECT_FALSE(Api().CreateAppInfo(""));
  EXPECT_THAT(Tv().Channels(), IsEmpty());
}

class Paths : public Contract {};

TEST_F(Paths, OfTheAppEndInASlashAndDiffer) {
  const std::string data = Taken(app_get_data_path());
  const std::string shared = Taken(app_get_shared_data_path());
  EXPECT_EQ('/', data.back());
  EXPECT_EQ('/', shared.back());
  EXPECT_NE(data, shared);
}

TEST_F(Paths, OfThePlatformEndInNoSlash) {
  for (const auto id : {TZ_USER_APP, TZ_SYS_RW_APP}) {
    const char* path = tzplatform_getenv(id);
    ASSERT_NE(nullptr, path);
    EXPECT_EQ('/', path[0]);
    EXPECT_NE('/', path[std::strlen(path) - 1]);
    EXPECT_EQ(path, tzplatform_getenv(id));
  }
}

class MountService : public Contract {
 protected:
  static int Mount(const std::string& command) {
    int result = -1;
    EXPECT_EQ(0, PS_Mount(command.c_str(), static_cast<int>(command.size()), 0, &result));
    return result;
  }
};

TEST_F(MountService, AMissingImageIsNotMounted) {
  EXPECT_NE(0, Mount("-o loop,nosuid,nodev,noexec /tmp/no-such-image.tmg /tmp/no-such-directory"));
}

TEST_F(MountService, AnIllFormedCommandIsNotCarriedOut) {
  EXPECT_NE(0, Mount(""));
  EXPECT_NE(0, Mount("/tmp/image.tmg /tmp"));
}

TEST_F(MountService, WhatIsNotMountedIsNotUnmounted) {
  const std::string path = "/tmp/no-such-directory";
  int result = -1;
  EXPECT_EQ(0, PS_Umount(path.c_str(), static_cast<int>(path.size()), 0, &result));
  EXPECT_NE(0, result);
}

class Watchdog : public Contract {};

TEST_F(Watchdog, TakesARegistrationAndSignsOfLife) {
  EXPECT_EQ(std::make_pair(0, 0), Tv().WatchDaemon(120));
}

class Log : public Contract {};

TEST_F(Log, KeepsFormattedRecordsInOrder) {
  EXPECT_GT(__dlog_print(LOG_ID_MAIN, DLOG_INFO, "orv-enabler", "%s: %s(%d) > [Info] %s %lu\n",
                         "a.cpp", "f", 1, "text", 7UL),
            0);
  __dlog_print(LOG_ID_MAIN, DLOG_ERROR, "orv-enabler", "%s: %s(%d) > [ERROR] %d\n", "a.cpp", "f", 2,
               -1);
  EXPECT_THAT(Tv().Log(), ElementsAre("[Info] text 7", "[ERROR] -1"));
}

TEST_F(Log, KeepsALongRecord) {
  const std::string text(3000, 'x');
  __dlog_print(LOG_ID_MAIN, DLOG_INFO, "orv-enabler", "%s: %s(%d) > [Info] %s\n", "a.cpp", "f", 1,
               text.c_str());
  EXPECT_THAT(Tv().Log(), ElementsAre("[Info] " + text));
}

int NoteTvSignal(int signal, const void* pData, void*) {
  std::uint64_t first = 0;
  std::memcpy(&first, pData, sizeof(first));
  Notes::Add(std::to_string(signal) + " " + std::to_string(first));
  return 1;
}

int NoteProxySignal(int signal, void*) {
  Notes::Add("proxy " + std::to_string(signal));
  return 1;
}

class TvService : public Contract {
 protected:
  /// The package of the service with this id; "none" when it is not found.
  static std::string PackageOf(std::uint64_t id) {
    TCService* pService = nullptr;
    EXPECT_EQ(0, TVServiceAPI::CreateService(&pService));
    TCCriteriaHelper criteria;
    criteria.Where(12, id);
    criteria.Fetch(179);
    TCServiceData data;
    const int found = pService->FindService(criteria, data, 1);
    TVServiceAPI::Destroy(pService);
    std::string package = "none";
    EXPECT_EQ(found >= 1, data.Get(179, package));
    // The text may be padded.
    return package.substr(0, package.find('\0'));
  }

  /// 0 when nothing is tuned.
  static std::uint64_t Current() {
    TCServiceNavigation* pNavigation = nullptr;
    EXPECT_EQ(0, TVServiceAPI::CreateServiceNavigation(1, 0, &pNavigation));
    TSTvMode mode;
    EXPECT_GE(pNavigation->GetTVMode(mode), 1);
    TCCriteriaHelper criteria;
    criteria.Fetch(12);
    TCServiceData data;
    const int found = pNavigation->GetCurrentServiceInfo(mode, criteria, data);
    TVServiceAPI::Destroy(pNavigation);
    std::uint64_t id = 0;
    EXPECT_EQ(found >= 1, data.Get(12, id));
    return id;
  }
};

TEST_F(TvService, FindsAServiceByItsID) {
  Tv().AddService(0x123456789ab, "org.a");
  Tv().AddService(5, "org.b");
  EXPECT_EQ("org.a", PackageOf(0x123456789ab));
  EXPECT_EQ("org.b", PackageOf(5));
}

TEST_F(TvService, DoesNotFindAnUnknownService) {
  Tv().AddService(5, "org.b");
  EXPECT_EQ("none", PackageOf(6));
  EXPECT_EQ("none", PackageOf(static_cast<std::uint64_t>(-1)));
}

TEST_F(TvService, KnowsTheTunedService) {
  Tv().AddService(5, "org.a");
  Tv().AddService(6, "org.b");
  Tv().Tune(5);
  EXPECT_EQ(5U, Current());
  Tv().Tune(6);
  EXPECT_EQ(6U, Current());
}

TEST_F(TvService, SendsSignalsToWhoAskedForThem) {
  TCSignalSubscriber* pSubscriber = nullptr;
  ASSERT_EQ(0, TVServiceAPI::CreateSignalSubscriber(NoteTvSignal, &pSubscriber));
  ASSERT_NE(nullptr, pSubscriber);
  pSubscriber->Subscribe(170, 0, 1, 0, 0);
  pSubscriber->Subscribe(25, 0, 1, 0, 0);
  Tv().RunMainLoop();
  Tv().SendTvSignal(170, {1, 2, 0, 0, 0, 0, 0, 0});
  Tv().SendTvSignal(135, {});
  Tv().SendTvSignal(25, {3});
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return Notes::Count() == 2; }));
  EXPECT_THAT(Notes::All(), ElementsAre("170 513", "25 3"));
}

TEST_F(TvService, FieldsAreOfOneKind) {
  TCServiceData data;
  data.Set(1, std::uint64_t{7});
  data.Set(2, std::string("text"));
  std::uint64_t number = 42;
  std::string text = "old";
  EXPECT_FALSE(data.Get(2, number));
  EXPECT_FALSE(data.Get(1, text));
  EXPECT_FALSE(data.Get(3, number));
  EXPECT_EQ(42U, number);
  EXPECT_EQ("old", text);
  EXPECT_TRUE(data.Get(1, number));
  EXPECT_TRUE(data.Get(2, text));
  EXPECT_EQ(7U, number);
  EXPECT_EQ("text", text);
}

class EventProxy : public Contract {};

TEST_F(EventProxy, IsNullWithoutAConnection) {
  EXPECT_EQ(nullptr, FCEMSProxy::GetInstance(nullptr, NoteProxySignal));
}

TEST_F(EventProxy, SendsTheSubscribedSignal) {
  FCEMSProxy* pProxy = FCEMSProxy::GetInstance(FIIPCConnection::GetInstance(), NoteProxySignal);
  ASSERT_NE(nullptr, pProxy);
  EXPECT_TRUE(pProxy->Subscribe(90014));
  Tv().RunMainLoop();
  Tv().SendProxySignal(90014);
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return Notes::Count() == 1; }));
  EXPECT_THAT(Notes::All(), ElementsAre("proxy 90014"));
}

}  // namespace
}  // namespace contract
