#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Metadata far larger than real packages have: the daemon keeps what the types need, and keeps running.
. "$(dirname "$0")/lib.sh"

tv up
entries=$(metadata orv_type ch_feeder_standard standard
  metadata orv_data channel_data_url 'http://x/c?a=&quot;1&quot;&#10;&amp;b=2&#9;end'
  metadata orv_data schedule_data_url "http://x/$(head -c 65536 /dev/zero | tr '\0' s)"
  i=0; while [ $i -lt 10000 ]; do
    printf '<tizen:metadata key="%sorv_data/key%d&quot;&#10;&#xFF;" value="v%d&quot;&#10;&#xE4;&#x20AC;"/>\n' "$PREFIX" $i $i
    i=$((i + 1))
  done)
make_wgt "$work/large.wgt" largeapp01 1.0.0 "$entries"
tv pkg install "$work/large.wgt"
reached "the package is stored" "$(stored largeapp01)" 60
holds "the 64 KiB text is complete" '.store[0].variables.orv_data.schedule_data_url | length == 65545'
holds "quotes and newlines are kept" '.store[0].variables.orv_data.channel_data_url == "http://x/c?a=\"1\"\n&b=2\tend"'
holds "only the keys of the type are stored" '.store[0].variables.orv_data | keys == ["ch.app.boosting", "channel_data_url", "schedule_data_url"]'
reached "the framework has the record" '.channels | any(.pkg_id == "largeapp01" and (.schedule_data_url | length == 65545))'
logged "each entry is logged" "sDataKey : key9999" 

quoted=$(metadata orv_type ch_feeder_standard "it's"; metadata orv_data channel_data_url "http://x/'")
make_wgt "$work/quote.wgt" quoteapp01 1.0.0 "$quoted"
forget_log
tv pkg install "$work/quote.wgt"
logged "a single quote makes the insert fail" "[ERROR] insert error."
logged "the cache logs the failed insert" "[ERROR] AppInfoDB::InsertNewRecord() return false."
logged "the creation fails" "[ERROR] AddAppInfoToAppCache() return false."
holds "there is no row" '.store | length == 1'
tv daemon restart
holds "the daemon keeps running, and the other record is loaded" '.daemon.running and (.store | length == 1)'

nameless=$(printf '<tizen:metadata key="%sorv_type" value="x"/>' "$PREFIX"; metadata orv_type ch_feeder_standard standard)
make_wgt "$work/nameless.wgt" nameless01 1.0.0 "$nameless"
forget_log
tv pkg install "$work/nameless.wgt"
logged "a key without a name is logged as an exception" "[ERROR] exception : "
reached "the entries after it are used" "$(stored nameless01)"
the_end
