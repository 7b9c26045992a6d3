#include "definitions/noisyMAX.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

#include "foundation/resultCodes.h"
#include "network/node.h"
#include "tests/support/definitionBuilder.h"
#include "tests/support/failingAllocation.h"
#include "values/nodeValue.h"

namespace {

using Ints = std::vector<int>;
using Doubles = std::vector<double>;
using Texts = std::vector<std::string>;

constexpr double kExact = 0.0;
constexpr double kRounding = 1e-12;  // a dozen operations on numbers up to 1

Doubles CellsOf(const KVN_Dmatrix& table) { return ItemsOf(table.GetItems()); }

/// A gate with parents p0, p1, ... of these outcome counts.
struct Gate {
  Gate(const Ints& counts, int n) {
    node = AddNodeOf(network, KVN_TYPE_NOISY_MAX, "gate", n);
    for (int count : counts) {
      const std::string id = "p" + std::to_string(parents.size());
      parents.push_back(AddNodeOf(network, KVN_TYPE_CPT, id.c_str(), count));
    }
    AddArcs(network, parents, node);
  }
  KVN_noisyMAX& operator*() { return DefinitionAs<KVN_noisyMAX>(network, node); }
  KVN_noisyMAX* operator->() { return &**this; }
  KVN_nodeDefinition& Parent(int i) { return *network.DefinitionOf(parents[i]); }
  KVN_Dmatrix& Table() { return TableOfNode(network, node); }
  /// All free rows, with every cell above 0, and with `shuffle` the strengths at random.
  void Randomize(unsigned seed, bool shuffle = true) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> weight(0.05, 1.0);
    for (int i = 0; i < static_cast<int>(parents.size()); i++) {
      Ints order = ItemsOf(*(**this).GetStrengths(i));
      if (shuffle) std::shuffle(order.begin(), order.end(), random);
      EXPECT_EQ((**this).SetParentOutcomeStrengths(i, IntsOf(order)), 0);
    }
    KVN_Dmatrix& parameters = (**this).GetParameters();
    for (int cell = 0; cell < parameters.GetSize(); cell++) {
      if (!(**this).IsConstrained(parameters, cell)) parameters[cell] = weight(random);
    }
    parameters.Normalize();
    (**this).MarkCptStale();
  }

  KVN_network network;
  int node = -1;
  Ints parents;
};

/// Calls `visit` with every combination of coordinates, the last fastest.
void ForAll(const Ints& sizes, const std::function<void(const Ints&)>& visit) {
  Ints at(sizes.size(), 0);
  for (;;) {
    visit(at);
    int d = static_cast<int>(sizes.size()) - 1;
    while (d >= 0 && ++at[d] == sizes[d]) at[d--] = 0;
    if (d < 0) return;
  }
}

/// The table by the meaning of the gate: each parent and the leak produce an outcome independently,
/// by the row that they are in, and the lowest index wins.
Doubles TableByEnumeration(Gate& gate) {
  const KVN_Dmatrix& rows = gate->GetParameters();
  const int n = rows.GetSizeOfDimension(1);
  const int m = static_cast<int>(gate.parents.size());
  Ints counts;
  for (int i = 0; i < m; i++) counts.push_back(gate.Parent(i).GetNumberOfOutcomes());
  Doubles table;
  ForAll(counts, [&](const Ints& states) {
    Ints row;
    int start = 0;
    for (int i = 0; i < m; i++) {
      row.push_back(start + gate->GetStrengths(i)->FindPosition(states[i]));
      start += counts[i];
    }
    row.push_back(start);
    Doubles distribution(n, 0.0);
    ForAll(Ints(row.size(), n), [&](const Ints& produced) {
      double probability = 1.0;
      for (size_t i = 0; i < row.size(); i++) probability *= rows[row[i] * n + produced[i]];
      distribution[*std::min_element(produced.begin(), produced.end())] += probability;
    });
    table.insert(table.end(), distribution.begin(), distribution.end());
  });
  return table;
}

struct Shape {
  Ints counts;
  int n;
};
const Shape kShapes[] = {
    {{}, 3}, {{2}, 2}, {{2, 3, 4}, 3}, {{4, 3, 2}, 2}, {{3, 2, 2, 4}, 4},
};

TEST(NoisyMAX, TableIsTheHighestOfIndependentCauses) {
  unsigned seed = 1;
  for (const Shape& shape : kShapes) {
    for (int round = 0; round < 5; round++, seed++) {
      SCOPED_TRACE(testing::Message() << "seed " << seed);
      Gate gate(shape.counts, shape.n);
      gate.Randomize(seed);
      EXPECT_TRUE(CellsNear(gate.Table(), TableByEnumeration(gate), kRounding));
      EXPECT_EQ(gate->CheckConsistency(1), 0) << "the build moved the parameters";
    }
  }
}

// Leak (0, 1) adds nothing; the row of the acting outcome shows as it stands.
TEST(NoisyMAX, StrengthsSayWhichOutcomeARowBelongsTo) {
  Gate gate({2}, 2);
  ASSERT_EQ(gate->SetDefinition(DoublesOf({0.7, 0.3, 0, 1, 0, 1})), 0);
  EXPECT_TRUE(CellsNear(gate.Table(), {0.7, 0.3, 0, 1}, kRounding));
  ASSERT_EQ(gate->SetParentOutcomeStrengths(0, IntsOf({1, 0})), 0);
  EXPECT_TRUE(CellsNear(gate.Table(), {0, 1, 0.7, 0.3}, kRounding));
  const std::vector<Ints> bads = {Ints{0}, Ints{0, 0}, Ints{0, 2}, Ints{0, 1, 2}};
  for (const Ints& bad : bads) {
    EXPECT_EQ(gate->SetParentOutcomeStrengths(0, IntsOf(bad)), KVN_REFUSED);
  }
  for (int bad : {-1, 1}) {
    EXPECT_EQ(gate->SetParentOutcomeStrengths(bad, IntsOf({0, 1})), KVN_REFUSED);
    EXPECT_EQ(gate->ApplyParentOutcomeStrengths(bad, IntsOf({0, 1})), KVN_REFUSED);
  }
  EXPECT_EQ(ItemsOf(*gate->GetStrengths(0)), (Ints{1, 0}));
  EXPECT_EQ(gate->GetStrengths(1), nullptr);
}

// An inclusive row is the table's row for that outcome with all other parents distinguished.
TEST(NoisyMAX, InclusiveParametersAreRowsOfTheTable) {
  Gate gate({2, 3, 4}, 3);
  gate.Randomize(7);
  KVN_Dmatrix inclusive;
  ASSERT_EQ(gate->GetInclusiveParameters(inclusive), 0);
  const KVN_Dmatrix& table = gate.Table();
  for (int i = 0; i < 3; i++) {
    const KVN_intArray& order = *gate->GetStrengths(i);
    for (int place = 0; place < order.GetSize() - 1; place++) {
      Ints at(4, 0);
      for (int k = 0; k < 3; k++) {
        at[k] = (*gate->GetStrengths(k))[gate->GetStrengths(k)->GetSize() - 1];
      }
      at[i] = order[place];
      for (at[3] = 0; at[3] < 3; at[3]++) {
        const int cell = (gate->RowOffset(i) + place) * 3 + at[3];
        EXPECT_NEAR(inclusive[cell], table.At(IntsOf(at)), kRounding) << i << ' ' << place;
      }
    }
  }
}

// Inclusive (0.58, 0.42), leak (0.4, 0.6): 0.42 / 0.6 = 0.7 is left for "no higher than 1".
TEST(NoisyMAX, ListHoldsFreeRowsWithTheLeakLast) {
  Gate gate({2}, 2);
  ASSERT_EQ(gate->SetLegacyProbabilities(DoublesOf({0.58, 0.42, 0.4, 0.6})), 0);
  EXPECT_TRUE(CellsNear(gate->GetParameters(), {0.3, 0.7, 0, 1, 0.4, 0.6}, kRounding));
  KVN_doubleArray list;
  ASSERT_EQ(gate->GetParameterList(list), 0);
  EXPECT_TRUE(CellsNear(TableOf({4}, ItemsOf(list)), {0.58, 0.42, 0.4, 0.6}, kRounding));
  const Doubles kept = CellsOf(gate->GetParameters());
  EXPECT_EQ(gate->SetParameterList(DoublesOf({0.58, 0.42, 0.4})), KVN_REFUSED);
  EXPECT_EQ(gate->SetInclusiveParameters(TableOf({3, 2}, {0.58, 0.42, 0.5, 0.5, 0.4, 0.6})),
            KVN_REFUSED);
  EXPECT_EQ(gate->SetInclusiveParameters(TableOf({2, 2}, {0.58, 0.42, 0.4, 0.6})), KVN_REFUSED);
  EXPECT_TRUE(CellsNear(gate->GetParameters(), kept, kExact));
  // 0 / 0: the numbers are the caller's affair, CheckParameters is the place that tells.
  ASSERT_EQ(gate->SetParameterList(DoublesOf({1, 0, 1, 0})), 0);
  EXPECT_TRUE(std::isnan(gate->GetParameters()[1]));
  EXPECT_EQ(gate->CheckConsistency(1), KVN_NOT_CONSISTENT);
}

// Edits of the graph or of a parent of a random gate with parents of 2, 3 and 4 outcomes.
int RemoveSecond(Gate& g) { return g.network.RemoveArc(g.parents[1], g.node, 0); }
int AbsorbSecond(Gate& g) {
  EXPECT_EQ(g.network.ValueOf(g.parents[1])->SetEvidence(1), 0);
  return g->AbsorbParentEvidence(g.parents[1]);
}
int SumOutThird(Gate& g) { return g->MarginalizeParent(g.parents[2]); }
int InsertOutcome(Gate& g) { return g.Parent(1).InsertOutcome(1, "fresh"); }
int RemoveOutcome(Gate& g) { return g.Parent(2).RemoveOutcome(0); }
int Rotate(Gate& g) {
  const int result = g.network.ChangeOrderOfParents(g.node, IntsOf({2, 0, 1}));
  g->MarkCptStale();  // not done by the operation, which is intended
  return result;
}
int MoveRows(Gate& g) { return g->ApplyParentOutcomeStrengths(2, IntsOf({2, 0, 1, 3})); }

// What becomes of the table before.
int AtLast(KVN_Dmatrix& t) { return t.RemoveDimension(1, 2); }
int AtEvidence(KVN_Dmatrix& t) { return t.RemoveDimension(1, 1); }
int Mean(KVN_Dmatrix& t) { return t.RemoveDimensionWeighted(2, DoublesOf({0.1, 0.2, 0.3, 0.4})); }
int LikeTheLast(KVN_Dmatrix& t) {
  const KVN_Dmatrix old = t;
  EXPECT_EQ(t.PushSlice(1), 0);
  for (int cell = 0; cell < t.GetSize(); cell++) {
    KVN_intArray at;
    EXPECT_EQ(t.CoordinatesOf(cell, at), 0);
    at[1] = Ints{0, 2, 1, 2}[at[1]];  // the new outcome 1 reads like the distinguished one
    t[cell] = old.At(at);
  }
  return 0;
}
int WithoutFirst(KVN_Dmatrix& t) {
  EXPECT_EQ(t.RemoveSlice(2, 0), 0);
  return t.ShrinkDimension(2);
}
int Rotated(KVN_Dmatrix& t) { return t.ChangeOrderOfDimensions(IntsOf({2, 0, 1, 3})); }
int Same(KVN_Dmatrix&) { return 0; }

const struct {
  const char* name;
  int (*edit)(Gate&);
  int (*expected)(KVN_Dmatrix&);
  bool keptTableIsCurrent;  // a removed parent is cut out of it without a build
} kEdits[] = {
    {"a removed parent stays distinguished", RemoveSecond, AtLast, false},
    {"absorbed evidence is folded into the leak", AbsorbSecond, AtEvidence, true},
    {"a parent is summed out with its prior", SumOutThird, Mean, true},
    {"a new outcome of a parent doesn't act", InsertOutcome, LikeTheLast, true},
    {"an outcome of a parent goes", RemoveOutcome, WithoutFirst, true},
    {"parents change places", Rotate, Rotated, false},
    {"rows and strengths move together", MoveRows, Same, true},
};

TEST(NoisyMAX, EditsOfTheGraphKeepTheMeaningOfTheTable) {
  for (int flags : {0, KVN_CI_KEEP_CPT}) {
    for (const auto& c : kEdits) {
      SCOPED_TRACE(testing::Message() << c.name << ", flags " << flags);
      Gate gate({2, 3, 4}, 3);
      gate.Randomize(23);
      // The second parent keeps outcome 2 as the distinguished one, the third doesn't lose its.
      EXPECT_EQ(gate->SetParentOutcomeStrengths(1, IntsOf({1, 0, 2})), 0);
      EXPECT_EQ(gate->SetParentOutcomeStrengths(2, IntsOf({2, 0, 1, 3})), 0);
      WriteCells(gate.network, gate.parents[2], {0.1, 0.2, 0.3, 0.4});
      KVN_Dmatrix expected = gate.Table();
      EXPECT_EQ(c.expected(expected), 0);
      gate->SetCiFlags(gate->GetCiFlags() | flags);
      ASSERT_EQ(c.edit(gate), 0);
      EXPECT_EQ((gate->GetCiFlags() & KVN_CI_CPT_CURRENT) != 0, flags != 0 && c.keptTableIsCurrent);
      EXPECT_TRUE(CellsNear(gate.Table(), CellsOf(expected), kRounding));
      for (int i = 0; gate->GetStrengths(i) != nullptr; i++) {
        EXPECT_EQ(gate->GetStrengths(i)->GetSize(), gate->GetStrengths(i)->GetNumItems());
      }
    }
  }
}

TEST(NoisyMAX, ParentOutcomeEditsKeepTheStrengthsInStep) {
  Gate gate({3}, 2);
  ASSERT_EQ(gate->SetParentOutcomeStrengths(0, IntsOf({2, 0, 1})), 0);
  ASSERT_EQ(gate->SetDefinition(DoublesOf({0.9, 0.1, 0.4, 0.6, 0, 1, 0.2, 0.8})), 0);
  // At the end of the parent's list, yet directly before the distinguished outcome.
  ASSERT_EQ(gate.Parent(0).AddOutcome("fresh"), 0);
  EXPECT_EQ(ItemsOf(*gate->GetStrengths(0)), (Ints{2, 0, 3, 1}));
  EXPECT_TRUE(CellsNear(gate->GetParameters(), {0.9, 0.1, 0.4, 0.6, 0, 1, 0, 1, 0.2, 0.8}, kExact));
  // Without its distinguished outcome the block ends in a row that is made constrained.
  ASSERT_EQ(gate.Parent(0).RemoveOutcome(1), 0);
  ASSERT_EQ(gate.Parent(0).RemoveOutcome(2), 0);
  EXPECT_EQ(ItemsOf(*gate->GetStrengths(0)), (Ints{1, 0}));
  EXPECT_TRUE(CellsNear(gate->GetParameters(), {0.9, 0.1, 0, 1, 0.2, 0.8}, kExact));
  // The strengths are permuted as they stand, and the rows stay.
  ASSERT_EQ(gate.Parent(0).ChangeOrderOfOutcomes(IntsOf({1, 0})), 0);
  EXPECT_EQ(ItemsOf(*gate->GetStrengths(0)), (Ints{0, 1}));
  EXPECT_TRUE(CellsNear(gate->GetParameters(), {0.9, 0.1, 0, 1, 0.2, 0.8}, kExact));
}

TEST(NoisyMAX, ParentKindsAreFilteredDifferentlyOperationByOperation) {
  Gate gate({2, 2}, 2);
  const int other = gate.parents[1];
  // Nothing can be converted, but the kind has changed.
  ASSERT_EQ(gate.network.GetNode(other)->ChangeType(KVN_TYPE_DEMORGAN), KVN_NOT_APPLICABLE);
  const Doubles before = CellsOf(gate->GetParameters());
  EXPECT_EQ(gate->AddParent(other), KVN_REFUSED);
  EXPECT_EQ(gate->RemoveParent(other), 0);
  EXPECT_EQ(gate->MarginalizeParent(other), 0);
  EXPECT_EQ(gate->ParentOutcomeInserted(other, 0), 0);
  EXPECT_EQ(gate->ParentOutcomeRemoved(other, 0), KVN_REFUSED);
  EXPECT_EQ(gate->AbsorbParentEvidence(gate.parents[0]), KVN_REFUSED) << "no evidence";
  ASSERT_EQ(gate.network.ValueOf(gate.parents[0])->SetEvidence(0), 0);
  EXPECT_EQ(gate->MarginalizeParent(gate.parents[0]), KVN_REFUSED) << "evidence";
  EXPECT_TRUE(CellsNear(gate->GetParameters(), before, kExact));
}

TEST(NoisyMAX, OwnOutcomesComeAndGo) {
  Gate gate({2}, 2);
  ASSERT_EQ(gate->SetDefinition(DoublesOf({0.7, 0.3, 0, 1, 0.2, 0.8})), 0);
  EXPECT_EQ(gate->RemoveOutcome(0), KVN_REFUSED) << "two are the least";
  // The constrained row keeps its 1 where it is, which is told and not mended.
  ASSERT_EQ(gate->AddOutcome("State0"), 0);
  EXPECT_EQ(OutcomesAt(gate.network, gate.node), (Texts{"State0", "State1", "State2"}));
  EXPECT_TRUE(CellsNear(gate->GetParameters(), {0.7, 0.3, 0, 0, 1, 0, 0.2, 0.8, 0}, kExact));
  char message[64];
  EXPECT_EQ(gate->CheckParameters(gate->GetParameters(), message, sizeof message),
            KVN_LENGTH_MISMATCH);
  EXPECT_STREQ(message, "Constraints violeted");
  // A change of order mends it.
  ASSERT_EQ(gate->ChangeOrderOfOutcomes(IntsOf({2, 1, 0})), 0);
  EXPECT_TRUE(CellsNear(gate->GetParameters(), {0, 0.3, 0.7, 0, 0, 1, 0, 0.8, 0.2}, kExact));
  gate->SetCiFlags(KVN_CI_KEEP_CPT);
  ASSERT_EQ(gate->RemoveOutcome(0), 0);
  EXPECT_TRUE(CellsNear(gate->GetParameters(), {0.3, 0.7, 0, 1, 0.8, 0.2}, kRounding));
  EXPECT_NE(gate->GetCiFlags() & KVN_CI_CPT_CURRENT, 0);
  EXPECT_EQ(gate.Table().GetSize(), 4);
}

TEST(NoisyMAX, OutcomesAreReplacedAsAWholeOnlyByLegalNames) {
  Gate gate({2}, 2);
  EXPECT_EQ(gate->SetNumberOfOutcomes(1), KVN_REFUSED);
  for (const char* bad : {"1b", "a", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(gate->SetNumberOfOutcomes(IdsOf({"a", bad, "c"})), KVN_NOT_READY);
  }
  EXPECT_EQ(gate->RenameOutcomes(StringsOf({"a", "b", "c"})), KVN_REFUSED);
  ASSERT_EQ(gate->SetNumberOfOutcomes(StringsOf({"a", "b", "c"})), 0);
  EXPECT_EQ(OutcomesAt(gate.network, gate.node), (Texts{"a", "b", "c"}));
  EXPECT_EQ(gate.Table().GetSize(), 6);
  EXPECT_EQ(gate.Parent(0).SetNumberOfOutcomes(3), KVN_HAS_CHILDREN);
}

constexpr const char* kSize = "Inappropirate Dmatrix size";
constexpr const char* kNegative = "Probability less than 0";
constexpr const char* kConstraint = "Constraints violeted";
constexpr const char* kSum = "Probabilities don't sum up to 1";

const struct {
  const char* message;
  int result;
  Ints sizes;
  Doubles cells;
} kChecks[] = {
    {"Ok", 0, {3, 2}, {0.7, 0.3, 0, 1, 0.2, 0.799996}},
    {kSize, KVN_REFUSED, {2, 2}, {0.7, 0.3, 0, 1}},
    {kSize, KVN_REFUSED, {6}, {0.7, 0.3, 0, 1, 0.2, 0.8}},
    {kNegative, KVN_LENGTH_MISMATCH, {3, 2}, {1.1, -0.1, 0, 1, 0.2, 0.8}},
    {kConstraint, KVN_LENGTH_MISMATCH, {3, 2}, {0.7, 0.3, 0, 1.0000001, 0.2, 0.8}},
    {kSum, KVN_LENGTH_MISMATCH, {3, 2}, {0.7, 0.29999, 0.5, 0.5, 0.2, 0.8}},
    {kSum, KVN_LENGTH_MISMATCH, {3, 2}, {0.7, 0.3, 0, 1, 0.2, std::nan("")}},
};

TEST(NoisyMAX, CheckParametersTellsTheFirstFault) {
  Gate gate({2}, 2);
  for (const auto& c : kChecks) {
    SCOPED_TRACE(c.message);
    char message[64] = "";
    const KVN_Dmatrix matrix = TableOf(c.sizes, c.cells);
    EXPECT_EQ(gate->CheckParameters(matrix, message, sizeof message), c.result);
    EXPECT_STREQ(message, c.message);
    EXPECT_EQ(gate->CheckParameters(matrix, nullptr, 0), c.result);
  }
  const KVN_Dmatrix matrix = gate->GetParameters();
  char message[64] = "";
  gate->CleanUp(/*deep=*/1);
  EXPECT_EQ(gate->CheckParameters(matrix, message, sizeof message), KVN_REFUSED);
  EXPECT_STREQ(message, kSize);
  EXPECT_EQ(gate->CheckParameters(KVN_Dmatrix(), message, sizeof message), 0);
  EXPECT_STREQ(message, "Ok");
  EXPECT_EQ(gate->CheckConsistency(1), KVN_NOT_CONSISTENT);
}

// The places where a table that was built before still counts as current.
TEST(NoisyMAX, SomeEditsLeaveTheOldTable) {
  Gate gate({2, 3}, 2);
  gate.Randomize(3);
  const KVN_Dmatrix before = gate.Table();
  KVN_Dmatrix inclusive;
  ASSERT_EQ(gate->GetInclusiveParameters(inclusive), 0);
  std::swap(inclusive[0], inclusive[1]);
  ASSERT_EQ(gate->SetInclusiveParameters(inclusive), 0);
  EXPECT_TRUE(CellsNear(gate.Table(), CellsOf(before), kExact));
  gate->MarkCptStale();
  const KVN_Dmatrix after = gate.Table();
  EXPECT_FALSE(CellsNear(after, CellsOf(before), kRounding));
  ASSERT_EQ(gate.network.ChangeOrderOfParents(gate.node, IntsOf({1, 0})), 0);
  EXPECT_TRUE(CellsNear(gate.Table(), CellsOf(after), kExact));
}

// The entry of a parent that comes back in front goes to the end of the strengths all the same.
TEST(NoisyMAX, StrengthsOfANewParentGoToTheEnd) {
  Gate gate({2, 2}, 2);
  ASSERT_EQ(gate->SetParentOutcomeStrengths(1, IntsOf({1, 0})), 0);
  ASSERT_EQ(gate->RemoveParent(gate.parents[0]), 0);
  ASSERT_EQ(gate->AddParent(gate.parents[0]), 0);
  EXPECT_EQ(ItemsOf(*gate->GetStrengths(0)), (Ints{1, 0}));
  EXPECT_EQ(ItemsOf(*gate->GetStrengths(1)), (Ints{0, 1}));
}

TEST(NoisyMAX, TableThatCannotBeBuiltIsRefused) {
  Gate gate({2, 3}, 2);
  const KVN_Dmatrix before = gate.Table();
  KVN_Dmatrix* out = nullptr;
  KVN_doubleArray* cells = nullptr;
  // Five rows of parents don't fit into four.
  EXPECT_EQ(Gate({2}, 2)->FitParameters(), KVN_REFUSED) << "no table to fit to";
  ASSERT_EQ(gate->SetDefinition(TableOf({4, 2}, Doubles(8, 0.5))), 0);
  EXPECT_EQ(gate->BuildCpt(), KVN_REFUSED);
  EXPECT_EQ(gate->GetDefinition(out), KVN_REFUSED);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(gate->GetDefinition(cells), KVN_REFUSED);
  EXPECT_EQ(gate->GetSize(), KVN_REFUSED);
  EXPECT_TRUE(CellsNear(*gate->GetCpt(), CellsOf(before), kExact));

  // 2^40 cells; the parameters are as they were.
  Gate wide(Ints(40, 2), 2);
  wide.Randomize(5);
  const Doubles parameters = CellsOf(wide->GetParameters());
  EXPECT_EQ(wide->BuildCpt(), KVN_NO_MEMORY);
  EXPECT_TRUE(CellsNear(wide->GetParameters(), parameters, kExact));
}

int Build(Gate& g) { return g->BuildCpt(); }
int Reorder(Gate& g) { return g->ReorderParents(IntsOf({1, 2, 0})); }
int SetInclusive(Gate& g) { return g->SetInclusiveParameters(g->GetParameters()); }

TEST(NoisyMAX, LackOfMemoryIsToldAndLeavesTheParameters) {
  for (int (*const run)(Gate&) : {Build, Reorder, SumOutThird, MoveRows, SetInclusive}) {
    const int failures = FailEachAllocation([&](int n) {
      Gate gate({2, 3, 4}, 3);
      gate.Randomize(17);
      const Doubles before = CellsOf(gate->GetParameters());
      FailingAllocation memory(n);
      const int result = run(gate);
      const bool failed = memory.HasFailed();
      EXPECT_EQ(result, failed ? KVN_NO_MEMORY : 0);
      if (failed) {
        EXPECT_TRUE(CellsNear(gate->GetParameters(), before, kExact));
      }
      return failed;
    });
    EXPECT_GT(failures, 0);
  }
}

TEST(NoisyMAX, NumbersCopyAsFarAsBothSidesReach) {
  Gate gate({2}, 2);
  (void)gate.Table();
  ASSERT_EQ(gate->SetDefinition(DoublesOf({0.25, 0.75})), 0);
  EXPECT_TRUE(CellsNear(gate->GetParameters(), {0.25, 0.75, 0, 1, 0.5, 0.5}, kExact));
  EXPECT_EQ(gate->GetCiFlags(), 0);
  Gate target({2}, 2);
  ASSERT_EQ(gate->SetParentOutcomeStrengths(0, IntsOf({1, 0})), 0);
  (void)gate.Table();
  gate->CopyParametersTo(*target);
  EXPECT_TRUE(CellsNear(target->GetParameters(), CellsOf(gate->GetParameters()), kExact));
  EXPECT_EQ(target->GetCiFlags(), KVN_CI_CPT_CURRENT);
  EXPECT_EQ(ItemsOf(*target->GetStrengths(0)), (Ints{0, 1})) << "strengths don't go along";
}

TEST(NoisyMAX, CloneIsEqualAndBuildsItsOwnTable) {
  Gate gate({2, 3}, 3);
  gate.Randomize(31);
  const Doubles table = CellsOf(gate.Table());
  std::unique_ptr<KVN_nodeDefinition> made(CloneDefinition(*gate));
  ASSERT_NE(made, nullptr);
  auto& clone = dynamic_cast<KVN_noisyMAX&>(*made);
  EXPECT_EQ(clone.GetCiFlags(), KVN_CI_CPT_CURRENT) << "the mark is taken over";
  EXPECT_TRUE(CellsNear(TableOfDefinition(clone), table, kRounding));
  EXPECT_TRUE(clone.IsConsistent());
}

double SquaredError(const KVN_Dmatrix& a, const Doubles& b) {
  double sum = 0.0;
  for (int i = 0; i < a.GetSize(); i++) sum += (a[i] - b[i]) * (a[i] - b[i]);
  return sum;
}

TEST(NoisyMAX, TableOfAGateIsFittedBack) {
  const Shape shapes[] = {{{}, 3}, {{2}, 2}, {{2, 3}, 2}, {{3, 2}, 3}};
  for (const Shape& shape : shapes) {
    Gate gate(shape.counts, shape.n);
    // A fit takes the last outcome of a parent for the distinguished one.
    gate.Randomize(41, /*shuffle=*/false);
    const Doubles wanted = CellsOf(gate.Table());
    KVN_node& node = *gate.network.GetNode(gate.node);
    ASSERT_EQ(node.ChangeType(KVN_TYPE_CPT), 0);
    EXPECT_TRUE(CellsNear(gate.Table(), wanted, kExact));
    ASSERT_EQ(node.ChangeType(KVN_TYPE_NOISY_MAX), 0);
    // Steps end at 0.0001, so each of a few dozen cells may be off by about that.
    EXPECT_LT(SquaredError(gate.Table(), wanted), 1e-6) << shape.counts.size();
    EXPECT_TRUE(gate->IsConsistent());
  }
}

// The leak is seeded with the last row, (1, 0, 0), and nothing fits before it gives some of its 1
// to the others: (0.8, 0.3, 0.5) off at first, so the squares begin at 0.98.
TEST(NoisyMAX, FitMovesARowAwayFromCertainty) {
  KVN_network network;
  const int p = AddNodeOf(network, KVN_TYPE_CPT, "p", 2);
  const int x = AddNodeOf(network, KVN_TYPE_CPT, "x", 3);
  AddArcs(network, {p}, x);
  const Doubles wanted = {0.2, 0.3, 0.5, 1, 0, 0};
  WriteCells(network, x, wanted);
  ASSERT_EQ(network.GetNode(x)->ChangeType(KVN_TYPE_NOISY_MAX), 0);
  EXPECT_TRUE(network.DefinitionOf(x)->IsConsistent());
  EXPECT_LT(SquaredError(TableOfNode(network, x), wanted), 0.9);
}

}  // namespace
