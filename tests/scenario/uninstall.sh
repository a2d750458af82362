#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Uninstall: stop, then release; the framework is asked twice, row and trees go.
. "$(dirname "$0")/lib.sh"

tv up
needs_loop
tv pkg install "$ORV_SAMPLES/feeder-packaged.wgt"
tv pkg install "$ORV_SAMPLES/feeder-web.wgt"
reached "both are stored" '.store | length == 2'
reached "both are at the framework" '.channels | length == 2'
package=$(tv dump --json | jq -r '.store[] | select(.variables.orv_type.ch_feeder_standard == "extended") | .package_id')
forget_log
tv pkg uninstall "$package"
reached "the row is gone" '.store | length == 1'
reached "the record is gone" '.channels | length == 1'
reached "the trees are gone" "[.files | keys[] | select(contains(\"/$package\"))] | length == 0"
absent "the hbbtv tree" "$HBBTV/$package"
absent "the metadata tree" "$METADATA/$package"
record="{\"pkg_id\":\"$package\"}"
equal "the framework was asked twice" \
"FCOrvAppInfoAPI::RemoveAppInfo
FCOrvAppInfoAPI::RemoveAppInfo" \
"$(calls '^FCOrvAppInfoAPI' | sed 's/(.*//')"
calls '^FCOrvAppInfoAPI' | grep -F "$record" >/dev/null || die "the record is not $record"
passed "with the package id alone"
logged "the second time it refused" "[ERROR] FCOrvAppInfoAPI::RemoveAppInfo() return false."

forget_log
tv pkg install "$ORV_SAMPLES/ordinary.wgt"
ordinary=$(tv pkg list --json | jq -r '.[] | .id' | grep -v feeder | head -1)
tv pkg uninstall "$ordinary"
logged "an uninstall of an unrelated package is harmless" "[Debug] Cannot find target App(rPackageID : $ordinary)"
logged "its removal finds nothing" "[ERROR] Cannot find target AppInfo."
holds "the other app stays" '.store | length == 1'
exits "an id that is not there" 4 tv pkg uninstall nosuchpkg0
the_end
