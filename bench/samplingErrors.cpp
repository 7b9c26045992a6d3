// Error of the samplers against their number of samples, as lines for plotSamplingErrors.sh.
//
// usage: samplingErrors NETWORK...
//
// For each network with its reference evidence and each sampler one block: a line `# NETWORK
// SAMPLER`, then `SAMPLES ERROR` per line, two blank lines. The error is the root of the mean
// square over all states of the unobserved nodes and over kSeeds runs; a number of samples at which
// a run failed has the error nan. Loopy propagation has no samples: its one error stands for all
// numbers.

#include <cmath>
#include <cstdio>

#include "bench/referenceCase.h"
#include "foundation/random.h"
#include "network/updateAlgorithm.h"

namespace {

constexpr int kSeeds = 5;
constexpr int kSamples[] = {100, 316, 1000, 3162, 10000, 31623, 100000};

struct Sampler {
  const char* name;
  int code;
};
constexpr Sampler kSamplers[] = {
    {"logic", KVN_ALG_LOGIC_SAMPLING},    {"likelihood", KVN_ALG_LIKELIHOOD_WEIGHTING},
    {"self", KVN_ALG_SELF_IMPORTANCE},    {"backward", KVN_ALG_BACKWARD_SAMPLING},
    {"ais", KVN_ALG_AIS_SAMPLING},        {"epis", KVN_ALG_EPIS_SAMPLING},
    {"loopy", KVN_ALG_LOOPY_PROPAGATION},
};

/// NaN when a run failed or left a node without posterior.
double MeanError(ReferenceCase& measured, int code, int samples) {
  double meanSquare = 0.0;
  for (std::uint32_t seed = 1; seed <= kSeeds; seed++) {
    KVN_network& network = measured.network;
    network.SetDefaultBNAlgorithm(code);
    network.SetNumberOfSamples(samples);
    KVN_simpleSamplerRandom().Seed(seed);
    SetAdaptiveSeed(seed);
    if (network.UpdateBeliefs() != 0) return NAN;
    const PosteriorErrors errors = CompareWithReference(measured);
    if (!errors.isComplete && code != KVN_ALG_LOOPY_PROPAGATION) return NAN;
    meanSquare += errors.meanSquare / kSeeds;
  }
  return std::sqrt(meanSquare);
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; i++) {
    ReferenceCase measured;
    if (!ReadReferenceCase(argv[i], measured)) {
      std::fprintf(stderr, "samplingErrors: no network or reference for %s\n", argv[i]);
      return 1;
    }
    for (const Sampler& sampler : kSamplers) {
      std::printf("# %s %s\n", argv[i], sampler.name);
      for (int samples : kSamples) {
        const double error = MeanError(measured, sampler.code, samples);
        std::printf("%d %.6g\n", samples, error);
      }
      std::printf("\n\n");
      std::fflush(stdout);
    }
  }
  return 0;
}
