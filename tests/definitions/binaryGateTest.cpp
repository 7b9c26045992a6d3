#include "definitions/binaryGate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "definitions/cast.h"
#include "definitions/demorgan.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/node.h"
#include "tests/support/builders.h"
#include "tests/support/failingAllocation.h"
#include "values/nodeValue.h"

namespace {

/// What both gates have in common, for each of their type codes.
class BinaryGate : public testing::TestWithParam<int> {
 protected:
  KVN_nodeDefinition& Gate() { return *network.DefinitionOf(gate); }
  KVN_Dmatrix& Table() {
    KVN_Dmatrix* table = nullptr;
    EXPECT_EQ(Gate().GetDefinition(table), 0);
    return *table;
  }
  int SetBase(double p) {
    if (GetParam() == KVN_TYPE_CAST) return static_cast<KVN_cast&>(Gate()).SetBaseline(p);
    return static_cast<KVN_demorgan&>(Gate()).SetPriorBelief(p);
  }
  int SetNumbers(const std::vector<double>& numbers) {
    const KVN_doubleArray values = DoublesOf(numbers);
    if (GetParam() == KVN_TYPE_CAST)
      return static_cast<KVN_cast&>(Gate()).SetPositiveWeights(values);
    return static_cast<KVN_demorgan&>(Gate()).SetParentWeights(values);
  }

  KVN_network network;
  int gate = network.AddNode(GetParam(), "gate");
  int a = network.AddNode(GetParam(), "a");
  int b = network.AddNode(GetParam(), "b");
  int cpt = network.AddNode(KVN_TYPE_CPT, "cpt");
};

INSTANTIATE_TEST_SUITE_P(Classes, BinaryGate, testing::Values(KVN_TYPE_CAST, KVN_TYPE_DEMORGAN),
                         [](const auto& tested) {
                           return tested.param == KVN_TYPE_CAST ? "Cast" : "Demorgan";
                         });

}  // namespace

TEST_P(BinaryGate, OutcomesAreFixed) {
  EXPECT_TRUE(CellsNear(Table(), {0.5, 0.5}, 0));
  EXPECT_EQ(Gate().GetNumberOfOutcomes(), 2);
  EXPECT_EQ(TextsOf(*Gate().GetOutcomesNames()), (std::vector<std::string>{"True", "False"}));
  EXPECT_EQ(Gate().AddOutcome("Maybe"), KVN_NOT_APPLICABLE);
  EXPECT_EQ(Gate().SetNumberOfOutcomes(3), KVN_NOT_APPLICABLE);
  EXPECT_EQ(Gate().SetDefinition(DoublesOf({0.1, 0.9})), KVN_NOT_APPLICABLE);
  KVN_intArray mapping = IntsOf({1, 0});
  EXPECT_EQ(Gate().ChangeOutcomes(StringsOf({"p", "q"}), mapping), KVN_NOT_APPLICABLE);
  EXPECT_TRUE(CellsNear(Table(), {0.5, 0.5}, 0));
}

TEST_P(BinaryGate, OnlyGatesOfTheSameClassMayBeParents) {
  const int other = GetParam() == KVN_TYPE_CAST ? KVN_TYPE_DEMORGAN : KVN_TYPE_CAST;
  EXPECT_EQ(network.AddArc(cpt, gate, 0), KVN_NOT_APPLICABLE);
  EXPECT_EQ(network.AddArc(network.AddNode(other, "other"), gate, 0), KVN_NOT_APPLICABLE);
  EXPECT_EQ(Gate().AddParent(99), KVN_REFUSED);
  EXPECT_EQ(network.AddArc(a, gate, 0), 0);
  EXPECT_EQ(network.AddArc(b, gate, 0), 0);
  EXPECT_EQ(ItemsOf(Table().GetDimensions()), (std::vector<int>{2, 2, 2}));
  // A parent that has just come has no effect.
  EXPECT_TRUE(CellsNear(Table(), {0.5, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5}, 0));
}

TEST_P(BinaryGate, StandsWithoutANetwork) {
  const std::unique_ptr<KVN_nodeDefinition> stray(NewDefinition(GetParam(), nullptr, -1));
  ASSERT_NE(stray, nullptr);
  EXPECT_EQ(stray->AddParent(0), KVN_REFUSED);
  EXPECT_EQ(stray->RemoveParent(0), KVN_REFUSED);
  EXPECT_EQ(stray->GetSize(), 2);
}

TEST_P(BinaryGate, RefusedNumbersChangeNothing) {
  ASSERT_EQ(network.AddArc(a, gate, 0), 0);
  ASSERT_EQ(SetBase(1.0), 0);
  ASSERT_EQ(SetNumbers({0.25}), 0);
  const std::vector<double> before = ItemsOf(Table().GetItems());
  EXPECT_EQ(SetBase(1.5), KVN_REFUSED);
  EXPECT_EQ(SetBase(-0.1), KVN_REFUSED);
  EXPECT_EQ(SetBase(std::nan("")), KVN_REFUSED);
  EXPECT_EQ(SetNumbers({0.5, 0.5}), KVN_REFUSED);
  EXPECT_TRUE(CellsNear(Table(), before, 0));
}

TEST_P(BinaryGate, SettersNotifyNobody) {
  network.ValueOf(gate)->SetValueValid();
  ASSERT_EQ(SetBase(0.25), 0);
  EXPECT_TRUE(CellsNear(Table(), {0.25, 0.75}, 0));
  EXPECT_TRUE(network.ValueOf(gate)->IsValueValid());
}

TEST_P(BinaryGate, CopiesOnlyFromItsOwnClass) {
  ASSERT_EQ(network.AddArc(a, gate, 0), 0);
  ASSERT_EQ(SetBase(0.2), 0);
  ASSERT_EQ(SetNumbers({0.5}), 0);
  EXPECT_EQ(Gate().Assign(*network.DefinitionOf(cpt)), KVN_NOT_APPLICABLE);
  const std::vector<double> cells = ItemsOf(Table().GetItems());

  KVN_network copy(network);
  ASSERT_EQ(SetBase(0.9), 0);
  KVN_Dmatrix* copied = nullptr;
  ASSERT_EQ(copy.DefinitionOf(gate)->GetDefinition(copied), 0);
  EXPECT_TRUE(CellsNear(*copied, cells, 0));

  copy.DefinitionOf(gate)->CopyParametersTo(Gate());
  EXPECT_TRUE(CellsNear(Table(), cells, 0));
  copy.DefinitionOf(cpt)->CopyParametersTo(Gate());  // of another class
  Gate().CopyParametersTo(*network.DefinitionOf(cpt));
  EXPECT_TRUE(CellsNear(Table(), cells, 0));
}

TEST_P(BinaryGate, ChangedNodeStartsWithDefaultsAndKeepsItsParents) {
  const int child = network.AddNode(KVN_TYPE_CPT, "child");
  ASSERT_EQ(network.AddArc(cpt, child, 0), 0);
  ASSERT_EQ(network.DefinitionOf(child)->SetDefinition(DoublesOf({0.1, 0.9, 0.2, 0.8})), 0);
  EXPECT_EQ(network.GetNode(child)->ChangeType(GetParam()), KVN_NOT_APPLICABLE);
  ASSERT_EQ(network.TypeOf(child), GetParam());
  EXPECT_EQ(network.GetNumberOfParents(child), 1);
  EXPECT_TRUE(network.DefinitionOf(child)->IsReady());

  // A parent of the wrong kind has a place in the list; a right one behind it must not disturb.
  const int result = network.AddArc(a, child, 0);
  EXPECT_EQ(result, GetParam() == KVN_TYPE_CAST ? KVN_SUCCESS : KVN_NOT_APPLICABLE);
  EXPECT_EQ(network.RemoveArc(cpt, child, 0), 0);
  KVN_Dmatrix* table = nullptr;
  ASSERT_EQ(network.DefinitionOf(child)->GetDefinition(table), 0);
  EXPECT_EQ(table->GetNumberOfDimensions(), network.GetNumberOfParents(child) + 1);
}

TEST_P(BinaryGate, ParentWithoutMemoryChangesNothing) {
  // Five parents: more weights and more cells than the arrays hold without allocation.
  for (int i = 0; i < 4; i++) {
    ASSERT_EQ(network.AddArc(network.AddNode(GetParam(), nullptr), gate, 0), 0);
  }
  const std::vector<double> before = ItemsOf(Table().GetItems());
  const int failures = FailEachAllocation([&](int n) {
    FailingAllocation failing(n);
    const int result = network.AddArc(a, gate, 0);
    if (failing.HasFailed() && result < 0) {
      EXPECT_EQ(network.GetNumberOfParents(gate), 4);
      EXPECT_TRUE(CellsNear(Table(), before, 0));
    } else if (result == 0) {
      EXPECT_EQ(Table().GetSize(), 64);
      EXPECT_EQ(network.RemoveArc(a, gate, 0), 0);
    }
    return failing.HasFailed();
  });
  EXPECT_GT(failures, 0);
  EXPECT_TRUE(CellsNear(Table(), before, 0));
}
