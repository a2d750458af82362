# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Sourced after lib.sh by the channel boost scenarios: two feeders, one of which boosts, and the
# first-screen app, which records each of its launches.
FLAG=$OWN/data/hbb_boost
READY=$TV_ROOT/tmp/hbb_ready
FIRST_SCREEN=com.kalmora.tv.csfs

# boost_tv [OPTIONS]
boost_tv() {
  tv up "$@"
  make_wgt "$work/boosting.wgt" boostapp01 1.0.0 "$(metadata orv_type ch_feeder_standard standard
    metadata orv_data channel_data_url http://a/c; metadata orv_data schedule_data_url http://a/s
    metadata orv_data ch.app.boosting true)"
  make_wgt "$work/plain.wgt" plainapp01 1.0.0 "$(metadata orv_type ch_feeder_standard standard
    metadata orv_data channel_data_url http://a/c; metadata orv_data schedule_data_url http://a/s)"
  printf '#!/bin/sh\necho launched >>"%s/first-screen"\n' "$work" >"$work/first-screen-app"
  chmod +x "$work/first-screen-app"
  : >"$work/first-screen"
  tv app add "$FIRST_SCREEN" "$work/first-screen-app"
  tv pkg install "$work/boosting.wgt"
  tv pkg install "$work/plain.wgt"
  reached "both feeders have their channels" '.channels | length == 2'
  boosting=$(service_of boostapp01)
  plain=$(service_of plainapp01)
}
service_of() { tv channel list --json | jq --arg p "$1" '.[] | select(.pkg_id == $p).service_id'; }
# Polls the file: the daemon writes it on a thread that offers nothing to wait for.
becomes() { # WHAT there|gone FILE
  becomes_deadline=$(($(date +%s) + 30 * slow))
  until if [ "$2" = there ]; then [ -e "$3" ]; else [ ! -e "$3" ]; fi; do
    [ "$(date +%s)" -lt "$becomes_deadline" ] || die "$1: $3 is not $2"
    pause
  done
  passed "$1"
}
# keys_seen: returns when the daemon has handled all keys set so far; it handles key changes in order.
keys_seen() {
  keys_before=$(count_log "VCONFKEY_TELLAHUB_RESET value 1")
  tv key set db/tellahub/reset/apps 1
  logged "all keys are handled" "VCONFKEY_TELLAHUB_RESET value 1" $((keys_before + 1))
}
# launched WHAT TIMES: how often the daemon has tried to launch the first screen since forget_log.
launched() {
  equal "$1" "$2" "$(calls '^app_control_set_app_id$' | grep -c "$FIRST_SCREEN" || true)"
}
# first_screens WHAT TIMES: how often the first screen has been launched in total.
first_screens() {
  first_deadline=$(($(date +%s) + 30 * slow))
  until [ "$(grep -c . "$work/first-screen" || true)" -ge "$2" ]; do
    [ "$(date +%s)" -lt "$first_deadline" ] || die "$1: the first screen was launched $(grep -c . "$work/first-screen" || true) times"
    pause
  done
  equal "$1" "$2" "$(grep -c . "$work/first-screen" || true)"
}
# decided WHAT FILE CHANNEL: the decision a second after the start.
decided() { logged "$1" "[Info] isBoostFile : $2, isBoostChApp : $3"; }
# status VALUE: sets the HbbTV status and waits until the daemon has handled it.
status() {
  status_before=$(count_log "[Debug] VCONFKEY_HBBTV_CHANGED value $1")
  tv key set memory/hbbtv_status "$1"
  logged "status $1 is handled" "[Debug] VCONFKEY_HBBTV_CHANGED value $1" $((status_before + 1))
}
