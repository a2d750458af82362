#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# The boost flag follows the tuner: created on a boosting channel; deleted on any other channel, by the
# signals that end a channel, and whenever the TV service fails.
. "$(dirname "$0")/lib.sh"
. "$(dirname "$0")/boost_lib.sh"

boost_tv
decided "the decision after the start is made" 0 0
# boost_texts: only the log lines about the boost; other threads log too.
boost_texts() { grep -E "/BoostDecision\.cpp: |: tvs_signal_callback\(" "$TV_ROOT/log/daemon.log" | sed 's/^.*) > //'; }
# tuned WHAT there|gone SERVICE LOG: tunes, then checks the flag and the log lines that say why.
tuned() {
  forget_log
  tv tune "$3"
  logged "$1: the daemon has handled it" "boosting hbbTV App"
  becomes "$1: the flag is $2" "$2" "$FLAG"
  equal "$1: the log says why" "[Info] signalType[103]
[Info] SIGNAL_TUNE_TO_SERVICEID
$4" "$(boost_texts)"
}
yes="[Info] ch.app.boosting value is true
[Info] boosting hbbTV App"
no="[Info] non boosting hbbTV App"

tuned "to a boosting channel" there "$boosting" "$yes"
tuned "to it again" there "$boosting" "$yes"
tuned "to a channel that does not boost" gone "$plain" "[Info] ch.app.boosting value is 
$no"
tuned "back to the boosting channel" there "$boosting" "$yes"
tv service add 7
tuned "to a service without a package" gone 7 "[Info] PACKAGE_ID is empty
$no"
tv service add 8 --package nosuchapp1
tuned "back to the boosting channel" there "$boosting" "$yes"
tuned "to a service of an unknown package" gone 8 "[Info] invalid app
$no"
tv service add 18446744073709551615 --package boostapp01
tuned "to the largest id" there 18446744073709551615 "$yes"
tv tune 7
becomes "a tune deletes the flag" gone "$FLAG"
tv service add 9 --package boostapp01
tuned "to a service that another list assigns to the app" there 9 "$yes"

echo "signals that end a channel"
for signal in 25 135 170 2560; do
  tuned "$signal: on a boosting channel" there "$boosting" "$yes"
  forget_log
  tv signal "$signal"
  becomes "$signal: the flag is deleted" gone "$FLAG"
  forget_log
  tv signal "$signal"
  logged "$signal: without a flag" "$no"
  equal "$signal: without a flag it is not an error" "[Info] signalType[$signal]
$no" "$(boost_texts)"
done

echo "other signals"
tuned "on a boosting channel" there "$boosting" "$yes"
forget_log
tv signal 104
tv signal 75
logged "an activation is handled" "[Info] SIGNAL_TVS_ACTIVATE event comming"
silent "a signal without a subscription is not handled" "signalType[104]"
there "both keep the flag" "$FLAG"
tv signal 90014
logged "the complete virtual services are handled" "[Info] VELDRIN_EVENT_GET_VIRTUAL_SERVICES_COMPLETE event comming"
there "they keep the flag" "$FLAG"
forget_log
tv signal 103 --data "$(printf '%016x' "$plain" | sed 's/\(..\)\(..\)\(..\)\(..\)\(..\)\(..\)\(..\)\(..\)/\8\7\6\5\4\3\2\1/')ffff"
becomes "the first eight bytes of a tune are the service id" gone "$FLAG"
logged "the log says so" "[Info] ch.app.boosting value is "
forget_log
tv signal 103
logged "a tune without data is a tune to service 0" "[ERROR] [Error] FindService has failed"

echo "the TV service fails"
# failing CALL RESULT LOG, while the TV is tuned to the boosting channel
failing() {
  tuned "$1: before" there "$boosting" "$yes"
  tv fail "$1" $2 --times 1
  tuned "$1: fails" gone "$boosting" "$3
$no"
}
failing TVServiceAPI::CreateService "" "[ERROR] [Error] pService is null"
failing TCService::FindService "" "[ERROR] [Error] FindService has failed"
failing TCService::FindService 0 "[ERROR] [Error] FindService has failed"
equal "the created service is destroyed" "TVServiceAPI::CreateService
TCService::FindService
TVServiceAPI::Destroy" "$(calls '^(TVServiceAPI|TCService)::' | sed 's/(.*//')"

# at_start CALL RESULT LOG: with the flag set, the first screen is launched.
screens=0
at_start() {
  tuned "$1 at the start: before" there "$boosting" "$yes"
  tv key set db/boot/last_service vc-service
  rm -f "$READY"
  tv fail "$1" $2 --times 1
  forget_log
  tv daemon restart
  decided "$1 at the start: counts as not boosting" 1 0
  logged "$1 at the start: the log says so" "$3"
  becomes "$1 at the start: the flag is deleted" gone "$FLAG"
  screens=$((screens + 1))
  first_screens "$1 at the start: the first screen is released" "$screens"
  there "$1 at the start: the ready file is created" "$READY"
  equal "$1 at the start: every created service is destroyed" \
    "$(calls '^TVServiceAPI::Create(Service|ServiceNavigation)$' | grep -c ' = 0$' || true)" \
    "$(calls '^TVServiceAPI::Destroy$' | grep -c . || true)"
}
at_start TVServiceAPI::CreateServiceNavigation "" "[ERROR] pServiceNavigation is NULL."
at_start TCServiceNavigation::GetTVMode "" "[ERROR] GetTVMode() failed"
at_start TCServiceNavigation::GetTVMode 0 "[ERROR] GetTVMode() failed"
at_start TCServiceNavigation::GetCurrentServiceInfo "" "[ERROR] GetCurrentServiceInfo() failed"
at_start TVServiceAPI::CreateService "" "[ERROR] [Error] pService is null"
at_start TCService::FindService "" "[ERROR] [Error] FindService has failed"

echo "the status cannot be read"
tuned "on a boosting channel" there "$boosting" "$yes"
forget_log
tv daemon restart
decided "flag and boosting channel" 1 1
tv fail vconf_get_int --times 1
tv key set memory/hbbtv_status 6
logged "the failed read is logged as an error" "[ERROR] vconf_get_int() failed."
launched "nothing is launched" 0
status 6
screens=$((screens + 1))
first_screens "the next change launches the first screen" "$screens"

echo "no signals"
for call in TVServiceAPI::CreateSignalSubscriber FCEMSProxy::GetInstance; do
  tuned "$call: before" there "$boosting" "$yes"
  tv fail "$call" --times 1
  forget_log
  tv daemon restart
  case $call in
    FC*) logged "$call: it fails" "[ERROR] pTvmesaSignalSubscriber is NULL" ;;
    *) logged "$call: it fails" "[ERROR] pSignalSubscriber is NULL" ;;
  esac
  tv tune "$plain"
  web_feeder "$work/other.wgt" "otherapp$screens"
  tv pkg install "$work/other.wgt"
  reached "$call: package events are still handled" ".channels | any(.pkg_id == \"otherapp$screens\")"
  there "$call: the flag no longer follows the tuner" "$FLAG"
  silent "$call: no decision is scheduled" "[Info] start timer"
  screens=$((screens + 1))
  tv daemon restart
  decided "$call: the next start works again" 1 0
done
the_end
