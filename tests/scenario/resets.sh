#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Factory and service reset wipe the store at the next start; the reset of the apps works at once.
. "$(dirname "$0")/lib.sh"

tv up
fill() {
  web_feeder "$work/a.wgt" resetapp01
  tv pkg uninstall resetapp01 >/dev/null 2>&1 || true
  reached "nothing stored" '.store | length == 0'
  tv pkg install "$work/a.wgt"
  reached "stored and fed" '(.store | length == 1) and (.channels | length == 1)'
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
  logged "$kind: the reset was seen" "[Debug] TV is restarted by facotry/service reset."
  logged "$kind: and named" "[Debug] Factory Reset"
  holds "$kind: the store is empty" '.store | length == 0'
  holds "$kind: the channels are left to the framework" '.channels | length == 1'
  equal "$kind: the unpacked data is left" list "$(cat "$HBBTV/resetapp01/app_type_file.txt")"
  equal "$kind: and so is the metadata" channels "$(cat "$METADATA/resetapp01/channel.json")"
  equal "$kind: and the announcement of the custom UIs" "$banner" "$(tv key get -r db/orv_channel/custom_ui_type)"
  forget_log
  tv daemon restart
  silent "$kind: once is enough" "[Debug] Factory Reset"
done
equal "the counters are on disk" '{"factory_reset_count":1,"service_reset_count":1}' "$(cat "$OWN/data/reset_count_info.txt")"

fill
forget_log
tv reset apps
reached "apps: the store is empty at once" '.store | length == 0'
reached "apps: the framework was told" '.channels | length == 0'
# Two URLs at each of two runs, and once more when the release asks what was installed.
equal "apps: first each app ran twice, as a known one" 6 "$(log_texts | grep -c '^\[Info\] sInputMetaDataURL http://example.org/resetapp01/')" 
logged "apps: then it was removed" "[Info] rPackageID : resetapp01"
forget_log
tv key set db/tellahub/reset/apps 1
logged "apps: any other value does nothing" "[Debug] VCONFKEY_TELLAHUB_RESET value 1"
silent "apps: nothing was reset" "[Debug] Reset AppInfo"
the_end
