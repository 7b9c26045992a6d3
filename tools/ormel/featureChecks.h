#pragma once

#include <vector>

#include "ormel/formatCapacity.h"

class KVN_header;
class KVN_network;
class KVN_node;

/// A content of a network, what it is called in a loss, and whether the network has any.
struct NetworkCheck {
  Feature feature;
  const char* what;
  bool (*isThere)(KVN_network& network);
};
std::vector<NetworkCheck> NetworkChecks();

/// The same for a node.
struct NodeCheck {
  Feature feature;
  const char* what;
  bool (*isThere)(KVN_network& network, int handle);
};
std::vector<NodeCheck> NodeChecks();

/// Whether any diagnosis attribute differs from those of a new node.
bool HasDiagnosis(KVN_node& node);

/// Identifier and name that a reader finds in the emptied network, which are not those of a new
/// one: a file that has no place for them brings these back.
const KVN_header& HeaderBeforeReading();

/// Whether any node has been given a place on the diagram.
bool HasPlacedNodes(KVN_network& network);

/// Neither null nor empty.
bool IsSet(const char* text);
