#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Factory and service resets clear the store at the next start; a reset of the apps works at once.
. "$(dirname "$0")/lib.sh"

tv up
fill() {
  web_feeder "$work/a.wgt" resetapp01
  tv pkg uninstall resetapp01 >/dev/null 2>&1 || true
  reached "nothing stored" '.store | length == 0'
  tv pkg install "$work/a.wgt"
  reached "the app is stored and has its channel" '(.store | length == 1) and (.channels | length == 1)'
}
banner='{"CustomBanner":{"app_id":"resetapp01.App"}}'
for kind in factory service; do
  fill
  mkdir -p "$HBBTV/resetapp01" "$METADATA/resetapp01"
  echo list >"$HBBTV/resetapp01/app_type_file.txt"
  echo channels >"$METADATA/resetapp01/channel.json"
  tv key set -t string db/orv_channel/custom_ui_type "$banner"
  tv reset "$kind"
  holds "$kind: nothing happens before the next start" '.store | length == 1'
  forget_log
  tv power-cycle
  logged "$kind: the reset is detected" "[Debug] TV is restarted by facotry/service reset."
  logged "$kind: the store is reset" "[Debug] Factory Reset"
  holds "$kind: the store is empty" '.store | length == 0'
  holds "$kind: the framework keeps the channels" '.channels | length == 1'
  equal "$kind: the unpacked data is kept" list "$(cat "$HBBTV/resetapp01/app_type_file.txt")"
  equal "$kind: the metadata is kept" channels "$(cat "$METADATA/resetapp01/channel.json")"
  equal "$kind: the announcement of the custom UIs is kept" "$banner" "$(tv key get -r db/orv_channel/custom_ui_type)"
  forget_log
  tv daemon restart
  silent "$kind: the next restart does not reset again" "[Debug] Factory Reset"
done
equal "the counters are on disk" '{"factory_reset_count":1,"service_reset_count":1}' "$(cat "$OWN/data/reset_count_info.txt")"

fill
forget_log
tv reset apps
reached "apps: the store is empty at once" '.store | length == 0'
reached "apps: the channels are removed from the framework" '.channels | length == 0'
# Two URLs in each of two runs, and once more when the release looks up what was installed.
equal "apps: before that each app ran twice, as a known app" 6 "$(log_texts | grep -c '^\[Info\] sInputMetaDataURL http://example.org/resetapp01/')" 
logged "apps: then it was removed" "[Info] rPackageID : resetapp01"
forget_log
tv key set db/tellahub/reset/apps 1
logged "apps: any other value does nothing" "[Debug] VCONFKEY_TELLAHUB_RESET value 1"
silent "apps: nothing was reset" "[Debug] Reset AppInfo"
the_end
