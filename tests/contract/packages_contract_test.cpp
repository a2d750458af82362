// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <app_info.h>
#include <app_manager.h>
#include <package_manager.h>
#include <was_db.h>

#include "contract_test.h"

namespace contract {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Packages : public Contract {
 protected:
  Packages() {
    m_package.id = "contract";
    m_package.version = "1.2.3";
    m_package.apps = {{"contract.zeta", false, {{"z", "1"}, {"a", "2"}, {"m", ""}}},
                      {"contract.alpha", true, {}},
                      {"contract.mid", false, {{"k", "v"}}}};
  }

  /// The package's handle, valid until the end of the test.
  package_info_h Open() {
    Tv().Install(m_package);
    EXPECT_EQ(0, package_manager_get_package_info("contract", &m_info));
    return m_info;
  }

  ~Packages() override {
    if (m_info != nullptr) {
      package_info_destroy(m_info);
    }
  }

  Package m_package;
  package_info_h m_info = nullptr;
};

bool NoteApp(package_info_app_component_type_e component, const char* app, void*) {
  Notes::Add(std::to_string(component) + " " + app);
  return true;
}

bool NoteFirstApp(package_info_app_component_type_e component, const char* app, void* data) {
  NoteApp(component, app, data);
  return false;
}

bool NoteMetadata(const char* key, const char* value, void*) {
  Notes::Add(std::string(key) + "=" + value);
  return true;
}

bool NoteFirstMetadata(const char* key, const char* value, void* data) {
  NoteMetadata(key, value, data);
  return false;
}

void NoteEvent(const char* kind, const char* package, package_manager_event_type_e type,
               package_manager_event_state_e state, int progress, package_manager_error_e error,
               void* data) {
  if (state == PACKAGE_MANAGER_EVENT_STATE_PROCESSING) {
    return;  // any number is valid
  }
  Notes::Add((data == nullptr ? "" : static_cast<const char*>(data)) + std::string(kind) + " " +
             package + " " + std::to_string(type) + " " + std::to_string(state) +
             (error == PACKAGE_MANAGER_ERROR_NONE ? "" : " error"));
  EXPECT_GE(progress, 0);
  EXPECT_LE(progress, 100);
}

TEST_F(Packages, AnUnknownPackageHasNoInfo) {
  package_info_h info = nullptr;
  EXPECT_EQ(PACKAGE_MANAGER_ERROR_NO_SUCH_PACKAGE,
            package_manager_get_package_info("org.unknown", &info));
  EXPECT_EQ(nullptr, info);
  EXPECT_EQ(PACKAGE_MANAGER_ERROR_INVALID_PARAMETER,
            package_manager_get_package_info(nullptr, &info));
}

TEST_F(Packages, HaveAVersion) {
  char* version = nullptr;
  EXPECT_EQ(0, package_info_get_version(Open(), &version));
  EXPECT_EQ("1.2.3", Taken(version));
}

TEST_F(Packages, ListTheirAppsInTheOrderOfTheManifest) {
  EXPECT_EQ(0,
            package_info_foreach_app_from_package(Open(), PACKAGE_INFO_ALLAPP, NoteApp, nullptr));
  EXPECT_THAT(Notes::All(), ElementsAre("1 contract.zeta", "2 contract.alpha", "1 contract.mid"));
}

TEST_F(Packages, ListTheirAppsOfOneKind) {
  package_info_h info = Open();
  EXPECT_EQ(0,
            package_info_foreach_app_from_package(info, PACKAGE_INFO_SERVICEAPP, NoteApp, nullptr));
  EXPECT_EQ(0, package_info_foreach_app_from_package(info, PACKAGE_INFO_UIAPP, NoteApp, nullptr));
  EXPECT_THAT(Notes::All(), ElementsAre("2 contract.alpha", "1 contract.zeta", "1 contract.mid"));
}

TEST_F(Packages, EndTheWalkOverAppsEarlyWithSuccess) {
  EXPECT_EQ(
      0, package_info_foreach_app_from_package(Open(), PACKAGE_INFO_ALLAPP, NoteFirstApp, nullptr));
  EXPECT_THAT(Notes::All(), ElementsAre("1 contract.zeta"));
}

TEST_F(Packages, AnInfoIsASnapshot) {
  package_info_h info = Open();
  Tv().Uninstall("contract");
  EXPECT_EQ(0, package_info_foreach_app_from_package(info, PACKAGE_INFO_ALLAPP, NoteApp, nullptr));
  EXPECT_EQ(3U, Notes::Count());
  package_info_h gone = nullptr;
  EXPECT_EQ(PACKAGE_MANAGER_ERROR_NO_SUCH_PACKAGE,
            package_manager_get_package_info("contract", &gone));
}

TEST_F(Packages, AnUpdateChangesThem) {
  Tv().Install(m_package);
  m_package.version = "2.0.0";
  m_package.apps.resize(1);
  Tv().Update(m_package);
  package_info_h info = nullptr;
  ASSERT_EQ(0, package_manager_get_package_info("contract", &info));
  char* version = nullptr;
  EXPECT_EQ(0, package_info_get_version(info, &version));
  EXPECT_EQ("2.0.0", Taken(version));
  package_info_foreach_app_from_package(info, PACKAGE_INFO_ALLAPP, NoteApp, nullptr);
  EXPECT_THAT(Notes::All(), ElementsAre("1 contract.zeta"));
  EXPECT_EQ(0, package_info_destroy(info));
}

class Metadata : public Packages {
 protected:
  int Walk(const char* app, app_info_metadata_cb callback) {
    app_info_h info = nullptr;
    const int error = app_info_create(app, &info);
    if (error != 0) {
      return error;
    }
    const int result = app_info_foreach_metadata(info, callback, nullptr);
    EXPECT_EQ(0, app_info_destroy(info));
    return result;
  }
};

TEST_F(Metadata, ComesInTheOrderOfTheManifest) {
  Tv().Install(m_package);
  EXPECT_EQ(0, Walk("contract.zeta", NoteMetadata));
  EXPECT_THAT(Notes::All(), ElementsAre("z=1", "a=2", "m="));
}

TEST_F(Metadata, KeepsAKeyThatComesTwice) {
  m_package.apps[0].metadata = {{"k", "1"}, {"j", "2"}, {"k", "3"}};
  Tv().Install(m_package);
  EXPECT_EQ(0, Walk("contract.zeta", NoteMetadata));
  EXPECT_THAT(Notes::All(), ElementsAre("k=1", "j=2", "k=3"));
}

TEST_F(Metadata, KeepsItsTextsAsTheyAre) {
  m_package.apps[0].metadata = {{"http://a/b#c?d=e", "<&>\"' \xc3\xa4"}};
  Tv().Install(m_package);
  EXPECT_EQ(0, Walk("contract.zeta", NoteMetadata));
  EXPECT_THAT(Notes::All(), ElementsAre("http://a/b#c?d=e=<&>\"' \xc3\xa4"));
}

TEST_F(Metadata, EndsTheWalkEarlyWithSuccess) {
  Tv().Install(m_package);
  EXPECT_EQ(0, Walk("contract.zeta", NoteFirstMetadata));
  EXPECT_THAT(Notes::All(), ElementsAre("z=1"));
}

TEST_F(Metadata, MayBeMissing) {
  Tv().Install(m_package);
  EXPECT_EQ(0, Walk("contract.alpha", NoteMetadata));
  EXPECT_THAT(Notes::All(), IsEmpty());
}

TEST_F(Metadata, OfAnUnknownAppIsAnError) {
  EXPECT_EQ(APP_MANAGER_ERROR_NO_SUCH_APP, Walk("contract.zeta", NoteMetadata));
  Tv().Install(m_package);
  EXPECT_EQ(APP_MANAGER_ERROR_NO_SUCH_APP, Walk("contract", NoteMetadata));
  EXPECT_EQ(APP_MANAGER_ERROR_INVALID_PARAMETER, Walk(nullptr, NoteMetadata));
}

class PackageEvents : public Packages {
 protected:
  PackageEvents() {
    EXPECT_EQ(0, package_manager_create(&m_manager));
    EXPECT_EQ(0, package_manager_set_event_cb(m_manager, NoteEvent, nullptr));
  }
  ~PackageEvents() override { EXPECT_EQ(0, package_manager_destroy(m_manager)); }

  package_manager_h m_manager = nullptr;
};

TEST_F(PackageEvents, TellOfInstallUpdateAndUninstall) {
  Tv().Install(m_package);
  Tv().Update(m_package);
  Tv().Uninstall("contract");
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return Notes::Count() == 6; }));
  EXPECT_THAT(Notes::All(),
              ElementsAre("wgt contract 0 0", "wgt contract 0 2", "wgt contract 2 0",
                          "wgt contract 2 2", "wgt contract 1 0", "wgt contract 1 2"));
}

TEST_F(PackageEvents, WaitForTheMainLoop) {
  Tv().Install(m_package);
  EXPECT_THAT(Notes::All(), IsEmpty());
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return Notes::Count() == 2; }));
}

TEST_F(PackageEvents, GoToTheLastCallbackOfTheHandle) {
  char second[] = "second ";
  EXPECT_EQ(0, package_manager_set_event_cb(m_manager, NoteEvent, second));
  Tv().Install(m_package);
  EXPECT_TRUE(Tv().RunMainLoopUntil([] { return Notes::Count() == 2; }));
  EXPECT_THAT(Notes::All(), ElementsAre("second wgt contract 0 0", "second wgt contract 0 2"));
}

TEST_F(PackageEvents, EndWithUnset) {
  Tv().Install(m_package);
  EXPECT_EQ(0, package_manager_unset_event_cb(m_manager));
  Tv().RunMainLoop();
  EXPECT_THAT(Notes::All(), IsEmpty());
}

class WebAppService : public Packages {
 protected:
  /// The entries of these packages: "package kind gone", in any order.
  std::vector<std::string> List() {
    was_app_list_item_s* list = nullptr;
    int count = 0;
    EXPECT_EQ(0, was_get_all_app_list(&list, &count));
    std::vector<std::string> entries;
    for (int i = 0; i < count; ++i) {
      entries.push_back(std::string(list[i].package_id) + " " + std::to_string(list[i].kind) + " " +
                        std::to_string(list[i].gone));
    }
    std::free(list);
    return entries;
  }
};

TEST_F(WebAppService, ListsNothingOnANewTelevision) {
  EXPECT_THAT(List(), IsEmpty());
}

TEST_F(WebAppService, ListsPackageKindAndWhetherItIsGone) {
  Tv().SetWasApp("org.one", "org.one.app", "widget-1", 2, 0);
  Tv().SetWasApp("org.two", "org.two.app", "widget-2", 1, 1);
  EXPECT_THAT(List(), testing::UnorderedElementsAre("org.one 2 0", "org.two 1 1"));
}

TEST_F(WebAppService, FindsAnAppByItsID) {
  Tv().SetWasApp("org.one", "org.one.app", "widget-1", 2, 0);
  was_app_info_s info = {};
  EXPECT_EQ(0, was_get_app_info_by_tizenid("org.one.app", &info));
  EXPECT_STREQ("widget-1", info.widget_id);
  EXPECT_STREQ("org.one.app", info.app_tizen_id);
}

TEST_F(WebAppService, DoesNotFindAnUnknownApp) {
  Tv().SetWasApp("org.one", "org.one.app", "widget-1", 2, 0);
  was_app_info_s info = {};
  EXPECT_NE(0, was_get_app_info_by_tizenid("org.one", &info));
  EXPECT_NE(0, was_get_app_info_by_tizenid("", &info));
}

}  // namespace
}  // namespace contract
