// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// tv explain
#include <filesystem>
#include <ostream>

#include "desk/checks/package_reader.h"
#include "desk/cli/commands.h"
#include "desk/cli/explain_effects.h"
#include "desk/cli/explain_state.h"
#include "desk/cli/explain_text.h"
#include "desk/cli/failure.h"
#include "desk/cli/session.h"

namespace desk::cli {
namespace {

namespace fs = std::filesystem;

ReadablePackage ReadNamed(Session& session, const std::string& name, bool& installed) {
  std::error_code error;
  installed = false;
  if (fs::is_regular_file(name, error)) {
    return ReadArchive(name);
  }
  if (name.find('/') != std::string::npos || fs::path(name).extension() == ".wgt") {
    throw Failure(Exit::NotFound, "there is no file " + name + ": give a .wgt or a package id");
  }
  const Json::Value info = session.Call("pkg.info", Object({{"package", name}}));
  if (info["found"].asBool()) {
    installed = true;
    return ReadInstalled(info, session.Paths().Package(name));
  }
  if (FindRecord(session.Paths(), name)) {
    throw Failure(Exit::NotFound,
                  name + " is not installed, but the daemon still has a record of it: it was " +
                      "removed while the daemon did not run. Install it again and uninstall it " +
                      "while the daemon runs");
  }
  throw Failure(Exit::NotFound, "there is neither a file nor a package \"" + name +
                                    "\": `tv pkg list` shows the installed packages");
}

int Explain(Session& session, const Invocation& words) {
  bool installed = false;
  const ReadablePackage package = ReadNamed(session, words.Text("FILE|PACKAGE"), installed);
  const PackageFacts& facts = package.facts;
  Explanation explanation;
  explanation.ruling = RuleOnPackage(facts);
  explanation.effects = TellEffects(facts, explanation.ruling);
  const auto record = FindRecord(session.Paths(), facts.id);
  if (record && !record->types.empty()) {
    explanation.changes = TellTypeChanges(explanation.ruling, record->types);
  }
  if (installed) {
    explanation.state = TellState(session.Paths(), facts, explanation.ruling, record);
  }
  explanation.findings = CheckPackage(package, explanation.ruling);
  if (words.Json()) {
    session.PrintJson(ToJson(facts, explanation));
  } else {
    PrintExplanation(session.Out(), facts, explanation);
  }
  return 0;
}

}  // namespace

std::vector<Command> ExplainCommands() {
  return {{"explain",
           "explain what the daemon does with a package",
           {{"FILE|PACKAGE", "a .wgt archive, or the id of an installed package"}},
           {JsonOption()},
           "Prints for each metadata key the rule that applies to it, the layers of behaviour,\n"
           "what the daemon does on install, update and removal, and what is wrong with the\n"
           "package. For an installed package also whether the daemon has its record and\n"
           "whether its data was unpacked. A file needs no running TV.",
           Explain}};
}

}  // namespace desk::cli
