// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>

/// The one object of a class: created by the first Get() and never destroyed.
///
/// Any thread may call Get(); no lock is taken. When several threads make the first call, the first
/// published object stays and the others are deleted. A class whose constructor acts outside its
/// object (starts a thread, subscribes) is therefore first asked for while only one thread can ask.
/// An object is published when its constructor has ended: Get() within the constructor would create
/// another object. A constructor that throws publishes nothing, and the next Get() tries again.
///
/// A class with a private constructor or destructor makes SingleInstance<Type> its friend.
template <class Type>
class SingleInstance {
 public:
  static Type* Get() {
    static std::atomic<Type*> s_pInstance{nullptr};
    Type* pPublished = s_pInstance;
    if (pPublished != nullptr) {
      return pPublished;
    }
    auto* const pCreated = new Type();  // owned by the process once published
    if (s_pInstance.compare_exchange_strong(pPublished, pCreated)) {
      return pCreated;
    }
    delete pCreated;
    return pPublished;
  }
};
