#include "tests/support/randomBayes.h"

#include <gtest/gtest.h>

#include <numeric>

#include "network/network.h"
#include "tests/support/networkBuilder.h"
#include "values/nodeValue.h"

namespace {

/// A step that has to succeed.
void Must(int result) { EXPECT_EQ(result, 0); }

/// Removes every arc that closes a loop; the table keeps rows that sum to 1.
void CutLoops(KVN_network& network) {
  std::vector<int> group(network.GetSize());
  std::iota(group.begin(), group.end(), 0);
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    const KVN_intArray parents = network.GetParents(h);
    for (int parent : parents) {
      const int from = group[parent];
      const int to = group[h];
      if (from == to) Must(network.RemoveArc(parent, h, /*layer=*/0));
      for (int& member : group) member = member == from ? to : member;
    }
  }
}

void MakeRowsDeterministic(KVN_network& network, RandomSource& random, double share) {
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    if (network.TypeOf(h) != KVN_TYPE_CPT) continue;
    KVN_Dmatrix& table = TableOfNode(network, h);
    const int outcomes = network.DefinitionOf(h)->GetNumberOfOutcomes();
    for (int start = 0; start < table.GetSize(); start += outcomes) {
      if (!random.Chance(share)) continue;
      const int sure = random.Below(outcomes);
      for (int x = 0; x < outcomes; x++) table[start + x] = x == sure ? 1.0 : 0.0;
    }
  }
}

/// One configuration by handle, drawn parents first.
std::vector<int> DrawConfiguration(KVN_network& network, RandomSource& random) {
  std::vector<int> drawn(network.GetSize());
  for (int handle : network.GetOrderOfNodes()) {
    const KVN_Dmatrix& table = TableOfNode(network, handle);
    int row = 0;
    for (int parent : network.GetParents(handle)) {
      row = row * network.DefinitionOf(parent)->GetNumberOfOutcomes() + drawn[parent];
    }
    const int outcomes = network.DefinitionOf(handle)->GetNumberOfOutcomes();
    double left = random.Unit();
    for (int x = 0; x < outcomes; x++) {
      const double cell = table[row * outcomes + x];
      if (cell <= 0.0) continue;
      drawn[handle] = x;  // the last possible one if rounding leaves something
      left -= cell;
      if (left < 0.0) break;
    }
  }
  return drawn;
}

}  // namespace

void FillRandomBayes(KVN_network& network, std::uint64_t seed, const RandomBayesOptions& options) {
  network.SetUpdateFlags(0);
  RandomNetworkOptions plain = PlainNetworkOptions(options.nodes, options.maxParents);
  plain.maxOutcomes = options.maxOutcomes;
  plain.zeroShare = options.zeroShare;
  if (options.gates) {
    plain.kinds = {KVN_TYPE_CPT,       KVN_TYPE_CPT,         KVN_TYPE_CPT,  KVN_TYPE_TRUTHTABLE,
                   KVN_TYPE_NOISY_MAX, KVN_TYPE_NOISY_ADDER, KVN_TYPE_CAST, KVN_TYPE_DEMORGAN};
  }
  FillRandomNetwork(network, seed, plain);
  RandomSource random(seed + 1);
  if (options.polytree) CutLoops(network);
  MakeRowsDeterministic(network, random, options.deterministicShare);
}

void ObserveAtRandom(KVN_network& network, std::uint64_t seed, double share, bool possible) {
  RandomSource random(seed);
  const std::vector<int> drawn = DrawConfiguration(network, random);
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    const int outcome =
        possible ? drawn[h] : random.Below(network.DefinitionOf(h)->GetNumberOfOutcomes());
    if (random.Chance(share)) Must(network.ValueOf(h)->SetEvidence(outcome));
  }
}

void SoftenAtRandom(KVN_network& network, std::uint64_t seed, double share) {
  RandomSource random(seed);
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    if (network.ValueOf(h)->HasEvidence() || !random.Chance(share)) continue;
    const int outcomes = network.DefinitionOf(h)->GetNumberOfOutcomes();
    Must(network.ValueOf(h)->SetVirtualEvidence(random.Distribution(outcomes, 0.2)));
  }
}

void AimAtRandom(KVN_network& network, std::uint64_t seed, double share) {
  RandomSource random(seed);
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    if (random.Chance(share)) Must(network.SetTarget(h));
  }
}
