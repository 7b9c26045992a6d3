#pragma once

class KVN_network;

/// Adaptive importance sampling (J. Cheng and M. J. Druzdzel 2000, AIS-BN: An adaptive importance
/// sampling algorithm for evidential reasoning in large Bayesian networks): raises the small
/// probabilities of nodes above evidence, makes their tables uniform next to it, learns from 25,000
/// samples with a learning rate that falls, then samples with what it has learnt.
///
/// Each part is drawn with a new seed; see NewAdaptiveSeed. See RunOnParts for the results.
int RunAisSampling(KVN_network& network);
