// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "utils/PackagedData.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <boost/filesystem.hpp>
#include <cstring>

#include "fake/control/calls.h"
#include "fake/control/log.h"
#include "fake/control/mounts.h"
#include "support/files.h"
#include "support/log_matchers.h"
#include "utils/FileSystemUtils.h"

namespace {

using FileSystemUtils::AddAppTypeToFile;
using FileSystemUtils::InstallPackagedData;
using FileSystemUtils::UninstallPackagedData;
using support::HasLog;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

const std::string PACKAGE = "org.example.pkg";
const std::string WIDGET = "AbCdEfGhIj.pkg";
const std::string STANDARD = "ch_feeder_standard";
const std::string CUSTOM = "ch_feeder_custom";
constexpr int BOTH = PACKAGED_TYPE_HBBTV_APP | PACKAGED_TYPE_META_DATA;

/// An existing file that cannot be opened, not even by root.
class ClosedFile {
 public:
  explicit ClosedFile(const std::string& rPath) : m_fd(socket(AF_UNIX, SOCK_STREAM, 0)) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (rPath.size() >= sizeof(address.sun_path)) {
      throw std::runtime_error("too long: " + rPath);
    }
    std::strcpy(address.sun_path, rPath.c_str());
    if (bind(m_fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
      throw std::runtime_error("bind " + rPath);
    }
  }
  ~ClosedFile() { close(m_fd); }
  ClosedFile(const ClosedFile&) = delete;
  ClosedFile& operator=(const ClosedFile&) = delete;

 private:
  int m_fd;
};

/// A file that can be read but not written, not even by root.
class SealedFile {
 public:
  SealedFile(const std::string& rPath, const std::string& rContent)
      : m_fd(memfd_create("list", MFD_ALLOW_SEALING)) {
    const auto iLength = static_cast<ssize_t>(rContent.size());
    if (write(m_fd, rContent.data(), rContent.size()) != iLength ||
        fcntl(m_fd, F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE) != 0 ||
        symlink(("/proc/self/fd/" + std::to_string(m_fd)).c_str(), rPath.c_str()) != 0) {
      throw std::runtime_error("sealed file " + rPath);
    }
  }
  ~SealedFile() { close(m_fd); }
  SealedFile(const SealedFile&) = delete;
  SealedFile& operator=(const SealedFile&) = delete;

 private:
  int m_fd;
};

class PackagedDataTest : public testing::Test {
 protected:
  PackagedDataTest() {
    boost::filesystem::remove_all(FileSystemUtils::GetSharedDataPath());
    boost::filesystem::remove_all("/home/owner/share");
    fake::ClearLog();
    fake::ClearCalls();
  }

  /// The image of every package is one archive with these entries.
  void PutIntoImage(const std::vector<support::ZipEntry>& rEntries) {
    fake::SetMountHandler([rEntries](const fake::Mount& rMount) {
      support::WriteZip(rMount.directory + "/orv_app.zip", rEntries);
      return 0;
    });
    fake::SetUmountHandler([](const std::string& rDirectory) {
      boost::filesystem::remove(rDirectory + "/orv_app.zip");
      return 0;
    });
  }
  bool Install(int iDataType = PACKAGED_TYPE_HBBTV_APP, bool bStarted = false) {
    return InstallPackagedData(PACKAGE, WIDGET, STANDARD, iDataType, bStarted);
  }
  /// The functions that logged, in order; consecutive lines of a function count once.
  std::vector<std::string> LoggingFunctions() {
    std::vector<std::string> functions;
    for (const fake::LogRecord& rRecord : fake::Logs()) {
      const std::string sHead = rRecord.text.substr(0, rRecord.text.find('('));
      const std::string sFunction = sHead.substr(sHead.find(": ") + 2);
      if (functions.empty() || functions.back() != sFunction) {
        functions.push_back(sFunction);
      }
    }
    return functions;
  }
  std::vector<std::string> Errors() { return fake::LogTexts(DLOG_ERROR); }
  std::vector<std::string> MountCalls() { return fake::CallTexts({"PS_Mount", "PS_Umount"}); }

  const std::string m_hbbtv = FileSystemUtils::GetHbbTvDirectoryPath();
  const std::string m_metadata = FileSystemUtils::GetMetaDataDirectoryPath();
  const std::string m_mountPoint = m_hbbtv + "temp_app";
  const std::string m_tree = m_hbbtv + PACKAGE;
  const std::string m_list = m_tree + "/app_type_file.txt";
  const std::string m_image = "/opt/usr/apps/" + PACKAGE + "/res/" + WIDGET + ".tmg";
  const std::string m_command = "-o loop,nosuid,nodev,noexec " + m_image + " " + m_mountPoint;
  const std::string m_fallback = "/home/owner/share/tmp/sdk_tools//orv_app.zip";
};

TEST_F(PackagedDataTest, AFirstInstallMountsUnpacksUnmountsAndBeginsTheList) {
  PutIntoImage({{"index.html", "<html/>"}});
  EXPECT_TRUE(Install());
  EXPECT_EQ(support::ReadFile(m_tree + "/index.html"), "<html/>");
  EXPECT_EQ(support::ReadFile(m_list), "{\"app_type\":[\"ch_feeder_standard\"]}\n");
  EXPECT_THAT(fake::CallTexts(), ElementsAre("PS_Mount(" + m_command + ", " +
                                                 std::to_string(m_command.size()) + ", 0) = 0",
                                             "PS_Umount(" + m_mountPoint + ", " +
                                                 std::to_string(m_mountPoint.size()) + ", 0) = 0",
                                             "sync() = void"));
  EXPECT_THAT(fake::Mounts(), IsEmpty());
  EXPECT_TRUE(support::Exists(m_mountPoint));
  EXPECT_FALSE(support::Exists(m_metadata));
}

TEST_F(PackagedDataTest, AFirstInstallLogsEachStep) {
  PutIntoImage({{"a", "x"}});
  EXPECT_TRUE(Install());
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] rPackageID : org.example.pkg, bStarted : 0, rAppType : "
                          "ch_feeder_standard, rDataType : 1",
                          "[Info] sMountedDirectory : " + m_mountPoint,
                          "[Info] sTargetFilePath : " + m_image + ", sMountedDir : " + m_mountPoint,
                          "[Debug] [TVMesaDev] sTarget : " + m_command,
                          "[Debug] Mounting is done. ret[0], result[0] ",
                          "[Info] sTargetHbbTvAppDirectory : " + m_tree,
                          "[Info] rTargetFilePath : " + m_tree + "/a",
                          "[Info] sMountedDir : " + m_mountPoint,
                          "[Debug] UnMounting is done. ret[0], result[0] "));
  EXPECT_EQ(fake::LogTexts(DLOG_INFO).size(), fake::LogTexts().size());
}

TEST_F(PackagedDataTest, TheStepsLogUnderTheirOwnNames) {
  PutIntoImage({{"metadata/a", "x"}});
  EXPECT_TRUE(Install(PACKAGED_TYPE_META_DATA));
  EXPECT_THAT(LoggingFunctions(),
              ElementsAre("InstallPackagedData", "MountFile", "InstallPackagedData", "ExtractFile",
                          "Unmount", "MoveEveryFilesInDirectory"));
}

TEST_F(PackagedDataTest, TheFailuresLogUnderTheNamesOfTheirSteps) {
  PutIntoImage({{"first", "1"}, {"first/below", "2"}});
  EXPECT_FALSE(Install());
  EXPECT_THAT(LoggingFunctions(),
              ElementsAre("InstallPackagedData", "MountFile", "InstallPackagedData", "ExtractFile",
                          "Unzip", "InstallPackagedData", "Unmount"));
}

TEST_F(PackagedDataTest, ThePlaceOfThePackagesIsTakenOnceAndStays) {
  PutIntoImage({{"index.html", "x"}});
  Install();
  const std::vector<std::string> before = fake::CallTexts({"PS_Mount"});
  UninstallPackagedData(PACKAGE, STANDARD, PACKAGED_TYPE_HBBTV_APP);
  fake::ClearCalls();
  fake::Fail("tzplatform_getenv", -1, fake::FOREVER);
  EXPECT_TRUE(Install());
  EXPECT_EQ(fake::CallTexts({"PS_Mount"}), before);
  EXPECT_EQ(fake::CallCount("tzplatform_getenv"), 0u);
}

TEST_F(PackagedDataTest, ATreeThatExistsIsEnoughForARunAtStart) {
  support::WriteFile(m_tree + "/anything", "x");
  EXPECT_TRUE(Install(BOTH, true));
  EXPECT_THAT(support::ListTree(m_tree), ElementsAre("anything"));
  EXPECT_THAT(fake::CallNames(), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rPackageID : org.example.pkg, bStarted : 1, "
                                            "rAppType : ch_feeder_standard, rDataType : 3"));
}

TEST_F(PackagedDataTest, ARunAtStartUnpacksWhatIsNotThere) {
  PutIntoImage({{"a", "x"}});
  EXPECT_TRUE(Install(PACKAGED_TYPE_HBBTV_APP, true));
  EXPECT_EQ(support::ReadFile(m_tree + "/a"), "x");
  EXPECT_EQ(support::ReadFile(m_list), "{\"app_type\":[\"ch_feeder_standard\"]}\n");
}

TEST_F(PackagedDataTest, ASecondAppTypeIsListedWithoutMountAndUnpacking) {
  support::WriteFile(m_list, "{\"app_type\":[\"ch_feeder_standard\"]}\n");
  EXPECT_TRUE(InstallPackagedData(PACKAGE, WIDGET, CUSTOM, PACKAGED_TYPE_HBBTV_APP, false));
  EXPECT_EQ(support::ReadFile(m_list),
            "{\"app_type\":[\"ch_feeder_standard\",\"ch_feeder_custom\"]}\n");
  EXPECT_THAT(support::ListTree(m_tree), ElementsAre("app_type_file.txt"));
  EXPECT_THAT(fake::CallNames(), ElementsAre("sync"));
}

TEST_F(PackagedDataTest, ASecondAppTypeWhoseListCannotBeWrittenIsAFailure) {
  support::MakeDirectories(m_tree);
  const SealedFile list(m_list, "{\"app_type\":[\"ch_feeder_standard\"]}\n");
  EXPECT_FALSE(InstallPackagedData(PACKAGE, WIDGET, CUSTOM, PACKAGED_TYPE_HBBTV_APP, false));
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] filePath is empty."));
  EXPECT_THAT(MountCalls(), IsEmpty());
}

TEST_F(PackagedDataTest, TheSameAppTypeTwiceReadsTheListAndDoesNotRewriteIt) {
  // A rewrite would change this form of the same list.
  const std::string sForm = "{\"z\":1,\"app_type\":[\"ch_feeder_custom\",\"ch_feeder_standard\"]}";
  support::WriteFile(m_list, sForm);
  EXPECT_TRUE(Install());
  EXPECT_EQ(support::ReadFile(m_list), sForm);
  EXPECT_THAT(fake::CallNames(), IsEmpty());
}

TEST_F(PackagedDataTest, ATreeWithoutAListIsAFailureForANewRun) {
  support::WriteFile(m_tree + "/rest", "of a failed unpacking");
  EXPECT_FALSE(Install());
  EXPECT_THAT(fake::CallNames(), IsEmpty());
  EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(PackagedDataTest, AMountPointThatCannotBeMadeEndsTheInstall) {
  support::WriteFile(m_hbbtv.substr(0, m_hbbtv.size() - 1), "a file in the way");
  EXPECT_FALSE(Install());
  EXPECT_THAT(Errors(), Contains("[ERROR] FileSystemUtils::CreateDirectory() return false."));
  EXPECT_THAT(fake::CallNames(), IsEmpty());
}

TEST_F(PackagedDataTest, AMountThatFailsWithoutAFallbackEndsTheInstall) {
  fake::SetMountHandler([](const fake::Mount&) { return 32; });
  EXPECT_FALSE(Install());
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] Mounting is done. ret[0], result[32] "));
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] Cannot find target zip file."));
  EXPECT_EQ(fake::CallCount("PS_Umount"), 0u);
  EXPECT_TRUE(support::Exists(m_mountPoint));
  EXPECT_FALSE(support::Exists(m_tree));
}

TEST_F(PackagedDataTest, AMountServiceOutOfReachLeavesTheResultThatItBeganWith) {
  fake::Fail("PS_Mount", -7);
  EXPECT_FALSE(Install());
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] Mounting is done. ret[-7], result[-1] "));
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] Cannot find target zip file."));
}

TEST_F(PackagedDataTest, AMountThatFailsTurnsToTheFallbackArchiveAndUnmountsNothing) {
  fake::SetMountHandler([](const fake::Mount&) { return 1; });
  support::WriteZip(m_fallback, {{"from_fallback", "x"}});
  EXPECT_TRUE(Install());
  EXPECT_EQ(support::ReadFile(m_tree + "/from_fallback"), "x");
  EXPECT_EQ(support::ReadFile(m_list), "{\"app_type\":[\"ch_feeder_standard\"]}\n");
  EXPECT_EQ(fake::CallCount("PS_Umount"), 0u);
}

TEST_F(PackagedDataTest, AMountThatWorksNeverLooksAtTheFallbackArchive) {
  support::WriteZip(m_fallback, {{"from_fallback", "x"}});
  EXPECT_FALSE(Install());  // the image is empty
  EXPECT_THAT(fake::LogTexts(), HasLog("[ERROR] unzHandle is NULL"));
  EXPECT_FALSE(support::Exists(m_tree + "/from_fallback"));
}

TEST_F(PackagedDataTest, ATargetThatCannotBeMadeIsUnmounted) {
  PutIntoImage({{"a", "x"}});
  support::MakeDirectories(m_hbbtv);
  ASSERT_EQ(symlink("nowhere", m_tree.c_str()), 0);
  EXPECT_FALSE(Install());
  EXPECT_THAT(Errors(), Contains("[ERROR] FileSystemUtils::CreateDirectory() return false."));
  EXPECT_EQ(fake::CallCount("PS_Umount"), 1u);
}

TEST_F(PackagedDataTest, ATargetThatCannotBeMadeForTheFallbackUnmountsNothing) {
  fake::SetMountHandler([](const fake::Mount&) { return 1; });
  support::WriteZip(m_fallback, {{"a", "x"}});
  support::MakeDirectories(m_hbbtv);
  ASSERT_EQ(symlink("nowhere", m_tree.c_str()), 0);
  EXPECT_FALSE(Install());
  EXPECT_EQ(fake::CallCount("PS_Umount"), 0u);
}

TEST_F(PackagedDataTest, AnUnpackingThatFailsIsUnmountedAndLeavesWhatItUnpacked) {
  PutIntoImage({{"first", "1"}, {"first/below", "2"}, {"last", "3"}});
  EXPECT_FALSE(Install());
  EXPECT_THAT(Errors(), Contains("[ERROR] FileSystemUtils::Unzip() return false."));
  EXPECT_EQ(fake::CallCount("PS_Umount"), 1u);
  EXPECT_THAT(support::ListTree(m_tree), ElementsAre("first"));
}

TEST_F(PackagedDataTest, AnUnpackingThatFailedIsTakenForInstalledLater) {
  EXPECT_FALSE(Install());  // no archive in the image
  EXPECT_TRUE(support::Exists(m_tree));
  PutIntoImage({{"a", "x"}});
  EXPECT_FALSE(Install(PACKAGED_TYPE_HBBTV_APP, false));
  EXPECT_TRUE(Install(PACKAGED_TYPE_HBBTV_APP, true));
  EXPECT_EQ(fake::CallCount("PS_Mount"), 1u);
  EXPECT_THAT(support::ListTree(m_tree), IsEmpty());
}

TEST_F(PackagedDataTest, AnArchiveWhoseFirstEntryCannotBeReachedFailsTheInstall) {
  fake::SetMountHandler([](const fake::Mount& rMount) {
    support::WriteFile(rMount.directory + "/orv_app.zip", "stubPK\x05\x06" + std::string(18, '\0'));
    return 0;
  });
  EXPECT_FALSE(Install());
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] FileSystemUtils::Unzip() return false."));
  EXPECT_FALSE(support::Exists(m_list));
}

TEST_F(PackagedDataTest, AnUnmountThatFailsIsNotActedOn) {
  PutIntoImage({{"a", "x"}});
  fake::SetUmountHandler([](const std::string&) { return 5; });
  EXPECT_TRUE(Install());
  EXPECT_THAT(fake::LogTexts(), HasLog("[Debug] UnMounting is done. ret[0], result[5] "));
  EXPECT_TRUE(support::Exists(m_list));
}

TEST_F(PackagedDataTest, MetadataFilesMoveAndSubdirectoriesStay) {
  PutIntoImage({{"index.html", "<html/>"},
                {"metadata/schedule.json", "s"},
                {"metadata/channel.json", "c"},
                {"metadata/logo/1.png", "p"}});
  EXPECT_TRUE(Install(BOTH));
  EXPECT_THAT(support::ListTree(m_metadata + PACKAGE),
              ElementsAre("channel.json", "schedule.json"));
  EXPECT_EQ(support::ReadFile(m_metadata + PACKAGE + "/channel.json"), "c");
  EXPECT_THAT(support::ListTree(m_tree), ElementsAre("app_type_file.txt", "index.html", "metadata/",
                                                     "metadata/logo/", "metadata/logo/1.png"));
}

TEST_F(PackagedDataTest, EachMoveIsLoggedInTheOrderOfTheNames) {
  PutIntoImage({{"metadata/b", "2"}, {"metadata/c/x", "3"}, {"metadata/a", "1"}});
  EXPECT_TRUE(Install(PACKAGED_TYPE_META_DATA));
  const std::string sSource = m_tree + "/metadata";
  const std::string sTarget = m_metadata + PACKAGE;
  std::vector<std::string> texts = fake::LogTexts();
  texts.erase(texts.begin(),
              std::find(texts.begin(), texts.end(), "[Info] sOldDirectoryPath : " + sSource));
  EXPECT_THAT(texts, ElementsAre("[Info] sOldDirectoryPath : " + sSource,
                                 "[Info] sNewDirectoryPath : " + sTarget,
                                 "[Info] directory_iterator -> " + sSource + "/a",
                                 "[Info] Move to " + sTarget + "/a",
                                 "[Info] directory_iterator -> " + sSource + "/b",
                                 "[Info] Move to " + sTarget + "/b",
                                 "[Info] directory_iterator -> " + sSource + "/c"));
}

TEST_F(PackagedDataTest, MetadataMovesAfterTheUnmount) {
  PutIntoImage({{"metadata/a", "x"}});
  EXPECT_TRUE(Install(PACKAGED_TYPE_META_DATA));
  EXPECT_THAT(fake::LogTexts(), support::HasLogsInOrder(support::Texts(
                                    {"[Debug] UnMounting is done. ret[0], result[0] ",
                                     "[Info] sOldDirectoryPath : " + m_tree + "/metadata"})));
}

TEST_F(PackagedDataTest, MovedFilesReplaceFilesOfTheSameName) {
  PutIntoImage({{"metadata/channel.json", "new"}});
  support::WriteFile(m_metadata + PACKAGE + "/channel.json", "old");
  support::WriteFile(m_metadata + PACKAGE + "/other.json", "stays");
  EXPECT_TRUE(Install(PACKAGED_TYPE_META_DATA));
  EXPECT_EQ(support::ReadFile(m_metadata + PACKAGE + "/channel.json"), "new");
  EXPECT_EQ(support::ReadFile(m_metadata + PACKAGE + "/other.json"), "stays");
}

TEST_F(PackagedDataTest, WithoutMetadataInTheArchiveTheTargetStaysEmpty) {
  PutIntoImage({{"index.html", "x"}});
  EXPECT_TRUE(Install(BOTH));
  EXPECT_TRUE(support::Exists(m_metadata + PACKAGE));
  EXPECT_THAT(support::ListTree(m_metadata + PACKAGE), IsEmpty());
  EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(PackagedDataTest, OfTypeTwoAloneTheArchiveIsUnpackedWholeAllTheSame) {
  PutIntoImage({{"index.html", "x"}});
  EXPECT_TRUE(Install(PACKAGED_TYPE_META_DATA));
  EXPECT_EQ(support::ReadFile(m_tree + "/index.html"), "x");
}

TEST_F(PackagedDataTest, OfTypeOneAloneTheMetadataStaysInTheTree) {
  PutIntoImage({{"metadata/channel.json", "c"}});
  EXPECT_TRUE(Install(PACKAGED_TYPE_HBBTV_APP));
  EXPECT_EQ(support::ReadFile(m_tree + "/metadata/channel.json"), "c");
  EXPECT_FALSE(support::Exists(m_metadata));
}

TEST_F(PackagedDataTest, AMetadataTargetThatCannotBeMadeLeavesTheTreeWithoutAList) {
  PutIntoImage({{"metadata/a", "x"}});
  support::WriteFile(m_metadata.substr(0, m_metadata.size() - 1), "a file in the way");
  EXPECT_FALSE(Install(PACKAGED_TYPE_META_DATA));
  EXPECT_THAT(Errors(), Contains("[ERROR] FileSystemUtils::CreateDirectory() return false."));
  EXPECT_EQ(fake::CallCount("PS_Umount"), 1u);
  EXPECT_THAT(support::ListTree(m_tree), ElementsAre("metadata/", "metadata/a"));
}

TEST_F(PackagedDataTest, AMoveThatFailsIsAnExceptionThatEndsTheInstall) {
  PutIntoImage({{"metadata/a", "x"}, {"metadata/b", "y"}});
  support::MakeDirectories(m_metadata + PACKAGE + "/a");
  EXPECT_FALSE(Install(PACKAGED_TYPE_META_DATA));
  EXPECT_EQ(fake::LogTexts().back(),
            "[Info] exception : boost::filesystem::rename: Is a directory: \"" + m_tree +
                "/metadata/a\", \"" + m_metadata + PACKAGE + "/a\"");
  EXPECT_FALSE(support::Exists(m_list));
  EXPECT_TRUE(support::Exists(m_tree + "/metadata/b"));
}

TEST_F(PackagedDataTest, AnArchiveWithABrokenListEndsTheInstallWithAnException) {
  PutIntoImage({{"app_type_file.txt", "{\"app_type\":\"text\"}"}});
  EXPECT_FALSE(Install());
  EXPECT_EQ(fake::LogTexts().back(),
            "[Info] exception : in Json::Value::append: requires arrayValue");
}

TEST_F(PackagedDataTest, AnExceptionWhileMountingLeavesTheMountInPlace) {
  fake::SetMountHandler([](const fake::Mount&) -> int { throw std::runtime_error("torn off"); });
  EXPECT_FALSE(Install());
  EXPECT_EQ(fake::LogTexts().back(), "[Info] exception : torn off");
  EXPECT_EQ(fake::CallCount("PS_Umount"), 0u);
}

TEST_F(PackagedDataTest, AnExceptionWithoutATextHasTheStandingOne) {
  fake::SetMountHandler([](const fake::Mount&) -> int { throw 42; });
  EXPECT_FALSE(Install());
  EXPECT_EQ(fake::LogTexts().back(), "[Info] exception : No diagnostic information available.");
}

TEST_F(PackagedDataTest, AnExceptionWithAnEmptyTextHasTheStandingOne) {
  fake::SetMountHandler([](const fake::Mount&) -> int { throw std::runtime_error(""); });
  EXPECT_FALSE(Install());
  EXPECT_EQ(fake::LogTexts().back(), "[Info] exception : No diagnostic information available.");
}

TEST_F(PackagedDataTest, AListIsCreatedOnlyOnRequest) {
  support::MakeDirectories(m_tree);
  EXPECT_FALSE(AddAppTypeToFile(m_list, STANDARD, false));
  EXPECT_FALSE(support::Exists(m_list));
  EXPECT_TRUE(AddAppTypeToFile(m_list, STANDARD, true));
  EXPECT_EQ(support::ReadFile(m_list), "{\"app_type\":[\"ch_feeder_standard\"]}\n");
}

TEST_F(PackagedDataTest, AnExistingListIsExtendedEvenIfCreationIsRequested) {
  support::WriteFile(m_list, "{\"app_type\":[\"a\"]}\n");
  EXPECT_TRUE(AddAppTypeToFile(m_list, "b", false));
  EXPECT_TRUE(AddAppTypeToFile(m_list, "c", true));
  EXPECT_EQ(support::ReadFile(m_list), "{\"app_type\":[\"a\",\"b\",\"c\"]}\n");
}

TEST_F(PackagedDataTest, OtherMembersOfAListStay) {
  support::WriteFile(m_list, "{\"z\":1,\"app_type\":[\"a\"]}");
  EXPECT_TRUE(AddAppTypeToFile(m_list, "b", false));
  EXPECT_EQ(support::ReadFile(m_list), "{\"app_type\":[\"a\",\"b\"],\"z\":1}\n");
}

TEST_F(PackagedDataTest, AListThatIsNotJsonIsReplaced) {
  support::WriteFile(m_list, "garbage");
  EXPECT_TRUE(AddAppTypeToFile(m_list, "a", false));
  EXPECT_EQ(support::ReadFile(m_list), "{\"app_type\":[\"a\"]}\n");
}

TEST_F(PackagedDataTest, AListThatIsJsonAtItsStartKeepsItsTypes) {
  support::WriteFile(m_list, "{\"app_type\":[\"a\"],garbage");
  EXPECT_TRUE(AddAppTypeToFile(m_list, "b", false));
  EXPECT_EQ(support::ReadFile(m_list), "{\"app_type\":[\"a\",\"b\"]}\n");
}

TEST_F(PackagedDataTest, AListWithBlanksIsCutShortAndLosesItsTypes) {
  support::WriteFile(m_list, "{\"app_type\": [\"a\"]}");
  EXPECT_TRUE(AddAppTypeToFile(m_list, "b", false));
  EXPECT_EQ(support::ReadFile(m_list), "{\"app_type\":[\"b\"]}\n");
}

TEST_F(PackagedDataTest, AListThatCannotBeReadCountsAsMissing) {
  support::MakeDirectories(m_tree);
  const ClosedFile list(m_list);
  EXPECT_FALSE(AddAppTypeToFile(m_list, "a", false));
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] file is not existed."));
  EXPECT_FALSE(AddAppTypeToFile(m_list, "a", true));
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] file is not existed.", "[ERROR] file is not existed.",
                                    "[ERROR] filePath is empty."));
}

TEST_F(PackagedDataTest, UninstallOfOneOfTwoTypesLeavesTheTreeToTheOther) {
  support::WriteFile(m_tree + "/index.html", "x");
  support::WriteFile(m_list, "{\"app_type\":[\"ch_feeder_standard\",\"ch_feeder_custom\"]}\n");
  UninstallPackagedData(PACKAGE, STANDARD, PACKAGED_TYPE_HBBTV_APP);
  EXPECT_EQ(support::ReadFile(m_list), "{\"app_type\":[\"ch_feeder_custom\"]}\n");
  EXPECT_TRUE(support::Exists(m_tree + "/index.html"));
  EXPECT_THAT(fake::CallNames(), ElementsAre("sync"));
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] rPackageID : org.example.pkg, rAppType : ch_feeder_standard, "
                          "rDataType : 1",
                          "[Info] [PACKAGED_TYPE_HBBTV_APP] sTargetDirectory : " + m_tree + "/"));
}

TEST_F(PackagedDataTest, UninstallOfTheLastTypeTakesTheTree) {
  support::WriteFile(m_tree + "/index.html", "x");
  support::WriteFile(m_list, "{\"app_type\":[\"ch_feeder_standard\"]}\n");
  UninstallPackagedData(PACKAGE, STANDARD, PACKAGED_TYPE_HBBTV_APP);
  EXPECT_FALSE(support::Exists(m_tree));
  EXPECT_TRUE(support::Exists(m_hbbtv));
  EXPECT_THAT(fake::CallNames(), IsEmpty());
}

TEST_F(PackagedDataTest, UninstallWithoutTheHbbTvBitLeavesTheTreeAlone) {
  support::WriteFile(m_list, "{\"app_type\":[\"ch_feeder_standard\"]}\n");
  UninstallPackagedData(PACKAGE, STANDARD, PACKAGED_TYPE_META_DATA);
  EXPECT_EQ(support::ReadFile(m_list), "{\"app_type\":[\"ch_feeder_standard\"]}\n");
}

TEST_F(PackagedDataTest, UninstallRemovesTheMetadataEvenIfItIsStillUsed) {
  support::WriteFile(m_metadata + PACKAGE + "/channel.json", "c");
  support::WriteFile(m_metadata + "org.example.other/channel.json", "c");
  support::WriteFile(m_list, "{\"app_type\":[\"ch_feeder_standard\",\"ch_feeder_custom\"]}\n");
  UninstallPackagedData(PACKAGE, STANDARD, BOTH);
  EXPECT_FALSE(support::Exists(m_metadata + PACKAGE));
  EXPECT_TRUE(support::Exists(m_metadata + "org.example.other/channel.json"));
  EXPECT_EQ(support::ReadFile(m_list), "{\"app_type\":[\"ch_feeder_custom\"]}\n");
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] rPackageID : org.example.pkg, rAppType : ch_feeder_standard, "
                          "rDataType : 3",
                          "[Info] [PACKAGED_TYPE_META_DATA] sTargetDirectory : " + m_metadata +
                              PACKAGE + "/",
                          "[Info] [PACKAGED_TYPE_HBBTV_APP] sTargetDirectory : " + m_tree + "/"));
}

TEST_F(PackagedDataTest, UninstallWithoutTheMetadataBitLeavesTheMetadata) {
  support::WriteFile(m_metadata + PACKAGE + "/channel.json", "c");
  UninstallPackagedData(PACKAGE, STANDARD, PACKAGED_TYPE_HBBTV_APP);
  EXPECT_TRUE(support::Exists(m_metadata + PACKAGE + "/channel.json"));
}

TEST_F(PackagedDataTest, UninstallOfWhatIsNotThereOnlyLogs) {
  UninstallPackagedData(PACKAGE, STANDARD, BOTH);
  EXPECT_EQ(fake::LogTexts().size(), 3u);
  EXPECT_THAT(Errors(), IsEmpty());
  EXPECT_THAT(fake::CallNames(), IsEmpty());
}

TEST_F(PackagedDataTest, UninstallWithoutAListTakesTheTree) {
  support::WriteFile(m_tree + "/index.html", "x");
  UninstallPackagedData(PACKAGE, STANDARD, PACKAGED_TYPE_HBBTV_APP);
  EXPECT_FALSE(support::Exists(m_tree));
  EXPECT_THAT(Errors(), IsEmpty());
}

TEST_F(PackagedDataTest, UninstallWithAListThatCannotBeReadTakesTheTree) {
  support::MakeDirectories(m_tree);
  const ClosedFile list(m_list);
  UninstallPackagedData(PACKAGE, STANDARD, PACKAGED_TYPE_HBBTV_APP);
  EXPECT_FALSE(support::Exists(m_tree));
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] file is not existed."));
}

TEST_F(PackagedDataTest, UninstallWithAListThatIsNoJsonTakesTheTree) {
  support::WriteFile(m_list, "garbage");
  UninstallPackagedData(PACKAGE, STANDARD, PACKAGED_TYPE_HBBTV_APP);
  EXPECT_FALSE(support::Exists(m_tree));
}

TEST_F(PackagedDataTest, UninstallWithAnEmptyListTakesTheTree) {
  support::WriteFile(m_list, "{\"app_type\":[]}");
  UninstallPackagedData(PACKAGE, STANDARD, PACKAGED_TYPE_HBBTV_APP);
  EXPECT_FALSE(support::Exists(m_tree));
}

TEST_F(PackagedDataTest, UninstallOfATypeThatIsNotListedRewritesTheList) {
  support::WriteFile(m_list, "{\"z\":1,\"app_type\":[\"ch_feeder_custom\"]}");
  UninstallPackagedData(PACKAGE, STANDARD, PACKAGED_TYPE_HBBTV_APP);
  EXPECT_EQ(support::ReadFile(m_list), "{\"app_type\":[\"ch_feeder_custom\"],\"z\":1}\n");
}

TEST_F(PackagedDataTest, UninstallSkipsTheEntryThatSlidIntoTheGap) {
  support::WriteFile(m_list, "{\"app_type\":[\"a\",\"a\",\"b\",\"a\"]}");
  UninstallPackagedData(PACKAGE, "a", PACKAGED_TYPE_HBBTV_APP);
  EXPECT_EQ(support::ReadFile(m_list), "{\"app_type\":[\"a\",\"b\"]}\n");
}

TEST_F(PackagedDataTest, UninstallWhoseListCannotBeWrittenTakesTheTreeAllTheSame) {
  support::MakeDirectories(m_tree);
  const SealedFile list(m_list, "{\"app_type\":[\"ch_feeder_standard\",\"ch_feeder_custom\"]}\n");
  UninstallPackagedData(PACKAGE, STANDARD, PACKAGED_TYPE_HBBTV_APP);
  EXPECT_FALSE(support::Exists(m_tree));
  EXPECT_THAT(Errors(), ElementsAre("[ERROR] filePath is empty."));
}

TEST_F(PackagedDataTest, UninstallLetsTheExceptionOfAMisshapenListPass) {
  support::WriteFile(m_list, "[1]");
  EXPECT_THROW(UninstallPackagedData(PACKAGE, STANDARD, PACKAGED_TYPE_HBBTV_APP), std::exception);
  EXPECT_TRUE(support::Exists(m_list));
}

TEST_F(PackagedDataTest, UnmountLogsThePathAndTheOutcome) {
  fake::Fail("PS_Umount", -3);
  FileSystemUtils::Unmount("/some/where");
  EXPECT_THAT(fake::CallTexts(), ElementsAre("PS_Umount(/some/where, 11, 0) = -3"));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] sMountedDir : /some/where",
                                            "[Debug] UnMounting is done. ret[-3], result[-1] "));
}

}  // namespace
