#pragma once

class KVN_network;

/// Self-importance sampling (R. D. Shachter and M. A. Peot 1990, Simulation approaches to general
/// probabilistic inference on belief networks): likelihood weighting that draws from tables of its
/// own, which it bends after every hundred samples towards the configurations that counted.
///
/// It is meant that the ratio of table to importance enters a sample's weight squared, so that the
/// posteriors lean towards what the tables alone would draw. The tables are revised only when
/// sample 100, 200, ... (from 0) of the part is one that counts.
///
/// See RunForwardSampler for the results.
int RunSelfImportance(KVN_network& network);
