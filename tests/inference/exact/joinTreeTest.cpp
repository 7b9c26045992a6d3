// Clustering and its decomposition: posteriors, limits, size, and what the network keeps.

#include "inference/exact/joinTree.h"

#include <algorithm>
#include <map>
#include <random>

#include "foundation/resultCodes.h"
#include "inference/exact/clusterUpdate.h"
#include "inference/exact/relevanceGraph.h"
#include "network/network.h"
#include "network/updateAlgorithm.h"
#include "network/userProperties.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/oracle.h"
#include "tests/support/randomBayes.h"
#include "tests/support/sanitized.h"
#include "tests/support/smallStack.h"
#include "values/nodeValue.h"

namespace {

constexpr double kRounding = 1e-12;

void SetProperty(KVN_network& network, const char* key, const char* value) {
  ASSERT_EQ(network.UserProperties().AddProperty(key, value), 0);
}

/// The network of a seed, with evidence on most of them.
void FillCase(KVN_network& network, std::uint64_t seed) {
  RandomBayesOptions options;
  options.nodes = 2 + static_cast<int>(seed % 7);
  options.maxParents = 1 + static_cast<int>(seed % 4);
  options.maxOutcomes = options.nodes > 6 ? 3 : 4;
  options.gates = seed % 2 == 0;
  FillRandomBayes(network, seed, options);
  network.SetNoisyMaxRelevance(seed % 5 == 0);
  if (seed % 4 != 0) ObserveAtRandom(network, seed, 0.3, /*possible=*/true);
  if (seed % 3 == 0) SoftenAtRandom(network, seed, 0.3);
  if (seed % 7 == 0) AimAtRandom(network, seed, 0.4);
}

struct Method {
  const char* name;
  int algorithm;
  std::map<const char*, const char*> properties;
};
// Of the decompositions, limits so small that groups are halved down to single targets.
const Method kMethods[] = {
    {"plain", KVN_ALG_CLUSTERING, {}},
    {"with sepsets", KVN_ALG_SEPSET_JOIN_TREE, {}},
    {"with effort", KVN_ALG_CLUSTERING, {{"KVN_CLUSTERING_EFFORT", "1"}}},
    {"groups of two", KVN_ALG_RELEVANCE_DECOMPOSITION, {{"KVN_REL_DECOMP_THRESHOLD", "2"}}},
    {"halved groups", KVN_ALG_RELEVANCE_DECOMPOSITION, {{"KVN_REL_DECOMP_THRESHOLD3", "1"}}},
    {"halved as whole", KVN_ALG_RELEVANCE_DECOMPOSITION_2, {{"KVN_REL_DECOMP_THRESHOLD2", "8"}}},
};

std::vector<std::vector<double>> Posteriors(KVN_network& network) {
  std::vector<std::vector<double>> all(network.GetSize());
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    KVN_Dmatrix* matrix = nullptr;
    if (!network.ValueOf(h)->IsValueValid() || network.ValueOf(h)->GetValue(matrix) != 0) continue;
    all[h].assign(matrix->GetData(), matrix->GetData() + matrix->GetSize());
  }
  return all;
}

}  // namespace

TEST(JoinTree, EveryMethodAgreesWithEnumeration) {
  for (std::uint64_t seed = 0; seed < FewerIfSanitized(1500u); ++seed) {
    for (const Method& method : kMethods) {
      SCOPED_TRACE(testing::Message() << method.name << ", seed " << seed);
      KVN_network network;
      FillCase(network, seed);
      const OracleResult expected = EnumeratePosteriors(network);
      if (!expected.isPossible) continue;  // a zero in the soft evidence
      const int targets = network.GetNumberOfTargets();
      network.SetDefaultBNAlgorithm(method.algorithm);
      for (const auto& [key, value] : method.properties) SetProperty(network, key, value);
      ASSERT_EQ(network.UpdateBeliefs(), 0);
      ASSERT_TRUE(PosteriorsNear(network, expected, kRounding));
      ASSERT_EQ(network.GetNumberOfTargets(), targets);
    }
  }
}

/// Runs one tree on the part of a dense network, whose cliques are far larger than what is stored.
std::vector<std::vector<double>> RunTree(std::uint64_t seed, JoinTreeOptions options,
                                         std::int64_t& largest) {
  RandomBayesOptions dense;
  dense.nodes = 18;
  dense.maxParents = 5;
  dense.maxOutcomes = 4;
  KVN_network network;
  FillRandomBayes(network, seed, dense);
  ObserveAtRandom(network, seed, 0.1, /*possible=*/true);
  int result = 0;
  auto parts = ReduceNetwork(network, /*absorbRoots=*/true, /*useDeterminism=*/true, result);
  JoinTreeStatistics statistics;
  JoinTree::statistics = &statistics;
  for (int i = 0; parts != nullptr && i < parts->GetCount(); ++i) {
    if ((*parts)[i].GetSize() == 1) continue;
    EXPECT_TRUE(JoinTree((*parts)[i], options).Run(nullptr, 0));
  }
  JoinTree::statistics = nullptr;
  largest = std::max(largest, statistics.largestCells);
  return Posteriors(network);
}

TEST(JoinTree, BlocksGiveTheBitsOfStoredPotentials) {
  std::int64_t largest = 0;
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    for (bool effort : {false, true}) {
      SCOPED_TRACE(testing::Message() << "seed " << seed << " effort " << effort);
      EXPECT_EQ(RunTree(seed, {.effort = effort, .storeAll = false}, largest),
                RunTree(seed, {.effort = effort, .storeAll = true}, largest));
    }
  }
  EXPECT_GT(largest, 4 * 4096);  // or no clique was formed in blocks
}

TEST(JoinTree, EffortChangesNoMoreThanRounding) {
  std::int64_t largest = 0;
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    SCOPED_TRACE(seed);
    const auto plain = RunTree(seed, {.effort = false, .storeAll = false}, largest);
    const auto effort = RunTree(seed, {.effort = true, .storeAll = false}, largest);
    ASSERT_EQ(plain.size(), effort.size());
    for (std::size_t h = 0; h < plain.size(); ++h) {
      ASSERT_EQ(plain[h].size(), effort[h].size());
      for (std::size_t k = 0; k < plain[h].size(); ++k) {
        ASSERT_NEAR(plain[h][k], effort[h][k], kRounding);
      }
    }
  }
}

/// A root with `leaves` observed binary children. Each pair of children is as likely under the one
/// outcome of the root as under the other, so the root keeps its prior.
TEST(JoinTree, ThousandsOfUnlikelyFindingsDontUnderflow) {
  for (const char* effort : {"0", "1"}) {
    for (int leaves : {1000, 1001}) {
      SCOPED_TRACE(testing::Message() << leaves << " effort " << effort);
      KVN_network network;
      network.SetChangeMask(0);
      SetProperty(network, "KVN_CLUSTERING_EFFORT", effort);
      const int root = AddCpt(network, "root", 2, {}, {0.3, 0.7});
      for (int i = 0; i < leaves; ++i) {
        const double a = i % 2 == 0 ? 1e-5 : 3e-5;
        const double b = i % 2 == 0 ? 3e-5 : 1e-5;
        const int leaf = AddCpt(network, nullptr, 2, {root}, {a, 1 - a, b, 1 - b});
        ASSERT_EQ(network.ValueOf(leaf)->SetEvidence(0), 0);
      }
      ASSERT_EQ(network.UpdateBeliefs(), 0);
      // An odd last leaf counts 1e-5 : 3e-5, so 0.3 * 1 : 0.7 * 3.
      const double expected = leaves % 2 == 0 ? 0.3 : 0.3 / (0.3 + 2.1);
      EXPECT_NEAR(Posteriors(network)[root].at(0), expected, 1e-9);
    }
  }
}

TEST(JoinTree, ContradictionLeavesValuesInvalid) {
  for (const char* effort : {"0", "1"}) {
    KVN_network network;
    network.SetUpdateFlags(0);  // the hooks would refuse the evidence
    SetProperty(network, "KVN_CLUSTERING_EFFORT", effort);
    // The two children say that their parents differ, and that they are equal: nothing that one
    // table alone could tell.
    const int a = AddCpt(network, "a", 2, {}, {0.5, 0.5});
    const int b = AddCpt(network, "b", 2, {}, {0.5, 0.5});
    const int differ = AddCpt(network, "differ", 2, {a, b}, {0, 1, 1, 0, 1, 0, 0, 1});
    const int equal = AddCpt(network, "equal", 2, {a, b}, {1, 0, 0, 1, 0, 1, 1, 0});
    ASSERT_EQ(network.ValueOf(differ)->SetEvidence(0), 0);
    ASSERT_EQ(network.ValueOf(equal)->SetEvidence(0), 0);
    ASSERT_EQ(network.UpdateBeliefs(), 0);
    EXPECT_FALSE(network.ValueOf(a)->IsValueValid());
    EXPECT_FALSE(network.ValueOf(b)->IsValueValid());
  }
}

/// `count` roots and a child for each pair of them, observed or not. One tree for all nodes would
/// need a clique of all roots.
void AddPairs(KVN_network& network, int count, bool observe) {
  network.SetChangeMask(0);
  std::vector<int> roots;
  for (int i = 0; i < count; ++i) {
    roots.push_back(AddCpt(network, nullptr, 2, {}, {0.25, 0.75}));
  }
  for (int i = 0; i < count; ++i) {
    for (int j = i + 1; j < count; ++j) {
      const int child = AddCpt(network, nullptr, 2, {roots[i], roots[j]},
                               {0.1, 0.9, 0.8, 0.2, 0.8, 0.2, 0.1, 0.9});
      if (!observe) continue;
      ASSERT_EQ(network.ValueOf(child)->SetEvidence(0), 0);
    }
  }
}

/// Alone, each target needs a few nodes only, as the rest is barren.
TEST(JoinTree, DecompositionAnswersWhatOneTreeCannotHold) {
  KVN_network network;
  AddPairs(network, 40, /*observe=*/false);
  SetProperty(network, "KVN_REL_DECOMP_DISABLE_FALLBACK", "");
  EXPECT_EQ(network.UpdateBeliefs(), KVN_NO_MEMORY);
  ASSERT_EQ(network.UserProperties().DeleteProperty(0), 0);
  SetProperty(network, "KVN_REL_DECOMP_THRESHOLD", "8");
  ASSERT_EQ(network.UpdateBeliefs(), 0);
  const auto posteriors = Posteriors(network);
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    // Parents are equal with 1/16 + 9/16, so a child is at 0 with 10/16 * 0.1 + 6/16 * 0.8.
    const double expected = network.GetNumberOfParents(h) == 0 ? 0.25 : 0.3625;
    ASSERT_NEAR(posteriors[h].at(0), expected, kRounding) << h;
  }
}

TEST(JoinTree, GivesUpWhatNoGroupCanHold) {
  for (int targets : {0, 1}) {
    KVN_network network;
    AddPairs(network, 34, /*observe=*/true);
    for (int i = 0; i < targets; ++i) ASSERT_EQ(network.SetTarget(i), 0);
    EXPECT_EQ(network.UpdateBeliefs(), KVN_NO_MEMORY);
    EXPECT_EQ(network.GetNumberOfTargets(), targets);
    EXPECT_FALSE(network.ValueOf(0)->IsValueValid());
  }
}

/// A refusal isn't answered by smaller groups, nor does it pass for a lack of memory.
TEST(JoinTree, PassesOnWhatTheReductionRefuses) {
  KVN_network network;
  (void)AddCpt(network, "A", 2, {}, {0.5, 0.5});
  ASSERT_GE(network.AddNode(KVN_TYPE_NONE, "Nothing"), 0);
  EXPECT_EQ(ClusteringUpdate(network), KVN_REFUSED);
  EXPECT_EQ(DecomposedUpdate(network), KVN_REFUSED);
  EXPECT_EQ(DecomposedUpdateWhole(network), KVN_REFUSED);
}

TEST(JoinTree, RefusesMoreNodesThanItIsMadeFor) {
  KVN_network network;
  network.SetChangeMask(0);
  int last = AddCpt(network, nullptr, 2, {}, {0.5, 0.5});
  for (int count : {65535, 65536}) {
    while (network.GetNumberOfNodes() < count) {
      last = AddCpt(network, nullptr, 2, {last}, {0.8, 0.2, 0.3, 0.7});
    }
    int result = 0;
    auto parts = ReduceNetwork(network, /*absorbRoots=*/true, /*useDeterminism=*/true, result);
    ASSERT_EQ(result, 0);
    ASSERT_EQ((*parts)[0].GetSize(), count);
    EXPECT_EQ(JoinTree((*parts)[0]).Run(nullptr, 0), count == 65535);
  }
}

TEST(JoinTree, LargeTreesAnswerOnASmallStack) {
  for (int shape = 0; shape < 3; ++shape) {  // chain, random tree, star
    const int count = FewerIfSanitized(shape == 0 ? 50000 : 20000);
    RunInSmallStack([&] {
      KVN_network network;
      network.SetChangeMask(0);
      std::mt19937 random(7);
      for (int i = 0; i < count; ++i) {
        const int above = shape == 0   ? i - 1
                          : shape == 1 ? static_cast<int>(random() % (i + 1))
                                       : 0;
        if (i == 0) {
          AddCpt(network, nullptr, 2, {}, {0.5, 0.5});
        } else {
          AddCpt(network, nullptr, 2, {std::min(above, i - 1)}, {0.8, 0.2, 0.3, 0.7});
        }
      }
      // With all hooks: a finding must not cost time in proportion to the network.
      network.SetChangeMask(463);
      for (int i = 0; i < count; i += 10) {
        const int handle = i + static_cast<int>(random() % 10);
        ASSERT_EQ(network.ValueOf(handle)->SetEvidence(0), 0);
      }
      ASSERT_EQ(network.UpdateBeliefs(), 0);
      for (int i = 0; i < count; ++i) ASSERT_TRUE(network.ValueOf(i)->IsValueValid());
    });
  }
}
