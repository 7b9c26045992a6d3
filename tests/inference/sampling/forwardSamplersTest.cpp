// The order in which the simple samplers draw, and the ends of a draw.

#include "foundation/resultCodes.h"
#include "inference/exact/relevanceGraph.h"
#include "inference/sampling/partOrder.h"
#include "inference/sampling/partSamples.h"
#include "network/node.h"
#include "tests/inference/sampling/samplers.h"
#include "tests/support/builders.h"
#include "tests/support/networkBuilder.h"
#include "tests/support/smallStack.h"

namespace {

constexpr std::uint32_t kBeforeOne = 4028364353;   // the next uniform is exactly 1.0
constexpr std::uint32_t kBeforeZero = 2708534849;  // ... 0.0

struct DrawCase {
  const char* name;
  std::uint32_t seed;
  std::vector<double> row;
  int outcome;
  bool found;
};
const DrawCase kDrawCases[] = {
    {"one is above no sum", kBeforeOne, {0.5, 0.5, 0.0}, 2, false},
    {"a sum above one is reached", kBeforeOne, {0.5, 0.6, 0.0}, 1, true},
    {"zero skips impossible ones", kBeforeZero, {0.0, 0.4, 0.6}, 1, true},
    {"a row that is no number", kBeforeZero, {0.0 / 0.0, 1}, 1, false},
};

TEST(DrawFrom, TakesTheFirstSumStrictlyAbove) {
  for (const DrawCase& c : kDrawCases) {
    SCOPED_TRACE(c.name);
    KVN_random random(c.seed);
    bool found = !c.found;
    EXPECT_EQ(DrawFrom(c.row.data(), static_cast<int>(c.row.size()), random, found), c.outcome);
    EXPECT_EQ(found, c.found);
  }
}

/// Handles in the order of the part.
std::vector<int> HandlesOf(RelevanceGraph& part) {
  std::vector<int> handles;
  for (int i = 0; i < part.GetSize(); i++) {
    EXPECT_EQ(part.Node(i).position, i);
    handles.push_back(part.Node(i).node->Handle());
  }
  return handles;
}

// A -> B -> C, A -> D, with C and D observed; D has the smaller share of zeros.
TEST(PartOrder, PutsParentsFirstAndEvidenceEarly) {
  KVN_network network;
  network.SetUpdateFlags(0);
  const int c = AddNodeBelow(network, KVN_TYPE_CPT, "C", 2, {});
  const int b = AddNodeBelow(network, KVN_TYPE_CPT, "B", 2, {});
  const int e = AddNodeBelow(network, KVN_TYPE_CPT, "E", 2, {});
  const int a = AddCpt(network, "A", 2, {}, {0.3, 0.7});
  const int d = AddCpt(network, "D", 2, {a}, {0.4, 0.6, 0.2, 0.8});
  ASSERT_EQ(network.AddArc(b, c, 0), 0);
  ASSERT_EQ(network.AddArc(a, b, 0), 0);
  ASSERT_EQ(network.AddArc(a, e, 0), 0);
  WriteCells(network, b, {0.1, 0.9, 0.6, 0.4});
  WriteCells(network, c, {0.5, 0.5, 1.0, 0.0});
  WriteCells(network, e, {0.1, 0.9, 0.2, 0.8});
  for (int h : {c, d}) ASSERT_EQ(network.ValueOf(h)->SetEvidence(0), 0);

  int result = 0;
  std::unique_ptr<RelevanceParts> parts = ReduceNetwork(network, true, true, result);
  ASSERT_EQ(parts->GetCount(), 1);
  ASSERT_EQ(SortParentsFirst((*parts)[0]), 0);
  EXPECT_EQ(HandlesOf((*parts)[0]), (std::vector<int>{a, b, c, e, d}));
  ASSERT_EQ(SortEvidenceFirst((*parts)[0]), 0);
  EXPECT_EQ(HandlesOf((*parts)[0]), (std::vector<int>{a, d, b, c, e}));
}

// The sixteenth part of a reduction has records marked 16, as sorted ones are.
TEST(PartOrder, SortsEveryPart) {
  KVN_network network;
  for (int i = 0; i < 20; i++) {
    const int below = AddNodeBelow(network, KVN_TYPE_CPT, nullptr, 2, {});
    const int above = AddCpt(network, nullptr, 2, {}, {0.5, 0.5});
    ASSERT_EQ(network.AddArc(above, below, 0), 0);
    WriteCells(network, below, {0.9, 0.1, 0.2, 0.8});
  }
  for (const SamplerName& sampler : kForwardSamplers) {
    ASSERT_EQ(RunSampler(network, sampler.code, 2000, 7), 0);
    for (int h = 0; h < 40; h += 2) {
      // 0.55, within 7 standard errors of at most 0.5 / sqrt(2000): left once in 4e11 times. What
      // self-importance adds to this is small, its tables staying close to the network's.
      EXPECT_NEAR(MatrixOf(network, h)[0], 0.55, 7 * 0.0112) << sampler.name << " node " << h;
    }
  }
}

TEST(ForwardSamplers, BothCodesOfLikelihoodWeightingAreOne) {
  KVN_network network;
  const int a = AddCpt(network, "A", 2, {}, {0.3, 0.7});
  AddCpt(network, "B", 3, {a}, {0.2, 0.3, 0.5, 0.6, 0.3, 0.1});
  ASSERT_EQ(RunSampler(network, KVN_ALG_LIKELIHOOD_WEIGHTING, 100, 9), 0);
  const double first = MatrixOf(network, a)[0];
  ASSERT_EQ(RunSampler(network, KVN_ALG_LIKELIHOOD_WEIGHTING_2, 100, 9), 0);
  EXPECT_EQ(MatrixOf(network, a)[0], first);
}

// The last parent of the finding is settled by the cut, so its slice has one open parent; the walk
// then goes on to the first parent, whose own parents are drawn from its slice.
TEST(BackwardSampling, WeighsASampleByTheSumOfItsSlices) {
  KVN_network network;
  const int a = AddCpt(network, "A", 2, {}, {0.25, 0.75});
  const int b = AddCpt(network, "B", 2, {a}, {0.5, 0.5, 0.1, 0.9});
  const int c = AddCpt(network, "C", 2, {b}, {0.75, 0.25, 0.25, 0.75});
  ASSERT_EQ(network.ValueOf(c)->SetEvidence(0), 0);
  // One sample: its weight cancels, and each node has one outcome for sure.
  ASSERT_EQ(RunSampler(network, KVN_ALG_BACKWARD_SAMPLING, 1, kBeforeZero), 0);
  // The first draw is 0.0: B = 0 from (0.75, 0.25). The generator's next output after that is of
  // state 2531011, 38 / 32767: A = 0 from (0.5, 0.1) scaled.
  EXPECT_TRUE(CellsNear(MatrixOf(network, b), {1, 0}, 0.0));
  EXPECT_TRUE(CellsNear(MatrixOf(network, a), {1, 0}, 0.0));
  // Drawn at 1.0 instead, no cell of the slice is found: B keeps no state, the walk ends there,
  // and all is drawn forward. A comes from its own table then, not from a slice.
  ASSERT_EQ(RunSampler(network, KVN_ALG_BACKWARD_SAMPLING, 1, kBeforeOne), 0);
  KVN_random random(kBeforeOne);
  (void)random.Next();
  EXPECT_EQ(MatrixOf(network, a)[0], random.Uniform() < 0.25 ? 1.0 : 0.0);
}

TEST(Samplers, NeedNoStackForALongChain) {
  constexpr int kNodes = 20000;  // a recursion would have 26 bytes for each
  RunInSmallStack([] {
    KVN_network network;
    network.SetUpdateFlags(0);
    int above = AddCpt(network, nullptr, 2, {}, {0.5, 0.5});
    const int first = above;
    for (int i = 1; i < kNodes; i++) {
      above = AddCpt(network, ("N" + std::to_string(i)).c_str(), 2, {above}, {0.9, 0.1, 0.2, 0.8});
    }
    ASSERT_EQ(network.ValueOf(above)->SetEvidence(0), 0);
    for (int code : {KVN_ALG_LOGIC_SAMPLING, KVN_ALG_LIKELIHOOD_WEIGHTING,
                     KVN_ALG_BACKWARD_SAMPLING, KVN_ALG_EPIS_SAMPLING}) {
      EXPECT_EQ(RunSampler(network, code, 20, 1), 0) << code;
      EXPECT_TRUE(network.ValueOf(first)->IsValueValid());
    }
  });
}

}  // namespace
