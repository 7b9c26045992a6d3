// Large networks to and from the native text format: time, memory, and how both grow when the
// number of nodes doubles, which shows anything quadratic.
//
// Three shapes of binary networks: a chain, nodes with three parents drawn from all earlier nodes,
// and one parent of all the others. The files are written to the system's temporary folder and
// removed at the end.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "bench/goals.h"
#include "bench/measure.h"
#include "bench/shapes.h"
#include "network/fileSpeaker.h"
#include "network/network.h"

namespace {

constexpr int kRepetitions = 5;
constexpr int kLargest = 50000;

// Goals at 50,000 nodes.
constexpr double kLoadSeconds = 5.0;
constexpr double kWriteSeconds = 3.0;
constexpr double kPeakMegabytes = 1500.0;
constexpr double kGrowth = 2.3;  // of time and memory for twice the nodes

std::string FileName(int shape, int nodes) {
  return (std::filesystem::temp_directory_path() /
          ("kvnLoadBench" + std::to_string(getpid()) + "-" + std::to_string(shape) + "-" +
           std::to_string(nodes) + ".kvn"))
      .string();
}

/// Names of the files made so far; removes them at the end of the program.
struct MadeFiles {
  ~MadeFiles() {
    for (const auto& ofShape : names) {
      for (const std::string& name : ofShape) std::remove(name.c_str());
    }
  }
  std::string names[3][2];  // by shape and size
};

/// The file of that shape and size, made at first use; empty when it can't be written.
const std::string& FileOf(int shape, int nodes) {
  static MadeFiles made;
  std::string& name = made.names[shape][nodes == kLargest ? 1 : 0];
  if (name.empty()) {
    KVN_network network;
    if (ShapeBuilder(network, shape).Build(nodes) &&
        network.WriteFile(FileName(shape, nodes).c_str(), KVN_FORMAT_KVN) == 0) {
      name = FileName(shape, nodes);
    }
  }
  return name;
}

/// Notes a number of this size and, at the larger size, its ratio to the smaller one. Only the
/// larger size has a goal.
void NoteGrowth(const std::string& what, int shape, int nodes, double value, const char* unit,
                double goal) {
  const std::string prefix = what + ", " + kShapeNames[shape] + ", ";
  const bool isLargest = nodes == kLargest;
  NoteResult((prefix + std::to_string(nodes)).c_str(), value, unit, isLargest ? goal : 0.0,
             Better::kLower);
  const double half = NotedResult((prefix + std::to_string(kLargest / 2)).c_str());
  if (!isLargest || half <= 0.0) return;
  const double best = NotedResult((prefix + std::to_string(nodes)).c_str());
  NoteResult((prefix + "ratio to half").c_str(), best / half, "", kGrowth, Better::kLower);
}

void Load(benchmark::State& state) {
  const int shape = static_cast<int>(state.range(0));
  const int nodes = static_cast<int>(state.range(1));
  const std::string& name = FileOf(shape, nodes);
  for (auto _ : state) {
    ResetPeakMemory();
    const double memoryBefore = ResidentMemory();
    const double wallStart = WallNow();
    const double start = Now();
    KVN_network network;
    const int result = network.ReadFile(name.c_str(), KVN_FORMAT_KVN);
    const double seconds = Now() - start;
    state.counters["wallMs"] = (WallNow() - wallStart) * 1e3;
    state.SetIterationTime(seconds);
    if (result != 0 || network.GetNumberOfNodes() != nodes) state.SkipWithError("not read");
    state.counters["peakMB"] = PeakMemory();
    NoteGrowth("load", shape, nodes, seconds, "s", kLoadSeconds);
    NoteGrowth("peak of loading", shape, nodes, PeakMemory() - memoryBefore, "MB", kPeakMegabytes);
  }
  state.counters["fileMB"] = static_cast<double>(std::filesystem::file_size(name)) / 1e6;
}

void Write(benchmark::State& state) {
  const int shape = static_cast<int>(state.range(0));
  const int nodes = static_cast<int>(state.range(1));
  const std::string& name = FileOf(shape, nodes);
  const std::string copy = name + "w.kvn";
  KVN_network network;
  if (network.ReadFile(name.c_str(), KVN_FORMAT_KVN) != 0) state.SkipWithError("not read");
  for (auto _ : state) {
    const double start = Now();
    const int result = network.WriteFile(copy.c_str(), KVN_FORMAT_KVN);
    const double seconds = Now() - start;
    state.SetIterationTime(seconds);
    if (result != 0) state.SkipWithError("not written");
    NoteGrowth("write", shape, nodes, seconds, "s", kWriteSeconds);
  }
  std::remove(copy.c_str());
}

void AllShapesAndSizes(benchmark::internal::Benchmark* benchmark) {
  for (int nodes : {kLargest / 2, kLargest}) {  // the smaller first: the ratio needs it
    for (int shape : {kChain, kThreeParents, kStar}) benchmark->Args({shape, nodes});
  }
  benchmark->ArgNames({"shape", "nodes"})->Unit(benchmark::kMillisecond)->UseManualTime();
  benchmark->Iterations(1)->Repetitions(kRepetitions);
}

BENCHMARK(Load)->Apply(AllShapesAndSizes);
BENCHMARK(Write)->Apply(AllShapesAndSizes);

}  // namespace
