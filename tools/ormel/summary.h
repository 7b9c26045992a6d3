#pragma once

#include <nlohmann/json_fwd.hpp>

class KVN_network;

/// What `ormel info` tells of a network, as an object in the order in which it is shown.
///
///   identifier, name   texts, null when unset
///   nodes              number of nodes
///   nodesByKind        kind -> number, in the order of first appearance by handle
///   arcs, costArcs     numbers
///   largestTable       {node, numbers, shape}: the node whose table has the most cells, where a
///                      gate counts as the table that it stands for; null without any
///   numbers            numbers that all definitions keep: cells of tables, parameters of gates
///   submodels          identifiers, parents first, the root left out
///   properties         key -> value
nlohmann::ordered_json Summarize(KVN_network& network);
