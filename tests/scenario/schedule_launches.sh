#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Failed launches and terminations of service apps, additions and removals of the running app, and
# the start of the schedule.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/schedule_lib.sh"
here=$(dirname "$0")

SET=memory/menu/network/set_time
ENDLESS='exec sleep 86400'
# Ignores SIGTERM.
STUBBORN='trap "" TERM; while :; do sleep 1; done'
pid_of() { tv app list --json | jq --arg id "$1.Feed" '.[] | select(.id == $id) | .pid'; }
install() { service_wgt "$work/$1.wgt" "$1" "$2"; tv pkg install "$work/$1.wgt"; }
# complete WHAT: returns when the scheduler has handled the message. It logs an event before it makes
# the event's calls, so a second message, which finds no current app, shows that the first is done.
complete() {
  forget_log
  tv port send $PORT $COMPLETE; tv port send $PORT $COMPLETE
  logged "$1: handled" "[Debug] [EVENT_APP_TERMINATED]" 2
}
# scheduler_texts: the log of the scheduler's thread.
scheduler_texts() {
  thread=$(sed -n 's/^[^ ]* [^ ]* *[0-9]* *\([0-9]*\) .*ORVScheduler\.cpp: t_OnEvent(.*/\1/p' "$TV_ROOT/log/daemon.log" | tail -n 1)
  awk -v t="$thread" '$4 == t' "$TV_ROOT/log/daemon.log" | sed -E 's/^.* [A-Z]\/orv-enabler: [^ ]+: [^ ]+\([0-9]+\) > //'
}
NOT_THERE="[Info] pEvent : 1002
[Debug] [EVENT_START_SCHEDULER]
[Debug] Network Time is not enabled.
[Debug] StartScheduler() return false."

echo "the start"
tv up --offline
forget_log
install launchone1 "$ENDLESS"
logged "an addition requests a start" "[Debug] StartScheduler() return false."
equal "without network time the request is dropped" "$NOT_THERE" "$(scheduler_texts)"
forget_log
tv key set $SET 2
logged "another value is read" "[Debug] set_time value = 2"
tv key set $SET 1
logged "network time starts the schedule" "[Debug] Launched Time"
equal "the other value had no effect" 1 "$(count_log EVENT_START_SCHEDULER)"
reached "the app runs" "$(is_running launchone1)"
forget_log
tv key set $SET 0
logged "a change of the key to 0 is read" "[Debug] set_time value = 0"
reached "network time 0 does not end the app" "$(is_running launchone1)"

echo "additions and removals of the running app"
old=$(pid_of launchone1)
forget_log
tv signal 90014 >/dev/null # every record runs again
logged "the running app is added again" "[Debug] [EVENT_ADD_ITEM]"
logged "the old process is killed" "[Debug] Tartget pid : $old"
equal "the kill comes before the item is put first" \
"[Debug] [EVENT_ADD_ITEM]
[Info] Current ServiceApp ID : launchone1.Feed
[Debug] Tartget pid : $old
[Info] rPackageID : launchone1" \
  "$(log_texts | grep -E 'EVENT_ADD_ITEM|Current ServiceApp|Tartget|rPackageID' | head -n 4)"
reached "the old process is gone" ".apps | any(.pid == $old) | not"
logged "each run of the record is an addition" "[Debug] [EVENT_LAUNCH_NEXT_ITEM]" 2

install launchtwo2 "$STUBBORN"
reached "another package is launched at once" "$(is_running launchtwo2)"
reached "the running app is ended" "$(is_running launchone1) | not"
forget_log
tv pkg uninstall launchtwo2
reached "a package is uninstalled while its app runs" "$(stored launchtwo2) | not"
logged "the app is removed from the list" "[Debug] [EVENT_DELETE_ITEM]" 2
equal "nothing is launched" "" "$(calls '^app_control_send_launch_request$')"

echo "terminations"
install launchtri3 "$STUBBORN"
reached "an app that ignores SIGTERM runs" "$(is_running launchtri3)"
stubborn=$(pid_of launchtri3)
complete "an app that ignores SIGTERM"
reached "the app is killed" "$(is_running launchtri3) | not"
equal "the app is terminated first, then killed" \
"app_manager_is_running
app_manager_get_app_context
app_manager_terminate_app
app_context_destroy
app_context_get_pid" "$(calls '^app_(manager|context)_' | sed 's/(.*//')"
logged "the app is killed by its pid" "[Debug] Tartget pid : $stubborn"

install launchfor4 'exit 3'
logged "an app that exits by itself is launched" "[Info] rAppID : launchfor4.Feed"
reached "the exited app is gone" "$(is_running launchfor4) | not"
complete "the exited app"
equal "no termination is tried" "app_manager_is_running(launchfor4.Feed, false) = 0" "$(calls '^app_(manager|context)_')"
complete "the exited app, again"
equal "the exited app is no longer the current app" "" "$(calls '^app_(manager|context)_')"

# spared WHAT CALL RESULT LINE: the app survives because the call fails.
number=0
spared() {
  number=$((number + 1)); package=spared000$number
  install "$package" "$STUBBORN"
  reached "$1: the app runs" "$(is_running "$package")"
  tv fail "$2" "$3" --times 1
  complete "$1"
  logged "$1: the log" "$4"
  silent "$1: no kill" "Tartget pid"
  reached "$1: the app keeps running" "$(is_running "$package")"
  complete "$1, again"
  equal "$1: it is no longer the current app" "" "$(calls '^app_(manager|context)_')"
  tv pkg uninstall "$package"
  reached "$1: its package is uninstalled" "$(stored "$package") | not"
}
spared "no pid" app_context_get_pid -22 "[Debug] Cannot get pid.(ret : -22)"
spared "no context" app_manager_get_app_context -17891327 \
  "[ERROR] app_manager_get_app_context() failed = No such application"
spared "no context, an unknown code" app_manager_get_app_context -4711 "[ERROR] app_manager_get_app_context() failed = "
spared "a refused termination" app_manager_terminate_app -13 "[Debug] app_manager_terminate_app() failed = Permission denied []"
spared "an app manager that fails" app_manager_is_running -5 "[Info] Current ServiceApp ID : spared0005.Feed"
install launchfiv5 "$STUBBORN"
reached "an app whose context cannot be destroyed runs" "$(is_running launchfiv5)"
tv fail app_context_destroy -22 --times 1
complete "an app whose context cannot be destroyed"
logged "the failure is logged" "[Debug] app_context_destroy() failed = Invalid parameter []"
reached "the app is killed" "$(is_running launchfiv5) | not"

echo "failed launches"
# refused WHAT RESULT NUMBER TEXT
refused() {
  number=$((number + 1)); package=refused00$number
  tv fail app_control_send_launch_request "$2" --times 1
  forget_log
  install "$package" "$ENDLESS"
  logged "$1: the log" "[ERROR] app_control_send_launch_request() failed. (Error Message[$3] : $4"
  logged "$1: the scheduler's line" "[ERROR] AppControlUtils::LaunchApp() return false."
  logged "$1: the event's line" "[Debug] LaunchNextItem() return false."
  silent "$1: not launched" "Launched Time"
  holds "$1: the app does not run" "$(is_running "$package") | not"
  complete "$1"
  equal "$1: the item is still current, its app is not running" \
    "app_manager_is_running($package.Feed, false) = 0" "$(calls '^app_manager')"
}
refused "not found" 0xFEF00021 -17825759 "App Not Found"
refused "rejected" 0xFEF00023 -17825757 "Launch Rejected"
refused "failed" 0xFEF00024 -17825756 "Launch Failed"
refused "timed out" 0xC0000001 -1073741823 "Timed Out"
refused "an unknown code" -4711 -4711 ""
forget_log
make_wgt "$work/none.wgt" launchnon6 1.0.0 "$(metadata orv_type ch_feeder_custom standard)"
tv pkg install "$work/none.wgt"
logged "a package without a service app cannot be launched" "[ERROR] AppControlUtils::LaunchApp() return false."
complete "a package without a service app"
equal "there is no app to terminate" "" "$(calls '^app_manager')"
forget_log
install launchsev7 "$ENDLESS"
reached "the next app is launched" "$(is_running launchsev7)"
holds "the daemon has not restarted" '.daemon.restarts == 0'

echo "removal with others on the list, and more than one timer"
tv down
rm -rf "$TV_ROOT"
tv up --speed 600
for package in several001 several002 several003; do
  install $package "$ENDLESS"
  logged "$package is launched" "[Info] rAppID : $package.Feed"
done
# A tick refills the list; the first of three items is launched, two are left.
logged "a tick refills the list" "m_vSchedulingList.size() : 3"
reached "the first one runs" "$(is_running several001)"
tv pkg uninstall several002
reached "the second one is uninstalled" "$(stored several002) | not"
logged "the list is refilled without it" "m_vSchedulingList.size() : 2" 2
model=$(awk -f "$here/schedule_model.awk" "$TV_ROOT/log/daemon.log")
echo "  $(echo "$model" | tail -n 1)"
equal "every step matches the model" "" "$(echo "$model" | grep WRONG || true)"
tv key set $SET 1; tv key set $SET 1
logged "setting network time again starts the schedule again" EVENT_START_SCHEDULER 4
forget_log
logged "ticks continue" EVENT_RESET_SCHEDULER 10
ticks() { tv journal --json | jq -r --argjson from "$journal_from" 'select(.seq > $from and .call == "FCTask::Send" and .args[0] == "ORVScheduler" and .args[1] == 1004) | .time'; }
first=$(date -u -d "$(ticks | sed -n 1p)" +%s); tenth=$(date -u -d "$(ticks | sed -n 10p)" +%s)
echo "  ten ticks in $((tenth - first)) seconds"
[ $((tenth - first)) -lt $((6 * 720)) ] || die "ten ticks took too long: not every start added a timer"
passed "each start added a timer"
echo "a running app that the validation removes"
tv down
rm -rf "$TV_ROOT"
tv up --speed 600 # the validation comes after half an hour
install leaving001 "$ENDLESS"
reached "the app runs" "$(is_running leaving001)"
leaving=$(pid_of leaving001)
tv was set leaving001 --gone >/dev/null
logged "the validation removes it from the schedule" "[Debug] [EVENT_DELETE_ITEM]"
logged "its process is killed" "[Debug] Tartget pid : $leaving"
equal "the kill comes before the item is removed" \
"[Debug] [EVENT_DELETE_ITEM]
[Info] Current ServiceApp ID : leaving001.Feed
[Debug] Tartget pid : $leaving" \
  "$(log_texts | grep -E 'EVENT_DELETE_ITEM|Current ServiceApp|Tartget' | head -n 3)"
reached "the process is gone" ".apps | any(.pid == $leaving) | not"
the_end
