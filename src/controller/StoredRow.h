// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>

#include "app_info/AppInfo.h"

/// A row of the store as the creator needs it.
struct StoredRow {
  AppBaseInfo info;
  MetadataMap metadata;
};

/// Decodes a row, which maps column to text, and takes its texts; a missing column is an empty
/// text. False, with a log line, when the metadata is not JSON. Throws std::exception when the
/// metadata is JSON of another shape than the daemon writes.
bool DecodeStoredRow(std::map<std::string, std::string>& rColumns, StoredRow& rRow);
