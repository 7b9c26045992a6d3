#include "inference/sampling/sampleNet.h"

#include <gtest/gtest.h>

#include "tests/inference/sampling/samplers.h"
#include "tests/support/builders.h"
#include "tests/support/networkBuilder.h"

namespace {

constexpr std::uint32_t kBeforeOne = 4028364353;   // the next uniform is exactly 1.0
constexpr std::uint32_t kBeforeZero = 2708534849;  // ... 0.0

/// A -> B -> E (observed) and A -> D, in one part and in this order.
class SampleNetTest : public testing::Test {
 protected:
  void SetUp() override {
    network.SetUpdateFlags(0);
    AddCpt(network, "A", 2, {}, {0.5, 0.5});
    AddCpt(network, "B", 3, {0}, {0.5, 0.3, 0.2, 0.1, 0.1, 0.8});
    AddCpt(network, "E", 2, {1}, {0.0, 1.0, 0.25, 0.75, 0.5, 0.5});
    AddCpt(network, "D", 2, {0}, {0.3, 0.7, 0.6, 0.4});
    ASSERT_EQ(network.ValueOf(2)->SetEvidence(0), 0);
    int result = 0;
    parts = ReduceNetwork(network, true, true, result);
    ASSERT_EQ(parts->GetCount(), 1);
    net = std::make_unique<SampleNet>((*parts)[0]);
    ASSERT_EQ(net->Build(), 0);
    ASSERT_EQ(net->PrepareTables(), 0);
    net->ClearBeliefs();
  }

  KVN_network network;
  std::unique_ptr<RelevanceParts> parts;
  std::unique_ptr<SampleNet> net;
};

TEST_F(SampleNetTest, MarksWhatLiesAboveEvidence) {
  const bool expected[] = {true, true, false, false};
  for (int i = 0; i < 4; i++) EXPECT_EQ((*net)[i].relevantAncestor, expected[i]) << i;
}

TEST_F(SampleNetTest, StopsASampleOfNoWeight) {
  (*net)[3].state = 1;
  (*net)[1].icpt.FillWith(0.0);
  for (int row = 0; row < 2; row++) (*net)[1].icpt[3 * row] = 1.0;  // B = 0, which rules E out
  KVN_random random(1);
  EXPECT_EQ(net->DrawSample(random), 0.0);
  EXPECT_EQ((*net)[1].state, 0);
  KVN_random twice(1);
  (void)twice.Next();
  (void)twice.Next();
  EXPECT_EQ(random.GetState(), twice.GetState()) << "D is not drawn";
  EXPECT_EQ((*net)[3].state, 1) << "and keeps the state it had";
}

TEST_F(SampleNetTest, WeighsBothKindsOfNodes) {
  (*net)[1].icpt.FillWith(0.0);
  for (int row = 0; row < 2; row++) (*net)[1].icpt[3 * row + 2] = 1.0;  // B = 2
  (*net)[0].icpt[0] = 1.0;                                              // A = 0
  KVN_random random(1);
  // A 0.5 / 1, B 0.2 / 1, E 0.5, D 1.
  EXPECT_DOUBLE_EQ(net->DrawSample(random), 0.05);
  EXPECT_EQ((*net)[2].cell, 4) << "the row of B = 2";
}

struct EndCase {
  const char* name;
  std::uint32_t seed;
  std::vector<double> importance;  // of A
  int outcome;
  double factor;
};
const EndCase kEndCases[] = {
    {"one falls through to the last", kBeforeOne, {0.5, 0.25}, 1, 2.0},
    {"but not to one of importance 0", kBeforeOne, {0.25, 0.0}, 0, 2.0},
    {"one is a little less than 1", kBeforeOne, {1.0, 0.5}, 0, 0.5},
    {"zero is a little more than 0", kBeforeZero, {0.0, 1.0}, 1, 0.5},
    {"reached is enough", 0, {38 / 32767.0, 0.5}, 0, 0.5 * 32767.0 / 38},
};

TEST_F(SampleNetTest, DrawsAtTheEnds) {
  (*net)[1].icpt.FillWith(1.0);                // B = 0
  WriteCells(network, 2, {1, 0, 1, 0, 1, 0});  // which doesn't weigh the sample
  for (const EndCase& c : kEndCases) {
    SCOPED_TRACE(c.name);
    for (int k = 0; k < 2; k++) (*net)[0].icpt[k] = c.importance[k];
    KVN_random random(c.seed);
    const double weight = net->DrawSample(random);
    EXPECT_EQ((*net)[0].state, c.outcome);
    EXPECT_DOUBLE_EQ(weight, c.factor * (*(*net)[1].cpt)[(*net)[1].cell]);
  }
}

// A second round does change the messages between two causes and their two findings, but is made
// only where the network is deep enough, be it by a chain elsewhere.
TEST(EpisSampling, MakesNoMoreRoundsThanTheNetworkIsDeep) {
  for (bool isDeep : {false, true}) {
    SCOPED_TRACE(isDeep);
    KVN_network network;
    const int a = AddCpt(network, "A", 2, {}, {0.3, 0.7});
    const int b = AddCpt(network, "B", 2, {}, {0.1, 0.9});
    for (const char* id : {"C", "D"}) {
      const int finding = AddCpt(network, id, 2, {a, b}, {0.9, 0.1, 0.2, 0.8, 0.4, 0.6, 0.7, 0.3});
      ASSERT_EQ(network.ValueOf(finding)->SetEvidence(0), 0);
    }
    int last = AddCpt(network, "E", 2, {}, {0.5, 0.5});
    for (int i = 0; i < (isDeep ? 2 : 1); i++) {
      last = AddCpt(network, nullptr, 2, {last}, {0.9, 0.1, 0.2, 0.8});
    }
    double posteriors[2];
    for (int proplen : {1, 2}) {
      EpisParameters settings;
      settings.proplen = proplen;
      ASSERT_EQ(network.SetEpisParams(settings), 0);
      ASSERT_EQ(RunSampler(network, KVN_ALG_EPIS_SAMPLING, 500, 3), 0);
      posteriors[proplen - 1] = MatrixOf(network, a)[0];
    }
    EXPECT_EQ(posteriors[0] != posteriors[1], isDeep);
  }
}

// A part of one node goes through the whole algorithm too: its belief is sampled.
TEST(AdaptiveSamplers, SampleALoneNode) {
  for (const SamplerName& sampler : kAdaptiveSamplers) {
    SCOPED_TRACE(sampler.name);
    KVN_network network;
    const int a = AddCpt(network, "A", 2, {}, {0.25, 0.75});
    ASSERT_EQ(RunSampler(network, sampler.code, 1000, 3), 0);
    EXPECT_NE(MatrixOf(network, a)[0], 0.25);
    // Within 4.9 standard errors sqrt(0.1875 / 1000), left once in a million.
    EXPECT_NEAR(MatrixOf(network, a)[0], 0.25, 4.9 * 0.0137);
  }
}

TEST(AdaptiveSamplers, TakeTheirSeedFromTheClock) {
  for (const SamplerName& sampler : kAdaptiveSamplers) {
    SCOPED_TRACE(sampler.name);
    KVN_network network;
    const int a = AddCpt(network, "A", 2, {}, {0.25, 0.75});
    ASSERT_EQ(RunSampler(network, sampler.code, 200, 5), 0);
    const double seeded = MatrixOf(network, a)[0];
    SetClockForTests([] { return KVN_clockReading{4, 1}; });
    EXPECT_EQ(network.UpdateBeliefs(), 0);
    SetClockForTests(nullptr);
    EXPECT_EQ(MatrixOf(network, a)[0], seeded) << "4 xor 1";
  }
}

}  // namespace
