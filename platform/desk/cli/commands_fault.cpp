// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// tv reset, tv fail
#include <algorithm>
#include <ostream>

#include "desk/cli/commands.h"
#include "desk/cli/failure.h"
#include "desk/cli/platform_calls.h"
#include "desk/cli/session.h"
#include "desk/cli/table.h"
#include "desk/common/nearest.h"

namespace desk::cli {
namespace {

int Reset(Session& session, const Invocation& words) {
  const std::string kind = words.Text("KIND");
  if (kind != "factory" && kind != "service" && kind != "apps") {
    throw Failure(Exit::Usage,
                  "\"" + kind + "\" is not a kind of reset: give factory, service or apps");
  }
  session.Call("reset", Object({{"kind", kind}}));
  return 0;
}

int ListFaults(Session& session, const Invocation& words) {
  const Json::Value faults = session.Call("fault.list")["faults"];
  if (words.Json()) {
    session.PrintJson(faults);
    return 0;
  }
  Table table({"CALL", "RESULT", "TIMES", "AFTER"});
  for (const auto& fault : faults) {
    const bool always = fault["times"].asInt() == 0;
    table.Add({fault["call"].asString(),
               fault["result"].isNull() ? "as usual" : fault["result"].asString(),
               always ? "always" : fault["times"].asString(), fault["after"].asString()});
  }
  table.Print(session.Out());
  return 0;
}

bool Has(const std::vector<std::string>& calls, const std::string& call) {
  return std::find(calls.begin(), calls.end(), call) != calls.end();
}

void CheckCall(const std::string& call) {
  const auto& calls = PlatformCalls();
  if (Has(calls, call)) {
    return;
  }
  if (Has(CallsThatCannotFail(), call)) {
    throw Failure(Exit::Failed,
                  call +
                      " cannot fail: its caller frees the object whatever it returns; "
                      "use the call that creates the object");
  }
  const std::string near = Nearest(call, calls);
  throw Failure(Exit::NotFound, "there is no platform call \"" + call + "\": " +
                                    (near.empty() ? "`tv journal` shows those the daemon made"
                                                  : "did you mean " + near + "?"));
}

int Fail(Session& session, const Invocation& words) {
  if (words.Has("clear")) {
    if (words.Has("CALL")) {
      throw Failure(Exit::Usage, "--clear removes all faults: leave out the call");
    }
    session.Call("fault.clear");
    return 0;
  }
  if (!words.Has("CALL")) {
    return ListFaults(session, words);
  }
  CheckCall(words.Text("CALL"));
  Json::Value request =
      Object({{"call", words.Text("CALL")},
              {"times", static_cast<Json::Int>(words.Number("times", 0, 0, INT32_MAX))},
              {"after", static_cast<Json::Int>(words.Number("after", 0, 0, INT32_MAX))}});
  if (words.Has("RESULT")) {
    // The platform's headers write some negative results as unsigned numbers.
    request["result"] = static_cast<Json::Int>(words.Number("RESULT", 0, INT32_MIN, UINT32_MAX));
  }
  session.Call("fault.add", request);
  return 0;
}

}  // namespace

std::vector<Command> FaultCommands() {
  return {
      {"reset",
       "reset the TV",
       {{"KIND", "factory, service or apps"}},
       {},
       "factory and service increment a counter: the reset takes effect at the daemon's next "
       "start.\n"
       "apps makes the daemon forget its apps at once.",
       Reset},
      {"fail",
       "make a platform call of the daemon fail",
       {{"CALL", "name as in the header; without it the faults are listed",
         Argument::Count::Optional},
        {"RESULT", "what the call returns; default: its usual failure", Argument::Count::Optional}},
       {{"--times", "N", "fail N times; default: until --clear"},
        {"--after", "N", "let N calls pass first"},
        {"--clear", "", "remove all faults"},
        JsonOption()},
       "",
       Fail}};
}

}  // namespace desk::cli
