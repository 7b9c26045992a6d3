#include "inference/sampling/logicSampling.h"

#include "inference/sampling/forwardSampler.h"
#include "inference/sampling/partOrder.h"
#include "inference/sampling/partSamples.h"

namespace {

class LogicSampler : public ForwardSampler {
 public:
  int Sort(RelevanceGraph& part) const override { return SortEvidenceFirst(part); }

  double Draw(PartSamples& samples, int /*part*/, KVN_random& random) override {
    for (int i = 0; i < samples.GetCount(); ++i) {
      PartSampleRecord& record = samples[i];
      const double* row = record.cells + samples.RowOf(record);
      record.state = DrawFrom(row, record.outcomes, random);
      if (record.HasEvidence() && record.state != record.evidence) return 0.0;
    }
    return 1.0;
  }
};

}  // namespace

int RunLogicSampling(KVN_network& network) {
  LogicSampler sampler;
  return RunForwardSampler(network, sampler);
}
