#pragma once

class KVN_random;
class SampleNet;

/// What the adaptive samplers end with: draws `samples` samples from the importance tables as they
/// stand and writes the posteriors. A node whose outcomes gathered no useful weight ends it with
/// KVN_NO_USEFUL_SAMPLES: the values of the nodes before it are written and valid, and it is meant
/// that its own value is marked valid as well, with the numbers it had. KVN_NO_MEMORY.
[[nodiscard]] int RunSamplingPhase(SampleNet& net, int samples, KVN_random& random);
