#include "inference/hybrid/equationSolver.h"

#include <cmath>
#include <ctime>

#include "foundation/random.h"
#include "foundation/resultCodes.h"
#include "network/node.h"
#include "tests/support/equationBuilder.h"
#include "tests/support/failingAllocation.h"
#include "tests/support/logWatch.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/smallStack.h"

namespace {

using Ids = std::vector<std::string>;

constexpr const char* kNoSolution = "Faile in solving nonlinear quations.";
constexpr const char* kNoComponent = "Faile in computing SCC.";

double MeanOf(const KVN_network& network, int handle) {
  const KVN_valEqEvaluation& value = EquationValueOf(network, handle);
  EXPECT_TRUE(value.IsValueValid());
  return value.GetMean();
}

}  // namespace

TEST(EquationSolver, ComputesForwardWithoutSpread) {
  KVN_network network;
  const int a = AddEquation(network, "a", "a = 2");
  const int b = AddEquation(network, "b", "3*b - a = 1");
  const int c = AddEquation(network, "c", "c = (a > b ? a : b*b + Max(a, 7))");
  ASSERT_EQ(network.UpdateBeliefs(), 0);
  EXPECT_EQ(MeanOf(network, a), 2.0);
  EXPECT_EQ(MeanOf(network, b), 1.0);
  EXPECT_EQ(MeanOf(network, c), 2.0);
  EXPECT_EQ(EquationValueOf(network, c).GetDeviation(), 0.0);
  EXPECT_TRUE(EquationValueOf(network, c).GetSamples().empty());
}

TEST(EquationSolver, ObservedRootKeepsItsNumberAndItsValue) {
  KVN_network network;
  const int a = AddEquation(network, "a", "a = 2");
  const int b = AddEquation(network, "b", "b = 10*a");
  ASSERT_EQ(network.ValueOf(a)->SetEvidence(4.5), 0);
  ASSERT_EQ(network.UpdateBeliefs(), 0);
  EXPECT_EQ(MeanOf(network, b), 45.0);
  EXPECT_TRUE(network.ValueOf(a)->IsEvidence());
  EXPECT_EQ(EquationValueOf(network, a).GetMean(), 0.0) << "the number is the evidence";
  ASSERT_EQ(network.ValueOf(a)->SetEvidence(NAN), 0);
  ASSERT_EQ(network.UpdateBeliefs(), 0);
  EXPECT_TRUE(std::isnan(MeanOf(network, b)));
  ASSERT_EQ(network.ValueOf(a)->SetPropagatedEvidence(4.5), 0);
  ASSERT_EQ(network.UpdateBeliefs(), 0);
  EXPECT_EQ(MeanOf(network, b), 20.0) << "each update drops what was propagated";
}

TEST(EquationSolver, EvidenceBelowAFormulaIsLeftToTheConversionThatFails) {
  KVN_network network;
  const int a = AddEquation(network, "a", "a = Normal(0, 1)");
  const int b = AddEquation(network, "b", "b = a + Normal(0, 1)");
  ASSERT_EQ(network.ValueOf(b)->SetEvidence(1.0), 0);
  const LogWatch log;
  EXPECT_EQ(network.UpdateBeliefs(), KVN_REFUSED);
  EXPECT_EQ(log.Texts(), (Ids{"Conversion to HBN failed for node a"}));
  EXPECT_FALSE(network.ValueOf(a)->IsValueValid());
}

TEST(EquationSolver, OtherKindsAndRandomComponentsAreRefused) {
  KVN_network mixed;
  (void)AddEquation(mixed, "a", "a = 1");
  (void)AddNodeBelow(mixed, KVN_TYPE_CPT, "chance", 2, {});
  const LogWatch log;
  EXPECT_EQ(mixed.UpdateBeliefs(), KVN_REFUSED);
  KVN_network coupled;
  (void)AddComponent(coupled, {"x"}, {"x = x/2 + Normal(0, 1)"});
  EXPECT_EQ(coupled.UpdateBeliefs(), KVN_REFUSED);
  EXPECT_EQ(log.Texts(), (Ids{"Unable to handle hybrid networks with equation solver.",
                              "Unable to sovle a network contains strongly-coupled components "
                              "with distribution definitions."}));
}

TEST(EquationSolver, AnEquationThatCannotBeRearrangedIsSolvedByNewton) {
  KVN_network network;
  (void)AddEquation(network, "a", "a = 9");
  // From 0 the slope is the step itself, so the first round goes far out, to the positive root.
  const int r = AddEquation(network, "r", "r*r = a");
  const int s = AddEquation(network, "s", "s = s/2 + a");
  const int flat = AddEquation(network, "flat", "1 = 2");
  ASSERT_EQ(network.UpdateBeliefs(), 0);
  EXPECT_NEAR(MeanOf(network, r), 3.0, 1e-6);
  EXPECT_NEAR(MeanOf(network, s), 18.0, 1e-6);
  EXPECT_EQ(MeanOf(network, flat), 0.0) << "an equation that says nothing leaves the start";
}

TEST(EquationSolver, WithoutMemoryItIsTheRightNumbersOrTheCode) {
  KVN_network network;
  const int a = AddEquation(network, "a", "a = 9");
  const int b = AddEquation(network, "b", "a = 1 + (2*b)^3");  // b = 1
  const int r = AddEquation(network, "r", "r*r = a + b - 1");
  const std::vector<int> c = AddComponent(network, {"x", "y"}, {"x = y/2 + 1", "y = x/2 + 1"});
  FailEachAllocation([&](int n) {
    network.InvalidateAllBeliefs();
    FailingAllocation failing(n);
    const int result = network.UpdateBeliefs();
    const bool failed = failing.HasFailed();
    EXPECT_TRUE(result == 0 || (failed && result == KVN_NO_MEMORY)) << result;
    for (const auto& [handle, number] : {std::pair{a, 9.0}, {b, 1.0}, {r, 3.0}, {c[0], 2.0}}) {
      EXPECT_EQ(network.ValueOf(handle)->IsValueValid(), result == 0);
      if (result < 0) continue;
      EXPECT_NEAR(MeanOf(network, handle), number, 1e-6);
    }
    return failed;
  });
}

TEST(EquationSolver, ARandomEquationThatCannotBeRearrangedIsRefused) {
  KVN_network network;
  const int y = AddEquation(network, "y", "y = y/2 + Normal(0, 1)");
  const LogWatch log;
  EXPECT_EQ(network.UpdateBeliefs(), KVN_REFUSED);
  EXPECT_EQ(log.Texts(), (Ids{kNoSolution}));
  EXPECT_FALSE(network.ValueOf(y)->IsValueValid());
}

TEST(EquationSolver, ComponentsAreSolvedTogether) {
  KVN_network network;
  const std::vector<int> one = AddComponent(network, {"only"}, {"only = 0.5*only + 1"});
  // The component comes first by handle, and needs `late` all the same.
  const std::vector<int> two = AddComponent(network, {"y", "x"}, {});
  const int late = AddEquation(network, "late", "late = 4");
  ASSERT_EQ(network.AddArc(late, two[1], 0), 0);
  ASSERT_EQ(CoupledNode(network, two[0]).SetEquation("x + y = 10"), 0);
  ASSERT_EQ(CoupledNode(network, two[1]).SetEquation("x = y + late"), 0);
  const int below = AddEquation(network, "below", "below = x * y");
  ASSERT_EQ(network.UpdateBeliefs(), 0);
  EXPECT_NEAR(MeanOf(network, one[0]), 2.0, 1e-6);
  EXPECT_NEAR(MeanOf(network, two[0]), 3.0, 1e-6);
  EXPECT_NEAR(MeanOf(network, two[1]), 7.0, 1e-6);
  EXPECT_NEAR(MeanOf(network, below), 21.0, 1e-5);
}

TEST(EquationSolver, ObservedMembersAreKnownToTheOthers) {
  KVN_network network;
  const std::vector<int> c = AddComponent(network, {"x", "y"}, {"x = y/2 + 1", "y = x/2 + 1"});
  ASSERT_EQ(network.ValueOf(c[1])->SetEvidence(10.0), 0);
  ASSERT_EQ(network.UpdateBeliefs(), 0);
  EXPECT_NEAR(MeanOf(network, c[0]), 6.0, 1e-6);
  ASSERT_EQ(network.ValueOf(c[0])->SetEvidence(1.0), 0);
  EXPECT_EQ(network.UpdateBeliefs(), 0) << "nothing is left to find";
}

TEST(EquationSolver, ComponentsThatCannotBeSetUpFailWithAMessage) {
  const struct {
    const char* name;
    const char* message;
    void (*spoil)(KVN_network& network, int x, int y);
  } cases[] = {
      {"no component", kNoSolution,
       [](KVN_network& network, int x, int) { (void)network.ClearComponent(x); }},
      {"member renamed", kNoComponent,
       [](KVN_network& network, int, int y) { (void)network.GetNode(y)->SetId("z"); }},
      {"member of another kind", kNoComponent,
       [](KVN_network& network, int x, int) {
         (void)AddNodeBelow(network, KVN_TYPE_CPT, "chance", 2, {});
         CoupledNode(network, x).SetSccVariables({"x", "chance"});
       }},
      {"needs its own result from outside", kNoComponent,
       [](KVN_network& network, int x, int y) {
         const int outside = AddEquation(network, "outside", "outside = x");
         EXPECT_EQ(network.AddArc(outside, y, 0), 0);
         (void)x;
       }},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    KVN_network network;
    const int first = AddEquation(network, "first", "first = 1");
    const std::vector<int> pair = AddComponent(network, {"x", "y"}, {"x = y", "y = x"});
    c.spoil(network, pair[0], pair[1]);
    const LogWatch log;
    EXPECT_EQ(SolveDeterministic(network), KVN_REFUSED);
    EXPECT_EQ(log.Texts(), (Ids{c.message}));
    EXPECT_FALSE(network.ValueOf(first)->IsValueValid()) << "nothing is written on failure";
  }
}

TEST(EquationSolver, ANodeOutsideItsOwnSetGetsNoNumber) {
  KVN_network network;
  const std::vector<int> pair = AddComponent(network, {"x", "y"}, {"x = 1", "y = x"});
  CoupledNode(network, pair[0]).SetSccVariables({"y"});
  // Its child is no obstacle to the rest, either.
  (void)AddEquation(network, "w", "w = x");
  ASSERT_EQ(SolveDeterministic(network), 0);
  EXPECT_FALSE(network.ValueOf(pair[0])->IsValueValid());
  EXPECT_TRUE(network.ValueOf(pair[1])->IsValueValid());
}

TEST(EquationSolver, WhatNewtonCannotSolveAndWhatIsNoNumberEndInBoundedTime) {
  const double kFarOut = std::ldexp(1e-6, 53);
  const struct {
    const char* name;
    std::vector<const char*> texts;  // of x and y
    double x, y;                     // NaN: no number
  } cases[] = {
      // In (1e-6 + 1) - 1 rounding leaves 2^-53, which makes a slope where there is none, and out
      // there the 1 is lost in the differences: no slope any more.
      {"contradiction", {"x = y + 1", "y = x"}, kFarOut, kFarOut},
      {"not a number", {"x = Ln(-1 - y*y)", "y = x + 1"}, NAN, NAN},
      {"no number from outside", {"x = 0/0", "y = x"}, NAN, NAN},
      {"infinite", {"x = 1/(x - x)", "y = 2*y*1e308*1e10"}, NAN, NAN},
      {"the same twice", {"x = y", "y = x"}, 0, 0},
  };
  const std::clock_t start = std::clock();
  KVN_network astray;  // comes back to a number after 300,000 rounds
  const int r = AddEquation(astray, "r", "r*r = -1");
  EXPECT_EQ(astray.UpdateBeliefs(), 0);
  EXPECT_TRUE(std::isfinite(MeanOf(astray, r)));
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    KVN_network network;
    const std::vector<int> pair = AddComponent(network, {"x", "y"}, c.texts);
    EXPECT_EQ(network.UpdateBeliefs(), 0);
    for (const auto& [handle, number] : {std::pair{pair[0], c.x}, {pair[1], c.y}}) {
      const double mean = MeanOf(network, handle);
      EXPECT_EQ(std::isnan(mean), std::isnan(number));
      EXPECT_FALSE(std::fabs(mean - number) > 1e-9 * std::fabs(number)) << mean;
    }
  }
  const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
  EXPECT_LT(seconds, 60.0) << "5 with sanitizers, 0.2 without";
}

// The component stands first and needs the end of the chain: the walk goes down all of it.
TEST(EquationSolver, LongChainNeedsNoStack) {
  KVN_network network;
  constexpr int kLength = 2500;
  const std::vector<int> pair = AddComponent(network, {"x", "y"}, {"x = y"});
  int last = AddEquation(network, "n0");
  for (int i = 1; i < kLength; i++) {
    const int next = AddEquation(network, ("n" + std::to_string(i)).c_str());
    ASSERT_EQ(network.AddArc(last, next, 0), 0);
    last = next;
  }
  ASSERT_EQ(EquationNode(network, network.FindNode("n0")).SetEquation("n0 = 3"), 0);
  ASSERT_EQ(network.AddArc(last, pair[1], 0), 0);
  RunInSmallStack([&] { EXPECT_EQ(network.UpdateBeliefs(), 0); });
  EXPECT_NEAR(MeanOf(network, pair[0]), 3.0, 1e-6);
}

// --- Samples. Means of N samples are held to five standard errors: a false alarm in about 1.7
// million, once for all, since the seeds are fixed.

TEST(EquationSampler, MomentsAreThoseOfTheFormula) {
  ResetGenerators();
  KVN_network network;
  constexpr int kSamples = 20000;
  network.SetNumberOfSamples(kSamples);
  const int a = AddEquation(network, "a", "a = Normal(10, 2)");
  const int b = AddEquation(network, "b", "b = Uniform(0, 6)");
  const int c = AddEquation(network, "c", "2*c = a + b*4");  // mean 11, variance (4 + 48) / 4
  const int d = AddEquation(network, "d", "d = c - c");
  ASSERT_EQ(network.UpdateBeliefs(), 0);
  const struct {
    int handle;
    double mean, deviation;
  } expected[] = {{a, 10, 2}, {b, 3, std::sqrt(3.0)}, {c, 11, std::sqrt(13.0)}};
  for (const auto& e : expected) {
    EXPECT_NEAR(MeanOf(network, e.handle), e.mean, 5 * e.deviation / std::sqrt(kSamples));
    // That of a normal deviate; a uniform's deviation is better known.
    EXPECT_NEAR(EquationValueOf(network, e.handle).GetDeviation(), e.deviation,
                5 * e.deviation / std::sqrt(2.0 * kSamples));
    EXPECT_EQ(EquationValueOf(network, e.handle).GetSamples().size(), std::size_t{kSamples});
  }
  // One draw of a serves all that mention it.
  EXPECT_EQ(MeanOf(network, d), 0.0);
  EXPECT_EQ(EquationValueOf(network, d).GetDeviation(), 0.0);
}

TEST(EquationSampler, SamplesOfANodeGoTogetherWithThoseOfItsParents) {
  ResetGenerators();
  KVN_network network;
  network.SetNumberOfSamples(50);
  const int a = AddEquation(network, "a", "a = Uniform(0, 1)");
  const int b = AddEquation(network, "b", "b = 2*a");
  const int observed = AddEquation(network, "e", "e = 1");
  const int c = AddEquation(network, "c", "c = e + a");
  const std::vector<int> pair = AddComponent(network, {"x", "y"}, {});
  ASSERT_EQ(network.AddArc(a, pair[0], 0), 0);
  ASSERT_EQ(CoupledNode(network, pair[0]).SetEquation("x = y + a"), 0);
  ASSERT_EQ(CoupledNode(network, pair[1]).SetEquation("y = x/2"), 0);
  ASSERT_EQ(network.ValueOf(observed)->SetEvidence(100.0), 0);
  ASSERT_EQ(network.UpdateBeliefs(), 0);
  for (std::size_t i = 0; i < 50; i++) {
    const double drawn = EquationValueOf(network, a).GetSamples()[i].value;
    EXPECT_EQ(EquationValueOf(network, b).GetSamples()[i].value, 2 * drawn);
    EXPECT_EQ(EquationValueOf(network, c).GetSamples()[i].value, 100 + drawn);
    EXPECT_NEAR(EquationValueOf(network, pair[0]).GetSamples()[i].value, 2 * drawn, 1e-6);
  }
  EXPECT_EQ(EquationValueOf(network, observed).GetSampleCount(), 0);
}

TEST(EquationSampler, SeedDecidesAndASecondRunGoesOn) {
  KVN_network network;
  network.SetNumberOfSamples(10);
  const int a = AddEquation(network, "a", "a = Normal(0, 1)");
  const auto run = [&] {
    EXPECT_EQ(network.UpdateBeliefs(), 0);
    EXPECT_EQ(EquationValueOf(network, a).GetSampleCount(), 10);
    return MeanOf(network, a);
  };
  KVN_functionRandom().Seed(3);
  const double first = run();
  EXPECT_NE(run(), first);
  KVN_functionRandom().Seed(3);
  EXPECT_EQ(run(), first);
}

TEST(EquationSampler, NoSamplesAreAFailureAndUnkeptOnesAreCounted) {
  KVN_network network;
  const int a = AddEquation(network, "a", "a = Normal(0, 1) + 0/0");
  EquationValueOf(network, a).SetKeepSamples(false);
  for (int samples : {0, -3}) {
    network.SetNumberOfSamples(samples);
    const LogWatch log;
    EXPECT_EQ(network.UpdateBeliefs(), KVN_NO_USEFUL_SAMPLES);
    EXPECT_EQ(log.Texts(), (Ids{"No useful samples have been generated for some of nodes."}));
    EXPECT_FALSE(network.ValueOf(a)->IsValueValid());
  }
  network.SetNumberOfSamples(4);
  ASSERT_EQ(network.UpdateBeliefs(), 0);
  EXPECT_TRUE(std::isnan(MeanOf(network, a))) << "what isn't a number is a result like any other";
  EXPECT_EQ(EquationValueOf(network, a).GetDeviation(), 0.0);
  EXPECT_TRUE(EquationValueOf(network, a).GetSamples().empty());
}
