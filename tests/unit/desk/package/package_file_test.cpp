// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/package/package_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "package_maker.h"

namespace desk {
namespace {

class PackageFileTest : public ::testing::Test {
 protected:
  std::string Write(const PackageMaker& maker) {
    maker.Write(m_file);
    return m_file;
  }
  std::string ErrorOf(const PackageMaker& maker, const PackageLimits& limits = PackageLimits()) {
    Write(maker);
    try {
      ReadPackage(m_file, limits);
    } catch (const PackageError& error) {
      return error.what();
    }
    return "accepted";
  }
  std::string Unpack(const PackageFile& package) {
    const std::string tree = m_directory.Path() + "/tree";
    std::filesystem::create_directories(tree);
    UnpackPackage(m_file, package, tree, [this](int percent) { m_progress.push_back(percent); });
    return tree;
  }

  TemporaryDirectory m_directory;
  std::string m_file = m_directory.Path() + "/test.wgt";
  std::vector<int> m_progress;
};

TEST_F(PackageFileTest, UnpacksImagesOfTheRootBesideTheRest) {
  const PackageFile package =
      ReadPackage(Write(PackageMaker()
                            .AddConfig("unpack0001")
                            .Add("index.html", "<html/>")
                            .Add("unpack0001.App.tmg", "image")
                            .Add("sub/", "", 0040755)
                            .Add("sub/inner.tmg", "not an image of the root")));
  EXPECT_EQ(package.manifest.id, "unpack0001");
  const std::string tree = Unpack(package);
  EXPECT_EQ(ListTree(tree), (std::vector<std::string>{"res/", "res/unpack0001.App.tmg", "res/wgt/",
                                                      "res/wgt/config.xml", "res/wgt/index.html",
                                                      "res/wgt/sub/", "res/wgt/sub/inner.tmg"}));
  EXPECT_EQ(ReadFile(tree + "/res/unpack0001.App.tmg"), "image");
  EXPECT_EQ(ReadFile(tree + "/res/wgt/index.html"), "<html/>");
}

TEST_F(PackageFileTest, TellsRisingProgressFromTheBeginningToTheEnd) {
  PackageMaker maker;
  maker.AddConfig("progress01").Add("big", std::string(3000000, 'x'));
  Unpack(ReadPackage(Write(maker)));
  ASSERT_GT(m_progress.size(), 5u);
  EXPECT_EQ(m_progress.front(), 0);
  EXPECT_EQ(m_progress.back(), 100);
  EXPECT_TRUE(std::is_sorted(m_progress.begin(), m_progress.end()));
}

TEST_F(PackageFileTest, MakesServiceProgramsAndExecutableFilesExecutable) {
  const PackageFile package =
      ReadPackage(Write(PackageMaker()
                            .Add("config.xml", Config(Service("exec000001.S", "bin/feed")))
                            .Add("bin/feed", "#!/bin/sh\n", 0100644)
                            .Add("bin/tool", "#!/bin/sh\n", 0104755)
                            .Add("data", "", 0100600)));
  const std::string wgt = Unpack(package) + "/res/wgt/";
  struct stat status {};
  const auto mode = [&](const std::string& name) {
    EXPECT_EQ(stat((wgt + name).c_str(), &status), 0) << name;
    return status.st_mode & 07777;
  };
  EXPECT_EQ(mode("bin/feed") & 0111, 0111u);
  EXPECT_EQ(mode("bin/tool") & 07000, 0u) << "no set-uid bit leaves an archive";
  EXPECT_EQ(mode("data") & 0111, 0u);
}

TEST_F(PackageFileTest, TakesNamesOfAnyLanguageInAnyLocale) {
  const std::string tree =
      Unpack(ReadPackage(Write(PackageMaker().AddConfig("locale0001").Add("Bjørn/字.txt", "x"))));
  EXPECT_EQ(ReadFile(tree + "/res/wgt/Bjørn/字.txt"), "x");
}

TEST_F(PackageFileTest, RefusesAFileThatIsNoZipArchive) {
  for (const std::string& content : {std::string(), std::string("PK"), std::string(5000, 'x'),
                                     std::string("hsqs and so on, an image by itself")}) {
    WriteFile(m_file, content);
    try {
      ReadPackage(m_file);
      FAIL() << "accepted " << content.substr(0, 20);
    } catch (const PackageError& error) {
      EXPECT_EQ(std::string(error.what()), m_file + " is not a zip archive");
    }
  }
  EXPECT_THROW(ReadPackage(m_directory.Path()), PackageError);
  EXPECT_THROW(ReadPackage(m_directory.Path() + "/missing"), PackageError);
}

TEST_F(PackageFileTest, RefusesACutArchiveWhereverItIsCut) {
  Write(PackageMaker().AddConfig("cut0000001").Add("index.html", std::string(500, 'x')));
  const std::string whole = ReadFile(m_file);
  for (std::size_t size = 4; size < whole.size(); size += 7) {
    WriteFile(m_file, whole.substr(0, size));
    EXPECT_THROW(ReadPackage(m_file), PackageError) << size;
  }
}

TEST_F(PackageFileTest, RefusesAnArchiveWithoutAConfigInItsRoot) {
  EXPECT_EQ(ErrorOf(PackageMaker().Add("index.html", "")),
            m_file + " has no config.xml in its root");
  EXPECT_EQ(ErrorOf(PackageMaker().Add("sub/config.xml", Config(UiApp("a")))),
            m_file + " has no config.xml in its root");
  EXPECT_EQ(ErrorOf(PackageMaker()), m_file + " is an empty zip archive");
}

TEST_F(PackageFileTest, RefusesNamesThatLeadOut) {
  EXPECT_EQ(ErrorOf(PackageMaker().AddConfig("a").Add("../evil", "")),
            "the file name \"../evil\" leads out of the package");
  EXPECT_EQ(ErrorOf(PackageMaker().AddConfig("a").Add("x/../../evil", "")),
            "the file name \"x/../../evil\" leads out of the package");
  EXPECT_EQ(ErrorOf(PackageMaker().AddConfig("a").Add("/etc/evil", "")),
            "the file name \"/etc/evil\" is absolute");
}

TEST_F(PackageFileTest, RefusesLinksAndSpecialFiles) {
  EXPECT_EQ(ErrorOf(PackageMaker().AddConfig("a").AddLink("link", "/etc/passwd")),
            "the archive holds \"link\", which is a link or another special file");
  EXPECT_EQ(ErrorOf(PackageMaker().AddConfig("a").AddSpecial("tty", 0020644)),
            "the archive holds \"tty\", which is a link or another special file");
  EXPECT_EQ(ErrorOf(PackageMaker().AddConfig("a").AddSpecial("disk", 0060644)),
            "the archive holds \"disk\", which is a link or another special file");
}

TEST_F(PackageFileTest, RefusesADuplicateName) {
  EXPECT_EQ(ErrorOf(PackageMaker().AddConfig("a").AddConfig("b")),
            "the archive holds \"config.xml\" twice");
  EXPECT_EQ(ErrorOf(PackageMaker().AddConfig("a").Add("x", "1").Add("./x", "2")),
            "the archive holds \"x\" twice");
  EXPECT_EQ(ErrorOf(PackageMaker().AddConfig("a").Add("x", "1").Add("x/y", "2")),
            "the archive holds \"x\" as a file and as a directory");
  EXPECT_EQ(ErrorOf(PackageMaker().AddConfig("a").Add("x/y", "1").Add("x", "2")),
            "the archive holds \"x\" as a file and as a directory");
}

TEST_F(PackageFileTest, RefusesMoreThanTheLimits) {
  PackageLimits limits;
  limits.entries = 2;
  PackageMaker maker;
  maker.AddConfig("a").Add("x", "1").Add("y", "2");
  EXPECT_EQ(ErrorOf(maker, limits), "the archive holds more than 2 entries");
  limits = PackageLimits();
  limits.bytes = 1000;
  maker.Add("big", std::string(1000, 'x'));
  EXPECT_EQ(ErrorOf(maker, limits), "the archive unpacks to more than 1000 bytes");
  limits = PackageLimits();
  limits.configBytes = 100;
  EXPECT_EQ(ErrorOf(maker, limits), "config.xml is larger than 100 bytes");
}

TEST_F(PackageFileTest, RefusesAServiceWhoseProgramIsMissing) {
  PackageMaker maker;
  maker.Add("config.xml", Config(Service("prog000001.S", "bin/feed"))).Add("bin/feed/x", "");
  EXPECT_EQ(ErrorOf(maker),
            "the archive has no \"bin/feed\", which the service \"prog000001.S\" is to run");
}

std::string Content(const std::string& page) {
  return Config(UiApp("start00001") + "<content src=\"" + page + "\"/>");
}

TEST_F(PackageFileTest, AStartPageOfThePackageIsKept) {
  for (const char* page : {"a/start.html", "/a/start.html"}) {
    const PackageMaker maker = PackageMaker()
                                   .Add("config.xml", Content(page))
                                   .Add("a/start.html", "")
                                   .Add("index.htm", "");
    EXPECT_EQ(ReadPackage(Write(maker)).manifest.apps[0].program, "a/start.html") << page;
  }
}

TEST_F(PackageFileTest, ATranslatedStartPageIsKept) {
  const PackageMaker maker = PackageMaker()
                                 .Add("config.xml", Content("start.html"))
                                 .Add("locales/en/start.html", "")
                                 .Add("index.htm", "");
  EXPECT_EQ(ReadPackage(Write(maker)).manifest.apps[0].program, "start.html");
}

TEST_F(PackageFileTest, ARemoteStartPageIsKept) {
  const PackageMaker maker = PackageMaker().Add("config.xml", Content("https://example.org/a"));
  EXPECT_EQ(ReadPackage(Write(maker)).manifest.apps[0].program, "https://example.org/a");
}

TEST_F(PackageFileTest, AMissingStartPageFallsBackInOrder) {
  PackageMaker maker;
  maker.Add("config.xml", Content("none.html"));
  for (const char* page : {"index.xht", "index.xhtml", "index.svg", "index.html", "index.htm"}) {
    maker.Add(page, "");
    EXPECT_EQ(ReadPackage(Write(maker)).manifest.apps[0].program, page);
  }
}

TEST_F(PackageFileTest, WithoutAContentElementADefaultPageIsUsed) {
  const PackageMaker maker = PackageMaker().AddConfig("start00001").Add("index.html", "");
  EXPECT_EQ(ReadPackage(Write(maker)).manifest.apps[0].program, "index.html");
}

TEST_F(PackageFileTest, RefusesAMissingStartPageWithoutAFallback) {
  EXPECT_EQ(
      ErrorOf(PackageMaker().Add("config.xml", Content("none.html")).Add("sub/index.html", "")),
      "config.xml: the start page \"none.html\" is not in the archive, and neither is "
      "index.htm, index.html, index.svg, index.xhtml or index.xht. Add the page, or correct "
      "the src of the content element");
}

TEST_F(PackageFileTest, FailsOnAWrongChecksum) {
  Write(PackageMaker().AddConfig("sum0000001").Add("data", "needle in the archive"));
  std::string bytes = ReadFile(m_file);
  bytes[bytes.find("needle")] = 'N';
  WriteFile(m_file, bytes);
  const PackageFile package = ReadPackage(m_file);
  try {
    Unpack(package);
    FAIL() << "unpacked";
  } catch (const PackageError& error) {
    EXPECT_NE(std::string(error.what()).find("is damaged at data"), std::string::npos)
        << error.what();
  }
}

TEST_F(PackageFileTest, NoticesAnArchiveThatWasChangedAfterItsCheck) {
  Write(PackageMaker().AddConfig("change0001").Add("x", "/etc"));
  const PackageFile package = ReadPackage(m_file);
  Write(PackageMaker().AddConfig("change0001").AddLink("x", "/etc"));
  EXPECT_THROW(Unpack(package), PackageError);
}

}  // namespace
}  // namespace desk
