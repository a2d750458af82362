# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# A model of a TV with the daemon: its state after each event.
#
#   d: what survives the daemon: installed packages, rows, channels, unpacked trees, metadata
#      directories, images left mounted, the announcement, the operations, the flag files, the tuner
#   m: what does not: the records, layers innermost first, and the metadata as first read
#   n: how often the channel list has changed, and therefore how often all records run again
#   steps: with `trace`, every intermediate d: a kill may leave any of them behind
#
# A layer: t is its type; v, d are its value and data in force; sv, sd those staged for the next update.

def own: "/opt/usr/apps/com.kalmora.tv.orv-enabler/shared/data/";
def known: ["ch_feeder_custom", "ch_feeder_standard", "custom_ui_extended", "custom_ui_standard"];
def urls: ["channel_data_url", "schedule_data_url"];
def empty_state: {d: {installed: {}, rows: {}, channels: {}, trees: {}, metas: {}, mounted: [], announced: {},
    operations: {}, flag: false, ready: false, tuned: null, last: ""},
  m: {records: {}, seen: {}}, n: 0};

# Every change of what survives the daemon goes through here.
def step(f): f | if .trace then .steps += [.d] else . end;

def layer_count($p): .m.records[$p].layers | length;
# Applies f to the layers of a record from the inside out; f maps [state, index] to the next state.
def inside_out($p; f): reduce range(0; layer_count($p)) as $i (.; [., $i] | f);

def new_layer($t; $v):
  {t: $t, v: $v, sv: "",
   d: ({ch_feeder_standard: {channel_data_url: "", schedule_data_url: "", "ch.app.boosting": ""},
        ch_feeder_custom: {expiration_date_str: ""},
        custom_ui_standard: {custom_ui_cold_boot_opt: ""},
        custom_ui_extended: {custom_ui_cold_boot_opt: ""}}[$t]),
   sd: (if $t == "ch_feeder_standard" then {channel_data_url: "", schedule_data_url: "", "ch.app.boosting": ""} else {} end)};
# The record for this metadata of a package or a row; null without a known type.
def new_record($version; $metadata):
  [$metadata.orv_type // {} | to_entries | sort_by(.key)[] | select(.key as $k | known | index($k)) | new_layer(.key; .value)]
  | if length == 0 then null else
      reduce ($metadata.orv_data // {} | to_entries[]) as $e (.; map(if .d | has($e.key) then .d[$e.key] = $e.value else . end))
      | {version: $version, layers: .}
    end;
def row_of:
  (.layers | map({(.t): .v}) | add // {}) as $types
  | (reduce (.layers | reverse)[] as $l ({}; . + $l.d)) as $data
  | {version, variables: (({} | if $types != {} then .orv_type = $types else . end | if $data != {} then .orv_data = $data else . end)
      | if . == {} then null else . end)};
def write_row($p): step(.d.rows[$p] = (.m.records[$p] | row_of));

# Packaged data: 1 the tree, 2 the metadata. A tree is the list of its users, or "partial" without a list.
def mask($value; $data):
  (if $value == "extended" then 1 else 0 end) + (if any(urls[]; $data[.] // "" | startswith("file:")) then 2 else 0 end);
def unpack($p; $type; $mask; $started):
  if .d.trees[$p] then
    if $started or .d.trees[$p] == "partial" or (.d.trees[$p] | index($type)) then . else step(.d.trees[$p] += [$type]) end
  # An image that a killed daemon left mounted cannot be mounted again; another image can.
  elif .d.installed[$p].image and (. as $s | .d.mounted | index([[$p, $s.d.installed[$p].version]]) | not) then
    step(.d.mounted += [[$p, .d.installed[$p].version]])
    | step(.d.trees[$p] = "partial")
    | step(.d.mounted |= .[:-1])
    | if $mask >= 2 then step(.d.metas[$p] = true) else . end
    | step(.d.trees[$p] = [$type])
  else . end;
def drop_tree($p): step(.d.trees[$p] = "partial") | step(del(.d.trees[$p]));
def clear_away($p; $type; $mask):
  (if $mask >= 2 and .d.metas[$p] then step(del(.d.metas[$p])) else . end)
  | if $mask % 2 == 0 or (.d.trees[$p] | not) then .
    elif .d.trees[$p] == "partial" or (.d.trees[$p] - [$type]) == [] then drop_tree($p)
    else step(.d.trees[$p] -= [$type]) end;
def point_urls($p; $i; $side):
  if .d.metas[$p] then
    reduce urls[] as $u (.; .m.records[$p].layers[$i][$side][$u] |= .[0:6] + own + "metadata/" + $p + .[6:])
  else . end;

def put_channel($p; $data; $must):
  if $must and (.d.channels[$p] | not) then . else step(.d.channels[$p] = [$data.channel_data_url, $data.schedule_data_url]) | .n += 1 end;
def remove_channel($p): if .d.channels[$p] then step(del(.d.channels[$p])) else . end;

def announcement($p; $l): {pkg_id: $p, app_id: ($p + ".App"), widget_id: ($p + ".App"),
  cold_boot_opt: (if $l.d.custom_ui_cold_boot_opt == "" then "default" else $l.d.custom_ui_cold_boot_opt end)}
  + if $l.t == "custom_ui_standard" then {banner_types: $l.v} else {} end;
def member($t): if $t == "custom_ui_standard" then "CustomBanner" else "CustomApp" end;
def announce($p; $l): step(.d.announced[member($l.t)] = announcement($p; $l));
def withdraw($t): step(.d.announced[member($t)] |= if . == null then null else {} end);
def names($known): split(",") | map(select(. as $x | $known | index($x)));
def screens: names(["channel_list", "epg"]) | map({channel_list: "channel-list", epg: "epg"}[.]);
def take_screens($p; $v): reduce ($v | screens)[] as $o (.; if .d.operations[$o] == $p + ".App" then . else step(.d.operations[$o] = $p + ".App") end);
def give_screens($p; $v): reduce ($v | screens)[] as $o (.; if .d.operations[$o] == $p + ".App" then step(del(.d.operations[$o])) else . end);

def run($p; $started):
  inside_out($p; . as [$s, $i] | $s | .m.records[$p].layers[$i] as $l
    | if $l.t == "ch_feeder_standard" then
        mask($l.v; $l.d) as $mask
        | (if $mask > 0 then unpack($p; $l.t; $mask; $started) else . end)
        | (if $mask >= 2 then point_urls($p; $i; "d") else . end)
        | if $started then . else put_channel($p; .m.records[$p].layers[$i].d; false) end
      elif $l.t == "ch_feeder_custom" then
        if $l.v == "extended" then unpack($p; $l.t; 1; $started) else . end
      else
        (if $started then . else announce($p; $l) end)
        | if $l.t == "custom_ui_extended" then take_screens($p; $l.v) else . end
      end);
def stop($p):
  inside_out($p; . as [$s, $i] | $s | .m.records[$p].layers[$i] as $l
    | if $l.t == "ch_feeder_standard" then remove_channel($p)
      elif $l.t == "ch_feeder_custom" then .
      else (if $l.t == "custom_ui_extended" then give_screens($p; $l.v) else . end) | withdraw($l.t) end);
def release($p; $l):
  if $l.t == "ch_feeder_standard" then remove_channel($p) | mask($l.v; $l.d) as $mask | if $mask > 0 then clear_away($p; $l.t; $mask) else . end
  elif $l.t == "ch_feeder_custom" and $l.v == "extended" then clear_away($p; $l.t; 1)
  else . end;
def forget($p):
  .m.records[$p].layers as $layers
  | del(.m.records[$p])
  | step(del(.d.rows[$p]))
  | if $layers[0] == null then . else reduce ($layers | reverse)[] as $l (.; release($p; $l)) end;

def option: "custom_ui_cold_boot_opt";
def move_option($p; $i): .m.records[$p].layers[$i] |= (.v = .sv | .sd[option] = (.sd[option] // "") | .d[option] = .sd[option]);
def update_layer($p; $i):
  .m.records[$p].layers[$i] as $l
  | if $l.t == "ch_feeder_standard" then
      mask($l.v; $l.d) as $old | mask($l.sv; $l.sd) as $new
      | (if $old > 0 then clear_away($p; $l.t; $old) else . end)
      | (if $new > 0 then unpack($p; $l.t; $new; false) else . end)
      | (if $new >= 2 then point_urls($p; $i; "sd") else . end)
      | put_channel($p; .m.records[$p].layers[$i].sd; true)
      | .m.records[$p].layers[$i] |= (.sv = "" | .sd.channel_data_url = "" | .sd.schedule_data_url = "")
    elif $l.t == "ch_feeder_custom" then
      if $l.v == $l.sv then .
      else (if $l.sv == "extended" then unpack($p; $l.t; 1; false) else clear_away($p; $l.t; 1) end)
        | .m.records[$p].layers[$i].sv = "" end
    elif $l.sv == "" then .
    elif $l.t == "custom_ui_standard" then
      ["info", "channel"] as $known
      | if ($l.v | names($known)) == ($l.sv | names($known)) and $l.d[option] == ($l.sd[option] // "") then
          .m.records[$p].layers[$i].sd[option] = ($l.sd[option] // "")
        else
          move_option($p; $i) | announce($p; .m.records[$p].layers[$i])
          | .m.records[$p].layers[$i] |= (.sv = "" | .sd[option] = "")
        end
    elif $l.v == $l.sv and $l.d[option] == ($l.sd[option] // "") then
      .m.records[$p].layers[$i].sd[option] = ($l.sd[option] // "")
    else
      give_screens($p; $l.v) | move_option($p; $i) | take_screens($p; $l.sv) | .m.records[$p].layers[$i].sv = ""
    end;

# Adds the package's metadata to what the daemon has read before; earlier values win.
def see($p): .d.installed[$p].metadata as $new
  | .m.seen[$p] = ((.m.seen[$p] // {}) as $old
      | reduce ($new | keys[]) as $c ($old; .[$c] = ($new[$c] + (.[$c] // {}))));
def create($p):
  see($p)
  | if .m.seen[$p] == {} then .
    else new_record(.d.installed[$p].version; .m.seen[$p]) as $record
      | if $record == null then del(.m.seen[$p])
        else
          .m.records[$p] = $record
          # An existing row is deleted before the new one is written.
          | (if .d.rows[$p] then step(del(.d.rows[$p])) else . end)
          | write_row($p) | run($p; false)
        end
    end;
def fit($p):
  (.m.seen[$p].orv_type) as $new
  | (.m.records[$p].layers | map({(.t): .v}) | add) as $old
  | reduce ($old | keys - ($new | keys))[] as $t (.;
      .m.records[$p].layers as $layers
      | ($layers | map(.t) | index($t)) as $i
      | .m.records[$p].layers |= del(.[$i])
      | (if $i == ($layers | length) - 1 then write_row($p) else . end)
      | release($p; $layers[$i]))
  | .m.records[$p].layers |= map(if $old[.t] != null and $new[.t] != null then .sv = $new[.t] else . end)
  | reduce (.m.seen[$p].orv_data // {} | to_entries[]) as $e (.;
      .m.records[$p].layers |= map(if .sd | has($e.key) then .sd[$e.key] = $e.value else . end));
def remove($p): if .m.records[$p] then stop($p) | forget($p) else . end;
def update($p):
  if .m.records[$p] == null then create($p)
  else see($p)
    | if .m.seen[$p].orv_type == null then remove($p)
      elif .m.records[$p].layers == [] then forget($p) | create($p)
      else fit($p) | reduce range(0; layer_count($p)) as $i (.; update_layer($p; $i)) | write_row($p) end
  end;

def run_all($first): reduce ($first + (.m.records | keys))[] as $p (.; run($p; true));
def feeds_itself($p): any(.m.records[$p].layers[]; .t == "ch_feeder_custom" and .v != "");
# The channel list has changed: all records run, the custom feeders first.
def run_changed: reduce range(0; .n) as $i (.; run_all(. as $s | .m.records | keys | map(select(. as $p | $s | feeds_itself($p)))));
def boosts($p): any((.m.records[$p].layers // [])[]; .t == "ch_feeder_standard" and .d["ch.app.boosting"] == "true");

# The decision about the first screen is part of the start: it sets the flag if the channel boosts.
def start:
  .m = {records: {}, seen: {}}
  | reduce (.d.rows | to_entries[]) as $e (.; new_record($e.value.version; $e.value.variables // {}) as $r
      | if $r then .m.records[$e.key] = $r else . end)
  | run_all([.m.records | keys[]])
  | (.d.last == "vc-service" and .d.tuned != null and .d.channels[.d.tuned] != null and boosts(.d.tuned)) as $boosting
  | (if .d.flag and ($boosting | not) then .d.ready = true else . end)
  | .d.flag = $boosting;
def power_cycle:
  .d.operations = {} | .d.ready = false | .d.mounted = []
  | (if .d.tuned != null and .d.channels[.d.tuned] then .d.last = "vc-service" else . end)
  | start;

def package_event($e):
  if $e.kind == "uninstall" then del(.d.installed[$e.package]) | remove($e.package)
  else .d.installed[$e.package] = {version: $e.version, metadata: $e.metadata, image: $e.image}
    | if $e.kind == "install" then create($e.package) else update($e.package) end
  end
  | run_changed;
def event($e):
  .n = 0
  | if $e.kind == "install" or $e.kind == "update" or $e.kind == "uninstall" then package_event($e)
    elif $e.kind == "tune" then .d.tuned = $e.package | .d.flag = boosts($e.package)
    elif $e.kind == "signal" then .d.flag = false
    elif $e.kind == "power-cycle" then power_cycle
    elif $e.kind == "factory" or $e.kind == "service" then .d.rows = {} | power_cycle
    elif $e.kind == "apps" then
      run_all([.m.records | keys[]]) | reduce (.m.records | keys)[] as $p (.; forget($p))
    elif $e.kind == "validation" then
      reduce (.m.records | keys)[] as $p (.; if .d.installed[$p] then . else forget($p) end)
    else error("an unknown event: " + $e.kind) end;
# Every d while f runs, including the first and the last.
def ways(f): [.d] + (.trace = true | .steps = [] | f | .steps + [.d]);
# The possible states after the daemon was killed, at rest or during a package event, and restarted.
# The event was lost, or carried out up to any step, by the killed daemon or by its replacement. The
# replacement may have been stopped during its own start; the daemon after that was not.
def killed($e; $wiped):
  def came: if $e.kind == "uninstall" then del(.d.installed[$e.package])
    elif $e.kind == "rest" then .
    else .d.installed[$e.package] = {version: $e.version, metadata: $e.metadata, image: $e.image} end;
  def during: if $e.kind == "rest" then [.d] else [(came | .d)] + (.n = 0 | came | ways(package_event($e))) end | unique;
  def start_on: {d: ., m: {}, n: 0} | start;
  .d.flag as $flag
  | (start | during) as $by_the_next
  | (during | map({d: ., m: {}, n: 0} | ways(start)) | add) + $by_the_next
  | unique
  | map((if $wiped then .rows = {} else . end) | start_on)
  # The replacement may have decided about the first screen before it was stopped.
  | (if $flag then . + map(.d.ready = true) else . end)
  | unique;

# The part of the model that is visible from outside.
def visible: .d | {rows, channels, trees, metas, mounted: (.mounted | map(.[0]) | sort), announced, operations, flag, ready, packages: (.installed | map_values(.version))};
# The same from `tv dump --json`; $trees and $metas are read from the directories.
def observed($trees; $metas; $marker):
  . as $dump
  | {rows: (.store | map({key: .package_id, value: {version, variables}}) | from_entries),
     channels: (.channels | map({key: .pkg_id, value: [.channel_data_url, .schedule_data_url]}) | from_entries),
     trees: $trees, metas: $metas,
     mounted: (.mounts | map(.image | capture("/(?<p>[^/]*)/res/").p) | sort),
     announced: (.keys["db/orv_channel/custom_ui_type"] | if . == "" then {} else fromjson end),
     operations: (.operations | map({key: (.operation | split("/") | last), value: .app}) | from_entries),
     flag: (.files | any(keys[]; endswith("/hbb_boost"))),
     ready: (.files | has("/tmp/hbb_ready")),
     packages: (.packages | map(select(.id != $marker) | {key: .id, value: .version}) | from_entries)};
