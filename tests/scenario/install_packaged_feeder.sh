#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# A feeder that ships its data: the image is mounted, unpacked and unmounted; afterwards the rows, trees
# and records are complete.
. "$(dirname "$0")/lib.sh"

tv up
needs_loop
forget_log
tv pkg install "$ORV_SAMPLES/feeder-packaged.wgt"
package=$(tv pkg list --json | jq -r '.[0].id')
reached "the row is in the store" "$(stored "$package")"
reached "the channel framework has the record" ".channels | length == 1"

row() { jq -r ".store[0].$1" "$work/dump.json"; }
holds "one row" '.store | length == 1'
equal "the row names the package" "$package" "$(row package_id)"
equal "the row names the app" "$(row app_id)" "$(tv pkg info "$package" --json | jq -r '.apps[] | select(.component == "ui") | .id')"
equal "the widget id is known" "$(row app_id)" "$(row widget_id)"
holds "the type is stored with its value" '.store[0].variables.orv_type.ch_feeder_standard == "extended"'
holds "the reserved columns are empty" '.store[0] | .extra_data1 == "" and .extra_data2 == "" and .extra_data3 == "" and .extra_data4 == ""'

there "the tree is unpacked" "$HBBTV/$package"
equal "the list names the type" '{"app_type":["ch_feeder_standard"]}' "$(cat "$HBBTV/$package/app_type_file.txt")"
there "the channel metadata was moved" "$METADATA/$package/channel.json"
there "the schedule metadata was moved" "$METADATA/$package/schedule.json"
absent "the channel metadata is no longer in the tree" "$HBBTV/$package/metadata/channel.json"
there "the mount point is kept" "$HBBTV/temp_app"
holds "nothing is mounted any more" '.mounts | length == 0'

own=/opt/usr/apps/com.kalmora.tv.orv-enabler/shared/data
holds "the channel URL points into the data" ".channels[0].channel_data_url == \"file:/$own/metadata/$package/channel.json\""
holds "the schedule URL as well" ".channels[0].schedule_data_url == \"file:/$own/metadata/$package/schedule.json\""
holds "the record has the ids" ".channels[0] | .pkg_id == \"$package\" and .widget_id == \"$package.Feeder\""

image=/opt/usr/apps/$package/res/$package.Feeder.tmg
equal "the mount is requested with exactly these options" \
  "PS_Mount(-o loop,nosuid,nodev,noexec $image $own/hbbtv_app/temp_app, $(printf '%s' "-o loop,nosuid,nodev,noexec $image $own/hbbtv_app/temp_app" | wc -c), 0, 0) = 0" \
  "$(calls '^PS_Mount$')"
equal "the calls are in order" \
"package_manager_get_package_info
package_info_foreach_app_from_package
app_info_create
app_info_foreach_metadata
app_info_destroy
package_info_get_version
package_info_destroy
was_get_app_info_by_tizenid
PS_Mount
PS_Umount
FCAPI::GetOrvAppInfoAPI
FCOrvAppInfoAPI::CreateAppInfo" \
"$(calls '^(package_|app_info|was_|PS_|FCAPI|FCOrv)' | sed 's/(.*//')"

forget_log
tv pkg install "$ORV_SAMPLES/ordinary.wgt"
ordinary=$(tv pkg list --json | jq -r --arg known "$package" '.[] | .id | select(. != $known)')
logged "an ordinary package is not a channel-bound app" "[Debug] $ordinary is not ORV Type."
holds "an ordinary package adds no row" '.store | length == 1'
the_end
