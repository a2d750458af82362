// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <message_port.h>

#include <map>
#include <string>

// The message port through which service apps report back: when to launch them next, and that they
// have finished.

/// Commands of the message port, see RunMessagePortCommand().
enum SchedulerCommand : int { COMMAND_SET_EXPIRATION_TIME = 0, COMMAND_COMPLETE_OPERATION = 1 };

/// Platform callback, on the main-loop thread. No exception leaves it. Runs one command of a
/// service app and replies to remote_port.
void MessagePortCommandCallback(int local_port_id, const char* remote_app_id,
                                const char* remote_port, bool trusted_remote_port, bundle* message,
                                void* user_data);

/// Runs a command and returns the text of its result, which lives as long as the process.
/// Blocks for a write to the store. params are the other values of the message.
const std::string& RunMessagePortCommand(int eCommand, const std::string& remoteAppID,
                                         std::map<std::string, std::string>& params);
