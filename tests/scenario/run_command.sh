#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# `./run` with built programs: repeatedly on one TV, with --once in a directory of its own, and never
# in a directory that is not a TV's.
. "$(dirname "$0")/lib.sh"

run=$(cd "$(dirname "$0")/../.." && pwd)/run
built=$(dirname "$ORV_BIN")
mkdir "$work/caller" "$work/tmp"
cd "$work/caller"
pid_of() { tv status --json | jq "$1"; }
# try WHAT ARGUMENT...: run succeeds.
try() {
  what=$1; shift
  "$run" --built "$built" "$@" >"$work/out" 2>&1 || { code=$?; cat "$work/out"; die "$what: exit $code"; }
  passed "$what"
}
# One of the samples contains an image.
tv up
can_mount || { echo "nothing can be mounted here: skipped"; exit 77; }
tv down
rm -rf "$TV_ROOT"

SHOWN='[.packages[].id] == ["bannerapp1","brokenmeta","feederpack","feederwebs","guidedeflt","ordinary01","servfeeder"]'

try "a new TV in a relative directory" --root ../tv
holds "the samples are on it" "$SHOWN"
equal "each channel-bound package has its row" "bannerapp1 feederpack feederwebs guidedeflt servfeeder" \
  "$(tv store --json | jq -r 'map(.package_id) | join(" ")')"

television=$(pid_of .pid) daemon=$(pid_of .daemon.pid)
try "a second run while the TV is up" --root ../tv
holds "the samples are on it again" "$SHOWN"
equal "the TV is the same process" "$television" "$(pid_of .pid)"
[ "$(pid_of .daemon.pid)" != "$daemon" ] || die "the daemon is still the old one"
passed "the daemon was restarted"

tv down
mkdir -p "$work/other/bin" && cp "$ORV_BIN/desk-tv" "$ORV_BIN/orv-enabler" "$ORV_BIN/desk-webapp" "$ORV_BIN/tv" "$work/other/bin/"
PATH=$work/other/bin:$PATH tv up
television=$(pid_of .pid)
try "a run while a TV of another build is up" --root ../tv
equal "the TV is now of this build" "$(realpath "$ORV_BIN/desk-tv")" "$(readlink "/proc/$(pid_of .pid)/exe")"

television=$(pid_of .pid) daemon=$(pid_of .daemon.pid)
try_once() { TMPDIR=$work/tmp "$run" --built "$built" --once "$@"; }
exits "--once does not touch a running TV, not even the one in TV_ROOT" 0 try_once
equal "the running TV is unchanged" "$television $daemon" "$(pid_of .pid) $(pid_of .daemon.pid)"
grep -q "^== a TV at $work/tmp/" "$work/out" || die "--once did not use a directory of its own"
equal "--once deletes its own directory" "" "$(ls -A "$work/tmp")"
exits "--once without samples" 4 env "TMPDIR=$work/tmp" "$run" --built "$work/other" --once
equal "--once leaves nothing behind" "" "$(ls -A "$work/tmp")$(pgrep -f -- "$work/tmp/" || true)"
exits "--once with the directory of a running TV" 1 try_once --root ../tv
equal "the running TV is unchanged" "$television $daemon" "$(pid_of .pid) $(pid_of .daemon.pid)"
exits "--once in a given directory" 0 try_once --root named
there "--once keeps the given directory" "$work/caller/named/log/daemon.log"
exits "--once stops the TV in the given directory" 3 tv --root named status
exits "--once in the same directory again" 0 try_once --root named

mkdir full && echo mine >full/file
exits "a directory with other files" 1 "$run" --built "$built" --root full
exits "a directory with other files, --once" 1 try_once --root full
equal "its files are unchanged" "file" "$(ls -A full)"
exits "a directory with other files in TV_ROOT" 1 env TV_ROOT=full "$run" --built "$built"
exits "a file as the directory" 1 "$run" --built "$built" --root full/file

checkout=$(dirname "$run")
exits "a read-only checkout" 1 \
  bwrap --dev-bind / / --ro-bind "$checkout" "$checkout" -- "$run" --root new
grep -q "Read-only file system.*--built" "$work/err" || { cat "$work/err"; die "the error lacks the reason or the remedy"; }
passed "the error names the reason and the remedy"
the_end
