// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "utils/ResetCount.h"

#include <app_common.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "fake/control/calls.h"
#include "fake/control/keys.h"
#include "fake/control/log.h"
#include "support/files.h"
#include "support/log_matchers.h"

namespace {

using FileSystemUtils::CheckTVResetAndUpdateResetCountInfo;
using FileSystemUtils::GetFactoryAndServiceResetCount;
using FileSystemUtils::SetFactoryAndServiceResetCount;
using support::Exists;
using support::HasLog;
using support::ReadFile;
using support::WriteFile;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;

constexpr char FACTORY_KEY[] = "db/factory/factory_reset_count";
constexpr char SERVICE_KEY[] = "db/factory/service_reset_count";
constexpr char RESET[] = "[Debug] TV is restarted by facotry/service reset.";

class ResetCount : public testing::Test {
 protected:
  ResetCount() {
    char* directory = app_get_data_path();
    m_directory = directory;
    std::free(directory);
    m_path = m_directory + "reset_count_info.txt";
    support::MakeDirectories(m_directory);
    fake::ClearCalls();
  }

  static void SetCounters(int factory, int service) {
    fake::StoreKey(FACTORY_KEY, factory);
    fake::StoreKey(SERVICE_KEY, service);
  }
  static std::pair<int, int> Stored() {
    int factory = -1;
    int service = -1;
    GetFactoryAndServiceResetCount(factory, service);
    return {factory, service};
  }

  std::string m_directory;
  std::string m_path;
};

std::string Counts(int factory, int service) {
  return "[Debug] factory reset count : " + std::to_string(factory) +
         ", service reset count : " + std::to_string(service);
}

// The comparison.

TEST_F(ResetCount, AFirstStartWithCountersAtZeroIsNoReset) {
  SetCounters(0, 0);
  EXPECT_FALSE(CheckTVResetAndUpdateResetCountInfo());
  EXPECT_EQ(ReadFile(m_path), "{\"factory_reset_count\":0,\"service_reset_count\":0}\n");
  EXPECT_THAT(fake::LogTexts(), ElementsAre(Counts(0, 0), Counts(0, 0)));
}

TEST_F(ResetCount, AFirstStartOfATvThatWasEverResetIsAReset) {
  SetCounters(1, 0);
  EXPECT_TRUE(CheckTVResetAndUpdateResetCountInfo());
  EXPECT_EQ(ReadFile(m_path), "{\"factory_reset_count\":1,\"service_reset_count\":0}\n");
  EXPECT_THAT(fake::LogTexts(), ElementsAre(Counts(1, 0), Counts(0, 0), RESET));
}

TEST_F(ResetCount, UnchangedCountersAreNoReset) {
  SetFactoryAndServiceResetCount(3, 4);
  SetCounters(3, 4);
  EXPECT_FALSE(CheckTVResetAndUpdateResetCountInfo());
  EXPECT_THAT(fake::LogTexts(), ElementsAre(Counts(3, 4), Counts(3, 4)));
}

TEST_F(ResetCount, AHigherServiceCounterAloneIsAReset) {
  SetFactoryAndServiceResetCount(3, 4);
  SetCounters(3, 5);
  EXPECT_TRUE(CheckTVResetAndUpdateResetCountInfo());
  EXPECT_THAT(Stored(), Pair(3, 5));
  EXPECT_FALSE(CheckTVResetAndUpdateResetCountInfo());
}

TEST_F(ResetCount, AHigherFactoryCounterIsAResetEvenWithALowerServiceCounter) {
  SetFactoryAndServiceResetCount(3, 4);
  SetCounters(4, 0);
  EXPECT_TRUE(CheckTVResetAndUpdateResetCountInfo());
  EXPECT_THAT(Stored(), Pair(4, 0));
}

TEST_F(ResetCount, ALowerCounterIsNoResetAndIsWritten) {
  SetFactoryAndServiceResetCount(3, 4);
  SetCounters(2, 4);
  EXPECT_FALSE(CheckTVResetAndUpdateResetCountInfo());
  EXPECT_THAT(Stored(), Pair(2, 4));
}

TEST_F(ResetCount, CountersAreSigned) {
  SetFactoryAndServiceResetCount(-2, -2);
  SetCounters(-3, -1);
  EXPECT_TRUE(CheckTVResetAndUpdateResetCountInfo());
  SetCounters(-4, -1);
  EXPECT_FALSE(CheckTVResetAndUpdateResetCountInfo());
}

TEST_F(ResetCount, ARiseFromBelowZeroIsAResetAndAFallBelowIsNot) {
  SetFactoryAndServiceResetCount(-1, 0);
  SetCounters(0, 0);
  EXPECT_TRUE(CheckTVResetAndUpdateResetCountInfo());
  SetFactoryAndServiceResetCount(0, -1);
  EXPECT_TRUE(CheckTVResetAndUpdateResetCountInfo());
  SetFactoryAndServiceResetCount(0, 0);
  SetCounters(-1, 0);
  EXPECT_FALSE(CheckTVResetAndUpdateResetCountInfo());
  SetFactoryAndServiceResetCount(0, 0);
  SetCounters(0, -1);
  EXPECT_FALSE(CheckTVResetAndUpdateResetCountInfo());
}

TEST_F(ResetCount, ACounterThatCannotBeReadCountsAsZero) {
  SetFactoryAndServiceResetCount(3, 0);
  fake::StoreKey(FACTORY_KEY, std::string("9"));
  fake::StoreKey(SERVICE_KEY, 1);
  EXPECT_TRUE(CheckTVResetAndUpdateResetCountInfo());
  EXPECT_THAT(fake::LogTexts(), HasLog(Counts(0, 1)));
  EXPECT_THAT(Stored(), Pair(0, 1));
}

TEST_F(ResetCount, TheFactoryCounterIsReadFirst) {
  CheckTVResetAndUpdateResetCountInfo();
  const std::vector<fake::Call> calls = fake::Calls("vconf_get_int");
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[0].args[0], FACTORY_KEY);
  EXPECT_EQ(calls[1].args[0], SERVICE_KEY);
}

TEST_F(ResetCount, AResetWithoutAWritableFileIsFoundAgainAtTheNextStart) {
  std::filesystem::remove_all(m_directory);
  SetCounters(1, 0);
  EXPECT_TRUE(CheckTVResetAndUpdateResetCountInfo());
  EXPECT_TRUE(CheckTVResetAndUpdateResetCountInfo());
  EXPECT_THAT(fake::LogTexts(6),
              ElementsAre("[ERROR] filePath is empty.", "[ERROR] filePath is empty."));
}

TEST_F(ResetCount, ABrokenFileIsAnErrorAndIsOverwritten) {
  WriteFile(m_path, "{\"factory_reset_count\":");
  SetCounters(1, 2);
  EXPECT_TRUE(CheckTVResetAndUpdateResetCountInfo());
  EXPECT_THAT(fake::LogTexts(6), Contains(StartsWith("[ERROR] Failed to parse Json : * Line 1")));
  EXPECT_EQ(ReadFile(m_path), "{\"factory_reset_count\":1,\"service_reset_count\":2}\n");
}

TEST_F(ResetCount, ASymbolicLinkIsReadAndNeverWritten) {
  const std::string target = m_directory + "target";
  const std::string content = "{\"factory_reset_count\":1,\"service_reset_count\":1}\n";
  WriteFile(target, content);
  ASSERT_EQ(symlink(target.c_str(), m_path.c_str()), 0);
  SetCounters(2, 2);
  EXPECT_TRUE(CheckTVResetAndUpdateResetCountInfo());
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] sPath is symbolic link."));
  EXPECT_EQ(ReadFile(target), content);
  EXPECT_TRUE(std::filesystem::is_symlink(m_path));
}

TEST_F(ResetCount, ADanglingSymbolicLinkIsNotWrittenThroughEither) {
  const std::string target = m_directory + "target";
  ASSERT_EQ(symlink(target.c_str(), m_path.c_str()), 0);
  SetFactoryAndServiceResetCount(1, 1);
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] sPath is symbolic link."));
  EXPECT_FALSE(Exists(target));
}

// Reading.

TEST_F(ResetCount, AMissingFileIsTwoZerosAndNoError) {
  EXPECT_THAT(Stored(), Pair(0, 0));
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(ResetCount, AnEmptyFileIsAnError) {
  WriteFile(m_path, "");
  EXPECT_THAT(Stored(), Pair(0, 0));
  EXPECT_THAT(fake::LogTexts(6), Contains(StartsWith("[ERROR] Failed to parse Json : ")));
}

TEST_F(ResetCount, AMissingMemberIsZero) {
  WriteFile(m_path, "{\"service_reset_count\":7}");
  EXPECT_THAT(Stored(), Pair(0, 7));
  WriteFile(m_path, "null");
  EXPECT_THAT(Stored(), Pair(0, 0));
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(ResetCount, CommentsAreAccepted) {
  WriteFile(m_path, "/* by hand */ {\"factory_reset_count\":5,\"service_reset_count\":7}");
  EXPECT_THAT(Stored(), Pair(5, 7));
}

TEST_F(ResetCount, AMemberOfAnotherKindIsAnExceptionAndBothAreZero) {
  WriteFile(m_path, "{\"factory_reset_count\":5,\"service_reset_count\":\"7\"}");
  EXPECT_THAT(Stored(), Pair(0, 0));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[ERROR] Exception Caught"));
}

TEST_F(ResetCount, ARootOfAnotherKindIsAnException) {
  WriteFile(m_path, "[1,2]");
  EXPECT_THAT(Stored(), Pair(0, 0));
  WriteFile(m_path, "5");
  EXPECT_THAT(Stored(), Pair(0, 0));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[ERROR] Exception Caught", "[ERROR] Exception Caught"));
}

TEST_F(ResetCount, ANumberBeyondAnIntIsAnException) {
  WriteFile(m_path, "{\"factory_reset_count\":99999999999,\"service_reset_count\":7}");
  EXPECT_THAT(Stored(), Pair(0, 0));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[ERROR] Exception Caught"));
}

TEST_F(ResetCount, NestingWithoutEndIsAnException) {
  WriteFile(m_path, std::string(100000, '['));
  EXPECT_THAT(Stored(), Pair(0, 0));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[ERROR] Exception Caught"));
}

// Writing.

TEST_F(ResetCount, WritingReplacesALongerContent) {
  WriteFile(m_path, std::string(1000, 'x'));
  SetFactoryAndServiceResetCount(5, 7);
  EXPECT_EQ(ReadFile(m_path), "{\"factory_reset_count\":5,\"service_reset_count\":7}\n");
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(ResetCount, ADirectoryInItsPlaceIsNotWritten) {
  support::MakeDirectories(m_path);
  SetFactoryAndServiceResetCount(5, 7);
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] filePath is empty."));
}

TEST_F(ResetCount, AFileInPlaceOfItsDirectoryIsLoggedAndNotWritten) {
  std::filesystem::remove_all(m_directory);
  WriteFile(m_directory.substr(0, m_directory.size() - 1), "a file");
  SetFactoryAndServiceResetCount(5, 7);
  EXPECT_THAT(fake::LogTexts(6), ElementsAre("[ERROR] filePath is empty."));
}

TEST_F(ResetCount, APathThatCannotBeExaminedIsAnExceptionAndIsNotWritten) {
  const std::string directory = m_directory.substr(0, m_directory.size() - 1);
  std::filesystem::remove_all(directory);
  ASSERT_EQ(symlink(directory.c_str(), directory.c_str()), 0);
  SetFactoryAndServiceResetCount(5, 7);
  EXPECT_THAT(fake::LogTexts(6),
              ElementsAre(AllOf(StartsWith("[ERROR] exception : "), HasSubstr(m_path))));
}

TEST_F(ResetCount, WithoutADataDirectoryThePathIsTheBareName) {
  const support::TempDir directory;
  ASSERT_EQ(chdir(directory.Path().c_str()), 0);
  fake::Fail("app_get_data_path", 0, fake::FOREVER);
  SetFactoryAndServiceResetCount(5, 7);
  EXPECT_EQ(ReadFile(directory / "reset_count_info.txt"),
            "{\"factory_reset_count\":5,\"service_reset_count\":7}\n");
  EXPECT_THAT(Stored(), Pair(5, 7));
}

}  // namespace
