// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// The commands of `tv` against a TV whose answers are scripted.
#include <gtest/gtest.h>

#include <filesystem>

#include "desk/cli/dump.h"
#include "scripted_tv.h"

namespace desk::cli {
namespace {

namespace fs = std::filesystem;

TEST_F(CliCommands, KeyGetPrintsWhatVconftoolPrints) {
  m_script.Answer("key.get", R"({"found":true,"type":"int","value":1})");
  EXPECT_EQ(Do({"key", "get", "db/x"}), 0);
  EXPECT_EQ(m_out.str(), "db/x, value = 1 (int)\n");
}

TEST_F(CliCommands, KeyGetPrintsTheRawValueAlone) {
  m_script.Answer("key.get", R"({"found":true,"type":"string","value":"a b"})");
  Do({"key", "get", "-r", "db/x"});
  EXPECT_EQ(m_out.str(), "a b\n");
}

TEST_F(CliCommands, KeyGetOfAMissingKeyIsNotFound) {
  m_script.Answer("key.get", R"({"found":false})");
  EXPECT_EQ(Fails({"key", "get", "db/x"}).Code(), Exit::NotFound);
}

TEST_F(CliCommands, KeySetKeepsTheTypeOfTheKey) {
  m_script.Answer("key.get", R"({"found":true,"type":"string","value":""})");
  Do({"key", "set", "db/x", "5"});
  EXPECT_EQ(m_script.Asked("key.set"), R"({"key":"db/x","type":"string","value":"5"})");
}

TEST_F(CliCommands, KeySetGivesANewKeyTheTypeThatItsValueLooksLike) {
  m_script.Answer("key.get", R"({"found":false})");
  Do({"key", "set", "db/x", "-5"});
  EXPECT_EQ(m_script.Asked("key.set"), R"({"key":"db/x","type":"int","value":-5})");
}

TEST_F(CliCommands, KeySetTakesAnEmptyText) {
  m_script.Answer("key.get", R"({"found":false})");
  Do({"key", "set", "db/x", ""});
  EXPECT_EQ(m_script.Asked("key.set"), R"({"key":"db/x","type":"string","value":""})");
}

TEST_F(CliCommands, KeySetWithATypeDoesNotAskForTheKey) {
  Do({"key", "set", "-t", "string", "db/x", "5"});
  EXPECT_EQ(m_script.asked.size(), 1U);
  EXPECT_EQ(m_script.Asked("key.set"), R"({"key":"db/x","type":"string","value":"5"})");
}

TEST_F(CliCommands, KeySetOfAnIntKeyRefusesAText) {
  m_script.Answer("key.get", R"({"found":true,"type":"int","value":1})");
  EXPECT_EQ(Fails({"key", "set", "db/x", "high"}).Code(), Exit::Usage);
  EXPECT_EQ(Fails({"key", "set", "db/x", "4294967296"}).Code(), Exit::Usage);
}

TEST_F(CliCommands, KeyListPrintsALineForEachKey) {
  m_script.Answer("key.list", R"({"keys":[{"key":"a","type":"int","value":1},
      {"key":"b","type":"string","value":"x\ny"}]})");
  Do({"key", "list"});
  EXPECT_EQ(m_out.str(), "a, value = 1 (int)\nb, value = x\\ny (string)\n");
}

TEST_F(CliCommands, KeyWatchPrintsTheSetsUnderItsPrefixUntilTheTvGoes) {
  m_script.events = {{"key", ParseJson(R"({"key":"db/a","type":"int","value":1})")},
                     {"key", ParseJson(R"({"key":"other","type":"int","value":1})")},
                     {"key", ParseJson(R"({"key":"db/a","type":"none"})")}};
  struct Gone : ScriptedTv {
    explicit Gone(Script& script) : ScriptedTv(script), m_own(script) {}
    void Wait(std::chrono::milliseconds most) override {
      if (m_own.events.empty()) {
        throw DeskError(DeskError::NO_TV, "the TV has gone");
      }
      ScriptedTv::Wait(most);
    }
    Script& m_own;
  };
  Session session(DeskPaths(m_root), m_out, m_err, false,
                  [this](const DeskPaths&) { return std::make_unique<Gone>(m_script); });
  const Request request = ReadCommandLine(TvCommands(), {"key", "watch", "db/"});
  EXPECT_THROW(request.command->run(session, request.words), DeskError);
  EXPECT_EQ(m_out.str(), "db/a, value = 1 (int)\ndb/a, removed\n");
}

TEST_F(CliCommands, PkgInstallSendsAnAbsolutePath) {
  WriteFile(m_root + "/a.wgt", "x");
  m_script.Answer("pkg.install", R"({"package":"p","version":"1.0"})");
  EXPECT_EQ(Do({"pkg", "install", m_root + "/a.wgt"}), 0);
  EXPECT_EQ(m_script.Asked("pkg.install"), R"({"file":")" + m_root + R"(/a.wgt","update":false})");
  EXPECT_EQ(m_out.str(), "installed p 1.0\n");
}

TEST_F(CliCommands, PkgInstallOfAMissingFileAsksNobody) {
  EXPECT_EQ(Fails({"pkg", "install", m_root + "/none.wgt"}).Code(), Exit::NotFound);
  EXPECT_TRUE(m_script.asked.empty());
}

TEST_F(CliCommands, PkgListIsATable) {
  m_script.Answer("pkg.list", R"({"packages":[{"id":"p","version":"1.0",
      "apps":[{"id":"p.a","component":"ui"},{"id":"p.s","component":"service"}]}]})");
  Do({"pkg", "list"});
  EXPECT_EQ(m_out.str(), "PACKAGE  VERSION  UI   SERVICE\np        1.0      p.a  p.s\n");
}

TEST_F(CliCommands, PkgInfoOfAnUnknownPackageIsNotFound) {
  m_script.Answer("pkg.info", R"({"found":false})");
  EXPECT_EQ(Fails({"pkg", "info", "p"}).Code(), Exit::NotFound);
}

TEST_F(CliCommands, AppLaunchPassesTheExtraData) {
  m_script.Answer("app.launch", R"({"result":0,"pid":7})");
  Do({"app", "launch", "p.a", "k=v", "--operation", "op"});
  EXPECT_EQ(m_script.Asked("app.launch"), R"({"app":"p.a","extra":{"k":"v"},"operation":"op"})");
  EXPECT_EQ(m_out.str(), "launched p.a, pid 7\n");
}

TEST_F(CliCommands, AppLaunchOfAnUnknownAppIsNotFound) {
  m_script.answers["app.launch"]["result"] = static_cast<int>(0xFEF00021);
  EXPECT_EQ(Fails({"app", "launch", "p.a"}).Code(), Exit::NotFound);
}

TEST_F(CliCommands, AppLaunchThatIsRejectedFails) {
  m_script.answers["app.launch"]["result"] = static_cast<int>(0xFEF00023);
  const Failure failure = Fails({"app", "launch", "p.a"});
  EXPECT_EQ(failure.Code(), Exit::Failed);
  EXPECT_NE(std::string(failure.what()).find("launch rejected"), std::string::npos);
}

TEST_F(CliCommands, AppKillOfAnUnknownAppIsNotFound) {
  m_script.Answer("app.info", R"({"found":false})");
  EXPECT_EQ(Fails({"app", "kill", "p.a"}).Code(), Exit::NotFound);
}

TEST_F(CliCommands, OpGetWithoutAnAppIsNotFound) {
  m_script.Answer("op.get", R"({"result":0})");
  EXPECT_EQ(Fails({"op", "get", "x"}).Code(), Exit::NotFound);
}

TEST_F(CliCommands, OpGetWithoutAnAppIsNotFoundInJsonToo) {
  m_script.Answer("op.get", R"({"result":0})");
  EXPECT_EQ(Fails({"op", "get", "x", "--json"}).Code(), Exit::NotFound);
  EXPECT_EQ(ParseJson(m_out.str()), ParseJson(R"({"result":0})"));
}

TEST_F(CliCommands, OpGetThatFailsExitsWithAnErrorInEveryFormat) {
  m_script.Answer("op.get", R"({"result":-22})");
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"op", "get", "x"}, {"op", "get", "x", "--json"}}) {
    const Failure failure = Fails(words);
    EXPECT_EQ(failure.Code(), Exit::Failed);
    EXPECT_STREQ(failure.what(), "cannot find out which app answers x (invalid parameter)");
  }
}

TEST_F(CliCommands, OpGetPrintsTheApp) {
  m_script.Answer("op.get", R"({"app":"a.b","result":0})");
  EXPECT_EQ(Do({"op", "get", "x"}), 0);
  EXPECT_EQ(m_out.str(), "a.b\n");
  EXPECT_EQ(Do({"op", "get", "x", "--json"}), 0);
}

TEST_F(CliCommands, TheShortNamesOfOperationsAreSpelledOut) {
  m_script.Answer("op.set", R"({"result":0})");
  Do({"op", "set", "epg", "a"});
  EXPECT_NE(m_script.Asked("op.set").find("tv/appcontrol/operation/epg"), std::string::npos);
}

TEST_F(CliCommands, AServiceIdOfAllOnesArrivesWhole) {
  Do({"service", "add", "18446744073709551615", "--package", "p"});
  EXPECT_EQ(m_script.Asked("service.add"), R"({"id":18446744073709551615,"package":"p"})");
}

TEST_F(CliCommands, AServiceIdWithZerosInFrontIsDecimal) {
  Do({"tune", "010"});
  EXPECT_EQ(m_script.Asked("tune"), R"({"id":10})");
}

TEST_F(CliCommands, ASignalCarriesItsData) {
  Do({"signal", "103", "--data", "0102"});
  EXPECT_EQ(m_script.Asked("signal"), R"({"data":"0102","signal":103})");
}

TEST_F(CliCommands, ASignalRefusesWhatIsNotHex) {
  EXPECT_EQ(Fails({"signal", "103", "--data", "xyz"}).Code(), Exit::Usage);
}

TEST_F(CliCommands, WasSetSendsOnlyWhatIsGiven) {
  Do({"was", "set", "p", "--gone"});
  EXPECT_EQ(m_script.Asked("was.set"), R"({"gone":true,"package":"p"})");
}

TEST_F(CliCommands, WasRemoveOfAnUnknownPackageIsNotFound) {
  m_script.Answer("was.remove", R"({"found":false})");
  EXPECT_EQ(Fails({"was", "remove", "p"}).Code(), Exit::NotFound);
}

TEST_F(CliCommands, PortSendGoesToTheDaemonUnlessToldOtherwise) {
  m_script.Answer("port.send", R"({"result":0})");
  EXPECT_EQ(Do({"port", "send", "port", "k=v"}), 0);
  EXPECT_EQ(m_script.Asked("port.send"),
            R"({"app":"com.kalmora.tv.orv-enabler","bundle":[{"key":"k","type":1025,"value":"v"}],)"
            R"("port":"port"})");
}

TEST_F(CliCommands, ANumberInAMessageIsDecimalUnlessItSays0x) {
  m_script.Answer("port.send", R"({"result":0})");
  Do({"port", "send", "port", "a:int=010", "b:int=0x10", "c:int=-1"});
  const Json::Value bundle = ParseJson(m_script.Asked("port.send"))["bundle"];
  EXPECT_EQ(bundle[0]["bytes"].asString(), "CgAAAA==");
  EXPECT_EQ(bundle[1]["bytes"].asString(), "EAAAAA==");
  EXPECT_EQ(bundle[2]["bytes"].asString(), "/////w==");
}

TEST_F(CliCommands, PortSendPrintsTheReplyToItsOwnPort) {
  m_script.Answer("port.send", R"({"result":0})");
  m_script.events = {{"port", ParseJson(R"({"port":"other","bundle":[{"key":"x","value":"y"}]})")},
                     {"port", ParseJson(R"({"port":"r","bundle":[{"key":"a","value":"b"}]})")}};
  EXPECT_EQ(Do({"port", "send", "p", "--from", "app", "--reply-port", "r"}), 0);
  EXPECT_EQ(m_out.str(), "a=b\n");
}

TEST_F(CliCommands, PortSendWithoutAReplyTimesOut) {
  m_script.Answer("port.send", R"({"result":0})");
  EXPECT_EQ(Fails({"port", "send", "p", "--reply-port", "r", "--timeout", "0"}).Code(),
            Exit::TimedOut);
}

TEST_F(CliCommands, PortSendToAClosedPortIsNotFound) {
  m_script.answers["port.send"]["result"] = -18612223;
  EXPECT_EQ(Fails({"port", "send", "p"}).Code(), Exit::NotFound);
}

TEST_F(CliCommands, ResetKnowsThreeKinds) {
  Do({"reset", "factory"});
  EXPECT_EQ(m_script.Asked("reset"), R"({"kind":"factory"})");
  EXPECT_EQ(Fails({"reset", "all"}).Code(), Exit::Usage);
}

TEST_F(CliCommands, FailWithoutAResultLeavesItOut) {
  Do({"fail", "vconf_get_int", "--after", "2"});
  EXPECT_EQ(m_script.Asked("fault.add"), R"({"after":2,"call":"vconf_get_int","times":0})");
}

TEST_F(CliCommands, FailTakesAResultAsTheHeadersWriteIt) {
  Do({"fail", "app_control_send_launch_request", "0xFEF00023", "--times", "1"});
  EXPECT_EQ(m_script.Asked("fault.add"), R"({"after":0,"call":"app_control_send_launch_request",)"
                                         R"("result":-17825757,"times":1})");
}

TEST_F(CliCommands, FailOfAnUnknownCallNamesTheNearest) {
  const Failure failure = Fails({"fail", "vconf_getint"});
  EXPECT_EQ(failure.Code(), Exit::NotFound);
  EXPECT_STREQ(failure.what(),
               "there is no platform call \"vconf_getint\": did you mean vconf_get_int?");
  EXPECT_TRUE(m_script.asked.empty());
}

TEST_F(CliCommands, ACallThatCannotFailIsReportedAndGetsNoFault) {
  const Failure failure = Fails({"fail", "FCTask::Destroy"});
  EXPECT_EQ(failure.Code(), Exit::Failed);
  EXPECT_EQ(std::string(failure.what()).find("FCTask::Destroy cannot fail"), 0U);
  EXPECT_TRUE(m_script.asked.empty());
}

TEST_F(CliCommands, FailClearRemovesAll) {
  Do({"fail", "--clear"});
  EXPECT_EQ(m_script.Asked("fault.clear"), "{}");
}

TEST_F(CliCommands, LogPrintsTheLinesThatAreWanted) {
  const std::string info = "11-21 00:00:01.250   123   124 I/orv-enabler: x";
  const std::string error = "11-21 00:00:01.250   123   124 E/orv-enabler: y";
  WriteFile(DeskPaths(m_root).DaemonLog(), info + "\n" + error + "\n");
  Do({"log", "-l", "E"});
  EXPECT_EQ(m_out.str(), error + "\n");
}

TEST_F(CliCommands, LogWithoutAFileIsNotFound) {
  EXPECT_EQ(Fails({"log"}).Code(), Exit::NotFound);
}

TEST_F(CliCommands, JournalIsSorted) {
  WriteFile(DeskPaths(m_root).Journal(),
            "{\"seq\":2,\"thread\":\"main\",\"call\":\"b\",\"args\":[],\"result\":0}\n"
            "{\"seq\":1,\"thread\":\"main\",\"call\":\"a\",\"args\":[],\"result\":0}\n");
  Do({"journal"});
  EXPECT_EQ(m_out.str(), "-    1 main   a() = 0\n-    2 main   b() = 0\n");
}

TEST_F(CliCommands, JournalAsJsonIsOneObjectALine) {
  WriteFile(DeskPaths(m_root).Journal(), "{\"seq\":1,\"call\":\"a\"}\n");
  Do({"journal", "--json"});
  EXPECT_EQ(m_out.str(), "{\"call\":\"a\",\"seq\":1}\n");
}

class CliJournal : public CliCommands {
 protected:
  void SetUp() override {
    WriteFile(DeskPaths(m_root).Journal(),
              Line(1, "00:00:00", "main", "vconf_get_int") +
                  Line(2, "00:05:00", "main", "vconf_get_str") +
                  Line(3, "00:10:00", "ORVInstaller", "vconf_get_int"));
  }
  static std::string Line(int seq, const std::string& time, const std::string& thread,
                          const std::string& call) {
    return "{\"seq\":" + std::to_string(seq) + ",\"time\":\"2026-11-21T" + time +
           ".000Z\",\"thread\":\"" + thread + "\",\"call\":\"" + call + "\"}\n";
  }
  /// The numbers of the entries that the command prints.
  std::string Numbers(std::vector<std::string> options) {
    options.insert(options.begin(), {"journal", "--json"});
    m_out.str("");
    Do(options);
    std::istringstream lines(m_out.str());
    std::string numbers;
    for (std::string line; std::getline(lines, line);) {
      numbers += ParseJson(line)["seq"].asString();
    }
    return numbers;
  }
};

TEST_F(CliJournal, OneCallIsPrinted) {
  EXPECT_EQ(Numbers({"--call", "vconf_get_int"}), "13");
  EXPECT_EQ(Numbers({"--call", "vconf_*"}), "123");
}

TEST_F(CliJournal, AMistypedCallNamesTheNearest) {
  const Failure failure = Fails({"journal", "--call", "vconf_getint"});
  EXPECT_EQ(failure.Code(), Exit::NotFound);
  EXPECT_STREQ(failure.what(),
               "there is no platform call \"vconf_getint\": did you mean vconf_get_int?");
}

TEST_F(CliJournal, OneThreadIsPrinted) {
  EXPECT_EQ(Numbers({"--thread", "ORVInstaller"}), "3");
}

TEST_F(CliJournal, SinceATimeIsPrinted) {
  EXPECT_EQ(Numbers({"--since", "2026-11-21T00:05:00Z"}), "23");
}

TEST_F(CliJournal, HowLongAgoIsCountedByTheTvsClock) {
  m_script.Answer("tv.status", R"({"clock":1795219920})");
  EXPECT_EQ(Numbers({"--since", "3m"}), "3");
}

TEST_F(CliCommands, StoreMarksARowWhoseJsonIsBroken) {
  MakeStore({{"good", R"({"orv_type":{"ch_feeder_custom":"x"}})"}, {"worse", "{\"orv"}});
  EXPECT_EQ(Do({"store"}), 0);
  EXPECT_NE(m_out.str().find("ch_feeder_custom\n"), std::string::npos) << m_out.str();
  EXPECT_NE(m_out.str().find("BROKEN JSON\n"), std::string::npos) << m_out.str();
  EXPECT_EQ(m_err.str(),
            "tv: the variables of worse are not a JSON object: the daemon stops loading its store "
            "at this row; install the package again\n");
}

const char* const APPS = R"({"apps":[{"id":"p.a","running":true,"pid":7,"status":"resume"},
    {"id":"p.s","running":true,"pid":8,"status":""},{"id":"p.x","running":false,"pid":0}]})";

TEST_F(CliCommands, AppStatusWithoutAStatePrintsTheStatus) {
  m_script.Answer("app.list", APPS);
  Do({"app", "status", "p.a"});
  Do({"app", "status", "p.s"});
  Do({"app", "status", "p.x"});
  EXPECT_EQ(m_out.str(), "running, pid 7, state resume\nrunning, pid 8\nnot running\n");
}

TEST_F(CliCommands, AppStatusOfAnUnknownAppIsNotFound) {
  m_script.Answer("app.list", APPS);
  EXPECT_EQ(Fails({"app", "status", "p.none"}).Code(), Exit::NotFound);
}

TEST_F(CliCommands, AppStatusWithAStateEntersIt) {
  Do({"app", "status", "p.a", "pause"});
  EXPECT_EQ(m_script.Asked("app.status"), R"({"app":"p.a","word":"pause"})");
  EXPECT_EQ(m_out.str(), "");
}

TEST_F(CliCommands, DumpHasExactlyItsMembers) {
  m_script.Answer("dump", R"({"daemon":{"running":true},"packages":[],"surplus":1})");
  Do({"dump", "--json"});
  const Json::Value dump = ParseJson(m_out.str());
  EXPECT_EQ(
      dump.getMemberNames(),
      (Json::Value::Members{"apps", "channels", "daemon", "files", "keys", "mounts", "operations",
                            "packages", "ports", "services", "store", "tuned", "was"}));
  EXPECT_TRUE(dump["daemon"]["running"].asBool());
  EXPECT_TRUE(dump["store"].isArray());
}

TEST_F(CliCommands, ADamagedStoreIsReportedBesideTheDump) {
  WriteFile(DeskPaths(m_root).DaemonData() + "/appinfo.db", std::string(4096, 'x'));
  Do({"dump"});
  EXPECT_EQ(m_err.str().find("tv: the store is damaged"), 0U);
  EXPECT_EQ(ParseJson(m_out.str())["store"], Json::Value(Json::arrayValue));
}

TEST_F(CliCommands, FilesAreNamedAsTheDaemonSeesThem) {
  const DeskPaths paths(m_root);
  WriteFile(paths.Tmp() + "/hbb_ready", "");
  WriteFile(paths.Tmp() + "/other", "");
  WriteFile(paths.DaemonData() + "/hbb_boost", "");
  WriteFile(paths.DaemonData() + "/reset_count_info.txt", "{}");
  WriteFile(paths.DaemonSharedData() + "/hbbtv_app/p/app_type_file.txt", "12345");
  fs::create_directories(paths.DaemonSharedData() + "/metadata/p");
  const std::string own = "/opt/usr/apps/com.kalmora.tv.orv-enabler/";
  EXPECT_EQ(FormatJson(ListFiles(paths)),
            "{\"" + own + "data/hbb_boost\":0,\"" + own + "data/reset_count_info.txt\":2,\"" + own +
                "shared/data/hbbtv_app/p/\":0,\"" + own +
                "shared/data/hbbtv_app/p/app_type_file.txt\":5,\"" + own +
                "shared/data/metadata/p/\":0,\"/tmp/hbb_ready\":0}");
}

TEST_F(CliCommands, WaitReturnsAtOnceWhenTheConditionHolds) {
  m_script.Answer("dump", R"({"tuned":1})");
  EXPECT_EQ(Do({"wait", ".tuned == 1"}), 0);
  EXPECT_EQ(m_script.waits, 0);
}

TEST_F(CliCommands, WaitLooksAgainAfterAnEvent) {
  m_script.Answer("dump", R"({"tuned":1})");
  m_script.events = {{"tvs", Json::Value()}, {"answer dump", ParseJson(R"({"tuned":2})")}};
  EXPECT_EQ(Do({"wait", ".tuned == 2", "--timeout", "60"}), 0);
  EXPECT_EQ(m_script.waits, 2);
}

TEST_F(CliCommands, WaitThatTimesOutSaysWhatIsMissing) {
  m_script.Answer("dump", R"({"tuned":1})");
  const Failure failure = Fails({"wait", ".tuned == 2", "--timeout", "0"});
  EXPECT_EQ(failure.Code(), Exit::TimedOut);
  EXPECT_STREQ(failure.what(), "timed out after 0 s: `.tuned == 2` does not hold: `.tuned` is 1");
}

TEST_F(CliCommands, WaitForAMisspeltMemberIsRefusedAtOnce) {
  m_script.Answer("dump", R"({"tuned":1})");
  const Failure failure = Fails({"wait", ".chanels", "--timeout", "60"});
  EXPECT_EQ(failure.Code(), Exit::Usage);
  EXPECT_STREQ(failure.what(), "the dump has no member chanels (did you mean channels?)");
  EXPECT_EQ(m_script.waits, 0);
}

TEST_F(CliCommands, WaitSeesTheFilesToo) {
  WriteFile(DeskPaths(m_root).Tmp() + "/hbb_ready", "");
  EXPECT_EQ(Do({"wait", ".files[\"/tmp/hbb_ready\"] == 0", "--timeout", "0"}), 0);
}

TEST_F(CliCommands, ExplainOfAnInstalledPackageAsksTheTv) {
  m_script.Answer("pkg.info", R"({"found":true,"id":"p","version":"1","apps":[{"id":"p.a",
      "component":"ui","metadata":[{"key":"http://x","value":"1"}]}]})");
  EXPECT_EQ(Do({"explain", "p"}), 0);
  EXPECT_NE(m_out.str().find("channel-bound app    no"), std::string::npos);
}

TEST_F(CliCommands, ExplainOfSomethingUnknownIsNotFound) {
  m_script.Answer("pkg.info", R"({"found":false})");
  EXPECT_EQ(Fails({"explain", "p"}).Code(), Exit::NotFound);
  EXPECT_EQ(Fails({"explain", "./p.wgt"}).Code(), Exit::NotFound);
}

TEST_F(CliCommands, WithoutATvTheExitCodeIsThree) {
  std::ostringstream out;
  std::ostringstream err;
  EXPECT_EQ(RunTv({"--root", m_root, "status"}, out, err, false), 3);
  EXPECT_EQ(err.str().find("tv: no TV answers"), 0U);
}

TEST_F(CliCommands, AFailureIsOneLine) {
  std::ostringstream out;
  std::ostringstream err;
  EXPECT_EQ(RunTv({"--root", m_root, "key", "get", "a\nb", "c\nd"}, out, err, false), 2);
  const std::string text = err.str();
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1);
}

}  // namespace
}  // namespace desk::cli
