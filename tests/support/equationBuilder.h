#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "expressions/equation.h"
#include "expressions/equationSCC.h"
#include "network/network.h"
#include "tests/support/builders.h"
#include "values/valEqEvaluation.h"

/// Equation networks in a few lines. A builder that cannot do its work fails the running test.

inline KVN_equation& EquationNode(const KVN_network& network, int handle) {
  EXPECT_EQ(network.TypeOf(handle), KVN_TYPE_EQUATION);
  return static_cast<KVN_equation&>(*network.DefinitionOf(handle));
}

inline KVN_equationSCC& CoupledNode(const KVN_network& network, int handle) {
  EXPECT_EQ(network.TypeOf(handle), KVN_TYPE_EQUATION_SCC);
  return static_cast<KVN_equationSCC&>(*network.DefinitionOf(handle));
}

inline KVN_valEqEvaluation& EquationValueOf(const KVN_network& network, int handle) {
  return static_cast<KVN_valEqEvaluation&>(*network.ValueOf(handle));
}

/// Equation node with this text; an empty one leaves `id = 0`.
inline int AddEquation(KVN_network& network, const char* id, const std::string& text = "") {
  const int handle = network.AddNode(KVN_TYPE_EQUATION, id);
  EXPECT_GE(handle, 0) << id;
  if (!text.empty()) {
    EXPECT_EQ(EquationNode(network, handle).SetEquation(text), 0) << text;
  }
  return handle;
}

/// Coupled nodes with these identifiers, declared one component, with these texts.
inline std::vector<int> AddComponent(KVN_network& network, const std::vector<const char*>& ids,
                                     const std::vector<const char*>& texts) {
  std::vector<int> handles;
  for (const char* id : ids) handles.push_back(network.AddNode(KVN_TYPE_EQUATION_SCC, id));
  EXPECT_EQ(network.DeclareComponent(IntsOf(handles)), 0);
  for (std::size_t i = 0; i < texts.size(); ++i) {
    EXPECT_EQ(CoupledNode(network, handles[i]).SetEquation(texts[i]), 0) << texts[i];
  }
  return handles;
}

inline std::string TextOf(const KVN_equationSides& sides) {
  std::string text;
  sides.Print(text);
  return text;
}

inline std::string TextOf(const KVN_network& network, int handle) {
  return TextOf(EquationNode(network, handle).GetEquation());
}

/// Range and intervals named "i0", "i1", ... with these tops; the last is the upper bound.
inline void Discretise(KVN_network& network, int handle, double lower,
                       const std::vector<double>& tops) {
  KVN_equation& node = EquationNode(network, handle);
  node.SetBounds(lower, tops.back());
  std::vector<KVN_discInterval> intervals;
  for (double top : tops) intervals.push_back({"i" + std::to_string(intervals.size()), top});
  EXPECT_EQ(node.SetDiscIntervals(intervals), 0);
}
