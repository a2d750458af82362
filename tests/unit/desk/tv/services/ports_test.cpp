// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/ports.h"

#include <gtest/gtest.h>

#include "desk/tv/services/operations.h"
#include "memory_router.h"
#include "message_port.h"

namespace desk::tv {
namespace {

class PortsTest : public ::testing::Test {
 protected:
  static Caller App(const std::string& id, const std::string& busName) {
    Caller caller;
    caller.kind = Caller::Kind::App;
    caller.appId = id;
    caller.busName = busName;
    return caller;
  }
  static Caller Operator() {
    Caller caller;
    caller.busName = ":1.99";
    return caller;
  }
  int Register(const Caller& caller, const std::string& port, const std::string& from = "") {
    Json::Value request;
    request["port"] = port;
    if (!from.empty()) {
      request["from"] = from;
    }
    return m_router.Call("port.register", request, caller)["id"].asInt();
  }
  int Send(const Caller& caller, const std::string& app, const std::string& port,
           const Json::Value& more = Json::objectValue) {
    Json::Value request = more;
    request["app"] = app;
    request["port"] = port;
    request["bundle"] = Json::Value(Json::arrayValue);
    request["bundle"].append("entry");
    return m_router.Call("port.send", request, caller)["result"].asInt();
  }

  MemoryRouter m_router;
  Ports m_ports{m_router};
};

TEST_F(PortsTest, AMessageGoesToTheOwnerAlone) {
  const int id = Register(App("receiver.A", ":1.5"), "in");
  Json::Value more;
  more["reply_port"] = "out";
  EXPECT_EQ(Send(App("sender.B", ":1.6"), "receiver.A", "in", more), 0);
  const auto events = m_router.Events("port");
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0].to, ":1.5");
  EXPECT_EQ(events[0].body["port"], "in");
  EXPECT_EQ(events[0].body["id"], id);
  EXPECT_EQ(events[0].body["sender"], "sender.B");
  EXPECT_EQ(events[0].body["reply_port"], "out");
  EXPECT_EQ(events[0].body["bundle"][0], "entry");
}

TEST_F(PortsTest, WithoutAReplyPortThereIsNone) {
  Register(App("receiver.A", ":1.5"), "in");
  Send(App("sender.B", ":1.6"), "receiver.A", "in");
  EXPECT_FALSE(m_router.Events("port")[0].body.isMember("reply_port"));
}

TEST_F(PortsTest, AnAppCannotSendInAnothersName) {
  Register(App("receiver.A", ":1.5"), "in");
  Json::Value more;
  more["from"] = "somebody.Else";
  Send(App("sender.B", ":1.6"), "receiver.A", "in", more);
  EXPECT_EQ(m_router.Events("port")[0].body["sender"], "sender.B");
  Register(App("sender.B", ":1.6"), "mine", "receiver.A");
  EXPECT_EQ(Send(Operator(), "receiver.A", "mine"), MESSAGE_PORT_ERROR_PORT_NOT_FOUND);
}

TEST_F(PortsTest, AnOperatorMaySendAndReceiveInAnAppsName) {
  Register(App("receiver.A", ":1.5"), "in");
  Json::Value more;
  more["from"] = "script.S";
  Send(Operator(), "receiver.A", "in", more);
  EXPECT_EQ(m_router.Events("port")[0].body["sender"], "script.S");
  Register(Operator(), "answers", "script.S");
  EXPECT_EQ(Send(App("receiver.A", ":1.5"), "script.S", "answers"), 0);
  EXPECT_EQ(m_router.Events("port")[1].to, ":1.99");
}

TEST_F(PortsTest, AnOperatorWithoutANameIsReachedAsNobody) {
  Register(App("receiver.A", ":1.5"), "in");
  Register(Operator(), "answers");
  Send(Operator(), "receiver.A", "in");
  const std::string sender = m_router.Events("port")[0].body["sender"].asString();
  EXPECT_EQ(sender, "");
  EXPECT_EQ(Send(App("receiver.A", ":1.5"), sender, "answers"), 0);
}

TEST_F(PortsTest, APortThatNobodyHasIsNotFound) {
  Register(App("receiver.A", ":1.5"), "in");
  EXPECT_EQ(Send(Operator(), "receiver.A", "other"), MESSAGE_PORT_ERROR_PORT_NOT_FOUND);
  EXPECT_EQ(Send(Operator(), "other.A", "in"), MESSAGE_PORT_ERROR_PORT_NOT_FOUND);
  EXPECT_TRUE(m_router.Events("port").empty());
}

TEST_F(PortsTest, AMessageWithoutABundleIsRefused) {
  Register(App("receiver.A", ":1.5"), "in");
  Json::Value request;
  request["app"] = "receiver.A";
  request["port"] = "in";
  EXPECT_EQ(m_router.Call("port.send", request)["result"].asInt(),
            MESSAGE_PORT_ERROR_INVALID_PARAMETER);
}

TEST_F(PortsTest, RegisteringAgainGivesTheSameId) {
  const int id = Register(App("receiver.A", ":1.5"), "in");
  EXPECT_GT(id, 0);
  EXPECT_EQ(Register(App("receiver.A", ":1.5"), "in"), id);
  EXPECT_NE(Register(App("receiver.A", ":1.5"), "other"), id);
  EXPECT_THROW(Register(App("receiver.A", ":1.5"), ""), DeskError);
}

TEST_F(PortsTest, TheLatestConnectionOfAnAppHasThePort) {
  Register(App("receiver.A", ":1.5"), "in");
  Register(App("receiver.A", ":1.7"), "in");
  m_router.Disconnect(":1.5");
  EXPECT_EQ(Send(Operator(), "receiver.A", "in"), 0);
  EXPECT_EQ(m_router.Events("port")[0].to, ":1.7");
}

TEST_F(PortsTest, APortGoesWithItsConnection) {
  Register(App("receiver.A", ":1.5"), "in");
  Register(App("receiver.A", ":1.5"), "other");
  Register(App("receiver.B", ":1.6"), "in");
  m_router.Disconnect(":1.5");
  EXPECT_EQ(Send(Operator(), "receiver.A", "in"), MESSAGE_PORT_ERROR_PORT_NOT_FOUND);
  const Json::Value ports = m_router.Call("port.list")["ports"];
  ASSERT_EQ(ports.size(), 1u);
  EXPECT_EQ(ports[0]["app"], "receiver.B");
  EXPECT_EQ(ports[0]["port"], "in");
}

class OperationsTest : public ::testing::Test {
 protected:
  Json::Value Do(const std::string& method, const std::string& operation,
                 const std::string& app = "") {
    Json::Value request;
    request["operation"] = operation;
    request["app"] = app;
    return m_router.Call(method, request);
  }
  MemoryRouter m_router;
  Operations m_operations{m_router};
};

TEST_F(OperationsTest, AnOperationHasNoAppUntilOneIsSetAndAfterAReset) {
  EXPECT_EQ(Do("op.get", "o")["result"], 0);
  EXPECT_FALSE(Do("op.get", "o").isMember("app"));
  EXPECT_EQ(Do("op.set", "o", "a")["result"], 0);
  EXPECT_EQ(Do("op.get", "o")["app"], "a");
  EXPECT_EQ(Do("op.reset", "o")["result"], 0);
  EXPECT_FALSE(Do("op.get", "o").isMember("app"));
  EXPECT_EQ(Do("op.reset", "o")["result"], 0);
}

TEST_F(OperationsTest, AnEmptyAppIsSetLikeAnyOther) {
  Do("op.set", "o", "");
  EXPECT_TRUE(Do("op.get", "o").isMember("app"));
  EXPECT_EQ(Do("op.get", "o")["app"], "");
}

TEST_F(OperationsTest, AnOperationWithoutANameIsInvalid) {
  EXPECT_EQ(Do("op.get", "")["result"], -22);
  EXPECT_EQ(Do("op.set", "", "a")["result"], -22);
  EXPECT_EQ(Do("op.reset", "")["result"], -22);
  EXPECT_TRUE(m_operations.Dump().empty());
}

TEST_F(OperationsTest, TheyEndWithThePower) {
  Do("op.set", "o", "a");
  EXPECT_EQ(m_router.Call("op.list")["operations"][0]["app"], "a");
  m_operations.Clear();
  EXPECT_TRUE(m_router.Call("op.list")["operations"].empty());
}

}  // namespace
}  // namespace desk::tv
