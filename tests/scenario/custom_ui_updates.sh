#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Updates of apps that replace screens of the TV: what takes effect at once, what only after a restart
# of the daemon, and what is cleared.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/custom_ui.sh"

tv up --speed 5
option() { tv store --json | jq -r --arg p "$1" '.[] | select(.package_id == $p) | .variables.orv_data.custom_ui_cold_boot_opt'; }
types() { tv store --json | jq -c --arg p "$1" '.[] | select(.package_id == $p) | .variables.orv_type'; }
is_loaded() { reached "$1 is loaded" "$(app_is "$1" '.status == "preload"')"; }
banners() { # VERSION BANNERS OPTION
  ui_app "$work/banner.wgt" bannerupd1 "$1" custom_ui_standard "$2" "$3"; update "$work/banner.wgt"
}
banner_key() { key_is "$1" "$(banner bannerupd1 bannerupd1.App "$2" "$3")"; }

echo "banners, in one run of the daemon: the values read first stay in force"
ui_app "$work/banner.wgt" bannerupd1 1.0.0 custom_ui_standard info,channel invisible
install "$work/banner.wgt"
banner_key "the option is announced" info,channel invisible
is_loaded bannerupd1.App
logged "the check finds the app alive" "[Info] m_iCurrentWebAppStatus : 2, count : 0"
forget_log; banners 1.0.1 channel background_img
banner_key "the first update clears the option and keeps the list" info,channel default
equal "the option is cleared in the store as well" "" "$(option bannerupd1)"
equal "the staged value is the one read first" 1 \
  "$(count_log '[Debug] Applied Metadata : info,channel, Updatable Metadata : info,channel')"
forget_log; banners 1.0.2 channel background_img
banner_key "the second update stages the first option and applies it" info,channel invisible
equal "the option is stored" invisible "$(option bannerupd1)"
forget_log; banners 1.0.3 channel background_img
equal "the third update finds no change and writes nothing" "" "$(calls '^vconf_set_str$')"
equal "the third update launches nothing" "" "$(launches)"

echo "banners, each update after a restart of the daemon"
# The daemon launches the app when it starts, and until its low-memory check has seen the app alive, it
# launches an app that has ended again. Neither is the update's launch.
forget_log; tv daemon restart
logged "the check finds the app alive again" "[Info] m_iCurrentWebAppStatus : 2, count : 0"
forget_log; banners 1.1.0 channel background_img
banner_key "a new list takes effect, the option is cleared" channel default
equal "the app, killed for the update, is launched again" "$(background bannerupd1.App)" "$(launches)"
tv daemon restart; forget_log; banners 1.1.1 channel,x ''
equal "an additional unknown name is not a change" "" "$(calls '^vconf_set_str$')"
tv daemon restart; forget_log; banners 1.1.2 channel,info ''
banner_key "an additional known name is a change" channel,info default
tv daemon restart; forget_log; banners 1.1.3 info,channel ''
banner_key "another order of the names is a change" info,channel default
tv daemon restart; forget_log
make_wgt "$work/banner.wgt" bannerupd1 1.2.0 ''; update "$work/banner.wgt"
key_is "an update without the metadata is a removal" '"CustomBanner":{}'
holds "the row is gone" '.store | length == 0'

echo "screens, each update after a restart of the daemon"
guide() { # VERSION SCREENS OPTION
  ui_app "$work/guide.wgt" guideupda1 "$1" custom_ui_extended "$2" "$3"
}
guide_key() { equal "$1" "{$(screens guideupda1 guideupda1.App "$2"),\"CustomBanner\":{}}|." "$(ui_key)"; }
guide 1.0.0 epg invisible; install "$work/guide.wgt"
guide_key "the option is announced" invisible
is_loaded guideupda1.App
tv daemon restart; forget_log; guide 1.0.1 channel_list default; update "$work/guide.wgt"
equal "the old screen is reset and the new one taken over" "epg reset channel-list=guideupda1.App" "$(op_changes)"
equal "the status is unsubscribed and subscribed again" "-guideupda1.App (0) +guideupda1.App" "$(subscriptions)"
guide_key "the announcement keeps the option of the last run" invisible
equal "the option itself is cleared" "" "$(option guideupda1)"
forget_log; guide 1.0.2 channel_list default; update "$work/guide.wgt"
equal "the second update stages the option" default "$(option guideupda1)"
equal "the staged option counts as a change" "channel-list reset channel-list=guideupda1.App" "$(op_changes)"
forget_log; guide 1.0.3 channel_list default; update "$work/guide.wgt"
equal "the third update changes nothing" "" "$(op_changes)"
tv daemon restart; forget_log; guide 1.0.4 channel_list,x ''; update "$work/guide.wgt"
equal "an additional unknown name changes the text" "channel-list reset channel-list=guideupda1.App" "$(op_changes)"
tv op set channel-list another.app
tv daemon restart; forget_log; tv op set channel-list another.app
guide 1.0.5 epg,x ''; update "$work/guide.wgt"
equal "a screen that another app owns is not reset" "epg=guideupda1.App" "$(op_changes)"
equal "the other app keeps it" "channel-list=another.app epg=guideupda1.App" "$(answers)"
uninstall guideupda1
equal "uninstall resets only its own screens" "channel-list=another.app" "$(answers)"
tv op reset channel-list

echo "an option added by a later update"
replacement "{\"appid\":\"$LAYOUT\"}"
guide 2.0.0 epg ''; install "$work/guide.wgt"
is_loaded guideupda1.App
guide 2.0.1 epg ''; update "$work/guide.wgt"
forget_log; guide 2.0.2 epg background_img; update "$work/guide.wgt"
equal "the screen is reset, then taken over via the replacement UI" \
  "epg reset epg=$LAYOUT epg=guideupda1.App" "$(op_changes)"
guide_key "the announcement still has the option of the run" default
uninstall guideupda1
tv op reset epg

echo "added and removed types"
both() { make_wgt "$work/both.wgt" bothtypes1 "$1" "$(metadata orv_type custom_ui_standard info; metadata orv_type custom_ui_extended epg)"; }
one() { ui_app "$work/both.wgt" bothtypes1 "$1" "$2" "$3"; }
one 1.0.0 custom_ui_standard info; install "$work/both.wgt"
tv daemon restart; forget_log; both 1.0.1; update "$work/both.wgt"
logged "a new type is an addition" "[Debug] [Additional] first : custom_ui_extended, second : epg"
equal "the new type is not in the cached record and does not run" "" "$(op_changes)"
equal "the new type is not stored" '{"custom_ui_standard":"info"}' "$(types bothtypes1)"
uninstall bothtypes1
both 2.0.0; install "$work/both.wgt"
is_loaded bothtypes1.App
before=$(ui_key)
tv daemon restart; forget_log; one 2.0.1 custom_ui_standard info; update "$work/both.wgt"
logged "a missing type is removed" "[Debug] [Removable] first : custom_ui_extended, second : epg"
equal "the missing type is removed from the store" '{"custom_ui_standard":"info"}' "$(types bothtypes1)"
equal "the missing type is not stopped: the announcement stays" "$before" "$(ui_key)"
equal "the app still owns its screen" "epg=bothtypes1.App" "$(answers)"
pid=$(tv status --json | jq .daemon.pid)
tv app launch bothtypes1.App; reached "the app comes to the front" "$(app_is bothtypes1.App '.status == "resume"')"
forget_log; tv app status bothtypes1.App quit; main_loop_done
equal "the status is still read for the removed layer" "quit" "$(statuses_read)"
equal "the status has no effect" "" "$(op_changes)$(launches)"
equal "the daemon keeps running" "$pid" "$(tv status --json | jq .daemon.pid)"
the_end
