// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <bundle.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "desk/client/bundle_data.h"

namespace {

struct Seen {
  std::string key;
  int type;
  std::string bytes;
  int result;
};

std::vector<Seen> Walk(bundle* source) {
  std::vector<Seen> seen;
  bundle_foreach(
      source,
      [](const char* key, const int type, const bundle_keyval_t* kv, void* data) {
        void* value = nullptr;
        std::size_t size = 0;
        const int result =
            bundle_keyval_get_basic_val(const_cast<bundle_keyval_t*>(kv), &value, &size);
        const std::string bytes =
            result == 0 ? std::string(static_cast<const char*>(value), size) : "";
        static_cast<std::vector<Seen>*>(data)->push_back({key, type, bytes, result});
      },
      &seen);
  return seen;
}

class ClientBundle : public testing::Test {
 protected:
  ClientBundle() : m_bundle(bundle_create()) {}
  ~ClientBundle() override { bundle_free(m_bundle); }

  bundle* const m_bundle;
};

TEST_F(ClientBundle, AStringCountsItsTerminator) {
  ASSERT_EQ(bundle_add_str(m_bundle, "a", "xyz"), 0);
  const auto seen = Walk(m_bundle);
  ASSERT_EQ(seen.size(), 1U);
  EXPECT_EQ(seen[0].key, "a");
  EXPECT_EQ(seen[0].type, 0x401);
  EXPECT_EQ(seen[0].bytes, std::string("xyz\0", 4));
}

TEST_F(ClientBundle, AKeyThatIsTakenKeepsItsValue) {
  ASSERT_EQ(bundle_add_str(m_bundle, "a", "first"), 0);
  EXPECT_NE(bundle_add_str(m_bundle, "a", "second"), 0);
  EXPECT_NE(bundle_add_byte(m_bundle, "a", "x", 1), 0);
  const auto seen = Walk(m_bundle);
  ASSERT_EQ(seen.size(), 1U);
  EXPECT_STREQ(seen[0].bytes.c_str(), "first");
}

TEST_F(ClientBundle, EntriesAreWalkedInTheOrderOfInsertion) {
  for (const char* key : {"z", "a", "m"}) {
    ASSERT_EQ(bundle_add_str(m_bundle, key, "v"), 0);
  }
  std::vector<std::string> keys;
  for (const auto& entry : Walk(m_bundle)) {
    keys.push_back(entry.key);
  }
  EXPECT_THAT(keys, testing::ElementsAre("z", "a", "m"));
}

TEST_F(ClientBundle, AnArrayHasNoBasicValue) {
  const char* values[] = {"one", "two"};
  ASSERT_EQ(bundle_add_str_array(m_bundle, "list", values, 2), 0);
  const auto seen = Walk(m_bundle);
  ASSERT_EQ(seen.size(), 1U);
  EXPECT_EQ(seen[0].type, 0x501);
  EXPECT_NE(seen[0].result, 0);
}

TEST_F(ClientBundle, NullArgumentsAreRefused) {
  EXPECT_NE(bundle_add_str(nullptr, "a", "b"), 0);
  EXPECT_NE(bundle_add_str(m_bundle, nullptr, "b"), 0);
  EXPECT_NE(bundle_add_str(m_bundle, "a", nullptr), 0);
  EXPECT_NE(bundle_add_byte(m_bundle, "a", nullptr, 1), 0);
  EXPECT_NE(bundle_add_str_array(m_bundle, "a", nullptr, 1), 0);
  EXPECT_TRUE(Walk(m_bundle).empty());
  EXPECT_TRUE(Walk(nullptr).empty());
}

TEST_F(ClientBundle, EveryKindComesThroughTheWireForm) {
  const char* values[] = {"one", ""};
  ASSERT_EQ(bundle_add_str(m_bundle, "text", "a\"b\\c\n\xff"), 0);
  ASSERT_EQ(bundle_add_byte(m_bundle, "raw", "\0\x01\xfe", 3), 0);
  ASSERT_EQ(bundle_add_str_array(m_bundle, "list", values, 2), 0);
  bundle copy = desk::client::ReadBundle(desk::client::FormatBundle(*m_bundle));
  const auto seen = Walk(&copy);
  ASSERT_EQ(seen.size(), 3U);
  EXPECT_STREQ(seen[0].bytes.c_str(), "a\"b\\c\n\xff");
  EXPECT_EQ(seen[1].type, BUNDLE_TYPE_BYTE);
  EXPECT_EQ(seen[1].bytes, std::string("\0\x01\xfe", 3));
  EXPECT_THAT(copy.entries[2]->array, testing::ElementsAre("one", ""));
}

}  // namespace
