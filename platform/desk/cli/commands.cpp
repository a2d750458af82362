// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/cli/commands.h"

#include <iterator>
#include <ostream>

#include "desk/cli/failure.h"
#include "desk/cli/session.h"
#include "desk/common/desk_error.h"

namespace desk::cli {
namespace {

std::vector<Group> Groups() {
  return {{"daemon", "stop, start, kill or restart only the daemon"},
          {"pkg", "install, update, remove and list packages"},
          {"key", "settings keys"},
          {"app", "apps and their processes"},
          {"op", "the app that answers an operation"},
          {"service", "the TV's service list"},
          {"channel", "the records of the channel framework"},
          {"was", "the table of the web-app service"},
          {"port", "message ports"}};
}

CommandTable MakeTable() {
  CommandTable table;
  table.groups = Groups();
  for (auto* rows : {LifeCommands, PackageCommands, KeyCommands, AppCommands, BroadcastCommands,
                     WebAppServiceCommands, PortCommands, FaultCommands, LogCommands, WhyCommands,
                     StateCommands, ExplainCommands}) {
    auto commands = rows();
    std::move(commands.begin(), commands.end(), std::back_inserter(table.commands));
  }
  return table;
}

Exit ExitOf(const DeskError& error) {
  if (error.Code() == DeskError::USAGE) {
    return Exit::Usage;
  }
  if (error.Code() == DeskError::NOT_FOUND) {
    return Exit::NotFound;
  }
  if (error.Code() == DeskError::TIMEOUT) {
    return Exit::TimedOut;
  }
  if (error.Code() == DeskError::NO_TV) {
    return Exit::NotRunning;
  }
  return Exit::Failed;
}

int Fail(std::ostream& out, std::ostream& err, Exit code, std::string text) {
  out.flush();
  while (!text.empty() && text.back() == '\n') {
    text.pop_back();
  }
  for (char& c : text) {
    c = c == '\n' ? ' ' : c;
  }
  err << "tv: " << text << '\n';
  return static_cast<int>(code);
}

int RunRequest(const std::vector<std::string>& words, std::ostream& out, std::ostream& err,
               bool terminal) {
  const Request request = ReadCommandLine(TvCommands(), words);
  if (request.command == nullptr) {
    out << request.text;
    return 0;
  }
  Session session(DeskPaths::Select(request.root), out, err, terminal);
  return request.command->run(session, request.words);
}

}  // namespace

const CommandTable& TvCommands() {
  static const CommandTable table = MakeTable();
  return table;
}

int RunTv(const std::vector<std::string>& words, std::ostream& out, std::ostream& err,
          bool terminal) {
  try {
    const int code = RunRequest(words, out, err, terminal);
    out.flush();
    return code;
  } catch (const Failure& failure) {
    return Fail(out, err, failure.Code(), failure.what());
  } catch (const DeskError& error) {
    return Fail(out, err, ExitOf(error), error.what());
  } catch (const std::exception& error) {
    return Fail(out, err, Exit::Failed, error.what());
  }
}

}  // namespace desk::cli
