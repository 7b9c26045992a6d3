#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "foundation/dmatrix.h"
#include "foundation/resultCodes.h"
#include "tests/support/builders.h"
#include "tests/support/failingAllocation.h"

namespace {

/// Sizes 2, 3, 2; the cell at (a, b, c) is the number abc, so that each expected table below can
/// be read off its coordinates.
KVN_Dmatrix Coded() {
  return TableOf({2, 3, 2}, {0, 1, 10, 11, 20, 21, 100, 101, 110, 111, 120, 121});
}

struct ShapeCase {
  const char* name;
  std::function<int(KVN_Dmatrix&)> operation;
  std::vector<int> sizes;
  std::vector<double> cells;
};
// The formatter would tear the rows of this table apart.
// clang-format off
const ShapeCase kShapeCases[] = {
    {"add first", [](KVN_Dmatrix& m) { return m.AddDimension(0, 2); },
     {2, 2, 3, 2}, {0, 1, 10, 11, 20, 21, 100, 101, 110, 111, 120, 121,
                    0, 1, 10, 11, 20, 21, 100, 101, 110, 111, 120, 121}},
    {"add inside", [](KVN_Dmatrix& m) { return m.AddDimension(2, 2); },
     {2, 3, 2, 2}, {0, 1, 0, 1, 10, 11, 10, 11, 20, 21, 20, 21,
                    100, 101, 100, 101, 110, 111, 110, 111, 120, 121, 120, 121}},
    {"append", [](KVN_Dmatrix& m) { return m.AppendDimension(2); },
     {2, 3, 2, 2}, {0, 0, 1, 1, 10, 10, 11, 11, 20, 20, 21, 21,
                    100, 100, 101, 101, 110, 110, 111, 111, 120, 120, 121, 121}},
    {"remove first", [](KVN_Dmatrix& m) { return m.RemoveDimension(0, 1); },
     {3, 2}, {100, 101, 110, 111, 120, 121}},
    {"remove middle", [](KVN_Dmatrix& m) { return m.RemoveDimension(1, 2); },
     {2, 2}, {20, 21, 120, 121}},
    {"remove last", [](KVN_Dmatrix& m) { return m.RemoveDimension(2); },
     {2, 3}, {0, 10, 20, 100, 110, 120}},
    // 1*(a0c) + 10*(a1c) + 100*(a2c): 0 + 100 + 2000, 1 + 110 + 2100, 100 + 1100 + 12000, ...
    {"weighted", [](KVN_Dmatrix& m) { return m.RemoveDimensionWeighted(1, DoublesOf({1, 10, 100})); },
     {2, 2}, {2100, 2211, 13200, 13311}},
    {"push middle", [](KVN_Dmatrix& m) { return m.PushSlice(1); },
     {2, 4, 2}, {0, 1, 10, 11, 20, 21, 0, 0, 100, 101, 110, 111, 120, 121, 0, 0}},
    {"push last", [](KVN_Dmatrix& m) { return m.PushSlice(2); },
     {2, 3, 3}, {0, 1, 0, 10, 11, 0, 20, 21, 0, 100, 101, 0, 110, 111, 0, 120, 121, 0}},
    {"shrink", [](KVN_Dmatrix& m) { return m.ShrinkDimension(1); },
     {2, 2, 2}, {0, 1, 10, 11, 100, 101, 110, 111}},
    {"resize", [](KVN_Dmatrix& m) { return m.ResizeDimension(1, 1); },
     {2, 1, 2}, {0, 0, 0, 0}},
    {"resize to the present size", [](KVN_Dmatrix& m) { return m.ResizeDimension(1, 3); },
     {2, 3, 2}, {0, 1, 10, 11, 20, 21, 100, 101, 110, 111, 120, 121}},
    // (i, j, k) holds the old (a, b, c) with i = c, j = a, k = b
    {"permute", [](KVN_Dmatrix& m) { return m.ChangeOrderOfDimensions(IntsOf({2, 0, 1})); },
     {2, 2, 3}, {0, 10, 20, 100, 110, 120, 1, 11, 21, 101, 111, 121}},
    {"permute, last stays", [](KVN_Dmatrix& m) { return m.ChangeOrderOfDimensions(IntsOf({1, 0, 2})); },
     {3, 2, 2}, {0, 1, 100, 101, 10, 11, 110, 111, 20, 21, 120, 121}},
    {"reorder", [](KVN_Dmatrix& m) { return m.ChangeOrderWithinDimension(1, IntsOf({2, 0, 1})); },
     {2, 3, 2}, {20, 21, 0, 1, 10, 11, 120, 121, 100, 101, 110, 111}},
    {"shift slice", [](KVN_Dmatrix& m) { return m.ShiftSlice(1, 1, 7); },
     {2, 3, 2}, {0, 1, 7, 7, 10, 11, 100, 101, 7, 7, 110, 111}},
    {"remove slice", [](KVN_Dmatrix& m) { return m.RemoveSlice(1, 0); },
     {2, 3, 2}, {10, 11, 20, 21, 0, 0, 110, 111, 120, 121, 0, 0}},
    {"restrict", [](KVN_Dmatrix& m) { return m.Restrict(IntsOf({1, -1, 0}), m); },
     {3}, {100, 110, 120}},
    {"restrict inside", [](KVN_Dmatrix& m) { return m.Restrict(IntsOf({-1, 2, -1}), m); },
     {2, 2}, {20, 21, 120, 121}},
    {"restrict nothing", [](KVN_Dmatrix& m) { return m.Restrict(IntsOf({-1, -1, -1}), m); },
     {2, 3, 2}, {0, 1, 10, 11, 20, 21, 100, 101, 110, 111, 120, 121}},
    {"restrict all", [](KVN_Dmatrix& m) { return m.Restrict(IntsOf({1, 1, 1}), m); }, {}, {}},
};
// clang-format on

TEST(Dmatrix, ChangesOfShapeMoveEachCellToItsPlace) {
  for (const ShapeCase& c : kShapeCases) {
    SCOPED_TRACE(c.name);
    KVN_Dmatrix table = Coded();
    EXPECT_EQ(c.operation(table), 0);
    EXPECT_EQ(ItemsOf(table.GetDimensions()), c.sizes);
    EXPECT_TRUE(CellsNear(table, c.cells, 0.0));
    KVN_Dmatrix fresh;  // the invariants: multipliers follow from the sizes, all published as full
    ASSERT_EQ(fresh.Setup(table.GetDimensions()), 0);
    EXPECT_EQ(ItemsOf(table.GetMultipliers()), ItemsOf(fresh.GetMultipliers()));
    EXPECT_EQ(table.GetItems().GetNumItems(), table.GetSize());
  }
}

TEST(Dmatrix, FailedChangesOfShapeLeaveTheTable) {
  for (const ShapeCase& c : kShapeCases) {
    SCOPED_TRACE(c.name);
    FailEachAllocation([&](int n) {
      KVN_Dmatrix table = Coded();
      FailingAllocation failing(n);
      const int result = c.operation(table);
      EXPECT_EQ(result, failing.HasFailed() ? KVN_NO_MEMORY : 0);
      if (failing.HasFailed()) {
        EXPECT_TRUE(table.SameDimensions(Coded()));
        EXPECT_TRUE(CellsNear(table, ItemsOf(Coded().GetItems()), 0.0));
      }
      return failing.HasFailed();
    });
  }
}

TEST(Dmatrix, BadArgumentsOfShapeChangesAreRefused) {
  using M = KVN_Dmatrix;
  // clang-format off
  const std::function<int(M&)> operations[] = {
      [](M& m) { return m.AddDimension(4, 2); },
      [](M& m) { return m.AddDimension(-1, 2); },
      [](M& m) { return m.AddDimension(0, 0); },
      [](M& m) { return m.RemoveDimension(3, 0); },
      [](M& m) { return m.RemoveDimension(1, 3); },
      [](M& m) { return m.RemoveDimensionWeighted(-1, DoublesOf({1, 1, 1})); },
      [](M& m) { return m.RemoveDimensionWeighted(1, DoublesOf({1, 1})); },
      [](M& m) { return m.PushSlice(3); },
      [](M& m) { return m.ShrinkDimension(-1); },
      [](M& m) { return m.ResizeDimension(0, 0); },
      [](M& m) { return m.ChangeOrderOfDimensions(IntsOf({0, 1, 1})); },
      [](M& m) { return m.ChangeOrderOfDimensions(IntsOf({0, 1})); },
      [](M& m) { return m.ChangeOrderWithinDimension(1, IntsOf({0, 1, 1})); },
      [](M& m) { return m.ChangeOrderWithinDimension(3, IntsOf({0, 1})); },
      [](M& m) { return m.ShiftSlice(1, 3, 0.0); },
      [](M& m) { return m.RemoveSlice(3, 0); },
      [](M& m) { return m.Restrict(IntsOf({0, 0}), m); },
      [](M& m) { return m.Restrict(IntsOf({0, 3, 0}), m); },
  };
  // clang-format on
  for (const auto& operation : operations) {
    SCOPED_TRACE(&operation - operations);
    KVN_Dmatrix table = Coded();
    EXPECT_EQ(operation(table), KVN_REFUSED);
    EXPECT_TRUE(table.SameDimensions(Coded()));
    EXPECT_TRUE(CellsNear(table, ItemsOf(Coded().GetItems()), 0.0));
  }
  KVN_Dmatrix single = TableOf({1, 2}, {1, 2});
  EXPECT_EQ(single.ShrinkDimension(0), KVN_REFUSED);
}

TEST(Dmatrix, OnlyDimensionIsRemovedToTheEmptyTable) {
  KVN_Dmatrix sliced = TableOf({3}, {1, 2, 3}), weighted = sliced;
  EXPECT_EQ(sliced.RemoveDimension(0, 2), 0);
  EXPECT_EQ(weighted.RemoveDimensionWeighted(0, DoublesOf({1, 1, 1})), 0);
  EXPECT_EQ(sliced.GetNumberOfDimensions() + weighted.GetNumberOfDimensions(), 0);
  EXPECT_EQ(sliced.GetSize() + weighted.GetSize(), 0);
  ASSERT_EQ(sliced.AddDimension(0, 4), 0);
  EXPECT_TRUE(CellsNear(sliced, {0, 0, 0, 0}, 0.0));
}

TEST(Dmatrix, GetSliceCopiesOut) {
  const KVN_Dmatrix table = Coded();
  KVN_intArray sizes;
  KVN_doubleArray data;
  ASSERT_EQ(table.GetSlice(1, 2, sizes, data), 0);
  EXPECT_EQ(ItemsOf(sizes), (std::vector<int>{2, 2}));
  EXPECT_EQ(ItemsOf(data), (std::vector<double>{20, 21, 120, 121}));
  EXPECT_EQ(table.GetSlice(1, 3, sizes, data), KVN_REFUSED);
  EXPECT_EQ(TableOf({2}, {1, 2}).GetSlice(0, 1, sizes, data), 0) << "meant to do nothing";
  EXPECT_EQ(ItemsOf(data), (std::vector<double>{20, 21, 120, 121}));
  KVN_Dmatrix result;
  ASSERT_EQ(table.WeightedCopy(2, DoublesOf({1, -1}), result), 0);
  EXPECT_TRUE(CellsNear(result, {-1, -1, -1, -1, -1, -1}, 0.0));
}

}  // namespace
