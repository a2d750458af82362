// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "app_info/AppInfo.h"

/// The steps that adapt the chain of a record to the types of an updated package. Which function
/// belongs to which type is ORVAppCreator's knowledge.
///
/// Called with the RecordGuard of the record's package.
namespace AppTypeUpdate {

/// Key to value: type names with their metadata values, or data.
using AppTypeDifference = MetadataMap::mapped_type;

/// The entries whose keys are in rLeft only. A changed value is not a difference.
AppTypeDifference Subtract(const AppTypeDifference& rLeft, const AppTypeDifference& rRight);
/// The entries whose keys are in both maps, with the values of rLeft.
AppTypeDifference Intersect(const AppTypeDifference& rLeft, const AppTypeDifference& rRight);

/// Takes a layer out of the record and hands it over to the caller; null when the record has none
/// of that type. When it was the outermost layer, rpAppInfo and the cache get the new one.
AppInfo* ExtractAppType(AppInfo*& rpAppInfo, const std::string& rType);

/// Stages all entries for the next UpdateOperation(), in key order, each with a log line.
void StageMetadata(AppInfo* pAppInfo, const std::string& rType, const AppTypeDifference& rEntries);

}  // namespace AppTypeUpdate
