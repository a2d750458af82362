#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# A daemon that does not reach its main loop: commands that wait for it fail at their timeout, and none
# reports success.
. "$(dirname "$0")/lib.sh"

# Wraps the daemon and does what the file in the TV's /opt/share says: hang, die, or start the daemon.
# In the sandbox the built programs are in /run/tv-tools.
mkdir -p "$work/front"
cat >"$work/front/daemon" <<'SH'
#!/bin/sh
case $(cat /opt/share/mood 2>/dev/null) in
  hang) exec sleep 86400 ;;
  die) echo "no mood for it" >&2; exit 3 ;;
esac
exec /run/tv-tools/orv-enabler
SH
chmod +x "$work/front/daemon"
ORV_ENABLER=$work/front/daemon
export ORV_ENABLER
mood() { echo "$1" >"$TV_ROOT/opt/share/mood"; }
# late COMMAND...: exits with 5 and one line that gives the reason.
late() {
  exits "$*" 5 "$@"
  grep -q 'the daemon is not in its main loop after 0.5 s' "$work/err" || { cat "$work/err"; die "$*: the error does not give the reason"; }
  equal "$*: success is not reported" "" "$(cat "$work/out")"
}

# Creates the TV's directory.
tv up; tv down

echo "the daemon dies"
mood die
exits "up" 1 tv up
equal "up: the error names the reason" \
  "tv: the TV did not start: the daemon ended before its main loop ran (exit status 3), its last output: no mood for it; see \`tv log\`" "$(cat "$work/err")"
exits "up: no TV is left" 3 tv status

echo "the daemon hangs"
mood hang
late tv up --timeout 0.5
holds "the TV keeps running" '.daemon.state == "starting"'
late tv up --timeout 0.5
late tv daemon start --timeout 0.5
tv down
mood well
tv up
mood hang
late tv daemon restart --timeout 0.5
late tv up --timeout 0.5
late tv power-cycle --timeout 0.5
late tv daemon start --timeout 0.5
mood well
exits "restart waits for a daemon that is ready in time" 0 tv daemon restart
holds "the daemon is ready" '.daemon.state == "ready"'
equal "up says that the TV is already up" "already up: $TV_ROOT, pid $(tv status --json | jq .pid)" "$(tv up)"

echo "the daemon keeps dying, then starts"
mood die
kill -SEGV "$(tv status --json | jq .daemon.pid)"
reached "the daemon waits for its next start" '.daemon.state == "restarting" and .daemon.restarts > 0'
late tv up --timeout 0.5
holds "the daemon is not ready meanwhile" '.daemon.state != "ready"'
mood well
tv up
holds "up waits for that start" '.daemon.state == "ready"'

echo "a TV that has failed and ends slowly"
mkdir "$work/beside"; cp "$ORV_BIN/tv" "$work/beside/tv"
cat >"$work/beside/desk-tv" <<'SH'
#!/bin/sh
while [ $# -gt 0 ]; do case $1 in --root) root=$2 ;; --ready-fd) fd=$2 ;; esac; shift; done
mkdir -p "$root/run"; echo $$ >"$root/run/desk-tv.pid"
eval "echo 'failed: no luck' >&$fd; exec $fd>&-"
exec sleep 60
SH
chmod +x "$work/beside/desk-tv"
exits "up does not mistake it for another user's TV" 1 "$work/beside/tv" --root "$work/failed" up --timeout 10
equal "the error names its reason" "tv: the TV did not start: no luck" "$(cat "$work/err")"
kill "$(cat "$work/failed/run/desk-tv.pid")"
the_end
