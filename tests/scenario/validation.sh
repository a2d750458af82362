#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Thirty minutes after each start, the records are compared with the web-app service's table. The clock
# runs 600 times faster, so this takes three seconds.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/update_lib.sh"

feeder() { is_type ch_feeder_standard standard; has_data channel_data_url http://a/c; has_data schedule_data_url http://a/s; }
PASSED="[Debug] RUN_VALIDATION_TESTING"
# validates WHAT: restarts the daemon and waits until its validation is complete.
validates() {
  forget_log
  tv daemon restart
  logged "$1: the validation runs" "$PASSED"
  handled
}
# verdicts: what the validation logs about each package, in order.
verdicts() {
  log_texts | sed -n "/RUN_VALIDATION_TESTING/,\$p" |
    sed -n -e 's/^\[Info\] packageID : \([^,]*\)$/\1/p' -e 's/^\[Info\] Remove .* App\.$/  removed/p' -e '/GetAllWASAppList/p'
}
packages() { tv store --json | jq -r '.[].package_id'; }

start_tv --speed 600
logged "the first start's validation finds nothing to do" "$PASSED"
make_wgt "$work/gone.wgt" bgoneapp01 1.0.0 "$(feeder; is_type custom_ui_standard info)"
for package in akeptapp01 cotherkind dunknown01 elateapp01; do make_wgt "$work/$package.wgt" "$package" 1.0.0 "$(feeder)"; done
install_all() {
  for package in akeptapp01 cotherkind dunknown01; do
    [ -d "$APPS/$package" ] && tv pkg uninstall "$package" >/dev/null
    tv pkg install "$work/$package.wgt" >/dev/null
  done
  [ -d "$APPS/bgoneapp01" ] && tv pkg uninstall bgoneapp01 >/dev/null
  tv pkg install "$work/gone.wgt" >/dev/null
  handled
  tv was set cotherkind --kind 3 >/dev/null
  tv was remove dunknown01
  tv was set bgoneapp01 --gone >/dev/null
  tv was set norecord01 --gone >/dev/null
  equal "all are stored" "akeptapp01
bgoneapp01
cotherkind
dunknown01" "$(packages)"
}

echo "gone, unknown, of another kind, and present"
install_all
validates "validation"
equal "each record is checked" "akeptapp01
bgoneapp01
  removed
cotherkind
  removed
dunknown01
  removed" "$(verdicts)"
equal "one record is left" akeptapp01 "$(packages)"
equal "the record that is gone is stopped, then removed; the others are only removed" \
'RemoveAppInfo({"pkg_id":"bgoneapp01"})
announce({"CustomBanner":{}})
RemoveAppInfo({"pkg_id":"bgoneapp01"}) = false
RemoveAppInfo({"pkg_id":"cotherkind"})
RemoveAppInfo({"pkg_id":"dunknown01"})' "$(effects)"
holds "one channel is left" '.channels | map(.pkg_id) == ["akeptapp01"]'
holds "the packages themselves stay installed" '.packages | map(.id) | contains(["bgoneapp01", "cotherkind", "dunknown01"])'

echo "one validation in each run"
tv was set akeptapp01 --gone >/dev/null
version clockapp01 1.0.0 "$(is_type ch_feeder_custom plain)"
from=$(count_log "[Debug] [EVENT_RESET_SCHEDULER]")
logged "more than half an hour passes, by the scheduler's ticks" "[Debug] [EVENT_RESET_SCHEDULER]" $((from + 4))
equal "no second validation runs" 1 "$(count_log "$PASSED")"
holds "nothing was removed" ".store | any(.package_id == \"akeptapp01\")"
tv was set akeptapp01 --present >/dev/null
remove clockapp01

echo "removed by the validation, added by the next event"
version bgoneapp01 2.0.0 "$(feeder)"
holds "an update adds it again" '.store | any(.package_id == "bgoneapp01" and .version == "2.0.0")'
tv was set bgoneapp01 --gone >/dev/null
validates "the next start"
equal "the next validation removes it again" akeptapp01 "$(packages)"

echo "the service fails the first time"
install_all
tv fail was_get_all_app_list --times 1
validates "the first call fails"
equal "the records are still checked" "[Debug] WASUtils::GetAllWASAppList() return false.
akeptapp01
bgoneapp01
  removed
cotherkind
  removed
dunknown01
  removed" "$(verdicts)"
# The record was not stopped, so its announcement is unchanged.
equal "nothing is stopped" \
'RemoveAppInfo({"pkg_id":"bgoneapp01"})
RemoveAppInfo({"pkg_id":"cotherkind"})
RemoveAppInfo({"pkg_id":"dunknown01"})' "$(effects)"
equal "the banners are still announced" '"bgoneapp01"' "$(announced CustomBanner | jq .pkg_id)"

echo "the service fails the second time"
install_all
tv fail was_get_all_app_list --times 1 --after 1
validates "the second call fails"
equal "no record is checked" "[Debug] WASUtils::GetAllWASAppList() return false." "$(verdicts)"
equal "the record that is gone is only stopped" \
'RemoveAppInfo({"pkg_id":"bgoneapp01"})
announce({"CustomBanner":{}})' "$(effects)"
equal "all stay stored" "akeptapp01
bgoneapp01
cotherkind
dunknown01" "$(packages)"

echo "the service fails both times"
tv fail was_get_all_app_list
validates "both calls fail"
equal "both failures are logged" "[Debug] WASUtils::GetAllWASAppList() return false.
[Debug] WASUtils::GetAllWASAppList() return false." "$(verdicts)"
equal "nothing happens" "" "$(effects)"
tv fail --clear
validates "once the service works again"
equal "all outdated records are removed" akeptapp01 "$(packages)"

echo "without package events there is no validation"
tv was set akeptapp01 --gone >/dev/null
for call in package_manager_create package_manager_set_event_cb; do
  tv fail "$call" --times 1
  forget_log
  tv daemon restart
  logged "$call fails" "[ERROR] failed to $call : "
  tv key set db/tellahub/reset/apps 0
  tv key set memory/hbbtv_status 6
  logged "$call: keys are handled" "[Debug] vconf_hbbtv_status_cb"
  silent "$call: the reset key is not handled" "VCONFKEY_TELLAHUB_RESET"
  # Only the watchdog's calls show how much of the daemon's time has passed: its timers log nothing.
  calls_before=$(calls '^smart_deadlock_watchdog_notify$' | grep -c . || true)
  deadline=$(($(date +%s) + 60 * slow))
  until [ "$(calls '^smart_deadlock_watchdog_notify$' | grep -c . || true)" -ge $((calls_before + 200)) ]; do
    [ "$(date +%s)" -lt "$deadline" ] || die "$call: half an hour did not pass"
    pause
  done
  silent "$call: half an hour later nothing is validated" "$PASSED"
done
tv key set db/tellahub/reset/apps 1
equal "the record is still there" akeptapp01 "$(packages)"
validates "the next start works again"
equal "its validation removes the record" "" "$(packages)"
the_end
