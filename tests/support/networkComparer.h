#pragma once

#include <gtest/gtest.h>

#include <iosfwd>
#include <string>
#include <vector>

class KVN_network;

/// Comparison of two networks field by field, by identifiers: handles, and with them the order of
/// the nodes in the table, may differ; the order of parents, outcomes, properties and documents may
/// not.
///
/// Fields are named "group.field", so that a test can leave one field or a group out:
///
///   node             node.exists node.kind node.target node.submodel node.parents
///   submodel         submodel.exists submodel.parent
///   definition       definition.outcomes definition.numbers definition.strengths
///                    definition.function (the discrete settings of a gate) definition.shape
///   text             text.identifier (of the network) text.name text.comment text.properties
///                    text.documents text.boxes text.creation
///   layout           layout.position layout.screen layout.window
///   diagnosis        diagnosis.type diagnosis.flags diagnosis.showAs diagnosis.faults
///                    diagnosis.default diagnosis.documents diagnosis.comments diagnosis.question
///   cost             cost.parents cost.numbers
///   setting          setting.samples setting.showAs setting.discretization setting.algorithms
///                    setting.epis setting.solver setting.flags setting.noisyMaxRelevance
///   evidence         evidence.outcome evidence.virtual
struct NetworkDifference {
  std::string node;   // identifier of the node or submodel; empty for the network itself
  std::string field;  // see above
  std::string text;   // the two contents
};
std::ostream& operator<<(std::ostream& stream, const NetworkDifference& difference);

struct NetworkCompareOptions {
  /// Largest difference of two numbers that count as equal; NaN equals NaN, and infinity itself.
  double tolerance = 0.0;
  /// Compares definitions by the full tables that they stand for, and neither the kind nor the
  /// parameters: for formats that turn gates into tables.
  bool byTable = false;
  /// An unset text equals an empty one.
  bool unsetIsEmpty = false;
  /// Fields or groups to leave out.
  std::vector<std::string> ignored;
};

std::vector<NetworkDifference> CompareNetworks(KVN_network& first, KVN_network& second,
                                               const NetworkCompareOptions& options = {});

/// The same for EXPECT_TRUE; names at most ten of the differences.
testing::AssertionResult NetworksEqual(KVN_network& first, KVN_network& second,
                                       const NetworkCompareOptions& options = {});
