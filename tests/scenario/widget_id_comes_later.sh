#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# The web-app service learns of the app only after its install: the daemon waits for the widget id.
. "$(dirname "$0")/lib.sh"

tv up
web_feeder "$work/late.wgt" lateapp001
tv was delay 2
forget_log
tv pkg install "$work/late.wgt"
reached "the row is there at once, without a widget id" \
  '.store | any(.package_id == "lateapp001" and .widget_id == "")' 10
reached "then the widget id is there, in the row too" \
  '.store | any(.package_id == "lateapp001" and .widget_id == "lateapp001.App")'
reached "and the app has run" '.channels | any(.pkg_id == "lateapp001" and .widget_id == "lateapp001.App")'
logged "the key's value was taken" "[Debug] sWidgetID = lateapp001.App"
equal "the wait: ignore, notify, and ignore again when it is over" \
"vconf_ignore_key_changed
vconf_notify_key_changed
vconf_ignore_key_changed" \
"$(calls '^vconf_(ignore|notify)' | grep 'memory/was/app_install' | sed 's/(.*//')"
the_end
