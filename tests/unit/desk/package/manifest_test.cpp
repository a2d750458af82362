// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "desk/package/manifest.h"

#include <gtest/gtest.h>

#include "package_maker.h"

namespace desk {
namespace {

std::string ErrorOf(const std::string& xml) {
  try {
    ParseConfig(xml);
  } catch (const PackageError& error) {
    return error.what();
  }
  return "accepted";
}

TEST(Manifest, TellsAllThatAPackageSaysOfItself) {
  const PackageManifest manifest = ParseConfig(
      Config(UiApp("feeder0001") + "<content src=\"index.html\"/><name> The feeder </name>" +
                 MetadataElement("http://k/tv/metadata/orv_type/x", "1") +
                 Service("feeder0001.Feed", "bin/feed", MetadataElement("own", "2")),
             "1.2.3"));
  EXPECT_EQ(manifest.id, "feeder0001");
  EXPECT_EQ(manifest.version, "1.2.3");
  EXPECT_EQ(manifest.label, "The feeder");
  ASSERT_EQ(manifest.apps.size(), 2u);
  EXPECT_EQ(manifest.apps[0].id, "feeder0001.App");
  EXPECT_EQ(manifest.apps[0].component, Component::Ui);
  EXPECT_EQ(manifest.apps[0].program, "index.html");
  ASSERT_EQ(manifest.apps[0].metadata.size(), 1u);
  EXPECT_EQ(manifest.apps[0].metadata[0].key, "http://k/tv/metadata/orv_type/x");
  EXPECT_EQ(manifest.apps[0].metadata[0].value, "1");
  EXPECT_EQ(manifest.apps[1].id, "feeder0001.Feed");
  EXPECT_EQ(manifest.apps[1].component, Component::Service);
  EXPECT_EQ(manifest.apps[1].program, "bin/feed");
  ASSERT_EQ(manifest.apps[1].metadata.size(), 1u);
  EXPECT_EQ(manifest.apps[1].metadata[0].value, "2");
}

TEST(Manifest, GivesPackageMetadataToEachUiApplication) {
  const PackageManifest manifest = ParseConfig(
      Config(UiApp("two0000001", "A") + MetadataElement("k", "v") + UiApp("two0000001", "B")));
  ASSERT_EQ(manifest.apps.size(), 2u);
  EXPECT_EQ(manifest.apps[0].metadata.size(), 1u);
  EXPECT_EQ(manifest.apps[1].metadata.size(), 1u);
}

TEST(Manifest, GivesPackageMetadataToTheServicesWhereThereIsNoUiApplication) {
  const PackageManifest manifest =
      ParseConfig(Config(Service("serviceonly.S", "s") + MetadataElement("k", "v")));
  EXPECT_EQ(manifest.id, "serviceonly");
  ASSERT_EQ(manifest.apps.size(), 1u);
  ASSERT_EQ(manifest.apps[0].metadata.size(), 1u);
  EXPECT_EQ(manifest.apps[0].metadata[0].key, "k");
}

TEST(Manifest, KeepsTheOrderOfMetadataAndDoubleKeys) {
  const PackageManifest manifest =
      ParseConfig(Config(UiApp("order00001") + MetadataElement("b", "1") +
                         MetadataElement("a", "2") + MetadataElement("b", "3")));
  const auto& metadata = manifest.apps.at(0).metadata;
  ASSERT_EQ(metadata.size(), 3u);
  EXPECT_EQ(metadata[0].key + metadata[1].key + metadata[2].key, "bab");
  EXPECT_EQ(metadata[2].value, "3");
}

TEST(Manifest, KnowsElementsByTheirNamespaceWhateverThePrefix) {
  const PackageManifest manifest = ParseConfig(
      "<w:widget xmlns:w='http://www.w3.org/ns/widgets' xmlns:tv='http://tizen.org/ns/widgets' "
      "version='1'><tv:application id='prefix0001.X' package='prefix0001'/>"
      "<tv:metadata key='k' value='v'/></w:widget>");
  EXPECT_EQ(manifest.id, "prefix0001");
  EXPECT_EQ(manifest.apps.at(0).metadata.at(0).value, "v");
}

TEST(Manifest, PassesOverElementsOfAnotherNamespace) {
  EXPECT_NE(ErrorOf("<widget xmlns='http://www.w3.org/ns/widgets' "
                    "xmlns:tizen='http://tizen.org/ns/widgets2' version='1'>"
                    "<tizen:application id='prefix0001.X' package='prefix0001'/></widget>")
                .find("names no application"),
            std::string::npos);
  EXPECT_NE(ErrorOf("<widget version='1'><application id='a.X' package='a'/></widget>")
                .find("no widget of the namespace"),
            std::string::npos);
}

TEST(Manifest, TakesCharacterReferencesInValues) {
  const PackageManifest manifest =
      ParseConfig(Config(UiApp("chars00001") + MetadataElement("k", "a&amp;b&#x20AC;")));
  EXPECT_EQ(manifest.apps.at(0).metadata.at(0).value, "a&b\xE2\x82\xAC");
}

TEST(Manifest, RefusesADocumentTypeSoThatNoEntityIsEverExpanded) {
  EXPECT_EQ(ErrorOf("<?xml version='1.0'?><!DOCTYPE w [<!ENTITY x SYSTEM 'file:///etc/passwd'>]>" +
                    Config(UiApp("xxe0000001") + "<name>&x;</name>").substr(39)),
            "config.xml has a document type declaration; take it out");
  std::string laughs = "<!DOCTYPE w [<!ENTITY a0 'ha'>";
  for (int i = 1; i < 40; ++i) {
    const std::string before = "&a" + std::to_string(i - 1) + ";";
    laughs += "<!ENTITY a" + std::to_string(i) + " '" + before + before + "'>";
  }
  EXPECT_EQ(ErrorOf(laughs + "]><widget xmlns='http://www.w3.org/ns/widgets' version='&a39;'/>"),
            "config.xml has a document type declaration; take it out");
}

TEST(Manifest, TellsTheLineOfWhatIsNotWellFormed) {
  const std::string error = ErrorOf("<widget>\n<a></b>\n</widget>");
  EXPECT_NE(error.find("config.xml is not well-formed: line 2"), std::string::npos) << error;
  EXPECT_NE(ErrorOf("").find("config.xml is"), std::string::npos);
  EXPECT_NE(ErrorOf(std::string("<a/>\0", 5)).find("NUL"), std::string::npos);
}

TEST(Manifest, NeedsAVersion) {
  EXPECT_EQ(ErrorOf(Config(UiApp("version001"), "  ")),
            "config.xml: the widget has no usable version");
}

TEST(Manifest, RefusesIdsThatCouldBePaths) {
  EXPECT_NE(ErrorOf(Config(UiApp("../x"))), "accepted");
  EXPECT_NE(ErrorOf(Config(UiApp("a/b"))), "accepted");
  EXPECT_NE(ErrorOf(Config(UiApp(""))), "accepted");
  EXPECT_NE(ErrorOf(Config(UiApp(std::string(65, 'a')))), "accepted");
  EXPECT_NE(ErrorOf(Config(UiApp("a", "x/../y"))), "accepted");
  EXPECT_EQ(ErrorOf(Config(UiApp(std::string(64, 'a')))), "accepted");
}

TEST(Manifest, RefusesAnApplicationOfAnotherPackageAndOneNamedTwice) {
  EXPECT_EQ(ErrorOf(Config(UiApp("first00001") + Service("second0001.S", "s"))),
            "config.xml: the application id \"second0001.S\" must be \"first00001.\" and a name");
  EXPECT_EQ(ErrorOf(Config(UiApp("first00001") + UiApp("first00001"))),
            "config.xml names the application \"first00001.App\" twice");
  EXPECT_EQ(ErrorOf(Config(UiApp("first00001") + UiApp("second0001"))),
            "config.xml names two packages, \"first00001\" and \"second0001\"");
}

TEST(Manifest, RefusesAServiceWithoutAProgramAndOneOutsideThePackage) {
  EXPECT_EQ(ErrorOf(Config("<tizen:service id='a.S'/>")),
            "config.xml: the service \"a.S\" has no tizen:content with a src");
  EXPECT_EQ(ErrorOf(Config(Service("a.S", "../../bin/sh"))),
            "the file name \"../../bin/sh\" leads out of the package");
  EXPECT_EQ(ErrorOf(Config(Service("a.S", "/bin/sh"))), "the file name \"/bin/sh\" is absolute");
}

TEST(Manifest, RefusesMetadataWithoutAKeyButTakesAnEmptyValue) {
  EXPECT_EQ(ErrorOf(Config(UiApp("a") + "<tizen:metadata value='v'/>")),
            "config.xml: line 3: a tizen:metadata has no key");
  const PackageManifest manifest = ParseConfig(Config(UiApp("a") + "<tizen:metadata key='k'/>"));
  EXPECT_EQ(manifest.apps.at(0).metadata.at(0).value, "");
}

TEST(CleanRelativeName, DropsWhatMeansNothing) {
  EXPECT_EQ(CleanRelativeName("./a//b/./c/"), "a/b/c");
  EXPECT_EQ(CleanRelativeName("./"), "");
  EXPECT_EQ(CleanRelativeName("..a/b.."), "..a/b..");
}

TEST(CleanRelativeName, RefusesWhatLeadsAwayOrDeceives) {
  EXPECT_THROW(CleanRelativeName("a/../../b"), PackageError);
  EXPECT_THROW(CleanRelativeName("a/.."), PackageError);
  EXPECT_THROW(CleanRelativeName("/a"), PackageError);
  EXPECT_THROW(CleanRelativeName("a\\b"), PackageError);
  EXPECT_THROW(CleanRelativeName("a\nb"), PackageError);
  EXPECT_THROW(CleanRelativeName(std::string(256, 'x')), PackageError);
  std::string deep;
  for (int i = 0; i < 1100; ++i) {
    deep += "d/";
  }
  EXPECT_THROW(CleanRelativeName(deep + "f"), PackageError);
}

}  // namespace
}  // namespace desk
