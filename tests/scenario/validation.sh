#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Thirty minutes after each start the records are held against the web-app service's table. The clock
# runs 600 times faster: three seconds.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/update_lib.sh"

feeder() { is_type ch_feeder_standard standard; has_data channel_data_url http://a/c; has_data schedule_data_url http://a/s; }
PASSED="[Debug] RUN_VALIDATION_TESTING"
# validates WHAT [TIMES]: the next start's validation is through.
validates() {
  forget_log
  tv daemon restart
  logged "$1: it comes" "$PASSED"
  handled
}
# verdicts: what the validation said of each package, in order.
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

echo "gone, unknown, of another kind, and there"
install_all
validates "validation"
equal "each is looked at" "akeptapp01
bgoneapp01
  removed
cotherkind
  removed
dunknown01
  removed" "$(verdicts)"
equal "one is left" akeptapp01 "$(packages)"
equal "what is gone was stopped before it was removed, the others were removed alone" \
'RemoveAppInfo({"pkg_id":"bgoneapp01"})
announce({"CustomBanner":{}})
RemoveAppInfo({"pkg_id":"bgoneapp01"}) = false
RemoveAppInfo({"pkg_id":"cotherkind"})
RemoveAppInfo({"pkg_id":"dunknown01"})' "$(effects)"
holds "one channel is left" '.channels | map(.pkg_id) == ["akeptapp01"]'
holds "the packages themselves are left alone" '.packages | map(.id) | contains(["bgoneapp01", "cotherkind", "dunknown01"])'

echo "it comes once in each run"
tv was set akeptapp01 --gone >/dev/null
version clockapp01 1.0.0 "$(is_type ch_feeder_custom plain)"
from=$(count_log "[Debug] [EVENT_RESET_SCHEDULER]")
logged "more than half an hour passes, by the scheduler's ticks" "[Debug] [EVENT_RESET_SCHEDULER]" $((from + 4))
equal "without another one" 1 "$(count_log "$PASSED")"
holds "nothing was removed" ".store | any(.package_id == \"akeptapp01\")"
tv was set akeptapp01 --present >/dev/null
remove clockapp01

echo "removed by validation, back by the next event"
version bgoneapp01 2.0.0 "$(feeder)"
holds "an update brings it back" '.store | any(.package_id == "bgoneapp01" and .version == "2.0.0")'
tv was set bgoneapp01 --gone >/dev/null
validates "the next start"
equal "and the next validation removes it again" akeptapp01 "$(packages)"

echo "the service fails the first time"
install_all
tv fail was_get_all_app_list --times 1
validates "the first call fails"
equal "the records are still looked at" "[Debug] WASUtils::GetAllWASAppList() return false.
akeptapp01
bgoneapp01
  removed
cotherkind
  removed
dunknown01
  removed" "$(verdicts)"
# Nobody stopped it: its announcement is left as it was.
equal "nothing is stopped" \
'RemoveAppInfo({"pkg_id":"bgoneapp01"})
RemoveAppInfo({"pkg_id":"cotherkind"})
RemoveAppInfo({"pkg_id":"dunknown01"})' "$(effects)"
equal "so the banners stay announced" '"bgoneapp01"' "$(announced CustomBanner | jq .pkg_id)"

echo "the service fails the second time"
install_all
tv fail was_get_all_app_list --times 1 --after 1
validates "the second call fails"
equal "no record is looked at" "[Debug] WASUtils::GetAllWASAppList() return false." "$(verdicts)"
equal "what is gone is stopped alone" \
'RemoveAppInfo({"pkg_id":"bgoneapp01"})
announce({"CustomBanner":{}})' "$(effects)"
equal "all stay stored" "akeptapp01
bgoneapp01
cotherkind
dunknown01" "$(packages)"

echo "the service fails both times"
tv fail was_get_all_app_list
validates "both calls fail"
equal "as the log says" "[Debug] WASUtils::GetAllWASAppList() return false.
[Debug] WASUtils::GetAllWASAppList() return false." "$(verdicts)"
equal "nothing happens" "" "$(effects)"
tv fail --clear
validates "once the service is well"
equal "all is made good" akeptapp01 "$(packages)"

echo "no packages, no validation"
tv was set akeptapp01 --gone >/dev/null
for call in package_manager_create package_manager_set_event_cb; do
  tv fail "$call" --times 1
  forget_log
  tv daemon restart
  logged "$call fails" "[ERROR] failed to $call : "
  tv key set db/tellahub/reset/apps 0
  tv key set memory/hbbtv_status 6
  logged "$call: keys are heard" "[Debug] vconf_hbbtv_status_cb"
  silent "$call: the reset's is not" "VCONFKEY_TELLAHUB_RESET"
  # Nothing else in the daemon tells that time has passed: its watchdog and trim timers are silent.
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
validates "the next start is sound again"
equal "and removes it" "" "$(packages)"
the_end
