#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# Valid and invalid messages of service apps to the scheduler: the answer, the log and the stored
# due time of each.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/schedule_lib.sh"

# ask FROM PAIR...: sends the message as app FROM and prints the answer.
ask() { from=$1; shift; tv port send $PORT --from "$from" --reply-port answers "$@"; }
key() { printf '[Debug] key : %s, value : %s' "$1" "$2"; }
# asked WHAT EXPECTED-ANSWER EXPECTED-LOG FROM PAIR...: checks the answer and every line of the log.
asked() {
  what=$1; answer=$2; lines=$3; shift 3
  forget_log
  equal "$what" "$answer" "$(ask "$@")"
  equal "$what: the log" "$lines" "$(main_loop_texts)"
}
IN_TIME='[Info] eCommand : 0'
set_key=$(key orv_scheduler_command command_set_expiration_time)
nl='
'

# Due times are in UTC, whatever the daemon's time zone.
TZ=CET-1CEST,M3.5.0,M10.5.0/3 tv up --offline
service_wgt "$work/a.wgt" messages01 'exec sleep 86400'
tv pkg install "$work/a.wgt"
reached "the service app is stored" "$(stored messages01)"
APP=messages01.Feed

echo "refused messages"
asked "no command" $REFUSED "$(key hello world)" $APP hello=world
asked "an empty message" $REFUSED "" $APP
asked "an empty command" $REFUSED "$(key orv_scheduler_command '')" $APP orv_scheduler_command=
asked "an unknown command" $REFUSED "$(key orv_scheduler_command command_make_coffee)" $APP \
  orv_scheduler_command=command_make_coffee
asked "a command in capitals" $REFUSED "$(key orv_scheduler_command COMMAND_SET_EXPIRATION_TIME)" $APP \
  orv_scheduler_command=COMMAND_SET_EXPIRATION_TIME
asked "a sender without an id" $REFUSED "$set_key$nl$(key expiration_time 3600)$nl$IN_TIME" "" \
  $SET_TIME expiration_time=3600
asked "a missing time" $REFUSED "$set_key$nl$IN_TIME" $APP $SET_TIME
asked "an empty time" $REFUSED "$set_key$nl$(key expiration_time '')$nl$IN_TIME" $APP \
  $SET_TIME expiration_time=
for time in soon ' ' - x720 99999999999 2147483648 -2147483649; do
  asked "the time \"$time\"" $REFUSED \
    "$set_key$nl$(key expiration_time "$time")$nl$IN_TIME$nl[Debug] exception : stoi" $APP \
    $SET_TIME "expiration_time=$time"
done
for time in 719 0 -3600 -2147483648 719.9 0x2d0 7e3; do
  asked "the time \"$time\"" $REFUSED "$set_key$nl$(key expiration_time "$time")$nl$IN_TIME" $APP \
    $SET_TIME "expiration_time=$time"
done
equal "none of these set a due time" "" "$(due messages01)"

forget_log
equal "an unknown package" $REFUSED "$(ask nobody.Feed $SET_TIME expiration_time=3600)"
equal "an unknown package: the log" \
"[Debug] sTargetPackageID : nobody
[Debug] Cannot find target AppInfo.
[Debug] Cannot find TargetApp[PackageID : nobody]" \
"$(main_loop_texts | tail -3)"

echo "values that are not strings count as missing"
asked "a command that is a number" $REFUSED "" $APP orv_scheduler_command:int=0
asked "a command that is bytes" $REFUSED "" $APP orv_scheduler_command:bytes=636f
asked "a command in a list" $REFUSED "" $APP orv_scheduler_command:array=command_set_expiration_time
asked "a time that is a number" $REFUSED "$set_key$nl$IN_TIME" $APP $SET_TIME expiration_time:int=3600
asked "a time that is bytes" $REFUSED "$set_key$nl$IN_TIME" $APP $SET_TIME expiration_time:bytes=3336
asked "a time in a list" $REFUSED "$set_key$nl$IN_TIME" $APP $SET_TIME expiration_time:array=3600
equal "none of these set a due time either" "" "$(due messages01)"

echo "accepted messages"
# accepts WHAT SECONDS PAIR...: the stored due time is SECONDS from now.
accepts() {
  what=$1; seconds=$2; shift 2
  earliest=$(date -u -d "@$(($(date +%s) + seconds))" +%FT%TZ)
  equal "$what" $ACCEPTED "$(ask $APP $SET_TIME "$@")"
  latest=$(date -u -d "@$(($(date +%s) + seconds))" +%FT%TZ)
  stored_due=$(due messages01)
  [ "$(printf '%s\n' "$earliest" "$stored_due" "$latest" | sort | sed -n 2p)" = "$stored_due" ] ||
    die "$what: $stored_due is not between $earliest and $latest"
  passed "$what: stored as $stored_due"
}
accepts "720 seconds" 720 expiration_time=720
accepts "digits followed by letters" 720 expiration_time=720abc
accepts "a leading space" 900 'expiration_time= 900'
accepts "a leading plus sign" 901 expiration_time=+901
accepts "leading zeros" 902 expiration_time=000902
accepts "beyond 2038" 2147483647 expiration_time=2147483647
accepts "other keys are ignored, whatever their type" 3600 expiration_time=3600 color=blue \
  size:int=3 list:array=a,b blob:bytes=00ff
equal "the sender's package is its id up to the first dot" $ACCEPTED \
  "$(ask messages01.Other.Part $SET_TIME expiration_time=3600)"
equal "a sender id without a dot is the package id" $ACCEPTED \
  "$(ask messages01 $SET_TIME expiration_time=3600)"
forget_log
equal "a long value is accepted" $ACCEPTED \
  "$(ask $APP $SET_TIME expiration_time=3600 "long=$(head -c 100000 /dev/zero | tr '\0' x)")"

echo "the store is locked"
kept=$(due messages01)
mkfifo "$work/sql"
sqlite3 "$STORE" <"$work/sql" >"$work/held" & locker=$!
exec 9>"$work/sql"
echo "BEGIN EXCLUSIVE; SELECT 'held';" >&9
comes_true "the store is locked" grep -q held "$work/held"
forget_log
equal "a locked store" $REFUSED "$(ask $APP $SET_TIME expiration_time=7200)"
equal "a locked store: the last log line" "[ERROR] AppInfoDB::InsertNewRecord() return false." \
  "$(main_loop_texts | tail -1)"
exec 9>&-
wait "$locker"
equal "the row is unchanged" "$kept" "$(due messages01)"
equal "after the unlock the message is accepted" $ACCEPTED "$(ask $APP $SET_TIME expiration_time=7200)"

echo "answers that cannot be delivered"
forget_log
exits "a message without a reply port is accepted" 0 tv port send $PORT --from $APP $SET_TIME expiration_time=900
logged "the failed answer is logged" "[Debug] message_port_send_message() failed : -22"
[ "$(due messages01)" != "$kept" ] || die "the due time is not stored"
passed "its due time is stored"
forget_log
# The daemon is stopped until the sender is gone.
daemon=$(tv status --json | jq .daemon.pid)
kill -STOP "$daemon"
exits "a sender that does not wait" 5 tv port send $PORT --from $APP --reply-port gone --timeout 0.2 \
  $SET_TIME expiration_time=901
kill -CONT "$daemon"
logged "a reply port that is gone" "[Debug] message_port_send_message() failed : -18612223"
forget_log
tv fail message_port_send_message -5
exits "a failure of the port" 5 tv port send $PORT --from $APP --reply-port answers --timeout 1 $SET_TIME expiration_time=902
logged "a failure of the port is logged" "[Debug] message_port_send_message() failed : -5"
tv fail --clear
exits "an unregistered port" 4 tv port send nobodys_port --from $APP hello=world

echo "a finished app gets no answer"
forget_log
exits "no answer arrives" 5 tv port send $PORT --from $APP --reply-port answers --timeout 1 $COMPLETE
logged "the message is handled" "[Debug] [EVENT_APP_TERMINATED]"
equal "the bundle for the answer is created but neither used nor freed" "bundle_create" \
  "$(calls '^bundle_(create|free|add_str)$|^message_port' | sed 's/(.*//')"
forget_log
exits "a message with the other command's key too" 0 tv port send $PORT --from nobody.Feed $COMPLETE expiration_time=3600
logged "only the named command runs, whoever the sender is" "[Debug] [EVENT_APP_TERMINATED]"
silent "no due time is set" sTargetPackageID

echo "from within a service app"
service_wgt "$work/own.wgt" messages02 "send() { tv port send $PORT --reply-port mine \"\$@\" || echo none; }
send $SET_TIME expiration_time=3600
send $SET_TIME expiration_time=12
send hello=world
tv port send $PORT --from messages01.Feed --reply-port mine $SET_TIME expiration_time=86400 || echo none
tv port send nobodys_port hello=world || echo \"exit \$?\"
echo end
exec sleep 86400"
tv pkg install "$work/own.wgt"
reached "the service app is stored" "$(stored messages02)"
kept=$(due messages01)
tv app launch messages02.Feed
deadline=$(($(date +%s) + 30 * slow))
until grep -q '^end$' "$TV_ROOT/log/messages02.Feed.log" || [ "$(date +%s)" -ge "$deadline" ]; do pause; done
equal "the app gets its answers" \
"$ACCEPTED
$REFUSED
$REFUSED
$ACCEPTED
exit 4
end" "$(grep -v '^tv:' "$TV_ROOT/log/messages02.Feed.log")"
equal "it cannot send as another" "$kept" "$(due messages01)"
[ -n "$(due messages02)" ] || die "its own due time is not stored"
passed "its own due time is stored"
the_end
