#include "foundation/sysCoordinates.h"

#include <gtest/gtest.h>

#include <vector>

#include "foundation/resultCodes.h"
#include "tests/support/builders.h"

namespace {

TEST(SysCoordinates, WalksAllCellsInFlatOrder) {
  KVN_Dmatrix table = TableOf({2, 3}, {0, 1, 2, 3, 4, 5});
  KVN_sysCoordinates walk(table);
  std::vector<double> seen;
  do seen.push_back(walk.Value());
  while (walk.Next() == 0);
  EXPECT_EQ(seen, (std::vector<double>{0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(walk.GetPosition(), 5) << "the end changes nothing";
}

TEST(SysCoordinates, LockedDimensionsKeepTheirCoordinate) {
  KVN_Dmatrix table = TableOf({2, 3, 2}, {0, 1, 10, 11, 20, 21, 100, 101, 110, 111, 120, 121});
  KVN_sysCoordinates walk(table);
  EXPECT_EQ(walk.Lock(3), KVN_REFUSED);
  walk[1] = 2;
  EXPECT_EQ(walk.Lock(1), 0);
  EXPECT_EQ(walk.GoToCurrentPosition(), 0);
  std::vector<double> seen;
  do seen.push_back(walk.Value());
  while (walk.Next() == 0);
  EXPECT_EQ(seen, (std::vector<double>{20, 21, 120, 121}));
  walk.Lock(0);
  walk.Lock(2);
  EXPECT_EQ(walk.Next(), KVN_REFUSED);
  walk.GoFirst();
  EXPECT_EQ(walk[1], 0) << "locked dimensions go to 0 as well";
  walk.UnlockAll();
  EXPECT_EQ(walk.Next(), 0);
}

TEST(SysCoordinates, BadPlacesLeadToTheFirstCell) {
  KVN_Dmatrix table = TableOf({2, 3}, {7, 1, 2, 3, 4, 5});
  KVN_sysCoordinates walk(table);
  EXPECT_EQ(walk.GoTo(4), 0);
  EXPECT_EQ(ItemsOf(walk.GetCoordinates()), (std::vector<int>{1, 1}));
  EXPECT_EQ(walk.GoTo(6), KVN_REFUSED);
  EXPECT_EQ(walk.Value(), 7.0);
  for (int bad : {-1, 2}) {
    walk.GoTo(5);
    walk[0] = bad;
    walk[1] = 0;
    EXPECT_EQ(walk.GoToCurrentPosition(), KVN_REFUSED);
    EXPECT_EQ(walk.GetPosition() + walk[0] + walk[1], 0);
  }
}

TEST(SysCoordinates, LinkStartsAnew) {
  KVN_Dmatrix first(IntsOf({2, 2})), second(IntsOf({3}));
  KVN_sysCoordinates walk;
  EXPECT_FALSE(walk.IsLinked());
  EXPECT_EQ(walk.Next(), KVN_REFUSED);
  EXPECT_EQ(walk.GoTo(0), KVN_REFUSED);
  ASSERT_EQ(walk.Link(first), 0);
  walk.Lock(0);
  walk.GoTo(3);
  ASSERT_EQ(walk.Link(second), 0);
  EXPECT_FALSE(walk.IsLocked(0));
  EXPECT_EQ(walk.GetPosition(), 0);
  ASSERT_EQ(second.AppendDimension(2), 0);
  EXPECT_EQ(walk.CheckReadiness(0), KVN_NOT_READY) << "a new shape makes it stale";
}

}  // namespace
