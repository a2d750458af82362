// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include "controller/SchedulerMessagePort.h"

#include <ctime>
#include <exception>
#include <memory>
#include <utility>

#include "app_info/AppInfoCache.h"
#include "common/Log.h"
#include "common/ORVConstants.h"
#include "controller/ORVScheduler.h"
#include "utils/TimeUtils.h"

namespace {

/// No app can ask to run more often than once a tick of the scheduler.
constexpr int SHORTEST_EXPIRATION_SECONDS = 720;

const char EXPIRATION_TIME_KEY[] = "expiration_time";

const std::map<std::string, int> s_mapCommands = {
    {SCHEDULER_COMMAND_SET_EXPIRATION_TIME, COMMAND_SET_EXPIRATION_TIME},
    {SCHEDULER_COMMAND_COMPLETE_OPERATION, COMMAND_COMPLETE_OPERATION},
};

struct BundleDeleter {
  void operator()(bundle* pBundle) const { bundle_free(pBundle); }
};
using BundlePtr = std::unique_ptr<bundle, BundleDeleter>;

/// bundle_foreach callback; user_data is the map of parameters. A value that is not a string is
/// skipped, as if its key were absent.
void CollectParameter(const char* key, const int type, const bundle_keyval_t* kv,
                      void* user_data) try {
  if (type != BUNDLE_TYPE_STR) {
    return;
  }
  void* pValue = nullptr;
  size_t size = 0;
  bundle_keyval_get_basic_val(const_cast<bundle_keyval_t*>(kv), &pValue, &size);
  std::string sValue;
  if (pValue != nullptr && size > 0) {
    sValue.assign(static_cast<const char*>(pValue), size - 1);  // without the terminator
  }
  static_cast<std::map<std::string, std::string>*>(user_data)->emplace(key, sValue);
  ORV_LOG_DEBUG("[Debug] key : %s, value : %s", key, sValue.c_str());
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
}

/// Passes the conversion's exceptions to the caller.
bool SetExpirationDate(const std::string& remoteAppID, const std::string& expirationTime) {
  if (remoteAppID.empty() || expirationTime.empty()) {
    return false;
  }
  const int seconds = std::stoi(expirationTime);
  if (seconds < SHORTEST_EXPIRATION_SECONDS) {
    return false;
  }
  const time_t expiry = time(nullptr) + seconds;
  const std::string sExpirationDate = TimeUtils::GetUTCTimeString(&expiry);
  if (sExpirationDate.empty()) {
    return false;
  }
  const std::string sTargetPackageID = remoteAppID.substr(0, remoteAppID.find('.'));
  ORV_LOG_DEBUG("[Debug] sTargetPackageID : %s", sTargetPackageID.c_str());
  return AppInfoCache::GetInstance()->UpdateSchedulingItem(
      {sTargetPackageID, remoteAppID, sExpirationDate});
}

/// A time that is not a number, or does not fit into an int, is an invalid parameter.
const std::string& RunSetExpirationTime(const std::string& remoteAppID,
                                        const std::string& expirationTime) try {
  return SetExpirationDate(remoteAppID, expirationTime) ? SCHEDULER_RESULT_SUCCESS
                                                        : SCHEDULER_RESULT_INVALID_PARAMETERS;
} catch (const std::exception& e) {
  ORV_LOG_DEBUG("[Debug] exception : %s", e.what());
  return SCHEDULER_RESULT_INVALID_PARAMETERS;
}

void SendReply(const char* pRemoteAppID, const char* pRemotePort, BundlePtr pReply,
               const std::string& rResult) {
  bundle_add_str(pReply.get(), SCHEDULER_RESULT.c_str(), rResult.c_str());
  const int ret = message_port_send_message(pRemoteAppID, pRemotePort, pReply.get());
  pReply.reset();
  if (ret != 0) {
    ORV_LOG_DEBUG("[Debug] message_port_send_message() failed : %d", ret);
  }
}

}  // namespace

const std::string& RunMessagePortCommand(int eCommand, const std::string& remoteAppID,
                                         std::map<std::string, std::string>& params) {
  ORV_LOG_INFO("[Info] eCommand : %d", eCommand);
  switch (eCommand) {
    case COMMAND_SET_EXPIRATION_TIME:
      return RunSetExpirationTime(remoteAppID, params[EXPIRATION_TIME_KEY]);
    case COMMAND_COMPLETE_OPERATION:
      // Any sender ends the current service app (docs/behaviour.md, "Message port").
      ORVScheduler::GetInstance()->t_SendEvent(EVENT_APP_TERMINATED);
      return SCHEDULER_RESULT_SUCCESS;
    default:
      ORV_LOG_ERROR("[ERROR] Invalid eCommand : %d", eCommand);
      return SCHEDULER_RESULT_UNKNOWN_ERRORS;
  }
}

void MessagePortCommandCallback(int /*local_port_id*/, const char* remote_app_id,
                                const char* remote_port, bool /*trusted_remote_port*/,
                                bundle* message, void* /*user_data*/) try {
  std::map<std::string, std::string> params;
  bundle_foreach(message, CollectParameter, &params);
  BundlePtr pReply(bundle_create());
  const auto itCommand = s_mapCommands.find(params[SCHEDULER_COMMAND]);
  if (itCommand == s_mapCommands.end()) {
    SendReply(remote_app_id, remote_port, std::move(pReply), SCHEDULER_RESULT_INVALID_PARAMETERS);
    return;
  }
  params.erase(SCHEDULER_COMMAND);
  // A sender without an id matches no package.
  const std::string sRemoteAppID = remote_app_id == nullptr ? "" : remote_app_id;
  const std::string& rResult = RunMessagePortCommand(itCommand->second, sRemoteAppID, params);
  if (itCommand->second == COMMAND_COMPLETE_OPERATION) {
    // No reply, and its bundle is not freed (docs/behaviour.md, "Message port").
    static_cast<void>(pReply.release());
    return;
  }
  SendReply(remote_app_id, remote_port, std::move(pReply), rResult);
} catch (const std::exception& e) {
  ORV_LOG_ERROR("[ERROR] exception : %s", e.what());
}
