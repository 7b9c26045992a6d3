#pragma once

class KVN_network;
class SampleNet;

/// Takes the valid mark off every value without evidence, reduces the network and runs `algorithm`
/// on a sample network of each of its parts, those of one node too. The first part that fails ends
/// the run with KVN_NO_USEFUL_SAMPLES and the samplers' one message, whatever the algorithm's own
/// code was; the parts after it aren't computed. KVN_NO_MEMORY and KVN_REFUSED for a part that
/// can't be made ready, as far as the run got. `algorithm` is handed `rounds`, of propagation, as
/// it stands.
int RunOnParts(KVN_network& network, int (*algorithm)(SampleNet& net, int rounds), int rounds);
