#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# The platform calls that `tv explain` predicts for each sample package are the calls that the daemon
# makes when the package is installed, updated and removed: it makes every predicted call, and of the
# calls that any sample's prediction names for that occasion it makes no others.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/update_lib.sh"

start_tv
logged "network time starts the schedule" "[Debug] [EVENT_START_SCHEDULER]"
handled

for sample in "$ORV_SAMPLES"/*.wgt; do
  tv explain --json "$sample" >"$work/$(basename "$sample" .wgt).explained"
done
jq -s '[.[].effects[] | select(.call != "")] | group_by(.occasion)
       | map({key: .[0].occasion, value: (map(.call) | unique)}) | from_entries' \
  "$work"/*.explained >"$work/covered.json"
jq -s --arg marker "$MARKER" 'map(.id) + [$marker]' "$work"/*.explained >"$work/packages.json"
equal "some sample predicts calls for each occasion" '["install","removal","update"]' \
  "$(jq -c keys "$work/covered.json")"

# differences OCCASION: the predicted calls that are missing since $journal_from, as "missing CALL
# ARGUMENT", and those that no prediction names, as "unpredicted CALL ARGUMENTS". The daemon reads
# every package, so reading one that is not channel-bound is not an effect. Calls about other packages
# do not count: the low-memory check of an earlier sample may still launch its app, or an empty id.
differences() {
  tv journal --json >"$work/journal.json"
  jq -rs --argjson from "$journal_from" --arg occasion "$1" --slurpfile others "$work/packages.json" \
    --slurpfile explained "$explained" --slurpfile covered "$work/covered.json" '
    ($others[0] - [$explained[0].id]) as $others
    | [.[] | select(.seq > $from) | {call, text: (.args | map(tostring) | join(" "))}
         | select(.text | any(contains($others[]); .) | not)] as $made
    | [$explained[0].effects[] | select(.occasion == $occasion and .call != "")] as $predicted
    | def is_effect($p): . as $m | $m.call == $p.call and ($m.text | contains($p.argument));
      ($predicted[] | . as $p | select(any($made[]; is_effect($p)) | not)
        | "missing \(.call) \(.argument)"),
      ($made[] | . as $m
        | select(.call | IN($covered[0][$occasion][]))
        | select(.call != "app_control_set_app_id" or (.text | contains($explained[0].id)))
        | select($explained[0].channel_bound or .call != "package_manager_get_package_info")
        | select(any($predicted[]; . as $p | $m | is_effect($p)) | not)
        | "unpredicted \(.call) \(.text)")' "$work/journal.json" >"$work/differences" || die "cannot compare"
  sort -u "$work/differences"
}
nothing_is_missing() { ! differences "$1" | grep -q ^missing; }
# as_predicted WHAT OCCASION: the schedule and the main loop make some of the calls after the event
# has been handled, so the predicted ones may take a moment. A call that comes too late for the check
# is found by the next one.
as_predicted() {
  handled
  comes_true "$1: $(differences "$2")" nothing_is_missing "$2"
  equal "$1" "" "$(differences "$2")"
  journal_from=$(jq -s 'map(.seq) | max // 0' "$work/journal.json")
}

journal_from=$(journal_seq)
for sample in "$ORV_SAMPLES"/*.wgt; do
  name=$(basename "$sample" .wgt)
  explained=$work/$name.explained
  package=$(jq -r .id "$explained")
  tv pkg install "$sample" >/dev/null 2>&1
  as_predicted "$name: the install" install
  tv pkg update "$sample" >/dev/null 2>&1
  as_predicted "$name: the update" update
  tv pkg uninstall "$package" >/dev/null
  as_predicted "$name: the removal" removal
  holds "$name: nothing is left" "$(stored "$package") | not"
done
the_end
