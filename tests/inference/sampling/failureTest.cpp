// What the samplers do with what they can't compute: the documented failure, and in bounded time.

#include <limits>

#include "foundation/resultCodes.h"
#include "inference/sampling/samplingQuality.h"
#include "tests/inference/sampling/samplers.h"
#include "tests/support/builders.h"
#include "tests/support/failingAllocation.h"
#include "tests/support/logWatch.h"
#include "tests/support/networkBuilder.h"

namespace {

constexpr const char* kMessage = "No useful samples have been generated for some of nodes.";
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Two parts, each a node with an observed child; the hooks are off, so that nothing stops evidence
/// that the tables rule out. Handles 0 and 1 are the first part, 2 and 3 the second.
void BuildTwoParts(KVN_network& network) {
  network.SetUpdateFlags(0);
  for (const char* id : {"A", "C"}) {
    const int above = AddCpt(network, id, 2, {}, {0.25, 0.75});
    const int below = AddCpt(network, nullptr, 3, {above}, {0.5, 0.5, 0.0, 0.25, 0.75, 0.0});
    EXPECT_EQ(network.ValueOf(below)->SetEvidence(0), 0);
  }
}

void MakeImpossible(KVN_network& network, int observed) {
  EXPECT_EQ(network.ValueOf(observed)->SetEvidence(2), 0);
}

std::vector<SamplerName> AllSamplers() {
  std::vector<SamplerName> all(std::begin(kForwardSamplers), std::end(kForwardSamplers));
  all.insert(all.end(), std::begin(kAdaptiveSamplers), std::end(kAdaptiveSamplers));
  return all;
}

TEST(ForwardSamplers, AnswerWithTheResultOfTheLastPart) {
  for (const SamplerName& sampler : kForwardSamplers) {
    for (int bad : {0, 1}) {
      SCOPED_TRACE(std::string(sampler.name) + ", part " + std::to_string(bad));
      KVN_network network;
      BuildTwoParts(network);
      MakeImpossible(network, 2 * bad + 1);
      for (int h : {0, 2}) network.ValueOf(h)->SetValueValid();  // stale
      const LogWatch log;
      EXPECT_EQ(RunSampler(network, sampler.code, 100, 1), bad == 0 ? 0 : KVN_NO_USEFUL_SAMPLES);
      EXPECT_EQ(log.Texts(), std::vector<std::string>{kMessage});
      EXPECT_FALSE(network.ValueOf(2 * bad)->IsValueValid());
      EXPECT_TRUE(network.ValueOf(2 - 2 * bad)->IsValueValid());
      EXPECT_TRUE(network.ValueOf(2 * bad + 1)->IsValueValid()) << "evidence stays valid";
    }
  }
}

TEST(AdaptiveSamplers, StopAtThePartThatFails) {
  for (const SamplerName& sampler : kAdaptiveSamplers) {
    for (int bad : {0, 1}) {
      SCOPED_TRACE(std::string(sampler.name) + ", part " + std::to_string(bad));
      KVN_network network;
      BuildTwoParts(network);
      MakeImpossible(network, 2 * bad + 1);
      MatrixOf(network, 0)[0] = 7.0;
      MatrixOf(network, 2)[0] = 7.0;
      const LogWatch log;
      EXPECT_EQ(RunSampler(network, sampler.code, 100, 1), KVN_NO_USEFUL_SAMPLES);
      EXPECT_EQ(log.Texts(), std::vector<std::string>{kMessage});
      EXPECT_EQ(log.Codes(), std::vector<int>{KVN_NO_USEFUL_SAMPLES});
      // The node that fails is marked and keeps its number.
      EXPECT_TRUE(network.ValueOf(2 * bad)->IsValueValid());
      EXPECT_EQ(MatrixOf(network, 2 * bad)[0], 7.0);
      // A part after it isn't computed, one before it is.
      EXPECT_EQ(network.ValueOf(2 - 2 * bad)->IsValueValid(), bad == 1);
      EXPECT_EQ(MatrixOf(network, 2 - 2 * bad)[0] == 7.0, bad == 0);
    }
  }
}

TEST(LoopyPropagation, FailsForABeliefOfZero) {
  KVN_network network;
  BuildTwoParts(network);
  MakeImpossible(network, 1);
  const LogWatch log;
  EXPECT_EQ(RunSampler(network, KVN_ALG_LOOPY_PROPAGATION, 100, 1), KVN_NO_USEFUL_SAMPLES);
  EXPECT_EQ(log.Texts(), std::vector<std::string>{kMessage});
}

TEST(Samplers, FailWithoutSamples) {
  for (const SamplerName& sampler : AllSamplers()) {
    for (int samples : {0, -1, std::numeric_limits<int>::min()}) {
      SCOPED_TRACE(std::string(sampler.name) + ", " + std::to_string(samples));
      KVN_network network;
      BuildTwoParts(network);
      const LogWatch log;
      EXPECT_EQ(RunSampler(network, sampler.code, samples, 1), KVN_NO_USEFUL_SAMPLES);
      const bool isAdaptive = sampler.code >= KVN_ALG_AIS_SAMPLING;
      EXPECT_EQ(log.Texts().size(), isAdaptive ? 1u : 2u) << "one for each part that was tried";
    }
  }
}

/// Where a NaN stands: a cell of the node above, or of the observed one.
struct NaNCase {
  const char* name;
  int node;
  std::vector<double> cells;
};
const NaNCase kNaNCases[] = {
    {"evidence", 3, {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN}},
    {"above", 2, {kNaN, kNaN}},
};

TEST(Samplers, FailOnTablesThatHoldNoNumbers) {
  std::vector<SamplerName> all = AllSamplers();
  all.push_back({"loopy", KVN_ALG_LOOPY_PROPAGATION});
  for (const SamplerName& sampler : all) {
    for (const NaNCase& c : kNaNCases) {
      SCOPED_TRACE(std::string(sampler.name) + ", " + c.name);
      // A forward draw from such a row takes the last outcome and weighs nothing by it (intended).
      const bool isForward =
          sampler.code == KVN_ALG_LIKELIHOOD_WEIGHTING || sampler.code == KVN_ALG_LOGIC_SAMPLING;
      if (isForward && c.node == 2) continue;
      KVN_network network;
      BuildTwoParts(network);
      WriteCells(network, c.node, c.cells);
      EXPECT_EQ(RunSampler(network, sampler.code, 100, 1), KVN_NO_USEFUL_SAMPLES);
    }
  }
}

TEST(Samplers, SettleWithoutADrawWhatTheReductionKnows) {
  for (const SamplerName& sampler : kForwardSamplers) {
    SCOPED_TRACE(sampler.name);
    KVN_network network;
    const int alone = AddCpt(network, "Alone", 3, {}, {0.2, 0.3, 0.5});
    EXPECT_EQ(RunSampler(network, sampler.code, 0, 1), 0) << "no part is left to fail";
    EXPECT_TRUE(CellsNear(MatrixOf(network, alone), {0.2, 0.3, 0.5}, 0.0));
    EXPECT_EQ(KVN_simpleSamplerRandom().GetState(), 1u) << "nothing was drawn";
  }
}

/// Two parts with posteriors too long for the room inside an array.
void BuildWideParts(KVN_network& network) {
  constexpr int kOutcomes = 40;
  for (const char* id : {"A", "C"}) {
    const std::vector<double> prior(kOutcomes, 1.0 / kOutcomes);
    const int above = AddCpt(network, id, kOutcomes, {}, prior);
    const std::vector<double> table(std::size_t{2} * kOutcomes, 0.5);
    const int below = AddCpt(network, nullptr, 2, {above}, table);
    EXPECT_EQ(network.ValueOf(below)->SetEvidence(0), 0);
  }
}

TEST(Samplers, SurviveEveryFailureOfMemory) {
  std::vector<SamplerName> all = AllSamplers();
  all.push_back({"loopy", KVN_ALG_LOOPY_PROPAGATION});
  for (const SamplerName& sampler : all) {
    SCOPED_TRACE(sampler.name);
    const int failures = FailEachAllocation([&](int n) {
      KVN_network network;
      BuildWideParts(network);
      SamplingQuality quality;
      SetSamplingQuality(&quality);
      const FailingAllocation failing(n);
      const int result = RunSampler(network, sampler.code, 20, 1);
      SetSamplingQuality(nullptr);
      if (!failing.HasFailed()) {
        EXPECT_EQ(result, 0);
      } else {
        EXPECT_EQ(result, KVN_NO_MEMORY) << "at " << n;
      }
      return failing.HasFailed();
    });
    EXPECT_GT(failures, 3);
  }
}

}  // namespace
