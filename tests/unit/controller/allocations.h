// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

/// A program with allocations.cpp has operators new and delete that a test can look into.
namespace allocations {

/// Lets the next allocation of this thread fail with std::bad_alloc, once.
void FailNext();
/// Takes that back; whether it was still to come.
bool CancelFailure();

/// One block at a time is watched for its release, by any thread.
void Watch(void* block);
/// Watches the block that the next allocation of this thread gives.
void WatchNext();
bool WatchedBlockIsFree();
/// The block that is watched; null when there is none, or it was freed.
void* WatchedBlock();

}  // namespace allocations
