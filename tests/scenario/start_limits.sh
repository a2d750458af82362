#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# A daemon that does not get into its main loop: whoever waits for it is told so in time, and nobody is
# told that all is well.
. "$(dirname "$0")/lib.sh"

# Stands in front of the daemon, and does what the file in the TV's /opt/share says: hang, die, or
# nothing. In the sandbox the built programs are in /run/tv-tools.
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
# late COMMAND...: ends with 5 and one line, which says why.
late() {
  exits "$*" 5 "$@"
  grep -q 'the daemon is not in its main loop after 0.5 s' "$work/err" || { cat "$work/err"; die "$*: the line"; }
  equal "$*: nothing is claimed" "" "$(cat "$work/out")"
}

# Only a TV makes its directory.
tv up; tv down

echo "it dies"
mood die
exits "up" 1 tv up
equal "up: the reason is told" \
  "tv: the TV did not start: the daemon ended before its main loop ran (exit status 3), its last output: no mood for it; see \`tv log\`" "$(cat "$work/err")"
exits "up: no TV is left" 3 tv status

echo "it hangs"
mood hang
late tv up --timeout 0.5
holds "the TV goes on" '.daemon.state == "starting"'
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
exits "one that comes in time is waited for" 0 tv daemon restart
holds "it is there" '.daemon.state == "ready"'
equal "and up says so" "already up: $TV_ROOT, pid $(tv status --json | jq .pid)" "$(tv up)"

echo "it keeps dying, and then comes"
mood die
kill -SEGV "$(tv status --json | jq .daemon.pid)"
reached "it waits for its next start" '.daemon.state == "restarting" and .daemon.restarts > 0'
late tv up --timeout 0.5
holds "all the time" '.daemon.state != "ready"'
mood well
tv up
holds "up waited for that start" '.daemon.state == "ready"'

echo "a TV that has failed, and takes its time to end"
mkdir "$work/beside"; cp "$ORV_BIN/tv" "$work/beside/tv"
cat >"$work/beside/desk-tv" <<'SH'
#!/bin/sh
while [ $# -gt 0 ]; do case $1 in --root) root=$2 ;; --ready-fd) fd=$2 ;; esac; shift; done
mkdir -p "$root/run"; echo $$ >"$root/run/desk-tv.pid"
eval "echo 'failed: no luck' >&$fd; exec $fd>&-"
exec sleep 60
SH
chmod +x "$work/beside/desk-tv"
exits "up does not take it for another's" 1 "$work/beside/tv" --root "$work/failed" up --timeout 10
equal "its reason is told" "tv: the TV did not start: no luck" "$(cat "$work/err")"
kill "$(cat "$work/failed/run/desk-tv.pid")"
the_end
