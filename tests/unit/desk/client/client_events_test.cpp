// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Events of the television: their order, their threads, and when none may be delivered.

#include <FCEMSProxy.h>
#include <TVServiceAPI.h>
#include <glib.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <message_port.h>
#include <package_manager.h>
#include <vconf.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "support/wait_for.h"
#include "television_stand_in.h"

namespace {

using testing::ElementsAre;

// Lets the main loop deliver events until the condition holds.
testing::AssertionResult RunUntil(const std::function<bool()>& condition, const std::string& what) {
  return support::WaitFor(
      [&] {
        while (g_main_context_iteration(nullptr, FALSE) == TRUE) {
        }
        return condition();
      },
      what);
}

Json::Value KeyEvent(const char* key, int seq, const Json::Value& value) {
  Json::Value event;
  event["key"] = key;
  event["seq"] = seq;
  event["type"] = value.isInt() ? "int" : value.isString() ? "string" : "none";
  event["value"] = value;
  return event;
}

class Notes {
 public:
  void Add(const std::string& note) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_notes.push_back(note);
  }
  std::vector<std::string> All() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_notes;
  }
  std::size_t Count() const { return All().size(); }

 private:
  mutable std::mutex m_mutex;
  std::vector<std::string> m_notes;
};

class ClientEvents : public testing::Test {
 protected:
  ClientEvents() {
    for (const char* name : {"TV_ROLE", "TV_FAULTS", "TV_LOG", "TV_JOURNAL"}) {
      unsetenv(name);
    }
    m_television.On("key.watch", [this](const Json::Value&) {
      Json::Value reply;
      reply["seq"] = m_watchSeq.load();
      return reply;
    });
  }

  // Events arrive in order: after this one, all earlier ones have arrived.
  void Fence() {
    static std::atomic<int> s_reached{0};
    static int s_sent = 0;
    const vconf_callback_fn onFence = [](keynode_t* node, void*) {
      s_reached = vconf_keynode_get_int(node);
    };
    ASSERT_EQ(vconf_notify_key_changed("fence", onFence, nullptr), 0);
    ++s_sent;
    m_television.Emit("key", KeyEvent("fence", 1000000 + s_sent, s_sent));
    ASSERT_TRUE(RunUntil([] { return s_reached == s_sent; }, "the fence"));
  }

  TelevisionStandIn m_television;
  std::atomic<int> m_watchSeq{0};
  Notes m_notes;
};

void NoteKey(keynode_t* node, void* data) {
  const char* text = vconf_keynode_get_str(node);
  static_cast<Notes*>(data)->Add(text == nullptr ? std::to_string(vconf_keynode_get_int(node))
                                                 : text);
}

void NotePackage(const char* type, const char* package, package_manager_event_type_e eventType,
                 package_manager_event_state_e state, int progress, package_manager_error_e error,
                 void* data) {
  static_cast<Notes*>(data)->Add(std::string(type) + " " + package + " " +
                                 std::to_string(eventType) + " " + std::to_string(state) + " " +
                                 std::to_string(progress) + " " + std::to_string(error));
}

Json::Value PackageEvent(const char* type, const char* state, int progress) {
  Json::Value event;
  event["type"] = type;
  event["package"] = "p";
  event["state"] = state;
  event["progress"] = progress;
  event["error"] = 0;
  event["kind"] = "wgt";
  return event;
}

TEST_F(ClientEvents, EverySetIsToldInOrderWithTheValueItBrought) {
  ASSERT_EQ(vconf_notify_key_changed("k", NoteKey, &m_notes), 0);
  m_television.Emit("key", KeyEvent("k", 1, "a"));
  m_television.Emit("key", KeyEvent("other", 2, "x"));
  m_television.Emit("key", KeyEvent("k", 3, "a"));
  m_television.Emit("key", KeyEvent("k", 4, 5));
  m_television.Emit("key", KeyEvent("k", 5, Json::Value()));
  Fence();
  EXPECT_THAT(m_notes.All(), ElementsAre("a", "a", "5", "0"));
}

TEST_F(ClientEvents, NothingIsToldBeforeTheMainLoopRuns) {
  ASSERT_EQ(vconf_notify_key_changed("k", NoteKey, &m_notes), 0);
  m_television.Emit("key", KeyEvent("k", 1, "a"));
  EXPECT_EQ(vconf_set_int("a round trip behind the event", 1), 0);
  EXPECT_EQ(m_notes.Count(), 0U);
  Fence();
  EXPECT_EQ(m_notes.Count(), 1U);
}

TEST_F(ClientEvents, ASetFromBeforeTheRegistrationIsNotTold) {
  m_watchSeq = 10;
  ASSERT_EQ(vconf_notify_key_changed("k", NoteKey, &m_notes), 0);
  m_television.Emit("key", KeyEvent("k", 10, "old"));
  m_television.Emit("key", KeyEvent("k", 11, "new"));
  Fence();
  EXPECT_THAT(m_notes.All(), ElementsAre("new"));
}

TEST_F(ClientEvents, ASetThatArrivesWhileTheRegistrationIsOnItsWayIsTold) {
  Notes marks;
  package_manager_h manager = nullptr;
  ASSERT_EQ(package_manager_create(&manager), 0);
  ASSERT_EQ(package_manager_set_event_cb(manager, NotePackage, &marks), 0);
  ASSERT_EQ(vconf_notify_key_changed("first", NoteKey, &m_notes), 0);
  std::atomic<bool> answer{false};
  m_television.On("key.watch", [&](const Json::Value&) {
    m_television.Emit("key", KeyEvent("k", 5, "before"));
    m_television.Emit("key", KeyEvent("k", 6, "after"));
    m_television.Emit("package", PackageEvent("install", "started", 0));
    EXPECT_TRUE(support::WaitFor([&] { return answer.load(); }, "the main loop's turn"));
    Json::Value reply;
    reply["seq"] = 5;
    return reply;
  });
  std::thread task([&] { EXPECT_EQ(vconf_notify_key_changed("k", NoteKey, &m_notes), 0); });
  // Both events are in the main loop before the registration knows its starting sequence number.
  EXPECT_TRUE(RunUntil([&] { return marks.Count() == 1; }, "what was sent behind the sets"));
  EXPECT_EQ(m_notes.Count(), 0U);
  answer = true;
  task.join();
  EXPECT_TRUE(RunUntil([&] { return m_notes.Count() > 0; }, "the set"));
  EXPECT_THAT(m_notes.All(), ElementsAre("after"));
}

TEST_F(ClientEvents, ARegistrationThatFailsHoldsNothingBack) {
  ASSERT_EQ(vconf_notify_key_changed("k", NoteKey, &m_notes), 0);
  m_television.On("key.watch", [&](const Json::Value&) -> Json::Value {
    m_television.Emit("key", KeyEvent("k", 6, "told"));
    throw std::runtime_error("no room");
  });
  const vconf_callback_fn other = [](keynode_t*, void*) { ADD_FAILURE() << "not registered"; };
  EXPECT_EQ(vconf_notify_key_changed("k", other, nullptr), -1);
  EXPECT_TRUE(RunUntil([&] { return m_notes.Count() > 0; }, "the set"));
  EXPECT_EQ(vconf_ignore_key_changed("k", other), -1);
}

TEST_F(ClientEvents, ASecondRegistrationOfAPairReplacesTheUserData) {
  Notes second;
  ASSERT_EQ(vconf_notify_key_changed("k", NoteKey, &m_notes), 0);
  ASSERT_EQ(vconf_notify_key_changed("k", NoteKey, &second), 0);
  m_television.Emit("key", KeyEvent("k", 1, "a"));
  Fence();
  EXPECT_EQ(m_notes.Count(), 0U);
  EXPECT_THAT(second.All(), ElementsAre("a"));
}

TEST_F(ClientEvents, AnIgnoredCallbackDoesNotBeginAgainForASetThatWaits) {
  ASSERT_EQ(vconf_notify_key_changed("k", NoteKey, &m_notes), 0);
  m_television.Emit("key", KeyEvent("k", 1, "a"));
  EXPECT_EQ(vconf_set_int("a round trip behind the event", 1), 0);
  EXPECT_EQ(vconf_ignore_key_changed("k", NoteKey), 0);
  EXPECT_EQ(vconf_ignore_key_changed("k", NoteKey), -1);
  Fence();
  EXPECT_EQ(m_notes.Count(), 0U);
}

TEST_F(ClientEvents, ACallbackMayIgnoreItselfAndRegisterAgain) {
  static int s_calls = 0;
  struct Again {
    static void Callback(keynode_t*, void* data) {
      ++s_calls;
      EXPECT_EQ(vconf_ignore_key_changed("k", Callback), 0);
      EXPECT_EQ(vconf_notify_key_changed("k", Callback, data), 0);
    }
  };
  ASSERT_EQ(vconf_notify_key_changed("k", Again::Callback, nullptr), 0);
  m_watchSeq = 2;
  m_television.Emit("key", KeyEvent("k", 1, "a"));
  m_television.Emit("key", KeyEvent("k", 2, "told to the old registration only"));
  m_television.Emit("key", KeyEvent("k", 3, "b"));
  Fence();
  EXPECT_EQ(s_calls, 2);
}

TEST_F(ClientEvents, ACallbackThatAnotherOneIgnoredIsNotCalledForTheSameSet) {
  const vconf_callback_fn first = [](keynode_t*, void* data) {
    EXPECT_EQ(vconf_ignore_key_changed("k", NoteKey), 0);
    static_cast<Notes*>(data)->Add("first");
  };
  ASSERT_EQ(vconf_notify_key_changed("k", first, &m_notes), 0);
  ASSERT_EQ(vconf_notify_key_changed("k", NoteKey, &m_notes), 0);
  m_television.Emit("key", KeyEvent("k", 1, "a"));
  Fence();
  EXPECT_THAT(m_notes.All(), ElementsAre("first"));
}

TEST_F(ClientEvents, TwoCallbacksOfOneKeyAreBothTold) {
  Notes second;
  const vconf_callback_fn other = [](keynode_t* node, void* data) { NoteKey(node, data); };
  ASSERT_EQ(vconf_notify_key_changed("k", NoteKey, &m_notes), 0);
  ASSERT_EQ(vconf_notify_key_changed("k", other, &second), 0);
  m_television.Emit("key", KeyEvent("k", 1, "a"));
  Fence();
  EXPECT_EQ(m_notes.Count(), 1U);
  EXPECT_EQ(second.Count(), 1U);
}

TEST_F(ClientEvents, PackageEventsBearTheNumbersOfTheHeader) {
  package_manager_h manager = nullptr;
  ASSERT_EQ(package_manager_create(&manager), 0);
  ASSERT_EQ(package_manager_set_event_cb(manager, NotePackage, &m_notes), 0);
  m_television.Emit("package", PackageEvent("install", "started", 0));
  m_television.Emit("package", PackageEvent("uninstall", "processing", 40));
  m_television.Emit("package", PackageEvent("update", "completed", 100));
  m_television.Emit("package", PackageEvent("install", "failed", 40));
  m_television.Emit("package", PackageEvent("paint", "started", 0));
  Fence();
  EXPECT_THAT(m_notes.All(),
              ElementsAre("wgt p 0 0 0 0", "wgt p 1 1 40 0", "wgt p 2 2 100 0", "wgt p 0 3 40 0"));
}

TEST_F(ClientEvents, APackageEventThatWaitsIsNotToldAfterTheCallbackWasUnset) {
  package_manager_h manager = nullptr;
  ASSERT_EQ(package_manager_create(&manager), 0);
  ASSERT_EQ(package_manager_set_event_cb(manager, NotePackage, &m_notes), 0);
  m_television.Emit("package", PackageEvent("install", "started", 0));
  EXPECT_EQ(vconf_set_int("a round trip behind the event", 1), 0);
  EXPECT_EQ(package_manager_unset_event_cb(manager), 0);
  Fence();
  EXPECT_EQ(m_notes.Count(), 0U);
  EXPECT_EQ(package_manager_destroy(manager), 0);
  EXPECT_NE(package_manager_destroy(manager), 0);
}

TEST_F(ClientEvents, AMessageBringsItsBundleSenderAndReplyPort) {
  m_television.On("port.register", [](const Json::Value&) {
    Json::Value reply;
    reply["id"] = 7;
    return reply;
  });
  const message_port_message_cb callback = [](int id, const char* app, const char* port,
                                              bool trusted, bundle* message, void* data) {
    auto* notes = static_cast<Notes*>(data);
    notes->Add(std::to_string(id) + " " + app + " " + (port == nullptr ? "(none)" : port) +
               (trusted ? " trusted" : ""));
    bundle_foreach(
        message,
        [](const char* key, const int, const bundle_keyval_t* kv, void* inner) {
          void* value = nullptr;
          std::size_t size = 0;
          bundle_keyval_get_basic_val(const_cast<bundle_keyval_t*>(kv), &value, &size);
          static_cast<Notes*>(inner)->Add(std::string(key) + "=" + static_cast<char*>(value));
        },
        notes);
  };
  ASSERT_EQ(message_port_register_local_port("commands", callback, &m_notes), 7);
  EXPECT_EQ(message_port_register_local_port("commands", callback, &m_notes), 7);
  EXPECT_EQ(m_television.Requests("port.register").size(), 1U);
  Json::Value event;
  event["port"] = "commands";
  event["id"] = 7;
  event["sender"] = "sports01.Feeder";
  event["bundle"][0]["key"] = "command";
  event["bundle"][0]["type"] = 0x401;
  event["bundle"][0]["value"] = "go";
  m_television.Emit("port", event);
  event["reply_port"] = "answers";
  m_television.Emit("port", event);
  Fence();
  EXPECT_THAT(m_notes.All(), ElementsAre("7 sports01.Feeder (none)", "command=go",
                                         "7 sports01.Feeder answers", "command=go"));
}

std::atomic<int> g_signals{0};
std::atomic<bool> g_onMainThread{false};
std::thread::id g_mainThread;
std::uint64_t g_payload = 0;

int OnSignal(int, const void* data, void*) {
  g_onMainThread = std::this_thread::get_id() == g_mainThread;
  std::memcpy(&g_payload, data, sizeof(g_payload));
  ++g_signals;
  return 1;
}

Json::Value Signal(int signal, const char* hex) {
  Json::Value event;
  event["signal"] = signal;
  event["data"] = hex;
  return event;
}

TEST_F(ClientEvents, SignalsWaitForTheMainLoopAndComeOnAThreadOfTheirOwn) {
  g_mainThread = std::this_thread::get_id();
  TCSignalSubscriber* subscriber = nullptr;
  ASSERT_EQ(TVServiceAPI::CreateSignalSubscriber(OnSignal, &subscriber), 0);
  subscriber->Subscribe(103, 0, 1, 0, 0);
  m_television.Emit("tvs", Signal(75, ""));
  m_television.Emit("tvs", Signal(103, "0201"));
  EXPECT_EQ(vconf_set_int("a round trip behind the event", 1), 0);
  EXPECT_EQ(g_signals, 0);
  ASSERT_TRUE(RunUntil([] { return g_signals == 1; }, "the signal"));
  EXPECT_FALSE(g_onMainThread);
  EXPECT_EQ(g_payload, 0x0102U);
}

TEST_F(ClientEvents, TheProxyCallsTheLastCallbackForSubscribedSignals) {
  static std::atomic<int> s_first{0};
  static std::atomic<int> s_last{0};
  FIIPCConnection* connection = FIIPCConnection::GetInstance();
  ASSERT_NE(connection, nullptr);
  FCEMSProxy::GetInstance(connection, [](int, void*) { return ++s_first; });
  FCEMSProxy* proxy =
      FCEMSProxy::GetInstance(connection, [](int signal, void*) { return s_last = signal; });
  ASSERT_NE(proxy, nullptr);
  ASSERT_TRUE(proxy->Subscribe(90014));
  m_television.Emit("ems", Signal(90013, ""));
  m_television.Emit("ems", Signal(90014, ""));
  ASSERT_TRUE(RunUntil([] { return s_last == 90014; }, "the signal"));
  EXPECT_EQ(s_first, 0);
}

TEST_F(ClientEvents, OnlyTheDaemonSaysThatItIsReady) {
  vconf_set_int("k", 1);
  Fence();
  EXPECT_TRUE(m_television.Requests("daemon.ready").empty());
}

class ClientAsDaemon : public ClientEvents {
 protected:
  ClientAsDaemon() { setenv("TV_ROLE", "daemon", 1); }
};

TEST_F(ClientAsDaemon, ItIsReadyOnceWhenTheMainLoopRuns) {
  vconf_set_int("k", 1);
  EXPECT_TRUE(m_television.Requests("daemon.ready").empty());
  Fence();
  Fence();
  EXPECT_EQ(m_television.Requests("daemon.ready").size(), 1U);
}

// Creates the television, with all its threads, in the process that is to end.
TEST(ClientOfADaemon, EndsTheProcessWhenTheTelevisionIsGone) {
  setenv("TV_ROLE", "daemon", 1);
  unsetenv("TV_LOG");
  EXPECT_EXIT(
      {
        TelevisionStandIn television;
        vconf_set_int("k", 1);
        television.CutOff();
        if (!RunUntil([] { return false; }, "the end of the process")) {
          std::abort();
        }
      },
      testing::ExitedWithCode(1), "the TV is gone: the daemon ends");
}

TEST_F(ClientEvents, AnotherProcessLivesOnWithFailingCalls) {
  EXPECT_EQ(vconf_set_int("k", 1), 0);
  m_television.CutOff();
  EXPECT_TRUE(RunUntil([] { return vconf_set_int("k", 1) == -1; }, "the failing call"));
}

}  // namespace
