// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "utils/FileSystemUtils.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "fake/control/calls.h"
#include "fake/control/log.h"
#include "support/files.h"
#include "support/log_matchers.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Each test works in an empty directory, which is also the current directory.
class FileSystemUtilsTest : public testing::Test {
 protected:
  FileSystemUtilsTest() {
    if (chdir(m_dir.Path().c_str()) != 0) {
      throw std::runtime_error("chdir " + m_dir.Path());
    }
    fake::ClearLog();
    fake::ClearCalls();
  }
  ~FileSystemUtilsTest() override {
    if (chdir("/") != 0) {
      ADD_FAILURE() << "chdir /";
    }
  }

  support::TempDir m_dir;
};

TEST_F(FileSystemUtilsTest, ANameWithoutASlashIsMadeItself) {
  EXPECT_TRUE(FileSystemUtils::CreateDirectories("plain"));
  EXPECT_THAT(support::ListTree(m_dir.Path()), ElementsAre("plain/"));
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(FileSystemUtilsTest, ANameWithAClosingSlashIsMadeWithAllItsParents) {
  EXPECT_TRUE(FileSystemUtils::CreateDirectories(m_dir / "a/b/c/"));
  EXPECT_THAT(support::ListTree(m_dir.Path()), ElementsAre("a/", "a/b/", "a/b/c/"));
}

TEST_F(FileSystemUtilsTest, ThePathOfAFileMakesTheDirectoryThatIsToHoldIt) {
  EXPECT_TRUE(FileSystemUtils::CreateDirectories(m_dir / "a/b/file.txt"));
  EXPECT_THAT(support::ListTree(m_dir.Path()), ElementsAre("a/", "a/b/"));
}

TEST_F(FileSystemUtilsTest, AnExistingDirectoryWithAClosingSlashIsASuccess) {
  support::MakeDirectories(m_dir / "there");
  EXPECT_TRUE(FileSystemUtils::CreateDirectories(m_dir / "there/"));
  EXPECT_THAT(support::ListTree(m_dir.Path()), ElementsAre("there/"));
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(FileSystemUtilsTest, AFileInThePlaceOfTheDirectoryCountsAsExisting) {
  support::WriteFile(m_dir / "file", "x");
  EXPECT_TRUE(FileSystemUtils::CreateDirectories(m_dir / "file/"));
  EXPECT_EQ(support::ReadFile(m_dir / "file"), "x");
}

TEST_F(FileSystemUtilsTest, ALibraryThatMadeNothingItselfIsAFailureWithAnOpenBracket) {
  // The step through ".." creates the directory, so the last step finds it.
  EXPECT_FALSE(FileSystemUtils::CreateDirectories("a/../a/"));
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR),
              ElementsAre("[ERROR] Cannot create the target directories.(sDirectoryPath : a/../a/, "
                          "targetPath : a/../a"));
}

TEST_F(FileSystemUtilsTest, ADirectoryBelowAFileIsAnExceptionThatIsLogged) {
  support::WriteFile(m_dir / "file", "x");
  EXPECT_FALSE(FileSystemUtils::CreateDirectories("file/sub/"));
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR),
              ElementsAre("[ERROR] exception : boost::filesystem::create_directory: Not a "
                          "directory: \"file/sub\""));
}

TEST_F(FileSystemUtilsTest, ALinkThatLeadsNowhereIsNoDirectoryAndCannotBecomeOne) {
  ASSERT_EQ(symlink("nowhere", "link"), 0);
  EXPECT_FALSE(FileSystemUtils::Exists("link"));
  EXPECT_FALSE(FileSystemUtils::CreateDirectories("link/"));
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR),
              ElementsAre("[ERROR] exception : boost::filesystem::create_directory: File exists: "
                          "\"link\""));
}

TEST_F(FileSystemUtilsTest, AStatusThatCannotBeReadCountsAsAbsent) {
  ASSERT_EQ(symlink("loop", "loop"), 0);
  EXPECT_FALSE(FileSystemUtils::Exists("loop"));
}

TEST_F(FileSystemUtilsTest, AnEmptyPathIsAnExceptionThatIsLogged) {
  EXPECT_FALSE(FileSystemUtils::CreateDirectories(""));
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR),
              ElementsAre("[ERROR] exception : boost::filesystem::create_directories: Invalid "
                          "argument"));
}

TEST_F(FileSystemUtilsTest, RemovalTakesTheTreeAndNothingBesideIt) {
  support::WriteFile(m_dir / "tree/sub/file", "x");
  support::WriteFile(m_dir / "beside", "y");
  FileSystemUtils::RemoveDirectories(m_dir / "tree/");
  EXPECT_THAT(support::ListTree(m_dir.Path()), ElementsAre("beside"));
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(FileSystemUtilsTest, RemovalTakesALinkInATreeAndNotWhatItPointsTo) {
  support::WriteFile(m_dir / "outside/file", "x");
  support::MakeDirectories(m_dir / "tree");
  ASSERT_EQ(symlink("../outside", "tree/link"), 0);
  FileSystemUtils::RemoveDirectories("tree");
  EXPECT_THAT(support::ListTree(m_dir.Path()), ElementsAre("outside/", "outside/file"));
}

TEST_F(FileSystemUtilsTest, RemovalOfAMissingPathDoesNothingAndLogsNothing) {
  FileSystemUtils::RemoveDirectories(m_dir / "missing");
  EXPECT_THAT(support::ListTree(m_dir.Path()), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(FileSystemUtilsTest, ARemovalThatFailsIsAnExceptionThatIsLogged) {
  // The kernel's own tree exists and cannot be removed, even by root.
  FileSystemUtils::RemoveDirectories("/proc/self/status");
  ASSERT_EQ(fake::LogTexts(DLOG_ERROR).size(), 1u);
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR).front(),
              testing::StartsWith("[ERROR] exception : boost::filesystem::remove"));
}

TEST_F(FileSystemUtilsTest, WritingReplacesTheContentAndSyncsOnce) {
  support::WriteFile(m_dir / "file", "a long old content");
  EXPECT_TRUE(FileSystemUtils::WriteFile(m_dir / "file", "new\n"));
  EXPECT_EQ(support::ReadFile(m_dir / "file"), "new\n");
  EXPECT_THAT(fake::CallNames(), ElementsAre("sync"));
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(FileSystemUtilsTest, WritingKeepsEveryByte) {
  const std::string content("a\0b\r\n\xff", 6);
  EXPECT_TRUE(FileSystemUtils::WriteFile(m_dir / "file", content));
  EXPECT_EQ(support::ReadFile(m_dir / "file"), content);
}

TEST_F(FileSystemUtilsTest, WritingBelowAMissingDirectoryFailsWithTheOneText) {
  EXPECT_FALSE(FileSystemUtils::WriteFile(m_dir / "missing/file", "x"));
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR), ElementsAre("[ERROR] filePath is empty."));
  EXPECT_THAT(fake::CallNames(), IsEmpty());
}

TEST_F(FileSystemUtilsTest, WritingToADirectoryFailsWithTheOneText) {
  EXPECT_FALSE(FileSystemUtils::WriteFile(m_dir.Path(), "x"));
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR), ElementsAre("[ERROR] filePath is empty."));
}

TEST_F(FileSystemUtilsTest, AWriteThatFailsOnAFullDeviceIsASuccessAllTheSame) {
  if (access("/dev/full", W_OK) != 0) {
    GTEST_SKIP() << "/dev/full is missing";
  }
  EXPECT_TRUE(FileSystemUtils::WriteFile("/dev/full", "x"));
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
  EXPECT_THAT(fake::CallNames(), ElementsAre("sync"));
}

TEST_F(FileSystemUtilsTest, ReadingGivesTheFirstOfTwoWords) {
  support::WriteFile(m_dir / "file", "first second");
  std::string content;
  EXPECT_TRUE(FileSystemUtils::ReadFile(m_dir / "file", content));
  EXPECT_EQ(content, "first");
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(FileSystemUtilsTest, ReadingSkipsLeadingWhiteSpaceAndEndsAtANewline) {
  support::WriteFile(m_dir / "file", " \t\n{\"a\":1}\nrest");
  std::string content;
  EXPECT_TRUE(FileSystemUtils::ReadFile(m_dir / "file", content));
  EXPECT_EQ(content, "{\"a\":1}");
}

TEST_F(FileSystemUtilsTest, AnEmptyFileIsASuccessWithAnEmptyText) {
  support::WriteFile(m_dir / "file", "");
  std::string content = "what was there before";
  EXPECT_TRUE(FileSystemUtils::ReadFile(m_dir / "file", content));
  EXPECT_EQ(content, "");
}

TEST_F(FileSystemUtilsTest, AMissingFileLeavesTheTextUnchanged) {
  std::string content = "what was there before";
  EXPECT_FALSE(FileSystemUtils::ReadFile(m_dir / "missing", content));
  EXPECT_EQ(content, "what was there before");
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR), ElementsAre("[ERROR] file is not existed."));
}

TEST_F(FileSystemUtilsTest, WhatIsWrittenAsCompactTextIsReadBackWithoutItsNewline) {
  ASSERT_TRUE(FileSystemUtils::WriteFile(m_dir / "file", "{\"app_type\":[\"x\"]}\n"));
  std::string content;
  EXPECT_TRUE(FileSystemUtils::ReadFile(m_dir / "file", content));
  EXPECT_EQ(content, "{\"app_type\":[\"x\"]}");
}

TEST_F(FileSystemUtilsTest, TheDirectoriesOfPackagedDataLieInTheSharedDataPath) {
  const std::string sSharedDataPath = FileSystemUtils::GetSharedDataPath();
  EXPECT_THAT(sSharedDataPath, testing::EndsWith("/"));
  EXPECT_EQ(FileSystemUtils::GetHbbTvDirectoryPath(), sSharedDataPath + "hbbtv_app/");
  EXPECT_EQ(FileSystemUtils::GetMetaDataDirectoryPath(), sSharedDataPath + "metadata/");
}

TEST_F(FileSystemUtilsTest, ASharedDataPathThatIsNotToBeHadIsEmpty) {
  fake::Fail("app_get_shared_data_path");
  EXPECT_EQ(FileSystemUtils::GetSharedDataPath(), "");
  EXPECT_EQ(fake::FailureCount("app_get_shared_data_path"), 1u);
}

TEST_F(FileSystemUtilsTest, TheDirectoriesAreReadOnceAndStay) {
  const std::string sBefore = FileSystemUtils::GetHbbTvDirectoryPath();
  fake::Fail("app_get_shared_data_path", -1, fake::FOREVER);
  EXPECT_EQ(FileSystemUtils::GetHbbTvDirectoryPath(), sBefore);
  EXPECT_EQ(fake::CallCount("app_get_shared_data_path"), 0u);
}

TEST_F(FileSystemUtilsTest, TheMetadataDirectoryOfAPackageIsGivenWhenItExists) {
  const std::string sPath = FileSystemUtils::GetMetaDataDirectoryPath() + "org.example.pkg";
  support::MakeDirectories(sPath);
  EXPECT_EQ(FileSystemUtils::GetPackagedMetaDataDirectoryPath("org.example.pkg"), sPath);
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] sTargetMetaDataDirectoryPath : " + sPath));
}

TEST_F(FileSystemUtilsTest, APackageWithoutMetadataGivesAnEmptyTextAndTheError) {
  const std::string sPath = FileSystemUtils::GetMetaDataDirectoryPath() + "org.example.none";
  EXPECT_EQ(FileSystemUtils::GetPackagedMetaDataDirectoryPath("org.example.none"), "");
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] sTargetMetaDataDirectoryPath : " + sPath,
                          "[ERROR] boostfs::exists(" + sPath + ") return false."));
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR),
              ElementsAre("[ERROR] boostfs::exists(" + sPath + ") return false."));
}

}  // namespace
