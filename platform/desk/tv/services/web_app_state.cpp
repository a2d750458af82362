// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/web_app_state.h"

#include <algorithm>
#include <array>

namespace desk::tv {
namespace {

struct NamedState {
  WebAppState state;
  const char* name;
};

constexpr std::array<NamedState, 7> STATES = {{{WebAppState::Init, "init"},
                                               {WebAppState::Load, "load"},
                                               {WebAppState::Preload, "preload"},
                                               {WebAppState::Resume, "resume"},
                                               {WebAppState::Pause, "pause"},
                                               {WebAppState::Destroy, "destroy"},
                                               {WebAppState::Quit, "quit"}}};

}  // namespace

const char* StateName(WebAppState state) {
  const auto* found = std::find_if(STATES.begin(), STATES.end(),
                                   [&](const NamedState& named) { return named.state == state; });
  return found == STATES.end() ? "" : found->name;
}

std::optional<WebAppState> ParseState(const std::string& name) {
  const auto* found = std::find_if(STATES.begin(), STATES.end(),
                                   [&](const NamedState& named) { return named.name == name; });
  return found == STATES.end() ? std::nullopt : std::make_optional(found->state);
}

}  // namespace desk::tv
