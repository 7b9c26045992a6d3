#include "definitions/noisyAdder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>

#include "foundation/resultCodes.h"
#include "network/node.h"
#include "tests/support/definitionBuilder.h"

namespace {

using Ints = std::vector<int>;
using Doubles = std::vector<double>;
using Texts = std::vector<std::string>;

constexpr double kExact = 0.0;
constexpr double kRounding = 1e-15;  // two products, a sum and a quotient of numbers up to 1

/// Gate x of three outcomes with the parents a (2 outcomes) and b (3). Every free row differs:
///
///     0  a = 0   0.5 0.25 0.25
///     1  a = 1   0   1    0       constrained
///     2  b = 0   0.2 0.2  0.6
///     3  b = 1   0.1 0.3  0.6
///     4  b = 2   0   1    0       constrained
///     5  leak    0.3 0.6  0.1
struct SmallAdder {
  SmallAdder() {
    AddArcs(network, {a, b}, x);
    EXPECT_EQ(gate().SetDefinition(DoublesOf(kRows)), 0);
    EXPECT_EQ(gate().SetWeights(DoublesOf({2, 3, 4})), 0);
  }
  KVN_noisyAdder& gate() { return DefinitionAs<KVN_noisyAdder>(network, x); }
  KVN_nodeDefinition& parent(int handle) { return *network.DefinitionOf(handle); }
  Doubles Parameters() { return ItemsOf(gate().GetParameters().GetItems()); }

  static const Doubles kRows;
  KVN_network network;
  int a = AddNodeOf(network, KVN_TYPE_CPT, "a", 2);
  int b = AddNodeOf(network, KVN_TYPE_CPT, "b", 3);
  int x = AddNodeOf(network, KVN_TYPE_NOISY_ADDER, "x");
};
const Doubles SmallAdder::kRows = {0.5, 0.25, 0.25, 0, 1, 0, 0.2, 0.2, 0.6,
                                   0.1, 0.3,  0.6,  0, 1, 0, 0.3, 0.6, 0.1};

class NoisyAdder : public testing::Test, protected SmallAdder {};

TEST(NoisyAdderAlone, NewParentActsInAllOutcomesButItsLast) {
  KVN_network fresh;
  const int node = AddNodeOf(fresh, KVN_TYPE_NOISY_ADDER, "node");
  auto& made = DefinitionAs<KVN_noisyAdder>(fresh, node);
  ASSERT_EQ(made.SetWeights(DoublesOf({7})), 0);
  const int parent = AddNodeOf(fresh, KVN_TYPE_CPT, "parent", 3);
  AddArcs(fresh, {parent}, node);
  const double third = 1.0 / 3;
  EXPECT_TRUE(CellsNear(made.GetParameters(),
                        {third, third, third, third, third, third, 0, 1, 0, 0, 1, 0}, kExact));
  EXPECT_EQ(ItemsOf(made.GetParentDistinguishedStates()), (Ints{2}));
  EXPECT_EQ(ItemsOf(made.GetWeights()), (Doubles{7, 1})) << "the leak's weight is the parent's now";
  EXPECT_EQ(made.CheckConsistency(1), 0);
}

// A cell is (4 * leak + 2 * row of a, if a acts + 3 * row of b, if b acts) / sum of those weights.
TEST_F(NoisyAdder, AverageWeighsTheRowsOfActingParentsWithTheLeak) {
  // Sums of the weighted rows when these act: a and b = 0, a and b = 1, a, b = 0, b = 1, none.
  Doubles expected = {2.8, 3.5, 2.7, 2.5, 3.8, 2.7, 2.2, 2.9, 0.9,
                      1.8, 3.0, 2.2, 1.5, 3.3, 2.2, 1.2, 2.4, 0.4};
  const Doubles totals = {9, 9, 6, 7, 7, 4};
  for (int cell = 0; cell < 18; cell++) expected[cell] /= totals[cell / 3];
  EXPECT_EQ(ItemsOf(TableOfDefinition(gate()).GetDimensions()), (Ints{2, 3, 3}));
  EXPECT_TRUE(CellsNear(TableOfDefinition(gate()), expected, kRounding));
}

TEST_F(NoisyAdder, SingleFaultTakesTheRowOfTheOnlyActingParent) {
  ASSERT_EQ(gate().SetFunction(KVN_ADDER_SINGLE_FAULT), 0);
  EXPECT_TRUE(CellsNear(TableOfDefinition(gate()),
                        {0.3, 0.6, 0.1, 0.3, 0.6, 0.1,  // two act: as if none did
                         0.5, 0.25, 0.25, 0.2, 0.2, 0.6, 0.1, 0.3, 0.6, 0.3, 0.6, 0.1},
                        kExact));
}

TEST_F(NoisyAdder, UnknownFunctionIsStoredAndGivesNoTable) {
  KVN_Dmatrix* out = nullptr;
  ASSERT_EQ(gate().SetFunction(2), 0);
  EXPECT_EQ(gate().GetFunction(), 2);
  EXPECT_EQ(gate().BuildCpt(), KVN_REFUSED);
  EXPECT_EQ(gate().GetDefinition(out), KVN_REFUSED);
  EXPECT_EQ(gate().FitParameters(), KVN_REFUSED);
}

TEST_F(NoisyAdder, WeightsThatSumToZeroGiveNaN) {
  ASSERT_EQ(gate().SetWeights(DoublesOf({2, 3, 0})), 0);
  EXPECT_TRUE(std::isnan(TableOfDefinition(gate())[15]));
  EXPECT_FALSE(std::isnan(TableOfDefinition(gate())[0]));
}

TEST_F(NoisyAdder, OwnDistinguishedStateMovesInAllConstrainedRows) {
  (void)TableOfDefinition(gate());
  for (int bad : {-1, 3}) EXPECT_EQ(gate().SetDistinguishedState(bad), KVN_REFUSED);
  EXPECT_EQ(gate().SetDistinguishedState(1), 0);
  EXPECT_EQ(gate().GetCiFlags(), KVN_CI_CPT_CURRENT) << "the present state changes nothing";
  ASSERT_EQ(gate().SetDistinguishedState(2), 0);
  EXPECT_EQ(gate().GetCiFlags(), 0);
  EXPECT_EQ(Parameters(), (Doubles{0.5, 0.25, 0.25, 0, 0, 1, 0.2, 0.2, 0.6,  //
                                   0.1, 0.3, 0.6, 0, 0, 1, 0.3, 0.6, 0.1}));
}

TEST_F(NoisyAdder, ParentsDistinguishedStateConstrainsAnotherRow) {
  (void)TableOfDefinition(gate());
  EXPECT_EQ(gate().SetParentDistinguishedState(2, 0), KVN_REFUSED);
  EXPECT_EQ(gate().SetParentDistinguishedState(0, 2), KVN_REFUSED);
  EXPECT_EQ(gate().SetParentDistinguishedState(1, -1), KVN_REFUSED);
  EXPECT_EQ(gate().SetParentDistinguishedState(1, 2), 0);
  EXPECT_EQ(gate().GetCiFlags(), KVN_CI_CPT_CURRENT);
  ASSERT_EQ(gate().SetParentDistinguishedState(1, 0), 0);
  EXPECT_EQ(gate().GetCiFlags(), 0);
  // The old row keeps its numbers and is free.
  EXPECT_EQ(Parameters(), (Doubles{0.5, 0.25, 0.25, 0, 1, 0, 0, 1, 0,  //
                                   0.1, 0.3, 0.6, 0, 1, 0, 0.3, 0.6, 0.1}));
  ASSERT_EQ(gate().SetParentDistinguishedState(1, 1), 0);
  EXPECT_EQ(ItemsOf(gate().GetParentDistinguishedStates()), (Ints{1, 1}));
}

// Edits around the gate. Before them the second outcome of a and the third of b are distinguished.
int RemoveA(SmallAdder& m) { return m.network.RemoveArc(m.a, m.x, 0); }
int RemoveB(SmallAdder& m) { return m.network.RemoveArc(m.b, m.x, 0); }
int InsertBefore(SmallAdder& m) { return m.parent(m.b).InsertOutcome(1, "fresh"); }
int InsertInPlace(SmallAdder& m) { return m.parent(m.b).InsertOutcome(2, "fresh"); }
int AddBehind(SmallAdder& m) { return m.parent(m.b).AddOutcome("fresh"); }
int RemoveBefore(SmallAdder& m) { return m.parent(m.b).RemoveOutcome(0); }
int RemoveTheOne(SmallAdder& m) { return m.parent(m.b).RemoveOutcome(2); }
int RotateB(SmallAdder& m) { return m.parent(m.b).ChangeOrderOfOutcomes(IntsOf({2, 0, 1})); }
int SwapParents(SmallAdder& m) { return m.network.ChangeOrderOfParents(m.x, IntsOf({1, 0})); }

const struct {
  const char* name;
  int (*edit)(SmallAdder&);
  Ints states;  // of the parents
  Doubles weights;
  Doubles firstColumn;  // tells the rows apart
} kEdits[] = {
    {"first parent removed", RemoveA, {2}, {3, 4}, {0.2, 0.1, 0, 0.3}},
    {"last parent removed", RemoveB, {1}, {2, 4}, {0.5, 0, 0.3}},
    {"outcome in front of it", InsertBefore, {1, 3}, {2, 3, 4}, {0.5, 0, 0.2, 0, 0.1, 0, 0.3}},
    {"outcome in its place", InsertInPlace, {1, 3}, {2, 3, 4}, {0.5, 0, 0.2, 0.1, 0, 0, 0.3}},
    {"outcome behind it", AddBehind, {1, 2}, {2, 3, 4}, {0.5, 0, 0.2, 0.1, 0, 0, 0.3}},
    {"outcome before it removed", RemoveBefore, {1, 1}, {2, 3, 4}, {0.5, 0, 0.1, 0, 0.3}},
    {"itself removed: now the first", RemoveTheOne, {1, 0}, {2, 3, 4}, {0.5, 0, 0, 0.1, 0.3}},
    {"outcomes of b reordered", RotateB, {1, 0}, {2, 3, 4}, {0.5, 0, 0, 0.2, 0.1, 0.3}},
    {"parents reordered", SwapParents, {2, 1}, {3, 2, 4}, {0.2, 0.1, 0, 0.5, 0, 0.3}},
};

TEST(NoisyAdderAlone, EditsOfParentsMoveRowsStatesAndWeights) {
  for (const auto& c : kEdits) {
    SCOPED_TRACE(c.name);
    SmallAdder made;
    (void)TableOfDefinition(made.gate());
    ASSERT_EQ(c.edit(made), 0);
    EXPECT_EQ(made.gate().GetCiFlags(), 0);
    EXPECT_EQ(ItemsOf(made.gate().GetParentDistinguishedStates()), c.states);
    EXPECT_EQ(ItemsOf(made.gate().GetWeights()), c.weights);
    Doubles column;
    for (int i = 0; i < made.gate().GetParameters().GetSize(); i += 3) {
      column.push_back(made.gate().GetParameters()[i]);
    }
    EXPECT_EQ(column, c.firstColumn);
    EXPECT_EQ(made.gate().CheckConsistency(1), 0);
  }
}

// Rows and parents disagree after this, and the build finds too few rows for b.
TEST_F(NoisyAdder, ParentOfTheSameKindIsAcceptedAndThenLeftOut) {
  const int sum = AddNodeOf(network, KVN_TYPE_NOISY_ADDER, "sum");
  const int y = AddNodeOf(network, KVN_TYPE_NOISY_ADDER, "y");
  AddArcs(network, {sum, b}, y);
  auto& made = DefinitionAs<KVN_noisyAdder>(network, y);
  EXPECT_EQ(made.GetParameters().GetSizeOfDimension(0), 7);
  ASSERT_EQ(parent(sum).AddOutcome("fresh"), 0);
  EXPECT_EQ(made.GetParameters().GetSizeOfDimension(0), 7) << "no row for the new outcome";
  ASSERT_EQ(parent(sum).AddOutcome("fresher"), 0);
  EXPECT_EQ(made.BuildCpt(), KVN_REFUSED) << "5 + 3 rows of parents in 7";
  // A removal is followed, in contrast.
  ASSERT_EQ(parent(sum).RemoveOutcome(0), 0);
  EXPECT_EQ(made.GetParameters().GetSizeOfDimension(0), 6);
  EXPECT_EQ(ItemsOf(made.GetParentDistinguishedStates()), (Ints{1, 2}));
  ASSERT_EQ(network.RemoveArc(sum, y, 0), 0);
  EXPECT_EQ(made.GetParameters().GetSizeOfDimension(0), 6);
  EXPECT_EQ(ItemsOf(made.GetWeights()), (Doubles{1, 1, 1}));
}

TEST_F(NoisyAdder, OwnOutcomesCarryTheDistinguishedState) {
  ASSERT_EQ(gate().InsertOutcome(1, "fresh"), 0);
  EXPECT_EQ(gate().GetDistinguishedState(), 2);
  ASSERT_EQ(gate().AddOutcome("last"), 0);
  EXPECT_EQ(gate().GetDistinguishedState(), 2);
  ASSERT_EQ(gate().RemoveOutcome(1), 0);
  ASSERT_EQ(gate().RemoveOutcome(3), 0);
  EXPECT_EQ(gate().GetDistinguishedState(), 1);
  EXPECT_EQ(Parameters(), kRows);
  // The distinguished outcome itself: the first one takes over.
  ASSERT_EQ(gate().RemoveOutcome(1), 0);
  EXPECT_EQ(gate().GetDistinguishedState(), 0);
  EXPECT_EQ(Parameters(), (Doubles{0.5, 0.25, 1, 0, 0.2, 0.6, 0.1, 0.6, 1, 0, 0.3, 0.1}));
}

TEST_F(NoisyAdder, RemovalLowersTheStateEvenWhenItIsRefused) {
  ASSERT_EQ(gate().RemoveOutcome(2), 0);
  EXPECT_EQ(gate().GetDistinguishedState(), 1);
  EXPECT_EQ(gate().RemoveOutcome(0), KVN_REFUSED) << "two are the least";
  EXPECT_EQ(gate().GetDistinguishedState(), 0);
}

// The last column is the distinguished one, and gone when the state is to move.
TEST_F(NoisyAdder, LastOutcomeCanBeTheDistinguishedOneThatGoes) {
  ASSERT_EQ(gate().SetDistinguishedState(2), 0);
  ASSERT_EQ(gate().RemoveOutcome(2), 0);
  EXPECT_EQ(gate().GetDistinguishedState(), 0);
  EXPECT_EQ(Parameters(), (Doubles{0.5, 0.25, 1, 0, 0.2, 0.2, 0.1, 0.3, 1, 0, 0.3, 0.6}));
}

TEST_F(NoisyAdder, ReorderedOutcomesLeaveTheTableAsItWas) {
  const Doubles before = ItemsOf(TableOfDefinition(gate()).GetItems());
  ASSERT_EQ(gate().ChangeOrderOfOutcomes(IntsOf({1, 2, 0})), 0);
  EXPECT_EQ(gate().GetDistinguishedState(), 0);
  EXPECT_EQ(OutcomesAt(network, x), (Texts{"State1", "State2", "State0"}));
  EXPECT_EQ(gate().GetParameters()[0], 0.25);
  EXPECT_EQ(gate().CheckConsistency(1), 0);
  EXPECT_TRUE(CellsNear(TableOfDefinition(gate()), before, kExact)) << "not marked stale";
}

TEST_F(NoisyAdder, NewNumberOfOutcomesMakesTheLastOneDistinguished) {
  ASSERT_EQ(gate().SetNumberOfOutcomes(StringsOf({"p", "q", "r", "s"})), 0);
  EXPECT_EQ(OutcomesAt(network, x), (Texts{"p", "q", "r", "s"}));
  EXPECT_EQ(gate().GetDistinguishedState(), 3);
  EXPECT_EQ(gate().CheckConsistency(1), 0);
}

// Apart from the place of the 1 the test is that of the other gate.
TEST_F(NoisyAdder, ConstrainedRowsHaveTheirOneAtTheDistinguishedState) {
  char message[64];
  for (int cell : {3, 4, 5, 12, 13, 14}) {
    KVN_Dmatrix matrix = gate().GetParameters();
    matrix[cell] = 0.5;
    EXPECT_EQ(gate().CheckParameters(matrix, message, sizeof message), KVN_LENGTH_MISMATCH);
    EXPECT_STREQ(message, "Constraints violeted") << cell;
  }
}

TEST_F(NoisyAdder, CopiesCarryEveryField) {
  ASSERT_EQ(gate().SetParentDistinguishedState(1, 0), 0);
  ASSERT_EQ(gate().SetDistinguishedState(2), 0);
  ASSERT_EQ(gate().SetFunction(KVN_ADDER_SINGLE_FAULT), 0);
  std::unique_ptr<KVN_nodeDefinition> clone(CloneDefinition(gate()));
  const int y = AddNodeOf(network, KVN_TYPE_NOISY_ADDER, "y");
  AddArcs(network, {a, b}, y);
  gate().CopyParametersTo(*network.DefinitionOf(y));
  ASSERT_NE(clone, nullptr);
  for (KVN_nodeDefinition* definition : {clone.get(), network.DefinitionOf(y)}) {
    auto& copy = dynamic_cast<KVN_noisyAdder&>(*definition);
    EXPECT_EQ(copy.GetDistinguishedState(), 2);
    EXPECT_EQ(ItemsOf(copy.GetParentDistinguishedStates()), (Ints{1, 0}));
    EXPECT_EQ(ItemsOf(copy.GetWeights()), (Doubles{2, 3, 4}));
    EXPECT_EQ(copy.GetFunction(), KVN_ADDER_SINGLE_FAULT);
    EXPECT_TRUE(
        CellsNear(TableOfDefinition(copy), ItemsOf(TableOfDefinition(gate()).GetItems()), kExact));
  }
}

// Names come along; the numbers of a table don't.
TEST_F(NoisyAdder, ConversionKeepsNamesAndParents) {
  const int y = AddNodeOf(network, KVN_TYPE_CPT, "y", 4);
  AddArcs(network, {a}, y);
  ASSERT_EQ(network.GetNode(y)->ChangeType(KVN_TYPE_NOISY_ADDER), 0);
  EXPECT_EQ(OutcomesAt(network, y).size(), 4u);
  EXPECT_EQ(ItemsOf(TableOfNode(network, y).GetDimensions()), (Ints{2, 4}));
  ASSERT_EQ(network.GetNode(x)->ChangeType(KVN_TYPE_CPT), 0);
  EXPECT_NEAR(TableOfNode(network, x)[0], 2.8 / 9, kRounding) << "the built table is taken over";
}

TEST_F(NoisyAdder, KeptTableFollowsEveryEdit) {
  gate().SetCiFlags(KVN_CI_KEEP_CPT);
  const std::function<int()> edits[] = {
      [&] {
        return gate().SetWeights(DoublesOf({1, 1, 1}));
      },
      [&] { return gate().SetFunction(KVN_ADDER_SINGLE_FAULT); },
      [&] { return gate().SetDistinguishedState(0); },
      [&] { return gate().SetParentDistinguishedState(0, 0); },
      [&] { return parent(b).AddOutcome("fresh"); },
      [&] { return gate().AddOutcome("fresh"); },
      [&] { return gate().ReCreate(); },
  };
  for (const auto& edit : edits) {
    ASSERT_EQ(edit(), 0);
    EXPECT_EQ(gate().GetCiFlags(), KVN_CI_KEEP_CPT | KVN_CI_CPT_CURRENT);
    const Doubles kept = ItemsOf(TableOfDefinition(gate()).GetItems());
    ASSERT_EQ(gate().BuildCpt(), 0);
    EXPECT_TRUE(CellsNear(TableOfDefinition(gate()), kept, kExact));
  }
}

}  // namespace
