// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

// All controls of the fake platform.
#include "fake/control/apps.h"
#include "fake/control/calls.h"
#include "fake/control/channels.h"
#include "fake/control/clock.h"
#include "fake/control/keys.h"
#include "fake/control/log.h"
#include "fake/control/main_loop.h"
#include "fake/control/mounts.h"
#include "fake/control/packages.h"
#include "fake/control/ports.h"
#include "fake/control/timers.h"
#include "fake/control/tv.h"
#include "fake/control/was.h"
