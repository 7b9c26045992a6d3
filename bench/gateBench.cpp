// The full table of a noisy-MAX gate: 16 binary parents and 4 outcomes make 262,144 cells out of
// 33 rows of parameters.

#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "bench/goals.h"
#include "bench/measure.h"
#include "definitions/noisyMAX.h"
#include "foundation/doubleArray.h"
#include "network/network.h"

namespace {

constexpr int kParents = 16;
constexpr int kOutcomes = 4;
constexpr double kGoalMilliseconds = 50.0;

/// Fills every row that may be chosen with a random distribution.
bool FillParameters(KVN_noisyMAX& gate) {
  std::mt19937_64 engine(11);
  KVN_doubleArray numbers;
  for (int row = 0; row < kParents + 1; row++) {  // one free row for each parent, and the leak
    double weights[kOutcomes];
    double sum = 0.0;
    for (double& weight : weights) sum += weight = static_cast<double>(engine() % 1000 + 1);
    for (double weight : weights) {
      if (numbers.Add(weight / sum) != 0) return false;
    }
  }
  return gate.SetParameterList(numbers) == 0;
}

KVN_noisyMAX* MakeGate(KVN_network& network) {
  const int handle = network.AddNode(KVN_TYPE_NOISY_MAX, "Gate");
  if (handle < 0 || network.DefinitionOf(handle)->SetNumberOfOutcomes(kOutcomes) != 0) {
    return nullptr;
  }
  for (int i = 0; i < kParents; i++) {
    const int parent = network.AddNode(KVN_TYPE_CPT, ("P" + std::to_string(i)).c_str());
    if (parent < 0 || network.AddArc(parent, handle, /*layer=*/0) != 0) return nullptr;
  }
  KVN_noisyMAX* gate = static_cast<KVN_noisyMAX*>(network.DefinitionOf(handle));
  return FillParameters(*gate) ? gate : nullptr;
}

void BuildCpt(benchmark::State& state) {
  KVN_network network;
  KVN_noisyMAX* gate = MakeGate(network);
  if (gate == nullptr) {
    state.SkipWithError("no gate");
    return;
  }
  for (auto _ : state) {
    gate->MarkCptStale();
    const double start = Now();
    if (gate->BuildCpt() != 0) state.SkipWithError("no table");
    const double seconds = Now() - start;
    state.SetIterationTime(seconds);
    NoteResult("BuildCpt, 16 binary parents, 4 outcomes", seconds * 1e3, "ms", kGoalMilliseconds,
               Better::kLower);
  }
}

BENCHMARK(BuildCpt)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace
