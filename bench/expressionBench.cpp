// How fast formulas are evaluated, the inner loop of every sampler of equations, and how fast their
// text is parsed, which is what a file of equations costs. Evaluation must not allocate, so the
// program counts the calls of the allocation functions too.

#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench/allocationCount.h"
#include "bench/goals.h"
#include "bench/measure.h"
#include "expressions/expression.h"
#include "expressions/expressionParser.h"
#include "expressions/variableVisitor.h"

namespace {

constexpr double kEvaluationGoal = 10.0;  // million evaluations per second
constexpr double kParseGoal = 1.0;        // MB per second
constexpr int kMinSeconds = 1;

using Tree = std::unique_ptr<KVN_expression>;

struct Formula {
  const char* name;
  const char* text;
  double goal;
};

// Twenty nodes or a few more; the results show how many.
const Formula kFormulas[] = {
    {"arithmetic", "a*b+c*d-(a+2)*(b-3)/(c+d)+a/b", kEvaluationGoal},
    {"with a branch", "a*b>c ? (a+b)*c-d/2+a*a : (b+d)*2-1", kEvaluationGoal},
    {"with calls", "Max(a*b,c,d-1)+Min(a,b+2,c*d)+Abs(d-a)", kEvaluationGoal},
    {"transcendental", "Exp(a)*Sin(b)+Ln(c)/Sqrt(d)-Atan(a*b)+Cos(c+d)*Exp(b)", 0.0},
};

Tree ParsedFormula(const char* text) {
  Tree tree(ParseExpression(text, nullptr, nullptr));
  const char* names[] = {"a", "b", "c", "d"};
  for (int i = 0; i < 4; i++) AssignVariable(*tree, names[i], 0.5 + 0.25 * i);
  return tree;
}

void Evaluate(benchmark::State& state) {
  constexpr int kRounds = 100000;
  const Formula& formula = kFormulas[state.range(0)];
  const Tree tree = ParsedFormula(formula.text);
  for (auto _ : state) {
    const long long before = CountAllocations();
    const double start = Now();
    double sum = 0.0;
    for (int i = 0; i < kRounds; i++) sum += SignedValue(*tree);
    benchmark::DoNotOptimize(sum);
    const double seconds = Now() - start;
    state.SetIterationTime(seconds);
    if (CountAllocations() != before) state.SkipWithError("evaluation allocates");
    const std::string name = std::string("evaluate, ") + formula.name;
    NoteResult(name.c_str(), kRounds / seconds / 1e6, "million/s", formula.goal, Better::kHigher);
  }
  state.SetLabel(std::string(formula.name) + ", " + std::to_string(CountNodes(tree.get())) +
                 " nodes");
}

/// A megabyte of equations as they stand in files.
std::vector<std::string> MakeEquations() {
  std::mt19937_64 engine(11);
  std::vector<std::string> equations;
  for (int i = 0; equations.size() < 12000; i++) {
    const std::string n = std::to_string(i);
    equations.push_back("Flow_" + n + " = Normal(0.75*Pressure_" + n + "+" +
                        std::to_string(static_cast<double>(engine() % 1000000) * 1e-4) +
                        "*Sqr(Valve" + n + "), 0.05) - (Loss_" + n + "+1.5e-3)^2");
  }
  return equations;
}

void Parse(benchmark::State& state) {
  const std::vector<std::string> equations = MakeEquations();
  double megabytes = 0.0;
  for (const std::string& text : equations) megabytes += static_cast<double>(text.size()) / 1e6;
  for (auto _ : state) {
    const double start = Now();
    for (const std::string& text : equations) {
      const Tree tree(ParseExpression(text.c_str(), nullptr, nullptr));
      if (tree == nullptr) state.SkipWithError("not parsed");
    }
    const double seconds = Now() - start;
    state.SetIterationTime(seconds);
    NoteResult("parse equations", megabytes / seconds, "MB/s", kParseGoal, Better::kHigher);
  }
}

BENCHMARK(Evaluate)->DenseRange(0, 3)->MinTime(kMinSeconds)->UseManualTime();
BENCHMARK(Parse)->Unit(benchmark::kMillisecond)->MinTime(kMinSeconds)->UseManualTime();

}  // namespace
