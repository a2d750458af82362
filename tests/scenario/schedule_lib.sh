# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Sourced after lib.sh by the scenarios of service apps on a schedule.

PORT=orv_scheduler_command_port
SET_TIME=orv_scheduler_command=command_set_expiration_time
COMPLETE=orv_scheduler_command=command_complete_operation
REFUSED=orv_scheduler_result=result_fail_invalid_parameters
ACCEPTED=orv_scheduler_result=result_success

# service_wgt FILE PACKAGE SCRIPT [VERSION]: packs a service app, PACKAGE.Feed, that runs the script.
service_wgt() {
  rm -rf "$work/service"; mkdir -p "$work/service/bin"
  printf '#!/bin/sh\n%s\n' "$3" >"$work/service/bin/feed"
  chmod +x "$work/service/bin/feed"
  make_wgt "$1" "$2" "${4:-1.0.0}" \
    "<tizen:service id=\"$2.Feed\"><tizen:content src=\"bin/feed\"/></tizen:service>$(metadata orv_type ch_feeder_custom standard)" \
    "$work/service"
}

# due PACKAGE: the due time in the store, as text.
due() { tv store --json | jq -r --arg p "$1" '.[] | select(.package_id == $p) | .variables.orv_data.expiration_date_str // ""'; }
# is_running PACKAGE: a jq condition.
is_running() { printf '(.apps | any(.id == "%s.Feed" and .running))' "$1"; }
# main_loop_texts: like log_texts, but only of the main loop's thread.
main_loop_texts() {
  awk '$3 == $4' "$TV_ROOT/log/daemon.log" | sed -E 's/^.* [A-Z]\/orv-enabler: [^ ]+: [^ ]+\([0-9]+\) > //'
}
