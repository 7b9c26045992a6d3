#pragma once

class KVN_network;

/// Likelihood weighting (R. Fung and K. C. Chang 1990, Weighing and integrating evidence for
/// stochastic simulation in Bayesian networks; R. D. Shachter and M. A. Peot 1990, Simulation
/// approaches to general probabilistic inference on belief networks): observed nodes are set, the
/// others drawn from their tables, and a sample counts with the probability of the evidence given
/// the parents that were drawn. Two algorithm codes lead here.
///
/// See RunForwardSampler for the results.
int RunLikelihoodWeighting(KVN_network& network);
