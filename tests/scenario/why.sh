#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Why an app was not launched or fed, what the schedule waits for, and what the daemon is busy with.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/schedule_lib.sh"
. "$(dirname "$0")/custom_ui.sh"

SET=memory/menu/network/set_time
FEED=whyfeed001.Feed
verdict() { tv why "$1" --json | jq -r '.verdicts[].text'; }
says() { verdict "$1" | grep -q "$2"; }
# has_verdict WHAT ID PATTERN: waits until a verdict matches.
has_verdict() {
  comes_true "$1: \"$3\", not \"$(verdict "$2")\"" says "$2" "$3"
  passed "$1"
}
waits_for() { tv schedule --json | jq -r .waits_for; }

echo "a service app before network time"
tv up --offline
service_wgt "$work/feed.wgt" whyfeed001 'echo starting; echo cannot reach the feed; exit 1'
tv pkg install "$work/feed.wgt"
reached "the daemon has stored the app" "$(stored whyfeed001)"
equal "tv why names the key" "not launched: the TV has no network time ($SET is not 1)" "$(verdict whyfeed001)"
equal "tv schedule names the key" "network time: $SET is not 1" "$(waits_for)"
equal "tv app status prints its status" "not running" "$(tv app status $FEED)"
exits "an unknown id" 4 tv why whynothing

echo "an app that fails"
tv key set $SET 1
has_verdict "the verdict has the exit status and the last output" whyfeed001 \
  '^launched, ended with exit status 1: starting | cannot reach the feed'
tv why $FEED -n 0 >"$work/why"
grep -v '^verdict' "$work/why" | cut -d' ' -f1 >"$work/times"
sort -r -c "$work/times" || die "the entries are not newest first"
passed "the entries are newest first"
equal "the entries are from every source" "call daemon desk-tv output" \
  "$(grep -v '^verdict' "$work/why" | awk '{ print $2 }' | sort -u | paste -s -d' ')"
equal "tv schedule shows the exit status" "exit status 1" "$(tv schedule --json | jq -r '.apps[0].end')"
waits_for | grep -q '^the next tick, in 1[12] minutes$' || die "the schedule waits for $(waits_for)"
passed "the schedule waits for the next tick"

echo "an app that is not due"
tv port send $PORT --from $FEED --reply-port answers $SET_TIME expiration_time=2525 >/dev/null
has_verdict "the due time is part of the verdict" $FEED '; expiration_date_str is in 4[12] minutes$'
tv schedule | grep -Eq "^$FEED +in 4[12] minutes +20.* +exit status 1\$" || die "the schedule: $(tv schedule)"
passed "the schedule shows the due time and the exit status"

echo "a feeder without its data"
make_wgt "$work/nodata.wgt" whynodata1 1.0.0 "$(metadata orv_type ch_feeder_standard standard
  metadata orv_data channel_data_url file://channel.json
  metadata orv_data schedule_data_url file://schedule.json)"
tv pkg install "$work/nodata.wgt"
has_verdict "the verdict names the missing image" whynodata1 '^not fed: the package has no image whynodata1.App.tmg$'

echo "journal and wait"
tv journal --since 1h --call 'app_control_*' --thread ORVScheduler >"$work/journal"
grep -q "app_control_set_app_id(.*\"$FEED\")" "$work/journal" || die "the journal lacks the launch"
passed "the journal finds the calls of a thread"
equal "the journal prints no other calls" "" "$(grep -v app_control_ "$work/journal" || true)"
equal "the journal has no entries since tomorrow" "" "$(tv journal --since "$(date -u -d tomorrow +%Y-%m-%dT%H:%M:%SZ)")"
exits "a misspelt member is refused at once" 2 tv wait .chanels
grep -q 'no member chanels (did you mean channels?)' "$work/err" || die "the error: $(cat "$work/err")"

echo "an app that the daemon waits for"
tv pkg install "$ORV_SAMPLES/replacement-ui.wgt"
mkdir -p "$TV_ROOT/opt/share/orv_ch"
cp "$APPS/replaceui1/res/wgt/replacement_ui_info.json" "$TV_ROOT/opt/share/orv_ch/"
tv pkg install "$ORV_SAMPLES/guide-background.wgt"
is_busy() { tv status | grep -Eq '^busy     waiting for guidebackg.Guide to load, [0-9]+ of 20 s$'; }
comes_true "the status shows the wait" is_busy
passed "the status shows the wait"
tv app status guidebackg.Guide resume
reached "the app takes over" '.operations | all(.app == "guidebackg.Guide")'
equal "the wait is over" "[]" "$(tv status --json | jq -c .busy)"
tv down

echo "a clean run"
rm -rf "$TV_ROOT"
tv up
for sample in feeder-web feeder-packaged service-feeder banner guide-default ordinary; do
  tv pkg install "$ORV_SAMPLES/$sample.wgt" >/dev/null
done
reached "all channel-bound apps are known" '.store | length == 5'
tv pkg uninstall ordinary01 >/dev/null
logged "the last event is handled" "[Info] packageID : ordinary01"
tv daemon restart
errors_not_in_the_manual() {
  tv log -l E --json | jq -r '.text | sub("^.* > "; "")' | sort -u | while IFS= read -r text; do
    grep -qF -- "$text" "$(dirname "$0")/../../docs/tv.md" || echo "$text"
  done
}
equal "the manual explains each error line of the run" "" "$(errors_not_in_the_manual)"
[ -n "$(tv log -l E)" ] || die "the run logged no error line"
passed "the run logged error lines"
tv down

echo "one clock on a faster TV"
tv up --speed 100
service_wgt "$work/fast.wgt" whyfast001 'exit 0'
tv pkg install "$work/fast.wgt"
has_verdict "the app ran" whyfast001 '^launched, ended with exit status 0'
apart=$(tv why whyfast001.Feed -n 0 --json | jq '
  def at: (.[:19] + "Z") | fromdate;
  ([.account[] | select(.text | test("^app_control_send_launch_request")).time] | last | at) as $asked
  | ([.account[] | select(.text | test(" launched: ")).time] | last | at) - $asked')
echo "  request and launch are $apart s apart"
[ "$apart" -ge -1 ] && [ "$apart" -lt $((600 * slow)) ] || die "request and launch are $apart s apart"
passed "the daemon's calls and desk-tv's lines use the same clock"
the_end
