#include "definitions/list.h"

#include <gtest/gtest.h>

#include <memory>

#include "foundation/resultCodes.h"
#include "tests/support/definitionBuilder.h"

namespace {

using Texts = std::vector<std::string>;

class List : public testing::Test {
 protected:
  KVN_list& list() { return DefinitionAs<KVN_list>(network, d); }
  Texts names() { return OutcomesAt(network, d); }

  KVN_network network;
  int d = AddNodeOf(network, KVN_TYPE_LIST, "d");
};

TEST_F(List, ParentsOnlyInform) {
  const struct {
    int type, result;
  } cases[] = {
      {KVN_TYPE_LIST, 0},
      {KVN_TYPE_CPT, 0},
      {KVN_TYPE_TABLE, KVN_REFUSED},
      {KVN_TYPE_DEMORGAN, KVN_REFUSED},
  };
  for (const auto& c : cases) {
    const int parent = network.AddNode(c.type, nullptr);
    EXPECT_EQ(list().AddParent(parent), c.result) << c.type;
    EXPECT_EQ(list().RemoveParent(parent), 0);
    EXPECT_EQ(list().ParentOutcomeInserted(parent, 9), 0);
  }
  EXPECT_EQ(list().AddParent(d + 100), KVN_REFUSED);
  EXPECT_EQ(names(), (Texts{"Choice0", "Choice1"}));
}

TEST_F(List, EditsOfAlternatives) {
  EXPECT_EQ(list().AddOutcome("Choice1"), 0);  // a repeat gets a generated name
  EXPECT_EQ(list().InsertOutcome(0, "wait"), 0);
  EXPECT_EQ(names(), (Texts{"wait", "Choice0", "Choice1", "Choice2"}));
  EXPECT_EQ(list().InsertOutcome(5, "late"), KVN_REFUSED);
  EXPECT_EQ(list().RemoveOutcome(4), KVN_REFUSED);
  EXPECT_EQ(list().RemoveOutcome(-1), KVN_REFUSED);
  EXPECT_EQ(list().RemoveOutcome(1), 0);
  EXPECT_EQ(list().RemoveOutcome(0), 0);
  EXPECT_EQ(list().RemoveOutcome(0), KVN_REFUSED);
  EXPECT_EQ(list().RenameOutcome(0, "go"), 0);
  EXPECT_EQ(names(), (Texts{"go", "Choice2"}));
  EXPECT_EQ(list().GetNumberOfOutcomes(), 2);
}

TEST_F(List, SetNumberOfOutcomes) {
  const struct {
    int count;
    Texts names;
  } counts[] = {
      {3, {"Choice0", "Choice1", "Choice2"}},
      {1, {"Choice0", "Choice1"}},  // raised, where a chance node refuses 0
      {-4, {"Choice0", "Choice1"}},
  };
  for (const auto& c : counts) {
    EXPECT_EQ(list().SetNumberOfOutcomes(c.count), 0);
    EXPECT_EQ(names(), c.names);
  }
  EXPECT_EQ(list().SetNumberOfOutcomes(IdsOf({"go", "2nd", "go"})), 0);
  EXPECT_EQ(names(), (Texts{"go", "x2nd", "go2"}));
  AddArcs(network, {d}, AddNodeOf(network, KVN_TYPE_CPT, "x"));
  EXPECT_EQ(list().SetNumberOfOutcomes(2), KVN_HAS_CHILDREN);
  EXPECT_EQ(list().SetNumberOfOutcomes(StringsOf({"p", "q"})), KVN_HAS_CHILDREN);
}

TEST_F(List, ChoiceValuesAreStoredReorderedAndCopied) {
  ASSERT_EQ(list().SetNumberOfOutcomes(3), 0);
  KVN_doubleArray* values = nullptr;
  ASSERT_EQ(list().GetDefinition(values), 0);
  EXPECT_EQ(values->GetNumItems(), 0);
  ASSERT_EQ(list().SetDefinition(DoublesOf({1, 2, 3})), 0);
  ASSERT_EQ(list().ChangeOrderOfOutcomes(IntsOf({1, 2, 0})), 0);
  EXPECT_EQ(ItemsOf(*values), (std::vector<double>{2, 3, 1}));
  // A list of another length is no obstacle, and is left alone.
  ASSERT_EQ(list().SetDefinition(DoublesOf({7, 8})), 0);
  ASSERT_EQ(list().ChangeOrderOfOutcomes(IntsOf({2, 0, 1})), 0);
  EXPECT_EQ(names(), (Texts{"Choice0", "Choice1", "Choice2"}));

  const std::unique_ptr<KVN_nodeDefinition> clone(CloneDefinition(list()));
  ASSERT_NE(clone, nullptr);
  ASSERT_EQ(clone->GetDefinition(values), 0);
  EXPECT_EQ(ItemsOf(*values), (std::vector<double>{7, 8}));
  EXPECT_EQ(TextsOf(*clone->GetOutcomesNames()), names());
}

}  // namespace
