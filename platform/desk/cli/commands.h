// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "desk/cli/command_line.h"

namespace desk::cli {

/// The rows of the command table, by subject.
std::vector<Command> LifeCommands();
std::vector<Command> PackageCommands();
std::vector<Command> KeyCommands();
std::vector<Command> AppCommands();
std::vector<Command> BroadcastCommands();
std::vector<Command> WebAppServiceCommands();
std::vector<Command> PortCommands();
std::vector<Command> FaultCommands();
std::vector<Command> LogCommands();
std::vector<Command> StateCommands();
std::vector<Command> WhyCommands();
std::vector<Command> ExplainCommands();

/// All of them, as `tv help` shows them.
const CommandTable& TvCommands();

/// Runs one command line. `terminal` says whether `out` is a terminal. Returns the exit code and
/// never throws.
int RunTv(const std::vector<std::string>& words, std::ostream& out, std::ostream& err,
          bool terminal);

}  // namespace desk::cli
