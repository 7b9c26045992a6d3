#include "inference/sampling/likelihoodWeighting.h"

#include "inference/sampling/forwardSampler.h"
#include "inference/sampling/partSamples.h"

namespace {

class LikelihoodWeighting : public ForwardSampler {
 public:
  double Draw(PartSamples& samples, int /*part*/, KVN_random& random) override {
    double weight = 1.0;
    for (int i = 0; i < samples.GetCount(); ++i) {
      PartSampleRecord& record = samples[i];
      const double* row = record.cells + samples.RowOf(record);
      if (!record.HasEvidence()) {
        record.state = DrawFrom(row, record.outcomes, random);
        continue;
      }
      record.state = record.evidence;
      weight *= row[record.state];
      if (weight == 0.0) return 0.0;
    }
    return weight;
  }
};

}  // namespace

int RunLikelihoodWeighting(KVN_network& network) {
  LikelihoodWeighting sampler;
  return RunForwardSampler(network, sampler);
}
