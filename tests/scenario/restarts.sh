#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Every kind of restart: each app is loaded from its row and runs twice, as a known app.
. "$(dirname "$0")/lib.sh"

tv up
web_feeder "$work/a.wgt" feedera001
web_feeder "$work/b.wgt" feederb001
tv pkg install "$work/a.wgt"
tv pkg install "$work/b.wgt"
reached "both are stored and have channels" '(.store | length == 2) and (.channels | length == 2)'
before=$(tv store --json)

back() { # WHAT
  reached "$1: the daemon is up" '.daemon.running'
  equal "$1: each row is loaded, in order" \
"feedera001
feederb001" "$(log_texts | sed -n 's/^\[Info\] Target PackageID : //p')"
  equal "$1: each app runs in two complete passes" \
"http://example.org/feedera001/channels.json
http://example.org/feedera001/schedule.json
http://example.org/feederb001/channels.json
http://example.org/feederb001/schedule.json
http://example.org/feedera001/channels.json
http://example.org/feedera001/schedule.json
http://example.org/feederb001/channels.json
http://example.org/feederb001/schedule.json" \
"$(log_texts | sed -n 's/^\[Info\] sInputMetaDataURL //p')"
  equal "$1: the framework is not called again" "" "$(calls '^FCOrvAppInfoAPI')"
  equal "$1: the store is unchanged" "$before" "$(tv store --json)"
}

forget_log; tv daemon restart; back "restart"
forget_log; old=$(tv status --json | jq .daemon.pid); tv daemon kill
reached "kill: the daemon is restarted" ".daemon.running and .daemon.pid != $old and .daemon.state == \"ready\""
back "kill"
forget_log; tv power-cycle; back "power-cycle"
forget_log; tv daemon stop
holds "stop: it stays down" '.daemon.running | not'
tv daemon start; back "stop and start"

echo "killed during an install"
for moment in 1 2 3 4 5 6 7 8; do
  web_feeder "$work/k.wgt" "killed00$moment"
  tv pkg install "$work/k.wgt" & installing=$!
  tv daemon kill >/dev/null 2>&1 || true
  wait "$installing"
  reached "$moment: the daemon is back" '.daemon.running and .daemon.state == "ready"'
  holds "$moment: the store is readable" '.store | length >= 2'
done
tv daemon restart
holds "no row is incomplete" '.store | all(.package_id != "" and (.variables | type == "object"))'
the_end
