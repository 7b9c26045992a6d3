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

/// `table` without dimension d, at coordinate `value`.
Doubles Slice(KVN_Dmatrix table, int d, int value) {
  EXPECT_EQ(table.RemoveDimension(d, value), 0);
  return CellsOf(table);
}

struct Shape {
  Ints counts;
  int n;
};
const Shape kShapes[] = {
    {{},           3},
    {{2},          2},
    {{2, 3, 4},    3},
    {{4, 3, 2},    2},
    {{3, 2, 2, 4}, 4},
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
  for (const Ints& bad : {
           Ints{0         },
           Ints{ 0,           0},
           Ints{          0, 2},
           Ints{         0,          1, 2}
  }) {
    EXPECT_EQ(gate->SetParentOutcomeStrengths(0, IntsOf(bad)), KVN_REFUSED);
  }
  EXPECT_EQ(gate->SetParentOutcomeStrengths(1, IntsOf({0, 1})), KVN_REFUSED);
  EXPECT_EQ(ItemsOf(*gate->GetStrengths(0)), (Ints{1, 0}));
  EXPECT_EQ(gate->GetStrengths(1), nullptr);
}

TEST(NoisyMAX, NewParentGetsUniformRowsAndAConstrainedOne) {
  Gate gate({3, 2}, 2);
  EXPECT_TRUE(CellsNear(gate->GetParameters(), {0.5, 0.5, 0.5, 0.5, 0, 1, 0.5, 0.5, 0, 1, 0.5, 0.5},
                        kExact));
  EXPECT_EQ(gate->RowOffset(0), 0);
  EXPECT_EQ(gate->RowOffset(1), 3);
  EXPECT_EQ(gate->RowOffset(2), KVN_REFUSED);
  EXPECT_EQ(gate->AddParent(gate.node), KVN_REFUSED) << "no parent of itself";
  EXPECT_EQ(gate->AddParent(99), KVN_REFUSED);
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

TEST(NoisyMAX, ParametersSurviveTheInclusiveFormAndTheList) {
  for (const Shape& shape : kShapes) {
    Gate gate(shape.counts, shape.n);
    gate.Randomize(11);
    const KVN_Dmatrix before = gate->GetParameters();
    KVN_Dmatrix inclusive;
    KVN_doubleArray list;
    ASSERT_EQ(gate->GetInclusiveParameters(inclusive), 0);
    ASSERT_EQ(gate->GetParameterList(list), 0);
    const int parents = static_cast<int>(shape.counts.size());
    const int free = (before.GetSizeOfDimension(0) - parents) * shape.n;
    EXPECT_EQ(list.GetNumItems(), free);
    gate->GetParameters().FillWith(0.25);
    ASSERT_EQ(gate->SetInclusiveParameters(inclusive), 0);
    EXPECT_TRUE(CellsNear(gate->GetParameters(), CellsOf(before), kRounding));
    gate.Randomize(12);
    ASSERT_EQ(gate->SetLegacyProbabilities(list), 0);
    EXPECT_TRUE(CellsNear(gate->GetParameters(), CellsOf(before), kRounding));

    const Doubles kept = CellsOf(gate->GetParameters());
    ASSERT_EQ(list.Delete(0), 0);
    EXPECT_EQ(gate->SetParameterList(list), KVN_REFUSED);
    if (parents > 0) {
      inclusive[(gate->GetStrengths(0)->GetSize() - 1) * shape.n] = 0.5;
      EXPECT_EQ(gate->SetInclusiveParameters(inclusive), KVN_REFUSED);
    }
    EXPECT_TRUE(CellsNear(gate->GetParameters(), kept, kExact));
  }
}

// Inclusive (0.58, 0.42), leak (0.4, 0.6): 0.42 / 0.6 = 0.7 is left for "no higher than 1".
TEST(NoisyMAX, ListHoldsFreeRowsWithTheLeakLast) {
  Gate gate({2}, 2);
  ASSERT_EQ(gate->SetParameterList(DoublesOf({0.58, 0.42, 0.4, 0.6})), 0);
  EXPECT_TRUE(CellsNear(gate->GetParameters(), {0.3, 0.7, 0, 1, 0.4, 0.6}, kRounding));
  KVN_doubleArray list;
  ASSERT_EQ(gate->GetParameterList(list), 0);
  EXPECT_TRUE(CellsNear(TableOf({4}, ItemsOf(list)), {0.58, 0.42, 0.4, 0.6}, kRounding));
  // 0 / 0: the numbers are the caller's affair, CheckParameters is the place that tells.
  ASSERT_EQ(gate->SetParameterList(DoublesOf({1, 0, 1, 0})), 0);
  EXPECT_TRUE(std::isnan(gate->GetParameters()[1]));
  EXPECT_EQ(gate->CheckConsistency(1), KVN_NOT_CONSISTENT);
}

/// An edit of the graph or of a parent of a random gate with parents of 2, 3 and 4 outcomes, and
/// what the table must be then, from the table before.
struct EditCase {
  const char* name;
  std::function<int(Gate&)> edit;
  std::function<Doubles(Gate&, const KVN_Dmatrix&)> expected;
};

const EditCase kEdits[] = {
    {"a removed parent stays distinguished",
     [](Gate& g) { return g.network.RemoveArc(g.parents[1], g.node, 0); },
     [](Gate&,                                                                                                    const KVN_Dmatrix& old) { return Slice(old, 1, 2); }},
    {"absorbed evidence is folded into the leak",
     [](Gate& g) {
       EXPECT_EQ(g.network.ValueOf(g.parents[1])->SetEvidence(1), 0);
       return g->AbsorbParentEvidence(g.parents[1]);
     },                                                                                                 [](Gate&, const KVN_Dmatrix& old) { return Slice(old, 1, 1); }},
    {"a parent is summed out with its prior",
     [](Gate& g) { return g->MarginalizeParent(g.parents[2]); },
     [](Gate& g,                                                                                                  const KVN_Dmatrix& old) {
       KVN_Dmatrix made;
       EXPECT_EQ(old.WeightedCopy(2, TableOfDefinition(g.Parent(2)).GetItems(), made), 0);
       return CellsOf(made);
     }                                                                                                                                                },
    {"a new outcome of a parent doesn't act",
     [](Gate& g) { return g.Parent(1).InsertOutcome(1, "fresh"); },
     [](Gate&,                                                                                                    KVN_Dmatrix old) {
       // Old outcomes 0, 1, 2 are 0, 2, 3 now; 1 reads like the distinguished one.
       KVN_Dmatrix made = old;
       EXPECT_EQ(made.PushSlice(1), 0);
       for (int cell = 0; cell < made.GetSize(); cell++) {
         KVN_intArray at;
         EXPECT_EQ(made.CoordinatesOf(cell, at), 0);
         at[1] = at[1] == 0 ? 0 : at[1] == 1 ? 2 : at[1] - 1;
         made[cell] = old.At(at);
       }
       return CellsOf(made);
     }                                                                                                                                                  },
    {"an outcome of a parent goes",               [](Gate& g) { return g.Parent(2).RemoveOutcome(0); },
     [](Gate&,                                                                                                    KVN_Dmatrix old) {
       EXPECT_EQ(old.RemoveSlice(2, 0), 0);
       EXPECT_EQ(old.ShrinkDimension(2), 0);
       return CellsOf(old);
     }                                                                                                                                                  },
    {"parents change places",
     [](Gate& g) {
       const int result = g.network.ChangeOrderOfParents(g.node, IntsOf({2, 0, 1}));
       g->MarkCptStale();  // not done by the operation, which is intended
       return result;
     },                                                                                                 [](Gate&, KVN_Dmatrix old) {
       EXPECT_EQ(old.ChangeOrderOfDimensions(IntsOf({2, 0, 1, 3})), 0);
       return CellsOf(old);
     }                                               },
    {"rows and strengths move together",
     [](Gate& g) {
       return g->ApplyParentOutcomeStrengths(2, IntsOf({2, 0, 1, 3}));
     },                                                                                                 [](Gate&, const KVN_Dmatrix& old) { return CellsOf(old); }    },
};

TEST(NoisyMAX, EditsOfTheGraphKeepTheMeaningOfTheTable) {
  for (int flags : {0, KVN_CI_KEEP_CPT}) {
    for (const EditCase& c : kEdits) {
      SCOPED_TRACE(testing::Message() << c.name << ", flags " << flags);
      Gate gate({2, 3, 4}, 3);
      gate.Randomize(23);
      // The second parent keeps outcome 2 as the distinguished one, the third doesn't lose its.
      EXPECT_EQ(gate->SetParentOutcomeStrengths(1, IntsOf({1, 0, 2})), 0);
      EXPECT_EQ(gate->SetParentOutcomeStrengths(2, IntsOf({2, 0, 1, 3})), 0);
      WriteCells(gate.network, gate.parents[2], {0.1, 0.2, 0.3, 0.4});
      const KVN_Dmatrix before = gate.Table();
      gate->SetCiFlags(gate->GetCiFlags() | flags);
      ASSERT_EQ(c.edit(gate), 0);
      const bool current = (gate->GetCiFlags() & KVN_CI_CPT_CURRENT) != 0;
      // A removed parent is cut out of a kept table without a build, at its first outcome.
      EXPECT_EQ(current, flags != 0 && &c != &kEdits[0] && &c != &kEdits[5]);
      EXPECT_TRUE(CellsNear(gate.Table(), c.expected(gate, before), kRounding));
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
  for (const std::vector<const char*>& bad : {
           std::vector<const char*>{"a", "1b",    "c"},
            {"a", "a",     "c"},
            {"a", nullptr, "c"}
  }) {
    EXPECT_EQ(gate->SetNumberOfOutcomes(IdsOf(bad)), KVN_NOT_READY);
  }
  EXPECT_EQ(gate->RenameOutcomes(StringsOf({"a", "b", "c"})), KVN_REFUSED);
  ASSERT_EQ(gate->SetNumberOfOutcomes(StringsOf({"a", "b", "c"})), 0);
  EXPECT_EQ(OutcomesAt(gate.network, gate.node), (Texts{"a", "b", "c"}));
  EXPECT_EQ(gate.Table().GetSize(), 6);
  EXPECT_EQ(gate.Parent(0).SetNumberOfOutcomes(3), KVN_HAS_CHILDREN);
}

struct CheckCase {
  const char* message;
  int result;
  Ints sizes;
  Doubles cells;
};
const CheckCase kChecks[] = {
    {"Ok",                              0,                   {3, 2}, {0.7, 0.3, 0, 1, 0.2, 0.799996}   },
    {"Inappropirate Dmatrix size",      KVN_REFUSED,         {2, 2}, {0.7, 0.3, 0, 1}                  },
    {"Inappropirate Dmatrix size",      KVN_REFUSED,         {6},    {0.7, 0.3, 0, 1, 0.2, 0.8}        },
    {"Probability less than 0",         KVN_LENGTH_MISMATCH, {3, 2}, {1.1, -0.1, 0, 1, 0.2, 0.8}       },
    {"Constraints violeted",            KVN_LENGTH_MISMATCH, {3, 2}, {0.7, 0.3, 0.5, 0.5, 0.2, 0.8}    },
    {"Constraints violeted",            KVN_LENGTH_MISMATCH, {3, 2}, {0.7, 0.3, 0, 1.0000001, 0.2, 0.8}},
    {"Probabilities don't sum up to 1",
     KVN_LENGTH_MISMATCH,                                    {3, 2},
     {0.7, 0.29999, 0.5, 0.5, 0.2, 0.8}                                                                },
    {"Probabilities don't sum up to 1",
     KVN_LENGTH_MISMATCH,                                    {3, 2},
     {0.7, 0.3, 0, 1, 0.2, std::nan("")}                                                               },
};

TEST(NoisyMAX, CheckParametersTellsTheFirstFault) {
  Gate gate({2}, 2);
  for (const CheckCase& c : kChecks) {
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
  EXPECT_STREQ(message, "Inappropirate Dmatrix size");
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

struct MemoryCase {
  const char* name;
  std::function<int(Gate&)> run;
};
const MemoryCase kMemoryCases[] = {
    {"build",                    [](Gate& g) { return g->BuildCpt(); }                     },
    {"parents reordered",
     [](Gate& g) {
       return g->ReorderParents(IntsOf({1, 2, 0}));
     }                                                                                     },
    {"parent removed",           [](Gate& g) { return g->RemoveParent(g.parents[1]); }     },
    {"parent summed out",        [](Gate& g) { return g->MarginalizeParent(g.parents[1]); }},
    {"strengths applied",
     [](Gate& g) {
       return g->ApplyParentOutcomeStrengths(2, IntsOf({1, 0, 2, 3}));
     }                                                                                     },
    {"inclusive parameters set",
     [](Gate& g) { return g->SetInclusiveParameters(g->GetParameters()); }                 },
};

TEST(NoisyMAX, LackOfMemoryIsToldAndLeavesTheParameters) {
  for (const MemoryCase& c : kMemoryCases) {
    SCOPED_TRACE(c.name);
    const int failures = FailEachAllocation([&](int n) {
      Gate gate({2, 3, 4}, 3);
      gate.Randomize(17);
      const Doubles before = CellsOf(gate->GetParameters());
      FailingAllocation memory(n);
      const int result = c.run(gate);
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
  for (const Shape& shape : {
           Shape{{},     3},
           {{2},    2},
           {{2, 3}, 2},
           {{3, 2}, 3}
  }) {
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

struct ConversionCase {
  int from;
  int result;
  Texts names;
  int parents;
};

TEST(NoisyMAX, ConversionsTakeWhatTheSourceHas) {
  const ConversionCase cases[] = {
      {KVN_TYPE_LIST,        0,           {"Choice0", "Choice1"},         0},
      {KVN_TYPE_TABLE,       0,           {"State0", "State1"},           1},
      {KVN_TYPE_TRUTHTABLE,  0,           {"State0", "State1"},           1},
      {KVN_TYPE_NOISY_ADDER, 0,           {"State0", "State1", "State2"}, 1},
      {KVN_TYPE_DEMORGAN,    KVN_REFUSED, {"State0", "State1"},           0},
  };
  for (const ConversionCase& c : cases) {
    SCOPED_TRACE(c.from);
    KVN_network network;
    const int parent = AddNodeOf(network, KVN_TYPE_CPT, "parent", 3);
    const int node = AddNodeOf(network, c.from, "node");
    (void)network.AddArc(parent, node, 0);  // refused by the last kind
    EXPECT_EQ(network.GetNode(node)->ChangeType(KVN_TYPE_NOISY_MAX), c.result);
    EXPECT_EQ(OutcomesAt(network, node), c.names);
    EXPECT_EQ(network.GetNumberOfParents(node), c.parents);
    auto& gate = DefinitionAs<KVN_noisyMAX>(network, node);
    EXPECT_EQ(gate.GetParameters().GetSizeOfDimension(0), 1 + 3 * c.parents);
  }
}

}  // namespace
