#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# A launch by hand or by the daemon passes the operation and the extra data to the program.
. "$(dirname "$0")/lib.sh"

DEFAULT=http://tizen.org/appcontrol/operation/default
given() { # APP: its operation and data
  pid=$(tv app list --json | jq --arg app "$1" '.[] | select(.id == $app).pid')
  tr '\0' '\n' <"/proc/$pid/environ" | sed -n 's/^TV_OPERATION=//p; s/^TV_DATA=//p' | sort
}
runs() { printf '.apps | any(.id == "%s" and .running)' "$1"; }
tv up --offline
cat >"$work/first" <<'SH'
#!/bin/sh
exec sleep 86400
SH
chmod +x "$work/first"
tv app add com.kalmora.tv.csfs "$work/first"

echo "by hand"
tv app launch --operation http://example.org/view com.kalmora.tv.csfs page=7 'text=a "b" = c' >"$work/out"
equal "operation and data arrive" 'http://example.org/view
{"page":"7","text":"a \"b\" = c"}' "$(given com.kalmora.tv.csfs)"
tv app launch com.kalmora.tv.csfs page=8 >"$work/out"
equal "a launch of a running app changes nothing" '{"page":"7","text":"a \"b\" = c"}' "$(given com.kalmora.tv.csfs | tail -n 1)"
tv app kill com.kalmora.tv.csfs
reached "the killed app is gone" "$(runs com.kalmora.tv.csfs) | not"

echo "by the daemon"
tv key set -t int memory/hbbtv_status 6
reached "the first screen is launched" "$(runs com.kalmora.tv.csfs)"
equal "the default operation, no data" "$DEFAULT
{}" "$(given com.kalmora.tv.csfs)"
tv pkg install "$ORV_SAMPLES/banner.wgt"
reached "a custom UI is preloaded" "$(runs bannerapp1.Banner)"
equal "the custom UI is launched in the background" "$DEFAULT
{\"http://kalmora.com/appcontrol/data/launch_mode\":\"backgroundAtStartup\"}" "$(given bannerapp1.Banner)"
the_end
