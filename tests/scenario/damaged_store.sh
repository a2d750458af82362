#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# How the daemon starts with a damaged store, for every kind of damage.
. "$(dirname "$0")/lib.sh"

COLUMNS="package_id TEXT PRIMARY KEY, app_id TEXT, widget_id TEXT, service_id TEXT, version TEXT, variables TEXT, extra_data1 TEXT, extra_data2 TEXT, extra_data3 TEXT, extra_data4 TEXT"
good() { printf "INSERT INTO appinfo VALUES('%s','%s.App','%s.App','','1.0','{\"orv_type\":{\"ch_feeder_standard\":\"standard\"},\"orv_data\":{\"ch.app.boosting\":\"\",\"channel_data_url\":\"http://x/c\",\"schedule_data_url\":\"http://x/s\"}}','','','','');" "$1" "$1" "$1"; }
sql() { rm -f "$STORE"; sqlite3 "$STORE" "$1"; }
start() { forget_log; tv daemon start; }
fresh() { # WHAT: the store is empty and has the ten columns
  equal "$1: the table is the daemon's own" "CREATE TABLE appinfo($COLUMNS)" "$(sqlite3 "$STORE" "SELECT sql FROM sqlite_master WHERE name='appinfo'")"
  equal "$1: no rows" 0 "$(sqlite3 "$STORE" 'SELECT count(*) FROM appinfo')"
}
works() { # WHAT: the daemon stores a new install
  web_feeder "$work/new.wgt" newfeeder1
  tv pkg uninstall newfeeder1 >/dev/null 2>&1 || true
  tv pkg install "$work/new.wgt"
  reached "$1: an install is stored" "$(stored newfeeder1)"
}
damage() { tv daemon stop; }

tv up
damage; rm -f "$STORE"; start
fresh missing; silent "missing: no repair" "[Debug] DB will be removed and reopen DB"
logged "missing: the length of the file" "[Debug] length = -1"; works missing

damage; : >"$STORE"; start
logged "empty: repaired" "[Debug] DB will be removed and reopen DB"; fresh empty; works empty

damage; printf 'this is no database, and it is long enough to be looked at as one' >"$STORE"; start
logged "not SQLite: repaired" "[Debug] DB will be removed and reopen DB"; fresh "not SQLite"; works "not SQLite"

damage; sql "CREATE TABLE appinfo($COLUMNS); $(good keptapp001)"
size=$(stat -c %s "$STORE"); dd if=/dev/urandom of="$STORE" bs=1 seek=$((size - 4096)) count=4000 conv=notrunc status=none; start
logged "broken pages: repaired" "[Debug] DB will be removed and reopen DB"; fresh "broken pages"; works "broken pages"

damage; sql "CREATE TABLE appinfo($(echo "$COLUMNS" | sed 's/service_id/server_id/')); "; start
logged "foreign column: named" "[Debug] Name is not matched.(cid = 3), argv[INDEX_TYPE] = server_id"
logged "foreign column: an error" "[ERROR] DB has been corrupted. error msg : "; fresh "foreign column"; works "foreign column"

damage; sql "CREATE TABLE appinfo($COLUMNS, extra_data5 TEXT); $(good keptapp001 | sed "s/);$/,'');/")"; start
logged "eleventh column: the store is removed" "[Debug] DB will be removed and reopen DB"
logged "eleventh column: the empty column name is refused" "[ERROR] fail to sqlite3_exec - error:1 "
equal "eleventh column: no table until the next start" 0 "$(sqlite3 "$STORE" "SELECT count(*) FROM sqlite_master" 2>/dev/null || echo 0)"
tv daemon stop; start
logged "eleventh column: the next start repairs the empty file" "[Debug] DB will be removed and reopen DB"
fresh "eleventh column"; works "eleventh column"

damage; sql "CREATE TABLE appinfo($(echo "$COLUMNS" | sed 's/, extra_data4 TEXT//'))"; start
logged "missing column: nothing loads" "[ERROR] Cannot load the stored data."
web_feeder "$work/none.wgt" nocolumn01; tv pkg install "$work/none.wgt"
logged "missing column: no insert works" "[ERROR] AppInfoDB::InsertNewRecord() return false."
reached "missing column: the install stores nothing" '.store | length == 0'
holds "missing column: the daemon keeps running" '.daemon.running'

damage; sql "CREATE TABLE appinfo($COLUMNS); $(good aaaapp0001) $(good bbbapp0001) $(good cccapp0001) UPDATE appinfo SET variables='{broken' WHERE package_id='bbbapp0001'"; start
logged "one broken row: named" "[Debug] Invalid Json Str : {broken"
equal "one broken row: the rows before it are loaded" "aaaapp0001" "$(log_texts | sed -n 's/^\[Info\] Target PackageID : //p')"
holds "one broken row: all rows are kept" '.store | length == 3'
tv daemon restart
logged "one broken row: the next start finds the same" "[Debug] Invalid Json Str : {broken" 2

damage; sql "CREATE TABLE appinfo($COLUMNS); $(good aaaapp0001) $(good bbbapp0001) UPDATE appinfo SET variables=NULL WHERE package_id='aaaapp0001'"; start
logged "a null in variables ends the load" "[Debug] Invalid Json Str : "
equal "a null in variables: nothing was loaded" "" "$(log_texts | sed -n 's/^\[Info\] Target PackageID : //p')"

damage; sql "CREATE TABLE appinfo($COLUMNS); $(good aaaapp0001) $(good bbbapp0001) UPDATE appinfo SET variables='null' WHERE package_id='aaaapp0001'"; start
logged "\"null\" in variables: no record" "[ERROR] Cannot create app instance."
equal "\"null\" in variables: the next row is loaded" "aaaapp0001
bbbapp0001" "$(log_texts | sed -n 's/^\[Info\] Target PackageID : //p')"
the_end
