#include "bench/goals.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

struct Result {
  std::string name;
  double value;
  std::string unit;
  double goal;
  Better better;
};

std::vector<Result>& Results() {
  static std::vector<Result> results;
  return results;
}

Result* Find(const char* name) {
  for (Result& result : Results()) {
    if (result.name == name) return &result;
  }
  return nullptr;
}

bool IsMet(const Result& result) {
  return result.better == Better::kLower ? result.value <= result.goal
                                         : result.value >= result.goal;
}

void PrintResults() {
  std::printf("\n%-44s %12s %-6s %14s\n", "best of the runs", "value", "", "goal");
  for (const Result& result : Results()) {
    std::printf("%-44s %12.3f %-6s", result.name.c_str(), result.value, result.unit.c_str());
    if (result.goal != 0.0) {
      std::printf(" %s %10.3f  %s", result.better == Better::kLower ? "<=" : ">=", result.goal,
                  IsMet(result) ? "met" : "MISSED");
    }
    std::printf("\n");
  }
}

}  // namespace

void NoteResult(const char* name, double value, const char* unit, double goal, Better better) {
  Result* result = Find(name);
  if (result == nullptr) {
    Results().push_back({name, value, unit, goal, better});
  } else if (better == Better::kLower ? value < result->value : value > result->value) {
    result->value = value;
  }
}

double NotedResult(const char* name) {
  const Result* result = Find(name);
  return result == nullptr ? 0.0 : result->value;
}

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  PrintResults();
  return 0;
}
