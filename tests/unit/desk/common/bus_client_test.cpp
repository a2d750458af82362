// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/common/bus_client.h"

#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <future>
#include <mutex>
#include <thread>

#include "desk/common/desk_error.h"
#include "desk/tv/bus_daemon.h"
#include "desk/tv/bus_router.h"
#include "desk/tv/callers.h"
#include "support/files.h"
#include "support/wait_for.h"

namespace desk {
namespace {

using support::WaitFor;
using tv::BusDaemon;
using tv::BusRouter;
using tv::Caller;
using tv::CallerTable;
using tv::Reply;

// A bus, a television without services on it, and a client. The television's loop runs on this
// thread, in Do and in Run.
class Bus : public testing::Test {
 protected:
  Bus() {
    support::MakeDirectories(m_paths.Run());
    support::MakeDirectories(m_paths.Log());
    m_bus = std::make_unique<BusDaemon>(m_paths);
    m_router = std::make_unique<BusRouter>(m_bus->Address(), m_callers);
    m_client = BusClient::Open(m_paths);
  }

  ~Bus() override {
    m_client.reset();
    m_router.reset();
  }

  // Runs the work on another thread, and the loop until the work has ended. Rethrows its exception.
  void Do(const std::function<void()>& work) {
    std::future<void> done = std::async(std::launch::async, work);
    RunUntil(
        [&done] { return done.wait_for(std::chrono::seconds(0)) == std::future_status::ready; },
        "the end of the call");
    done.get();
  }

  static void RunUntil(const std::function<bool()>& condition, const std::string& what) {
    EXPECT_TRUE(WaitFor(
        [&condition] {
          while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
          }
          return condition();
        },
        what));
  }

  Json::Value Call(const std::string& method, const Json::Value& request) {
    Json::Value reply;
    Do([&] { reply = m_client->Call(method, request); });
    return reply;
  }

  support::TempDir m_dir;
  const DeskPaths m_paths{m_dir.Path()};
  CallerTable m_callers;
  std::unique_ptr<BusDaemon> m_bus;
  std::unique_ptr<BusRouter> m_router;
  std::unique_ptr<BusClient> m_client;
};

TEST_F(Bus, ACallGetsItsAnswer) {
  m_router->Add("echo", [](const Json::Value& request, const Caller&) { return request; });
  Json::Value request;
  request["bytes"] = "a\xff\x01\"";
  EXPECT_EQ(Call("echo", request), request);
}

TEST_F(Bus, AnAnswerOfNothingIsAnEmptyObject) {
  m_router->Add("nothing", [](const Json::Value&, const Caller&) { return Json::Value(); });
  EXPECT_EQ(Call("nothing", Json::Value()), Json::Value(Json::objectValue));
}

TEST_F(Bus, AMegabyteGoesThrough) {
  m_router->Add("echo", [](const Json::Value& request, const Caller&) { return request; });
  Json::Value request;
  request["text"] = std::string(1 << 20, 'x');
  EXPECT_EQ(Call("echo", request), request);
}

TEST_F(Bus, NotificationsArriveInOrderWithCallsWithoutReplies) {
  std::vector<int> numbers;
  const auto note = [&numbers](const Json::Value& request, const Caller&) {
    numbers.push_back(request["number"].asInt());
    return Json::Value();
  };
  m_router->Add("note", note);
  Do([this] {
    for (int number = 1; number < 4; ++number) {
      Json::Value request;
      request["number"] = number;
      number == 2 ? static_cast<void>(m_client->Call("note", request))
                  : m_client->Tell("note", request);
    }
  });
  RunUntil([&numbers] { return numbers.size() == 3; }, "the third note");
  EXPECT_EQ(numbers, (std::vector<int>{1, 2, 3}));
}

TEST_F(Bus, TheTelevisionIgnoresAnUnknownNotification) {
  m_router->Add("echo", [](const Json::Value& request, const Caller&) { return request; });
  Do([this] { m_client->Tell("no.such", Json::Value()); });
  EXPECT_EQ(Call("echo", Json::Value()), Json::Value(Json::objectValue));
}

TEST_F(Bus, ANotificationToAnEndedTelevisionFails) {
  m_router.reset();
  m_bus.reset();
  EXPECT_TRUE(WaitFor(
      [this] {
        try {
          m_client->Tell("note", Json::Value());
        } catch (const DeskError& e) {
          return e.Code() == DeskError::NO_TV;
        }
        return false;
      },
      "the end of the connection"));
}

TEST_F(Bus, AFailureComesWithItsCodeAndText) {
  m_router->Add("fail", [](const Json::Value&, const Caller&) -> Json::Value {
    throw DeskError(DeskError::NOT_FOUND, "no such thing: look elsewhere");
  });
  try {
    Call("fail", Json::Value());
    FAIL() << "no error";
  } catch (const DeskError& e) {
    EXPECT_EQ(e.Code(), "NotFound");
    EXPECT_STREQ(e.what(), "no such thing: look elsewhere");
  }
}

TEST_F(Bus, ATextThatIsNoUtf8StillComesAsAFailure) {
  m_router->Add("fail", [](const Json::Value&, const Caller&) -> Json::Value {
    throw DeskError(DeskError::USAGE, "bad \xff");
  });
  try {
    Call("fail", Json::Value());
    FAIL() << "no error";
  } catch (const DeskError& e) {
    EXPECT_EQ(e.Code(), "Usage");
  }
}

TEST_F(Bus, AnyOtherExceptionOfAHandlerIsAFailureToo) {
  m_router->Add("throw", [](const Json::Value&, const Caller&) -> Json::Value {
    throw std::runtime_error("oops");
  });
  try {
    Call("throw", Json::Value());
    FAIL() << "no error";
  } catch (const DeskError& e) {
    EXPECT_EQ(e.Code(), "Failed");
    EXPECT_STREQ(e.what(), "oops");
  }
}

TEST_F(Bus, AnUnknownMethodIsToldByName) {
  try {
    Call("no.such", Json::Value());
    FAIL() << "no error";
  } catch (const DeskError& e) {
    EXPECT_EQ(e.Code(), "NoSuchMethod");
    EXPECT_NE(std::string(e.what()).find("no.such"), std::string::npos);
  }
}

TEST_F(Bus, ARequestThatIsNoObjectIsAUsageError) {
  m_router->Add("echo", [](const Json::Value& request, const Caller&) { return request; });
  try {
    Call("echo", Json::Value(3));
    FAIL() << "no error";
  } catch (const DeskError& e) {
    EXPECT_EQ(e.Code(), "Usage");
  }
}

TEST_F(Bus, ADeferredCallIsAnsweredLaterFromAnotherThread) {
  std::shared_ptr<Reply> waiting;
  m_router->AddDeferred("later", [&waiting](const Json::Value&, const Caller&,
                                            std::shared_ptr<Reply> reply) { waiting = reply; });
  Json::Value reply;
  Do([&] {
    std::thread answerer([&] {
      EXPECT_TRUE(WaitFor([&] { return std::atomic_load(&waiting) != nullptr; }, "the call"));
      Json::Value answer;
      answer["n"] = 5;
      std::atomic_load(&waiting)->Return(answer);
    });
    reply = m_client->Call("later");
    answerer.join();
  });
  EXPECT_EQ(reply["n"].asInt(), 5);
}

TEST_F(Bus, ADeferredCallThatNobodyAnswersFails) {
  m_router->AddDeferred("dropped",
                        [](const Json::Value&, const Caller&, const std::shared_ptr<Reply>&) {});
  EXPECT_THROW(Call("dropped", Json::Value()), DeskError);
}

TEST_F(Bus, TheCallerIsKnownByItsProcess) {
  m_callers.AddApp(getpid(), "org.app");
  Caller seen;
  m_router->Add("who", [&seen](const Json::Value&, const Caller& caller) {
    seen = caller;
    return Json::Value();
  });
  Call("who", Json::Value());
  EXPECT_EQ(seen.kind, Caller::Kind::App);
  EXPECT_EQ(seen.appId, "org.app");
  EXPECT_EQ(seen.pid, getpid());
  EXPECT_EQ(seen.busName.at(0), ':');
}

TEST_F(Bus, AProcessThatTheTvDidNotStartIsAnOperator) {
  Caller seen;
  seen.kind = Caller::Kind::App;
  m_router->Add("who", [&seen](const Json::Value&, const Caller& caller) {
    seen = caller;
    return Json::Value();
  });
  Call("who", Json::Value());
  EXPECT_EQ(seen.kind, Caller::Kind::Operator);
  EXPECT_EQ(seen.appId, "");
}

TEST_F(Bus, EventsOfATopicArriveInOrder) {
  std::vector<int> got;
  Do([&] {
    m_client->Subscribe(
        "n", [&got](const Json::Value& body) { got.push_back(body["n"].asInt()); }, nullptr);
  });
  std::vector<int> sent;
  for (int i = 0; i < 200; ++i) {
    Json::Value body;
    body["n"] = i;
    m_router->Emit("n", body);
    m_router->Emit("other", body);
    sent.push_back(i);
  }
  RunUntil([&] { return got.size() >= sent.size(); }, "all events");
  EXPECT_EQ(got, sent);
}

TEST_F(Bus, AnEventSentByAHandlerAfterItsAnswerComesAfterTheAnswer) {
  m_router->AddDeferred(
      "set", [this](const Json::Value&, const Caller&, const std::shared_ptr<Reply>& reply) {
        reply->Return(Json::Value());
        m_router->Emit("key", Json::Value(Json::objectValue));
      });
  GMainContext* context = g_main_context_new();
  std::atomic<bool> told{false};
  bool before = true;
  Do([&] {
    m_client->Subscribe(
        "key", [&told](const Json::Value&) { told = true; }, context);
    m_client->Call("set");
    before = told;
    EXPECT_TRUE(WaitFor(
        [&] {
          g_main_context_iteration(context, FALSE);
          return told.load();
        },
        "the event"));
  });
  EXPECT_FALSE(before);
  g_main_context_unref(context);
}

TEST_F(Bus, AnEventToOneConnectionReachesNobodyElse) {
  const std::unique_ptr<BusClient> other = BusClient::Open(m_paths);
  std::string name;
  m_router->Add("who", [&name](const Json::Value&, const Caller& caller) {
    name = caller.busName;
    return Json::Value();
  });
  int mine = 0;
  int others = 0;
  Do([&] {
    m_client->Subscribe(
        "port", [&mine](const Json::Value&) { ++mine; }, nullptr);
    other->Subscribe(
        "port", [&others](const Json::Value&) { ++others; }, nullptr);
    m_client->Call("who");
  });
  m_router->EmitTo(name, "port", Json::Value(Json::objectValue));
  m_router->Emit("port", Json::Value(Json::objectValue));
  RunUntil([&] { return mine == 2 && others >= 1; }, "the events");
  EXPECT_EQ(others, 1);
}

TEST_F(Bus, TwoSubscribersOfOneTopicGetEachEventOnce) {
  int one = 0;
  int two = 0;
  Do([&] {
    m_client->Subscribe(
        "n", [&one](const Json::Value&) { ++one; }, nullptr);
    m_client->Subscribe(
        "n", [&two](const Json::Value&) { ++two; }, nullptr);
  });
  m_router->Emit("n", Json::Value(Json::objectValue));
  m_router->Emit("n", Json::Value(Json::objectValue));
  RunUntil([&] { return one >= 2 && two >= 2; }, "the events");
  EXPECT_EQ(one, 2);
  EXPECT_EQ(two, 2);
}

TEST_F(Bus, NoEventComesAfterTheEndOfASubscription) {
  int got = 0;
  int kept = 0;
  int id = 0;
  Do([&] {
    id = m_client->Subscribe(
        "n", [&got](const Json::Value&) { ++got; }, nullptr);
    m_client->Subscribe(
        "n", [&kept](const Json::Value&) { ++kept; }, nullptr);
  });
  m_client->Unsubscribe(id);
  m_router->Emit("n", Json::Value(Json::objectValue));
  RunUntil([&] { return kept == 1; }, "the other subscriber's event");
  EXPECT_EQ(got, 0);
}

TEST_F(Bus, AnEventThatWaitsToBeDeliveredIsDroppedWithItsSubscription) {
  GMainContext* context = g_main_context_new();
  int got = 0;
  int passed = 0;
  int id = 0;
  Do([&] {
    id = m_client->Subscribe(
        "n",
        [&](const Json::Value&) {
          ++got;
          m_client->Unsubscribe(id);
        },
        context);
    m_client->Subscribe(
        "n", [&passed](const Json::Value&) { ++passed; }, nullptr);
  });
  m_router->Emit("n", Json::Value(Json::objectValue));
  m_router->Emit("n", Json::Value(Json::objectValue));
  RunUntil([&] { return passed == 2; }, "both events");
  while (g_main_context_iteration(context, FALSE) != FALSE) {
  }
  EXPECT_EQ(got, 1);
  g_main_context_unref(context);
}

TEST_F(Bus, AConnectionThatEndsIsTold) {
  std::vector<std::string> gone;
  std::string name;
  m_router->OnConnectionGone([&gone](const std::string& busName) { gone.push_back(busName); });
  m_router->Add("who", [&name](const Json::Value&, const Caller& caller) {
    name = caller.busName;
    return Json::Value();
  });
  Call("who", Json::Value());
  m_client.reset();
  RunUntil([&] { return !gone.empty(); }, "the end of the connection");
  EXPECT_EQ(gone.back(), name);
}

TEST_F(Bus, AClientIsToldWhenTheBusEnds) {
  bool closed = false;
  m_client->OnClosed([&closed] { closed = true; });
  m_bus.reset();
  RunUntil([&] { return closed; }, "the end of the bus");
}

TEST_F(Bus, WithoutATelevisionACallFailsAsNoTv) {
  m_router.reset();
  try {
    m_client->Call("x");
    FAIL() << "no error";
  } catch (const DeskError& e) {
    EXPECT_EQ(e.Code(), DeskError::NO_TV);
  }
}

TEST_F(Bus, ASecondTelevisionOnTheBusIsRefused) {
  EXPECT_THROW(BusRouter(m_bus->Address(), m_callers), DeskError);
}

TEST(BusClient, ADeskThatIsNotRunningIsNoTv) {
  const support::TempDir dir;
  try {
    BusClient::Open(DeskPaths(dir.Path()));
    FAIL() << "no error";
  } catch (const DeskError& e) {
    EXPECT_EQ(e.Code(), DeskError::NO_TV);
    EXPECT_NE(std::string(e.what()).find(dir.Path()), std::string::npos);
  }
}

TEST(BusClient, AnAddressWithoutABusIsNoTv) {
  try {
    BusClient("unix:path=/tmp/no-such-bus");
    FAIL() << "no error";
  } catch (const DeskError& e) {
    EXPECT_EQ(e.Code(), DeskError::NO_TV);
  }
}

TEST(BusDaemon, ARootThatIsTooLongForASocketGetsAShortOne) {
  const support::TempDir dir;
  const DeskPaths paths(dir / std::string(120, 'd'));
  support::MakeDirectories(paths.Run());
  support::MakeDirectories(paths.Log());
  std::string socket;
  {
    const BusDaemon bus(paths);
    socket = bus.Socket();
    EXPECT_LE(socket.size(), 100U);
    EXPECT_TRUE(support::Exists(socket));
    EXPECT_NO_THROW(BusClient::Open(paths));
  }
  EXPECT_FALSE(support::Exists(socket));
  EXPECT_FALSE(support::Exists(socket.substr(0, socket.rfind('/'))));
}

TEST(BusDaemon, ARootWithOddLettersWorks) {
  const support::TempDir dir;
  const DeskPaths paths(dir / "a b&<c>%d,e=f;g'h\"i\xc3\xa4");
  support::MakeDirectories(paths.Run());
  support::MakeDirectories(paths.Log());
  const BusDaemon bus(paths);
  EXPECT_NO_THROW(BusClient::Open(paths));
}

TEST(BusDaemon, TheSocketOfATvThatWasKilledIsTakenAway) {
  const support::TempDir dir;
  const DeskPaths paths(dir.Path());
  support::WriteFile(paths.BusSocket(), "");
  support::WriteFile(paths.Address(), BusDaemon::AddressOf(paths.BusSocket()) + "\n");
  BusDaemon::RemoveLeftovers(paths);
  EXPECT_FALSE(support::Exists(paths.BusSocket()));
  EXPECT_FALSE(support::Exists(paths.Address()));
}

// In a child, since the user cannot be changed back. Returns what Open() says there.
std::string OpenAsAnotherUser(const std::string& root) {
  std::array<int, 2> ends{};
  EXPECT_EQ(pipe(ends.data()), 0);
  const pid_t child = fork();
  if (child == 0) {
    std::string said = "opened";
    try {
      if (geteuid() == 0 && setuid(1) != 0) {
        _exit(1);
      }
      BusClient::Open(DeskPaths(root));
    } catch (const DeskError& error) {
      said = error.Code() + ": " + error.what();
    }
    _exit(write(ends[1], said.data(), said.size()) < 0 ? 1 : 0);
  }
  close(ends[1]);
  std::array<char, 512> text{};
  const ssize_t size = read(ends[0], text.data(), text.size());
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return {text.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0))};
}

TEST(BusClientOpen, ATvOfAnotherUserIsNamedWithItsOwner) {
  const support::TempDir dir;
  // Only root can become another user; other users cannot open root's home directory.
  const std::string root = geteuid() == 0 ? dir / "tv" : "/root/tv";
  EXPECT_THAT(OpenAsAnotherUser(root),
              testing::MatchesRegex("Failed: the TV in " + root +
                                    " belongs to (root|nobody): run tv as that user, .*--root"));
}

TEST(BusClientOpen, WithoutATvNoneIsRunning) {
  const support::TempDir dir;
  try {
    BusClient::Open(DeskPaths(dir / "tv"));
    FAIL() << "no error";
  } catch (const DeskError& error) {
    EXPECT_EQ(error.Code(), DeskError::NO_TV);
  }
}

}  // namespace
}  // namespace desk
