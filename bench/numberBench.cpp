// How fast numbers come out of text: tables through the lexer and the list reader into a network,
// beside a bare strtod loop over the same characters and a plain copy of them.
//
// Throughput counts the characters of the lists of numbers only: digits, commas, blanks and line
// breaks between "(" and ")".

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "bench/goals.h"
#include "bench/measure.h"
#include "network/fileSpeaker.h"
#include "network/network.h"

namespace {

constexpr double kGoal = 40.0;  // MB per second
constexpr int kTables = 16;
constexpr int kParents = 15;  // binary, as the child: 65,536 cells
constexpr int kMinSeconds = 2;

enum Digits { kEightDecimals = 0, kSeventeenDigits = 1 };
const char* NameOf(int digits) {
  return digits == kEightDecimals ? "8 decimals" : "17 significant digits";
}

/// Lists of numbers, and a file whose tables they are.
struct NumberText {
  explicit NumberText(int digits);
  ~NumberText() { std::remove(fileName.c_str()); }
  NumberText(const NumberText&) = delete;
  NumberText& operator=(const NumberText&) = delete;

  double Megabytes() const { return static_cast<double>(numbers.size()) / 1e6; }

  std::string fileName;
  std::string numbers;  // all lists, one after the other
};

std::string MakeList(int digits, std::mt19937_64& engine) {
  std::string list;
  char pair[64];
  int column = 0;
  for (int row = 0; row < 1 << kParents; row++) {
    const double first = static_cast<double>(engine() % 99999999 + 1) * 1e-8 / 1.0000001;
    const char* format = digits == kEightDecimals ? "%.8f, %.8f" : "%.17g, %.17g";
    std::snprintf(pair, sizeof pair, format, first, 1.0 - first);
    list += pair;
    if (row + 1 == 1 << kParents) break;
    column += static_cast<int>(std::strlen(pair)) + 2;
    list += column < 60 ? ", " : ",\n   ";
    if (column >= 60) column = 0;
  }
  return list;
}

std::string NodeText(const std::string& id, const std::string& parents,
                     const std::string& numbers) {
  return "node " + id + " { TYPE = CPT; HEADER = { ID = " + id + "; }; PARENTS = (" + parents +
         "); DEFINITION = { NAMESTATES = (yes, no); PROBABILITIES = (" + numbers + "); }; };\n";
}

NumberText::NumberText(int digits)
    : fileName(
          (std::filesystem::temp_directory_path() /
           ("kvnNumberBench" + std::to_string(getpid()) + "-" + std::to_string(digits) + ".kvn"))
              .string()) {
  std::mt19937_64 engine(7);
  std::ofstream file(fileName);
  file << "net Numbers { HEADER = { ID = Numbers; };\n";
  std::string parents;
  for (int i = 0; i < kParents; i++) {
    const std::string id = "P" + std::to_string(i);
    file << NodeText(id, "", "0.5, 0.5");
    parents += (i > 0 ? ", " : "") + id;
  }
  for (int i = 0; i < kTables; i++) {
    const std::string list = MakeList(digits, engine);
    file << NodeText("C" + std::to_string(i), parents, list);
    numbers += list;
  }
  file << "};\n";
}

const NumberText& TextOf(int digits) {
  static const NumberText eight(kEightDecimals);
  static const NumberText seventeen(kSeventeenDigits);
  return digits == kEightDecimals ? eight : seventeen;
}

void Note(benchmark::State& state, const char* what, const NumberText& text, double seconds,
          double goal) {
  state.SetIterationTime(seconds);
  const std::string name = std::string(what) + ", " + NameOf(static_cast<int>(state.range(0)));
  NoteResult(name.c_str(), text.Megabytes() / seconds, "MB/s", goal, Better::kHigher);
  state.counters["MBps"] = text.Megabytes() / seconds;
}

void ReadNetwork(benchmark::State& state) {
  const NumberText& text = TextOf(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    const double start = Now();
    KVN_network network;
    const int result = network.ReadFile(text.fileName.c_str(), KVN_FORMAT_KVN);
    Note(state, "network file", text, Now() - start, kGoal);
    if (result != 0 || network.GetNumberOfNodes() != kParents + kTables) {
      state.SkipWithError("not read");
    }
  }
}

void BareStrtod(benchmark::State& state) {
  const NumberText& text = TextOf(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    const double start = Now();
    double sum = 0.0;
    const char* position = text.numbers.c_str();
    while (*position != '\0') {
      char* end = nullptr;
      sum += std::strtod(position, &end);
      position = end + std::strspn(end, ", \n");
    }
    benchmark::DoNotOptimize(sum);
    Note(state, "bare strtod", text, Now() - start, 0.0);
  }
}

void Copy(benchmark::State& state) {
  const NumberText& text = TextOf(static_cast<int>(state.range(0)));
  std::vector<char> target(text.numbers.size());
  for (auto _ : state) {
    const double start = Now();
    std::memcpy(target.data(), text.numbers.data(), target.size());
    benchmark::ClobberMemory();
    Note(state, "memcpy", text, Now() - start, 0.0);
  }
}

void BothTexts(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(kEightDecimals)->Arg(kSeventeenDigits)->ArgName("digits");
  benchmark->Unit(benchmark::kMillisecond)->MinTime(kMinSeconds)->UseManualTime();
}

BENCHMARK(ReadNetwork)->Apply(BothTexts);
BENCHMARK(BareStrtod)->Apply(BothTexts);
BENCHMARK(Copy)->Apply(BothTexts);

}  // namespace
