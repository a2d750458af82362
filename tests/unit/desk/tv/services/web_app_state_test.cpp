// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/tv/services/web_app_state.h"

#include <gtest/gtest.h>

namespace desk::tv {
namespace {

TEST(WebAppState, EveryStateHasTheNameOfTheProtocol) {
  EXPECT_STREQ(StateName(WebAppState::Init), "init");
  EXPECT_STREQ(StateName(WebAppState::Load), "load");
  EXPECT_STREQ(StateName(WebAppState::Preload), "preload");
  EXPECT_STREQ(StateName(WebAppState::Resume), "resume");
  EXPECT_STREQ(StateName(WebAppState::Pause), "pause");
  EXPECT_STREQ(StateName(WebAppState::Destroy), "destroy");
  EXPECT_STREQ(StateName(WebAppState::Quit), "quit");
}

TEST(WebAppState, ANameIsParsedBack) {
  for (const WebAppState state :
       {WebAppState::Init, WebAppState::Load, WebAppState::Preload, WebAppState::Resume,
        WebAppState::Pause, WebAppState::Destroy, WebAppState::Quit}) {
    EXPECT_EQ(ParseState(StateName(state)), state);
  }
}

TEST(WebAppState, AnUnknownNameIsNotAState) {
  for (const char* name : {"", "Load", "load ", "preloaded", "dance"}) {
    EXPECT_FALSE(ParseState(name)) << name;
  }
}

}  // namespace
}  // namespace desk::tv
