// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
//
// The first two calls for the cache at the same time: the memory of the first caller's instance is
// allocated here, and during that the second caller overtakes it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <utility>

#include "app_info/AppInfoCache.h"

namespace {

bool s_armed = false;
AppInfoCache* s_ahead = nullptr;

}  // namespace

void* operator new(std::size_t size) {
  if (size == sizeof(AppInfoCache) && std::exchange(s_armed, false)) {
    s_ahead = AppInfoCache::GetInstance();
  }
  void* block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}

void operator delete(void* block) noexcept {
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}

namespace {

TEST(AppInfoCacheInstance, OfTwoThatAreMadeAtOnceTheFirstStays) {
  s_armed = true;
  AppInfoCache* const instance = AppInfoCache::GetInstance();
  ASSERT_NE(s_ahead, nullptr) << "no caller got ahead";
  EXPECT_EQ(instance, s_ahead);
  EXPECT_EQ(AppInfoCache::GetInstance(), s_ahead);
}

}  // namespace
