// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <FCAPI.h>
#include <FCEMSProxy.h>
#include <TVServiceAPI.h>
#include <bundle.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <message_port.h>
#include <package_manager.h>
#include <ps_mount.h>
#include <was_db.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fake/control/fake.h"
#include "fake_fixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

int OnTvSignal(int signalType, const void* pData, void*) {
  std::uint64_t first = 0;
  std::memcpy(&first, pData, sizeof(first));
  Told().push_back(std::to_string(signalType) + ":" + std::to_string(first));
  return 1;
}

int OnProxySignal(int signalType, void*) {
  Told().push_back("proxy " + std::to_string(signalType));
  return 1;
}

class TvService : public FakeTest {};

TEST_F(TvService, CallsSubscribersOfTheSignalWithAPaddedPayload) {
  TCSignalSubscriber* subscriber = nullptr;
  ASSERT_EQ(0, TVServiceAPI::CreateSignalSubscriber(OnTvSignal, &subscriber));
  subscriber->Subscribe(103, 0, 1, 0, 0);
  EXPECT_EQ(1U, fake::FireTvSignal(103, {7}));
  EXPECT_EQ(0U, fake::FireTvSignal(25));
  EXPECT_EQ(1U, fake::FireTvSignalOnThread(103, fake::Payload(std::uint64_t{1} << 40)));
  EXPECT_THAT(Told(), ElementsAre("103:7", "103:1099511627776"));
  ASSERT_EQ(1U, fake::TvSubscriptions().size());
  EXPECT_THAT(fake::TvSubscriptions()[0].arguments, ElementsAre(0, 1, 0, 0));
}

TEST_F(TvService, FindsAServiceByItsIDAndGivesTheFetchedFields) {
  fake::AddService(fake::MakeService(5, std::string("com\0.x", 6)));
  TCService* service = nullptr;
  ASSERT_EQ(0, TVServiceAPI::CreateService(&service));
  TCCriteriaHelper criteria;
  criteria.Where(12, 5);
  criteria.Fetch(179);
  TCServiceData data;
  EXPECT_EQ(1, service->FindService(criteria, data, 1));
  std::string package;
  std::uint64_t id = 1;
  EXPECT_TRUE(data.Get(179, package));
  EXPECT_EQ(std::string("com\0.x", 6), package);
  EXPECT_FALSE(data.Get(12, id));
  criteria.Where(12, 6);
  EXPECT_EQ(0, service->FindService(criteria, data, 1));
  EXPECT_EQ(1U, fake::OpenHandles("TCService"));
  TVServiceAPI::Destroy(service);
  EXPECT_EQ(0U, fake::OpenHandles("TCService"));
}

TEST_F(TvService, TellsTheModeAndTheTunedService) {
  TCServiceNavigation* navigation = nullptr;
  ASSERT_EQ(0, TVServiceAPI::CreateServiceNavigation(1, 0, &navigation));
  TSTvMode mode;
  fake::SetTvMode(3, 4);
  EXPECT_EQ(1, navigation->GetTVMode(mode));
  EXPECT_EQ(3, mode.output);
  EXPECT_EQ(4, mode.source);
  TCCriteriaHelper criteria;
  criteria.Fetch(12);
  TCServiceData data;
  EXPECT_EQ(0, navigation->GetCurrentServiceInfo(mode, criteria, data));
  fake::SetCurrentService(fake::MakeService(9, "p"));
  EXPECT_EQ(1, navigation->GetCurrentServiceInfo(mode, criteria, data));
  std::uint64_t id = 0;
  EXPECT_TRUE(data.Get(12, id));
  EXPECT_EQ(9U, id);
  TVServiceAPI::Destroy(navigation);
}

TEST_F(TvService, GivesNoServiceOnAFaultOfAnyResult) {
  TCService* service = reinterpret_cast<TCService*>(&service);
  fake::Fail("TVServiceAPI::CreateService", 0);
  EXPECT_EQ(0, TVServiceAPI::CreateService(&service));
  EXPECT_EQ(nullptr, service);
}

class EventProxy : public FakeTest {};

TEST_F(EventProxy, NeedsAConnection) {
  EXPECT_EQ(nullptr, FCEMSProxy::GetInstance(nullptr, OnProxySignal));
  fake::Fail("FIIPCConnection::GetInstance");
  EXPECT_EQ(nullptr, FIIPCConnection::GetInstance());
}

TEST_F(EventProxy, CallsTheLastCallbackForSubscribedSignals) {
  FCEMSProxy* proxy = FCEMSProxy::GetInstance(FIIPCConnection::GetInstance(), OnProxySignal);
  ASSERT_NE(nullptr, proxy);
  EXPECT_FALSE(fake::FireProxySignal(90014));
  EXPECT_TRUE(proxy->Subscribe(90014));
  EXPECT_TRUE(fake::FireProxySignal(90014));
  EXPECT_FALSE(fake::FireProxySignal(1));
  EXPECT_THAT(Told(), ElementsAre("proxy 90014"));
  EXPECT_THAT(fake::ProxySubscriptions(), ElementsAre(90014));
}

class ChannelFramework : public FakeTest {};

TEST_F(ChannelFramework, HoldsTheRecordsThatItAccepted) {
  FCOrvAppInfoAPI* api = FCAPI::GetOrvAppInfoAPI();
  ASSERT_NE(nullptr, api);
  EXPECT_TRUE(api->CreateAppInfo("{\"pkg_id\":\"a\"}\n"));
  EXPECT_TRUE(api->CreateAppInfo("{\"pkg_id\":\"b\"}\n"));
  EXPECT_TRUE(api->UpdateAppInfo("{\"pkg_id\":\"a\",\"x\":\"1\"}\n"));
  EXPECT_TRUE(api->RemoveAppInfo("{\"pkg_id\":\"b\"}\n"));
  EXPECT_FALSE(api->RemoveAppInfo("{\"pkg_id\":\"b\"}\n"));
  EXPECT_FALSE(api->CreateAppInfo("no record"));
  fake::Fail("FCOrvAppInfoAPI::CreateAppInfo", 0);
  EXPECT_FALSE(api->CreateAppInfo("{\"pkg_id\":\"c\"}\n"));
  EXPECT_THAT(fake::Channels(), ElementsAre("{\"pkg_id\":\"a\",\"x\":\"1\"}\n"));
  const auto requests = fake::ChannelRequests();
  ASSERT_EQ(7U, requests.size());
  EXPECT_EQ("UpdateAppInfo", requests[2].operation);
  EXPECT_TRUE(requests[2].accepted);
  EXPECT_EQ("{\"pkg_id\":\"c\"}\n", requests[6].record);
  EXPECT_FALSE(requests[6].accepted);
}

TEST_F(ChannelFramework, CanBeAbsent) {
  fake::SetChannelFrameworkPresent(false);
  EXPECT_EQ(nullptr, FCAPI::GetOrvAppInfoAPI());
}

void OnMessage(int, const char* app, const char* port, bool trusted, bundle* message, void*) {
  Told().push_back(std::string(app) + "/" + (port == nullptr ? "none" : port) +
                   (trusted ? "/trusted" : ""));
  for (const auto& entry : fake::Entries(message)) {
    Told().push_back(entry.key + ":" + std::to_string(entry.type));
  }
}

class MessagePort : public FakeTest {};

TEST_F(MessagePort, DeliversAMessageOfAnyTypesAsAnyApp) {
  EXPECT_EQ(1, message_port_register_local_port("port", OnMessage, nullptr));
  fake::Incoming incoming{"port", "com.app", "reply", false, fake::Strings({{"k", "v"}})};
  incoming.message.push_back({"bytes", BUNDLE_TYPE_BYTE, {"xy"}});
  EXPECT_TRUE(fake::SendMessage(incoming));
  EXPECT_THAT(Told(), ElementsAre("com.app/reply", "k:1025", "bytes:2"));
  incoming.port = "nobody's";
  EXPECT_FALSE(fake::SendMessage(incoming));
}

TEST_F(MessagePort, CollectsReplies) {
  message_port_register_local_port("port", OnMessage, nullptr);
  fake::SendMessage({"port", "com.app", "reply", false, {}});
  bundle* reply = bundle_create();
  bundle_add_str(reply, "result", "ok");
  EXPECT_EQ(0, message_port_send_message("com.app", "reply", reply));
  EXPECT_EQ(MESSAGE_PORT_ERROR_PORT_NOT_FOUND, message_port_send_message("com.app", "no", reply));
  EXPECT_EQ(MESSAGE_PORT_ERROR_INVALID_PARAMETER,
            message_port_send_message("com.app", nullptr, reply));
  bundle_free(reply);
  const auto sent = fake::SentMessages();
  ASSERT_EQ(3U, sent.size());
  EXPECT_EQ("com.app", sent[0].app);
  EXPECT_EQ("reply", sent[0].port);
  EXPECT_EQ("result", sent[0].message.at(0).key);
  EXPECT_THAT(sent[0].message.at(0).values, ElementsAre("ok"));
  EXPECT_EQ("null", sent[2].port);
  EXPECT_EQ(0U, fake::OpenHandles("bundle"));
}

class MountService : public FakeTest {};

TEST_F(MountService, AsksTheTestsHandler) {
  std::vector<std::string> asked;
  fake::SetMountHandler([&](const fake::Mount& mount) {
    asked = {mount.options, mount.image, mount.directory};
    return 0;
  });
  const std::string command = "-o loop,nosuid /a.tmg /dir";
  int result = -1;
  EXPECT_EQ(0, PS_Mount(command.c_str(), static_cast<int>(command.size()), 0, &result));
  EXPECT_EQ(0, result);
  EXPECT_THAT(asked, ElementsAre("loop,nosuid", "/a.tmg", "/dir"));
  ASSERT_EQ(1U, fake::Mounts().size());
  EXPECT_EQ(0, PS_Umount("/dir", 4, 0, &result));
  EXPECT_EQ(0, result);
  EXPECT_THAT(fake::Mounts(), IsEmpty());
  EXPECT_EQ(0, PS_Umount("/dir", 4, 0, &result));
  EXPECT_EQ(1, result);
}

TEST_F(MountService, OutOfReachLeavesTheResultUntouched) {
  fake::Fail("PS_Mount", -3);
  int result = -1;
  EXPECT_EQ(-3, PS_Mount("-o a b c", 8, 0, &result));
  EXPECT_EQ(-1, result);
  EXPECT_EQ(0, PS_Mount("a b c", 5, 0, &result));
  EXPECT_EQ(1, result);
}

class WebAppService : public FakeTest {};

TEST_F(WebAppService, ListsItsTableInOrder) {
  was_app_list_item_s* list = nullptr;
  int count = -1;
  EXPECT_EQ(0, was_get_all_app_list(&list, &count));
  EXPECT_EQ(nullptr, list);
  EXPECT_EQ(0, count);
  fake::AddWasApp({"p1", "p1.app", "widget1"});
  fake::AddWasApp({"p2", "p2.app", "widget2", 1, 1});
  EXPECT_EQ(0, was_get_all_app_list(&list, &count));
  ASSERT_EQ(2, count);
  EXPECT_STREQ("p1", list[0].package_id);
  EXPECT_EQ(2, list[0].kind);
  EXPECT_STREQ("p2", list[1].package_id);
  EXPECT_EQ(1, list[1].kind);
  EXPECT_EQ(1, list[1].gone);
  std::free(list);
  was_app_info_s info;
  EXPECT_EQ(0, was_get_app_info_by_tizenid("p2.app", &info));
  EXPECT_STREQ("widget2", info.widget_id);
  EXPECT_STREQ("p2.app", info.app_tizen_id);
  EXPECT_NE(0, was_get_app_info_by_tizenid("p3.app", &info));
}

void OnPackage(const char* type, const char* package, package_manager_event_type_e event,
               package_manager_event_state_e state, int progress, package_manager_error_e, void*) {
  Told().push_back(std::string(type) + " " + package + " " + std::to_string(event) + " " +
                   std::to_string(state) + " " + std::to_string(progress));
}

class Packages : public FakeTest {};

TEST_F(Packages, FireEventsToHandlesThatHaveACallback) {
  package_manager_h manager = nullptr;
  ASSERT_EQ(0, package_manager_create(&manager));
  EXPECT_EQ(0U, fake::FirePackageEvent("p", PACKAGE_MANAGER_EVENT_TYPE_INSTALL));
  package_manager_set_event_cb(manager, OnPackage, nullptr);
  EXPECT_EQ(1U, fake::PackageEventCallbacks());
  EXPECT_EQ(1U, fake::FirePackageEvent("p", PACKAGE_MANAGER_EVENT_TYPE_UPDATE,
                                       PACKAGE_MANAGER_EVENT_STATE_PROCESSING, 50));
  EXPECT_EQ(0, package_manager_unset_event_cb(manager));
  EXPECT_EQ(0U, fake::FirePackageEvent("p", PACKAGE_MANAGER_EVENT_TYPE_INSTALL));
  EXPECT_EQ(0, package_manager_destroy(manager));
  EXPECT_THAT(Told(), ElementsAre("wgt p 2 1 50"));
}

}  // namespace
