// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "utils/PackagedDataArchive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "fake/control/log.h"
#include "support/files.h"
#include "support/log_matchers.h"

namespace {

using support::HasLog;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

/// An archive next to the directory that it is unpacked into.
class PackagedDataArchiveTest : public testing::Test {
 protected:
  PackagedDataArchiveTest() {
    support::MakeDirectories(m_target);
    fake::ClearLog();
  }

  bool Unzip(const std::vector<support::ZipEntry>& rEntries) {
    support::WriteZip(m_archive, rEntries);
    return FileSystemUtils::Unzip(m_archive, m_target);
  }
  /// Replaces the place-th occurrence of a text in the archive's bytes by another text of the same
  /// length.
  void Damage(const std::string& rOld, const std::string& rNew, int place = 1) {
    ASSERT_EQ(rOld.size(), rNew.size());
    std::string bytes = support::ReadFile(m_archive);
    std::size_t at = bytes.find(rOld);
    for (int i = 1; i < place && at != std::string::npos; ++i) {
      at = bytes.find(rOld, at + 1);
    }
    ASSERT_NE(at, std::string::npos) << "the archive does not contain these bytes";
    bytes.replace(at, rOld.size(), rNew);
    support::WriteFile(m_archive, bytes);
  }
  std::string ExtractFailure(const std::string& rName) const {
    return "[ERROR] ExtractFile() return false.[targetFilename : " + m_target + "/" + rName + "]";
  }

  support::TempDir m_dir;
  const std::string m_archive = m_dir / "orv_app.zip";
  const std::string m_target = m_dir / "target";
};

TEST_F(PackagedDataArchiveTest, EveryEntryIsUnpackedInOrderWithOneLineEach) {
  EXPECT_TRUE(Unzip({{"index.html", "<html/>"}, {"js/main.js", "main()"}, {"js/lib/a.js", ""}}));
  EXPECT_THAT(support::ListTree(m_target),
              ElementsAre("index.html", "js/", "js/lib/", "js/lib/a.js", "js/main.js"));
  EXPECT_EQ(support::ReadFile(m_target + "/index.html"), "<html/>");
  EXPECT_EQ(support::ReadFile(m_target + "/js/main.js"), "main()");
  EXPECT_EQ(support::ReadFile(m_target + "/js/lib/a.js"), "");
  EXPECT_THAT(fake::LogTexts(),
              ElementsAre("[Info] rTargetFilePath : " + m_target + "/index.html",
                          "[Info] rTargetFilePath : " + m_target + "/js/main.js",
                          "[Info] rTargetFilePath : " + m_target + "/js/lib/a.js"));
}

TEST_F(PackagedDataArchiveTest, ContentsLongerThanTheReadBufferComeOutByteForByte) {
  std::string content;
  for (unsigned int i = 0; i < 4096 * 5; ++i) {
    content += static_cast<char>(i * i % 251);
  }
  EXPECT_TRUE(Unzip({{"exact", content},
                     {"more", content + "x"},
                     {"less", content.substr(1)},
                     {"stored", content + "yz", true}}));
  EXPECT_EQ(support::ReadFile(m_target + "/exact"), content);
  EXPECT_EQ(support::ReadFile(m_target + "/more"), content + "x");
  EXPECT_EQ(support::ReadFile(m_target + "/less"), content.substr(1));
  EXPECT_EQ(support::ReadFile(m_target + "/stored"), content + "yz");
}

TEST_F(PackagedDataArchiveTest, ATargetThatEndsInASlashGetsNoSecondOne) {
  support::WriteZip(m_archive, {{"a", "x"}});
  EXPECT_TRUE(FileSystemUtils::Unzip(m_archive, m_target + "/"));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rTargetFilePath : " + m_target + "/a"));
}

TEST_F(PackagedDataArchiveTest, EntriesOfDirectoriesMakeTheDirectories) {
  EXPECT_TRUE(Unzip({{"empty/", ""}, {"deep/er/", ""}, {"deep/er/file", "x"}}));
  EXPECT_THAT(support::ListTree(m_target),
              ElementsAre("deep/", "deep/er/", "deep/er/file", "empty/"));
}

TEST_F(PackagedDataArchiveTest, ADirectoryInThePlaceOfAFilePassesUnnoticed) {
  support::MakeDirectories(m_target + "/name");
  EXPECT_TRUE(Unzip({{"name", "content"}, {"next", "x"}}));
  EXPECT_THAT(support::ListTree(m_target), ElementsAre("name/", "next"));
}

TEST_F(PackagedDataArchiveTest, BackslashesInNamesLeadIntoSubdirectories) {
  EXPECT_TRUE(Unzip({{"css\\deep\\style.css", "body{}"}, {"img\\", ""}}));
  EXPECT_THAT(support::ListTree(m_target),
              ElementsAre("css/", "css/deep/", "css/deep/style.css", "img/"));
  EXPECT_THAT(fake::LogTexts(),
              HasLog("[Info] rTargetFilePath : " + m_target + "/css/deep/style.css"));
}

TEST_F(PackagedDataArchiveTest, ABackslashInTheTargetDirectoryBecomesASlashToo) {
  support::MakeDirectories(m_dir / "back");
  support::WriteZip(m_archive, {{"a", "x"}});
  EXPECT_TRUE(FileSystemUtils::Unzip(m_archive, m_dir / "back\\slash"));
  EXPECT_EQ(support::ReadFile(m_dir / "back/slash/a"), "x");
}

TEST_F(PackagedDataArchiveTest, AParentDirectoryInANameIsNotLookedFor) {
  EXPECT_TRUE(Unzip({{"../beside.txt", "out"}, {"sub/../in.txt", "in"}}));
  EXPECT_EQ(support::ReadFile(m_dir / "beside.txt"), "out");
  EXPECT_EQ(support::ReadFile(m_target + "/in.txt"), "in");
}

TEST_F(PackagedDataArchiveTest, ANameLongerThanItsBufferIsCut) {
  const std::string sDirectory(150, 'd');
  const std::string sFile(149, 'f');
  EXPECT_TRUE(Unzip({{sDirectory + "/" + sFile, "x"}, {"next", "y"}}));
  // 256 characters of the name remain: 150, the slash and 105.
  EXPECT_EQ(support::ReadFile(m_target + "/" + sDirectory + "/" + std::string(105, 'f')), "x");
  EXPECT_EQ(support::ReadFile(m_target + "/next"), "y");
}

TEST_F(PackagedDataArchiveTest, AnExistingFileIsReplacedWhole) {
  support::WriteFile(m_target + "/a", "a long old content");
  EXPECT_TRUE(Unzip({{"a", "new"}}));
  EXPECT_EQ(support::ReadFile(m_target + "/a"), "new");
}

TEST_F(PackagedDataArchiveTest, ALinkToAFileStopsTheUnpackingAndEarlierEntriesStand) {
  support::WriteFile(m_dir / "precious", "untouched");
  ASSERT_EQ(symlink("../precious", (m_target + "/link").c_str()), 0);
  EXPECT_FALSE(Unzip({{"first", "1"}, {"link", "overwritten"}, {"last", "3"}}));
  EXPECT_EQ(support::ReadFile(m_dir / "precious"), "untouched");
  EXPECT_EQ(support::ReadFile(m_target + "/first"), "1");
  EXPECT_FALSE(support::Exists(m_target + "/last"));
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR),
              ElementsAre("[ERROR] rTargetFilePath is symbolic link.", ExtractFailure("link")));
}

TEST_F(PackagedDataArchiveTest, ALinkThatLeadsNowhereStopsTheUnpacking) {
  ASSERT_EQ(symlink("../nowhere", (m_target + "/link").c_str()), 0);
  EXPECT_FALSE(Unzip({{"link", "x"}}));
  EXPECT_FALSE(support::Exists(m_dir / "nowhere"));
  EXPECT_THAT(fake::LogTexts(), HasLog("[ERROR] rTargetFilePath is symbolic link."));
}

TEST_F(PackagedDataArchiveTest, ALinkToItselfStopsTheUnpacking) {
  ASSERT_EQ(symlink("link", (m_target + "/link").c_str()), 0);
  EXPECT_FALSE(Unzip({{"link", "x"}}));
  EXPECT_THAT(fake::LogTexts(), HasLog("[ERROR] rTargetFilePath is symbolic link."));
}

TEST_F(PackagedDataArchiveTest, ALinkToADirectoryPassesUnnoticed) {
  support::MakeDirectories(m_dir / "elsewhere");
  ASSERT_EQ(symlink("../elsewhere", (m_target + "/link").c_str()), 0);
  EXPECT_TRUE(Unzip({{"link", "x"}, {"link/file", "y"}}));
  EXPECT_THAT(support::ListTree(m_dir / "elsewhere"), ElementsAre("file"));
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR), IsEmpty());
}

TEST_F(PackagedDataArchiveTest, AnArchiveThatIsMissingHasNoHandle) {
  EXPECT_FALSE(FileSystemUtils::Unzip(m_dir / "missing.zip", m_target));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[ERROR] unzHandle is NULL"));
}

TEST_F(PackagedDataArchiveTest, AFileThatIsNoArchiveHasNoHandle) {
  support::WriteFile(m_archive, std::string(5000, 'x'));
  EXPECT_FALSE(FileSystemUtils::Unzip(m_archive, m_target));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[ERROR] unzHandle is NULL"));
}

TEST_F(PackagedDataArchiveTest, AnythingButARegularFileHasNoHandle) {
  const std::string device = m_dir / "device";
  const std::string directory = m_dir / "directory";
  const std::string dangling = m_dir / "dangling";
  // A reader of a FIFO would wait forever for a writer.
  ASSERT_EQ(mkfifo(m_archive.c_str(), 0600), 0);
  ASSERT_EQ(symlink("/dev/zero", device.c_str()), 0);
  ASSERT_EQ(symlink("nothing", dangling.c_str()), 0);
  support::MakeDirectories(directory);
  for (const std::string& path : {m_archive, device, directory, dangling}) {
    fake::ClearLog();
    EXPECT_FALSE(FileSystemUtils::Unzip(path, m_target)) << path;
    EXPECT_THAT(fake::LogTexts(), ElementsAre("[ERROR] unzHandle is NULL")) << path;
  }
}

TEST_F(PackagedDataArchiveTest, ALinkToAnArchiveIsFollowed) {
  support::WriteZip(m_archive, {{"index.html", "<html/>"}});
  const std::string link = m_dir / "link.zip";
  ASSERT_EQ(symlink(m_archive.c_str(), link.c_str()), 0);
  EXPECT_TRUE(FileSystemUtils::Unzip(link, m_target));
  EXPECT_THAT(support::ListTree(m_target), ElementsAre("index.html"));
}

TEST_F(PackagedDataArchiveTest, AnArchiveWithoutEntriesFailsWithoutALine) {
  // Only the end record, after four other bytes.
  support::WriteFile(m_archive, "stubPK\x05\x06" + std::string(18, '\0'));
  EXPECT_FALSE(FileSystemUtils::Unzip(m_archive, m_target));
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(PackagedDataArchiveTest, ADamagedFirstDirectoryRecordFailsWithoutALine) {
  support::WriteZip(m_archive, {{"a", "x"}, {"b", "y"}});
  Damage("PK\x01\x02", "PK\x01\x7f");
  EXPECT_FALSE(FileSystemUtils::Unzip(m_archive, m_target));
  EXPECT_THAT(support::ListTree(m_target), IsEmpty());
  EXPECT_THAT(fake::LogTexts(), IsEmpty());
}

TEST_F(PackagedDataArchiveTest, ADamagedLaterDirectoryRecordFailsWhenItIsReached) {
  support::WriteZip(m_archive, {{"a", "x"}, {"b", "y"}, {"c", "z"}});
  Damage("PK\x01\x02", "PK\x01\x7f", 2);
  EXPECT_FALSE(FileSystemUtils::Unzip(m_archive, m_target));
  EXPECT_THAT(support::ListTree(m_target), ElementsAre("a"));
  EXPECT_THAT(fake::LogTexts(), ElementsAre("[Info] rTargetFilePath : " + m_target + "/a"));
}

TEST_F(PackagedDataArchiveTest, AnEntryWithADamagedHeadCannotBeOpened) {
  support::WriteZip(m_archive, {{"a", "x"}, {"b", "y"}});
  Damage("PK\x03\x04", "PK\x03\x7f", 2);
  EXPECT_FALSE(FileSystemUtils::Unzip(m_archive, m_target));
  EXPECT_THAT(support::ListTree(m_target), ElementsAre("a"));
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR),
              ElementsAre("[ERROR] unzOpenCurrentFile() failed.", ExtractFailure("b")));
}

TEST_F(PackagedDataArchiveTest, ContentThatCannotBeUnpackedFailsWithoutALineOfItsOwn) {
  support::WriteZip(m_archive, {{"a", "x"}, {"broken", std::string(9000, 'b')}, {"c", "z"}});
  std::string bytes = support::ReadFile(m_archive);
  // The name is followed by the first block, now of an invalid type.
  bytes[bytes.find("broken") + 6] = '\x07';
  support::WriteFile(m_archive, bytes);
  EXPECT_FALSE(FileSystemUtils::Unzip(m_archive, m_target));
  EXPECT_THAT(support::ListTree(m_target), ElementsAre("a", "broken"));
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR), ElementsAre(ExtractFailure("broken")));
}

TEST_F(PackagedDataArchiveTest, AnEntryWithAWrongChecksumIsTakenAllTheSame) {
  support::WriteZip(m_archive, {{"a", "original", true}, {"b", "y"}});
  Damage("original", "altered!");
  EXPECT_TRUE(FileSystemUtils::Unzip(m_archive, m_target));
  EXPECT_EQ(support::ReadFile(m_target + "/a"), "altered!");
  EXPECT_EQ(support::ReadFile(m_target + "/b"), "y");
}

TEST_F(PackagedDataArchiveTest, AnEntryDirectlyBelowAFileCannotBeOpenedForWriting) {
  EXPECT_FALSE(Unzip({{"file", "x"}, {"file/below", "y"}}));
  EXPECT_THAT(
      fake::LogTexts(DLOG_ERROR),
      ElementsAre("[ERROR] Fail to open target file.(filename : " + m_target + "/file/below)",
                  ExtractFailure("file/below")));
}

TEST_F(PackagedDataArchiveTest, AnEntryFurtherBelowAFileHasNoDirectoryToGoTo) {
  EXPECT_FALSE(Unzip({{"file", "x"}, {"file/below/it", "y"}}));
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR),
              ElementsAre("[ERROR] exception : boost::filesystem::create_directory: Not a "
                          "directory: \"" +
                              m_target + "/file/below\"",
                          "[ERROR] Fail to Create target Directories.(path : " + m_target +
                              "/file/below/it)",
                          ExtractFailure("file/below/it")));
}

TEST_F(PackagedDataArchiveTest, AFileInThePlaceOfADirectoryEntryIsNoDirectory) {
  // The parent of "name/" exists as a file, and "name/" itself cannot be opened.
  support::WriteFile(m_target + "/name", "x");
  EXPECT_FALSE(Unzip({{"name/", ""}}));
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR),
              ElementsAre("[ERROR] Fail to open target file.(filename : " + m_target + "/name/)",
                          ExtractFailure("name/")));
}

TEST_F(PackagedDataArchiveTest, ManySmallFilesLeaveNoFileOpen) {
  std::vector<support::ZipEntry> entries;
  for (int i = 0; i < 2000; ++i) {
    entries.push_back({"f" + std::to_string(i), std::to_string(i)});
  }
  EXPECT_TRUE(Unzip(entries));
  EXPECT_EQ(support::ListTree(m_target).size(), 2000u);
  EXPECT_EQ(support::ReadFile(m_target + "/f1999"), "1999");
  EXPECT_THAT(fake::LogTexts(DLOG_ERROR), IsEmpty());
}

}  // namespace
