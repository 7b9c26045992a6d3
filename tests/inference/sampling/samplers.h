#pragma once

#include "foundation/random.h"
#include "network/network.h"
#include "network/updateAlgorithm.h"

/// The samplers of the engine, and a run of one from a given seed.

struct SamplerName {
  const char* name;
  int code;
};

inline constexpr SamplerName kUnbiasedSamplers[] = {
    {"logic sampling", KVN_ALG_LOGIC_SAMPLING},
    {"likelihood weighting", KVN_ALG_LIKELIHOOD_WEIGHTING},
    {"backward sampling", KVN_ALG_BACKWARD_SAMPLING},
    {"adaptive importance", KVN_ALG_AIS_SAMPLING},
    {"epis", KVN_ALG_EPIS_SAMPLING},
};
inline constexpr SamplerName kForwardSamplers[] = {
    {"logic sampling", KVN_ALG_LOGIC_SAMPLING},
    {"likelihood weighting", KVN_ALG_LIKELIHOOD_WEIGHTING},
    {"self-importance", KVN_ALG_SELF_IMPORTANCE},
    {"backward sampling", KVN_ALG_BACKWARD_SAMPLING},
};
inline constexpr SamplerName kAdaptiveSamplers[] = {
    {"adaptive importance", KVN_ALG_AIS_SAMPLING},
    {"epis", KVN_ALG_EPIS_SAMPLING},
};

inline int RunSampler(KVN_network& network, int code, int samples, std::uint32_t seed) {
  network.SetDefaultBNAlgorithm(code);
  network.SetNumberOfSamples(samples);
  KVN_simpleSamplerRandom().Seed(seed);
  SetAdaptiveSeed(seed);
  const int result = network.UpdateBeliefs();
  UseClockForAdaptiveSeed();
  return result;
}
