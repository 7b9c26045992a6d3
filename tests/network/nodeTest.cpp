#include "network/node.h"

#include "foundation/resultCodes.h"
#include "network/extraDefinition.h"
#include "network/nodeCost.h"
#include "network/nodeInfo.h"
#include "network/submodelHandler.h"
#include "tests/network/networkTools.h"
#include "values/nodeValue.h"

namespace {

TEST(Node, OnlyTwelveWordsNameAKind) {
  EXPECT_EQ(DefinitionTypeOfName("MAU"), KVN_TYPE_MAU);
  EXPECT_EQ(DefinitionTypeOfName("HEQUATION"), KVN_TYPE_H_EQUATION);
  for (const char* word : {"EQUATION", "cpt", "", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(DefinitionTypeOfName(word), KVN_REFUSED);
  }
}

TEST(Node, UnknownKindLeavesNoDefinition) {
  KVN_network network;
  KVN_node& node = *network.GetNode(network.AddNode(KVN_TYPE_CPT, "x"));
  EXPECT_EQ(node.ChangeType("EQUATION"), KVN_REFUSED);
  EXPECT_EQ(node.Definition(), nullptr);
  EXPECT_EQ(node.Value(), nullptr);
  EXPECT_EQ(network.TypeOf(node.Handle()), 0);
  // The network drops what is only half made.
  EXPECT_EQ(network.CheckReadiness(/*deep=*/1), 0);
  EXPECT_EQ(network.GetNumberOfNodes(), 0);
}

TEST(Node, ChangeOfTypeKeepsOutcomesAndNumbers) {
  KVN_network network;
  const int a = network.AddNode(KVN_TYPE_CPT, "a");
  const int b = network.AddNode(KVN_TYPE_CPT, "b");
  EXPECT_EQ(network.DefinitionOf(a)->AddOutcome("Third"), 0);
  EXPECT_EQ(network.AddArc(a, b, kPlain), 0);
  EXPECT_EQ(network.AddArc(a, b, kCost), 0);
  EXPECT_EQ(network.GetNode(b)->Cost()->SetCosts(DoublesOf({1, 2, 3})), 0);
  EXPECT_EQ(network.GetNode(a)->ExtraDefinition()->SetFaultState(2, 1), 0);
  EXPECT_EQ(network.DefinitionOf(a)->SetDefinition(DoublesOf({0.2, 0.3, 0.5})), 0);

  EXPECT_EQ(network.GetNode(a)->ChangeType(KVN_TYPE_TRUTHTABLE), 0);
  KVN_Dmatrix* table = nullptr;
  ASSERT_EQ(network.DefinitionOf(a)->GetDefinition(table), 0);
  EXPECT_TRUE(CellsNear(*table, {0, 0, 1}, 0.0));
  EXPECT_EQ(TextsOf(*network.DefinitionOf(a)->GetOutcomesNames()).at(2), "Third");
  // Nothing that hangs on the outcomes is lost, for they are the same.
  EXPECT_EQ(network.GetNode(a)->ExtraDefinition()->GetFaultStates()[2], 1);
  EXPECT_EQ(network.GetNode(b)->Cost()->GetCosts()[2], 3.0);
  EXPECT_TRUE(network.TableFits(b));
}

TEST(Node, ChangeToAKindWithOtherOutcomesFitsWhatHangsOnThem) {
  KVN_network network;
  const int a = network.AddNode(KVN_TYPE_CPT, "a");
  const int b = network.AddNode(KVN_TYPE_CPT, "b");
  EXPECT_EQ(network.DefinitionOf(a)->AddOutcome("Third"), 0);
  EXPECT_EQ(network.AddArc(a, b, kPlain), 0);
  // A gate with two fixed outcomes converts from nothing else; its defaults stay.
  EXPECT_EQ(network.GetNode(a)->ChangeType(KVN_TYPE_DEMORGAN), KVN_NOT_APPLICABLE);
  EXPECT_EQ(network.DefinitionOf(a)->GetNumberOfOutcomes(), 2);
  EXPECT_EQ(network.GetNode(a)->ExtraDefinition()->GetFaultStates().GetNumItems(), 2);
  EXPECT_TRUE(network.GetNode(a)->IsReady());
  // The child still has three rows for it: inference must be able to tell.
  EXPECT_TRUE(network.TableFits(a));
  EXPECT_FALSE(network.TableFits(b));
}

TEST(Node, ChangeToTheSameTypeDoesNothing) {
  KVN_network network;
  const int a = network.AddNode(KVN_TYPE_CPT, "a");
  const KVN_nodeDefinition* before = network.DefinitionOf(a);
  network.ValueOf(a)->SetValueValid();
  EXPECT_EQ(network.GetNode(a)->ChangeType(KVN_TYPE_CPT), 0);
  EXPECT_EQ(network.DefinitionOf(a), before);
  EXPECT_TRUE(network.ValueOf(a)->IsValueValid());
}

TEST(Node, ArcsThatANewKindCanNotHaveGo) {
  KVN_network network;
  AddNodes(network, KVN_TYPE_CPT, {"a", "b", "c"});
  AddArcs(network, {{"a", "b"}, {"a", "c"}, {"b", "c"}});
  // A utility has no outcomes to index its children by.
  (void)network.GetNode(network.FindNode("b"))->ChangeType(KVN_TYPE_TABLE);
  EXPECT_EQ(NamesOf(network, network.GetParents(network.FindNode("c"))), "a");
  EXPECT_EQ(NamesOf(network, network.GetParents(network.FindNode("b"))), "a");
  ExpectListsInStep(network);
}

TEST(Node, RenameAsksTheNetwork) {
  KVN_network network;
  AddNodes(network, KVN_TYPE_CPT, {"a", "b"});
  KVN_node& node = *network.GetNode(0);
  EXPECT_EQ(node.SetId("a"), 0);
  const int before = MessageCount();
  for (const char* used : {"b", "Unnamed"}) EXPECT_EQ(node.SetId(used), KVN_ILLEGAL_ID) << used;
  EXPECT_EQ(MessageCount(), before);  // a refused repeat is no matter for the log
  EXPECT_STREQ(node.GetId(), "a");
  EXPECT_EQ(node.SetId("c"), 0);
  EXPECT_EQ(network.FindNode("c"), 0);
  EXPECT_EQ(network.FindNode("a"), KVN_REFUSED);
  EXPECT_EQ(network.AddNode(KVN_TYPE_CPT, "a"), 2);
}

TEST(Node, SubmodelIsStoredAsGiven) {
  KVN_network network;
  KVN_node& node = *network.GetNode(network.AddNode(KVN_TYPE_CPT, "a"));
  const int group = network.Submodels().Create(KVN_ROOT_SUBMODEL, "group");
  ASSERT_EQ(group, KVN_SUBMODEL_BIT + 1);
  EXPECT_EQ(node.GetSubmodel(), KVN_ROOT_SUBMODEL);
  EXPECT_EQ(node.SetSubmodel(1), 0);
  EXPECT_EQ(node.GetSubmodel(), 1);
  EXPECT_EQ(node.SetSubmodel("group"), 0);
  EXPECT_EQ(node.GetSubmodel(), group);
  for (int bad : {2, -1, KVN_SUBMODEL_BIT + 2}) EXPECT_EQ(node.SetSubmodel(bad), KVN_REFUSED);
  EXPECT_EQ(node.SetSubmodel("nowhere"), KVN_ILLEGAL_ID);
  EXPECT_STREQ(GetLastErrorMessage(), "Unknown submodel");
  EXPECT_EQ(node.GetSubmodel(), group);
}

TEST(Node, TakesTheDefaultsOfTheDiagram) {
  KVN_network network;
  network.Submodels().NodeDefaults().color = 0x123456;
  KVN_node& node = *network.GetNode(network.AddNode(KVN_TYPE_CPT, "a"));
  EXPECT_EQ(node.Info().Screen().color, 0x123456);
  EXPECT_EQ(node.Info().Screen().position.width, 76);
}

}  // namespace
