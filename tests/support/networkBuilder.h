#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "definitions/nodeDefinition.h"
#include "network/network.h"
#include "values/nodeValue.h"

/// Small networks in a few lines. A builder that cannot do its work fails the running test.

/// Node of a type with this many outcomes (0: leave the default) below these parents.
inline int AddNodeBelow(KVN_network& network, int type, const char* id, int outcomes,
                        const std::vector<int>& parents) {
  const int handle = network.AddNode(type, id);
  EXPECT_GE(handle, 0) << id;
  if (outcomes > 0) {
    EXPECT_EQ(network.DefinitionOf(handle)->SetNumberOfOutcomes(outcomes), 0) << id;
  }
  for (int parent : parents) EXPECT_EQ(network.AddArc(parent, handle, /*layer=*/0), 0) << id;
  return handle;
}

/// The node's table itself.
inline KVN_Dmatrix& TableOfNode(KVN_network& network, int handle) {
  KVN_Dmatrix* table = nullptr;
  EXPECT_EQ(network.DefinitionOf(handle)->GetDefinition(table), 0);
  return *table;
}

/// Writes the node's table in flat order, without telling the network.
inline void WriteCells(KVN_network& network, int handle, const std::vector<double>& cells) {
  KVN_Dmatrix& table = TableOfNode(network, handle);
  ASSERT_EQ(table.GetSize(), static_cast<int>(cells.size()));
  for (int i = 0; i < table.GetSize(); i++) table[i] = cells[i];
}

/// Chance node with a table. The cells are in flat order, own outcomes fastest.
inline int AddCpt(KVN_network& network, const char* id, int outcomes,
                  const std::vector<int>& parents, const std::vector<double>& cells) {
  const int handle = AddNodeBelow(network, KVN_TYPE_CPT, id, outcomes, parents);
  WriteCells(network, handle, cells);
  return handle;
}

/// The matrix of the node's value.
inline KVN_Dmatrix& MatrixOf(KVN_network& network, int handle) {
  KVN_Dmatrix* matrix = nullptr;
  EXPECT_EQ(network.ValueOf(handle)->GetValue(matrix), 0);
  return *matrix;
}
