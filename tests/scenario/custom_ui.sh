# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Sourced after lib.sh by the scenarios of apps that replace the TV's own screens.

UI_KEY=db/orv_channel/custom_ui_type
LAUNCH_MODE=http://kalmora.com/appcontrol/data/launch_mode
DEFAULT_OPERATION=http://tizen.org/appcontrol/operation/default
REPLACEMENT=$TV_ROOT/opt/share/orv_ch/replacement_ui_info.json
LAYOUT=com.example.layout

# ui_key: the exact value of the settings key, each newline as "|" and the end as ".".
ui_key() { tv key get --json "$UI_KEY" | jq -j '.value + "."' | tr '\n' '|'; }
# banner PACKAGE APP BANNERS OPTION, screens PACKAGE APP OPTION: the members of the key.
banner() {
  printf '"CustomBanner":{"app_id":"%s","banner_types":"%s","cold_boot_opt":"%s","pkg_id":"%s","widget_id":"%s"}' \
    "$2" "$3" "$4" "$1" "$2"
}
screens() {
  printf '"CustomApp":{"app_id":"%s","cold_boot_opt":"%s","pkg_id":"%s","widget_id":"%s"}' "$2" "$3" "$1" "$2"
}
key_is() { equal "$1" "{$2}|." "$(ui_key)"; }

# answers: the app of each operation now, "channel-list=APP epg=APP".
answers() { tv op list --json | jq -r 'map((.operation | sub(".*/"; "")) + "=" + .app) | join(" ")'; }
# op_changes: what the daemon did to the operations since forget_log, in order, on one line.
op_changes() {
  calls '^app_operation_(re)?set_current_app$' |
    sed -E 's|^[^(]*_set_current_app\([^,]*/([^,/]*), (.*)\) = 0$|\1=\2|
            s|^[^(]*_reset_current_app\([^,]*/([^,/]*)\) = 0$|\1 reset|' | paste -s -d' '
}
# launches: the launch requests since forget_log: "APP OPERATION EXTRA-DATA = RESULT".
launches() {
  tv journal --json | jq -rs --argjson from "$journal_from" '
    [.[] | select(.seq > $from and (.call | startswith("app_control_")))]
    | reduce .[] as $c ({open: {}, sent: []};
        ($c.args[0] | tostring) as $handle
        | if $c.call == "app_control_set_app_id" then .open[$handle] = {app: $c.args[1], extra: {}}
          elif $c.call == "app_control_set_operation" then .open[$handle].operation = $c.args[1]
          elif $c.call == "app_control_add_extra_data" then .open[$handle].extra[$c.args[1]] = $c.args[2]
          elif $c.call == "app_control_send_launch_request"
          then .sent += [.open[$handle] + {result: $c.result}]
          else . end)
    | .sent[] | "\(.app) \(.operation) \(.extra | tojson) = \(.result)"'
}
# background APP [RESULT], foreground APP [RESULT]: one such line.
background() { printf '%s %s {"%s":"backgroundAtStartup"} = %s\n' "$1" "$DEFAULT_OPERATION" "$LAUNCH_MODE" "${2:-0}"; }
foreground() { printf '%s %s {} = %s\n' "$1" "$DEFAULT_OPERATION" "${2:-0}"; }
# subscriptions: to the status keys of web apps since forget_log: "+APP" added, "-APP" removed.
subscriptions() {
  calls '^vconf_(notify|ignore)_key_changed$' | sed -nE '
    s|^vconf_notify_key_changed\(rtc/memory/WebApp/([^,]*), callback, null\) = 0$|+\1|p
    s|^vconf_ignore_key_changed\(rtc/memory/WebApp/([^,]*), callback\) = (.*)$|-\1 (\2)|p' | paste -s -d' '
}
# statuses_read: the app statuses that the daemon has read since forget_log.
statuses_read() { log_texts | sed -n 's/^\[Debug\] sAppStatus = //p' | paste -s -d' '; }
# app_is APP JQ: the app's entry in the dump.
app_is() { printf '.apps[] | select(.id == "%s") | %s' "$1" "$2"; }

# more TEXT TIMES: waits until the log holds the text more than TIMES times.
more() {
  deadline=$(($(date +%s) + 60 * slow))
  until [ "$(count_log "$1")" -gt "$2" ]; do
    [ "$(date +%s)" -lt "$deadline" ] || die "the log has \"$1\" not more than $2 times"
    pause
  done
}
# main_loop_done: waits until the daemon's main loop has handled everything sent to it so far.
main_loop_done() {
  fence=$(count_log 'VCONFKEY_TELLAHUB_RESET value 1')
  tv key set db/tellahub/reset/apps 1
  more 'VCONFKEY_TELLAHUB_RESET value 1' "$fence"
}
# installer_done: waits until all package events so far have been handled.
installer_done() {
  [ -e "$work/fence.wgt" ] || make_wgt "$work/fence.wgt" fence00001 1.0.0 ''
  fence=$(count_log 'fence00001 is not ORV Type.')
  if tv pkg info fence00001 >/dev/null 2>&1; then
    tv pkg update "$work/fence.wgt" >/dev/null
  else
    tv pkg install "$work/fence.wgt" >/dev/null
  fi
  more 'fence00001 is not ORV Type.' "$fence"
}
# install FILE, uninstall PACKAGE, update FILE: returns when the daemon has handled the event.
install() { tv pkg install "$1"; installer_done; }
uninstall() { tv pkg uninstall "$1"; installer_done; }
update() { tv pkg update "$1"; installer_done; }

# ui_app FILE PACKAGE VERSION TYPE VALUE [OPTION]: packs an app of one type.
ui_app() {
  make_wgt "$1" "$2" "$3" "$(metadata orv_type "$4" "$5"
    [ -z "${6:-}" ] || metadata orv_data custom_ui_cold_boot_opt "$6")"
}
# replacement TEXT: writes the file that names the replacement UI.
replacement() { mkdir -p "${REPLACEMENT%/*}"; printf '%s' "$1" >"$REPLACEMENT"; }
# frozen COMMAND...: stops the daemon while the command runs, so that it sees all changes at once.
frozen() {
  pid=$(tv status --json | jq .daemon.pid)
  kill -STOP "$pid"
  "$@"
  kill -CONT "$pid"
}
