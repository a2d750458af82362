// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/package/program_file.h"

#include <gtest/gtest.h>

#include "package_maker.h"

namespace desk {
namespace {

class ProgramFile : public ::testing::Test {
 protected:
  std::string Reason(const std::string& content, const std::string& name = "feed") {
    WriteFile(m_directory.Path() + "/" + name, content);
    const auto trouble = WhyNotRunnable(m_directory.Path() + "/" + name);
    return trouble ? trouble->reason : "";
  }
  TemporaryDirectory m_directory;
};

TEST_F(ProgramFile, AScriptWithAnInterpreterRuns) {
  EXPECT_EQ(Reason("#!/bin/sh\necho\n"), "");
  EXPECT_EQ(Reason("#! /bin/sh -e\necho\n"), "");
  EXPECT_EQ(Reason("#!/bin/sh"), "");
}

TEST_F(ProgramFile, ABinaryRuns) {
  EXPECT_FALSE(WhyNotRunnable("/proc/self/exe"));
}

TEST_F(ProgramFile, CarriageReturnsAreNamedWithTheRemedy) {
  EXPECT_EQ(Reason("#!/bin/sh\r\necho\r\n"), "its interpreter `/bin/sh\\r` does not exist");
  EXPECT_EQ(WhyNotRunnable(m_directory.Path() + "/feed")->fix,
            "Convert the line ends: sed -i 's/\\r$//' feed");
}

TEST_F(ProgramFile, ACarriageReturnAfterAnArgumentIsNamed) {
  EXPECT_NE(Reason("#!/bin/sh -e\r\necho\r\n").find("carriage return"), std::string::npos);
}

TEST_F(ProgramFile, AMissingInterpreterIsNamed) {
  EXPECT_EQ(Reason("#!/no/such/program\n"),
            "its interpreter `/no/such/program`: No such file or directory");
}

TEST_F(ProgramFile, AJavaScriptFileIsNamedAsSuch) {
  EXPECT_EQ(Reason("module.exports = {};\n", "service.js"),
            "it is a JavaScript file without a line that names its interpreter");
  EXPECT_EQ(Reason("#!/bin/sh\n", "runs.js"), "");
}

TEST_F(ProgramFile, AFileOfAnotherKindIsNamed) {
  EXPECT_NE(Reason("echo hello\n").find("neither a script"), std::string::npos);
}

TEST_F(ProgramFile, AMissingFileIsNamed) {
  EXPECT_EQ(WhyNotRunnable(m_directory.Path() + "/none")->reason,
            "the file cannot be read: No such file or directory");
}

}  // namespace
}  // namespace desk
