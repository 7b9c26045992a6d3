#include "definitions/cpt.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>

#include "foundation/resultCodes.h"
#include "network/node.h"
#include "tests/support/definitionBuilder.h"
#include "tests/support/failingAllocation.h"
#include "tests/support/logWatch.h"
#include "values/nodeValue.h"

namespace {

using Texts = std::vector<std::string>;
using Ints = std::vector<int>;

/// Node x with parents a (3 outcomes) and b (2), x itself binary. Cell (i, j, k) of its table holds
/// a row that tells where it came from: 0.1 * i + 0.05 * j + 0.2, and the rest to 1.
class CptWithParents : public testing::Test {
 protected:
  CptWithParents() {
    AddArcs(network, {a, b}, x);
    std::vector<double> cells;
    for (int i = 0; i < 3; i++) {
      for (int j = 0; j < 2; j++) {
        cells.push_back(0.2 + 0.1 * i + 0.05 * j);
        cells.push_back(1.0 - cells.back());
      }
    }
    EXPECT_EQ(cpt().SetProbabilities(DoublesOf(cells)), 0);
  }
  KVN_cpt& cpt() { return DefinitionAs<KVN_cpt>(network, x); }
  KVN_Dmatrix& table() { return TableOfNode(network, x); }

  KVN_network network;
  int a = AddNodeOf(network, KVN_TYPE_CPT, "a", 3);
  int b = AddNodeOf(network, KVN_TYPE_CPT, "b", 2);
  int x = AddNodeOf(network, KVN_TYPE_CPT, "x");
};

constexpr double kExact = 0.0;
constexpr double kRounding = 1e-15;  // one multiplication and one addition

TEST(Cpt, NewNodeHasTwoStatesAndUniformRows) {
  KVN_network network;
  const int x = AddNodeOf(network, KVN_TYPE_CPT, "x");
  EXPECT_EQ(OutcomesAt(network, x), (Texts{"State0", "State1"}));
  EXPECT_TRUE(CellsNear(TableOfNode(network, x), {0.5, 0.5}, kExact));
  const int parent = AddNodeOf(network, KVN_TYPE_CPT, "parent", 3);
  AddArcs(network, {parent}, x);
  EXPECT_EQ(ItemsOf(TableOfNode(network, x).GetDimensions()), (Ints{3, 2}));
  EXPECT_TRUE(CellsNear(TableOfNode(network, x), {0.5, 0.5, 0.5, 0.5, 0.5, 0.5}, kExact));
}

// A parent without a dimension is refused when it comes, and ignored when it goes; only a utility
// is refused both ways.
TEST(Cpt, KindsOfParents) {
  const struct {
    int type;
    int added, removed;
  } cases[] = {
      {KVN_TYPE_LIST, 0, 0},           {KVN_TYPE_CPT, 0, 0},
      {KVN_TYPE_TRUTHTABLE, 0, 0},     {KVN_TYPE_NOISY_MAX, 0, 0},
      {KVN_TYPE_NOISY_ADDER, 0, 0},    {KVN_TYPE_TABLE, KVN_REFUSED, KVN_REFUSED},
      {KVN_TYPE_CAST, KVN_REFUSED, 0}, {KVN_TYPE_DEMORGAN, KVN_REFUSED, 0},
      {KVN_TYPE_NONE, KVN_REFUSED, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.type);
    KVN_network network;
    const int x = AddNodeOf(network, KVN_TYPE_CPT, "x", 2);
    const int parent = network.AddNode(c.type, "parent");
    EXPECT_EQ(network.AddArc(parent, x, 0), c.added == 0 ? 0 : KVN_NOT_APPLICABLE);
    KVN_cpt& cpt = DefinitionAs<KVN_cpt>(network, x);
    if (c.added != 0) {
      EXPECT_EQ(cpt.AddParent(parent), c.added);
    }
    const int cells = cpt.GetSize();
    EXPECT_EQ(cpt.RemoveParent(parent), c.removed);
    EXPECT_EQ(cpt.GetSize(), c.added == 0 ? 2 : cells);
    EXPECT_EQ(cpt.AddParent(x + 100), KVN_REFUSED);
    EXPECT_EQ(cpt.RemoveParent(x + 100), KVN_REFUSED);
  }
}

TEST_F(CptWithParents, BadOutcomeOfAParentChangesNothing) {
  const std::vector<double> before = ItemsOf(table().GetItems());
  for (int bad : {-1, 4}) EXPECT_EQ(cpt().ParentOutcomeInserted(a, bad), KVN_REFUSED);
  for (int bad : {-1, 3}) EXPECT_EQ(cpt().ParentOutcomeRemoved(a, bad), KVN_REFUSED);
  EXPECT_TRUE(CellsNear(table(), before, kExact));
}

TEST_F(CptWithParents, AbsorbedParentLeavesTheRowsOfItsEvidence) {
  EXPECT_EQ(cpt().AbsorbParentEvidence(a), KVN_REFUSED);  // no evidence
  ASSERT_EQ(network.ValueOf(a)->SetEvidence(2), 0);
  EXPECT_EQ(cpt().MarginalizeParent(a), KVN_REFUSED);  // evidence
  EXPECT_EQ(cpt().AbsorbParentEvidence(a), 0);
  EXPECT_TRUE(CellsNear(table(), {0.4, 0.6, 0.45, 0.55}, kRounding));
}

TEST_F(CptWithParents, MarginalizedParentLeavesTheMeanRow) {
  WriteCells(network, a, {0.5, 0.25, 0.25});
  EXPECT_EQ(cpt().MarginalizeParent(a), 0);
  // b = 0: 0.5 * 0.2 + 0.25 * 0.3 + 0.25 * 0.4 = 0.275; b = 1: 0.05 more.
  EXPECT_TRUE(CellsNear(table(), {0.275, 0.725, 0.325, 0.675}, kRounding));
}

TEST(Cpt, OwnDimensionOutlastsAnAbsorbedParentsArc) {
  KVN_network network;
  const int a = AddNodeOf(network, KVN_TYPE_CPT, "a");
  const int x = AddNodeOf(network, KVN_TYPE_CPT, "x");
  AddArcs(network, {a}, x);
  WriteCells(network, x, {0.1, 0.9, 0.2, 0.8});
  ASSERT_EQ(network.ValueOf(a)->SetEvidence(1), 0);
  ASSERT_EQ(network.DefinitionOf(x)->AbsorbParentEvidence(a), 0);
  ASSERT_EQ(network.RemoveArc(a, x, 0), 0);
  EXPECT_TRUE(CellsNear(TableOfNode(network, x), {0.2, 0.8}, kExact));
}

TEST(Cpt, ConsistencyOfRows) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const struct {
    const char* name;
    std::vector<double> cells;
    bool consistent;
  } cases[] = {
      {"sums to 1", {0.3, 0.7}, true},
      {"just inside, low", {0.9999951, 0}, true},
      {"just inside, high", {1.0000049, 0}, true},
      {"outside, low", {0.999994, 0}, false},
      {"outside, high", {1.000006, 0}, false},
      {"negative, sum 1", {1.5, -0.5}, false},
      {"zeros", {0, 0}, false},
      {"not a number", {nan, 1}, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    KVN_network network;
    const int x = AddNodeOf(network, KVN_TYPE_CPT, "x");
    KVN_cpt& cpt = DefinitionAs<KVN_cpt>(network, x);
    EXPECT_EQ(cpt.SetProbabilities(DoublesOf(c.cells)), 0);
    EXPECT_TRUE(CellsNear(TableOfDefinition(cpt), c.cells, kExact)) << "stored as given";
    EXPECT_EQ(cpt.IsConsistent(), c.consistent);
    EXPECT_TRUE(cpt.IsReady());
  }
}

TEST_F(CptWithParents, SettersDifferInWhatTheyCheckAndTell) {
  KVN_nodeValue& value = *network.ValueOf(x);
  value.SetValueValid();
  EXPECT_EQ(cpt().SetProbabilities(DoublesOf({0.1, 0.9})), KVN_REFUSED);
  EXPECT_DOUBLE_EQ(table()[0], 0.2);
  // Slot 40 takes what there is, and nobody hears of it.
  EXPECT_EQ(cpt().SetDefinition(DoublesOf({0.9, 0.3})), 0);
  EXPECT_DOUBLE_EQ(table()[0], 0.9);
  EXPECT_DOUBLE_EQ(table()[2], 0.25);
  EXPECT_TRUE(cpt().IsConsistent());
  EXPECT_TRUE(value.IsValueValid());
  KVN_doubleArray block;  // filled by position, so that its size counts
  ASSERT_EQ(block.SetSize(12), 0);
  block.FillWith(0.5);
  block[7] = 0.6;
  EXPECT_EQ(cpt().SetProbabilities(block), 0);
  EXPECT_DOUBLE_EQ(table()[11], 0.5);
  EXPECT_FALSE(cpt().IsConsistent()) << "the fourth row";
  EXPECT_FALSE(value.IsValueValid());
  EXPECT_EQ(cpt().SetDefinition(TableOf({2, 2}, {1, 0, 0, 1})), 0);
  EXPECT_TRUE(CellsNear(table(), {1, 0, 0, 1}, kExact));
}

TEST(Cpt, NamesGivenToNewOutcomes) {
  const struct {
    const char* name;
    const char* stored;
  } cases[] = {
      {"maybe", "maybe"}, {"State1", "State2"},  // a repeat
      {"1st", "State2"},  {"a b", "State2"},    {"", "State2"}, {nullptr, "State2"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.stored);
    KVN_network network;
    const int x = AddNodeOf(network, KVN_TYPE_CPT, "x");
    EXPECT_EQ(network.DefinitionOf(x)->AddOutcome(c.name), 0);
    EXPECT_EQ(OutcomesAt(network, x), (Texts{"State0", "State1", c.stored}));
    EXPECT_TRUE(CellsNear(TableOfNode(network, x), {0.5, 0.5, 0}, kExact));
  }
}

TEST_F(CptWithParents, RemovedOutcomeLeavesRowsThatSumToLess) {
  ASSERT_EQ(cpt().InsertOutcome(1, "mid"), 0);
  EXPECT_EQ(cpt().CheckConsistency(0), 0) << "a new outcome has probability 0";
  EXPECT_EQ(cpt().InsertOutcome(4, "beyond"), KVN_REFUSED);
  EXPECT_EQ(cpt().RemoveOutcome(3), KVN_REFUSED);
  EXPECT_EQ(cpt().GetNumberOfOutcomes(), 3);
  ASSERT_EQ(cpt().RemoveOutcome(2), 0);
  EXPECT_EQ(OutcomesAt(network, x), (Texts{"State0", "mid"}));
  EXPECT_DOUBLE_EQ(table()[0], 0.2);
  EXPECT_TRUE(cpt().IsConsistent()) << "a status of the last check";
  EXPECT_LT(cpt().CheckConsistency(0), 0);
  EXPECT_EQ(cpt().RemoveOutcome(0), KVN_REFUSED) << "two outcomes always stay";
}

TEST(Cpt, SetNumberOfOutcomesByCount) {
  const struct {
    int count, result;
    Texts names;
  } cases[] = {
      {3, 0, {"State0", "State1", "State2"}},
      {1, 0, {"State0", "State1"}},
      {0, KVN_REFUSED, {}},  // emptied before the count is looked at
      {-1, KVN_REFUSED, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.count);
    KVN_network network;
    const int x = AddNodeOf(network, KVN_TYPE_CPT, "x");
    EXPECT_EQ(network.DefinitionOf(x)->SetNumberOfOutcomes(c.count), c.result);
    EXPECT_EQ(OutcomesAt(network, x), c.names);
    EXPECT_EQ(network.DefinitionOf(x)->GetSize(), static_cast<int>(c.names.size()));
  }
}

TEST(Cpt, SetNumberOfOutcomesByNames) {
  const struct {
    std::vector<const char*> names;
    Texts stored;
  } cases[] = {
      {{"no", "yes", "maybe"}, {"no", "yes", "maybe"}},
      {{"1a", "b c"}, {"x1a", "b_c"}},
      {{"a", "a", "a"}, {"a", "a2", "a3"}},
      {{"only"}, {"only", "State1"}},
      {{}, {"State0", "State1"}},
  };
  for (const auto& c : cases) {
    KVN_network network;
    const int x = AddNodeOf(network, KVN_TYPE_CPT, "x");
    EXPECT_EQ(network.DefinitionOf(x)->SetNumberOfOutcomes(IdsOf(c.names)), 0);
    EXPECT_EQ(OutcomesAt(network, x), c.stored);
    EXPECT_EQ(network.DefinitionOf(x)->GetSize(), static_cast<int>(c.stored.size()));
  }
}

TEST_F(CptWithParents, OutcomeSetStaysWhileThereAreChildren) {
  EXPECT_EQ(network.DefinitionOf(a)->SetNumberOfOutcomes(4), KVN_HAS_CHILDREN);
  EXPECT_EQ(network.DefinitionOf(a)->SetNumberOfOutcomes(StringsOf({"p", "q"})), KVN_HAS_CHILDREN);
  EXPECT_EQ(network.DefinitionOf(a)->GetNumberOfOutcomes(), 3);
  // Its own list as the argument must survive the emptying.
  ASSERT_EQ(cpt().RenameOutcomes(StringsOf({"low", "high"})), 0);
  EXPECT_EQ(cpt().SetNumberOfOutcomes(*cpt().GetOutcomesNames()), 0);
  EXPECT_EQ(OutcomesAt(network, x), (Texts{"low", "high"}));
  EXPECT_TRUE(CellsNear(table(), std::vector<double>(12, 0.5), kExact));
}

TEST_F(CptWithParents, Renames) {
  EXPECT_EQ(cpt().RenameOutcome(1, "State0"), KVN_REFUSED);
  EXPECT_EQ(cpt().RenameOutcome(1, "on"), 0);
  EXPECT_EQ(cpt().RenameOutcomes(StringsOf({"on"})), KVN_REFUSED);
  // Surplus names are not looked at, illegal ones and repeats are mended: counting starts at 0.
  EXPECT_EQ(cpt().RenameOutcomes(StringsOf({"on", "on", "spare"})), 0);
  EXPECT_EQ(OutcomesAt(network, x), (Texts{"on", "on0"}));
}

// Costs and diagnosis attributes hear of edits too, and are tested in their own places.
TEST_F(CptWithParents, EditsMakeTheBeliefsOfChildrenStale) {
  KVN_nodeDefinition& parent = *network.DefinitionOf(a);
  KVN_nodeValue& value = *network.ValueOf(x);
  value.SetValueValid();
  ASSERT_EQ(parent.InsertOutcome(1, "new"), 0);
  EXPECT_FALSE(value.IsValueValid());
  value.SetValueValid();
  ASSERT_EQ(parent.RemoveOutcome(0), 0);
  EXPECT_FALSE(value.IsValueValid());
  // The numbers keep their meaning when outcomes change places, so nothing becomes stale.
  value.SetValueValid();
  ASSERT_EQ(parent.ChangeOrderOfOutcomes(IntsOf({2, 0, 1})), 0);
  EXPECT_TRUE(value.IsValueValid());
}

TEST_F(CptWithParents, CloneHoldsTheSameAndLeavesTheSourceAlone) {
  cpt().RenameOutcome(0, "low");
  const std::unique_ptr<KVN_nodeDefinition> clone(CloneDefinition(cpt()));
  ASSERT_NE(clone, nullptr);
  EXPECT_EQ(clone->GetType(), KVN_TYPE_CPT);
  EXPECT_EQ(clone->GetHandle(), x);
  EXPECT_EQ(TextsOf(*clone->GetOutcomesNames()), (Texts{"low", "State1"}));
  EXPECT_TRUE(CellsNear(TableOfDefinition(*clone), ItemsOf(table().GetItems()), kExact));
  EXPECT_EQ(cpt().Assign(cpt()), 0);
  EXPECT_EQ(cpt().GetSize(), 12);
}

// Nothing may fall over when the definition stands alone, as during the building of a node.
TEST(Cpt, WorksWithoutANode) {
  KVN_network network;
  for (KVN_network* owner : {static_cast<KVN_network*>(nullptr), &network}) {
    KVN_cpt cpt(owner, 7);
    EXPECT_FALSE(cpt.IsReady());
    EXPECT_EQ(cpt.Init(), 0);
    EXPECT_TRUE(cpt.IsReady()) << "a table needs no node to be used";
    EXPECT_EQ(cpt.AddOutcome("third"), 0);
    EXPECT_EQ(cpt.ChangeOrderOfOutcomes(IntsOf({2, 0, 1})), 0);
    EXPECT_TRUE(CellsNear(TableOfDefinition(cpt), {0, 0.5, 0.5}, kExact));
    EXPECT_EQ(cpt.AddParent(0), KVN_REFUSED);
    EXPECT_EQ(cpt.ParentOutcomesReordered(0, IntsOf({1, 0})), KVN_REFUSED);
    EXPECT_EQ(cpt.RemoveNonDiscreteParents(), 0);
    EXPECT_EQ(cpt.ForwardEvent(KVN_CHANGE_NO_CASCADE), 0);
    EXPECT_EQ(cpt.SetNumberOfOutcomes(2), 0);
  }
}

TEST(Cpt, NewOutcomeWithoutMemory) {
  const int failures = FailEachAllocation([](int succeeding) {
    KVN_network network;
    const int a = AddNodeOf(network, KVN_TYPE_CPT, "a", 12);  // so that names and cells must grow
    const int x = AddNodeOf(network, KVN_TYPE_CPT, "x", 10);
    const int child = AddNodeOf(network, KVN_TYPE_CPT, "child");
    AddArcs(network, {a}, x);
    AddArcs(network, {x}, child);
    const FailingAllocation failing(succeeding);
    const int result = network.DefinitionOf(x)->AddOutcome("one_more");
    if (!failing.HasFailed()) {
      EXPECT_EQ(result, 0);
    }
    EXPECT_EQ(OutcomesAt(network, x).size(),
              static_cast<std::size_t>(network.DefinitionOf(x)->GetNumberOfOutcomes()));
    return failing.HasFailed();
  });
  EXPECT_GE(failures, 3) << "own table, name, child's table";
}

TEST(Cpt, FailureToAddAParentIsToldAndDoesNotStopTheRest) {
  KVN_network network;
  const int x = AddNodeOf(network, KVN_TYPE_CPT, "x");
  const int a = AddNodeOf(network, KVN_TYPE_CPT, "a", 3);
  const int b = AddNodeOf(network, KVN_TYPE_CPT, "b");
  AddArcs(network, {a, b}, x);
  ASSERT_EQ(network.GetNode(b)->ChangeType(KVN_TYPE_CAST), KVN_NOT_APPLICABLE);
  const LogWatch log;
  EXPECT_EQ(network.DefinitionOf(x)->ReCreate(), 0);
  EXPECT_EQ(ItemsOf(TableOfNode(network, x).GetDimensions()), (Ints{3, 2}));
  EXPECT_EQ(log.Texts(), (Texts{"Parent could not be added"}));
  EXPECT_EQ(log.Codes(), (Ints{KVN_REFUSED}));
}

TEST(Cpt, ParentsWithoutDiscreteOutcomesAreRemoved) {
  KVN_network network;
  const int x = AddNodeOf(network, KVN_TYPE_CPT, "x");
  const int a = AddNodeOf(network, KVN_TYPE_CPT, "a");
  const int b = AddNodeOf(network, KVN_TYPE_CPT, "b");
  AddArcs(network, {a, b}, x);
  EXPECT_EQ(network.DefinitionOf(x)->RemoveNonDiscreteParents(), 0);
  EXPECT_EQ(network.GetNumberOfParents(x), 2);
  ASSERT_EQ(network.GetNode(a)->ChangeType(KVN_TYPE_TABLE), 0);  // asks its children to do so
  EXPECT_EQ(ItemsOf(network.GetParents(x)), (Ints{b}));
}

}  // namespace
