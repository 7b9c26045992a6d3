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
  const double kFar = std::sqrt(0.671875);
  const struct {
    const char* name;
    bool drawn;  // one by one, with weights of 1, or else given as a whole
    std::vector<KVN_weightedSample> pairs;
    double mean, deviation, firstWeight;
  } cases[] = {
      {"three", true, {{1, 1}, {2, 1}, {3, 1}}, 2.0, std::sqrt(14.0 / 3.0 - 4.0), 1.0},
      {"one", true, {{7.25, 1}}, 7.25, 0.0, 1.0},
      {"all alike", true, {{0.1, 1}, {0.1, 1}}, 0.1, 0.0, 1.0},
      {"not a number is", true, {{1, 1}, {kNaN, 1}}, kNaN, 0.0, 1.0},
      // The mean of the squares less the square of the mean: 1e14 leaves 2^-6 for a step.
      {"far from 0", true, {{1e7 + 1, 1}, {1e7 + 2, 1}, {1e7 + 3, 1}}, 1e7 + 2, kFar, 1.0},
      {"weights", false, {{1, 1}, {5, 3}}, 4.0, -1.0, 1.0},
      {"no weight becomes 1", false, {{1, 0}, {3, 0}}, 2.0, -1.0, 1.0},
      {"one weight is enough", false, {{1, 0}, {3, 2}}, 3.0, -1.0, 0.0},
      {"weights that cancel out", false, {{9, -2}, {3, 1}}, 9.0, 0.0, -2.0},
      {"no number for a weight", false, {{9, 1}, {3, kNaN}}, 9.0, 0.0, 1.0},
      {"no samples", false, {}, 0.0, 0.0, 0.0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EquationValue v;
    v.value.ResetSamples();
    if (c.drawn) {
      for (const KVN_weightedSample& sample : c.pairs) v.value.AddSample(sample.value);
      EXPECT_FALSE(v.value.IsValueValid());
      v.value.FinishSamples();
    } else {
      v.value.SetWeightedSamples(c.pairs);
    }
    EXPECT_TRUE(v.value.IsValueValid());
    EXPECT_TRUE(v.value.GetMean() == c.mean || std::isnan(c.mean)) << v.value.GetMean();
    EXPECT_EQ(std::isnan(v.value.GetMean()), std::isnan(c.mean));
    EXPECT_DOUBLE_EQ(v.value.GetDeviation(), c.deviation);
    ASSERT_EQ(v.value.GetSamples().size(), c.pairs.size());
    if (!c.pairs.empty()) {
      EXPECT_EQ(v.value.GetSamples()[0].weight, c.firstWeight);
    }
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
