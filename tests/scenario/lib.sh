# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Sourced by every scenario. A scenario uses only `tv` and real packages: it sees of the daemon what a
# user can see. ORV_BIN is the directory of the built programs, ORV_SAMPLES that of the packed
# samples.
set -eu

: "${ORV_BIN:?the directory of the built programs}"
: "${ORV_SAMPLES:?the directory of the packed samples}"
PATH=$ORV_BIN:$PATH
work=$(mktemp -d "${TMPDIR:-/var/tmp}/tv-scenario.XXXXXX")
TV_ROOT=$work/tv
export PATH TV_ROOT

APPS=$TV_ROOT/opt/usr/apps
OWN=$APPS/com.kalmora.tv.orv-enabler
STORE=$OWN/data/appinfo.db
HBBTV=$OWN/shared/data/hbbtv_app
METADATA=$OWN/shared/data/metadata
PREFIX=http://kalmora.com/tv/metadata/
# How many times slower than usual the programs are, for example with a sanitizer.
slow=${ORV_SLOW:-1}
checks=0
scenario_ended=

finish() {
  code=$?
  if [ -z "$scenario_ended" ] && [ "$code" != 77 ]; then
    echo "--- the daemon's log, last lines"; tail -n 30 "$TV_ROOT/log/daemon.log" 2>/dev/null || true
    echo "--- desk-tv, last lines"; tail -n 10 "$TV_ROOT/log/desk-tv.log" 2>/dev/null || true
  fi
  tv down >/dev/null 2>&1 || true
  [ -n "${KEEP:-}" ] || rm -rf "$work"
  exit "$code"
}
trap finish EXIT
trap 'exit 1' INT TERM

die() { echo "FAILED: $*"; exit 1; }
passed() { checks=$((checks + 1)); echo "  ok $1"; }
# The last line of every scenario.
the_end() { scenario_ended=yes; echo "$checks checks passed"; [ "$checks" -gt 0 ]; }

# reached WHAT JQ [SECONDS]: waits until the expression is true for the TV's dump.
reached() {
  tv wait "$2" --timeout "$((${3:-30} * slow))" >"$work/wait" 2>&1 || { cat "$work/wait"; die "$1"; }
  passed "$1"
}
# holds WHAT JQ: the expression is true for the dump now.
holds() {
  tv dump --json >"$work/dump.json"
  jq -e "$2" "$work/dump.json" >/dev/null || { echo "not true: $2"; die "$1"; }
  passed "$1"
}
# equal WHAT EXPECTED ACTUAL
equal() {
  [ "$2" = "$3" ] || { printf 'expected: %s\nactual:   %s\n' "$2" "$3"; die "$1"; }
  passed "$1"
}
# exits WHAT CODE COMMAND...: the command exits with the code; a failure prints one line on stderr.
exits() {
  what=$1; wanted=$2; shift 2
  code=0; "$@" >"$work/out" 2>"$work/err" || code=$?
  [ "$code" = "$wanted" ] || { cat "$work/out" "$work/err"; die "$what: exit $code instead of $wanted"; }
  if [ "$wanted" != 0 ]; then
    [ "$(grep -c . "$work/err")" = 1 ] || { cat "$work/err"; die "$what: standard error does not have exactly one line"; }
  fi
  passed "$what"
}
there() { [ -e "$2" ] || die "$1: $2 is missing"; passed "$1"; }
absent() { [ ! -e "$2" ] || die "$1: $2 is there"; passed "$1"; }

# count_log TEXT: lines of the daemon's log that hold the text.
count_log() { grep -cF -- "$1" "$TV_ROOT/log/daemon.log" || true; }
# logged WHAT TEXT [TIMES]: waits until the log holds the text at least TIMES times.
logged() {
  deadline=$(($(date +%s) + 30 * slow))
  until [ "$(count_log "$2")" -ge "${3:-1}" ]; do
    [ "$(date +%s)" -lt "$deadline" ] || die "$1: the log has \"$2\" $(count_log "$2") times, not ${3:-1}"
    pause
  done
  passed "$1"
}
# comes_true WHAT COMMAND...: waits until the command succeeds.
comes_true() {
  what=$1; shift
  deadline=$(($(date +%s) + 30 * slow))
  until "$@"; do
    [ "$(date +%s)" -lt "$deadline" ] || die "timeout while waiting for: $what"
    pause
  done
}
# The pause between two polls; no check relies on its length.
pause() { sleep 0.05; }
silent() { [ "$(count_log "$2")" = 0 ] || die "$1: the log has \"$2\""; passed "$1"; }
# log_texts: the texts of the log without time, process, path, function and line.
log_texts() { sed -E 's/^.* [A-Z]\/orv-enabler: [^ ]+: [^ ]+\([0-9]+\) > //' "$TV_ROOT/log/daemon.log"; }
# forget_log: later checks of log and journal see only what follows.
forget_log() { : >"$TV_ROOT/log/daemon.log"; journal_from=$(journal_seq); }
journal_seq() { tv journal --json | jq -s 'map(.seq) | max // 0'; }
journal_from=0
# calls [PATTERN]: the platform calls since forget_log, one per line: name, arguments and result.
calls() {
  tv journal --json | jq -r --argjson from "$journal_from" --arg pattern "${1:-.}" \
    'select(.seq > $from and (.call | test($pattern))) | .call + "(" + ([.args[] | tostring | gsub("\n"; "\\n")] | join(", ")) + ") = " + (.result | tostring)'
}

# metadata KIND NAME VALUE: one entry of a config.xml.
metadata() { printf '<tizen:metadata key="%s%s/%s" value="%s"/>\n' "$PREFIX" "$1" "$2" "$3"; }
# make_wgt FILE PACKAGE VERSION ENTRIES [DIRECTORY]: packs a UI app with the entries and the files of
# the directory.
make_wgt() {
  rm -rf "$work/pack"; mkdir -p "$work/pack"
  [ -z "${5:-}" ] || cp -a "$5/." "$work/pack/"
  cat >"$work/pack/config.xml" <<XML
<?xml version="1.0" encoding="UTF-8"?>
<widget xmlns="http://www.w3.org/ns/widgets" xmlns:tizen="http://tizen.org/ns/widgets" id="http://example.org/$2" version="$3">
  <tizen:application id="$2.App" package="$2" required_version="4.0"/>
  <content src="index.html"/>
  <name>$2</name>
  $4
</widget>
XML
  [ -e "$work/pack/index.html" ] || echo '<html></html>' >"$work/pack/index.html"
  rm -f "$1"
  (cd "$work/pack" && zip -q -r -X "$1" .)
}
# web_feeder FILE PACKAGE [VERSION]: packs a standard feeder whose data is on the web.
web_feeder() {
  make_wgt "$1" "$2" "${3:-1.0.0}" "$(metadata orv_type ch_feeder_standard standard
    metadata orv_data channel_data_url "http://example.org/$2/channels.json"
    metadata orv_data schedule_data_url "http://example.org/$2/schedule.json")"
}
# can_mount: whether the TV can mount images at all, by loop devices or FUSE.
can_mount() { tv status --json | jq -e '.mounts | test("^none") | not' >/dev/null; }
needs_loop() {
  tv status --json | jq -e '.mounts | test("^loop")' >/dev/null || { echo "no loop devices here: skipped"; exit 77; }
}
stored() { printf '.store | any(.package_id == "%s")' "$1"; }
