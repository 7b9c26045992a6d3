// Adaptive importance sampling draws without bias whatever it learns, so that no posterior shows a
// wrong turn in its learning: it is held against a plain rendering on the same stream.

#include <cmath>

#include "inference/sampling/samplingQuality.h"
#include "tests/inference/sampling/samplers.h"
#include "tests/support/builders.h"
#include "tests/support/networkBuilder.h"

namespace {

using Row = std::vector<double>;

// A -> B -> E and A -> D, with E observed in its first state.
const Row kA = {0.05, 0.95};
const Row kB[2] = {
    {0.5, 0.3, 0.2},
    {0.9, 0.1, 0.0},
};
const Row kD[2] = {
    {0.3, 0.7},
    {0.6, 0.4},
};
const double kE[3] = {0.01, 0.3, 0.9};  // probability of the evidence for each state of B

class PlainAis {
 public:
  explicit PlainAis(std::uint32_t seed) : random(seed) {}

  /// Posterior of A, B, D.
  void Run(int samples) {
    // A lies above evidence: 0.05 is raised to 0.1. B is a parent of it: equal parts. D is neither.
    a = {0.1, 0.95 - (0.1 - 0.05)};
    b[0] = {1.0 / 3, 1.0 / 3, 1.0 / 3};
    b[1] = {0.5, 0.5, 0.0};
    double rate = 0.4;
    ClearScores();
    for (int s = 1; s <= 25000; s++) {
      const double weight = Draw();
      aScore[states[0]] += std::pow(a[states[0]] * weight, 2);
      bScore[states[0]][states[1]] += std::pow(b[states[0]][states[1]] * weight, 2);
      if (s % 2500 != 0) continue;
      Update(a, aScore, rate);
      for (int i = 0; i < 2; i++) Update(b[i], bScore[i], rate);
      ClearScores();
      rate *= 0.9;
    }
    for (int s = 0; s < samples; s++) {
      const double weight = Draw();
      for (int i = 0; i < 3; i++) posterior[i][states[i]] += weight;
      total += weight;
    }
    for (Row& row : posterior) {
      for (double& cell : row) cell /= total;
    }
  }

  std::vector<Row> posterior = {
      {0, 0},
      {0, 0, 0},
      {0, 0 }
  };

 private:
  int DrawState(const Row& row) {
    const double r = random.Uniform();
    double sum = 0.0;
    for (std::size_t k = 0; k < row.size(); k++) {
      if (r <= (sum += row[k]) && r > 0.0) return static_cast<int>(k);
    }
    return r > 0.0 ? static_cast<int>(row.size()) - 1 : 0;
  }

  double Draw() {
    states[0] = DrawState(a);
    const double first = kA[states[0]] / a[states[0]];
    states[1] = DrawState(b[states[0]]);
    const double second = kB[states[0]][states[1]] / b[states[0]][states[1]];
    const double weight = first * second * kE[states[1]];
    states[2] = DrawState(kD[states[0]]);
    return weight;
  }

  static void Update(Row& row, const Row& score, double rate) {
    double sum = 0.0;
    for (double cell : score) sum += cell;
    if (sum == 0.0) return;
    for (std::size_t k = 0; k < row.size(); k++) {
      row[k] = (1 - rate) * row[k] + rate * score[k] / sum;
    }
  }

  void ClearScores() {
    aScore.assign(2, 0.0);
    for (Row& row : bScore) row.assign(3, 0.0);
  }

  KVN_random random;
  Row a, aScore, b[2], bScore[2];
  int states[3] = {};
  double total = 0.0;
};

TEST(AisSampling, LearnsAsItShould) {
  constexpr std::uint32_t kSeed = 11;
  constexpr int kSamples = 500;
  KVN_network network;
  AddCpt(network, "A", 2, {}, kA);
  AddCpt(network, "B", 3, {0}, {0.5, 0.3, 0.2, 0.9, 0.1, 0.0});
  AddCpt(network, "E", 2, {1}, {0.01, 0.99, 0.3, 0.7, 0.9, 0.1});
  AddCpt(network, "D", 2, {0}, {0.3, 0.7, 0.6, 0.4});
  ASSERT_EQ(network.ValueOf(2)->SetEvidence(0), 0);
  ASSERT_EQ(RunSampler(network, KVN_ALG_AIS_SAMPLING, kSamples, kSeed), 0);
  PlainAis expected(kSeed);
  expected.Run(kSamples);
  const int handles[] = {0, 1, 3};
  for (int i = 0; i < 3; i++) {
    EXPECT_TRUE(CellsNear(MatrixOf(network, handles[i]), expected.posterior[i], 1e-12)) << i;
  }
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
