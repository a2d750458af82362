#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# The signals that concern all apps: activation preloads the custom UIs; "virtual services complete"
# runs every record, and the custom feeders twice.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/update_lib.sh"

feeder() { is_type ch_feeder_standard standard; has_data channel_data_url "http://$1/c"; has_data schedule_data_url "http://$1/s"; }
start_tv --offline
# on_signal NUMBER TEXT: sends the signal and waits until it is handled; log and journal start there.
on_signal() {
  forget_log
  tv signal "$1"
  logged "$1: the signal is received" "$2"
  handled
}
ACTIVATED="[Info] SIGNAL_TVS_ACTIVATE event comming"
COMPLETE="[Info] VELDRIN_EVENT_GET_VIRTUAL_SERVICES_COMPLETE event comming"
preloaded() { log_texts | sed -n 's/^\[Info\] PreloadWebApp appID : //p'; }
launches() { calls '^app_control_(set_app_id|add_extra_data)$' | sed 's/^[a-z_]*([0-9]*, //; s/) = 0$//'; }

echo "without apps"
on_signal 75 "$ACTIVATED"
equal "activation preloads nothing" "" "$(preloaded)$(launches)"
on_signal 90014 "$COMPLETE"
equal "completed services run nothing" "" "$(calls '^(was|FCOrv|app_control|vconf)')"

version dfeeder001 1.0.0 "$(feeder d)"
version cfeedcust1 1.0.0 "$(is_type ch_feeder_custom plain)"
version bguide0001 1.0.0 "$(is_type custom_ui_extended epg)"
version abanner001 1.0.0 "$(is_type custom_ui_standard info)"
version eboth00001 1.0.0 "$(is_type custom_ui_standard nothing-known; is_type custom_ui_extended nothing-known)"
version ffeedcust1 1.0.0 "$(is_type ch_feeder_custom plain; feeder f)"
holds "six apps" '.store | length == 6'
logged "each new channel completes the services once more" "$COMPLETE" 3
handled

echo "activation"
on_signal 75 "$ACTIVATED"
equal "each custom UI is preloaded once, in package order" \
"abanner001.App, widgetID :abanner001.App
bguide0001.App, widgetID :bguide0001.App
eboth00001.App, widgetID :eboth00001.App" "$(preloaded)"
MODE="http://kalmora.com/appcontrol/data/launch_mode, backgroundAtStartup"
equal "they are launched in the background" "abanner001.App
$MODE
bguide0001.App
$MODE
eboth00001.App
$MODE" "$(launches)"
tv fail app_control_send_launch_request 0xFEF00023 --times 1
on_signal 75 "$ACTIVATED"
equal "a rejected launch does not stop the others and is not retried" \
"-17825757
0
0" "$(calls '^app_control_send_launch_request$' | sed 's/.* = //')"
tv fail app_control_send_launch_request 0xFEF00021
on_signal 75 "$ACTIVATED"
equal "three failed launches are not retried either" 3 "$(calls '^app_control_send_launch_request$' | grep -c .)"
tv fail --clear

echo "complete virtual services"
# runs: what the run of each record writes to the log.
runs() {
  log_texts | sed -n "/VIRTUAL_SERVICES_COMPLETE/,/$MARKER/p" | sed -nE \
    -e 's/^\[Info\] rAppID : (.*)\.App, rAppType : ([a-z_]*),.*/\1 \2/p' \
    -e 's/^\[Info\] sInputMetaDataURL http:\/\/(.)\/c$/\1 feeds/p' \
    -e 's/^\[Info\] rPackageID : (.feedcust1)$/\1 is scheduled/p' | uniq
}
on_signal 90014 "$COMPLETE"
equal "the custom feeders run first, then all records, inner layers before outer ones" \
"cfeedcust1 is scheduled
ffeedcust1 is scheduled
f feeds
abanner001 custom_ui_standard
bguide0001 custom_ui_extended
cfeedcust1 is scheduled
d feeds
eboth00001 custom_ui_extended
eboth00001 custom_ui_standard
ffeedcust1 is scheduled
f feeds" "$(runs)"
equal "they run as known apps: nothing is announced or taken over again" "" "$(effects)"
tv op reset epg
on_signal 90014 "$COMPLETE"
equal "a screen that was reset is taken over again" \
  "app_operation_set_current_app(http://kalmora.com/tv/appcontrol/operation/epg, bguide0001.App)" "$(effects)"

echo "the channel list changes"
forget_log
version gfeeder001 1.0.0 "$(feeder g)"
logged "a new channel completes the services" "$COMPLETE"
handled
equal "the new feeder runs with the others" "d feeds
f feeds
g feeds" "$(runs | grep feeds | sort -u)"
forget_log
version gfeeder001 2.0.0 "$(feeder h)"
logged "a changed channel completes them too" "$COMPLETE"
forget_log
remove gfeeder001
remove dfeeder001
silent "a removed channel does not" "$COMPLETE"
the_end
