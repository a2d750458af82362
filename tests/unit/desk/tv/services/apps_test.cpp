// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/apps.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <filesystem>

#include "app_control.h"
#include "app_manager.h"
#include "memory_router.h"
#include "package_maker.h"

namespace desk::tv {
namespace {

using Texts = std::vector<std::string>;

class AppsTest : public ::testing::Test {
 protected:
  AppsTest() : m_paths(m_directory.Path() + "/tv") {
    for (const std::string& path : {m_paths.Log(), m_paths.Db()}) {
      std::filesystem::create_directories(path);
    }
    m_catalogue = std::make_unique<Catalogue>(m_paths.PackagesDb());
    m_store = std::make_unique<TvStore>(m_paths.TvState());
    PowerOn();
    Script(m_directory.Path() + "/tools/desk-webapp", "echo \"$@\"; exec sleep 1000");
  }
  ~AppsTest() override { m_apps.reset(); }

  void PowerOn() {
    m_apps.reset();
    const Needs needs{m_router,
                      m_paths,
                      m_callers,
                      "unix:path=/the/bus",
                      m_directory.Path() + "/tools",
                      [this](const std::string& key, const std::string& value) {
                        m_keys.push_back(key + "=" + value);
                      },
                      [this](const std::string& line) { m_lines.push_back(line); }};
    m_apps = std::make_unique<Apps>(needs, *m_catalogue, *m_store);
  }
  static void Script(const std::string& path, const std::string& body) {
    WriteFile(path, "#!/bin/sh\n" + body + "\n");
    chmod(path.c_str(), 0755);
  }
  // A package with a UI application and a service that runs the script.
  void Install(const std::string& package, const std::string& script = "exec sleep 1000") {
    m_catalogue->Put(ParseConfig(Config(UiApp(package) + MetadataElement("k", "v") +
                                        Service(package + ".Feed", "bin/feed"))));
    Script(m_paths.Package(package) + "/res/wgt/bin/feed", script);
  }
  Json::Value Call(const std::string& method, const std::string& app) {
    Json::Value request;
    request["app"] = app;
    return m_router.Call(method, request);
  }
  Json::Value Launch(const std::string& app, bool background = false) {
    Json::Value request;
    request["app"] = app;
    if (background) {
      request["extra"][ORV_LAUNCH_MODE_KEY] = "backgroundAtStartup";
    }
    return m_router.Call("app.launch", request);
  }
  pid_t LaunchedPid(const std::string& app) {
    const Json::Value answer = Launch(app);
    EXPECT_EQ(answer["result"].asInt(), 0);
    return answer["pid"].asInt();
  }
  std::string Log(const std::string& app) { return ReadFile(m_paths.Log() + "/" + app + ".log"); }
  bool Running(const std::string& app) { return Call("app.info", app)["running"].asBool(); }
  Texts States(const std::string& app) {
    Texts states;
    for (const auto& event : m_router.Events("app")) {
      if (event.body["id"] == Json::Value(app) && event.to.empty()) {
        const std::string word = event.body["word"].asString();
        states.push_back(event.body["state"].asString() + (word.empty() ? "" : " " + word));
      }
    }
    return states;
  }
  void Entered(const std::string& app, const std::string& word) {
    Json::Value request;
    request["word"] = word;
    Caller caller;
    caller.kind = Caller::Kind::App;
    caller.appId = app;
    caller.busName = ":1." + app;
    m_router.Call("app.entered", request, caller);
  }
  // Requests that were sent to web apps: connection and state.
  Texts StateRequests() {
    Texts requests;
    for (const auto& event : m_router.Events("app")) {
      if (!event.to.empty()) {
        EXPECT_EQ(event.body["state"].asString(), "enter");
        requests.push_back(event.to + " " + event.body["word"].asString());
      }
    }
    return requests;
  }
  std::string StatusError(const std::string& app, const std::string& word) {
    Json::Value request;
    request["app"] = app;
    request["word"] = word;
    try {
      m_router.Call("app.status", request);
    } catch (const DeskError& error) {
      return error.Code() + ": " + error.what();
    }
    return "done";
  }

  TemporaryDirectory m_directory;
  DeskPaths m_paths;
  MemoryRouter m_router;
  CallerTable m_callers;
  Texts m_keys;
  Texts m_lines;
  std::unique_ptr<Catalogue> m_catalogue;
  std::unique_ptr<TvStore> m_store;
  std::unique_ptr<Apps> m_apps;
};

TEST_F(AppsTest, DescribesAnApp) {
  Install("known00001");
  const Json::Value ui = Call("app.info", "known00001.App");
  EXPECT_TRUE(ui["found"].asBool());
  EXPECT_EQ(ui["package"], "known00001");
  EXPECT_EQ(ui["component"], "ui");
  EXPECT_EQ(ui["metadata"][0]["key"], "k");
  EXPECT_FALSE(ui["running"].asBool());
  const Json::Value service = Call("app.info", "known00001.Feed");
  EXPECT_EQ(service["component"], "service");
  EXPECT_EQ(service["program"].asString(), m_paths.Package("known00001") + "/res/wgt/bin/feed");
  EXPECT_FALSE(Call("app.info", "known00001.Other")["found"].asBool());
  EXPECT_EQ(m_router.Call("app.list")["apps"].size(), 2u);
}

TEST_F(AppsTest, AServiceRunsItsProgramInItsOwnDirectoryAndName) {
  Install("serve00001",
          "echo \"$TV_APP_ID $TV_ROLE $TV_ROOT $TV_BUS\"; pwd; command -v desk-webapp; "
          "exec sleep 1000");
  const pid_t pid = LaunchedPid("serve00001.Feed");
  RunUntil("the service's output",
           [&] { return Log("serve00001.Feed").find("desk-webapp\n") != std::string::npos; });
  EXPECT_EQ(Log("serve00001.Feed"), "serve00001.Feed app " + m_paths.Root() +
                                        " unix:path=/the/bus\n" + m_paths.Package("serve00001") +
                                        "/res/wgt\n" + m_directory.Path() + "/tools/desk-webapp\n");
  EXPECT_EQ(m_callers.Identify(pid).appId, "serve00001.Feed");
  EXPECT_EQ(Call("app.info", "serve00001.Feed")["pid"].asInt(), pid);
}

TEST_F(AppsTest, AProcessFindsTheOperationAndTheExtraDataOfItsLaunch) {
  Install("extra00001", "printf '%s\\n' \"$TV_OPERATION\" \"$TV_DATA\"; exec sleep 1000");
  Json::Value request;
  request["app"] = "extra00001.Feed";
  request["operation"] = "http://example.org/view";
  request["extra"]["b"] = "say \"hi\"\n";
  request["extra"]["a"] = "\xe2\x82\xac";
  m_router.Call("app.launch", request);
  const std::string wanted =
      "http://example.org/view\n{\"a\":\"\xe2\x82\xac\",\"b\":\"say \\\"hi\\\"\\n\"}\n";
  RunUntil("the service's output", [&] { return Log("extra00001.Feed").size() >= wanted.size(); });
  EXPECT_EQ(Log("extra00001.Feed"), wanted);
}

TEST_F(AppsTest, ALaunchWithoutThemIsTheDefaultOperationWithAnEmptyObject) {
  // A television that was itself started by an app of another one.
  setenv("TV_OPERATION", "another's", 1);
  setenv("TV_DATA", "another's", 1);
  Script(m_directory.Path() + "/tools/desk-webapp",
         "echo \"$TV_OPERATION $TV_DATA\"; exec sleep 1000");
  Install("extra00002");
  Launch("extra00002.App");
  RunUntil("its output", [&] { return !Log("extra00002.App").empty(); });
  EXPECT_EQ(Log("extra00002.App"), std::string(APP_CONTROL_OPERATION_DEFAULT) + " {}\n");
}

TEST_F(AppsTest, AProcessOfItsOwnBelongsToTheAppToo) {
  Install("child00001", "sleep 1000 & echo $!; wait");
  LaunchedPid("child00001.Feed");
  RunUntil("the child's pid", [&] { return !Log("child00001.Feed").empty(); });
  const pid_t child = std::stoi(Log("child00001.Feed"));
  EXPECT_EQ(m_callers.Identify(child).appId, "child00001.Feed");
  Call("app.kill", "child00001.Feed");
  RunUntil("the end of the child", [&] { return kill(child, 0) != 0; });
}

TEST_F(AppsTest, ARunningAppIsNotStartedAgain) {
  Install("again00001");
  const pid_t pid = LaunchedPid("again00001.Feed");
  EXPECT_EQ(LaunchedPid("again00001.Feed"), pid);
  EXPECT_EQ(States("again00001.Feed"), Texts{"launched"});
}

TEST_F(AppsTest, AnAppWhoseProcessIsEndingIsStartedAgain) {
  Install("again00002");
  const pid_t web = LaunchedPid("again00002.App");
  Entered("again00002.App", "quit");
  const pid_t again = LaunchedPid("again00002.App");
  EXPECT_NE(again, web);
  Entered("again00002.App", "preload");
  Call("app.kill", "again00002.App");
  EXPECT_NE(LaunchedPid("again00002.App"), again);
  EXPECT_EQ(States("again00002.App"), (Texts{"launched", "status quit", "killed", "launched",
                                             "status preload", "killed", "launched"}));
  EXPECT_EQ(m_keys, (Texts{"rtc/memory/WebApp/again00002.App=quit",
                           "rtc/memory/WebApp/again00002.App=preload",
                           "rtc/memory/WebApp/again00002.App=destroy"}));
  RunUntil("the watches of the two", [&] {
    return m_callers.Identify(web).appId.empty() && m_callers.Identify(again).appId.empty();
  });
  EXPECT_TRUE(Running("again00002.App"));
}

TEST_F(AppsTest, AnUnknownAppIsNotFoundAndABrokenOneFails) {
  EXPECT_EQ(Launch("unknown.App")["result"].asInt(), APP_CONTROL_ERROR_APP_NOT_FOUND);
  Install("broken0001");
  std::filesystem::remove(m_paths.Package("broken0001") + "/res/wgt/bin/feed");
  EXPECT_EQ(Launch("broken0001.Feed")["result"].asInt(), APP_CONTROL_ERROR_LAUNCH_FAILED);
  ASSERT_EQ(m_lines.size(), 1u);
  EXPECT_EQ(m_lines[0].find("cannot launch broken0001.Feed: "), 0u);
  EXPECT_FALSE(Running("broken0001.Feed"));
}

TEST_F(AppsTest, AScriptWithCarriageReturnsIsNamedAsTheReason) {
  Install("crlf000001");
  WriteFile(m_paths.Package("crlf000001") + "/res/wgt/bin/feed", "#!/bin/sh\r\nexit\r\n");
  chmod((m_paths.Package("crlf000001") + "/res/wgt/bin/feed").c_str(), 0755);
  Launch("crlf000001.Feed");
  EXPECT_NE(
      m_lines.back().find("its interpreter `/bin/sh\\r` does not exist. Convert the line ends"),
      std::string::npos)
      << m_lines.back();
}

TEST_F(AppsTest, AnAppThatEndsByItselfIsReported) {
  Install("ends000001", "exit 3");
  const std::string pid = std::to_string(LaunchedPid("ends000001.Feed"));
  RunUntil("its end", [&] { return !Running("ends000001.Feed"); });
  EXPECT_EQ(States("ends000001.Feed"), (Texts{"launched", "exited"}));
  EXPECT_EQ(m_lines, (Texts{"ends000001.Feed launched: pid " + pid + ", its output from byte 0",
                            "ends000001.Feed ended: exit status 3"}));
  EXPECT_TRUE(m_keys.empty());
}

TEST_F(AppsTest, TerminateAsksAndKillDoesNot) {
  Install("stubborn01", "trap '' TERM; echo ready; while :; do sleep 0.1; done");
  LaunchedPid("stubborn01.Feed");
  RunUntil("the trap", [&] { return !Log("stubborn01.Feed").empty(); });
  EXPECT_EQ(Call("app.terminate", "stubborn01.Feed")["result"].asInt(), 0);
  EXPECT_TRUE(Running("stubborn01.Feed"));
  EXPECT_EQ(Call("app.kill", "stubborn01.Feed")["result"].asInt(), 0);
  RunUntil("its end", [&] { return !Running("stubborn01.Feed"); });
  EXPECT_EQ(States("stubborn01.Feed"), (Texts{"launched", "killed"}));
}

TEST_F(AppsTest, TerminateDistinguishesStoppedAndUnknownApps) {
  Install("still00001");
  EXPECT_EQ(Call("app.terminate", "still00001.Feed")["result"].asInt(),
            APP_MANAGER_ERROR_APP_NO_RUNNING);
  EXPECT_EQ(Call("app.terminate", "unknown.App")["result"].asInt(), APP_MANAGER_ERROR_NO_SUCH_APP);
}

TEST_F(AppsTest, AUiApplicationIsRunByTheWebRuntime) {
  Install("web0000001");
  ASSERT_EQ(Launch("web0000001.App", true)["result"].asInt(), 0);
  RunUntil("its output", [&] { return !Log("web0000001.App").empty(); });
  EXPECT_EQ(Log("web0000001.App"), "web0000001.App --background\n");
  Install("web0000002");
  ASSERT_EQ(Launch("web0000002.App")["result"].asInt(), 0);
  RunUntil("its output", [&] { return !Log("web0000002.App").empty(); });
  EXPECT_EQ(Log("web0000002.App"), "web0000002.App --foreground\n");
}

TEST_F(AppsTest, TheStateOfAWebAppGoesToItsKey) {
  Install("word000001");
  Launch("word000001.App");
  Entered("word000001.App", "init");
  Entered("word000001.App", "load");
  EXPECT_EQ(m_keys, (Texts{"rtc/memory/WebApp/word000001.App=init",
                           "rtc/memory/WebApp/word000001.App=load"}));
  EXPECT_EQ(States("word000001.App"), (Texts{"launched", "status init", "status load"}));
  EXPECT_EQ(m_apps->Dump()[0]["status"], "load");
}

TEST_F(AppsTest, OnlyARunningWebAppEntersStates) {
  Install("word000001");
  EXPECT_THROW(Entered("word000001.App", "init"), DeskError);
  Json::Value request;
  request["word"] = "init";
  EXPECT_THROW(m_router.Call("app.entered", request), DeskError);
  Launch("word000001.App");
  EXPECT_THROW(Entered("word000001.App", "dance"), DeskError);
  EXPECT_TRUE(m_keys.empty());
}

TEST_F(AppsTest, AStateRequestReturnsWhenTheStateIsEntered) {
  Install("state00001");
  Launch("state00001.App");
  Entered("state00001.App", "init");
  Json::Value request;
  request["app"] = "state00001.App";
  request["word"] = "pause";
  const auto done = m_router.Begin("app.status", request);
  EXPECT_EQ(StateRequests(), Texts{":1.state00001.App pause"});
  Entered("state00001.App", "load");
  EXPECT_FALSE(done());
  Entered("state00001.App", "pause");
  EXPECT_TRUE(done());
}

TEST_F(AppsTest, AStateRequestWaitsForTheAppsConnection) {
  Install("state00001");
  Launch("state00001.App");
  Json::Value request;
  request["app"] = "state00001.App";
  request["word"] = "init";
  const auto done = m_router.Begin("app.status", request);
  EXPECT_EQ(StateRequests(), Texts{});
  Entered("state00001.App", "init");
  EXPECT_EQ(StateRequests(), Texts{":1.state00001.App init"});
  EXPECT_FALSE(done()) << "the first status was not the requested one";
  Entered("state00001.App", "init");
  EXPECT_TRUE(done());
}

TEST_F(AppsTest, AStateRequestFailsWhenTheAppEnds) {
  Install("state00001");
  Launch("state00001.App");
  Json::Value request;
  request["app"] = "state00001.App";
  request["word"] = "pause";
  const auto answer = m_router.BeginCall("app.status", request);
  Call("app.kill", "state00001.App");
  RunUntil("the answer", [&] { return answer->Done(); });
  try {
    answer->Take();
    FAIL() << "answered as if the state had been entered";
  } catch (const DeskError& error) {
    EXPECT_EQ(error.Code(), "Failed");
    EXPECT_STREQ(error.what(), "state00001.App ended before it entered the state");
  }
}

TEST_F(AppsTest, AnInvalidStateRequestIsRefused) {
  Install("state00001");
  EXPECT_EQ(StatusError("state00001.App", "pause"),
            "Failed: state00001.App is not running: use `tv app launch`");
  EXPECT_EQ(StatusError("state00001.Feed", "pause"),
            "Failed: state00001.Feed is not a web app: only web apps have states");
  EXPECT_EQ(StatusError("unknown.App", "pause").substr(0, 9), "NotFound:");
  EXPECT_EQ(StatusError("state00001.App", "dance").substr(0, 6), "Usage:");
}

TEST_F(AppsTest, ALaunchBringsARunningWebAppToTheFront) {
  Install("front00001");
  Launch("front00001.App", true);
  Entered("front00001.App", "init");
  Launch("front00001.App", true);
  EXPECT_EQ(StateRequests(), Texts{});
  Launch("front00001.App");
  EXPECT_EQ(StateRequests(), Texts{":1.front00001.App resume"});
}

TEST_F(AppsTest, AWebAppThatIsTakenAwayIsDestroyed) {
  Install("taken00001");
  Launch("taken00001.App");
  Entered("taken00001.App", "preload");
  Call("app.kill", "taken00001.App");
  RunUntil("its end", [&] { return !Running("taken00001.App"); });
  EXPECT_EQ(m_keys.back(), "rtc/memory/WebApp/taken00001.App=destroy");
  EXPECT_EQ(States("taken00001.App").back(), "killed");
}

TEST_F(AppsTest, AWebAppThatQuitKeepsTheStateQuit) {
  Install("quits00001");
  const pid_t pid = LaunchedPid("quits00001.App");
  Entered("quits00001.App", "quit");
  kill(pid, SIGTERM);
  RunUntil("its end", [&] { return !Running("quits00001.App"); });
  EXPECT_EQ(m_keys.back(), "rtc/memory/WebApp/quits00001.App=quit");
}

TEST_F(AppsTest, ADeclaredProgramIsLaunchedLikeAnApp) {
  const std::string program = m_directory.Path() + "/first screen";
  Script(program, "echo \"$TV_APP_ID\"; exec sleep 1000");
  Json::Value request;
  request["app"] = "com.example.first";
  request["program"] = program;
  m_router.Call("app.add", request);
  EXPECT_EQ(Call("app.info", "com.example.first")["component"], "program");
  LaunchedPid("com.example.first");
  RunUntil("its output", [&] { return Log("com.example.first") == "com.example.first\n"; });
  m_store = std::make_unique<TvStore>(m_paths.TvState());
  PowerOn();
  EXPECT_TRUE(Call("app.info", "com.example.first")["found"].asBool());
}

TEST_F(AppsTest, ADeclarationNeedsAFreeIdAndAProgram) {
  Install("taken00001");
  const auto error = [&](const std::string& app, const std::string& program) {
    Json::Value request;
    request["app"] = app;
    request["program"] = program;
    try {
      m_router.Call("app.add", request);
    } catch (const DeskError& refused) {
      return refused.Code();
    }
    return std::string("done");
  };
  EXPECT_EQ(error("taken00001.App", "/bin/sh"), "Failed");
  EXPECT_EQ(error("a/b", "/bin/sh"), "Usage");
  EXPECT_EQ(error("", "/bin/sh"), "Usage");
  EXPECT_EQ(error(DeskPaths::DAEMON_ID, "/bin/sh"), "Usage");
  EXPECT_EQ(error("free.App", "/etc/passwd"), "Failed");
  EXPECT_EQ(error("free.App", "bin/sh"), "Failed");
  EXPECT_EQ(error("free.App", "/bin/sh"), "done");
}

TEST_F(AppsTest, TheProcessesOfAPackageAreEndedWithIt) {
  Install("goes000001");
  Install("stays00001");
  const pid_t service = LaunchedPid("goes000001.Feed");
  const pid_t web = LaunchedPid("goes000001.App");
  LaunchedPid("stays00001.Feed");
  Entered("goes000001.App", "preload");
  m_apps->EndPackage("goes000001");
  // At once: the event of the package follows the events of its apps.
  EXPECT_FALSE(Running("goes000001.Feed"));
  EXPECT_FALSE(Running("goes000001.App"));
  EXPECT_EQ(States("goes000001.Feed"), (Texts{"launched", "killed"}));
  EXPECT_EQ(m_keys.back(), "rtc/memory/WebApp/goes000001.App=destroy");
  EXPECT_TRUE(Running("stays00001.Feed"));
  RunUntil("their watches", [&] {
    return m_callers.Identify(service).appId.empty() && m_callers.Identify(web).appId.empty();
  });
  EXPECT_EQ(States("goes000001.App"), (Texts{"launched", "status preload", "killed"}));
}

TEST_F(AppsTest, PowerOffEndsAllWithoutEvents) {
  Install("off0000001");
  const pid_t service = LaunchedPid("off0000001.Feed");
  const pid_t web = LaunchedPid("off0000001.App");
  Entered("off0000001.App", "resume");
  const std::size_t told = m_router.Events("app").size();
  m_apps->EndAll();
  EXPECT_FALSE(Running("off0000001.Feed"));
  RunUntil("the end of the processes", [&] { return kill(service, 0) != 0 && kill(web, 0) != 0; });
  EXPECT_EQ(m_callers.Identify(service).appId, "");
  EXPECT_EQ(m_router.Events("app").size(), told);
  EXPECT_EQ(m_keys, Texts{"rtc/memory/WebApp/off0000001.App=resume"});
}

}  // namespace
}  // namespace desk::tv
