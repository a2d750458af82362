# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Sourced after lib.sh by the scenarios that lead packages from one version to the next.

# The prefix is the desk's; the names are those of config.xml.
is_type() { metadata orv_type "$1" "$2"; }
has_data() { metadata orv_data "$1" "$2"; }

MARKER=markerpkg1
# start_tv [OPTIONS]: the TV with the package by which `handled` knows where the daemon is.
start_tv() {
  tv up "$@"
  make_wgt "$work/marker.wgt" "$MARKER" 1.0.0 ""
  tv pkg install "$work/marker.wgt" >/dev/null
}
# handled: returns when the daemon is through with all package events before. It takes them in order,
# and that of the marker, an ordinary package, is now the last.
handled() {
  handled_before=$(count_log "[Debug] $MARKER is not ORV Type.")
  tv pkg update "$work/marker.wgt" >/dev/null
  handled_deadline=$(($(date +%s) + 60 * slow))
  until [ "$(count_log "[Debug] $MARKER is not ORV Type.")" -gt "$handled_before" ]; do
    [ "$(date +%s)" -lt "$handled_deadline" ] || die "the daemon did not come to the end of its events"
    pause
  done
}
# version PACKAGE VERSION ENTRIES: puts that version of the package on the TV, and waits for the daemon.
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

# chain: how the daemon fitted the chain of layers, from the log.
chain() {
  log_texts | grep -v "$MARKER" |
    grep -E '^\[[A-Za-z]+\] (\[(Removable|Additional|Intersection|METADATA_ORV_TYPE)\]|rTargetType|Invalid AppType|Cannot (extract|create)|ExtractAppInfo|rPackageID : [^,]*, eType)' || true
}
# row PACKAGE: version, types and data in one line; empty without a row.
row() { tv store --json | jq -rcS --arg p "$1" '.[] | select(.package_id == $p) | "\(.version) \(.variables)"'; }
# effects: what the platform was asked to change since forget_log, without the results that are as
# they should be.
effects() {
  calls '^(FCOrvAppInfoAPI|vconf_set_str|app_operation_(set|reset)|PS_)' |
    sed -e 's/\\n, /, /' -e 's/\\n)/)/' -e 's/ = \(true\|0\)$//' -e 's/^FCOrvAppInfoAPI:://' \
      -e 's/^vconf_set_str(db.orv_channel.custom_ui_type, /announce(/'
}
# announced MEMBER: that member of the settings key by which custom UIs are announced.
announced() { tv key get -r db/orv_channel/custom_ui_type | jq -cS --arg m "$1" '.[$m]'; }
# answers OPERATION: the app that answers it.
answers() { tv dump --json | jq -r --arg o "/$1" '.operations[] | select(.operation | endswith($o)).app'; }
