// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

namespace desk::tv {

/// A state in the life of a web app.
enum class WebAppState { Init, Load, Preload, Resume, Pause, Destroy, Quit };

/// "init", "load", "preload", "resume", "pause", "destroy" or "quit": the `word` of the protocol
/// and the value of the app's settings key.
const char* StateName(WebAppState state);
std::optional<WebAppState> ParseState(const std::string& name);

}  // namespace desk::tv
