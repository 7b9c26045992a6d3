#include <memory>

#include "foundation/numberText.h"
#include "foundation/resultCodes.h"
#include "tests/support/builders.h"
#include "tests/support/networkBuilder.h"
#include "values/expectedUtility.h"
#include "values/listOfDecisions.h"
#include "values/mauExpectedUtility.h"

namespace {

// Decision with two alternatives whose expected utilities are 10 and 20.
struct OneDecision {
  KVN_network network;
  int d = AddNodeBelow(network, KVN_TYPE_LIST, "D", 2, {});
  KVN_nodeValue& value = *network.ValueOf(d);

  OneDecision() { EXPECT_EQ(value.SetValue(TableOf({2}, {10, 20})), 0); }
};

}  // namespace

TEST(ListOfDecisions, AChoiceLeavesTheUtilitiesReadable) {
  OneDecision net;
  ASSERT_EQ(net.value.SetEvidence(1), 0);
  EXPECT_EQ(net.value.GetEvidence(), 1);
  EXPECT_EQ(net.value.GetFlags(), unsigned{KVN_VALUE_EVIDENCE | KVN_VALUE_VALID});
  EXPECT_TRUE(CellsNear(MatrixOf(net.network, net.d), {10, 20}, 0.0));
  EXPECT_EQ(net.value.ClearEvidence(), 0);
  EXPECT_EQ(net.value.GetFlags(), 0u);
  EXPECT_EQ(net.value.ClearEvidence(), KVN_REFUSED);
}

TEST(ListOfDecisions, ABadAlternativeIsIgnoredAndTakesTheOldChoiceAway) {
  OneDecision net;
  EXPECT_EQ(net.value.SetEvidence(5), 0);
  EXPECT_EQ(net.value.SetPropagatedEvidence(-1), 0);
  EXPECT_EQ(net.value.GetFlags(), 0u);
  ASSERT_EQ(net.value.SetEvidence(1), 0);
  EXPECT_EQ(net.value.SetEvidence(5), 0);
  EXPECT_EQ(net.value.GetEvidence(), KVN_REFUSED);
}

TEST(ListOfDecisions, PropagatedChoiceIsNotTheUsersToClear) {
  OneDecision net;
  ASSERT_EQ(net.value.SetPropagatedEvidence(1), 0);
  EXPECT_EQ(net.value.ClearEvidence(), KVN_REFUSED);
  EXPECT_EQ(net.value.SetEvidence(0), KVN_REFUSED);
  EXPECT_EQ(net.value.ClearPropagatedEvidence(), 0);
  EXPECT_EQ(net.value.SetEvidence(0), 0);
}

TEST(ExpectedUtility, HasOneCellForEachChoice) {
  KVN_network network;
  const int u = AddNodeBelow(network, KVN_TYPE_TABLE, "U", 0, {});
  const int d = AddNodeBelow(network, KVN_TYPE_LIST, "D", 3, {});
  KVN_nodeValue& value = *network.ValueOf(u);
  EXPECT_EQ(value.GetSize(), 1);
  ASSERT_EQ(value.AddIndexingParent(d), 0);
  EXPECT_EQ(ItemsOf(MatrixOf(network, u).GetDimensions()), (std::vector<int>{3, 1}));
  std::unique_ptr<KVN_nodeValue> copy(CloneValue(value));
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->GetSize(), 3);
  // Another kind of value has no utilities to offer.
  ASSERT_EQ(value.Assign(*network.ValueOf(d)), 0);
  EXPECT_EQ(value.GetSize(), 1);
  EXPECT_EQ(value.GetIndexingParents().GetNumItems(), 0);
}

TEST(ExpectedUtility, RescalesLinearlyOntoTheTargetRange) {
  const double undefined = KVN_UNDEFINED_VALUE;
  const struct {
    const char* name;
    std::vector<double> before;
    double fromLow, fromHigh, toLow, toHigh;
    std::vector<double> after;
  } kCases[] = {
      // (x - 10) * 1 / 40 + 0
      {"range of the cells", {10, 20, 50}, 0, 0, 0, 1, {0, 0.25, 1}},
      // 0 to 100 holds all cells: x / 100
      {"wider range", {10, 20, 50}, 0, 100, 0, 1, {0.1, 0.2, 0.5}},
      // 20 to 30 is widened to 10 to 50
      {"narrow range", {10, 20, 50}, 20, 30, 0, 1, {0, 0.25, 1}},
      {"turned round", {10, 15, 20}, 10, 20, 1, 0, {1, 0.5, 0}},
      {"all cells equal", {7, 7, 7}, 0, 0, 0, 3, {3, 3, 3}},
      {"target is one point", {1, 2, undefined}, 0, 0, 5, 5, {5, 5, 5}},
      {"ranges equal", {-1, 0.3, 1}, 0, 0, -1, 1, {-1, 0.3, 1}},
      // an undefined cell counts as 0 in the range: 0 to 4, halved
      {"undefined cell stays", {2, undefined, 4}, 0, 0, 0, 2, {1, undefined, 2}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    KVN_network network;
    KVN_expectedUtility value(&network, 0);
    ASSERT_EQ(value.SetValue(TableOf({static_cast<int>(c.before.size()), 1}, c.before)), 0);
    EXPECT_EQ(value.Rescale(c.fromLow, c.fromHigh, c.toLow, c.toHigh), 0);
    KVN_Dmatrix* matrix = nullptr;
    ASSERT_EQ(value.GetValue(matrix), 0);
    EXPECT_TRUE(CellsNear(*matrix, c.after, 1e-15));
    for (int i = 0; i < 3; i++) EXPECT_EQ((*matrix)[i] == undefined, c.after[i] == undefined);
  }
}

/// m over the utilities u and v, with decision d (2 alternatives); u is indexed by d and the chance
/// node c (3), v by c alone. The numbers: u(d, c) = 10 d + c, v(c) = 100 c.
struct Combined {
  KVN_network network;
  int c = AddNodeBelow(network, KVN_TYPE_CPT, "c", 3, {});
  int d = AddNodeBelow(network, KVN_TYPE_LIST, "d", 2, {});
  int u = AddNodeBelow(network, KVN_TYPE_TABLE, "u", 0, {});
  int v = AddNodeBelow(network, KVN_TYPE_TABLE, "v", 0, {});
  int m = AddNodeBelow(network, KVN_TYPE_MAU, "m", 0, {u, d, v});

  Combined() {
    Index(u, {d, c}, {0, 1, 2, 10, 11, 12});
    Index(v, {c}, {0, 100, 200});
    WriteCells(network, m, {2, 1, -1, 0.5});  // weights of u and v for each alternative of d
  }
  void Index(int handle, const std::vector<int>& by, const std::vector<double>& cells) {
    for (int parent : by) EXPECT_EQ(network.ValueOf(handle)->AddIndexingParent(parent), 0);
    KVN_Dmatrix& matrix = MatrixOf(network, handle);
    for (int i = 0; i < static_cast<int>(cells.size()); i++) matrix[i] = cells[i];
  }
  int Compute() {
    return static_cast<KVN_mauExpectedUtility*>(network.ValueOf(m))->ComputeFromParents();
  }
};

TEST(MauExpectedUtility, WeighsTheValuesOfItsParentsCellByCell) {
  const double undefined = KVN_UNDEFINED_VALUE;
  Combined net;
  net.Index(net.m, {net.c, net.d}, {});
  ASSERT_EQ(net.Compute(), 0);
  // d = 0: 2 u + v; d = 1: -u + v / 2, for c = 0, 1, 2
  EXPECT_TRUE(CellsNear(MatrixOf(net.network, net.m), {0, -10, 102, 39, 204, 88}, 0.0));
  MatrixOf(net.network, net.v)[1] = undefined;
  ASSERT_EQ(net.Compute(), 0);
  EXPECT_TRUE(
      CellsNear(MatrixOf(net.network, net.m), {0, -10, undefined, undefined, 204, 88}, 0.0));
}

TEST(MauExpectedUtility, TakesTheChoiceOfADecisionThatDoesNotIndex) {
  const double undefined = KVN_UNDEFINED_VALUE;
  Combined net;
  net.network.ValueOf(net.u)->ClearIndexingParents();
  MatrixOf(net.network, net.u) = TableOf({1}, {4});
  net.Index(net.m, {net.c}, {});
  ASSERT_EQ(net.Compute(), 0);
  const KVN_Dmatrix& matrix = MatrixOf(net.network, net.m);
  EXPECT_TRUE(CellsNear(matrix, {undefined, undefined, undefined}, 0.0)) << "nothing is chosen";
  ASSERT_EQ(net.network.ValueOf(net.d)->SetEvidence(1), 0);
  ASSERT_EQ(net.Compute(), 0);
  EXPECT_TRUE(CellsNear(matrix, {-4, 46, 96}, 0.0));
}

TEST(MauExpectedUtility, RefusesWhatDoesNotFit) {
  Combined net;
  net.Index(net.m, {net.d}, {});
  EXPECT_EQ(net.Compute(), KVN_REFUSED) << "u depends on c, m doesn't say so";
  net.Index(net.m, {net.c}, {});
  ASSERT_EQ(net.Compute(), 0);
  ASSERT_EQ(net.network.DefinitionOf(net.m)->SetDefinition(TableOf({2}, {1, 1})), 0);
  EXPECT_EQ(net.Compute(), KVN_REFUSED);
  EXPECT_EQ(MatrixOf(net.network, net.m)[0], KVN_UNDEFINED_VALUE);
}
