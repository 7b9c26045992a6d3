#include "definitions/cast.h"

#include <gtest/gtest.h>

#include "foundation/resultCodes.h"
#include "tests/definitions/gateNet.h"

namespace {

struct RowsCase {
  const char* name;
  std::vector<double> positive, negative;
  double baseline;
  std::vector<double> rows;
};
// Workings, by row:
//   both ways      0: b = 0.5, r = 0.5; 1: a = 0.5, r = -0.5
//   full pushes    00: a = b = 0; 01: b = 0, r = 1; 10: a = 0, r = -1
//   mixed pushes   00: b = 0.8 * 0.5, r = 0.6; 01: a = 0.4, b = 0.8, r = -0.5;
//                  10: a = 0.9, b = 0.5, r = 4 / 9; 11: a = 0.9 * 0.4, r = -0.64
//   out of bounds  0: b = -2, r = 1 + 2; 1: a = -2, r = -2 - 1
const RowsCase kRowsCases[] = {
    {"no parents", {}, {}, 0.3, {0.3}},
    {"no pushes", {0, 0}, {0, 0}, 0.3, {0.3, 0.3, 0.3, 0.3}},
    {"both ways", {0.5}, {-0.5}, 0.5, {0.75, 0.25}},
    {"full pushes", {1, -1}, {0, 0}, 0.25, {0.25, 1, 0, 0.25}},
    {"mixed pushes", {0.2, 0.5}, {-0.1, -0.6}, 0.4, {0.76, 0.2, 2.0 / 3, 0.144}},
    {"out of bounds", {3}, {-3}, 0.5, {2, -1}},
};

}  // namespace

TEST(Cast, RowsFollowTheNumbers) {
  for (const RowsCase& c : kRowsCases) {
    SCOPED_TRACE(c.name);
    GateNet<KVN_cast> net(static_cast<int>(c.positive.size()));
    EXPECT_EQ(net.gate().SetBaseline(c.baseline), 0);
    EXPECT_EQ(net.gate().SetPositiveWeights(DoublesOf(c.positive)), 0);
    EXPECT_EQ(net.gate().SetNegativeWeights(DoublesOf(c.negative)), 0);
    EXPECT_TRUE(net.HasRows(c.rows));
  }
}

TEST(Cast, NumbersTravelWithTheirParents) {
  // On a baseline of 0 only 0.5 at coordinate 0 of the first and 0.25 at 1 of the second push.
  GateNet<KVN_cast> net(3);
  ASSERT_EQ(net.gate().SetBaseline(0), 0);
  ASSERT_EQ(net.gate().SetPositiveWeights(DoublesOf({0.5, 0, 0})), 0);
  EXPECT_TRUE(net.HasRows({0.5, 0.5, 0.5, 0.5, 0, 0, 0, 0}));
  ASSERT_EQ(net.gate().SetNegativeWeights(DoublesOf({0, 0.25, 0})), 0);
  EXPECT_TRUE(net.HasRows({0.5, 0.5, 0.625, 0.625, 0, 0, 0.25, 0.25}));
  ASSERT_EQ(net.network.ChangeOrderOfParents(net.handle, IntsOf({2, 0, 1})), 0);
  EXPECT_TRUE(net.HasRows({0.5, 0.625, 0, 0.25, 0.5, 0.625, 0, 0.25}));
  ASSERT_EQ(net.network.RemoveArc(net.parents[0], net.handle, 0), 0);
  EXPECT_TRUE(net.HasRows({0, 0.25, 0, 0.25}));
}

TEST(Cast, RecreatedParentsDoNotPush) {
  GateNet<KVN_cast> net(2);
  ASSERT_EQ(net.gate().SetPositiveWeights(DoublesOf({0.5, 0.5})), 0);
  EXPECT_EQ(net.gate().ReCreate(), 0);
  EXPECT_TRUE(net.HasRows({0.5, 0.5, 0.5, 0.5}));
  EXPECT_EQ(net.gate().SetNegativeWeights(DoublesOf({0.5})), KVN_REFUSED);
}
