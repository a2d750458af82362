#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# The boost decision after a start: with and without the flag, on a boosting channel and on others;
# which files survive which restart; and what launches the first screen, which happens once.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/boost_lib.sh"

boost_tv
echo "no channel"
decided "no flag, no boosting channel" 0 0
logged "the key for the last service is empty" "[Info] Not Virtual ch."
absent "no flag is created" "$FLAG"
absent "no ready file is created" "$READY"
tv key set memory/hbbtv_status 6
logged "the daemon no longer waits for the first screen" "[Debug] first screen already run"
tv key set memory/hbbtv_status 10
keys_seen
equal "the daemon no longer listens to the status" 1 "$(count_log "[Debug] vconf_hbbtv_status_cb")"
launched "nothing is launched" 0

echo "booted on a channel that does not boost"
tv tune "$plain"
logged "the tune is handled" "[Info] non boosting hbbTV App"
forget_log
tv power-cycle
equal "the TV boots on a virtual channel" vc-service "$(tv key get -r db/boot/last_service)"
decided "no flag, no boosting channel" 0 0
logged "the app's setting is read" "[Info] ch.app.boosting value is "
launched "nothing is launched" 0
absent "no ready file" "$READY"

echo "booted on a boosting channel, with the flag"
tv tune "$boosting"
becomes "the tune creates the flag" there "$FLAG"
forget_log
tv power-cycle
there "the flag survives the power cycle" "$FLAG"
decided "flag and boosting channel" 1 1
for value in 2 7 14 -1 0 5 8 11; do status "$value"; done
launched "no other status launches anything" 0
absent "no other status creates the ready file" "$READY"
status 6
first_screens "status 6 launches the first screen" 1
there "the ready file is created" "$READY"
equal "the ready file is empty" 0 "$(wc -c <"$READY")"
there "the flag is kept" "$FLAG"
equal "the launch request is sent once, then the daemon stops listening to the status" \
"app_control_create
app_control_set_app_id
app_control_set_operation
app_control_send_launch_request
app_control_destroy
vconf_ignore_key_changed" \
  "$(calls '^(app_control_|vconf_ignore)' | sed 's/(.*//')"
tv key set memory/hbbtv_status 10
keys_seen
launched "status 10 does not launch it again" 1

echo "a restart of the daemon alone"
tv tune "$boosting"
becomes "the tune creates the flag again" there "$FLAG"
forget_log
tv daemon restart
there "the flag survives the restart" "$FLAG"
there "the ready file survives the restart" "$READY"
decided "flag and boosting channel" 1 1
status 10
first_screens "status 10 launches the first screen, once in each run" 2

echo "power-off deletes the ready file"
forget_log
tv power-cycle
absent "the ready file is deleted" "$READY"
there "the flag is kept" "$FLAG"
decided "flag and boosting channel" 1 1

echo "booted on a boosting channel, without the flag"
tv signal 2560
becomes "the signal deletes the flag" gone "$FLAG"
forget_log
tv power-cycle
decided "no flag, boosting channel" 0 1
becomes "the decision creates the flag" there "$FLAG"
equal "the flag is empty" 0 "$(wc -c <"$FLAG")"
absent "no temporary file is left" "${FLAG}_dummy"
launched "the first screen waits for the status" 0
status 6
first_screens "status 6 launches it" 3

echo "booted on another channel, with the flag"
forget_log
tv key set db/boot/last_service tv-service
tv daemon restart
decided "flag, no boosting channel" 1 0
logged "the last service is not virtual" "[Info] Not Virtual ch."
first_screens "the first screen is released" 4
absent "the flag is deleted" "$FLAG"
there "the ready file is created" "$READY"
launched "it is launched once" 1
tv key set memory/hbbtv_status 6
logged "a later status is ignored" "[Debug] first screen already run"
launched "it is still launched only once" 1

echo "the key for the last service is missing"
tv tune "$boosting"
becomes "the tune creates the flag" there "$FLAG"
tv key unset db/boot/last_service
rm "$READY"
forget_log
tv daemon restart
logged "the key cannot be read" "[Info] key : db/boot/last_service is not valid"
decided "flag, no boosting channel" 1 0
first_screens "the first screen is released" 5
there "the ready file is created" "$READY"

echo "the app of the channel is uninstalled"
tv key set db/boot/last_service vc-service
tv tune "$boosting"
becomes "the tune creates the flag" there "$FLAG"
tv pkg uninstall boostapp01
reached "its channel is removed" '.channels | length == 1'
forget_log
tv power-cycle
logged "there is no current service" "[ERROR] GetCurrentServiceInfo() failed"
decided "flag, no boosting channel" 1 0
first_screens "the first screen is released" 6
becomes "the flag is deleted" gone "$FLAG"

echo "the first-screen app cannot be launched"
tv pkg install "$work/boosting.wgt"
reached "its channel is back" '.channels | length == 2'
tv tune "$(service_of boostapp01)"
becomes "the tune creates the flag" there "$FLAG"
tv fail app_control_send_launch_request 0xFEF00023 --times 1
tv key set db/boot/last_service vc-service
forget_log
tv daemon restart
decided "flag and boosting channel" 1 1
status 6
launched "the launch is tried" 1
tv key set memory/hbbtv_status 10
keys_seen
launched "the launch is not retried" 1
first_screens "the first screen was not started" 6
the_end
