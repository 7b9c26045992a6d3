#include "foundation/dmatrix.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "foundation/resultCodes.h"
#include "tests/support/builders.h"
#include "tests/support/failingAllocation.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(Dmatrix, LayoutIsRowMajorWithTheLastDimensionFastest) {
  KVN_Dmatrix table(IntsOf({2, 3, 4}));
  EXPECT_EQ(table.GetSize(), 24);
  EXPECT_EQ(ItemsOf(table.GetMultipliers()), (std::vector<int>{12, 4, 1}));
  EXPECT_EQ(table.GetDimensions().GetSize(), 3) << "an Added list gives its used items only";
  const KVN_intArray coordinates = IntsOf({1, 2, 3});
  const int a = 1, b = 0, c = 2;
  const int* const pointers[] = {&a, &b, &c};
  EXPECT_EQ(table.IndexOf(coordinates), 23);  // 12*1 + 4*2 + 3
  EXPECT_EQ(table.IndexOf(pointers), 14);     // 12*1 + 4*0 + 2
  KVN_intArray found;
  ASSERT_EQ(table.CoordinatesOf(14, found), 0);
  EXPECT_EQ(ItemsOf(found), (std::vector<int>{1, 0, 2}));
  EXPECT_EQ(table.CoordinatesOf(24, found), KVN_REFUSED);
}

TEST(Dmatrix, SetupGivesZerosAndRefusesBadShapes) {
  KVN_Dmatrix table = TableOf({3}, {1, 2, 3});
  const KVN_intArray refused[] = {IntsOf({2, 0, 3}), IntsOf({0, 65536, 65536}), IntsOf({-1})};
  const KVN_intArray tooLarge[] = {IntsOf({65536, 32768}),  // 2^31: one cell too many
                                   IntsOf({0x7fffffff, 0x7fffffff}),
                                   IntsOf(std::vector<int>(64, 2))};  // overflows 64 bits as well
  for (const KVN_intArray& sizes : refused) EXPECT_EQ(table.Setup(sizes), KVN_REFUSED);
  for (const KVN_intArray& sizes : tooLarge) EXPECT_EQ(table.Setup(sizes), KVN_NO_MEMORY);
  EXPECT_TRUE(CellsNear(table, {1, 2, 3}, 0.0)) << "the old table stays";
  const int size = 3;
  EXPECT_EQ(table.Setup(&size, -1), KVN_REFUSED);
  ASSERT_EQ(table.Setup(table.GetDimensions()), 0) << "its own shape";
  EXPECT_TRUE(CellsNear(table, {0, 0, 0}, 0.0));
  ASSERT_EQ(table.Setup(nullptr, 0), 0);
  EXPECT_EQ(table.GetNumberOfDimensions(), 0);
  EXPECT_EQ(KVN_Dmatrix(IntsOf({2, 0})).GetSize(), 0);
}

struct NormalizeCase {
  const char* name;
  std::vector<double> before, after;  // rows of two outcomes, so each pair is one run
};
const NormalizeCase kNormalizeCases[] = {
    {"scales", {1, 3}, {0.25, 0.75}},
    {"zero run becomes uniform", {0, 0}, {0.5, 0.5}},
    {"cancelled run as well", {1, -1}, {0.5, 0.5}},
    {"runs do not mix", {2, 2, 0, 5}, {0.5, 0.5, 0, 1}},
    {"NaN spreads in its run", {kNaN, 1, 1, 1}, {kNaN, kNaN, 0.5, 0.5}},
    {"exact sum is kept", {0.7, 0.3}, {0.7, 0.3}},
};
TEST(Dmatrix, NormalizeWorksRunByRun) {
  for (const NormalizeCase& c : kNormalizeCases) {
    SCOPED_TRACE(c.name);
    KVN_Dmatrix table = TableOf({static_cast<int>(c.before.size()) / 2, 2}, c.before);
    table.Normalize();
    EXPECT_TRUE(CellsNear(table, c.after, 0.0));
  }
  KVN_Dmatrix empty;
  empty.Normalize();
  EXPECT_EQ(empty.GetSize(), 0);
}

TEST(Dmatrix, NormalizeDividesByTheSumInIndexOrder) {
  // 0.1 + 0.2 + 0.3 is 0.6000000000000001 from the left and 0.6 from the right.
  KVN_Dmatrix table = TableOf({3}, {0.1, 0.2, 0.3});
  table.Normalize();
  EXPECT_EQ(table[2], 0.3 / 0.6000000000000001);
}

TEST(Dmatrix, CompleteColumnFillsUpTheRun) {
  KVN_Dmatrix table = TableOf({2, 3}, {9, 9, 9, 0.25, 0.5, 7});
  KVN_intArray coordinates = IntsOf({1, 2});
  ASSERT_EQ(table.CompleteColumn(coordinates), 0);
  // (0.25 + 0.5 + 7) - 7 = 0.75, and 1 - 0.75 = 0.25
  EXPECT_TRUE(CellsNear(table, {9, 9, 9, 0.25, 0.5, 0.25}, 0.0));
  EXPECT_EQ(ItemsOf(coordinates), (std::vector<int>{1, 0}));
  ASSERT_EQ(table.CompleteColumn(0), 0);
  EXPECT_EQ(table[0], -17.0);
  EXPECT_EQ(table.CompleteColumn(6), KVN_REFUSED);
  coordinates[0] = 2;
  EXPECT_EQ(table.CompleteColumn(coordinates), KVN_REFUSED);
  EXPECT_EQ(KVN_Dmatrix().CompleteColumn(coordinates), KVN_REFUSED);
}

TEST(Dmatrix, Range) {
  KVN_Dmatrix table = TableOf({2, 3}, {0, 1, 2, 3, 4, 5});
  EXPECT_TRUE(table.IsInRange(IntsOf({1, 2, 99}))) << "surplus coordinates are ignored";
  EXPECT_FALSE(table.IsInRange(IntsOf({1})));
  EXPECT_FALSE(table.IsInRange(IntsOf({1, 3})));
  EXPECT_FALSE(table.IsInRange(IntsOf({-1, 0})));
  EXPECT_TRUE(KVN_Dmatrix().IsInRange(KVN_intArray()));
}

TEST(Dmatrix, NextCoordinatesRunsThroughAllCells) {
  const KVN_Dmatrix table(IntsOf({2, 3}));
  KVN_intArray coordinates = IntsOf({0, 0});
  int index = 0;
  while (table.NextCoordinates(coordinates) == 0) EXPECT_EQ(table.IndexOf(coordinates), ++index);
  EXPECT_EQ(index, 5);
  EXPECT_EQ(ItemsOf(coordinates), (std::vector<int>{1, 2})) << "stays at the end";
}

TEST(Dmatrix, AddsTablesOfItsShape) {
  KVN_Dmatrix sum(IntsOf({2, 1}));
  const KVN_Dmatrix a = TableOf({2, 1}, {1, 2}), b = TableOf({2, 1}, {10, 20});
  ASSERT_EQ(sum.Add(a, b), 0);
  EXPECT_TRUE(CellsNear(sum, {11, 22}, 0.0));
  const KVN_Dmatrix turned = TableOf({1, 2}, {1, 2});
  EXPECT_EQ(sum.Add(a, turned), KVN_REFUSED);
  EXPECT_FALSE(a.SameDimensions(turned));
}

TEST(Dmatrix, SlicesAreComparedExactly) {
  // (a, b, c) of sizes 2, 2, 2: the slice b = 1 holds 5 but for its last cell.
  const KVN_Dmatrix table = TableOf({2, 2, 2}, {0, 1, 5, 5, 2, 3, 5, 5.5});
  EXPECT_EQ(table.IsSliceAllEqualTo(5, IntsOf({0, 1, -1})), 1);
  EXPECT_EQ(table.IsSliceAllEqualTo(5, IntsOf({-1, 1, 0})), 1);
  EXPECT_EQ(table.IsSliceAllEqualTo(5, IntsOf({-1, 1, -1})), 0);
  EXPECT_EQ(table.IsSliceAllEqualTo(3, IntsOf({1, 0, 1})), 1);
  EXPECT_EQ(table.IsSliceAllEqualTo(5, IntsOf({-1, -1})), KVN_REFUSED);
  EXPECT_EQ(table.IsSliceAllEqualTo(5, IntsOf({2, -1, -1})), KVN_REFUSED);
}

TEST(Dmatrix, FailedCopyIsEmptyAndFailedAssignUnchanged) {
  const KVN_Dmatrix source(IntsOf(std::vector<int>(9, 2)));  // too long for the inline storage
  const int failures = FailEachAllocation([&](int n) {
    KVN_Dmatrix target = TableOf({2}, {1, 2});
    FailingAllocation failing(n);
    const int result = target.Assign(source);
    EXPECT_EQ(result, failing.HasFailed() ? KVN_NO_MEMORY : 0);
    if (failing.HasFailed()) {
      EXPECT_TRUE(CellsNear(target, {1, 2}, 0.0));
    }
    EXPECT_EQ(target.GetNumberOfDimensions(), failing.HasFailed() ? 1 : 9);
    return failing.HasFailed();
  });
  EXPECT_EQ(failures, 3);
  FailingAllocation failing(2);
  const KVN_Dmatrix copy = source;
  EXPECT_EQ(copy.GetSize(), 0);
  EXPECT_EQ(copy.GetNumberOfDimensions(), 0);
}

}  // namespace
