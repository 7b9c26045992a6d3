// Draws of the samplers: nodes drawn a second, and how near a long run comes.

#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <string>

#include "bench/goals.h"
#include "bench/measure.h"
#include "bench/referenceCase.h"
#include "foundation/random.h"
#include "inference/exact/relevanceGraph.h"
#include "network/updateAlgorithm.h"
#include "values/nodeValue.h"

namespace {

constexpr const char* kNetwork = "alarm";
constexpr int kSamples = 200000;
constexpr int kLearningSamples = 25000;  // of adaptive importance sampling, for each part
constexpr int kLongRun = 1000000;
constexpr std::uint32_t kSeed = 1;
constexpr double kForwardGoal = 5.0;  // millions of nodes a second
constexpr double kAdaptiveGoal = 2.0;
constexpr double kErrorGoal = 0.002;

struct Sampler {
  const char* name;
  int code;
  double goal;  // 0: none
};
constexpr Sampler kSamplers[] = {
    {"logic sampling", KVN_ALG_LOGIC_SAMPLING, 0.0},
    {"likelihood weighting", KVN_ALG_LIKELIHOOD_WEIGHTING, kForwardGoal},
    {"self-importance", KVN_ALG_SELF_IMPORTANCE, 0.0},
    {"backward sampling", KVN_ALG_BACKWARD_SAMPLING, 0.0},
    {"ais", KVN_ALG_AIS_SAMPLING, kAdaptiveGoal},
    {"epis", KVN_ALG_EPIS_SAMPLING, kAdaptiveGoal},
};

/// Nodes without evidence that one sample draws when no evidence ends it. The simple samplers don't
/// draw a node that stands alone.
int CountDrawnNodes(KVN_network& network, bool alone) {
  int result = 0;
  const std::unique_ptr<RelevanceParts> parts = ReduceNetwork(network, true, true, result);
  int count = 0;
  for (int i = 0; parts != nullptr && i < parts->GetCount(); i++) {
    RelevanceGraph& part = (*parts)[i];
    if (part.GetSize() == 1 && !alone) continue;
    for (int r = 0; r < part.GetSize(); r++) count += part.Node(r).HasEvidence() ? 0 : 1;
  }
  return count;
}

int Run(KVN_network& network, int code, int samples) {
  network.SetDefaultBNAlgorithm(code);
  network.SetNumberOfSamples(samples);
  KVN_simpleSamplerRandom().Seed(kSeed);
  SetAdaptiveSeed(kSeed);
  return network.UpdateBeliefs();
}

/// Without evidence, so that every sample is drawn to its end and the nodes can be counted.
void Draw(benchmark::State& state) {
  const Sampler& sampler = kSamplers[state.range(0)];
  ReferenceCase measured;
  if (!ReadReferenceCase(kNetwork, measured)) {
    state.SkipWithError("no network");
    return;
  }
  KVN_network& network = measured.network;
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    (void)network.ValueOf(h)->ClearEvidence();
  }
  const bool isAdaptive = sampler.code >= KVN_ALG_AIS_SAMPLING;
  const int learning = sampler.code == KVN_ALG_AIS_SAMPLING ? kLearningSamples : 0;
  const double draws =
      static_cast<double>(CountDrawnNodes(network, isAdaptive)) * (kSamples + learning);
  const std::string name = std::string(sampler.name) + ", " + kNetwork;
  for (auto _ : state) {
    const double start = Now();
    if (Run(network, sampler.code, kSamples) != 0) state.SkipWithError("no samples");
    const double seconds = Now() - start;
    state.SetIterationTime(seconds);
    NoteResult(name.c_str(), draws / seconds / 1e6, "M/s", sampler.goal, Better::kHigher);
  }
  state.SetLabel(sampler.name);
}

/// With the evidence of the reference: the largest error of a long run.
void LongRun(benchmark::State& state) {
  const Sampler& sampler = kSamplers[state.range(0)];
  ReferenceCase measured;
  if (!ReadReferenceCase(kNetwork, measured)) {
    state.SkipWithError("no network");
    return;
  }
  const std::string name = std::string(sampler.name) + ", error after 1,000,000";
  const double goal = sampler.code == KVN_ALG_EPIS_SAMPLING ? kErrorGoal : 0.0;
  for (auto _ : state) {
    const double start = Now();
    if (Run(measured.network, sampler.code, kLongRun) != 0) state.SkipWithError("no samples");
    state.SetIterationTime(Now() - start);
    const PosteriorErrors errors = CompareWithReference(measured);
    if (!errors.isComplete) state.SkipWithError("no posterior");
    NoteResult(name.c_str(), errors.largest, "", goal, Better::kLower);
  }
  state.SetLabel(sampler.name);
}

constexpr int kLast = static_cast<int>(std::size(kSamplers)) - 1;

BENCHMARK(Draw)->DenseRange(0, kLast)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(LongRun)
    ->DenseRange(0, kLast)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1);

}  // namespace
