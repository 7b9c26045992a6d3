// Networks of equations: the table of a node over the intervals of three parents, and a long chain
// answered by samples that are not kept.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "bench/goals.h"
#include "bench/measure.h"
#include "expressions/equation.h"
#include "network/network.h"
#include "values/valEqEvaluation.h"

namespace {

constexpr double kTableGoal = 1.0;     // seconds
constexpr double kChainGoal = 20.0;    // seconds
constexpr double kMemoryGoal = 500.0;  // MB
constexpr int kIntervals = 5;
constexpr int kChainLength = 10000;
constexpr int kSamples = 10000;

KVN_equation& EquationAt(const KVN_network& network, int handle) {
  return static_cast<KVN_equation&>(*network.DefinitionOf(handle));
}

int AddEquation(KVN_network& network, const std::string& id, const std::string& text) {
  const int handle = network.AddNode(KVN_TYPE_EQUATION, id.c_str());
  if (handle < 0 || EquationAt(network, handle).SetEquation(text) != 0) return -1;
  return handle;
}

bool Discretise(KVN_network& network, int handle, double low, double high) {
  KVN_equation& node = EquationAt(network, handle);
  node.SetBounds(low, high);
  std::vector<KVN_discInterval> list;
  for (int i = 1; i <= kIntervals; i++) {
    list.push_back({"i" + std::to_string(i), low + i * (high - low) / kIntervals});
  }
  return node.SetDiscIntervals(list) == 0;
}

void DiscretizeTable(benchmark::State& state) {
  KVN_network network;
  network.SetDiscSamples(kSamples);
  bool isMade = true;
  for (const char* id : {"a", "b", "c"}) {
    isMade = isMade && Discretise(network, AddEquation(network, id, std::string(id) + "=0"), 0, 1);
  }
  const int y = AddEquation(network, "y", "y=a*b+c+Normal(0,0.1)");
  if (!isMade || !Discretise(network, y, -1, 3)) {
    state.SkipWithError("no network");
    return;
  }
  for (auto _ : state) {
    const double start = Now();
    if (EquationAt(network, y).Discretize(0, nullptr) != 0) state.SkipWithError("no table");
    const double seconds = Now() - start;
    state.SetIterationTime(seconds);
    NoteResult("Discretize, 3 parents of 5 intervals, 10,000 samples a row", seconds, "s",
               kTableGoal, Better::kLower);
  }
}

bool MakeChain(KVN_network& network) {
  int last = AddEquation(network, "n0", "n0=Normal(0,1)");
  for (int i = 1; i < kChainLength && last >= 0; i++) {
    const std::string id = "n" + std::to_string(i);
    last = AddEquation(network, id, id + "=0.5*n" + std::to_string(i - 1) + "+Normal(0,1)");
  }
  network.SetNumberOfSamples(kSamples);
  for (int handle = network.GetFirstNode(); handle >= 0; handle = network.GetNextNode(handle)) {
    static_cast<KVN_valEqEvaluation*>(network.ValueOf(handle))->SetKeepSamples(false);
  }
  return last >= 0;
}

void SampleChain(benchmark::State& state) {
  ResetPeakMemory();
  KVN_network network;
  const double begin = Now();
  if (!MakeChain(network)) {
    state.SkipWithError("no network");
    return;
  }
  NoteResult("chain of 10,000 equations, building", Now() - begin, "s", 0.0, Better::kLower);
  for (auto _ : state) {
    const double start = Now();
    if (network.UpdateBeliefs() != 0) state.SkipWithError("no answer");
    const double seconds = Now() - start;
    state.SetIterationTime(seconds);
    NoteResult("chain of 10,000 equations, 10,000 samples", seconds, "s", kChainGoal,
               Better::kLower);
  }
  NoteResult("the same, memory", PeakMemory(), "MB", kMemoryGoal, Better::kLower);
}

BENCHMARK(DiscretizeTable)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(SampleChain)->Unit(benchmark::kSecond)->UseManualTime()->Iterations(1);

}  // namespace
