#include "foundation/rectangleArray.h"

#include <gtest/gtest.h>

#include "foundation/resultCodes.h"
#include "tests/support/failingAllocation.h"

namespace {

struct UnreadyRectangle : KVN_rectangle {
  UnreadyRectangle() : KVN_rectangle(1, 2, 3, 4) { SetReady(false); }
};

TEST(RectangleArray, OutOfRangeGivesTheSpare) {
  KVN_rectangleArray list(2);
  ASSERT_EQ(list.Add(KVN_rectangle(1, 2, 3, 4)), 0);
  list[7].width = 99;
  EXPECT_EQ(&list[-1], &list[2]);
  EXPECT_EQ(list[0].width, 3);
  EXPECT_EQ(list.At(1).width, 0);
}

TEST(RectangleArray, AddsSetsAndDeletes) {
  KVN_rectangleArray list(2);
  for (int i = 0; i < 3; i++) ASSERT_EQ(list.Add(KVN_rectangle(i, 10 * i, 5, 6)), 0);
  EXPECT_EQ(list.GetSize(), 4);
  ASSERT_EQ(list.Add(UnreadyRectangle()), 0);
  EXPECT_EQ(list[3].center_X, 0) << "what is not ready is not read";
  EXPECT_EQ(list.Set(0, UnreadyRectangle()), KVN_NOT_READY);
  EXPECT_EQ(list.Set(4, KVN_rectangle()), KVN_REFUSED);
  ASSERT_EQ(list.Delete(1), 0);
  EXPECT_EQ(list.Delete(4), KVN_REFUSED);
  ASSERT_EQ(list.Add(list[1]), 0) << "one of its own";
  EXPECT_EQ(list[3].center_Y, 20);
  KVN_rectangleArray copy = list;
  copy[0].width = 1;
  EXPECT_EQ(list[0].width, 5);
  EXPECT_EQ(copy.GetNumItems(), 4);
}

TEST(RectangleArray, FailedAllocationKeepsTheOldList) {
  const int failures = FailEachAllocation([](int n) {
    KVN_rectangleArray list(1), copy;
    EXPECT_EQ(list.Add(KVN_rectangle(1, 2, 3, 4)), 0);
    FailingAllocation failing(n);
    const int added = list.Add(KVN_rectangle());
    const int copied = copy.Assign(list);
    if (failing.HasFailed()) {
      EXPECT_EQ(added + copied, KVN_NO_MEMORY);
    }
    EXPECT_EQ(list[0].height, 4);
    EXPECT_EQ(copy.GetSize(), copied < 0 ? 0 : list.GetSize());
    return failing.HasFailed();
  });
  EXPECT_EQ(failures, 2);
}

}  // namespace
