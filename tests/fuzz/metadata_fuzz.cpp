// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Metadata of a package, from its install over an update to its removal.
//   key=value      one entry; the namespace is prepended unless the key begins with "!"
//   --             the following entries belong to the service application
//   ==             the following entries are those of the updated package
#include "app_info/AppInfoCache.h"
#include "controller/ORVAppCreator.h"
#include "fake/control/fake.h"
#include "fuzz/daemon_world.h"
#include "fuzz/harness.h"

namespace {

const char PACKAGE[] = "fuzzpackag";

fake::Package NewPackage() {
  return {PACKAGE,
          "1.0.0",
          {{std::string(PACKAGE) + ".App", PACKAGE_INFO_UIAPP, {}},
           {std::string(PACKAGE) + ".Feed", PACKAGE_INFO_SERVICEAPP, {}}}};
}

void AddLine(const std::string& line, fake::App& app) {
  const auto [key, value] = fuzz::KeyAndValue(line);
  const bool isWhole = !key.empty() && key.front() == '!';
  app.metadata.emplace_back(isWhole ? key.substr(1) : ORV_METADATA_PREFIX + key, value);
}

std::vector<fake::Package> Parse(const std::string& text) {
  std::vector<fake::Package> versions = {NewPackage()};
  std::size_t app = 0;
  for (const std::string& line : fuzz::Lines(text)) {
    if (line == "==") {
      versions.push_back(NewPackage());
      app = 0;
    } else if (line == "--") {
      app = 1;
    } else {
      AddLine(fuzz::UpToNul(line), versions.back().apps[app]);
    }
  }
  return versions;
}

AppInfo* Record() {
  return AppInfoCache::GetInstance()->GetAppInfo(PACKAGE);
}

void InstallAndRun(const fake::Package& package) {
  fake::AddPackage(package);
  fuzz::Contain([] {
    if (ORVAppCreator::GetInstance()->CreateApp(PACKAGE)) {
      Record()->RunOperation(false);
    }
  });
}

void Update(const fake::Package& package) {
  fake::AddPackage(package);
  fuzz::Contain([] {
    if (ORVAppCreator::GetInstance()->UpdateApp(PACKAGE) == UPDATE_RESULT_UPDATE) {
      Record()->UpdateOperation();
      AppInfoCache::GetInstance()->UpdateAppInfo(PACKAGE, Record());
    }
  });
}

void Remove() {
  fuzz::Contain([] {
    if (Record() != nullptr) {
      Record()->StopOperation();
    }
  });
  fuzz::Contain([] { ORVAppCreator::GetInstance()->RemoveApp(PACKAGE); });
  // The creator also forgets a package that cannot be read.
  fake::RemovePackage(PACKAGE);
  ORVAppCreator::GetInstance()->CreateApp(PACKAGE);
}

}  // namespace

/// The layers that an update adds around a record are not destroyed, nor is a record that has lost
/// all its layers.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:ORVAppCreator::AddActivatedAppTypes\nleak:ORVAppCreator::"
         "DecorateAppTypeByMatadata\n";
}

void fuzz::SetUp() {
  MakeWorld();
  const std::string app = std::string(PACKAGE) + ".App";
  fake::AddWasApp({PACKAGE, app, app});
  ORVAppCreator::GetInstance();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::vector<fake::Package> versions = Parse(fuzz::Text(data, size));
  InstallAndRun(versions.front());
  for (std::size_t i = 1; i < versions.size(); ++i) {
    Update(versions[i]);
  }
  Remove();
  fuzz::Require(Record() == nullptr, "a removed package has no record");
  fuzz::ForgetInput();
  return 0;
}
