#pragma once

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>

#include "definitions/nodeDefinition.h"
#include "foundation/doubleArray.h"
#include "network/network.h"

/// Shapes of large binary networks, always the same: a chain, nodes with three parents drawn from
/// all earlier nodes, and one parent of all the others.
enum Shape { kChain = 0, kThreeParents = 1, kStar = 2 };
inline constexpr const char* kShapeNames[] = {"chain", "three parents", "star"};

/// Fills an empty network with one of the shapes; numbers have eight decimals.
class ShapeBuilder {
 public:
  ShapeBuilder(KVN_network& target, int ofShape) : network(target), shape(ofShape) {}

  bool Build(int nodes) {
    for (int i = 0; i < nodes; i++) {
      if (!AddNode(i)) return false;
    }
    return true;
  }

 private:
  bool AddNode(int index) {
    const int handle = network.AddNode(KVN_TYPE_CPT, ("N" + std::to_string(index)).c_str());
    if (handle < 0) return false;
    const int wanted = shape == kThreeParents ? 3 : 1;
    while (network.GetNumberOfParents(handle) < std::min(wanted, index)) {
      (void)network.AddArc(DrawParent(index), handle, /*layer=*/0);  // refused: it is one already
    }
    KVN_nodeDefinition& definition = *network.DefinitionOf(handle);
    KVN_doubleArray numbers;
    while (numbers.GetNumItems() < definition.GetSize()) {
      const double first = static_cast<double>(engine() % 99999999 + 1) * 1e-8;
      if (numbers.Add(first) != 0 || numbers.Add(1.0 - first) != 0) return false;
    }
    return definition.SetDefinition(numbers) == 0;
  }

  int DrawParent(int index) {
    if (shape == kThreeParents) {
      return static_cast<int>(engine() % static_cast<std::uint64_t>(index));
    }
    return shape == kChain ? index - 1 : 0;
  }

  KVN_network& network;
  int shape;
  std::mt19937_64 engine{20240611};
};
