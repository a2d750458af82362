#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# The first update of a package after a start of the daemon: the new version's metadata is read again,
# so every added, removed or changed type and value is detected.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/update_lib.sh"

feeder() { is_type ch_feeder_standard "${2:-standard}"; has_data channel_data_url "http://a/$1/c"; has_data schedule_data_url "http://a/$1/s"; }
banner() { is_type custom_ui_standard "$1"; }
guide() { is_type custom_ui_extended "$1"; }
urls() { printf '"channel_data_url":"http://a/%s/c","schedule_data_url":"http://a/%s/s"' "$1" "$1"; }
# updated WHAT PACKAGE FIRST SECOND CHAIN ROW EFFECTS: updates from the first version's entries to the
# second's, with a restart of the daemon in between.
updated() {
  echo "$1"
  version "$2" 1.0.0 "$3"
  tv daemon restart
  forget_log
  version "$2" 2.0.0 "$4"
  equal "$1: the chain of layers" "$5" "$(chain)"
  equal "$1: the row" "$6" "$(row "$2")"
  equal "$1: the platform calls" "$7" "$(effects)"
}

start_tv

updated "the same types and values" sametypes1 "$(feeder 1)" "$(feeder 1)" \
"[Debug] [Intersection] first : ch_feeder_standard, second : standard
[Debug] [Intersection] first : channel_data_url, second : http://a/1/c
[Debug] [Intersection] first : schedule_data_url, second : http://a/1/s
[Info] rPackageID : sametypes1, eType : 1" \
"1.0.0 {\"orv_data\":{\"ch.app.boosting\":\"\",$(urls 1)},\"orv_type\":{\"ch_feeder_standard\":\"standard\"}}" \
"UpdateAppInfo({$(urls 1 | sed 's/,/,"pkg_id":"sametypes1",/'),\"widget_id\":\"sametypes1.App\"})"

# The new layer wraps the record, but only the record is kept, stored and notified.
updated "an added type" gainedtyp1 "$(feeder 1)" "$(feeder 1; banner info)" \
"[Debug] [Additional] first : custom_ui_standard, second : info
[Debug] [Intersection] first : ch_feeder_standard, second : standard
[Debug] [Intersection] first : channel_data_url, second : http://a/1/c
[Debug] [Intersection] first : schedule_data_url, second : http://a/1/s
[Info] rPackageID : gainedtyp1, eType : 1" \
"1.0.0 {\"orv_data\":{\"ch.app.boosting\":\"\",$(urls 1)},\"orv_type\":{\"ch_feeder_standard\":\"standard\"}}" \
"UpdateAppInfo({$(urls 1 | sed 's/,/,"pkg_id":"gainedtyp1",/'),\"widget_id\":\"gainedtyp1.App\"})"
equal "the added type is not announced" "" "$(tv key get -r db/orv_channel/custom_ui_type)"
tv daemon restart
equal "the added type is not loaded after a restart either" "" "$(log_texts | grep -F 'custom_ui_standard, iter->second' || true)"

updated "a removed inner type" lostinner1 "$(feeder 1; banner info)" "$(banner info)" \
"[Debug] [Removable] first : ch_feeder_standard, second : standard
[Info] rTargetType : ch_feeder_standard, first : custom_ui_standard
[Info] rTargetType : ch_feeder_standard, first : ch_feeder_standard
[Debug] [Intersection] first : custom_ui_standard, second : info
[Info] rPackageID : lostinner1, eType : 1" \
'1.0.0 {"orv_data":{"custom_ui_cold_boot_opt":""},"orv_type":{"custom_ui_standard":"info"}}' \
'RemoveAppInfo({"pkg_id":"lostinner1"})'
holds "its channel is gone" '.channels | all(.pkg_id != "lostinner1")'

# The layer is released without being stopped, so its announcement stays.
updated "a removed outermost type" lostouter1 "$(feeder 1; banner channel)" "$(feeder 1)" \
"[Debug] [Removable] first : custom_ui_standard, second : channel
[Info] rTargetType : custom_ui_standard, first : custom_ui_standard
[Debug] [Intersection] first : ch_feeder_standard, second : standard
[Debug] [Intersection] first : channel_data_url, second : http://a/1/c
[Debug] [Intersection] first : schedule_data_url, second : http://a/1/s
[Info] rPackageID : lostouter1, eType : 1" \
"1.0.0 {\"orv_data\":{\"ch.app.boosting\":\"\",$(urls 1)},\"orv_type\":{\"ch_feeder_standard\":\"standard\"}}" \
"UpdateAppInfo({$(urls 1 | sed 's/,/,"pkg_id":"lostouter1",/'),\"widget_id\":\"lostouter1.App\"})"
equal "the announcement of the removed type stays" channel "$(announced CustomBanner | jq -r .banner_types)"

# The framework gets the new values; the record keeps those it was created with.
updated "a feeder whose values changed" changedfee "$(feeder 1)" "$(feeder 2 other)" \
"[Debug] [Intersection] first : ch_feeder_standard, second : other
[Debug] [Intersection] first : channel_data_url, second : http://a/2/c
[Debug] [Intersection] first : schedule_data_url, second : http://a/2/s
[Info] rPackageID : changedfee, eType : 1" \
"1.0.0 {\"orv_data\":{\"ch.app.boosting\":\"\",$(urls 1)},\"orv_type\":{\"ch_feeder_standard\":\"standard\"}}" \
"UpdateAppInfo({$(urls 2 | sed 's/,/,"pkg_id":"changedfee",/'),\"widget_id\":\"changedfee.App\"})"
holds "the channel has the new URLs" '.channels | any(.pkg_id == "changedfee" and .channel_data_url == "http://a/2/c")'

updated "added and removed data" datachange \
  "$(is_type ch_feeder_standard standard; has_data channel_data_url http://a/1/c; has_data ch.app.boosting true)" \
  "$(is_type ch_feeder_standard standard; has_data schedule_data_url http://a/2/s; has_data unknown x)" \
"[Debug] [Intersection] first : ch_feeder_standard, second : standard
[Debug] [Intersection] first : schedule_data_url, second : http://a/2/s
[Debug] [Intersection] first : unknown, second : x
[Info] rPackageID : datachange, eType : 1" \
'1.0.0 {"orv_data":{"ch.app.boosting":"true","channel_data_url":"http://a/1/c","schedule_data_url":""},"orv_type":{"ch_feeder_standard":"standard"}}' \
'UpdateAppInfo({"channel_data_url":"","pkg_id":"datachange","schedule_data_url":"http://a/2/s","widget_id":"datachange.App"})'

updated "changed banners" changedban "$(banner info,channel)" "$(banner channel)" \
"[Debug] [Intersection] first : custom_ui_standard, second : channel
[Info] rPackageID : changedban, eType : 1" \
'1.0.0 {"orv_data":{"custom_ui_cold_boot_opt":""},"orv_type":{"custom_ui_standard":"channel"}}' \
'announce({"CustomBanner":{"app_id":"changedban.App","banner_types":"channel","cold_boot_opt":"default","pkg_id":"changedban","widget_id":"changedban.App"}})'

# The first update clears the option, whether new or old: this layer cannot stage it yet.
updated "a banner's option" optionban1 "$(banner info; has_data custom_ui_cold_boot_opt invisible)" \
  "$(banner info; has_data custom_ui_cold_boot_opt invisible)" \
"[Debug] [Intersection] first : custom_ui_standard, second : info
[Debug] [Intersection] first : custom_ui_cold_boot_opt, second : invisible
[Info] rPackageID : optionban1, eType : 1" \
'1.0.0 {"orv_data":{"custom_ui_cold_boot_opt":""},"orv_type":{"custom_ui_standard":"info"}}' \
'announce({"CustomBanner":{"app_id":"optionban1.App","banner_types":"info","cold_boot_opt":"default","pkg_id":"optionban1","widget_id":"optionban1.App"}})'

OPERATIONS=http://kalmora.com/tv/appcontrol/operation
updated "changed screens" changedgui "$(guide channel_list)" "$(guide epg)" \
"[Debug] [Intersection] first : custom_ui_extended, second : epg
[Info] rPackageID : changedgui, eType : 1" \
'1.0.0 {"orv_data":{"custom_ui_cold_boot_opt":""},"orv_type":{"custom_ui_extended":"epg"}}' \
"app_operation_reset_current_app($OPERATIONS/channel-list)
app_operation_set_current_app($OPERATIONS/epg, changedgui.App)"
equal "the channel list is reset" "" "$(answers channel-list)"
equal "the guide is taken over" "changedgui.App" "$(answers epg)"
remove changedgui

updated "all at once: outermost type removed, another added, one changed" allatonce1 \
  "$(feeder 1; banner info; has_data ch.app.boosting true)" \
  "$(is_type ch_feeder_standard other; is_type ch_feeder_custom plain; has_data channel_data_url http://a/2/c; has_data expiration_date_str 2099-01-01T00:00:00Z)" \
"[Debug] [Removable] first : custom_ui_standard, second : info
[Info] rTargetType : custom_ui_standard, first : custom_ui_standard
[Debug] [Additional] first : ch_feeder_custom, second : plain
[Debug] [Intersection] first : ch_feeder_standard, second : other
[Debug] [Intersection] first : channel_data_url, second : http://a/2/c
[Debug] [Intersection] first : expiration_date_str, second : 2099-01-01T00:00:00Z
[Info] rPackageID : allatonce1, eType : 1" \
"1.0.0 {\"orv_data\":{\"ch.app.boosting\":\"true\",$(urls 1)},\"orv_type\":{\"ch_feeder_standard\":\"standard\"}}" \
'UpdateAppInfo({"channel_data_url":"http://a/2/c","pkg_id":"allatonce1","schedule_data_url":"","widget_id":"allatonce1.App"})'

updated "no metadata in the new version" metagone01 "$(feeder 1; banner info)" "" \
"[Info] rPackageID : metagone01, eType : 2" \
"" \
'RemoveAppInfo({"pkg_id":"metagone01"})
announce({"CustomApp":{},"CustomBanner":{}})
RemoveAppInfo({"pkg_id":"metagone01"}) = false'
holds "its channel is removed too" '.channels | all(.pkg_id != "metagone01")'

updated "no types in the new version, only data" typesgone1 "$(feeder 1)" "$(has_data channel_data_url http://a/2/c)" \
"[Info] rPackageID : typesgone1, eType : 2" \
"" \
'RemoveAppInfo({"pkg_id":"typesgone1"})
RemoveAppInfo({"pkg_id":"typesgone1"}) = false'

updated "an ordinary package becomes channel-bound" becomesone "" "$(feeder 1)" \
"[Info] [METADATA_ORV_TYPE] key : ch_feeder_standard, iter->second : standard
[Info] rPackageID : becomesone, eType : 0" \
"2.0.0 {\"orv_data\":{\"ch.app.boosting\":\"\",$(urls 1)},\"orv_type\":{\"ch_feeder_standard\":\"standard\"}}" \
"CreateAppInfo({$(urls 1 | sed 's/,/,"pkg_id":"becomesone",/'),\"widget_id\":\"becomesone.App\"})"

# Only the bare record is left, without a type from which it could be created again.
updated "every type replaced by another" othertype1 "$(banner info)" "$(feeder 1)" \
"[Debug] [Removable] first : custom_ui_standard, second : info
[Info] rTargetType : custom_ui_standard, first : custom_ui_standard
[Debug] [Additional] first : ch_feeder_standard, second : standard
[Debug] [Intersection] first : channel_data_url, second : http://a/1/c
[Debug] [Intersection] first : schedule_data_url, second : http://a/1/s
[Info] rPackageID : othertype1, eType : 1" \
"1.0.0 null" \
""
forget_log
version othertype1 3.0.0 "$(feeder 1)"
equal "the next update creates the record again" \
"[Info] [METADATA_ORV_TYPE] key : ch_feeder_standard, iter->second : standard
[Info] rPackageID : othertype1, eType : 0" "$(chain)"
equal "the row has the new type and version" \
"3.0.0 {\"orv_data\":{\"ch.app.boosting\":\"\",$(urls 1)},\"orv_type\":{\"ch_feeder_standard\":\"standard\"}}" \
"$(row othertype1)"
holds "the channel is created" '.channels | any(.pkg_id == "othertype1")'

updated "a bare record is not loaded after a restart" barerecord "$(banner info)" "$(feeder 1)" \
"[Debug] [Removable] first : custom_ui_standard, second : info
[Info] rTargetType : custom_ui_standard, first : custom_ui_standard
[Debug] [Additional] first : ch_feeder_standard, second : standard
[Debug] [Intersection] first : channel_data_url, second : http://a/1/c
[Debug] [Intersection] first : schedule_data_url, second : http://a/1/s
[Info] rPackageID : barerecord, eType : 1" \
"1.0.0 null" \
""
forget_log
tv daemon restart
logged "its row creates no record" "check the metadata definitions in config.xml file.(App ID : barerecord.App)"
forget_log
version barerecord 3.0.0 "$(feeder 1)"
equal "the next update creates the record" \
"[Info] [METADATA_ORV_TYPE] key : ch_feeder_standard, iter->second : standard
[Info] rPackageID : barerecord, eType : 0" "$(chain)"
equal "the row is replaced" \
"3.0.0 {\"orv_data\":{\"ch.app.boosting\":\"\",$(urls 1)},\"orv_type\":{\"ch_feeder_standard\":\"standard\"}}" \
"$(row barerecord)"

echo "the platform cannot return the version"
tv daemon restart
forget_log
tv fail package_info_get_version --times 1
make_wgt "$work/fail.wgt" sametypes1 9.0.0 "$(banner info)"
tv pkg update "$work/fail.wgt" >/dev/null
handled
logged "the update fails" "[Debug] ORVAppCreator::UpdateApp() return false."
equal "the chain of layers is not changed" "[Debug] ExtractAppInfoFromMetadata() return false." "$(chain)"
equal "the platform is not called" "" "$(effects)"
equal "the row is unchanged" \
"1.0.0 {\"orv_data\":{\"ch.app.boosting\":\"\",$(urls 1)},\"orv_type\":{\"ch_feeder_standard\":\"standard\"}}" \
"$(row sametypes1)"
the_end
