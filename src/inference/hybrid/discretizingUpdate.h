#pragma once

class KVN_network;

/// Answers an equation network by the tables of its nodes over intervals: they become a discrete
/// network, which the chosen discrete algorithm updates, and the posteriors over the intervals go
/// back into the values.
///
/// Nodes with intervals take part, and the arcs between them; others without intervals only vary
/// over their ranges, or are held at their evidence. An observed node with intervals is observed in
/// the interval that holds its number. Missing tables are estimated and kept.
///
/// `equationHandle` is one node with intervals; KVN_NOT_APPLICABLE, with nothing done, for a node
/// that has none. Any other code is that of the step which failed; no value is valid then.
int DiscretizingUpdate(KVN_network& network, int equationHandle);
