#pragma once

class KVN_network;

/// Logic sampling (M. Henrion 1988, Propagating uncertainty in Bayesian networks by probabilistic
/// logic sampling): every node is drawn from its table, observed ones too, and a sample that
/// disagrees with the evidence is thrown away, as early as the order of the nodes allows.
///
/// Each sample that remains counts the same; the share of those is the probability of the evidence.
/// See RunForwardSampler for the results.
int RunLogicSampling(KVN_network& network);
