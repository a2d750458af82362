// SPDX-FileCopyrightText: the orv-enabler authors
// SPDX-License-Identifier: Apache-2.0
#include <FCTaskList.h>
#include <gtest/gtest.h>

namespace {

TEST(FCTaskList, IsNullInAProcessThatMadeNone) {
  EXPECT_EQ(nullptr, FCTaskList::m_pTaskList);
  EXPECT_EQ(0, FCTaskList::FlagInitialize());
}

TEST(FCTaskList, IsUsableBetweenCreateAndDestroy) {
  FCTaskList::m_pTaskList = new FCList();
  EXPECT_EQ(0, FCTaskList::FlagInitialize());
  EXPECT_TRUE(FCTaskList::m_pTaskList->Create());
  EXPECT_NE(0, FCTaskList::FlagInitialize());
  EXPECT_TRUE(FCTaskList::m_pTaskList->Destroy());
  EXPECT_EQ(0, FCTaskList::FlagInitialize());
  delete FCTaskList::m_pTaskList;
  FCTaskList::m_pTaskList = nullptr;
}

TEST(FCList, IsCreatedAndDestroyedOnce) {
  FCList list;
  EXPECT_FALSE(list.Destroy());
  EXPECT_TRUE(list.Create());
  EXPECT_FALSE(list.Create());
  EXPECT_TRUE(list.Destroy());
  EXPECT_FALSE(list.Destroy());
}

TEST(FCList, HoldsTasksWhileItIsUsable) {
  FCList list;
  int task = 0;
  list.Add(&task);
  EXPECT_EQ(0U, list.Size());
  list.Create();
  list.Add(&task);
  EXPECT_EQ(1U, list.Size());
  list.Remove(&list);
  EXPECT_EQ(1U, list.Size());
  list.Remove(&task);
  EXPECT_EQ(0U, list.Size());
  list.Destroy();
  list.Remove(&task);
}

TEST(FCSemaphore, IsCreatedAndDestroyedOnce) {
  FCSemaphore semaphore;
  EXPECT_FALSE(semaphore.Create(-1));
  EXPECT_TRUE(semaphore.Create(1));
  EXPECT_FALSE(semaphore.Create(1));
  EXPECT_TRUE(semaphore.Destroy());
  EXPECT_FALSE(semaphore.Destroy());
}

TEST(FCSyncDet, IsCreatedAndDestroyedOnce) {
  EXPECT_TRUE(FCSyncDet::Create());
  EXPECT_FALSE(FCSyncDet::Create());
  EXPECT_TRUE(FCSyncDet::Destroy());
  EXPECT_FALSE(FCSyncDet::Destroy());
}

}  // namespace
