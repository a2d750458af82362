#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# `./run`, with programs that are built: over and over on one TV, once and for all in a directory of
# its own, and never over what is not a TV.
. "$(dirname "$0")/lib.sh"

run=$(cd "$(dirname "$0")/../.." && pwd)/run
built=$(dirname "$ORV_BIN")
mkdir "$work/caller" "$work/tmp"
cd "$work/caller"
pid_of() { tv status --json | jq "$1"; }
# try WHAT ARGUMENT...: run ends well.
try() {
  what=$1; shift
  "$run" --built "$built" "$@" >"$work/out" 2>&1 || { code=$?; cat "$work/out"; die "$what: exit $code"; }
  passed "$what"
}
# One of the samples brings an image.
tv up
tv status --json | jq -e '.mounts | test("^none") | not' >/dev/null || { echo "nothing can be mounted here: skipped"; exit 77; }
tv down
rm -rf "$TV_ROOT"

SHOWN='[.packages[].id] == ["bannerapp1","brokenmeta","feederpack","feederwebs","guidedeflt","ordinary01","servfeeder"]'

try "a new TV, its directory named from where one stands" --root ../tv
holds "the samples are on it" "$SHOWN"
equal "each channel-bound one has its row" "bannerapp1 feederpack feederwebs guidedeflt servfeeder" \
  "$(tv store --json | jq -r 'map(.package_id) | join(" ")')"

television=$(pid_of .pid) daemon=$(pid_of .daemon.pid)
try "a second time, with the TV up" --root ../tv
holds "the samples are on it again" "$SHOWN"
equal "in the same TV" "$television" "$(pid_of .pid)"
[ "$(pid_of .daemon.pid)" != "$daemon" ] || die "the daemon is still the old one"
passed "with a daemon that was started anew"

tv down
mkdir -p "$work/other/bin" && cp "$ORV_BIN/desk-tv" "$ORV_BIN/orv-enabler" "$ORV_BIN/desk-webapp" "$ORV_BIN/tv" "$work/other/bin/"
PATH=$work/other/bin:$PATH tv up
television=$(pid_of .pid)
try "with a TV of another build up" --root ../tv
equal "it is this build's now" "$(realpath "$ORV_BIN/desk-tv")" "$(readlink "/proc/$(pid_of .pid)/exe")"

television=$(pid_of .pid) daemon=$(pid_of .daemon.pid)
try_once() { TMPDIR=$work/tmp "$run" --built "$built" --once "$@"; }
exits "--once leaves alone a TV that is up, also the one in TV_ROOT" 0 try_once
equal "it is up as before" "$television $daemon" "$(pid_of .pid) $(pid_of .daemon.pid)"
grep -q "^== a TV at $work/tmp/" "$work/out" || die "--once had no directory of its own"
equal "and nothing is left of its own" "" "$(ls -A "$work/tmp")"
exits "--once that finds no samples" 4 env "TMPDIR=$work/tmp" "$run" --built "$work/other" --once
equal "leaves nothing behind" "" "$(ls -A "$work/tmp")$(pgrep -f -- "$work/tmp/" || true)"
exits "--once and a TV that is up" 1 try_once --root ../tv
equal "it is up all the same" "$television $daemon" "$(pid_of .pid) $(pid_of .daemon.pid)"
exits "--once in a directory that is named" 0 try_once --root named
there "keeps it" "$work/caller/named/log/daemon.log"
exits "takes the TV in it down" 3 tv --root named status
exits "and takes it once more" 0 try_once --root named

mkdir full && echo mine >full/file
exits "a directory that holds something else" 1 "$run" --built "$built" --root full
exits "the same once" 1 try_once --root full
equal "nothing was added to it or taken away" "file" "$(ls -A full)"
exits "the same in TV_ROOT" 1 env TV_ROOT=full "$run" --built "$built"
exits "a file" 1 "$run" --built "$built" --root full/file

checkout=$(dirname "$run")
exits "a checkout that is read-only" 1 \
  bwrap --dev-bind / / --ro-bind "$checkout" "$checkout" -- "$run" --root new
grep -q "Read-only file system.*--built" "$work/err" || { cat "$work/err"; die "the reason or the remedy is missing"; }
passed "is named with the reason and the remedy"
the_end
