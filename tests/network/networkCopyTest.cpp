#include "foundation/resultCodes.h"
#include "network/extraDefinition.h"
#include "network/nodeCost.h"
#include "network/nodeInfo.h"
#include "network/submodelHandler.h"
#include "tests/network/networkTools.h"
#include "tests/support/failingAllocation.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/networkComparer.h"
#include "values/nodeValue.h"

namespace {

/// Six kinds of nodes with a hole at handle 1, arcs on both layers, evidence and a submodel.
void MakeSource(KVN_network& network) {
  AddNodes(network, KVN_TYPE_CPT, {"cause", "hole", "test"});
  AddNodes(network, KVN_TYPE_TRUTHTABLE, {"copy"});
  AddNodes(network, KVN_TYPE_NOISY_MAX, {"gate"});
  AddNodes(network, KVN_TYPE_LIST, {"choice"});
  AddNodes(network, KVN_TYPE_TABLE, {"gain"});
  EXPECT_EQ(network.DefinitionOf(0)->AddOutcome("Third"), 0);
  AddArcs(network, {{"cause", "test"},
                    {"hole", "test"},
                    {"cause", "copy"},
                    {"cause", "gate"},
                    {"test", "gate"},
                    {"choice", "gain"},
                    {"cause", "gain"}});
  EXPECT_EQ(network.AddArc(0, 2, kCost), 0);
  EXPECT_EQ(network.GetNode(2)->Cost()->SetCosts(DoublesOf({1, 2, 3})), 0);
  EXPECT_EQ(network.DefinitionOf(0)->SetDefinition(DoublesOf({0.2, 0.3, 0.5})), 0);
  EXPECT_EQ(network.DeleteNode(1), 0);
  const int group = network.Submodels().Create(KVN_ROOT_SUBMODEL, "group");
  EXPECT_EQ(network.GetNode(4)->SetSubmodel(group), 0);
  EXPECT_EQ(network.GetNode(4)->Info().UserProperties().AddProperty("key", "value"), 0);
  EXPECT_EQ(network.GetNode(4)->ExtraDefinition()->SetQuestion("why?"), 0);
  EXPECT_EQ(network.SetTarget(2), 0);
  EXPECT_EQ(network.SetTemporalType(4, 2), 0);
  EXPECT_EQ(network.Creation().SetCreator("me"), 0);
  EXPECT_EQ(network.UserProperties().AddProperty("k", "v"), 0);
  EXPECT_EQ(network.Documentation().AddDocument("t", "l"), 0);
  network.SetNumberOfSamples(77);
  network.SetDefaultIDAlgorithm(1);
  network.SetShowAs(2);
  network.SetNoisyMaxRelevance(1);
  EXPECT_EQ(network.SetSolverSteps(9), 0);
  // Values of each kind: user and (of "copy") propagated evidence, soft, a choice, and a result.
  EXPECT_EQ(network.ValueOf(0)->SetEvidence(2), 0);
  EXPECT_EQ(network.ValueOf(2)->SetVirtualEvidence({0.25, 0.75}), 0);
  MatrixOf(network, 5) = TableOf({2}, {10, 20});
  EXPECT_EQ(network.ValueOf(5)->SetEvidence(1), 0);
  network.ValueOf(5)->SetValueValid();  // as a choice is in any copy
  EXPECT_EQ(network.ValueOf(4)->SetValue(TableOf({2}, {0.75, 0.25})), 0);
}

/// What a comparison by content doesn't see of a node: whose it is, its flags and results.
void ExpectSameNode(KVN_network& a, KVN_network& b, int handle) {
  SCOPED_TRACE(handle);
  ASSERT_TRUE(b.IsLive(handle));
  const KVN_node& original = *a.GetNode(handle);
  const KVN_node& copy = *b.GetNode(handle);
  EXPECT_EQ(copy.Handle(), handle);
  EXPECT_TRUE(copy.IsReady());
  EXPECT_NE(copy.Definition(), original.Definition());
  EXPECT_EQ(copy.GetNetwork(), &b);
  EXPECT_EQ(copy.Definition()->GetNetwork(), &b);
  EXPECT_EQ(copy.Value()->GetNetwork(), &b);
  EXPECT_EQ(copy.Value()->GetFlags(), original.Value()->GetFlags());
  EXPECT_EQ(copy.Value()->GetEvidence(), original.Value()->GetEvidence());
  EXPECT_TRUE(CellsNear(MatrixOf(b, handle), ItemsOf(MatrixOf(a, handle).GetItems()), 0.0));
  for (int layer : {kPlain, kCost}) {
    EXPECT_EQ(NamesOf(b, b.GetChildren(handle, layer)), NamesOf(a, a.GetChildren(handle, layer)));
  }
  EXPECT_TRUE(b.TableFits(handle));
}

TEST(NetworkCopy, TakesEverythingOver) {
  KVN_network source;
  MakeSource(source);
  KVN_network copy;
  EXPECT_EQ(copy.AddNode(KVN_TYPE_CPT, "stale"), 0);
  copy = source;
  EXPECT_TRUE(NetworksEqual(source, copy));
  EXPECT_EQ(copy.GetSize(), source.GetSize());
  EXPECT_EQ(copy.GetNumberOfTargets(), 1);
  EXPECT_EQ(copy.GetTemporalType(4), 2);
  EXPECT_FALSE(copy.IsLive(1));
  for (int handle = source.GetFirstNode(); handle >= 0; handle = source.GetNextNode(handle)) {
    ExpectSameNode(source, copy, handle);
  }
  // Look-ups and free slots go on as in the source.
  EXPECT_EQ(copy.FindNode("stale"), KVN_REFUSED);
  EXPECT_EQ(copy.FindNode("gain"), 6);
  EXPECT_EQ(copy.AddNode(KVN_TYPE_CPT, "hole"), 1);
}

TEST(NetworkCopy, LeavesBeliefsOfBothNetworksAlone) {
  KVN_network source;
  MakeSource(source);
  // Automatic updates would run inference, and any cascade would make these values stale.
  source.SetUpdateFlags(source.GetUpdateFlags() | KVN_UPDATE_AUTOMATIC);
  for (int handle : {2, 3, 4}) source.ValueOf(handle)->SetValueValid();
  const KVN_network copy(source);
  for (int handle : {2, 3, 4}) {
    EXPECT_TRUE(source.ValueOf(handle)->IsValueValid()) << handle;
    EXPECT_TRUE(copy.ValueOf(handle)->IsValueValid()) << handle;
  }
  EXPECT_EQ(source.ValueOf(0)->GetEvidence(), 2);
  EXPECT_EQ(source.GetUpdateFlags(), 3 | KVN_UPDATE_AUTOMATIC);
  EXPECT_EQ(source.GetChangeMask(), 463);
  EXPECT_EQ(copy.GetUpdateFlags(), 3 | KVN_UPDATE_AUTOMATIC);
}

TEST(NetworkCopy, TheCopyStandsAlone) {
  KVN_network copy;
  {
    KVN_network source;
    MakeSource(source);
    EXPECT_EQ(source.ValueOf(0)->ClearEvidence(), 0);
    source.ValueOf(3)->SetValueValid();
    EXPECT_EQ(copy.Assign(source, /*skipTemporal=*/1), 0);
  }
  EXPECT_EQ(copy.NotifyChange(0, KVN_CHANGE_NUMBERS), 0);
  EXPECT_FALSE(copy.ValueOf(3)->IsValueValid());
  EXPECT_EQ(copy.GetTemporalType(4), 0);
  EXPECT_EQ(copy.DefinitionOf(0)->AddOutcome("Fourth"), 0);
  EXPECT_EQ(copy.GetNode(0)->SetId("renamed"), 0);
  EXPECT_EQ(copy.FindNode("renamed"), 0);
  EXPECT_EQ(copy.DeleteNode(2), 0);
  for (int handle = copy.GetFirstNode(); handle >= 0; handle = copy.GetNextNode(handle)) {
    EXPECT_TRUE(copy.TableFits(handle)) << handle;
  }
  ExpectListsInStep(copy);
}

TEST(NetworkCopy, ANodeThatIsNotReadyIsDroppedLater) {
  KVN_network source;
  AddNodes(source, KVN_TYPE_CPT, {"a", "b"});
  AddNodes(source, 0, {"half"});
  KVN_network copy(source);
  EXPECT_EQ(copy.GetNumberOfNodes(), 3);
  EXPECT_EQ(copy.FindNode("half"), KVN_REFUSED);
  EXPECT_EQ(copy.CheckReadiness(/*deep=*/1), 0);
  EXPECT_EQ(copy.GetNumberOfNodes(), 2);
  EXPECT_EQ(copy.AddNode(KVN_TYPE_CPT, "half"), 2);
}

TEST(NetworkCopy, FailedAllocationLeavesNetworksThatWork) {
  KVN_network source;
  MakeSource(source);
  const int failures = FailEachAllocation([&source](int n) {
    KVN_network copy;
    bool failed = false;
    const int result = RunFailing(n, failed, [&] { return copy.Assign(source, 0); });
    EXPECT_TRUE(failed || result == 0);
    EXPECT_EQ(source.GetChangeMask(), 463);
    EXPECT_EQ(copy.GetChangeMask(), 463);
    (void)copy.Initialize(50, 50);
    EXPECT_EQ(copy.AddNode(KVN_TYPE_CPT, "a"), 0) << n;
    return failed;
  });
  EXPECT_GT(failures, 20);
  EXPECT_EQ(source.CheckReadiness(/*deep=*/1), 0);
  EXPECT_EQ(source.GetNumberOfNodes(), 6);
}

}  // namespace
