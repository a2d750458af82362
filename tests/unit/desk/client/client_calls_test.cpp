// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Calls that send a request to the television: the request, and the use of the reply.

#include <FCAPI.h>
#include <TVServiceAPI.h>
#include <app_control.h>
#include <app_info.h>
#include <app_manager.h>
#include <app_manager_extension.h>
#include <app_operation.h>
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

#include "desk/common/faults.h"
#include "desk/common/json.h"
#include "support/files.h"
#include "television_stand_in.h"

namespace {

using testing::ElementsAre;

class ClientCalls : public testing::Test {
 protected:
  ClientCalls() {
    for (const char* name : {"TV_ROLE", "TV_FAULTS", "TV_LOG", "TV_JOURNAL"}) {
      unsetenv(name);
    }
  }
  void Reply(const char* method, const char* json) {
    m_television.On(method, [json](const Json::Value&) { return desk::ParseJson(json); });
  }
  std::string Asked(const char* method) {
    const auto requests = m_television.Requests(method);
    return requests.empty() ? "(nothing)" : desk::FormatJson(requests.back());
  }

  TelevisionStandIn m_television;
};

TEST_F(ClientCalls, AContextAnswersItsPidAlsoAfterItsEnd) {
  Reply("app.info", R"({"found":true,"running":true,"pid":77})");
  app_context_h context = nullptr;
  ASSERT_EQ(app_manager_get_app_context("a.b", &context), 0);
  ASSERT_EQ(app_context_destroy(context), 0);
  pid_t pid = 1;
  EXPECT_EQ(app_context_get_pid(context, &pid), 0);
  EXPECT_EQ(pid, 77);
  EXPECT_NE(app_context_destroy(context), 0);
  EXPECT_NE(app_manager_terminate_app(context), 0);
}

TEST_F(ClientCalls, AContextThatIsLongGoneIsAnError) {
  Reply("app.info", R"({"found":true,"running":true,"pid":77})");
  app_context_h first = nullptr;
  ASSERT_EQ(app_manager_get_app_context("a.b", &first), 0);
  ASSERT_EQ(app_context_destroy(first), 0);
  for (int i = 0; i < 16; ++i) {
    app_context_h next = nullptr;
    ASSERT_EQ(app_manager_get_app_context("a.b", &next), 0);
    ASSERT_NE(next, first);
    ASSERT_EQ(app_context_destroy(next), 0);
  }
  pid_t pid = 1;
  EXPECT_NE(app_context_get_pid(first, &pid), 0);
  EXPECT_EQ(pid, 1);
}

TEST_F(ClientCalls, OnlyARunningAppHasAContext) {
  app_context_h context = nullptr;
  bool running = true;
  Reply("app.info", R"({"found":false})");
  EXPECT_EQ(app_manager_get_app_context("a.b", &context), APP_MANAGER_ERROR_NO_SUCH_APP);
  EXPECT_EQ(app_manager_is_running("a.b", &running), 0);
  EXPECT_FALSE(running);
  Reply("app.info", R"({"found":true,"running":false})");
  EXPECT_EQ(app_manager_get_app_context("a.b", &context), APP_MANAGER_ERROR_APP_NO_RUNNING);
}

TEST_F(ClientCalls, ALaunchBringsIdOperationAndExtraData) {
  Reply("app.launch", R"({"result":-17891295})");
  app_control_h control = nullptr;
  ASSERT_EQ(app_control_create(&control), 0);
  app_control_set_app_id(control, "a.b");
  app_control_set_operation(control, "op");
  app_control_add_extra_data(control, "mode", "quiet");
  EXPECT_EQ(app_control_send_launch_request(control, nullptr, nullptr), -17891295);
  EXPECT_EQ(Asked("app.launch"), R"({"app":"a.b","extra":{"mode":"quiet"},"operation":"op"})");
  EXPECT_EQ(app_control_destroy(control), 0);
  EXPECT_EQ(app_control_destroy(control), APP_CONTROL_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(app_control_destroy(nullptr), APP_CONTROL_ERROR_INVALID_PARAMETER);
}

TEST_F(ClientCalls, AnOperationThatNoAppServesGivesNull) {
  Reply("op.get", R"({"result":0})");
  char* app = nullptr;
  EXPECT_EQ(app_operation_get_current_app("op", &app), 0);
  EXPECT_EQ(app, nullptr);
  Reply("op.get", R"({"result":0,"app":"a.b"})");
  EXPECT_EQ(app_operation_get_current_app("op", &app), 0);
  EXPECT_STREQ(app, "a.b");
  free(app);
}

TEST_F(ClientCalls, AnErrorOfAnOperationLeavesTheArgument) {
  Reply("op.get", R"({"result":-5,"app":"a.b"})");
  char* app = nullptr;
  EXPECT_EQ(app_operation_get_current_app("op", &app), -5);
  EXPECT_EQ(app, nullptr);
}

bool NoteApp(package_info_app_component_type_e component, const char* id, void* data) {
  static_cast<std::vector<std::string>*>(data)->push_back(std::to_string(component) + id);
  return true;
}

TEST_F(ClientCalls, APackageIsASnapshotThatIsAskedForOnce) {
  Reply("pkg.info", R"({"found":true,"version":"1.2","apps":[{"id":"p.b","component":"service"},
                        {"id":"p.a","component":"ui"}]})");
  package_info_h info = nullptr;
  ASSERT_EQ(package_manager_get_package_info("p", &info), 0);
  Reply("pkg.info", R"({"found":false})");
  std::vector<std::string> all;
  std::vector<std::string> services;
  std::vector<std::string> pages;
  EXPECT_EQ(package_info_foreach_app_from_package(info, PACKAGE_INFO_ALLAPP, NoteApp, &all), 0);
  package_info_foreach_app_from_package(info, PACKAGE_INFO_SERVICEAPP, NoteApp, &services);
  package_info_foreach_app_from_package(info, PACKAGE_INFO_UIAPP, NoteApp, &pages);
  EXPECT_THAT(all, ElementsAre("2p.b", "1p.a"));
  EXPECT_THAT(services, ElementsAre("2p.b"));
  EXPECT_THAT(pages, ElementsAre("1p.a"));
  char* version = nullptr;
  EXPECT_EQ(package_info_get_version(info, &version), 0);
  EXPECT_STREQ(version, "1.2");
  free(version);
  EXPECT_EQ(package_info_destroy(info), 0);
  EXPECT_NE(package_info_destroy(info), 0);
  EXPECT_EQ(m_television.Requests("pkg.info").size(), 1U);
}

TEST_F(ClientCalls, MetadataComesInOrderAndAWalkMayEndEarly) {
  Reply("app.info", R"({"found":true,"metadata":[{"key":"b","value":"1"},{"key":"a","value":""},
                        {"key":"b","value":"3"}]})");
  app_info_h info = nullptr;
  ASSERT_EQ(app_info_create("p.a", &info), 0);
  std::vector<std::string> seen;
  const auto walk = [](const char* key, const char* value, void* data) {
    auto* notes = static_cast<std::vector<std::string>*>(data);
    notes->push_back(std::string(key) + "=" + value);
    return notes->size() != 2;
  };
  EXPECT_EQ(app_info_foreach_metadata(info, walk, &seen), 0);
  EXPECT_THAT(seen, ElementsAre("b=1", "a="));
  EXPECT_EQ(app_info_foreach_metadata(info, walk, &seen), 0);
  EXPECT_EQ(seen.size(), 5U);
  EXPECT_EQ(app_info_destroy(info), 0);
  Reply("app.info", R"({"found":false})");
  EXPECT_EQ(app_info_create("p.a", &info), APP_MANAGER_ERROR_NO_SUCH_APP);
}

TEST_F(ClientCalls, AMessageIsSentWithItsTypesAndTheReplyPort) {
  Reply("port.register", R"({"id":3})");
  Reply("port.send", R"({"result":-18612223})");
  const message_port_message_cb callback = [](int, const char*, const char*, bool, bundle*, void*) {
  };
  ASSERT_EQ(message_port_register_local_port("mine", callback, nullptr), 3);
  bundle* message = bundle_create();
  bundle_add_str(message, "k", "v");
  EXPECT_EQ(message_port_send_message("a.b", "port", message), MESSAGE_PORT_ERROR_PORT_NOT_FOUND);
  EXPECT_EQ(Asked("port.send"),
            R"({"app":"a.b","bundle":[{"key":"k","type":1025,"value":"v"}],"port":"port"})");
  Reply("port.send", R"({"result":0})");
  EXPECT_EQ(message_port_send_message_with_local_port("a.b", "port", message, 3), 0);
  EXPECT_EQ(m_television.Requests("port.send").back()["reply_port"].asString(), "mine");
  EXPECT_EQ(message_port_send_message_with_local_port("a.b", "port", message, 4),
            MESSAGE_PORT_ERROR_INVALID_PARAMETER);
  bundle_free(message);
}

TEST_F(ClientCalls, TheLengthOfAMountCommandCounts) {
  Reply("mount.mount", R"({"ret":0,"result":0,"reason":""})");
  Reply("mount.umount", R"({"ret":0,"result":16,"reason":"busy"})");
  int result = -1;
  EXPECT_EQ(PS_Mount("-o loop a bXXX", 11, 0, &result), 0);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(Asked("mount.mount"), R"({"command":"-o loop a b"})");
  EXPECT_EQ(PS_Umount("/mntXXX", 4, 0, &result), 0);
  EXPECT_EQ(result, 16);
  EXPECT_EQ(Asked("mount.umount"), R"({"path":"/mnt"})");
}

TEST_F(ClientCalls, AFailingMountNeitherReachesTheServiceNorSetsTheResult) {
  const support::TempDir directory;
  desk::FaultTable faults(directory / "faults", true);
  setenv("TV_FAULTS", (directory / "faults").c_str(), 1);
  faults.Add({"PS_Mount", 32, 0, 0});
  faults.Add({"PS_Umount", std::nullopt, 0, 0});
  int result = 77;
  EXPECT_EQ(PS_Mount("-o loop a b", 11, 0, &result), 32);
  EXPECT_EQ(PS_Umount("/mnt", 4, 0, &result), -1);
  EXPECT_EQ(result, 77);
  EXPECT_EQ(Asked("mount.mount") + Asked("mount.umount"), "(nothing)(nothing)");
}

TEST_F(ClientCalls, TheWebAppListIsOneArrayWithZeroedFields) {
  Reply("was.all", R"({"result":0,"list":[{"package":"p","kind":2,"gone":false},
                       {"package":"q","kind":1,"gone":true}]})");
  was_app_list_item_s* list = nullptr;
  int count = -1;
  ASSERT_EQ(was_get_all_app_list(&list, &count), 0);
  ASSERT_EQ(count, 2);
  EXPECT_STREQ(list[0].package_id, "p");
  EXPECT_EQ(list[0].kind, 2);
  EXPECT_EQ(list[0].gone, 0);
  EXPECT_NE(list[1].gone, 0);
  EXPECT_EQ(list[1].reserved_tail[0], 0);
  free(list);
}

TEST_F(ClientCalls, AnOverlongWidgetIdIsCutBeforeItsTerminator) {
  const std::string text(2000, 'w');
  m_television.On("was.find", [&](const Json::Value&) {
    Json::Value reply;
    reply["result"] = 0;
    reply["widget"] = text;
    reply["app"] = "p.a";
    return reply;
  });
  was_app_info_s info;
  std::memset(&info, 0xff, sizeof(info));
  ASSERT_EQ(was_get_app_info_by_tizenid("p.a", &info), 0);
  EXPECT_EQ(std::string(info.widget_id), text.substr(0, 895));
  EXPECT_STREQ(info.app_tizen_id, "p.a");
  Reply("was.find", R"({"result":-1})");
  EXPECT_EQ(was_get_app_info_by_tizenid("p.a", &info), -1);
}

TEST_F(ClientCalls, ARecordGoesToTheChannelFrameworkAsItIs) {
  Reply("channel.create", R"({"ok":true})");
  Reply("channel.update", R"({"ok":false})");
  FCOrvAppInfoAPI* records = FCAPI::GetOrvAppInfoAPI();
  ASSERT_NE(records, nullptr);
  EXPECT_TRUE(records->CreateAppInfo("{\"a\":\"\xff\"}\n"));
  EXPECT_EQ(m_television.Requests("channel.create")[0]["record"].asString(), "{\"a\":\"\xff\"}\n");
  EXPECT_FALSE(records->UpdateAppInfo("{}"));
  EXPECT_FALSE(records->RemoveAppInfo("{}"));
}

TEST_F(ClientCalls, AServiceIsFoundByItsId) {
  Reply("service.find", R"({"found":true,"package":"p"})");
  TCService* service = nullptr;
  ASSERT_EQ(TVServiceAPI::CreateService(&service), 0);
  TCCriteriaHelper criteria;
  criteria.Where(12, 0xffffffffffffffffULL);
  criteria.Fetch(179);
  TCServiceData data;
  EXPECT_EQ(service->FindService(criteria, data, 1), 1);
  EXPECT_EQ(Asked("service.find"), R"({"id":18446744073709551615})");
  std::string package;
  std::uint64_t id = 4;
  EXPECT_TRUE(data.Get(179, package));
  EXPECT_EQ(package, "p");
  EXPECT_FALSE(data.Get(12, id));
  EXPECT_EQ(id, 4U);
  Reply("service.find", R"({"found":false})");
  EXPECT_LT(service->FindService(criteria, data, 1), 1);
  TVServiceAPI::Destroy(service);
}

TEST_F(ClientCalls, NoServiceIsFoundByAnotherField) {
  TCService* service = nullptr;
  ASSERT_EQ(TVServiceAPI::CreateService(&service), 0);
  TCCriteriaHelper criteria;
  criteria.Where(13, 1);
  TCServiceData data;
  EXPECT_EQ(service->FindService(criteria, data, 1), 0);
  TVServiceAPI::Destroy(service);
}

TEST_F(ClientCalls, TheCurrentServiceIsThatOfTheTelevision) {
  Reply("service.current", R"({"found":true,"id":9000000001,"output":1,"source":2})");
  TCServiceNavigation* navigation = nullptr;
  ASSERT_EQ(TVServiceAPI::CreateServiceNavigation(1, 0, &navigation), 0);
  TSTvMode mode;
  EXPECT_EQ(navigation->GetTVMode(mode), 1);
  EXPECT_EQ(mode.output, 1);
  EXPECT_EQ(mode.source, 2);
  TCCriteriaHelper criteria;
  criteria.Fetch(12);
  TCServiceData data;
  std::uint64_t id = 0;
  EXPECT_EQ(navigation->GetCurrentServiceInfo(mode, criteria, data), 1);
  EXPECT_TRUE(data.Get(12, id));
  EXPECT_EQ(id, 9000000001U);
  Reply("service.current", R"({"found":false,"output":1,"source":2})");
  EXPECT_LT(navigation->GetCurrentServiceInfo(mode, criteria, data), 1);
  TVServiceAPI::Destroy(navigation);
}

}  // namespace
