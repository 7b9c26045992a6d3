// Posteriors of the samplers against enumeration. The tolerance follows from the run: its standard
// errors come from 20 batches, so that a posterior over its error follows Student's distribution
// with 19 degrees of freedom, which is beyond kQuantile once in a million times: one comparison in
// a million raises a false alarm, and about one run in a thousand would if the seeds weren't fixed.

#include <cmath>

#include "inference/sampling/samplingQuality.h"
#include "tests/inference/sampling/samplers.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/oracle.h"
#include "tests/support/randomBayes.h"

namespace {

constexpr double kQuantile = 7.07;
/// 1e-6 from both ends of the chi-squared distribution with 19 degrees of freedom, over 19.
constexpr double kLeastVariance = 0.109;
constexpr double kLargestVariance = 3.45;

/// A cell that the batches hardly saw has an error that nothing can be said about: it gets the one
/// of as many independent samples as the run was worth.
double ErrorOf(double posterior, double batchError, double effectiveSamples) {
  const double p = std::max(posterior, 1.0 / effectiveSamples);
  return std::max(batchError, std::sqrt(p * std::max(0.0, 1.0 - p) / effectiveSamples));
}

void ExpectPosteriorsAreLikely(KVN_network& network, const OracleResult& exact,
                               const SamplingQuality& quality) {
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    ASSERT_TRUE(network.ValueOf(h)->IsValueValid()) << "node " << h;
    const KVN_Dmatrix& posterior = MatrixOf(network, h);
    const double* errors = quality.GetStandardErrors(h);
    const double effective = quality.GetEffectiveShare(h) * network.GetNumberOfSamples();
    for (int k = 0; k < posterior.GetSize(); k++) {
      const double p = exact.posteriors[h][k];
      const double error = errors == nullptr ? 1e-12 : ErrorOf(p, errors[k], effective);
      EXPECT_LE(std::fabs(posterior[k] - p), kQuantile * error)
          << "node " << h << " outcome " << k << ": " << posterior[k] << " for " << p;
    }
  }
}

TEST(Samplers, AgreeWithEnumeration) {
  constexpr int kSamples = 20000;
  constexpr double kLeastEvidence = 0.02;  // of probability: enough samples remain
  for (const SamplerName& sampler : kUnbiasedSamplers) {
    int without = 0;
    int with = 0;
    for (std::uint64_t seed = 0; with < 6 || without < 6; seed++) {
      ASSERT_LT(seed, 100u);
      SCOPED_TRACE(std::string(sampler.name) + ", seed " + std::to_string(seed));
      KVN_network network;
      FillRandomBayes(network, seed, {.nodes = 7, .deterministicShare = 0.0});
      const bool observe = seed % 2 == 1;
      if (observe) ObserveAtRandom(network, seed, 0.3, /*possible=*/true);
      if (seed % 3 == 0) SoftenAtRandom(network, seed, 0.2);
      const OracleResult exact = EnumeratePosteriors(network);
      if (exact.probability < kLeastEvidence) continue;
      SamplingQuality quality;
      SetSamplingQuality(&quality);
      const int result = RunSampler(network, sampler.code, kSamples, 1000 + seed);
      SetSamplingQuality(nullptr);
      ASSERT_EQ(result, 0);
      ExpectPosteriorsAreLikely(network, exact, quality);
      (exact.probability < 1.0 - 1e-9 ? with : without)++;
    }
  }
}

/// X with two children, both observed: one part that no sampler can take apart.
int BuildFork(KVN_network& network) {
  const int x = AddCpt(network, "X", 3, {}, {0.5, 0.3, 0.2});
  const int y = AddCpt(network, "Y", 2, {x}, {0.9, 0.1, 0.4, 0.6, 0.2, 0.8});
  const int z = AddCpt(network, "Z", 2, {x}, {0.3, 0.7, 0.5, 0.5, 0.8, 0.2});
  EXPECT_EQ(network.ValueOf(y)->SetEvidence(1), 0);
  EXPECT_EQ(network.ValueOf(z)->SetEvidence(0), 0);
  return x;
}

struct QualityCase {
  const char* name;
  int code;
  double share;     // effective, of the samples
  double spread;    // its relative standard error, times the root of the number of samples
  double variance;  // of the posterior of X = 2, times the number of samples
};

// Weights are 0.03, 0.3 and 0.64, their mean 0.015 + 0.09 + 0.128 = 0.233, the posterior of X = 2
// is p = 0.128 / 0.233 = 0.54936. Logic sampling keeps 0.233 of the samples: variance
// p (1 - p) / 0.233 = 1.0625. Likelihood weighting has mean square 0.5 * 0.0009 + 0.3 * 0.09 +
// 0.2 * 0.4096 = 0.10937, share 0.233^2 / 0.10937 = 0.49638, and variance
// ((0.00045 + 0.027) p^2 + 0.08192 (1 - p)^2) / 0.233^2 = 0.45903. The share's own spread is
// sqrt(0.767 / 0.233) = 1.814 for a share of samples that are kept, and otherwise that of
// 2 w / 0.233 - w^2 / 0.10937 (Taylor series), 0.751.
const QualityCase kQualityCases[] = {
    {"logic sampling", KVN_ALG_LOGIC_SAMPLING, 0.233, 1.814, 1.0625},
    {"likelihood weighting", KVN_ALG_LIKELIHOOD_WEIGHTING, 0.49638, 0.751, 0.45903},
};

TEST(Samplers, KnowTheirOwnErrors) {
  constexpr int kSamples = 40000;
  for (const QualityCase& c : kQualityCases) {
    SCOPED_TRACE(c.name);
    KVN_network network;
    const int x = BuildFork(network);
    SamplingQuality quality;
    SetSamplingQuality(&quality);
    EXPECT_EQ(RunSampler(network, c.code, kSamples, 5), 0);
    SetSamplingQuality(nullptr);
    ASSERT_NE(quality.GetStandardErrors(x), nullptr);
    // 4.9 standard errors are left once in a million.
    const double tolerance = 4.9 * c.spread / std::sqrt(kSamples);
    EXPECT_NEAR(quality.GetEffectiveShare(x) / c.share, 1.0, tolerance);
    const double error = quality.GetStandardErrors(x)[2];
    const double ratio = error * error / (c.variance / kSamples);
    EXPECT_GT(ratio, kLeastVariance);
    EXPECT_LT(ratio, kLargestVariance);
    for (int settled : {x + 1, x + 100}) {  // by its evidence, and no node at all
      EXPECT_EQ(quality.GetStandardErrors(settled), nullptr);
      EXPECT_EQ(quality.GetEffectiveShare(settled), 1.0);
    }
  }
}

TEST(Samplers, GiveTheSameResultsWatchedOrNot) {
  for (const SamplerName& sampler : kUnbiasedSamplers) {
    SCOPED_TRACE(sampler.name);
    KVN_network network;
    const int x = BuildFork(network);
    ASSERT_EQ(RunSampler(network, sampler.code, 999, 3), 0);
    const KVN_Dmatrix plain = MatrixOf(network, x);
    SamplingQuality quality;
    SetSamplingQuality(&quality);
    EXPECT_EQ(RunSampler(network, sampler.code, 999, 3), 0);
    SetSamplingQuality(nullptr);
    for (int k = 0; k < 3; k++) EXPECT_EQ(MatrixOf(network, x)[k], plain[k]);
    EXPECT_EQ(RunSampler(network, sampler.code, 999, 4), 0);
    EXPECT_NE(MatrixOf(network, x)[0], plain[0]) << "the seed counts";
  }
}

// With much evidence the weights are so small that their squares are 0.
TEST(Samplers, KnowTheErrorsOfTinyWeights) {
  constexpr double kTiny = 0x1p-700;  // a power of two moves no other bit
  for (int code : {KVN_ALG_LIKELIHOOD_WEIGHTING, KVN_ALG_EPIS_SAMPLING}) {
    SCOPED_TRACE(code);
    double errors[2], shares[2];
    for (int isTiny : {0, 1}) {
      KVN_network network;
      const int x = BuildFork(network);
      if (isTiny == 1) WriteCells(network, x + 1, {0, 0.1 * kTiny, 0, 0.6 * kTiny, 0, 0.8 * kTiny});
      SamplingQuality quality;
      SetSamplingQuality(&quality);
      EXPECT_EQ(RunSampler(network, code, 1000, 5), 0);
      SetSamplingQuality(nullptr);
      errors[isTiny] = quality.GetStandardErrors(x)[2];
      shares[isTiny] = quality.GetEffectiveShare(x);
    }
    EXPECT_EQ(errors[1], errors[0]);
    EXPECT_EQ(shares[1], shares[0]);
    EXPECT_GT(errors[0], 0.0);
  }
}

TEST(Samplers, DoNotTellErrorsFromOneSample) {
  KVN_network network;
  const int x = BuildFork(network);
  SamplingQuality quality;
  SetSamplingQuality(&quality);
  EXPECT_EQ(RunSampler(network, KVN_ALG_LIKELIHOOD_WEIGHTING, 1, 3), 0);
  SetSamplingQuality(nullptr);
  EXPECT_TRUE(std::isnan(quality.GetStandardErrors(x)[0]));
  EXPECT_EQ(quality.GetEffectiveShare(x), 1.0);
}

// Without loops the messages are exact, and so are the importance tables: all samples weigh the
// same.
TEST(EpisSampling, DrawsFromThePosteriorWithoutLoops) {
  KVN_network network;
  AddCpt(network, "A", 2, {}, {0.3, 0.7});
  AddCpt(network, "B", 3, {0}, {0.5, 0.3, 0.2, 0.4, 0.4, 0.2});
  AddCpt(network, "E", 2, {1}, {0.1, 0.9, 0.3, 0.7, 0.9, 0.1});
  AddCpt(network, "F", 2, {0}, {0.2, 0.8, 0.6, 0.4});
  for (int h : {2, 3}) ASSERT_EQ(network.ValueOf(h)->SetEvidence(0), 0);
  SamplingQuality quality;
  SetSamplingQuality(&quality);
  EXPECT_EQ(RunSampler(network, KVN_ALG_EPIS_SAMPLING, 1000, 3), 0);
  SetSamplingQuality(nullptr);
  EXPECT_GT(quality.GetEffectiveShare(0), 1.0 - 1e-12);
}

}  // namespace
