// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

/// The surroundings of the targets that run parts of the daemon on the platform in memory.
namespace fuzz {

extern const std::string kDataDirectory;
extern const std::string kSharedDataDirectory;

/// Directories, keys and clock; nothing is recorded, no wait lasts. For SetUp().
void MakeWorld();
/// Empties the directories of packaged data and forgets log, launches, channels and messages: the
/// next input finds the world as the first one did. The store is left alone.
void ForgetInput();

/// Exceptions end here, as they end in the outermost frames of the daemon.
void Contain(const std::function<void()>& call);

}  // namespace fuzz
