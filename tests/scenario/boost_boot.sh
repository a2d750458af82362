#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# The decision after a start: with and without the flag, on a boosting channel and on others; which
# files outlive what; and who releases the first screen, which comes once.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/boost_lib.sh"

boost_tv
echo "no channel at all"
decided "no flag, no boosting channel" 0 0
logged "the key of the last service is empty" "[Info] Not Virtual ch."
absent "no flag is made" "$FLAG"
absent "the ready file neither" "$READY"
tv key set memory/hbbtv_status 6
logged "the first screen is no longer waited for" "[Debug] first screen already run"
tv key set memory/hbbtv_status 10
keys_seen
equal "the status is not listened to any more" 1 "$(count_log "[Debug] vconf_hbbtv_status_cb")"
launched "nothing is launched" 0

echo "booted on a channel that does not boost"
tv tune "$plain"
logged "the tune is seen" "[Info] non boosting hbbTV App"
forget_log
tv power-cycle
equal "the TV boots on a virtual channel" vc-service "$(tv key get -r db/boot/last_service)"
decided "no flag, no boosting channel" 0 0
logged "the app was asked" "[Info] ch.app.boosting value is "
launched "nothing is launched" 0
absent "no ready file" "$READY"

echo "booted on a boosting channel, with the flag"
tv tune "$boosting"
becomes "the tune makes the flag" there "$FLAG"
forget_log
tv power-cycle
there "the flag outlives the power cycle" "$FLAG"
decided "flag and boosting channel" 1 1
for value in 2 7 14 -1 0 5 8 11; do status "$value"; done
launched "no other status launches anything" 0
absent "nor makes the ready file" "$READY"
status 6
first_screens "the status 6 launches the first screen" 1
there "the ready file is made" "$READY"
equal "it is empty" 0 "$(wc -c <"$READY")"
there "the flag stays" "$FLAG"
equal "the files came before the launch, and then nobody listens" \
"app_control_create
app_control_set_app_id
app_control_set_operation
app_control_send_launch_request
app_control_destroy
vconf_ignore_key_changed" \
  "$(calls '^(app_control_|vconf_ignore)' | sed 's/(.*//')"
tv key set memory/hbbtv_status 10
keys_seen
launched "the status 10 launches it no more" 1

echo "a restart of the daemon alone"
tv tune "$boosting"
becomes "the tune makes the flag again" there "$FLAG"
forget_log
tv daemon restart
there "the flag outlives it" "$FLAG"
there "the ready file as well" "$READY"
decided "flag and boosting channel" 1 1
status 10
first_screens "the status 10 launches the first screen, once in each run" 2

echo "power-off takes the ready file"
forget_log
tv power-cycle
absent "it is gone" "$READY"
there "the flag is not" "$FLAG"
decided "flag and boosting channel" 1 1

echo "booted on a boosting channel, without the flag"
tv signal 2560
becomes "the signal takes the flag" gone "$FLAG"
forget_log
tv power-cycle
decided "no flag, boosting channel" 0 1
becomes "the decision makes it" there "$FLAG"
equal "it is empty" 0 "$(wc -c <"$FLAG")"
absent "nothing half-made is left" "${FLAG}_dummy"
launched "the first screen waits for the status" 0
status 6
first_screens "and comes with it" 3

echo "booted on another channel, with the flag"
forget_log
tv key set db/boot/last_service tv-service
tv daemon restart
decided "flag, no boosting channel" 1 0
logged "it was no virtual one" "[Info] Not Virtual ch."
first_screens "the first screen is released" 4
absent "the flag is gone" "$FLAG"
there "the ready file is there" "$READY"
launched "once" 1
tv key set memory/hbbtv_status 6
logged "a status comes too late" "[Debug] first screen already run"
launched "still once" 1

echo "the key of the last service is not there"
tv tune "$boosting"
becomes "the tune makes the flag" there "$FLAG"
tv key unset db/boot/last_service
rm "$READY"
forget_log
tv daemon restart
logged "it cannot be read" "[Info] key : db/boot/last_service is not valid"
decided "flag, no boosting channel" 1 0
first_screens "the first screen is released" 5
there "with the ready file" "$READY"

echo "the app of the channel is gone"
tv key set db/boot/last_service vc-service
tv tune "$boosting"
becomes "the tune makes the flag" there "$FLAG"
tv pkg uninstall boostapp01
reached "its channel is gone" '.channels | length == 1'
forget_log
tv power-cycle
logged "there is no current service" "[ERROR] GetCurrentServiceInfo() failed"
decided "flag, no boosting channel" 1 0
first_screens "the first screen is released" 6
becomes "the flag goes" gone "$FLAG"

echo "the first-screen app cannot be launched"
tv pkg install "$work/boosting.wgt"
reached "its channel is back" '.channels | length == 2'
tv tune "$(service_of boostapp01)"
becomes "the tune makes the flag" there "$FLAG"
tv fail app_control_send_launch_request 0xFEF00023 --times 1
tv key set db/boot/last_service vc-service
forget_log
tv daemon restart
decided "flag and boosting channel" 1 1
status 6
launched "it was tried" 1
tv key set memory/hbbtv_status 10
keys_seen
launched "and is not tried again" 1
first_screens "it did not come" 6
the_end
