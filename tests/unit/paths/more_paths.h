// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "fault/paths.h"

/// Paths in addition to those of the fault sweep, for the comparison of whole sequences.
std::vector<fault::Path> MorePaths();
/// One of them, or of fault::Paths().
fault::Path FindAnyPath(const std::string& name);
