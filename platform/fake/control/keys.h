// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>

/// Settings keys. Every change waits until the test delivers it. So the test decides when the
/// callbacks run, and its thread takes the part of the main loop.
namespace fake {

/// Sets the key from outside the daemon, with a change to deliver.
void SetKey(const std::string& key, int value);
void SetKey(const std::string& key, const std::string& value);
void SetKey(const std::string& key, const char* value);
/// Removes the key from outside the daemon, with a change to deliver whose node has no value. False
/// when there is no such key.
bool UnsetKey(const std::string& key);
/// Sets the key without a change to deliver.
void StoreKey(const std::string& key, int value);
void StoreKey(const std::string& key, const std::string& value);

bool HasKey(const std::string& key);
/// Empty when the key is absent or of the other type.
std::optional<int> IntKey(const std::string& key);
std::optional<std::string> StringKey(const std::string& key);

/// Runs the callbacks of all waiting changes on the calling thread, in order, and those of the
/// changes that the callbacks make. Returns how many callbacks ran.
std::size_t DeliverKeyChanges();
std::size_t PendingKeyChanges();
void DropKeyChanges();
/// The present number of registrations for the key.
std::size_t KeySubscriptions(const std::string& key);

}  // namespace fake
