#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/builders.h"
#include "tests/support/networkBuilder.h"

/// What tests of definitions need beside the network builder.

/// A node without parents; 0 outcomes leave the default.
inline int AddNodeOf(KVN_network& network, int type, const char* id, int outcomes = 0) {
  return AddNodeBelow(network, type, id, outcomes, {});
}

/// Arcs from each of `parents`, in this order.
inline void AddArcs(KVN_network& network, const std::vector<int>& parents, int child) {
  for (int parent : parents) EXPECT_EQ(network.AddArc(parent, child, /*layer=*/0), 0);
}

/// The definition of a node as its own class.
template <class Definition>
Definition& DefinitionAs(KVN_network& network, int handle) {
  auto* definition = dynamic_cast<Definition*>(network.DefinitionOf(handle));
  EXPECT_NE(definition, nullptr) << "another kind of definition at node " << handle;
  return *definition;
}

/// The table of a definition that may stand outside a network.
inline KVN_Dmatrix& TableOfDefinition(KVN_nodeDefinition& definition) {
  KVN_Dmatrix* table = nullptr;
  EXPECT_EQ(definition.GetDefinition(table), 0);
  return *table;
}

inline std::vector<std::string> OutcomesAt(KVN_network& network, int handle) {
  const KVN_idArray* names = network.DefinitionOf(handle)->GetOutcomesNames();
  return names == nullptr ? std::vector<std::string>{} : TextsOf(*names);
}
