// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <boost/filesystem.hpp>

#include "fake/control/fake.h"
#include "support/files.h"
#include "unit/traces/trace.h"
#include "utils/FileSystemUtils.h"
#include "utils/PackagedData.h"

namespace {

std::string WithResult(const std::string& call, int result) {
  return call + " gives " + std::to_string(result);
}

void PrintPackagedData(std::ostream& stream) {
  traces::PrintFiles(stream, FileSystemUtils::GetSharedDataPath());
  traces::PrintPlatform(stream, {});
}

const std::string FALLBACK = "/home/owner/share/tmp/sdk_tools//orv_app.zip";

class PackagedDataTraces : public testing::Test {
 protected:
  PackagedDataTraces() { Begin(); }

  void Begin() {
    m_trace.Prepare([] {
      fake::ClearFaults();
      boost::filesystem::remove_all(FileSystemUtils::GetSharedDataPath());
      boost::filesystem::remove_all("/home/owner/share");
      boost::filesystem::create_directories(FileSystemUtils::GetSharedDataPath());
      PutIntoImage({{"index.html", "page"},
                    {"dir/", ""},
                    {"dir\\back\\slash", "s"},
                    {"metadata/b", "2"},
                    {"metadata/a", "1"},
                    {"metadata/sub/c", "3"}});
      fake::SetUmountHandler([](const std::string& directory) {
        boost::filesystem::remove_all(directory + "/orv_app.zip");
        return 0;
      });
    });
  }
  static void PutIntoImage(const std::vector<support::ZipEntry>& entries, int result = 0) {
    fake::SetMountHandler([entries, result](const fake::Mount& mount) {
      if (result == 0) support::WriteZip(mount.directory + "/orv_app.zip", entries);
      return result;
    });
  }
  void Install(const std::string& title, const std::string& type, int data, bool started) {
    m_trace.Do("install " + title, [&] {
      return FileSystemUtils::InstallPackagedData("a.pkg", "a.pkg.Widget", type, data, started);
    });
  }
  void Uninstall(const std::string& title, const std::string& type, int data) {
    m_trace.Do("uninstall " + title,
               [&] { FileSystemUtils::UninstallPackagedData("a.pkg", type, data); });
  }

  Trace m_trace{&PrintPackagedData};
};

TEST_F(PackagedDataTraces, EveryTypeOfData) {
  for (int data = 0; data <= 4; ++data) {
    Begin();
    for (const bool started : {false, true}) {
      for (const std::string type : {"type", "type", "type_"}) {
        Install(type + std::to_string(data), type, data, started);
      }
    }
    for (const std::string type : {"typ", "Type", "type", "type_", "type"}) {
      Uninstall(type + std::to_string(data), type, data);
    }
  }
  Begin();
  Install("at start", "type", 3, true);
  Uninstall("of metadata", "type", 2);
  Uninstall("of the tree", "type", 1);
  m_trace.Compare("PackagedDataTypes");
}

TEST_F(PackagedDataTraces, EveryResultOfTheMount) {
  const std::string fallbackEntry = "from the fallback archive";
  for (const bool hasFallback : {false, true}) {
    const auto install = [&](const std::string& title, const std::function<void()>& fault) {
      Begin();
      m_trace.Prepare([&] {
        if (hasFallback) support::WriteZip(FALLBACK, {{"index.html", fallbackEntry}});
        fault();
      });
      Install(title + (hasFallback ? ", fallback" : ""), "type", 3, false);
      Install("again", "type", 3, false);
      Uninstall("afterwards", "type", 3);
    };
    for (const int result : {-1, 0, 1}) {
      install(WithResult("mount", result), [=] { PutIntoImage({{"x", "y"}}, result); });
      install(WithResult("PS_Mount", result), [=] { fake::Fail("PS_Mount", result); });
      install(WithResult("PS_Mount", result) + " after its work",
              [=] { fake::FailAfterwards("PS_Mount", result); });
      install(WithResult("PS_Umount", result), [=] { fake::Fail("PS_Umount", result); });
      install(WithResult("PS_Umount", result) + " after its work",
              [=] { fake::FailAfterwards("PS_Umount", result); });
    }
  }
  m_trace.Compare("PackagedDataMounts");
}

TEST_F(PackagedDataTraces, EveryArchive) {
  const auto install = [&](const std::string& title, const std::function<void()>& change) {
    Begin();
    m_trace.Prepare(change);
    Install(title, "type", 3, false);
    Install("again", "type", 3, false);
    Install("at start", "type", 3, true);
    Uninstall("afterwards", "type", 3);
  };
  const auto put = [](const std::function<void(const std::string&)>& make) {
    fake::SetMountHandler([make](const fake::Mount& mount) {
      make(mount.directory + "/orv_app.zip");
      return 0;
    });
  };
  install("without an archive", [&] { put([](const std::string&) {}); });
  install("of a text",
          [&] { put([](const std::string& path) { support::WriteFile(path, "x"); }); });
  install("of a directory",
          [&] { put([](const std::string& path) { support::MakeDirectories(path); }); });
  install("of a FIFO", [&] { put([](const std::string& path) { mkfifo(path.c_str(), 0600); }); });
  install("of an empty archive", [&] { PutIntoImage({}); });
  install("of a file over a directory", [&] {
    PutIntoImage({{"a/b", "1"}, {"a", "2"}, {"c", "3"}});
  });
  install("of a directory over a file", [&] {
    PutIntoImage({{"a", "1"}, {"a/b", "2"}, {"c", "3"}});
  });
  install("with a metadata file", [&] { PutIntoImage({{"metadata", "not a directory"}}); });
  install("with a broken list", [&] { PutIntoImage({{"app_type_file.txt", "{\"app_type\":["}}); });
  install("with a list", [&] {
    PutIntoImage({{"app_type_file.txt", R"({"app_type":["x"],"y":1})"}});
  });
  install("with a list of numbers", [&] {
    PutIntoImage({{"app_type_file.txt", R"({"app_type":[[1]]})"}});
  });
  install("over a file as mount point",
          [&] { support::WriteFile(FileSystemUtils::GetHbbTvDirectoryPath() + "temp_app", "x"); });
  install("over a file as metadata directory",
          [&] { support::WriteFile(FileSystemUtils::GetSharedDataPath() + "metadata", "x"); });
  install("over a file as tree directory",
          [&] { support::WriteFile(FileSystemUtils::GetSharedDataPath() + "hbbtv_app", "x"); });
  install("with a directory in the way of a move", [&] {
    support::MakeDirectories(FileSystemUtils::GetMetaDataDirectoryPath() + "a.pkg/a");
    support::WriteFile(FileSystemUtils::GetMetaDataDirectoryPath() + "a.pkg/b", "old");
  });
  m_trace.Compare("PackagedDataArchives");
}

TEST_F(PackagedDataTraces, EveryList) {
  for (const std::string content :
       {"", "{", "{}", R"({"app_type":[]})", R"({"app_type":["type"]})",
        R"({"app_type":["type","type"]})", R"({"app_type":["type","type","type"]})",
        R"({"app_type":["type_","type","Type"],"more":1})", R"({"app_type":["type_"]})",
        R"({"app_type":["a", "type"]})", R"({"app_type":"type"})",
        R"({"app_type":[1,null,true,"type"]})", "[]", "3", "null"}) {
    for (const bool create : {false, true}) {
      Begin();
      const std::string path = FileSystemUtils::GetHbbTvDirectoryPath() + "a.pkg/app_type_file.txt";
      m_trace.Prepare([&] { support::WriteFile(path, content); });
      m_trace.Do("add to " + content + (create ? ", create" : ""),
                 [&] { return FileSystemUtils::AddAppTypeToFile(path, "type", create); });
      m_trace.Do("add type_",
                 [&] { return FileSystemUtils::AddAppTypeToFile(path, "type_", create); });
      m_trace.Prepare([&] { support::WriteFile(path, content); });
      Uninstall("over " + content, "type", create ? 1 : 3);
    }
  }
  Begin();
  const std::string absent = FileSystemUtils::GetSharedDataPath() + "absent";
  for (const bool create : {false, true, false}) {
    m_trace.Do(std::string("add to an absent file") + (create ? ", create" : ""),
               [&] { return FileSystemUtils::AddAppTypeToFile(absent, "type", create); });
  }
  m_trace.Compare("PackagedDataLists");
}

}  // namespace
