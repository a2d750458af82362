// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include "fault/roads.h"

/// Paths beside those of the fault sweep, for the comparison of whole sequences.
std::vector<fault::Road> MorePaths();
