#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "definitions/mau.h"
#include "definitions/mauExpressionTable.h"
#include "expressions/expression.h"
#include "expressions/expressionParser.h"
#include "foundation/resultCodes.h"
#include "network/node.h"
#include "tests/support/definitionBuilder.h"
#include "values/mauExpectedUtility.h"

namespace {

using testing::ElementsAre;
using Texts = std::vector<std::string>;

/// The utilities a, b and c, the decisions d (2 alternatives) and e (3), and m, which has none of
/// them as parent yet.
class Formulas : public testing::Test {
 protected:
  KVN_mau& mau() { return DefinitionAs<KVN_mau>(network, m); }

  int Set(const std::vector<int>& shape, const Texts& formulas) {
    KVN_mauExpressionTable table;
    EXPECT_EQ(table.Setup(IntsOf(shape)), 0);
    for (std::size_t i = 0; i < formulas.size(); i++) {
      table.SetItem(static_cast<int>(i), ParseExpression(formulas[i].c_str(), nullptr, nullptr));
    }
    message.clear();
    return mau().SetExpressions(&table, &message);
  }
  Texts Get() { return FormulasOf(mau()); }
  static Texts FormulasOf(const KVN_mau& definition) {
    Texts texts;
    for (int i = 0; definition.GetExpression(i) != nullptr; i++) {
      PrintSigned(*definition.GetExpression(i), texts.emplace_back());
    }
    return texts;
  }
  Texts Parents() {
    Texts ids;
    for (int parent : network.GetParents(m)) ids.emplace_back(network.GetNode(parent)->GetId());
    return ids;
  }

  KVN_network network;
  int c = AddNodeOf(network, KVN_TYPE_TABLE, "c");
  int b = AddNodeOf(network, KVN_TYPE_TABLE, "b");
  int a = AddNodeOf(network, KVN_TYPE_TABLE, "a");
  int d = AddNodeOf(network, KVN_TYPE_LIST, "d", 2);
  int e = AddNodeOf(network, KVN_TYPE_LIST, "e", 3);
  int m = AddNodeOf(network, KVN_TYPE_MAU, "m");
  std::string message;
};

TEST_F(Formulas, SayWhichNodesAreTheParents) {
  AddArcs(network, {c, d}, m);
  ASSERT_EQ(Set({2}, {"2*b+a", "Max(b,1)"}), 0);
  EXPECT_THAT(Parents(), ElementsAre("d", "a", "b"));
  EXPECT_THAT(Get(), ElementsAre("2*b+a", "Max(b,1)"));
  EXPECT_TRUE(CellsNear(TableOfNode(network, m), {1, 1, 1, 1}, 0.0)) << "weights follow";
  EXPECT_EQ(mau().SetExpressions(mau().GetExpressions(), nullptr), 0) << "the node's own";
  EXPECT_THAT(Get(), ElementsAre("2*b+a", "Max(b,1)"));
  EXPECT_EQ(mau().SetExpressions(nullptr, nullptr), 0);
  EXPECT_EQ(mau().GetExpressions(), nullptr);
  EXPECT_THAT(Parents(), ElementsAre("d", "a", "b"));
  EXPECT_TRUE(CellsNear(TableOfNode(network, m), {1, 1, 1, 1}, 0.0));
}

TEST_F(Formulas, AreRefusedWithTheReason) {
  const int top = AddNodeOf(network, KVN_TYPE_MAU, "top");
  (void)AddNodeOf(network, KVN_TYPE_CPT, "chance");
  AddArcs(network, {a, d}, m);
  AddArcs(network, {m}, top);
  ASSERT_EQ(Set({2}, {"a", "a+1"}), 0);
  const std::string kind = ": only non-descendant utility/ALU/MAU nodes are allowed";
  const std::string at = "Invalid expression at index ";
  struct Case {
    std::vector<int> shape;
    Texts formulas;
    int result;
    std::string message;
  };
  // clang-format off
  const Case cases[] = {
      {{1}, {"a"}, KVN_REFUSED, "Wrong matrix dimensions"},
      {{2, 3}, {"a"}, KVN_REFUSED, "Wrong matrix dimensions"},
      {{2}, {"b", "m"}, KVN_FAILURE, at + "1: self-references not allowed"},
      {{2}, {"top", "m"}, KVN_FAILURE, at + "0" + kind},
      {{2}, {"a", "chance"}, KVN_FAILURE, at + "1" + kind},
      {{2}, {"a+d", "a"}, KVN_FAILURE, at + "0" + kind},
      {{2}, {"a", "a+x+m"}, KVN_FAILURE, at + "1: unknown identifier"},
      {{2}, {"a", "Uniform(0,x)"}, KVN_FAILURE, at + "1: Distributions not allowed"},
      {{2}, {"a"}, KVN_FAILURE, at + "1: no expression"},
  };
  // clang-format on
  for (const auto& test : cases) {
    SCOPED_TRACE(test.message);
    EXPECT_EQ(Set(test.shape, test.formulas), test.result);
    EXPECT_EQ(message, test.message);
    EXPECT_THAT(Get(), ElementsAre("a", "a+1"));
    EXPECT_THAT(Parents(), ElementsAre("d", "a")) << "nothing has changed";
  }
}

TEST_F(Formulas, FollowUtilitiesThatComeAndGo) {
  ASSERT_EQ(Set({1}, {"0"}), 0);
  AddArcs(network, {c}, m);
  EXPECT_THAT(Get(), ElementsAre("c"));
  AddArcs(network, {a}, m);
  EXPECT_THAT(Get(), ElementsAre("c+a"));
  ASSERT_EQ(Set({1}, {"2*a+b"}), 0);
  ASSERT_EQ(network.GetNode(a)->SetId("z"), 0);
  EXPECT_THAT(Get(), ElementsAre("2*z+b"));
  // The structure goes with the utility: the sum of what remains, sorted.
  ASSERT_EQ(Set({1}, {"2*z+b-Sqrt(c)"}), 0);
  ASSERT_EQ(network.DeleteNode(b), 0);
  EXPECT_THAT(Get(), ElementsAre("c+z"));
  ASSERT_EQ(network.RemoveArc(a, m, 0), 0);
  ASSERT_EQ(network.RemoveArc(c, m, 0), 0);
  EXPECT_THAT(Get(), ElementsAre("0"));
}

TEST_F(Formulas, FollowDecisionsAndTheirAlternatives) {
  ASSERT_EQ(Set({1}, {"a"}), 0);
  AddArcs(network, {d}, m);
  EXPECT_THAT(Get(), ElementsAre("a", "a"));
  ASSERT_EQ(Set({2}, {"a", "2*b"}), 0);
  AddArcs(network, {e}, m);
  EXPECT_THAT(Get(), ElementsAre("a", "a", "a", "2*b", "2*b", "2*b"));
  ASSERT_EQ(Set({2, 3}, {"a", "a-1", "a-2", "b", "b-1", "c"}), 0);
  EXPECT_THAT(Parents(), ElementsAre("d", "e", "a", "b", "c"));
  // e before d, with the utilities in between.
  ASSERT_EQ(network.ChangeOrderOfParents(m, IntsOf({1, 2, 4, 0, 3})), 0);
  EXPECT_THAT(Get(), ElementsAre("a", "b", "a-1", "b-1", "a-2", "c"));
  ASSERT_EQ(network.DefinitionOf(d)->ChangeOrderOfOutcomes(IntsOf({1, 0})), 0);
  EXPECT_THAT(Get(), ElementsAre("b", "a", "b-1", "a-1", "c", "a-2"));
  ASSERT_EQ(network.DefinitionOf(e)->InsertOutcome(1, "new"), 0);
  EXPECT_THAT(Get(), ElementsAre("b", "a", "b", "b", "b-1", "a-1", "c", "a-2"));
  ASSERT_EQ(network.DefinitionOf(e)->RemoveOutcome(3), 0);
  EXPECT_THAT(Get(), ElementsAre("b", "a", "b", "b", "b-1", "a-1"));
  EXPECT_THAT(Parents(), ElementsAre("e", "a", "d", "b")) << "nothing names c any more";
  ASSERT_EQ(network.RemoveArc(d, m, 0), 0);
  EXPECT_THAT(Get(), ElementsAre("b", "b", "b-1"));
  EXPECT_THAT(Parents(), ElementsAre("e", "b"));
  ASSERT_EQ(network.RemoveArc(e, m, 0), 0);
  EXPECT_THAT(Get(), ElementsAre("b"));
  EXPECT_TRUE(mau().NumbersFit());
}

TEST_F(Formulas, ArePartOfACopyAndGoWithTheType) {
  AddArcs(network, {d}, m);
  ASSERT_EQ(Set({2}, {"a", "b-a"}), 0);
  KVN_network copy;
  ASSERT_EQ(copy.Assign(network, 0), 0);
  ASSERT_EQ(network.RemoveArc(a, m, 0), 0);
  EXPECT_THAT(FormulasOf(DefinitionAs<KVN_mau>(copy, m)), ElementsAre("a", "b-a"));
  ASSERT_EQ(copy.GetNode(m)->ChangeType(KVN_TYPE_TABLE), 0);
  ASSERT_EQ(copy.GetNode(m)->ChangeType(KVN_TYPE_MAU), 0);
  EXPECT_EQ(DefinitionAs<KVN_mau>(copy, m).GetExpressions(), nullptr);
}

/// Rows by e (not indexing, chosen) and d (indexing), inputs in the order of the parents.
TEST_F(Formulas, CombineTheValuesOfTheParents) {
  AddArcs(network, {e, d}, m);
  ASSERT_EQ(Set({3, 2}, {"a", "a", "-(a-b*b)", "a<b ? 7 : 8", "b", "b"}), 0);
  MatrixOf(network, a)[0] = 2;
  MatrixOf(network, b)[0] = 5;
  auto& value = static_cast<KVN_mauExpectedUtility&>(*network.ValueOf(m));
  ASSERT_EQ(value.AddIndexingParent(d), 0);
  ASSERT_EQ(network.ValueOf(e)->SetEvidence(1), 0);
  ASSERT_EQ(value.ComputeFromParents(), 0);
  EXPECT_TRUE(CellsNear(MatrixOf(network, m), {23, 7}, 0.0));
}

}  // namespace
