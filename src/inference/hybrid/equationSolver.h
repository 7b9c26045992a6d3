#pragma once

class KVN_network;

/// Updates networks of equation nodes alone, forward from the nodes without parents. The values of
/// observed nodes are left as they are; a failure leaves every other value invalid.

/// Chooses the way: by samples when an equation holds a distribution, else a single pass.
/// KVN_REFUSED, told to the log, for a node of another kind and for a coupled equation with a
/// distribution.
int SolveEquations(KVN_network& network);

/// One number for each node, without spread.
int SolveDeterministic(KVN_network& network);

/// As many runs as the network's number of samples, each with new random numbers; every value gets
/// mean and deviation, and the samples unless it is told not to keep them. The draws come from the
/// generator of the function library. KVN_NO_USEFUL_SAMPLES, told to the log, for a number below 1.
int SampleEquations(KVN_network& network);
