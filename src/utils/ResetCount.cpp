// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "utils/ResetCount.h"

#include <app_common.h>
#include <json/json.h>
#include <vconf.h>

#include <boost/filesystem.hpp>
#include <cstdlib>
#include <fstream>
#include <string>

#include "common/JsonText.h"
#include "common/Log.h"
#include "common/ORVConstants.h"

namespace {

std::string MakeResetCountPath() {
  char* pDataPath = app_get_data_path();
  if (pDataPath == nullptr) {
    return RESET_COUNT_FILE;
  }
  std::string sPath = pDataPath + RESET_COUNT_FILE;
  std::free(pDataPath);
  return sPath;
}

void ReadResetCount(int& rFactory, int& rService) {
  std::ifstream stream(MakeResetCountPath());
  if (!stream.is_open()) {
    return;
  }

  Json::Value root;
  std::string sErrors;
  if (!JsonText::Parse(stream, root, &sErrors)) {
    ORV_LOG_ERROR("[ERROR] Failed to parse Json : %s", sErrors.c_str());
    return;
  }
  rFactory = root[RESET_COUNT_KEY_FACTORY].asInt();
  rService = root[RESET_COUNT_KEY_SERVICE].asInt();
}

void WriteResetCount(int factory, int service) {
  const std::string sPath = MakeResetCountPath();
  if (boost::filesystem::is_symlink(boost::filesystem::symlink_status(sPath))) {
    ORV_LOG_ERROR("[ERROR] sPath is symbolic link.");
    return;
  }
  std::ofstream stream(sPath, std::ios::out | std::ios::trunc);
  if (!stream.good()) {
    ORV_LOG_ERROR("[ERROR] filePath is empty.");
    return;
  }
  Json::Value root;
  root[RESET_COUNT_KEY_FACTORY] = factory;
  root[RESET_COUNT_KEY_SERVICE] = service;
  stream << JsonText::Write(root);
}

}  // namespace

bool FileSystemUtils::CheckTVResetAndUpdateResetCountInfo() {
  int factory = 0;
  int service = 0;
  // A key that cannot be read counts as 0.
  vconf_get_int(VCONFKEY_FACTORY_RESET_COUNT.c_str(), &factory);
  vconf_get_int(VCONFKEY_SERVICE_RESET_COUNT.c_str(), &service);
  ORV_LOG_DEBUG("[Debug] factory reset count : %d, service reset count : %d", factory, service);

  int storedFactory = 0;
  int storedService = 0;
  GetFactoryAndServiceResetCount(storedFactory, storedService);
  // On disk before the result is used, so a crash in between loses the reset. Intentional:
  // docs/behaviour.md, "The new counters are written before anything else".
  SetFactoryAndServiceResetCount(factory, service);
  ORV_LOG_DEBUG("[Debug] factory reset count : %d, service reset count : %d", storedFactory,
                storedService);

  if (factory <= storedFactory && service <= storedService) {
    return false;
  }
  ORV_LOG_DEBUG("[Debug] TV is restarted by facotry/service reset.");
  return true;
}

void FileSystemUtils::GetFactoryAndServiceResetCount(int& rFactory, int& rService) {
  rFactory = 0;
  rService = 0;
  try {
    ReadResetCount(rFactory, rService);
  } catch (const std::exception&) {
    ORV_LOG_ERROR("[ERROR] Exception Caught");
    rFactory = 0;
    rService = 0;
  }
}

void FileSystemUtils::SetFactoryAndServiceResetCount(int factory, int service) {
  try {
    WriteResetCount(factory, service);
  } catch (const std::exception& e) {
    ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
  }
}
