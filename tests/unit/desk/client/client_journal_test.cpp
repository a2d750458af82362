// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <FCAPI.h>
#include <FCTask.h>
#include <app_control.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/value.h>
#include <pthread.h>
#include <vconf.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "desk/common/faults.h"
#include "desk/common/json.h"
#include "support/files.h"
#include "television_stand_in.h"

namespace {

class ClientJournal : public testing::Test {
 protected:
  ClientJournal() {
    for (const char* name : {"TV_BUS", "TV_LOG", "TV_PREFIX"}) {
      unsetenv(name);
    }
    setenv("TV_LOG", (m_directory / "log").c_str(), 1);
    setenv("TV_ROLE", "daemon", 1);
    setenv("TV_JOURNAL", m_path.c_str(), 1);
    setenv("TV_FAULTS", (m_directory / "faults").c_str(), 1);
  }

  std::vector<Json::Value> Entries() const {
    std::vector<Json::Value> entries;
    std::istringstream lines(support::ReadFile(m_path));
    for (std::string line; std::getline(lines, line);) {
      entries.push_back(desk::ParseJson(line));
    }
    return entries;
  }
  std::string Line(std::size_t index) const {
    const auto entry = Entries().at(index);
    return entry["call"].asString() + desk::FormatJson(entry["args"]) + " = " +
           desk::FormatJson(entry["result"]);
  }

  support::TempDir m_directory;
  const std::string m_path = m_directory / "journal.jsonl";
  desk::FaultTable m_faults{m_directory / "faults", true};
};

TEST_F(ClientJournal, ACallIsALineWithItsArgumentsAndResult) {
  vconf_set_str("db/a", "say \"hi\"\n");
  EXPECT_EQ(Line(0), R"(vconf_set_str["db/a","say \"hi\"\n"] = -1)");
  EXPECT_EQ(Entries()[0]["seq"].asUInt64(), 1U);
  EXPECT_THAT(Entries()[0]["time"].asString(),
              testing::MatchesRegex("[0-9]+-[0-9]+-[0-9]+T[0-9]+:[0-9]+:[0-9]+\\.[0-9]+Z"));
}

TEST_F(ClientJournal, NullsCallbacksAndHandlesHaveTheirForms) {
  app_control_h control = nullptr;
  app_control_create(&control);
  app_control_set_app_id(control, nullptr);
  vconf_notify_key_changed(
      "k", [](keynode_t*, void*) {}, nullptr);
  EXPECT_EQ(Line(0), "app_control_create[1] = 0");
  EXPECT_EQ(Line(1), "app_control_set_app_id[1,null] = -22");
  EXPECT_EQ(Line(2), R"(vconf_notify_key_changed["k","callback",null] = -1)");
}

TEST_F(ClientJournal, OutputsFollowTheArguments) {
  TelevisionStandIn television;
  television.On("key.get", [](const Json::Value& request) {
    Json::Value reply;
    reply["found"] = true;
    reply["type"] = request["key"].asString() == "n" ? "int" : "string";
    reply["value"] = request["key"].asString() == "n" ? Json::Value(5) : Json::Value("five");
    return reply;
  });
  int number = 0;
  EXPECT_EQ(vconf_get_int("n", &number), 0);
  free(vconf_get_str("s"));
  EXPECT_EQ(Line(0), R"(vconf_get_int["n",5] = 0)");
  EXPECT_EQ(Line(1), R"(vconf_get_str["s"] = "five")");
}

TEST_F(ClientJournal, TheThreadIsNamed) {
  std::thread([] {
    pthread_setname_np(pthread_self(), "a-task");
    vconf_set_int("k", 1);
  }).join();
  EXPECT_EQ(Entries().at(0)["thread"].asString(), "a-task");
}

TEST_F(ClientJournal, TheFirstThreadIsMainWhateverTheProgramIsCalled) {
  pthread_setname_np(pthread_self(), "program");
  vconf_set_int("k", 1);
  EXPECT_EQ(Entries().at(0)["thread"].asString(), "main");
}

TEST_F(ClientJournal, NumbersContinueAfterTheGreatestOfTheFile) {
  support::WriteFile(m_path,
                     "{\"seq\":7,\"call\":\"b\"}\n{\"seq\":41,\"args\":[\"{\\\"seq\\\":99\"]}\n"
                     "{\"seq\":40,\"call\":\"a\"}\n");
  vconf_set_int("k", 1);
  EXPECT_EQ(Entries().at(3)["seq"].asUInt64(), 42U);
}

TEST_F(ClientJournal, CallsOfSeveralThreadsHaveDistinctNumbers) {
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      for (int k = 0; k < 50; ++k) {
        vconf_set_int("k", k);
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  std::vector<std::uint64_t> numbers;
  for (const auto& entry : Entries()) {
    numbers.push_back(entry["seq"].asUInt64());
  }
  std::vector<std::uint64_t> expected;
  for (std::uint64_t i = 1; i <= 200; ++i) {
    expected.push_back(i);
  }
  EXPECT_THAT(numbers, testing::UnorderedElementsAreArray(expected));
}

TEST_F(ClientJournal, AJournalThatCannotBeWrittenStopsNothing) {
  setenv("TV_JOURNAL", "/nonexistent/journal", 1);
  app_control_h control = nullptr;
  EXPECT_EQ(app_control_create(&control), 0);
  EXPECT_EQ(app_control_destroy(control), 0);
}

TEST_F(ClientJournal, AFaultIsTheResultAndTheWorkIsNotDone) {
  TelevisionStandIn television;
  m_faults.Add({"vconf_set_int", -5, 0, 1});
  EXPECT_EQ(vconf_set_int("k", 1), -5);
  EXPECT_EQ(Line(0), R"(vconf_set_int["k",1] = -5)");
  EXPECT_TRUE(television.Requests("key.set").empty());
  EXPECT_EQ(vconf_set_int("k", 1), 0);
  EXPECT_EQ(television.Requests("key.set").size(), 1U);
}

TEST_F(ClientJournal, AFaultWithoutAResultIsTheCallsUsualFailure) {
  m_faults.Add({"app_control_create", std::nullopt, 0, 1});
  app_control_h control = reinterpret_cast<app_control_h>(this);
  EXPECT_EQ(app_control_create(&control), APP_CONTROL_ERROR_OUT_OF_MEMORY);
  EXPECT_EQ(control, nullptr);
}

TEST_F(ClientJournal, ANegativeFaultMakesABoolFalse) {
  TelevisionStandIn television;
  television.On("channel.create",
                [](const Json::Value&) { return desk::ParseJson(R"({"ok":true})"); });
  FCOrvAppInfoAPI* records = FCAPI::GetOrvAppInfoAPI();
  ASSERT_NE(records, nullptr);
  m_faults.Add({"FCOrvAppInfoAPI::CreateAppInfo", -1, 0, 1});
  EXPECT_FALSE(records->CreateAppInfo("{}"));
  EXPECT_TRUE(records->CreateAppInfo("{}"));
}

class Task : public FCTask {
 public:
  ~Task() override { Task::Destroy(); }
};

TEST_F(ClientJournal, ATaskNamedLikeANumberIsStillAText) {
  vconf_set_int("the first platform call", 1);
  Task task;
  EXPECT_TRUE(task.Create("12", 1000, 4));
  EXPECT_EQ(Line(1), R"(FCTask::Create["12",1000,4] = true)");
}

TEST_F(ClientJournal, ANullHandleIsNull) {
  EXPECT_NE(app_control_destroy(nullptr), 0);
  EXPECT_EQ(Line(0), "app_control_destroy[null] = -22");
}

TEST_F(ClientJournal, TheTaskFrameworkIsRecordedAndFailsOnDemand) {
  vconf_set_int("the first platform call", 1);
  m_faults.Add({"FCTask::Create", std::nullopt, 1, 1});
  Task task;
  EXPECT_TRUE(task.Create("worker", 1000, 4));
  Task second;
  EXPECT_FALSE(second.Create("second", 1000, 4));
  EXPECT_EQ(Line(1), R"(FCTask::Create["worker",1000,4] = true)");
  EXPECT_EQ(Line(2), R"(FCTask::Create["second",1000,4] = false)");
}

}  // namespace
