#include <cmath>
#include <limits>
#include <memory>

#include "foundation/resultCodes.h"
#include "tests/support/equationBuilder.h"
#include "tests/support/networkBuilder.h"
#include "values/valEqEvaluation.h"
#include "values/valcontinuous.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr unsigned kEvidence = KVN_VALUE_EVIDENCE;
constexpr unsigned kValid = KVN_VALUE_VALID;
constexpr unsigned kPropagated = KVN_VALUE_PROPAGATED_EVIDENCE;

// A node of another kind: values look at their node only for intervals.
struct ValueHost {
  KVN_network network;
  int node = AddNodeBelow(network, KVN_TYPE_CPT, "N", 2, {});
};

struct EquationValue : ValueHost {
  KVN_valEqEvaluation value{&network, node};

  double Number() {
    double out = -99.0;
    EXPECT_EQ(value.GetValue(out), 0);
    return out;
  }
};

struct ContinuousValue : ValueHost {
  KVN_valcontinuous value{&network, node};
};

}  // namespace

TEST(ValEqEvaluation, EvidenceIsValidAndPropagatedEvidenceIsEvidenceToo) {
  EquationValue v;
  EXPECT_EQ(v.value.ClearEvidence(), KVN_REFUSED);
  ASSERT_EQ(v.value.SetEvidence(3.5), 0);
  EXPECT_EQ(v.value.GetFlags(), kEvidence | kValid);
  EXPECT_EQ(v.Number(), 3.5);
  EXPECT_EQ(v.value.ClearPropagatedEvidence(), KVN_REFUSED);
  EXPECT_EQ(v.value.GetFlags(), kEvidence | kValid);

  ASSERT_EQ(v.value.SetPropagatedEvidence(-2.0), 0);
  EXPECT_EQ(v.value.GetFlags(), kEvidence | kValid | kPropagated);
  EXPECT_EQ(v.Number(), -2.0);
  ASSERT_EQ(v.value.SetEvidence(4.0), 0);
  EXPECT_EQ(v.value.GetFlags(), kEvidence | kValid);
  ASSERT_EQ(v.value.SetPropagatedEvidence(-2.0), 0);
  EXPECT_EQ(v.value.ClearPropagatedEvidence(), 0);
  EXPECT_EQ(v.value.GetFlags(), 0u);
  ASSERT_EQ(v.value.SetPropagatedEvidence(1.0), 0);
  EXPECT_EQ(v.value.ClearEvidence(), 0);
  EXPECT_EQ(v.value.GetFlags(), 0u);
}

TEST(ValEqEvaluation, ProbabilitiesGoWithTheIntervals) {
  KVN_network network;
  const int x = AddEquation(network, "x");
  KVN_valEqEvaluation& value = EquationValueOf(network, x);
  value.AddSample(5);
  EXPECT_EQ(value.SetDiscretized({0.5, 0.5}), KVN_NOT_APPLICABLE);
  Discretise(network, x, 0, {1, 2, 3});
  EXPECT_EQ(value.SetDiscretized({0.5, 0.5}), KVN_REFUSED);
  EXPECT_TRUE(value.GetSamples().size() == 1 && value.GetMean() == 5 && !value.IsValueValid());
  EXPECT_EQ(value.SetDiscretized({0.5, 0.25, 0.25}), 0);
  EXPECT_TRUE(value.GetSamples().empty() && value.GetMean() == -1 && value.IsValueValid());
}

TEST(ValEqEvaluation, SamplesBecomeMeanAndDeviation) {
  const struct {
    const char* name;
    std::vector<double> samples;
    double mean, deviation;
  } cases[] = {
      {"three", {1, 2, 3}, 2.0, std::sqrt(14.0 / 3.0 - 4.0)},
      {"one", {7.25}, 7.25, 0.0},
      {"all alike", {0.1, 0.1}, 0.1, 0.0},
      {"not a number is", {1, kNaN}, kNaN, 0.0},
      // The mean of the squares less the square of the mean: 1e14 leaves 2^-6 for a step.
      {"far from 0", {1e7 + 1, 1e7 + 2, 1e7 + 3}, 1e7 + 2, std::sqrt(0.671875)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EquationValue v;
    v.value.ResetSamples();
    for (double sample : c.samples) v.value.AddSample(sample);
    EXPECT_FALSE(v.value.IsValueValid());
    v.value.FinishSamples();
    EXPECT_TRUE(v.value.IsValueValid());
    EXPECT_EQ(std::isnan(v.value.GetMean()), std::isnan(c.mean));
    if (!std::isnan(c.mean)) {
      EXPECT_DOUBLE_EQ(v.value.GetMean(), c.mean);
    }
    EXPECT_DOUBLE_EQ(v.value.GetDeviation(), c.deviation);
    EXPECT_EQ(v.value.GetSamples().size(), c.samples.size());
    for (const KVN_weightedSample& sample : v.value.GetSamples()) EXPECT_EQ(sample.weight, 1.0);
  }
}

TEST(ValEqEvaluation, WeightedSamplesAreTakenWithTheirWeights) {
  const struct {
    const char* name;
    std::vector<KVN_weightedSample> pairs;
    double mean, deviation, firstWeight;
  } cases[] = {
      {"weights", {{1, 1}, {5, 3}}, 4.0, -1.0, 1.0},
      {"no weight becomes 1", {{1, 0}, {3, 0}}, 2.0, -1.0, 1.0},
      {"one weight is enough", {{1, 0}, {3, 2}}, 3.0, -1.0, 0.0},
      {"weights that cancel out", {{9, -2}, {3, 1}}, 9.0, 0.0, -2.0},
      {"no number for a weight", {{9, 1}, {3, kNaN}}, 9.0, 0.0, 1.0},
      {"no samples", {}, 0.0, 0.0, 0.0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EquationValue v;
    v.value.SetWeightedSamples(c.pairs);
    EXPECT_EQ(v.value.GetMean(), c.mean);
    EXPECT_EQ(v.value.GetDeviation(), c.deviation);
    EXPECT_TRUE(v.value.IsValueValid());
    ASSERT_EQ(v.value.GetSamples().size(), c.pairs.size());
    const double first = c.pairs.empty() ? 0.0 : v.value.GetSamples()[0].weight;
    EXPECT_EQ(first, c.firstWeight);
  }
}

TEST(ValEqEvaluation, CopiesKeepEvidenceAndResults) {
  EquationValue v;
  v.value.SetKeepSamples(false);
  v.value.SetWeightedSamples({{1, 1}, {5, 3}});
  ASSERT_EQ(v.value.SetEvidence(8.0), 0);
  std::unique_ptr<KVN_nodeValue> copy(CloneValue(v.value));
  ASSERT_NE(copy, nullptr);
  auto& taken = static_cast<KVN_valEqEvaluation&>(*copy);
  double number = 0.0;
  ASSERT_EQ(taken.GetValue(number), 0);
  EXPECT_EQ(number, 8.0);
  EXPECT_EQ(taken.GetFlags(), kEvidence | kValid);
  EXPECT_EQ(taken.GetMean(), 4.0);
  EXPECT_EQ(taken.GetSamples().size(), 2u);
  EXPECT_FALSE(taken.GetKeepSamples());

  // Propagated evidence arrives as evidence, meant.
  ASSERT_EQ(v.value.SetPropagatedEvidence(6.0), 0);
  ASSERT_EQ(taken.Assign(v.value), 0);
  EXPECT_EQ(taken.GetFlags(), kEvidence | kValid);
  ASSERT_EQ(taken.GetValue(number), 0);
  EXPECT_EQ(number, 6.0);

  // Another kind of value has nothing to offer but its flags.
  ASSERT_EQ(v.network.ValueOf(v.node)->SetEvidence(1), 0);
  ASSERT_EQ(taken.Assign(*v.network.ValueOf(v.node)), 0);
  EXPECT_EQ(taken.GetFlags(), kEvidence | kValid);
  EXPECT_TRUE(taken.GetSamples().empty());
  EXPECT_EQ(taken.GetMean(), 0.0);
}

TEST(Valcontinuous, EvidenceLeavesTheValidMarkAlone) {
  ContinuousValue v;
  ASSERT_EQ(v.value.SetEvidence(2.5), 0);
  EXPECT_EQ(v.value.GetFlags(), kEvidence);
  EXPECT_EQ(v.value.GetEvidenceValue(), 2.5);
  double out = 0.0;
  EXPECT_EQ(v.value.GetValue(out), KVN_NOT_APPLICABLE);
  ASSERT_EQ(v.value.SetPropagatedEvidence(1.5), 0);
  EXPECT_EQ(v.value.GetFlags(), kPropagated);
  v.value.AddSample(1.0, 0.5);
  v.value.FinishSamples();
  EXPECT_EQ(v.value.GetAccumulator(), 1);
  EXPECT_EQ(v.value.ClearPropagatedEvidence(), 0);
  EXPECT_EQ(v.value.GetAccumulator(), 0);
  EXPECT_EQ(v.value.GetFlags(), kValid);
  EXPECT_EQ(v.value.ClearEvidence(), 0);
}
