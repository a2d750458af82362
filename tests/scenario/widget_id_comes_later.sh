#!/bin/sh
# SPDX-FileCopyrightText: the orv-enabler authors
# SPDX-License-Identifier: Apache-2.0
#
# The web-app service knows the app only some time after its install: the daemon waits for the widget id.
. "$(dirname "$0")/lib.sh"

tv up
web_feeder "$work/late.wgt" lateapp001
tv was delay 2
forget_log
tv pkg install "$work/late.wgt"
reached "the row is stored at once, without a widget id" \
  '.store | any(.package_id == "lateapp001" and .widget_id == "")' 10
reached "then the widget id is known and in the row" \
  '.store | any(.package_id == "lateapp001" and .widget_id == "lateapp001.App")'
reached "the app has run" '.channels | any(.pkg_id == "lateapp001" and .widget_id == "lateapp001.App")'
logged "the key's value is used" "[Debug] sWidgetID = lateapp001.App"
equal "the wait: ignore, notify, and ignore again at its end" \
"vconf_ignore_key_changed
vconf_notify_key_changed
vconf_ignore_key_changed" \
"$(calls '^vconf_(ignore|notify)' | grep 'memory/was/app_install' | sed 's/(.*//')"
the_end
