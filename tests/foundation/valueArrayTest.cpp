#include "foundation/valueArray.h"

#include <gtest/gtest.h>

#include <functional>
#include <numeric>
#include <utility>
#include <vector>

#include "foundation/resultCodes.h"
#include "tests/support/builders.h"
#include "tests/support/failingAllocation.h"

namespace {

/// True when the numbers stand inside the array object itself.
template <typename Array>
bool IsInline(const Array& array) {
  const char* start = reinterpret_cast<const char*>(&array);
  const char* items = reinterpret_cast<const char*>(array.GetItems());
  return items >= start && items < start + sizeof array;
}

KVN_intArray Counting(int count) {
  std::vector<int> values(count);
  std::iota(values.begin(), values.end(), 0);
  return IntsOf(values);
}

TEST(ValueArray, GrowthTakesTheInlineStorageThenDoubles) {
  KVN_intArray ints;
  KVN_doubleArray doubles;
  ASSERT_EQ(ints.SetSize(3), 0);
  ints.UseAsList(-1);
  for (int expected : {6, 12, 24}) {  // 3 doubles to 6 inside the 8 inline slots, then on the heap
    ASSERT_EQ(ints.Insert(ints.GetNumItems(), 7), 0);
    EXPECT_EQ(ints.GetSize(), expected);
    EXPECT_EQ(IsInline(ints), expected <= 8);
    ints.UseAsList(-1);
  }
  for (int i = 0; i < 4; i++) ASSERT_EQ(doubles.Add(i), 0);
  EXPECT_TRUE(IsInline(doubles));
  ASSERT_EQ(doubles.Add(4), 0);
  EXPECT_FALSE(IsInline(doubles));
  EXPECT_EQ(doubles.GetSize(), 8);
  EXPECT_EQ(ItemsOf(doubles), (std::vector<double>{0, 1, 2, 3, 4}));
  EXPECT_EQ(doubles[7], 0.0) << "slots that were never written hold 0";
}

TEST(ValueArray, SetSizeMovesBetweenInlineAndHeap) {
  KVN_doubleArray array;
  for (int size : {4, 5, 9, 6, 2, 0}) {
    SCOPED_TRACE(size);
    array.FillWith(9);
    ASSERT_EQ(array.SetSize(size), 0);
    EXPECT_EQ(array.GetSize(), size);
    EXPECT_EQ(array.GetNumItems(), 0);
    EXPECT_EQ(IsInline(array), size <= 4);
    for (int i = 0; i < size; i++) EXPECT_EQ(array[i], 0.0);
  }
  EXPECT_EQ(array.SetSize(-1), KVN_REFUSED);
  ASSERT_EQ(array.SetSizeFlush(6), 0);
  ASSERT_EQ(array.SetSizeFlush(3), 0);
  EXPECT_EQ(array.GetSize(), 6) << "SetSizeFlush only grows";
}

TEST(ValueArray, SetSizeOfThePresentSizeKeepsTheContents) {
  KVN_intArray array = Counting(8);
  ASSERT_EQ(array.SetSize(8), 0);
  EXPECT_EQ(array.GetNumItems(), 0);
  EXPECT_EQ(array[5], 5);
}

TEST(ValueArray, InsertAndDelete) {
  KVN_intArray array = IntsOf({1, 2, 3});
  EXPECT_EQ(array.Insert(4, 9), KVN_REFUSED);
  EXPECT_EQ(array.Insert(-1, 9), KVN_REFUSED);
  ASSERT_EQ(array.Insert(0, 0), 0);
  ASSERT_EQ(array.Insert(4, 4), 0);
  EXPECT_EQ(ItemsOf(array), (std::vector<int>{0, 1, 2, 3, 4}));
  ASSERT_EQ(array.Delete(1), 0);
  EXPECT_EQ(ItemsOf(array), (std::vector<int>{0, 2, 3, 4}));
  EXPECT_EQ(array.Delete(8), KVN_REFUSED);
  ASSERT_EQ(array.Delete(6), 0) << "the size is tested, not the used length";
  EXPECT_EQ(ItemsOf(array), (std::vector<int>{0, 2, 3}));
  array.Flush();
  ASSERT_EQ(array.Delete(0), 0);
  EXPECT_EQ(array.GetNumItems(), 0);
}

TEST(ValueArray, UsedCountServesListsAndBlocks) {
  KVN_intArray array = IntsOf({1, 2, 3});
  EXPECT_EQ(UsedCount(array), 3);
  ASSERT_EQ(array.SetSize(5), 0);
  EXPECT_EQ(UsedCount(array), 5);
  array.UseAsList(2);
  EXPECT_EQ(UsedCount(array), 2);
  for (int all : {-1, 6}) {
    array.UseAsList(all);
    EXPECT_EQ(array.GetNumItems(), 5);
  }
}

TEST(ValueArray, CopiesMovesAndSwapsAcrossInlineAndHeap) {
  for (int left : {0, 3, 8, 9, 20}) {
    for (int right : {0, 2, 8, 17}) {
      SCOPED_TRACE(testing::Message() << left << " and " << right);
      KVN_intArray a = Counting(left), b = Counting(right);
      b.FillWith(5);
      const std::vector<int> oldA = ItemsOf(a), oldB = ItemsOf(b);
      a.Swap(b);
      EXPECT_EQ(ItemsOf(a), oldB);
      EXPECT_EQ(ItemsOf(b), oldA);
      EXPECT_EQ(IsInline(a), a.GetSize() <= 8);
      KVN_intArray copy = a;
      copy = b;
      EXPECT_EQ(ItemsOf(copy), oldA);
      EXPECT_EQ(copy.GetNumItems(), left);
      copy = std::move(a);
      EXPECT_EQ(ItemsOf(copy), oldB);
      const KVN_intArray& self = copy;
      copy = self;
      EXPECT_EQ(ItemsOf(copy), oldB);
    }
  }
}

TEST(ValueArray, CopyItemsNeverAllocates) {
  KVN_intArray array = IntsOf({1, 2, 3}), longer = Counting(20);
  array.CopyItems(longer);
  EXPECT_EQ(ItemsOf(array), (std::vector<int>{0, 1, 2}));
  longer.CopyItems(IntsOf({9}));  // the source has 8 slots, 7 of them 0
  EXPECT_EQ(longer[0], 9);
  EXPECT_EQ(longer[7], 0);
  EXPECT_EQ(longer[8], 8);
}

TEST(ValueArray, ChangeOrderTakesPermutationsOnly) {
  const std::vector<int> before = {10, 11, 12};
  const KVN_intArray badOrders[] = {IntsOf({0, 1}), IntsOf({0, 1, 1}), IntsOf({0, 1, 3}),
                                    IntsOf({-1, 0, 1}), IntsOf({0, 1, 2, 3})};
  for (const KVN_intArray& bad : badOrders) {
    KVN_intArray array = IntsOf(before);
    EXPECT_EQ(array.ChangeOrder(bad), KVN_REFUSED);
    EXPECT_EQ(ItemsOf(array), before);
  }
  KVN_intArray array = IntsOf(before);
  ASSERT_EQ(array.ChangeOrder(IntsOf({2, 0, 1})), 0);
  EXPECT_EQ(ItemsOf(array), (std::vector<int>{12, 10, 11}));
  ASSERT_EQ(array.ChangeOrder(array), KVN_REFUSED);
}

TEST(IntArray, FindsAndDeletesByContent) {
  KVN_intArray array = IntsOf({5, 7, 5});
  EXPECT_EQ(array.FindPosition(5), 0);
  EXPECT_EQ(array.FindPosition(0), KVN_REFUSED) << "unused slots do not count";
  for (int item : {7, 8}) EXPECT_EQ(array.AddExclusive(item), item == 8 ? 0 : KVN_REFUSED);
  EXPECT_EQ(array.DeleteByContent(5), 0);
  EXPECT_EQ(array.DeleteByContent(9), KVN_REFUSED);
  EXPECT_EQ(ItemsOf(array), (std::vector<int>{7, 5, 8}));
  EXPECT_FALSE(array.IsInList(9));
}

TEST(ValueArray, FailedAllocationKeepsTheOldArray) {
  const KVN_intArray order = Counting(16), longer = Counting(64);
  const std::function<int(KVN_intArray&)> operations[] = {
      [](KVN_intArray& a) { return a.Add(1); },
      [](KVN_intArray& a) { return a.Insert(2, 1); },
      [](KVN_intArray& a) { return a.SetSize(40); },
      [](KVN_intArray& a) { return a.SetSizeFlush(40); },
      [&](KVN_intArray& a) { return a.Assign(longer); },
      [&](KVN_intArray& a) { return a.ChangeOrder(order); },
  };
  for (const auto& operation : operations) {
    SCOPED_TRACE(&operation - operations);
    const int failures = FailEachAllocation([&](int n) {
      KVN_intArray array = Counting(16);
      FailingAllocation failing(n);
      const int result = operation(array);
      EXPECT_EQ(result, failing.HasFailed() ? KVN_NO_MEMORY : KVN_SUCCESS);
      if (failing.HasFailed()) {
        EXPECT_EQ(ItemsOf(array), ItemsOf(order));
      }
      return failing.HasFailed();
    });
    EXPECT_GT(failures, 0);
  }
}

}  // namespace
