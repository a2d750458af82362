// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>

/// Settings keys. A change, whoever made it, waits until the test delivers it: so the test decides
/// when the callbacks run, and its thread is the main loop's.
namespace fake {

/// Sets from outside, and tells.
void SetKey(const std::string& key, int value);
void SetKey(const std::string& key, const std::string& value);
void SetKey(const std::string& key, const char* value);
/// Removes from outside, and tells with a node that has no value. False when there was no such key.
bool UnsetKey(const std::string& key);
/// Sets without telling anybody.
void StoreKey(const std::string& key, int value);
void StoreKey(const std::string& key, const std::string& value);

bool HasKey(const std::string& key);
/// Empty when the key is absent or of the other type.
std::optional<int> IntKey(const std::string& key);
std::optional<std::string> StringKey(const std::string& key);

/// Runs the callbacks of all waiting changes on the calling thread, in order, until none is left,
/// the changes that the callbacks make included. Returns how many callbacks ran.
std::size_t DeliverKeyChanges();
/// The next waiting change only. 0 also when nobody listens to it.
std::size_t DeliverOneKeyChange();
std::size_t PendingKeyChanges();
void DropKeyChanges();
/// Runs the callbacks of the key now with its present value, without a set.
std::size_t FireKey(const std::string& key);

/// Registrations of the key now.
std::size_t KeySubscriptions(const std::string& key);

}  // namespace fake
