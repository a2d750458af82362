#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# A month of television: forty packages are installed, updated, removed, killed, tuned to and reset. The
# daemon is killed a hundred times: half of them at rest, half in the middle of a package event, at a random
# moment. After each event the store, the channels, the unpacked trees, the settings key, the operations and
# the flag files must match the state of month_model.jq; after a kill in the middle, one of its possible
# states. MONTH_SEED=N runs another month.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/update_lib.sh"
here=$(cd "$(dirname "$0")" && pwd)

PACKAGES=40 IMAGES=4 DAYS=30 EVENTS=10 KILLS=100
seed=${MONTH_SEED:-20200229}
echo "seed $seed"
rng=$seed
# random N: sets $drawn to a number below N.
random() {
  rng=$(((rng * 1103515245 + 12345) % 2147483648))
  drawn=$((rng / 65536 % $1))
}

state=$work/state.json
# model EXPRESSION: evaluates it on the state before $event and prints the result.
model() { jq -cn -L "$here" --slurpfile state "$state" --argjson event "$event" "include \"month_model\"; \$state[0] | $1"; }
# follow: applies $event to the model; sets $changes to how often the channel list changes.
follow() {
  model 'event($event) | .n, .' >"$state.new"
  { read -r changes; cat >"$state"; } <"$state.new"
}
# look EXPRESSION FILE: evaluates it with $seen, the visible state of the TV, and $expected from FILE.
look() {
  trees='{}' metas='{}' between=
  for package in $images; do
    [ -d "$HBBTV/$package" ] || continue
    list=\"partial\"
    [ ! -f "$HBBTV/$package/app_type_file.txt" ] || read -r list <"$HBBTV/$package/app_type_file.txt" || true
    list=${list:-\"partial\"} list=${list#'{"app_type":'}
    trees="${trees%\}}$between\"$package\":${list%\}}}"
    between=,
  done
  between=
  for package in $images; do
    [ -d "$METADATA/$package" ] || continue
    metas="${metas%\}}$between\"$package\":true}"
    between=,
  done
  tv dump --json | jq -c -L "$here" --argjson trees "$trees" --argjson metas "$metas" --arg marker "$MARKER" \
    --slurpfile expected "$2" "include \"month_model\"; observed(\$trees; \$metas; \$marker) as \$seen | $1"
}
# agree WHAT: waits until the TV matches the model.
agree() {
  agree_deadline=$(($(date +%s) + 20 * slow))
  until [ "$(look '$seen == ($expected[0] | visible)' "$state")" = true ]; do
    [ "$(date +%s)" -lt "$agree_deadline" ] || { cp "$state" "$work/closest.json"; disagree "$1"; }
    pause
  done
  compared=$((compared + 1))
}
# disagree WHAT: prints the difference from the state in closest.json and fails.
disagree() {
  look '$expected[0] | visible' "$work/closest.json" | jq -S . >"$work/expected"
  look '$seen' "$work/closest.json" | jq -S . >"$work/seen"
  diff -U 3 "$work/expected" "$work/seen" || true
  printf 'the event: %s\n' "$event"
  die "seed $seed, day $day, event $number ($1): the TV does not match the model"
}
compared=0
forget() { : >"$TV_ROOT/log/daemon.log"; }
# comes TEXT TIMES: waits until the log holds the text at least TIMES times.
comes() {
  comes_deadline=$(($(date +%s) + 30 * slow))
  until [ "$(count_log "$1")" -ge "$2" ]; do
    [ "$(date +%s)" -lt "$comes_deadline" ] || die "seed $seed, day $day, event $number: $event: the log has \"$1\" $(count_log "$1") times, not $2"
    pause
  done
}
DECIDED="[Info] isBoostFile : "
COMPLETE="[Info] VELDRIN_EVENT_GET_VIRTUAL_SERVICES_COMPLETE event comming"

# contents INDEX KIND: the metadata of one version; each line is a category, a name and a value.
feeder() {
  echo "orv_type ch_feeder_standard standard"
  echo "orv_data channel_data_url http://a/$serial/c"
  echo "orv_data schedule_data_url http://a/$serial/s"
  case $((serial % 3)) in 0) echo "orv_data ch.app.boosting true" ;; esac
}
packaged() {
  echo "orv_type ch_feeder_standard extended"
  echo "orv_data channel_data_url file://channel.json"
  echo "orv_data schedule_data_url file://schedule.json"
}
one_of() { shift $(($1 % ($# - 1) + 1)); echo "$1"; }
banner() {
  echo "orv_type custom_ui_standard $(one_of $serial info channel info,channel channel,info nothing-known)"
  case $((serial % 4)) in 1) echo "orv_data custom_ui_cold_boot_opt invisible" ;; esac
}
guide() { echo "orv_type custom_ui_extended $(one_of $serial channel_list epg channel_list,epg)"; }
custom() { echo "orv_type ch_feeder_custom ${1:-plain}"; }
contents() {
  if [ "$1" -lt $IMAGES ]; then
    case $2 in
      0 | 1 | 2 | 3) packaged ;;
      4) packaged; custom extended ;;
      5) packaged; banner ;;
      6) feeder ;;
      7) custom extended ;;
      8) custom extended; feeder ;;
      9) ;;
    esac
    return
  fi
  case $2 in
    0 | 1) feeder ;;
    2) banner ;;
    3) guide ;;
    4) custom ;;
    5) feeder; banner ;;
    6) feeder; custom ;;
    7) guide; banner ;;
    8) feeder; banner; custom; guide ;;
    9) one_of $serial "" "orv_type ch_feeder_unknown x" "orv_data channel_data_url http://a/$serial/c" ;;
  esac
}
name_of() { printf 'monthpkg%02d' "$1"; }
# draw_package_event: picks an install, update or uninstall; sets $event and the matching $command.
draw_package_event() {
  random $PACKAGES; index=$drawn
  package=$(name_of "$index")
  serial=$((serial + 1))
  kind=install
  if [ -d "$APPS/$package" ]; then
    random 3
    kind=update
    [ "$drawn" != 0 ] || kind=uninstall
  fi
  if [ $kind = uninstall ]; then
    event="{\"kind\":\"uninstall\",\"package\":\"$package\"}"
    command="uninstall $package"
    return
  fi
  random 10
  contents "$index" "$drawn" | grep . >"$work/contents" || true
  entries=$(while read -r category name value; do metadata "$category" "$name" "$value"; done <"$work/contents")
  json=$(awk '{ i[$1] = i[$1] (i[$1] == "" ? "" : ",") "\"" $2 "\":\"" $3 "\"" }
    END { for (c in i) { printf "%s\"%s\":{%s}", s, c, i[c]; s = "," } }' "$work/contents")
  image=false directory=
  if [ "$index" -lt $IMAGES ]; then image=true directory=$work/images/$package; fi
  make_wgt "$work/$package.wgt" "$package" "$serial.0.0" "$entries" $directory
  event="{\"kind\":\"$kind\",\"package\":\"$package\",\"version\":\"$serial.0.0\",\"image\":$image,\"metadata\":{$json}}"
  command="$kind $work/$package.wgt"
}
# happens COMMAND...: runs the event without a kill, applies it to the model and compares.
happens() {
  forget
  "$@" >/dev/null
  follow
  comes "$COMPLETE" "$changes"
  handled
  agree "$event"
}
# Ends the daemon that replaced the killed one, too, at whatever point it is. If it is just writing the
# reset counters, the next daemon finds none; on a TV that has ever been reset it takes that for another
# reset: $wiped.
start_again() {
  tv daemon stop
  forget
  tv daemon start
  comes "$DECIDED" 1
  wiped=false
  [ "$(count_log "[ERROR] Failed to parse Json")" = 0 ] || [ $resets = 0 ] || wiped=true
  resets_seen=$(count_log "[Debug] Factory Reset")
  case $wiped,$resets_seen in
    true,1 | false,0) ;;
    *) die "seed $seed, day $day, event $number: $resets resets so far, $resets_seen at this start" ;;
  esac
}
# killed WHAT: the state that the daemon left must be one that the model calls possible; the model
# continues from that state.
killed() {
  start_again
  handled
  kills=$((kills + 1))
  model "killed(\$event; $wiped)" >"$work/possible.json"
  look 'first(($expected[0][] | select(visible == $seen)), null)' "$work/possible.json" >"$state.new"
  if [ "$(cat "$state.new")" = null ]; then
    jq -c '.[-1]' "$work/possible.json" >"$work/closest.json"
    disagree "killed $1, one of $(jq length "$work/possible.json")"
  fi
  mv "$state.new" "$state"
  compared=$((compared + 1))
}
killed_idle() {
  event='{"kind":"rest"}'
  tv daemon kill >/dev/null
  killed "at rest"
}
killed_somewhere() {
  random 2
  if [ "$drawn" = 0 ]; then killed_idle; else killed_within; fi
}
killed_within() {
  draw_package_event
  random 16
  delay=$(printf '0.%03d' $((drawn * 3)))
  tv pkg $command >/dev/null & installing=$!
  sleep "$delay" # chooses the moment of the kill; nothing is waited for
  tv daemon kill >/dev/null 2>&1 || true
  wait "$installing"
  killed "after $delay s"
}
tune_somewhere() {
  channels=$(tv channel list --json | jq -r '.[] | "\(.service_id) \(.pkg_id)"')
  [ -n "$channels" ] || return 0
  random "$(printf '%s\n' "$channels" | wc -l)"
  set -- $(printf '%s\n' "$channels" | sed -n "$((drawn + 1))p")
  event="{\"kind\":\"tune\",\"package\":\"$2\"}"
  forget
  tv tune "$1"
  comes "boosting hbbTV App" 1
  follow
  agree "tune"
}
reset_tv() { tv reset "$1"; resets=$((resets + 1)); }
reset_apps() { tv reset apps; handled; tv key set db/tellahub/reset/apps 1; }
power_cycled() { tv power-cycle; comes "$DECIDED" 1; }
crash_an_app() {
  app=$(tv app list --json | jq -r '[.[] | select(.running)] | .[0].id // ""')
  [ -z "$app" ] || tv app kill "$app" >/dev/null 2>&1 || true
}
one_event() {
  random 100
  if [ "$drawn" -lt 72 ]; then
    draw_package_event
    happens tv pkg $command
  elif [ "$drawn" -lt 82 ]; then tune_somewhere
  elif [ "$drawn" -lt 86 ]; then
    event='{"kind":"signal"}'
    forget; tv signal 25; comes "non boosting hbbTV App" 1
    happens true
  elif [ "$drawn" -lt 93 ]; then crash_an_app
  elif [ "$drawn" -lt 95 ]; then event='{"kind":"apps"}'; happens reset_apps
  elif [ "$drawn" -lt 98 ]; then event='{"kind":"power-cycle"}'; happens power_cycled
  elif [ "$drawn" -lt 99 ]; then event='{"kind":"factory"}'; reset_tv factory; happens power_cycled
  else event='{"kind":"service"}'; reset_tv service; happens power_cycled
  fi
}

day=0 number=0 serial=0 kills=0 resets=0 event='{"kind":"none"}'
start_tv --speed 20
needs_loop
comes "$DECIDED" 1
handled
images=
for index in 0 1 2 3; do
  package=$(name_of $index)
  images="$images $package"
  mkdir -p "$work/images/$package"
  cp "$ORV_SAMPLES/feederpack.Feeder.tmg" "$work/images/$package/$package.App.tmg"
done
jq -cn -L "$here" 'include "month_model"; empty_state' >"$state"
agree "a new TV"
while [ $day -lt $DAYS ]; do
  day=$((day + 1))
  number=0
  while [ $number -lt $EVENTS ]; do
    number=$((number + 1))
    one_event
    # A hundred kills in three hundred events.
    random 3
    if [ "$drawn" = 0 ] && [ $kills -lt $KILLS ]; then
      killed_somewhere
    fi
  done
  echo "  day $day: $(jq -r '.d | "\(.installed | length) packages, \(.rows | length) rows, \(.channels | length) channels, \(.trees | length) trees"' "$state"), $kills kills"
done
while [ $kills -lt $KILLS ]; do killed_somewhere; done
passed "a month, $compared comparisons, $kills kills: the TV always matched the model"

# Half an hour after a start, packages whose removal the daemon missed are cleaned up.
event='{"kind":"validation"}'
model power_cycle >"$state.new"; mv "$state.new" "$state"
tv down >/dev/null; tv up --speed 600
comes "[Debug] RUN_VALIDATION_TESTING" 1
handled
follow
agree "validation"
# A row without types creates no record, so only the package's next install removes it.
holds "every record belongs to an installed package" \
  '[.store[] | select(.variables != null) | .package_id] - (.packages | map(.id)) == []'
holds "nothing is mounted" '.mounts | length == 0'

for package in $(jq -r '.d.installed | keys[]' "$state"); do
  event="{\"kind\":\"uninstall\",\"package\":\"$package\"}"
  happens tv pkg uninstall "$package"
done
holds "finally no record is left" '.store | all(.variables == null)'
holds "the daemon of the last start is still running" '.daemon | .running and .restarts == 0'
the_end
