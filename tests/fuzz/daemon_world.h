// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

/// The environment of the targets that run parts of the daemon on the fake platform.
namespace fuzz {

extern const std::string DATA_DIRECTORY;
extern const std::string SHARED_DATA_DIRECTORY;

/// Sets up directories, keys and clock, without recording and without real waits. For SetUp().
void MakeWorld();
/// Empties the directories of packaged data and clears log, launches, channels and messages, so
/// that each input starts in the same state. Does not change the store.
void ForgetInput();

/// Catches exceptions, as the outermost frames of the daemon do.
void Contain(const std::function<void()>& call);

}  // namespace fuzz
