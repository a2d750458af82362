// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <deque>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "desk/cli/commands.h"
#include "desk/cli/failure.h"
#include "desk/cli/session.h"
#include "desk/common/desk_error.h"
#include "desk/common/json.h"

namespace desk::cli {

/// What the TV answers, and what it was asked.
struct Script {
  std::map<std::string, Json::Value> answers;
  std::map<std::string, std::deque<Json::Value>> first;  ///< given before those, each once
  std::set<std::string> silent;                          ///< methods that are not answered in time
  std::vector<std::pair<std::string, std::string>> asked;  ///< method, request
  std::deque<std::pair<std::string, Json::Value>> events;  ///< handed out one by one by Wait()
  std::vector<std::chrono::milliseconds> limits;           ///< of the calls that had one
  int waits = 0;

  void Answer(const std::string& method, const std::string& json) {
    answers[method] = ParseJson(json);
  }
  void AnswerFirst(const std::string& method, const std::string& json) {
    first[method].push_back(ParseJson(json));
  }
  std::string Asked(const std::string& method) const {
    for (const auto& call : asked) {
      if (call.first == method) {
        return call.second;
      }
    }
    return "never asked for " + method;
  }
};

class ScriptedTv : public Television {
 public:
  explicit ScriptedTv(Script& script) : m_script(script) {}

  Json::Value Call(const std::string& method, const Json::Value& request) override {
    m_script.asked.emplace_back(method, FormatJson(request));
    auto& first = m_script.first[method];
    if (!first.empty()) {
      const Json::Value answer = first.front();
      first.pop_front();
      return answer;
    }
    const auto found = m_script.answers.find(method);
    return found == m_script.answers.end() ? Json::Value(Json::objectValue) : found->second;
  }
  Json::Value CallWithin(std::chrono::milliseconds most, const std::string& method,
                         const Json::Value& request) override {
    m_script.limits.push_back(most);
    if (m_script.silent.count(method) != 0) {
      throw DeskError(DeskError::TIMEOUT, "no answer");
    }
    return Call(method, request);
  }
  void Subscribe(const std::string& topic, EventFunction function) override {
    m_functions.emplace(topic, std::move(function));
  }
  void Wait(std::chrono::milliseconds most) override {
    ++m_script.waits;
    if (m_script.events.empty()) {
      if (most > std::chrono::seconds(1)) {
        throw DeskError(DeskError::NO_TV, "the TV has gone");
      }
      return;
    }
    const auto event = m_script.events.front();
    m_script.events.pop_front();
    if (event.first == "answer dump") {
      m_script.answers["dump"] = event.second;
    }
    const auto range = m_functions.equal_range(event.first);
    for (auto entry = range.first; entry != range.second; ++entry) {
      entry->second(event.second);
    }
  }

 private:
  Script& m_script;
  std::multimap<std::string, EventFunction> m_functions;
};

class CliCommands : public testing::Test {
 protected:
  CliCommands() {
    std::string name = (std::filesystem::temp_directory_path() / "cli-commands-XXXXXX").string();
    EXPECT_NE(mkdtemp(name.data()), nullptr);
    m_root = name;
  }
  ~CliCommands() override { std::filesystem::remove_all(m_root); }

  int Do(const std::vector<std::string>& words) {
    const Request request = ReadCommandLine(TvCommands(), words);
    Session session(DeskPaths(m_root), m_out, m_err, false,
                    [this](const DeskPaths&) { return std::make_unique<ScriptedTv>(m_script); });
    return request.command->run(session, request.words);
  }

  Failure Fails(const std::vector<std::string>& words) {
    try {
      Do(words);
    } catch (const Failure& failure) {
      return failure;
    }
    ADD_FAILURE() << "the command succeeded";
    return Failure(Exit::Done, "");
  }

  void WriteFile(const std::string& path, const std::string& content) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path) << content;
  }

  /// Makes the daemon's store, with a row for each package and its `variables`. The app ids of a
  /// package are PACKAGE.App and PACKAGE.Feed.
  void MakeStore(const std::vector<std::pair<std::string, std::string>>& rows) {
    const std::string path = DeskPaths(m_root).DaemonData() + "/appinfo.db";
    std::filesystem::create_directories(DeskPaths(m_root).DaemonData());
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
    std::string statements =
        "CREATE TABLE appinfo(package_id TEXT PRIMARY KEY, app_id TEXT, widget_id TEXT, service_id "
        "TEXT, version TEXT, variables TEXT);";
    for (const auto& [package, variables] : rows) {
      statements += "INSERT INTO appinfo VALUES('" + package + "','" + package + ".App','" +
                    package + ".App','" + package + ".Feed','1.0','" + variables + "');";
    }
    EXPECT_EQ(sqlite3_exec(db, statements.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(db);
  }

  std::string m_root;
  Script m_script;
  std::ostringstream m_out;
  std::ostringstream m_err;
};

}  // namespace desk::cli
