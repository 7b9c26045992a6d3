// Loading from the native XML format: 50 MB of numbers, once as a single list and once as 900, and
// 50,000 nodes of each shape. The files are written to the system's temporary folder and removed at
// the end.
//
// A list is read into doubles and then copied into the table, so the peak should stay near twice
// the doubles of one list and once those of all, however the text is cut.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "bench/goals.h"
#include "bench/measure.h"
#include "bench/shapes.h"
#include "network/fileSpeaker.h"

namespace {

constexpr int kRepetitions = 5;
constexpr int kNodes = 50000;

constexpr double kMegabytesPerSecond = 40.0;
constexpr double kPeakToDoubles = 3.0;  // two copies of the longest list, and slack
constexpr double kLoadSeconds = 6.0;

/// A file that goes when the program ends.
class ScratchFile {
 public:
  explicit ScratchFile(const std::string& suffix)
      : name((std::filesystem::temp_directory_path() /
              ("kvnXmlBench" + std::to_string(getpid()) + suffix + ".xkvn"))
                 .string()) {}
  ~ScratchFile() { std::remove(name.c_str()); }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  bool Write(KVN_network& network) const {
    return network.WriteFile(name.c_str(), KVN_FORMAT_XKVN) == 0;
  }
  const char* Name() const { return name.c_str(); }
  double Megabytes() const { return static_cast<double>(std::filesystem::file_size(name)) / 1e6; }

 private:
  std::string name;
};

int AddRoot(KVN_network& network, const char* id, int states) {
  const int handle = network.AddNode(KVN_TYPE_CPT, id);
  return network.DefinitionOf(handle)->SetNumberOfOutcomes(states) == 0 ? handle : -1;
}

/// `children` nodes of three states below the parents, all with numbers of sixteen digits.
bool AddChildren(KVN_network& network, int children, const KVN_intArray& parents) {
  std::mt19937_64 engine(20240611);
  for (int i = 0; i < children; i++) {
    const int handle = AddRoot(network, ("C" + std::to_string(i)).c_str(), 3);
    for (int parent : parents) {
      if (network.AddArc(parent, handle, /*layer=*/0) != 0) return false;
    }
    KVN_doubleArray* numbers = nullptr;
    if (network.DefinitionOf(handle)->GetDefinition(numbers) != 0) return false;
    for (double& number : *numbers) number = static_cast<double>(engine() >> 11) * 0x1p-53;
  }
  return true;
}

constexpr int kNumbers = 900 * 1000 * 3;

/// One list of kNumbers, or 900 of 3,000.
bool BuildNumbers(KVN_network& network, bool isOneList) {
  KVN_intArray parents;
  if (parents.Add(AddRoot(network, "P", 1000)) != 0) return false;
  if (!isOneList) return AddChildren(network, 900, parents);
  return parents.Add(AddRoot(network, "Q", 900)) == 0 && AddChildren(network, 1, parents);
}

void LoadNumbers(benchmark::State& state) {
  const bool isOneList = state.range(0) == 1;
  const std::string what = isOneList ? ", one list" : ", 900 lists";
  const ScratchFile file(isOneList ? "-one" : "-many");
  {
    KVN_network network;
    if (!BuildNumbers(network, isOneList) || !file.Write(network)) state.SkipWithError("not made");
  }
  for (auto _ : state) {
    ResetPeakMemory();
    const double memoryBefore = ResidentMemory();
    const double start = Now();
    KVN_network network;
    const int result = network.ReadFile(file.Name(), KVN_FORMAT_XKVN);
    const double seconds = Now() - start;
    state.SetIterationTime(seconds);
    if (result != 0) state.SkipWithError("not read");
    NoteResult(("numbers" + what).c_str(), file.Megabytes() / seconds, "MB/s", kMegabytesPerSecond,
               Better::kHigher);
    NoteResult(("peak to doubles" + what).c_str(),
               (PeakMemory() - memoryBefore) * 1e6 / (8.0 * kNumbers), "", kPeakToDoubles,
               Better::kLower);
  }
  state.counters["fileMB"] = file.Megabytes();
}

void LoadNodes(benchmark::State& state) {
  const int shape = static_cast<int>(state.range(0));
  const ScratchFile file("-nodes" + std::to_string(shape));
  {
    KVN_network network;
    if (!ShapeBuilder(network, shape).Build(kNodes) || !file.Write(network)) {
      state.SkipWithError("not made");
    }
  }
  for (auto _ : state) {
    const double start = Now();
    KVN_network network;
    const int result = network.ReadFile(file.Name(), KVN_FORMAT_XKVN);
    const double seconds = Now() - start;
    state.SetIterationTime(seconds);
    if (result != 0 || network.GetNumberOfNodes() != kNodes) state.SkipWithError("not read");
    NoteResult((std::string("50000 nodes, ") + kShapeNames[shape]).c_str(), seconds, "s",
               kLoadSeconds, Better::kLower);
  }
  state.counters["fileMB"] = file.Megabytes();
}

void Usual(benchmark::internal::Benchmark* benchmark) {
  benchmark->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(1);
  benchmark->Repetitions(kRepetitions);
}

BENCHMARK(LoadNumbers)->Arg(1)->Arg(0)->Apply(Usual);
BENCHMARK(LoadNodes)->Arg(kChain)->Arg(kThreeParents)->Arg(kStar)->Apply(Usual);

}  // namespace
