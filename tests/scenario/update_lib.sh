# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Sourced after lib.sh by the scenarios that update packages from one version to the next.

# Metadata entries of config.xml.
is_type() { metadata orv_type "$1" "$2"; }
has_data() { metadata orv_data "$1" "$2"; }

MARKER=markerpkg1
# start_tv [OPTIONS]: starts the TV and installs the marker package that `handled` needs.
start_tv() {
  tv up "$@"
  make_wgt "$work/marker.wgt" "$MARKER" 1.0.0 ""
  tv pkg install "$work/marker.wgt" >/dev/null
}
# handled: waits until the daemon has handled all package events so far. It handles them in order, and
# the last one is now that of the marker, an ordinary package.
handled() {
  handled_before=$(count_log "[Debug] $MARKER is not ORV Type.")
  tv pkg update "$work/marker.wgt" >/dev/null
  handled_deadline=$(($(date +%s) + 60 * slow))
  until [ "$(count_log "[Debug] $MARKER is not ORV Type.")" -gt "$handled_before" ]; do
    [ "$(date +%s)" -lt "$handled_deadline" ] || die "the daemon did not handle all its events"
    pause
  done
}
# version PACKAGE VERSION ENTRIES: installs or updates to that version and waits for the daemon.
version() {
  make_wgt "$work/$1.wgt" "$1" "$2" "$3"
  if [ -d "$APPS/$1" ]; then
    tv pkg update "$work/$1.wgt" >/dev/null
  else
    tv pkg install "$work/$1.wgt" >/dev/null
  fi
  handled
}
remove() { tv pkg uninstall "$1" >/dev/null; handled; }

# chain: how the daemon adapted the chain of layers, from the log.
chain() {
  log_texts | grep -v "$MARKER" |
    grep -E '^\[[A-Za-z]+\] (\[(Removable|Additional|Intersection|METADATA_ORV_TYPE)\]|rTargetType|Invalid AppType|Cannot (extract|create)|ExtractAppInfo|rPackageID : [^,]*, eType)' || true
}
# row PACKAGE: version, types and data on one line; empty without a row.
row() { tv store --json | jq -rcS --arg p "$1" '.[] | select(.package_id == $p) | "\(.version) \(.variables)"'; }
# effects: the platform calls since forget_log that change something; results are shown only if they
# are failures.
effects() {
  calls '^(FCOrvAppInfoAPI|vconf_set_str|app_operation_(set|reset)|PS_)' |
    sed -e 's/\\n, /, /' -e 's/\\n)/)/' -e 's/ = \(true\|0\)$//' -e 's/^FCOrvAppInfoAPI:://' \
      -e 's/^vconf_set_str(db.orv_channel.custom_ui_type, /announce(/'
}
# announced MEMBER: that member of the settings key that announces custom UIs.
announced() { tv key get -r db/orv_channel/custom_ui_type | jq -cS --arg m "$1" '.[$m]'; }
# answers OPERATION: the app that owns it.
answers() { tv dump --json | jq -r --arg o "/$1" '.operations[] | select(.operation | endswith($o)).app'; }
