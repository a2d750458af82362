// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
// Every signature, number and layout of the platform that the daemon relies on. That this file
// compiles is the test; built against a target's own headers it reports where they have drifted.
#include <FCAPI.h>
#include <FCEMSProxy.h>
#include <FCHandler.h>
#include <FCQueue.h>
#include <FCTask.h>
#include <FCTaskList.h>
#include <TVServiceAPI.h>
#include <app_common.h>
#include <app_context.h>
#include <app_control.h>
#include <app_info.h>
#include <app_manager.h>
#include <app_manager_extension.h>
#include <app_operation.h>
#include <bundle.h>
#include <dlog.h>
#include <message_port.h>
#include <package_info.h>
#include <package_manager.h>
#include <ps_mount.h>
#include <smart_deadlock.h>
#include <tzplatform_config.h>
#include <vconf.h>
#include <was_db.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

// The function, or the only member function with this name, has exactly this type.
#define PINNED(function, ...)                                     \
  static_assert(std::is_same_v<decltype(&function), __VA_ARGS__>, \
                #function " has another signature")

namespace {

/// For overloaded functions and those with attributes: accepts a function of type T, or does not
/// compile.
template <typename T>
constexpr bool Has(T) {
  return true;
}

// app_common.h
PINNED(app_get_data_path, char* (*)());
PINNED(app_get_shared_data_path, char* (*)());

// app_control.h
PINNED(app_control_create, int (*)(app_control_h*));
PINNED(app_control_destroy, int (*)(app_control_h));
PINNED(app_control_set_app_id, int (*)(app_control_h, const char*));
PINNED(app_control_set_operation, int (*)(app_control_h, const char*));
PINNED(app_control_add_extra_data, int (*)(app_control_h, const char*, const char*));
PINNED(app_control_send_launch_request, int (*)(app_control_h, app_control_reply_cb, void*));
static_assert(std::is_same_v<app_control_reply_cb,
                             void (*)(app_control_h, app_control_h, app_control_result_e, void*)>);
static_assert(std::string_view(APP_CONTROL_OPERATION_DEFAULT) ==
              "http://tizen.org/appcontrol/operation/default");
static_assert(APP_CONTROL_ERROR_NONE == 0);
static_assert(APP_CONTROL_ERROR_PERMISSION_DENIED == -13);
static_assert(APP_CONTROL_ERROR_INVALID_PARAMETER == -22);
static_assert(APP_CONTROL_ERROR_OUT_OF_MEMORY == -12);
static_assert(APP_CONTROL_ERROR_IO_ERROR == -5);
static_assert(static_cast<std::uint32_t>(APP_CONTROL_ERROR_APP_NOT_FOUND) == 0xFEF00021);
static_assert(static_cast<std::uint32_t>(APP_CONTROL_ERROR_LAUNCH_REJECTED) == 0xFEF00023);
static_assert(static_cast<std::uint32_t>(APP_CONTROL_ERROR_LAUNCH_FAILED) == 0xFEF00024);
static_assert(static_cast<std::uint32_t>(APP_CONTROL_ERROR_TIMED_OUT) == 0xC0000001);

// app_operation.h
PINNED(app_operation_get_current_app, int (*)(const char*, char**));
PINNED(app_operation_set_current_app, int (*)(const char*, const char*));
PINNED(app_operation_reset_current_app, int (*)(const char*));

// app_manager.h, app_manager_extension.h, app_context.h
PINNED(app_manager_is_running, int (*)(const char*, bool*));
PINNED(app_manager_get_app_context, int (*)(const char*, app_context_h*));
PINNED(app_manager_terminate_app, int (*)(app_context_h));
PINNED(app_context_destroy, int (*)(app_context_h));
PINNED(app_context_get_pid, int (*)(app_context_h, pid_t*));
static_assert(APP_MANAGER_ERROR_NONE == 0);
static_assert(APP_MANAGER_ERROR_INVALID_PARAMETER == -22);
static_assert(APP_MANAGER_ERROR_OUT_OF_MEMORY == -12);
static_assert(APP_MANAGER_ERROR_IO_ERROR == -5);
static_assert(APP_MANAGER_ERROR_NO_SUCH_APP == -17891327);
static_assert(APP_MANAGER_ERROR_DB_FAILED == -17891325);
static_assert(APP_MANAGER_ERROR_INVALID_PACKAGE == -17891324);
static_assert(APP_MANAGER_ERROR_APP_NO_RUNNING == -17891323);
static_assert(APP_MANAGER_ERROR_REQUEST_FAILED == -17891322);
static_assert(APP_MANAGER_ERROR_PERMISSION_DENIED == -13);
static_assert(APP_MANAGER_ERROR_NOT_SUPPORTED == -1073741822);

// app_info.h
PINNED(app_info_create, int (*)(const char*, app_info_h*));
PINNED(app_info_destroy, int (*)(app_info_h));
PINNED(app_info_foreach_metadata, int (*)(app_info_h, app_info_metadata_cb, void*));
static_assert(std::is_same_v<app_info_metadata_cb, bool (*)(const char*, const char*, void*)>);

// package_info.h
PINNED(package_info_foreach_app_from_package,
       int (*)(package_info_h, package_info_app_component_type_e, package_info_app_cb, void*));
PINNED(package_info_get_version, int (*)(package_info_h, char**));
PINNED(package_info_destroy, int (*)(package_info_h));
static_assert(std::is_same_v<package_info_app_cb,
                             bool (*)(package_info_app_component_type_e, const char*, void*)>);
static_assert(PACKAGE_INFO_ALLAPP == 0);
static_assert(PACKAGE_INFO_UIAPP == 1);
static_assert(PACKAGE_INFO_SERVICEAPP == 2);

// package_manager.h
PINNED(package_manager_create, int (*)(package_manager_h*));
PINNED(package_manager_destroy, int (*)(package_manager_h));
PINNED(package_manager_set_event_cb, int (*)(package_manager_h, package_manager_event_cb, void*));
PINNED(package_manager_unset_event_cb, int (*)(package_manager_h));
PINNED(package_manager_get_package_info, int (*)(const char*, package_info_h*));
static_assert(
    std::is_same_v<package_manager_event_cb,
                   void (*)(const char*, const char*, package_manager_event_type_e,
                            package_manager_event_state_e, int, package_manager_error_e, void*)>);
static_assert(PACKAGE_MANAGER_ERROR_NONE == 0);
static_assert(PACKAGE_MANAGER_EVENT_TYPE_INSTALL == 0);
static_assert(PACKAGE_MANAGER_EVENT_TYPE_UNINSTALL == 1);
static_assert(PACKAGE_MANAGER_EVENT_TYPE_UPDATE == 2);
static_assert(PACKAGE_MANAGER_EVENT_STATE_COMPLETED == 2);

// vconf.h
PINNED(vconf_get_int, int (*)(const char*, int*));
PINNED(vconf_get_str, char* (*)(const char*));
PINNED(vconf_set_int, int (*)(const char*, int));
PINNED(vconf_set_str, int (*)(const char*, const char*));
PINNED(vconf_notify_key_changed, int (*)(const char*, vconf_callback_fn, void*));
PINNED(vconf_ignore_key_changed, int (*)(const char*, vconf_callback_fn));
PINNED(vconf_keynode_get_int, int (*)(keynode_t*));
PINNED(vconf_keynode_get_str, char* (*)(keynode_t*));
static_assert(std::is_same_v<vconf_callback_fn, void (*)(keynode_t*, void*)>);

// bundle.h
PINNED(bundle_create, bundle* (*)());
PINNED(bundle_free, int (*)(bundle*));
PINNED(bundle_add_str, int (*)(bundle*, const char*, const char*));
PINNED(bundle_foreach, void (*)(bundle*, bundle_iterator_t, void*));
PINNED(bundle_keyval_get_basic_val, int (*)(bundle_keyval_t*, void**, std::size_t*));
static_assert(
    std::is_same_v<bundle_iterator_t, void (*)(const char*, int, const bundle_keyval_t*, void*)>);
static_assert(BUNDLE_TYPE_STR == 0x401);

// message_port.h
PINNED(message_port_register_local_port, int (*)(const char*, message_port_message_cb, void*));
PINNED(message_port_send_message, int (*)(const char*, const char*, bundle*));
static_assert(std::is_same_v<message_port_message_cb,
                             void (*)(int, const char*, const char*, bool, bundle*, void*)>);

// tzplatform_config.h, dlog.h
PINNED(tzplatform_getenv, const char* (*)(enum tzplatform_variable));
static_assert(Has<int (*)(log_id_t, int, const char*, const char*, ...)>(&__dlog_print));
static_assert(TZ_USER_APP == 27);
static_assert(TZ_SYS_RW_APP == 61);
static_assert(LOG_ID_MAIN == 0);
static_assert(DLOG_INFO == 4);
static_assert(DLOG_ERROR == 6);

// smart_deadlock.h, ps_mount.h
PINNED(smart_deadlock_register_watchdog_service, int (*)(int));
PINNED(smart_deadlock_watchdog_notify, int (*)(void*));
PINNED(PS_Mount, int (*)(const char*, int, int, int*));
PINNED(PS_Umount, int (*)(const char*, int, int, int*));

// was_db.h
PINNED(was_get_all_app_list, int (*)(was_app_list_item_s**, int*));
PINNED(was_get_app_info_by_tizenid, int (*)(const char*, was_app_info_s*));
static_assert(sizeof(was_app_list_item_s) == 3212);
static_assert(offsetof(was_app_list_item_s, package_id) == 1024);
static_assert(offsetof(was_app_list_item_s, kind) == 3088);
static_assert(offsetof(was_app_list_item_s, gone) == 3180);
static_assert(offsetof(was_app_info_s, widget_id) == 0);
static_assert(offsetof(was_app_info_s, app_tizen_id) == 896);

// FCHandler.h, FCQueue.h
static_assert(std::is_same_v<decltype(FSEvent::pReceiver), FCHandler*>);
static_assert(std::is_same_v<decltype(FSEvent::type), unsigned int>);
static_assert(std::is_same_v<decltype(FSEvent::P0), void*>);
static_assert(std::is_same_v<decltype(FSEvent::P1), void*>);
PINNED(FCQueue::Delete, int (*)(FCQueue*, const FCHandler*));
PINNED(FCQueue::Size, long (FCQueue::*)() const);

// FCTask.h
struct TaskPins : FCTask {
  PINNED(TaskPins::t_Create, bool (FCTask::*)());
  PINNED(TaskPins::t_Main, void (FCTask::*)());
  PINNED(TaskPins::t_OnSuspend, void (FCTask::*)());
  PINNED(TaskPins::t_OnResume, void (FCTask::*)());
  PINNED(TaskPins::t_CanSuspend, bool (FCTask::*)());
  PINNED(TaskPins::t_CanResume, bool (FCTask::*)());
  PINNED(TaskPins::t_PurgeEvents, void (FCTask::*)());
  PINNED(TaskPins::ExecuteEvent, bool (FCTask::*)(const FSEvent*));
};
PINNED(FCTask::Create, bool (FCTask::*)(const char*, int, int));
PINNED(FCTask::Destroy, bool (FCTask::*)());
PINNED(FCTask::Send, bool (FCTask::*)(const FSEvent&, bool, bool));
PINNED(FCTask::GetName, const std::string& (FCTask::*)() const);
PINNED(FCTask::GetQueue, FCQueue* (FCTask::*)());
PINNED(FCTask::GetHandler, FCHandler* (FCTask::*)());
PINNED(FCTask::t_OnEvent, bool (FCTask::*)(const FSEvent*));
static_assert(std::is_base_of_v<FCThread, FCTask> && std::is_base_of_v<FCHandler, FCTask>);
static_assert(std::has_virtual_destructor_v<FCTask>);
PINNED(FCStateAlarm::Create, bool (FCStateAlarm::*)(FCTask*, unsigned int, int, int));
PINNED(FCStateAlarm::Destroy, bool (FCStateAlarm::*)());
PINNED(FCStateAlarm::IsRunning, bool (FCStateAlarm::*)() const);

// FCTaskList.h
PINNED(FCList::Create, bool (FCList::*)());
PINNED(FCList::Destroy, bool (FCList::*)());
PINNED(FCTaskList::FlagInitialize, int (*)());
static_assert(std::is_same_v<decltype(FCTaskList::m_pTaskList), FCList*>);
PINNED(FCSyncDet::Create, bool (*)());
PINNED(FCSyncDet::Destroy, bool (*)());

// FCAPI.h
PINNED(FCAPI::GetOrvAppInfoAPI, FCOrvAppInfoAPI* (*)());
PINNED(FCOrvAppInfoAPI::CreateAppInfo, bool (FCOrvAppInfoAPI::*)(const std::string&));
PINNED(FCOrvAppInfoAPI::RemoveAppInfo, bool (FCOrvAppInfoAPI::*)(const std::string&));
PINNED(FCOrvAppInfoAPI::UpdateAppInfo, bool (FCOrvAppInfoAPI::*)(const std::string&));

// FCEMSProxy.h
PINNED(FIIPCConnection::GetInstance, FIIPCConnection* (*)());
PINNED(FCEMSProxy::GetInstance, FCEMSProxy* (*)(FIIPCConnection*, FCEMSSignalCallback));
PINNED(FCEMSProxy::Subscribe, bool (FCEMSProxy::*)(int));
static_assert(std::is_same_v<FCEMSSignalCallback, int (*)(int, void*)>);

// TVServiceAPI.h
PINNED(TVServiceAPI::CreateSignalSubscriber, int (*)(TVSSignalCallback, TCSignalSubscriber**));
PINNED(TVServiceAPI::CreateService, int (*)(TCService**));
PINNED(TVServiceAPI::CreateServiceNavigation, int (*)(int, int, TCServiceNavigation**));
static_assert(Has<void (*)(TCService*)>(&TVServiceAPI::Destroy));
static_assert(Has<void (*)(TCServiceNavigation*)>(&TVServiceAPI::Destroy));
static_assert(std::is_same_v<TVSSignalCallback, int (*)(int, const void*, void*)>);
PINNED(TCService::FindService, int (TCService::*)(const TCCriteriaHelper&, TCServiceData&, int));
PINNED(TCServiceNavigation::GetTVMode, int (TCServiceNavigation::*)(TSTvMode&));
PINNED(TCServiceNavigation::GetCurrentServiceInfo,
       int (TCServiceNavigation::*)(const TSTvMode&, const TCCriteriaHelper&, TCServiceData&));
PINNED(TCSignalSubscriber::Subscribe, int (TCSignalSubscriber::*)(int, int, int, int, int));
PINNED(TCCriteriaHelper::Where, void (TCCriteriaHelper::*)(int, std::uint64_t));
PINNED(TCCriteriaHelper::Fetch, void (TCCriteriaHelper::*)(int));
static_assert(Has<bool (TCServiceData::*)(int, std::uint64_t&) const>(&TCServiceData::Get));
static_assert(Has<bool (TCServiceData::*)(int, std::string&) const>(&TCServiceData::Get));

}  // namespace
