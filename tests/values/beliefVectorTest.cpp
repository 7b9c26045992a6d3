#include "values/beliefVector.h"

#include <cmath>
#include <limits>

#include "foundation/resultCodes.h"
#include "tests/support/builders.h"
#include "tests/support/networkBuilder.h"

namespace {

// X with three outcomes.
struct OneNode {
  KVN_network network;
  int x = AddNodeBelow(network, KVN_TYPE_CPT, "X", 3, {});
  KVN_nodeValue& value = *network.ValueOf(x);

  KVN_Dmatrix& Matrix() { return MatrixOf(network, x); }
};

}  // namespace

TEST(BeliefVector, EvidenceIsAValidPointMassAndTheLatestOneCounts) {
  OneNode net;
  EXPECT_EQ(net.value.GetEvidence(), KVN_REFUSED);
  ASSERT_EQ(net.value.SetEvidence(1), 0);
  EXPECT_EQ(net.value.GetFlags(), unsigned{KVN_VALUE_EVIDENCE | KVN_VALUE_VALID});
  EXPECT_TRUE(CellsNear(net.Matrix(), {0, 1, 0}, 0.0));

  ASSERT_EQ(net.value.SetEvidence(2), 0);
  EXPECT_EQ(net.value.GetEvidence(), 2);
  EXPECT_TRUE(CellsNear(net.Matrix(), {0, 0, 1}, 0.0));

  // A bad outcome is refused, but the earlier evidence has made way for it.
  for (int bad : {-1, 3}) {
    ASSERT_EQ(net.value.SetEvidence(2), 0);
    EXPECT_EQ(net.value.SetEvidence(bad), KVN_REFUSED);
    EXPECT_EQ(net.value.GetFlags(), 0u);
  }
  EXPECT_EQ(net.value.ClearEvidence(), KVN_REFUSED);
}

TEST(BeliefVector, PropagatedEvidenceYieldsOnlyToTheSameOutcome) {
  OneNode net;
  ASSERT_EQ(net.value.SetPropagatedEvidence(1), 0);
  EXPECT_EQ(net.value.GetFlags(), unsigned{KVN_VALUE_PROPAGATED_EVIDENCE | KVN_VALUE_VALID});
  EXPECT_EQ(net.value.SetPropagatedEvidence(1), KVN_REFUSED);
  EXPECT_EQ(net.value.ClearEvidence(), KVN_REFUSED);
  EXPECT_EQ(net.value.SetEvidence(0), KVN_REFUSED);
  EXPECT_EQ(net.value.GetEvidence(), 1);
  ASSERT_EQ(net.value.SetEvidence(1), 0);
  EXPECT_EQ(net.value.GetFlags(), unsigned{KVN_VALUE_EVIDENCE | KVN_VALUE_VALID});
  EXPECT_EQ(net.value.ClearPropagatedEvidence(), KVN_REFUSED);
}

TEST(BeliefVector, ScalesSoftEvidenceUnlessItSumsToOne) {
  constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
  const struct {
    const char* name;
    std::vector<double> given;
    int result;
    std::vector<double> stored;
  } kCases[] = {
      {"scaled", {2, 2, 4}, 0, {0.25, 0.25, 0.5}},
      {"above 1 within 0.000005", {0.5000001, 0.5, 0}, 0, {0.5000001, 0.5, 0}},
      {"above 1 beyond it", {1.25, 1.25, 0}, 0, {0.5, 0.5, 0}},
      {"a zero sum isn't caught", {0, 0, 0}, 0, {kNan, kNan, kNan}},
      {"too few", {1, 1}, KVN_REFUSED, {}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    OneNode net;
    EXPECT_EQ(net.value.SetVirtualEvidence(c.given), c.result);
    EXPECT_EQ(net.value.IsVirtualEvidence(), c.result == 0);
    std::vector<double> stored;
    EXPECT_EQ(net.value.GetVirtualEvidence(stored), c.result == 0 ? 0 : KVN_REFUSED);
    ASSERT_EQ(stored.size(), c.stored.size());
    for (size_t i = 0; i < stored.size(); i++) {
      if (std::isnan(c.stored[i])) {
        EXPECT_TRUE(std::isnan(stored[i]));
      } else {
        EXPECT_EQ(stored[i], c.stored[i]);
      }
    }
  }
}

TEST(BeliefVector, SoftAndUserEvidenceReplaceEachOther) {
  OneNode net;
  std::vector<double> stored;
  ASSERT_EQ(net.value.SetEvidence(0), 0);
  ASSERT_EQ(net.value.SetVirtualEvidence({1, 1, 2}), 0);
  EXPECT_EQ(net.value.GetFlags(), unsigned{KVN_VALUE_VIRTUAL_EVIDENCE});
  EXPECT_EQ(net.value.GetEvidence(), KVN_REFUSED);
  ASSERT_EQ(net.value.SetEvidence(0), 0);
  EXPECT_EQ(net.value.GetVirtualEvidence(stored), KVN_REFUSED);
  EXPECT_FALSE(net.value.IsVirtualEvidence());

  ASSERT_EQ(net.value.SetVirtualEvidence({1, 1, 2}), 0);
  EXPECT_EQ(net.value.ClearEvidence(), 0);
  EXPECT_EQ(net.value.GetFlags(), 0u);

  // Propagated evidence isn't the user's to clear, so soft evidence comes to stand beside it.
  ASSERT_EQ(net.value.SetPropagatedEvidence(1), 0);
  ASSERT_EQ(net.value.SetVirtualEvidence({1, 1, 2}), 0);
  EXPECT_TRUE(net.value.IsPropagatedEvidence() && net.value.IsVirtualEvidence());
}

TEST(BeliefVector, IndexingParentsAreTheLeadingDimensionsUntilEvidence) {
  KVN_network network;
  const int a = AddNodeBelow(network, KVN_TYPE_LIST, "A", 2, {});
  const int b = AddNodeBelow(network, KVN_TYPE_CPT, "B", 4, {});
  const int u = AddNodeBelow(network, KVN_TYPE_TABLE, "U", 0, {});
  const int x = AddNodeBelow(network, KVN_TYPE_CPT, "X", 3, {});
  KVN_nodeValue& value = *network.ValueOf(x);
  WriteCells(network, x, {0.2, 0.3, 0.5});
  ASSERT_EQ(value.SetValue(TableOfNode(network, x)), 0);

  EXPECT_EQ(value.AddIndexingParent(a), 0);
  EXPECT_EQ(value.AddIndexingParent(b), 0);
  EXPECT_EQ(value.AddIndexingParent(a), 0);  // a second time: nothing
  EXPECT_EQ(value.AddIndexingParent(u), 0);  // in the list, but no dimension
  EXPECT_EQ(value.AddIndexingParent(99), KVN_REFUSED);
  EXPECT_EQ(ItemsOf(value.GetIndexingParents()), (std::vector<int>{a, b, u}));
  EXPECT_EQ(ItemsOf(MatrixOf(network, x).GetDimensions()), (std::vector<int>{2, 4, 3}));
  EXPECT_EQ(value.GetSize(), 24);
  EXPECT_EQ(MatrixOf(network, x)[23], 0.5);

  // Never both ways.
  EXPECT_EQ(network.ValueOf(b)->AddIndexingParent(x), 0);
  EXPECT_EQ(network.ValueOf(b)->GetIndexingParents().GetNumItems(), 0);

  ASSERT_EQ(value.SetEvidence(2), 0);
  EXPECT_EQ(value.GetIndexingParents().GetNumItems(), 0);
  EXPECT_TRUE(CellsNear(MatrixOf(network, x), {0, 0, 1}, 0.0));
}

TEST(BeliefVector, EvidenceReshapesTheMatrixAfterAChangeOfOutcomes) {
  OneNode net;
  ASSERT_EQ(net.value.SetEvidence(1), 0);
  ASSERT_EQ(net.network.DefinitionOf(net.x)->AddOutcome("more"), 0);
  WriteCells(net.network, net.x, {0.25, 0.25, 0.25, 0.25});  // a new outcome is impossible at first
  EXPECT_EQ(net.value.GetSize(), 3);                         // as it was left
  ASSERT_EQ(net.value.SetEvidence(3), 0);
  EXPECT_TRUE(CellsNear(net.Matrix(), {0, 0, 0, 1}, 0.0));
  EXPECT_TRUE(net.value.IsEvidence());
}

TEST(BeliefVector, ConversionFromADecisionKeepsTheChoice) {
  KVN_network network;
  const int d = AddNodeBelow(network, KVN_TYPE_LIST, "D", 3, {});
  ASSERT_EQ(network.ValueOf(d)->SetEvidence(2), 0);
  KVN_beliefVector value(&network, d);
  ASSERT_EQ(value.Assign(*network.ValueOf(d)), 0);
  EXPECT_EQ(value.GetEvidence(), 2);
  KVN_Dmatrix* matrix = nullptr;
  ASSERT_EQ(value.GetValue(matrix), 0);
  EXPECT_TRUE(CellsNear(*matrix, {0, 0, 1}, 0.0));
}

TEST(BeliefVector, WithoutADefinitionItIsNotReadyAndNoSourceForACopy) {
  KVN_network network;
  KVN_beliefVector lost(&network, 7);
  EXPECT_EQ(lost.ReCreate(), KVN_REFUSED);
  EXPECT_FALSE(lost.IsReady());
  EXPECT_EQ(lost.SetEvidence(0), KVN_REFUSED);

  OneNode net;
  ASSERT_EQ(net.value.SetEvidence(1), 0);
  EXPECT_EQ(net.value.Assign(lost), KVN_NOT_READY);
  EXPECT_EQ(net.value.GetEvidence(), 1);
  EXPECT_EQ(CloneValue(lost), nullptr);
}
