#pragma once

class KVN_network;

/// Exact inference by messages between neighbours, in a network without loops (J. Pearl,
/// "Probabilistic Reasoning in Intelligent Systems", 1988, section 4.3).
///
/// It works on the network as it stands, without relevance reasoning, and computes every node
/// whether it is a target or not. One walk starts at the first node, parents first. It is meant
/// that nodes of another connected component are not reached and still become valid: their
/// matrices hold what they held before, 0.0 in new ones.
///
/// A walk alone can leave nodes behind, since an observed node that was visited doesn't relay what
/// a parent learns later to its other parents, and a message divided by zero is no number. So the
/// reached nodes that are off by more than 1e-12 are corrected afterwards; a walk that would take
/// long isn't even finished. Contradictory evidence has no exact answer: what the whole walk leaves
/// stands then, uniform wherever a sum was zero.
///
/// KVN_FAILURE with a message in the log, and nothing computed, when the network has a loop;
/// KVN_REFUSED for a node without a fitting table; KVN_NO_MEMORY; KVN_EXPRESSION_ERROR where a
/// child doesn't list its parent, which no operation of the network brings about. After any but the
/// first nothing without evidence is valid.
int PolytreeUpdate(KVN_network& network);
