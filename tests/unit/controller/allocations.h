// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

/// A program with allocations.cpp has operators new and delete that a test can control.
namespace allocations {

/// Lets the next allocation of this thread fail with std::bad_alloc, once.
void FailNext();
/// Cancels that. Returns whether it was still pending.
bool CancelFailure();

/// One block at a time is watched for its release, by any thread.
void Watch(void* block);
/// Watches the block of the next allocation on this thread.
void WatchNext();
bool WatchedBlockIsFree();
/// The watched block; null when there is none or it was freed.
void* WatchedBlock();

}  // namespace allocations
