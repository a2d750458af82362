// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/checks/channel_files.h"

#include <gtest/gtest.h>

#include "package_maker.h"

namespace desk {
namespace {

class ChannelFiles : public ::testing::Test {
 protected:
  std::string State(const std::string& url) { return StateOfFeed(DeskPaths(m_root), url); }
  TemporaryDirectory m_directory;
  const std::string m_root = m_directory.Path();
};

TEST_F(ChannelFiles, AFileThatParsesIsOk) {
  WriteFile(m_root + "/opt/x.json", "{}");
  EXPECT_EQ(State("file:/opt/x.json"), "ok");
  EXPECT_EQ(State("file:" + m_root + "/opt//x.json"), "ok");
}

TEST_F(ChannelFiles, AMissingFileIsSaidToBe) {
  EXPECT_EQ(State("file:/opt/none.json"), "missing");
  EXPECT_EQ(State("file://none.json"), "missing");
}

TEST_F(ChannelFiles, InvalidJsonIsSaidToBe) {
  WriteFile(m_root + "/opt/x.json", "{");
  EXPECT_EQ(State("file:/opt/x.json").substr(0, 10), "not JSON: ");
}

TEST_F(ChannelFiles, OtherUrlsAreNotLookedAt) {
  EXPECT_EQ(State("https://example.org"), "web");
  EXPECT_EQ(State("x"), "not a file or web URL");
  EXPECT_EQ(State(""), "no URL");
}

}  // namespace
}  // namespace desk
