#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# The settings key that announces apps that replace screens of the TV: a value with members of other
# programs, a value that is not JSON, and a missing key.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/custom_ui.sh"

tv up
app=guidedeflt.Guide
banner=bannerapp1.Banner
holds_key() { tv key set -t string -- "$UI_KEY" "$1"; }
announced=$(banner bannerapp1 $banner info,channel default)
with() { # WHAT BEFORE AFTER-INSTALL AFTER-UNINSTALL
  holds_key "$2"; forget_log; install "$ORV_SAMPLES/banner.wgt"
  equal "$1: installed" "$3" "$(ui_key)"
  uninstall bannerapp1
  equal "$1: removed" "$4" "$(ui_key)"
}

echo "members of other programs are kept"
with "an empty key" '' "{$announced}|." '{"CustomBanner":{}}|.'
with "other members, with spaces and a comment" \
  '/* mine */ { "Other" : { "b" : [1, 2.5, "x"], "a" : null }, "CustomApp" : 7 }' \
  "{\"CustomApp\":7,$announced,\"Other\":{\"a\":null,\"b\":[1,2.5,\"x\"]}}|." \
  '{"CustomApp":7,"CustomBanner":{},"Other":{"a":null,"b":[1,2.5,"x"]}}|.'
with "an announcement of another app" '{"CustomBanner":{"app_id":"x","more":1}}' "{$announced}|." '{"CustomBanner":{}}|.'
with "null" 'null' "{$announced}|." '{"CustomBanner":{}}|.'
holds_key ''; install "$ORV_SAMPLES/banner.wgt"; holds_key ''; uninstall bannerapp1
equal "a removal without an announcement leaves null" '{"CustomBanner":null}|.' "$(ui_key)"
holds_key ''; install "$ORV_SAMPLES/guide-default.wgt"; holds_key '{"Other":1}'; uninstall guidedeflt
equal "the same for an app of screens" '{"CustomApp":null,"Other":1}|.' "$(ui_key)"
holds_key ''; install "$ORV_SAMPLES/banner.wgt"; holds_key '{"CustomBanner":"text"}'; forget_log; uninstall bannerapp1
equal "a string member cannot be emptied" '{"CustomBanner":"text"}.' "$(ui_key)"
logged "the exception is logged" "[ERROR] Exception Caught"
holds "the app is removed nevertheless" '.store | length == 0'

# Restart: a check for a low-memory kill that is still running would launch the removed app.
echo "not JSON, or the wrong type"
tv daemon restart
with "broken" '{broken' '{broken.' '{broken.'
equal "the app of banners is not launched" "" "$(launches)"
equal "each read is logged" 2 "$(count_log '[Debug] Invalid Json Str : {broken')"
with "an array" '[1]' '[1].' '[1].'
equal "the app of banners is not launched" "" "$(launches)"
equal "each read is logged" 2 "$(count_log '[ERROR] Exception Caught')"
holds_key '{broken'; forget_log; install "$ORV_SAMPLES/guide-default.wgt"
equal "the app of screens is not launched" "" "$(launches)"
equal "the app owns no screen" "" "$(answers)"
logged "the failed write is logged" "[Debug] WriteAppInfoVconfKey() return false."
forget_log; tv daemon restart
equal "as a known app it owns its screens, whatever the key holds" "channel-list=$app epg=$app" "$(answers)"
equal "the app is launched in both passes" "$(background $app; background $app)" "$(launches)"
forget_log; uninstall guidedeflt
equal "its removal resets the operations" "" "$(answers)"
equal "its removal does not change the key" '{broken.' "$(ui_key)"

echo "no key"
tv key unset "$UI_KEY"
tv daemon restart
forget_log; install "$ORV_SAMPLES/guide-default.wgt"
logged "the install event ends with an exception" "[ERROR] exception : basic_string: construction from null is not valid"
equal "nothing is launched" "" "$(launches)$(answers)"
holds "the row is stored" "$(stored guidedeflt)"
forget_log; tv daemon restart
equal "a restart runs it: a known app does not read the key" "channel-list=$app epg=$app" "$(answers)"
forget_log; uninstall guidedeflt
logged "the uninstall event ends with an exception too" "[ERROR] exception : basic_string: construction from null is not valid"
equal "the operations were reset before" "channel-list reset epg reset" "$(op_changes)"
reached "the record and its row are removed all the same" '.store | length == 0'
holds "no key was created" ".keys | has(\"$UI_KEY\") | not"
holds_key ''; forget_log
install "$ORV_SAMPLES/guide-default.wgt"; uninstall guidedeflt
holds "with the key the row is removed" '.store | length == 0'
key_is "and so is the announcement" '"CustomApp":{}'

echo "a refused write"
tv daemon restart
holds_key '{"Other":1}'; tv fail vconf_set_str --times 1; forget_log
install "$ORV_SAMPLES/banner.wgt"
equal "the key is unchanged" '{"Other":1}.' "$(ui_key)"
equal "the app is launched nevertheless" "$(background $banner)" "$(launches)"
uninstall bannerapp1

echo "another program writes at the same time"
holds_key ''; forget_log
tv key watch --json "$UI_KEY" >"$work/seen" & watch=$!
watched() { holds_key ''; [ -s "$work/seen" ]; }
comes_true "the watch sees a set of the key" watched
rounds=12
(i=0; while [ $i -lt 60 ]; do i=$((i + 1)); tv key set -t string "$UI_KEY" "{\"Other\":$i}"; done) & writer=$!
i=0
while [ $i -lt $rounds ]; do
  i=$((i + 1)); tv pkg install "$ORV_SAMPLES/banner.wgt" >/dev/null; tv pkg uninstall bannerapp1 >/dev/null
done
wait "$writer"
installer_done
tv key set -t string "$UI_KEY" '{"Other":"last"}'
install "$ORV_SAMPLES/banner.wgt" >/dev/null
equal "the last value of each writer is kept" "{$announced,\"Other\":\"last\"}|." "$(ui_key)"
comes_true "the watch sees the last announcement" grep -q '"last.*CustomBanner\|CustomBanner.*last' "$work/seen"
kill "$watch"; wait "$watch" 2>/dev/null || true
# Each value is complete: written by the other program, or by the daemon with the other's member in it.
equal "no value mixes two writes" "" "$(jq -rs '
  .[].value | select(. != "")
  | (if endswith("\n") then (.[:-1] | fromjson | del(.CustomBanner)) else fromjson end) as $rest
  | select(($rest | keys - ["Other"]) != [] or ($rest.Other != null and $rest.Other != "last" and ($rest.Other | type) != "number"))' "$work/seen")"
wrote=$(calls '^vconf_set_str$' | grep -cF "$UI_KEY")
[ "$wrote" -ge 2 ] || die "the daemon wrote $wrote times"
equal "the watch sees each write of the daemon" "$wrote" "$(jq -rs 'map(select(.value | endswith("\n"))) | length' "$work/seen")"
equal "the watch sees each write of the other program" 61 "$(jq -rs 'map(select(.value | startswith("{\"Other\"") and (endswith("\n") | not))) | length' "$work/seen")"
the_end
