// A program of somebody else: sees installed files only. The README shows its middle part.

#include <cmath>
#include <cstdio>
#include <initializer_list>

#include "definitions/cpt.h"
#include "network/network.h"
#include "values/nodeValue.h"

namespace {

int SetTable(KVN_network& network, int node, std::initializer_list<double> cells) {
  KVN_doubleArray values;
  for (double cell : cells) {
    if (values.Add(cell) < 0) return -1;
  }
  return static_cast<KVN_cpt*>(network.DefinitionOf(node))->SetProbabilities(values);
}

}  // namespace

int main() {
  KVN_network network;
  const int rain = network.AddNode(KVN_TYPE_CPT, "Rain");  // two outcomes, State0 and State1
  const int wet = network.AddNode(KVN_TYPE_CPT, "WetGrass");
  if (network.AddArc(rain, wet, /*layer=*/0) != 0) return 1;
  // Rows run through the parents' outcomes; each row is a distribution over the node's own.
  if (SetTable(network, rain, {0.2, 0.8}) != 0) return 2;
  if (SetTable(network, wet, {0.9, 0.1, 0.25, 0.75}) != 0) return 3;

  if (network.ValueOf(wet)->SetEvidence(0) != 0) return 4;
  if (network.UpdateBeliefs() != 0) return 5;
  KVN_Dmatrix* belief = nullptr;
  if (network.ValueOf(rain)->GetValue(belief) != 0) return 6;
  std::printf("P(Rain | WetGrass) = %.4f\n", (*belief)[0]);

  // 0.2 * 0.9 / (0.2 * 0.9 + 0.8 * 0.25) = 0.18 / 0.38
  return std::fabs((*belief)[0] - 0.18 / 0.38) < 1e-12 ? 0 : 7;
}
