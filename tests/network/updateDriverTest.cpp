// The choice of the algorithm, watched from tables of this program's own: it is linked from the
// model's objects without the engine's algorithms and formats.

#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/node.h"
#include "network/updateAlgorithm.h"
#include "tests/support/builders.h"
#include "tests/support/networkBuilder.h"

namespace {

// What the last algorithm saw.
struct Call {
  std::string name;
  std::vector<int> softTargets;           // parents of the helpers, in handle order
  std::vector<std::vector<double>> soft;  // tables of the helpers
  std::vector<int> softEvidence;          // outcome observed at each
  int nodeCount = 0;
};
Call theCall;
int theResult = 0;  // what the next algorithm answers

int Run(const char* name, KVN_network& network) {
  theCall = Call();
  theCall.name = name;
  theCall.nodeCount = network.GetNumberOfNodes();
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    if (network.GetNode(h)->GetId()[0] != '@') continue;
    theCall.softTargets.push_back(network.GetParents(h)[0]);
    theCall.soft.push_back(ItemsOf(TableOfNode(network, h).GetItems()));
    theCall.softEvidence.push_back(network.ValueOf(h)->GetEvidence());
  }
  return theResult;
}

int RunClustering(KVN_network& network) { return Run("clustering", network); }
int RunPolytree(KVN_network& network) { return Run("polytree", network); }
int RunPolicy(KVN_network& network) { return Run("policy", network); }
int RunSearch(KVN_network& network) { return Run("search", network); }

}  // namespace

const KVN_updateAlgorithm theUpdateAlgorithms[] = {
    {KVN_ALG_CLUSTERING, RunClustering},
    {KVN_ALG_POLYTREE, RunPolytree},
    {-1, nullptr},
};
const KVN_specialUpdates theSpecialUpdates = {RunPolicy, RunSearch, nullptr,
                                              nullptr,   nullptr,   nullptr};

TEST(UpdateDriver, RunsTheRowOfTheCodeAndNothingInItsPlace) {
  const struct {
    int code, answer, result;
    const char* run;
  } kCases[] = {
      {KVN_ALG_CLUSTERING, 0, 0, "clustering"},
      {KVN_ALG_CLUSTERING, KVN_NO_MEMORY, KVN_NO_MEMORY, "clustering"},
      {KVN_ALG_POLYTREE, -1, -1, "polytree"},
      {KVN_ALG_SEPSET_JOIN_TREE, 0, KVN_REFUSED, ""},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.code);
    KVN_network network;
    AddCpt(network, "A", 2, {}, {0.5, 0.5});
    network.SetDefaultBNAlgorithm(c.code);
    theCall = Call();
    theResult = c.answer;
    EXPECT_EQ(network.UpdateBeliefs(), c.result);
    EXPECT_EQ(theCall.name, c.run);
  }
  // No node at all is a discrete network.
  KVN_network empty;
  theResult = 0;
  EXPECT_EQ(empty.UpdateBeliefs(), 0);
  EXPECT_EQ(theCall.name, "clustering");
}

TEST(UpdateDriver, SoftEvidenceStandsAsObservedHelpersForTheUpdateOnly) {
  KVN_network network;
  const int a = AddCpt(network, "A", 2, {}, {0.5, 0.5});
  const int b = AddCpt(network, "B", 3, {a}, {0.5, 0.5, 0, 0.1, 0.9, 0});
  const int gate = AddNodeBelow(network, KVN_TYPE_DEMORGAN, "G", 0, {});
  ASSERT_EQ(network.ValueOf(b)->SetVirtualEvidence({0.5, 0.25, 0.25}), 0);
  ASSERT_EQ(network.ValueOf(a)->SetVirtualEvidence({1, 3}), 0);
  // Nothing can depend on such a gate by a table: its soft evidence is left out.
  ASSERT_EQ(network.ValueOf(gate)->SetVirtualEvidence({0.5, 0.5}), 0);
  for (int answer : {0, KVN_NO_MEMORY}) {
    theResult = answer;
    network.ValueOf(a)->SetValueValid();
    EXPECT_EQ(network.UpdateBeliefs(), answer);
    EXPECT_EQ(theCall.softTargets, (std::vector<int>{a, b}));
    // A: (1, 3) scaled to (0.25, 0.75), each with its complement.
    EXPECT_EQ(theCall.soft, (std::vector<std::vector<double>>{{0.25, 0.75, 0.75, 0.25},
                                                              {0.5, 0.5, 0.25, 0.75, 0.25, 0.75}}));
    EXPECT_EQ(theCall.softEvidence, (std::vector<int>{0, 0}));
    EXPECT_EQ(theCall.nodeCount, 5);
    EXPECT_EQ(network.GetNumberOfNodes(), 3);
    EXPECT_EQ(network.GetNumberOfChildren(b), 0);
    EXPECT_TRUE(network.ValueOf(a)->IsValueValid());  // the helpers are no change
    EXPECT_EQ(network.GetUpdateFlags(), 3);
  }
}

TEST(UpdateDriver, AutomaticUpdateRunsInsideEachHook) {
  KVN_network network;
  const int a = AddCpt(network, "A", 2, {}, {0.5, 0.5});
  network.SetUpdateFlags(network.GetUpdateFlags() | KVN_UPDATE_AUTOMATIC);
  theResult = KVN_REFUSED;  // an update that fails is no reason to refuse evidence
  const auto runs = [&](int result) {
    EXPECT_EQ(result, 0);
    const bool ran = theCall.name == "clustering";
    theCall = Call();
    return ran;
  };
  theCall = Call();
  EXPECT_TRUE(runs(network.ValueOf(a)->SetEvidence(1)));
  EXPECT_TRUE(runs(network.ValueOf(a)->ClearEvidence()));
  EXPECT_TRUE(runs(network.ValueOf(a)->SetVirtualEvidence({0.5, 0.5})));
  EXPECT_TRUE(runs(network.ValueOf(a)->ClearEvidence()));
  EXPECT_TRUE(runs(network.NotifyChange(a, KVN_CHANGE_NO_CASCADE)));
  network.SetChangeMask(0);
  EXPECT_FALSE(runs(network.NotifyChange(a, KVN_CHANGE_NUMBERS)));
}

TEST(UpdateDriver, ATableOfAnotherShapeStopsTheUpdate) {
  KVN_network network;
  const int a = AddCpt(network, "A", 2, {}, {0.5, 0.5});
  const int b = AddCpt(network, "B", 3, {a}, {0.5, 0.5, 0, 0.1, 0.9, 0});
  ASSERT_EQ(network.ValueOf(a)->SetVirtualEvidence({0.5, 0.5}), 0);
  ASSERT_EQ(TableOfNode(network, b).RemoveDimension(0), 0);
  theCall = Call();
  EXPECT_EQ(network.UpdateBeliefs(), KVN_REFUSED);
  EXPECT_EQ(theCall.name, "");
}

TEST(UpdateDriver, DecisionsAreEvaluatedFromCleanValues) {
  KVN_network network;
  const int d = AddNodeBelow(network, KVN_TYPE_LIST, "D", 3, {});
  const int a = AddCpt(network, "A", 2, {}, {0.5, 0.5});
  const int u = AddNodeBelow(network, KVN_TYPE_TABLE, "U", 0, {d});
  for (int algorithm : {0, 1}) {
    SCOPED_TRACE(algorithm);
    ASSERT_EQ(network.ValueOf(u)->AddIndexingParent(d), 0);
    ASSERT_EQ(network.ValueOf(a)->SetEvidence(1), 0);
    ASSERT_EQ(network.ValueOf(d)->SetValue(TableOf({2, 3}, {1, 2, 3, 4, 5, 6})), 0);
    network.SetDefaultIDAlgorithm(algorithm);
    theResult = algorithm == 0 ? 0 : KVN_NO_MEMORY;
    EXPECT_EQ(network.UpdateBeliefs(), theResult);
    EXPECT_EQ(theCall.name, algorithm == 0 ? "policy" : "search");
    EXPECT_EQ(network.ValueOf(u)->GetIndexingParents().GetNumItems(), 0);
    EXPECT_EQ(MatrixOf(network, u).GetSize(), 1);
    EXPECT_EQ(ItemsOf(MatrixOf(network, d).GetDimensions()), (std::vector<int>{3}));
    // Even evidence loses its mark until it is evaluated again.
    EXPECT_EQ(network.ValueOf(a)->GetFlags(), unsigned{KVN_VALUE_EVIDENCE});
  }
}
