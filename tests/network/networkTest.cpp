#include "network/network.h"

#include <optional>
#include <random>

#include "foundation/resultCodes.h"
#include "network/nodeInfo.h"
#include "network/submodelHandler.h"
#include "network/updateAlgorithm.h"
#include "tests/network/networkTools.h"
#include "tests/support/failingAllocation.h"

namespace {

TEST(Network, TheTableGrowsByItsStep) {
  KVN_network network;
  ASSERT_EQ(network.Initialize(2, 3), 0);
  const int sizes[] = {2, 2, 5, 5, 5, 8};
  for (int i = 0; i < 6; i++) {
    EXPECT_EQ(network.AddNode(KVN_TYPE_CPT, nullptr), i);
    EXPECT_EQ(network.GetSize(), sizes[i]);
  }
  EXPECT_EQ(network.Initialize(0, -1), 0);
  EXPECT_EQ(network.GetSize(), 50);
  EXPECT_EQ(network.GetNumberOfNodes(), 0);
  network.CleanUp(/*deep=*/1);
  EXPECT_EQ(network.GetSize(), 0);
  network.CleanUp(/*deep=*/1);
}

TEST(Network, IllegalIdentifierDoesNotFailANewNode) {
  KVN_network network;
  const int handle = network.AddNode(KVN_TYPE_CPT, "1 a");
  ASSERT_EQ(handle, 0);
  EXPECT_STREQ(network.GetNode(handle)->GetId(), "Node0");
  EXPECT_STREQ(network.GetNode(handle)->Info().Header().GetName(), "1 a");
  EXPECT_STREQ(GetLastErrorMessage(), "Illegal identifier");
  // A generated identifier counts on while it is in use.
  EXPECT_EQ(network.AddNode(KVN_TYPE_CPT, "Node2"), 1);
  EXPECT_STREQ(network.GetNode(network.AddNode(KVN_TYPE_CPT, nullptr))->GetId(), "Node3");
  EXPECT_STREQ(network.GetNode(2)->Info().Header().GetName(), "Node3");
}

TEST(Network, NodesAndSubmodelsShareOneNamespace) {
  KVN_network network;
  EXPECT_EQ(network.AddNode(KVN_TYPE_CPT, "a"), 0);
  EXPECT_GT(network.Submodels().Create(KVN_ROOT_SUBMODEL, "group"), 0);
  for (const char* used : {"a", "group", "Unnamed"}) {
    EXPECT_EQ(network.IsIdentifierUsed(used), 1) << used;
    EXPECT_EQ(network.AddNode(KVN_TYPE_CPT, used), KVN_REFUSED) << used;
  }
  EXPECT_EQ(network.IsIdentifierUsed("a", /*exceptHandle=*/0), 0);
  EXPECT_EQ(network.IsIdentifierUsed("A"), 0);
  EXPECT_EQ(network.IsIdentifierUsed(nullptr), 0);
  // Helper nodes may share a name, and are found by it, the lowest first.
  EXPECT_EQ(network.AddNode(KVN_TYPE_CPT, "@"), 1);
  EXPECT_EQ(network.AddNode(KVN_TYPE_CPT, "@"), 2);
  EXPECT_EQ(network.FindNode("@"), 1);
  EXPECT_EQ(network.DeleteNode(1), 0);
  EXPECT_EQ(network.FindNode("@"), 2);
}

TEST(Network, KindThatCanNotBeMadeIsToldAndLeftOut) {
  KVN_network network;
  const int before = MessageCount();
  const int handle = network.AddNode(/*definitionType=*/3, "a");
  EXPECT_EQ(handle, 0);
  EXPECT_EQ(MessageCount(), before + 1);
  EXPECT_EQ(KVN_errorLog().GetCode(before), KVN_REFUSED);
  EXPECT_EQ(network.DefinitionOf(handle), nullptr);
  EXPECT_EQ(network.AddNode(KVN_TYPE_CPT, "b"), 1);
  EXPECT_EQ(network.CheckReadiness(/*deep=*/1), 0);
  EXPECT_EQ(network.FindNode("a"), KVN_REFUSED);
  EXPECT_EQ(network.FindNode("b"), 1);
}

TEST(Network, TellsTheFirstInconsistentNode) {
  KVN_network network;
  AddNodes(network, KVN_TYPE_CPT, {"good", "bad", "worse"});
  EXPECT_EQ(network.CheckConsistency(/*deep=*/1), 0);
  for (int node : {1, 2}) {
    EXPECT_EQ(network.DefinitionOf(node)->SetDefinition(DoublesOf({0.5, 0.2})), 0);
  }
  const int before = MessageCount();
  EXPECT_EQ(network.CheckConsistency(/*deep=*/1), KVN_NOT_CONSISTENT);
  EXPECT_FALSE(network.IsConsistent());
  EXPECT_EQ(MessageCount(), before + 1);
  EXPECT_STREQ(GetLastErrorMessage(),
               "ERROR: Node [bad] is not consistent. Inference may not be correct");
}

TEST(Network, CountsTargets) {
  KVN_network network;
  AddNodes(network, KVN_TYPE_CPT, {"a", "b", "c"});
  for (int node : {0, 1, 2}) EXPECT_EQ(network.SetTarget(node), 0);
  EXPECT_EQ(network.SetTarget(1), KVN_REFUSED);
  EXPECT_EQ(network.UnSetTarget(1), 0);
  EXPECT_EQ(network.UnSetTarget(1), KVN_REFUSED);
  EXPECT_EQ(network.DeleteNode(0), 0);
  EXPECT_EQ(network.IsTarget(0), KVN_REFUSED);
  EXPECT_EQ(network.GetNumberOfTargets(), 1);
  EXPECT_EQ(network.AddNode(KVN_TYPE_CPT, "again"), 0);
  EXPECT_EQ(network.IsTarget(0), 0);
  EXPECT_EQ(network.ClearAllTargets(), 0);
  EXPECT_EQ(network.GetNumberOfTargets(), 0);
}

TEST(Network, SettingsKeepTheirRanges) {
  KVN_network network;
  for (int code : {12, -1, 13}) network.SetDefaultBNAlgorithm(code);
  for (int code : {13, 12, 17}) network.SetDefaultHybridAlgorithm(code);
  for (int code : {1, 2}) network.SetDefaultIDAlgorithm(code);
  for (int mode : {3, 4, -1}) network.SetShowAs(mode);
  EXPECT_EQ(network.GetDefaultBNAlgorithm(), KVN_ALG_RELEVANCE_DECOMPOSITION_2);
  EXPECT_EQ(network.GetDefaultHybridAlgorithm(), 13);
  EXPECT_EQ(network.GetDefaultIDAlgorithm(), 1);
  EXPECT_EQ(network.GetShowAs(), 3);
  EXPECT_EQ(network.SetSolverSteps(0), KVN_REFUSED);
  EpisParameters epis;
  epis.numstates2 = epis.numstates1;
  EXPECT_EQ(network.SetHybridParameters(epis), KVN_REFUSED);
  EXPECT_EQ(network.GetEpisParams().numstates2, 8);
}

TEST(Network, SolverParametersAreTested) {
  const struct {
    const char* name;
    KVN_solverParameters parameters;
    bool good;
  } cases[] = {
      {"defaults", {}, true},
      {"bounds of d1", {0.5, 0.1, 0.2, 1.0, 1, 1, 1, 0}, true},
      {"d1 too low", {0.49, 0.001, 0.99, 0.1, 1, 10, 20, 0}, false},
      {"d1 too high", {0.991, 0.001, 0.99, 0.1, 1, 10, 20, 0}, false},
      {"d2 equals d3", {0.8, 0.2, 0.2, 0.1, 1, 10, 20, 0}, false},
      {"d2 zero", {0.8, 0.0, 0.2, 0.1, 1, 10, 20, 0}, false},
      {"d4 zero", {0.8, 0.1, 0.2, 0.0, 1, 10, 20, 0}, false},
      {"i1 zero", {0.8, 0.1, 0.2, 0.1, 0, 10, 20, 0}, false},
      {"i3 below i2", {0.8, 0.1, 0.2, 0.1, 1, 10, 9, 0}, false},
  };
  for (const auto& c : cases) {
    KVN_network network;
    EXPECT_EQ(network.SetSolverParameters(c.parameters), c.good ? 0 : int{KVN_REFUSED}) << c.name;
  }
}

/// The documented look-ups and the rule for free slots, by scans over a plain table.
class ReferenceTable {
 public:
  int FreeSlot() {
    const size_t live = static_cast<size_t>(CountLive());
    if (live == slots.size()) slots.resize(slots.size() + 50);
    if (!slots[live]) return static_cast<int>(live);
    for (size_t i = 0; i < slots.size(); i++) {
      if (!slots[i]) return static_cast<int>(i);
    }
    return KVN_REFUSED;
  }
  int Find(const std::string& id) const {
    for (size_t i = 0; i < slots.size(); i++) {
      if (slots[i] == id) return static_cast<int>(i);
    }
    return KVN_REFUSED;
  }
  int CountLive() const {
    int live = 0;
    for (const auto& slot : slots) live += slot ? 1 : 0;
    return live;
  }
  bool Refuses(const std::string& id, int except) const {
    if (id[0] == '@') return false;
    for (size_t i = 0; i < slots.size(); i++) {
      if (slots[i] == id && static_cast<int>(i) != except) return true;
    }
    return false;
  }

  std::vector<std::optional<std::string>> slots = std::vector<std::optional<std::string>>(50);
};

TEST(Network, HandlesAndLookUpsAreThoseOfPlainScans) {
  for (unsigned seed = 1; seed <= 4; seed++) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    KVN_network network;
    ReferenceTable reference;
    for (int step = 0; step < 1500; step++) {
      std::string id = "n" + std::to_string(random() % 150);
      if (random() % 8 == 0) id = "@" + std::to_string(random() % 3);
      const int handle = static_cast<int>(random() % reference.slots.size());
      const bool live = reference.slots[handle].has_value();
      switch (random() % 5) {
        case 0:
        case 1: {
          const bool refused = reference.Refuses(id, -1);
          const int expected = refused ? int{KVN_REFUSED} : reference.FreeSlot();
          ASSERT_EQ(network.AddNode(KVN_TYPE_CPT, id.c_str()), expected) << step;
          if (!refused) reference.slots[static_cast<size_t>(expected)] = id;
          break;
        }
        case 2:
          ASSERT_EQ(network.DeleteNode(handle), live ? 0 : int{KVN_REFUSED}) << step;
          reference.slots[handle].reset();
          break;
        default: {
          if (!live) break;
          const bool refused = reference.Refuses(id, handle);
          ASSERT_EQ(network.GetNode(handle)->SetId(id.c_str()), refused ? int{KVN_ILLEGAL_ID} : 0)
              << step;
          if (!refused) reference.slots[handle] = id;
        }
      }
      ASSERT_EQ(network.FindNode(id.c_str()), reference.Find(id)) << step << " " << id;
      ASSERT_EQ(network.GetNumberOfNodes(), reference.CountLive()) << step;
      ASSERT_EQ(network.GetSize(), static_cast<int>(reference.slots.size())) << step;
    }
    KVN_intArray all;
    EXPECT_EQ(network.GetAllNodes(all), 0);
    size_t found = 0;
    for (size_t i = 0; i < reference.slots.size(); i++) {
      if (!reference.slots[i]) continue;
      EXPECT_EQ(all[static_cast<int>(found++)], static_cast<int>(i));
    }
    EXPECT_EQ(network.GetNextNode(all[0] == 0 ? 0 : 1), all[1]);
    EXPECT_EQ(network.GetNextNode(network.GetLastNode()), KVN_REFUSED);
    EXPECT_EQ(network.GetNextNode(-1), KVN_REFUSED);
  }
}

TEST(Network, AddNodeFailsCleanlyWithoutMemory) {
  const int failures = FailEachAllocation([](int n) {
    KVN_network network;
    EXPECT_EQ(network.Initialize(1, 1), 0);
    EXPECT_EQ(network.AddNode(KVN_TYPE_CPT, "a"), 0);
    bool failed = false;
    const int handle = RunFailing(n, failed, [&] { return network.AddNode(KVN_TYPE_CPT, "b"); });
    // Either no node, or one that the next check takes away again, or a good one.
    EXPECT_EQ(network.CheckReadiness(/*deep=*/1), 0);
    EXPECT_EQ(network.GetNumberOfNodes(), network.IsLive(handle) ? 2 : 1) << n;
    EXPECT_EQ(network.FindNode("a"), 0) << n;
    EXPECT_TRUE(failed || network.FindNode("b") == 1);
    // What was missing can be made up for.
    const bool made = network.FindNode("b") == 1 || network.AddNode(KVN_TYPE_CPT, "b") == 1;
    EXPECT_TRUE(made) << n;
    return failed;
  });
  EXPECT_GT(failures, 5);
}

TEST(Network, MadeWithoutMemoryItTakesNothingUntilInitialized) {
  const KVN_network source;
  const int failures = FailEachAllocation([&source](int n) {
    std::optional<KVN_network> network;
    bool failed;
    {
      FailingAllocation failing(n);
      network.emplace();
      failed = failing.HasFailed();
    }
    EXPECT_EQ(network->IsReady(), !failed) << n;
    EXPECT_LT(network->ReadFile("no such file.kvn"), 0);
    (void)network->AddNode(KVN_TYPE_CPT, "a");
    (void)network->CheckReadiness(/*deep=*/1);
    (void)network->Assign(source, /*skipTemporal=*/0);
    EXPECT_EQ(network->Initialize(3, 3), 0);
    EXPECT_EQ(network->AddNode(KVN_TYPE_CPT, "a"), 0);
    EXPECT_STREQ(network->Header().GetId(), "Unnamed");
    return failed;
  });
  EXPECT_GT(failures, 5);
  KVN_network cleaned;
  cleaned.CleanUp(/*deep=*/1);
  EXPECT_EQ(cleaned.WriteFile("no such folder/x.kvn"), KVN_NOT_READY);
  KVN_network target;
  EXPECT_EQ(target.Assign(cleaned, /*skipTemporal=*/0), KVN_NOT_READY);
  EXPECT_STREQ(target.Header().GetId(), "Unnamed");
}

}  // namespace
