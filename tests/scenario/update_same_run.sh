#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Updates within one run of the daemon: the metadata of a package that it read first stays in force. New
# keys are added; a removed or changed type or value still counts as before.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/update_lib.sh"

feeder() { is_type ch_feeder_standard "${2:-standard}"; has_data channel_data_url "http://a/$1/c"; has_data schedule_data_url "http://a/$1/s"; }
banner() { is_type custom_ui_standard "$1"; }
urls() { printf '"channel_data_url":"http://a/%s/c","schedule_data_url":"http://a/%s/s"' "$1" "$1"; }
fed() { printf '%s({"channel_data_url":"http://a/%s/c","pkg_id":"%s","schedule_data_url":"http://a/%s/s","widget_id":"%s.App"})' "$1" "$3" "$2" "$3" "$2"; }
feeder_row() { printf '%s {"orv_data":{"ch.app.boosting":"",%s},"orv_type":{"ch_feeder_standard":"standard"}}' "$1" "$(urls "$2")"; }
feeder_staged() { # URLS PACKAGE [TYPE]: all entries of a feeder and the other type are staged
  echo "[Debug] [Intersection] first : ch_feeder_standard, second : standard"
  [ -z "${3:-}" ] || echo "[Debug] [Intersection] first : $3"
  echo "[Debug] [Intersection] first : channel_data_url, second : http://a/$1/c"
  echo "[Debug] [Intersection] first : schedule_data_url, second : http://a/$1/s"
  echo "[Info] rPackageID : $2, eType : 1"
}
both_types='1.0.0 {"orv_data":{"ch.app.boosting":"","channel_data_url":"http://a/1/c","custom_ui_cold_boot_opt":"","schedule_data_url":"http://a/1/s"},"orv_type":{"ch_feeder_standard":"standard","custom_ui_standard":"info"}}'
# shows WHAT CHAIN ROW EFFECTS: checks the current package.
shows() {
  equal "$1: the chain" "$2" "$(chain)"
  equal "$1: the row" "$3" "$(row "$package")"
  equal "$1: the platform calls" "$4" "$(effects)"
}
# updates ENTRIES: updates the current package; log and journal start there.
serial=1
updates() { serial=$((serial + 1)); forget_log; version "$package" "$serial.0.0" "$1"; }
installs() { package=$2; echo "$1"; serial=1; version "$package" 1.0.0 "$3"; }

start_tv

installs "a changed value after the install" changedval "$(feeder 1)"
updates "$(feeder 2 other)"
shows "it keeps the values of the install" \
  "$(feeder_staged 1 changedval)" "$(feeder_row 1.0.0 1)" "$(fed UpdateAppInfo changedval 1)"

installs "a type removed after the install" droppedtyp "$(feeder 1; banner info)"
updates "$(feeder 1)"
shows "both types are kept" \
"$(feeder_staged 1 droppedtyp "custom_ui_standard, second : info")" \
"$both_types" \
"$(fed UpdateAppInfo droppedtyp 1)"

installs "all metadata removed after the install" metagone02 "$(feeder 1)"
updates ""
shows "nothing is removed" \
  "$(feeder_staged 1 metagone02)" "$(feeder_row 1.0.0 1)" "$(fed UpdateAppInfo metagone02 1)"
tv daemon restart
updates ""
shows "after a restart it is removed" "[Info] rPackageID : metagone02, eType : 2" "" \
'RemoveAppInfo({"pkg_id":"metagone02"})
RemoveAppInfo({"pkg_id":"metagone02"}) = false'

installs "data added after the install" addeddata1 "$(is_type ch_feeder_standard standard; has_data channel_data_url http://a/1/c)"
updates "$(feeder 2)"
shows "the new key is added, the old one unchanged" \
"[Debug] [Intersection] first : ch_feeder_standard, second : standard
[Debug] [Intersection] first : channel_data_url, second : http://a/1/c
[Debug] [Intersection] first : schedule_data_url, second : http://a/2/s
[Info] rPackageID : addeddata1, eType : 1" \
'1.0.0 {"orv_data":{"ch.app.boosting":"","channel_data_url":"http://a/1/c","schedule_data_url":""},"orv_type":{"ch_feeder_standard":"standard"}}' \
'UpdateAppInfo({"channel_data_url":"http://a/1/c","pkg_id":"addeddata1","schedule_data_url":"http://a/2/s","widget_id":"addeddata1.App"})'

installs "a type added after the install" gainedtyp2 "$(feeder 1)"
gained="[Debug] [Additional] first : custom_ui_standard, second : info
$(feeder_staged 1 gainedtyp2)"
updates "$(feeder 1; banner info)"
shows "a new layer wraps the record" "$gained" "$(feeder_row 1.0.0 1)" "$(fed UpdateAppInfo gainedtyp2 1)"
updates "$(feeder 1; banner info)"
shows "each later update adds another layer" "$gained" "$(feeder_row 1.0.0 1)" "$(fed UpdateAppInfo gainedtyp2 1)"
remove gainedtyp2
equal "it is removed like any other package" "" "$(row gainedtyp2)"

installs "all at once after the install" allatonce2 "$(feeder 1; banner info)"
updates "$(feeder 2 other; is_type ch_feeder_custom plain)"
shows "only the added type is detected" \
"[Debug] [Additional] first : ch_feeder_custom, second : plain
$(feeder_staged 1 allatonce2 "custom_ui_standard, second : info")" \
"$both_types" \
"$(fed UpdateAppInfo allatonce2 1)"

installs "the second update after a restart" secondupd1 "$(feeder 1)"
tv daemon restart
updates "$(feeder 2)"
shows "the first update detects the change" \
  "$(feeder_staged 2 secondupd1)" "$(feeder_row 1.0.0 1)" "$(fed UpdateAppInfo secondupd1 2)"
updates "$(feeder 3)"
shows "the second update sees what the first one read" \
  "$(feeder_staged 2 secondupd1)" "$(feeder_row 1.0.0 1)" "$(fed UpdateAppInfo secondupd1 2)"
tv daemon restart
updates "$(feeder 3)"
shows "after another restart the change is detected" \
  "$(feeder_staged 3 secondupd1)" "$(feeder_row 1.0.0 1)" "$(fed UpdateAppInfo secondupd1 3)"

installs "a failed update" failedupd1 "$(feeder 1)"
tv fail package_manager_get_package_info --times 1
make_wgt "$work/fail.wgt" failedupd1 2.0.0 "$(feeder 2)"
forget_log
tv pkg update "$work/fail.wgt" >/dev/null
handled
shows "a failed update changes nothing" "[Debug] ExtractAppInfoFromMetadata() return false." "$(feeder_row 1.0.0 1)" ""
updates "$(feeder 3)"
shows "the next update reads all metadata again" \
  "$(feeder_staged 3 failedupd1)" "$(feeder_row 1.0.0 1)" "$(fed UpdateAppInfo failedupd1 3)"

created() { # PACKAGE
  echo "[Info] [METADATA_ORV_TYPE] key : ch_feeder_standard, iter->second : standard"
  echo "[Info] rPackageID : $1, eType : 0"
}
installs "an ordinary package becomes channel-bound" becomestwo ""
equal "it has no row at first" "" "$(row becomestwo)"
updates "$(feeder 1)"
shows "its update installs it" "$(created becomestwo)" "$(feeder_row 2.0.0 1)" "$(fed CreateAppInfo becomestwo 1)"
updates "$(feeder 2)"
shows "it keeps the values of that update" \
  "$(feeder_staged 1 becomestwo)" "$(feeder_row 2.0.0 1)" "$(fed UpdateAppInfo becomestwo 1)"

installs "a package of an unknown type changes to a known type" unknowntyp "$(is_type ch_feeder_unknown x; has_data channel_data_url http://a/1/c)"
equal "it has no row at first" "" "$(row unknowntyp)"
updates "$(feeder 2)"
shows "the values of the first version are not kept" "$(created unknowntyp)" "$(feeder_row 2.0.0 2)" "$(fed CreateAppInfo unknowntyp 2)"

installs "uninstalled and installed again" cameagain1 "$(feeder 1)"
remove cameagain1
equal "the row is gone" "" "$(row cameagain1)"
forget_log
version cameagain1 2.0.0 "$(feeder 2)"
shows "it is installed with the old values and the new version" \
  "$(created cameagain1)" "$(feeder_row 2.0.0 1)" "$(fed CreateAppInfo cameagain1 1)"
remove cameagain1
tv daemon restart
forget_log
version cameagain1 3.0.0 "$(feeder 3)"
shows "after a restart it is installed with its new values" \
  "$(created cameagain1)" "$(feeder_row 3.0.0 3)" "$(fed CreateAppInfo cameagain1 3)"
the_end
