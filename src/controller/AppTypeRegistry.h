// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

class ORVAppCreator;

/// Registers every app type of the daemon, in the order in which the types are listed. Called once,
/// while the creator is constructed.
void RegisterAppTypes(ORVAppCreator& rCreator);
