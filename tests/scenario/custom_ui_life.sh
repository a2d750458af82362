#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# The life of each sample that replaces screens of the TV: installed, restarted in every way, removed.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/custom_ui.sh"

tv up --speed 5

# known_app_ran WHAT APP CHANGES: checks the effects of running a known app after a restart.
known_app_ran() {
  reached "$1: the daemon is up" '.daemon.state == "ready"'
  equal "$1: launched once in each of the two passes" "$(background "$2"; background "$2")" "$(launches)"
  equal "$1: one subscription" "+$2" "$(subscriptions)"
  equal "$1: the second pass finds the subscription" 1 "$(count_log '[Debug] Already regitered.')"
  equal "$1: changes of the operations" "$3" "$(op_changes)"
  equal "$1: the key was neither read nor written" "" "$(calls '^vconf_[gs]et_str$' | grep -F "$UI_KEY" || true)"
  key_is "$1: the key is unchanged" "$key"
}
restarts() { # APP CHANGES-AFTER-POWER-ON
  key=$(ui_key | sed 's/^{\(.*\)}|\.$/\1/')
  forget_log; tv daemon restart; known_app_ran "restart" "$1" ""
  forget_log; old=$(tv status --json | jq .daemon.pid); tv daemon kill
  reached "kill: the daemon is restarted" ".daemon.running and .daemon.pid != $old and .daemon.state == \"ready\""
  known_app_ran "kill" "$1" ""
  holds "kill: the app kept running" "$(app_is "$1" ".running and .status == \"preload\"")"
  forget_log; tv power-cycle; known_app_ran "power-cycle" "$1" "$2"
  reached "power-cycle: the app is loaded again" "$(app_is "$1" '.status == "preload"')"
  logged "power-cycle: the check finds the app alive" "[Info] m_iCurrentWebAppStatus : 2, count : 0"
}
fresh() { # SAMPLE: with a new daemon process and an empty key
  echo "$1"
  tv daemon restart; tv key set -t string "$UI_KEY" ""
  forget_log; install "$ORV_SAMPLES/$1.wgt"
}
came_up() { # APP
  reached "the app is loaded in the background" "$(app_is "$1" '.status == "preload"')"
  logged "the check finds the app alive" "[Info] m_iCurrentWebAppStatus : 2, count : 0"
  equal "the app is launched once, in the background" "$(background "$1")" "$(launches)"
  equal "the daemon listens to its status" "+$1" "$(subscriptions)"
  equal "all its statuses are read" "init load preload" "$(statuses_read)"
}

fresh banner
key_is "banner: the announcement" "$(banner bannerapp1 bannerapp1.Banner info,channel default)"
came_up bannerapp1.Banner
equal "no operation is changed" "" "$(op_changes)"
restarts bannerapp1.Banner ""
forget_log; uninstall bannerapp1
key_is "uninstall: the announcement is empty" '"CustomBanner":{}'
equal "uninstall: the daemon still listens to its status" "" "$(subscriptions)"
silent "uninstall: no layer unregisters from its status" "UnregisterAppStatusVconfCallback"
holds "the row is gone" '.store | length == 0'

for option in default invisible; do
  package=guide$(printf %s "$option" | sed 's/default/deflt/; s/invisible/invis/')
  app=$package.Guide
  fresh "guide-$option"
  key_is "guide-$option: the announcement" "$(screens "$package" "$app" "$option")"
  came_up "$app"
  equal "the operations are taken over in the order of the list" "channel-list=$app epg=$app" "$(op_changes)"
  equal "the app owns the operations" "channel-list=$app epg=$app" "$(answers)"
  restarts "$app" "channel-list=$app epg=$app"
  forget_log; uninstall "$package"
  equal "uninstall: the operations are reset" "channel-list reset epg reset" "$(op_changes)"
  equal "no app owns them" "" "$(answers)"
  equal "the daemon no longer listens to its status" "-$app (0)" "$(subscriptions)"
  key_is "the announcement is empty" '"CustomApp":{}'
done

fresh guide-background
key_is "guide-background: the announcement" "$(screens guidebackg guidebackg.Guide background_img)"
logged "no replacement UI is named" "[ERROR] Invalid Json String."
equal "no operation is set" "" "$(op_changes)"
equal "nothing is launched" "" "$(launches)"
forget_log; tv daemon restart
equal "restart: two passes without a replacement UI" 2 "$(count_log '[ERROR] Invalid Json String.')"
forget_log; uninstall guidebackg
equal "uninstall: one more attempt" 1 "$(count_log '[ERROR] Invalid Json String.')"
equal "no operation was changed" "" "$(op_changes)"
key_is "the announcement is empty" '"CustomApp":{}'

fresh banner-and-guide
key_is "banner-and-guide: both announcements" \
  "$(screens bannerguid bannerguid.App default),$(banner bannerguid bannerguid.App info default)"
reached "the app is loaded" "$(app_is bannerguid.App '.status == "preload"')"
logged "the check finds the app alive" "[Info] m_iCurrentWebAppStatus : 2, count : 0"
equal "one subscription for both layers" "+bannerguid.App" "$(subscriptions)"
equal "each layer follows the app, the inner one first" \
"custom_ui_extended
custom_ui_standard" "$(log_texts | sed -n 's/^\[Info\] rAppID : bannerguid.App, rAppType : \([a-z_]*\), pCallback.*/\1/p')"
equal "the app owns the guide" "epg=bannerguid.App" "$(answers)"
forget_log; tv power-cycle
equal "power-cycle: each layer launches it in each pass" \
  "$(background bannerguid.App; background bannerguid.App; background bannerguid.App; background bannerguid.App)" "$(launches)"
equal "the app owns the guide again" "epg=bannerguid.App" "$(op_changes)"
reached "the app is loaded again" "$(app_is bannerguid.App '.status == "preload"')"
forget_log; uninstall bannerguid
key_is "uninstall: both announcements are empty" '"CustomApp":{},"CustomBanner":{}'
equal "the guide is reset" "epg reset" "$(op_changes)"
equal "the layer of the banners still follows the app" "" "$(subscriptions)"
the_end
