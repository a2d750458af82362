// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "app_info/AppInfo.h"
#include "app_info/app_type/AppTypeDecorator.h"

/// How to wrap a record in a type and how to destroy the outermost layer of that type.
using AppTypeCreator =
    std::pair<AppInfo* (*)(AppInfo*, const std::string&, RequestEventCallback), void (*)(AppInfo*)>;

/// Type name and creator.
using AppTypeTable = std::vector<std::pair<std::string, AppTypeCreator>>;

/// Every app type of the daemon, in the order in which the types are listed.
AppTypeTable GetAppTypes();
