#pragma once

class KVN_network;

/// Backward sampling (R. Fung and B. Del Favero 1994, Backward simulation in Bayesian networks):
/// from each finding upward, the parents that aren't set are drawn together from the table's slice
/// at the child's outcome, whose sum enters the weight; what remains is drawn forward from the
/// tables, and a node that was set from below without being the start of such a draw weighs the
/// sample with its own probability.
///
/// A walk up follows first parents only, and ends at a node that it was at before. When the draw
/// finds no cell, no parent is set by it and nothing makes up for that (intended): it needs a draw
/// of exactly 1.0.
///
/// The parts are computed one after the other. See RunPartByPart for the results.
int RunBackwardSampling(KVN_network& network);
