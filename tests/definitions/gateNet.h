#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "network/network.h"
#include "tests/support/builders.h"

/// A few roundings of numbers of the order of 1.
constexpr double kGateRounding = 1e-15;

/// A binary gate with parents of its own class, which were added one by one.
template <class Gate>
struct GateNet {
  explicit GateNet(int parentCount) {
    for (int i = 0; i < parentCount; i++) {
      parents.push_back(network.AddNode(Type(), nullptr));
      EXPECT_EQ(network.AddArc(parents.back(), handle, 0), 0);
    }
  }

  static int Type() { return Gate(nullptr, -1).GetType(); }
  Gate& gate() { return static_cast<Gate&>(*network.DefinitionOf(handle)); }

  /// Whether the cells of "True" are these, and those of "False" what is left of 1.
  testing::AssertionResult HasRows(const std::vector<double>& rows) {
    KVN_Dmatrix* table = nullptr;
    EXPECT_EQ(gate().GetDefinition(table), 0);
    std::vector<double> cells;
    for (double p : rows) {
      cells.push_back(p);
      cells.push_back(1 - p);
    }
    return CellsNear(*table, cells, kGateRounding);
  }

  KVN_network network;
  int handle = network.AddNode(Type(), "gate");
  std::vector<int> parents;
};
