#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Uninstall: stop, then release; the framework is called twice, row and trees are deleted.
. "$(dirname "$0")/lib.sh"

tv up
needs_loop
tv pkg install "$ORV_SAMPLES/feeder-packaged.wgt"
tv pkg install "$ORV_SAMPLES/feeder-web.wgt"
reached "both are stored" '.store | length == 2'
reached "both are in the framework" '.channels | length == 2'
package=$(tv dump --json | jq -r '.store[] | select(.variables.orv_type.ch_feeder_standard == "extended") | .package_id')
forget_log
tv pkg uninstall "$package"
reached "the row is gone" '.store | length == 1'
reached "the record is gone" '.channels | length == 1'
reached "the trees are gone" "[.files | keys[] | select(contains(\"/$package\"))] | length == 0"
absent "the hbbtv tree" "$HBBTV/$package"
absent "the metadata tree" "$METADATA/$package"
record="{\"pkg_id\":\"$package\"}"
equal "the framework is called twice" \
"FCOrvAppInfoAPI::RemoveAppInfo
FCOrvAppInfoAPI::RemoveAppInfo" \
"$(calls '^FCOrvAppInfoAPI' | sed 's/(.*//')"
calls '^FCOrvAppInfoAPI' | grep -F "$record" >/dev/null || die "the record is not $record"
passed "the record contains only the package id"
logged "the framework refuses the second call" "[ERROR] FCOrvAppInfoAPI::RemoveAppInfo() return false."

forget_log
tv pkg install "$ORV_SAMPLES/ordinary.wgt"
ordinary=$(tv pkg list --json | jq -r '.[] | .id' | grep -v feeder | head -1)
tv pkg uninstall "$ordinary"
logged "an uninstall of an unrelated package is harmless" "[Debug] Cannot find target App(rPackageID : $ordinary)"
logged "the removal finds no record" "[ERROR] Cannot find target AppInfo."
holds "the other app is kept" '.store | length == 1'
exits "an id that is not installed" 4 tv pkg uninstall nosuchpkg0
the_end
