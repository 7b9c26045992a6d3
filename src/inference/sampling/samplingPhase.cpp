#include "inference/sampling/samplingPhase.h"

#include "foundation/resultCodes.h"
#include "inference/sampling/batchRecorder.h"
#include "inference/sampling/sampleNet.h"
#include "inference/sampling/samplingFailure.h"
#include "inference/sampling/samplingQuality.h"
#include "values/nodeValue.h"

namespace {

/// Before the beliefs are normalised.
int NoteQuality(SampleNet& net, const BatchRecorder& batches) {
  if (!batches.IsActive()) return 0;
  const double share = batches.ComputeEffectiveShare();
  KVN_doubleArray errors;
  for (int i = 0; i < net.GetCount(); ++i) {
    const SampleNode& node = net[i];
    const int handle = net.View().GetHandle(i);
    if (handle < 0 || node.HasEvidence()) continue;
    if (int result = errors.SetSize(node.outcomes); result < 0) return result;
    const int start = static_cast<int>(node.belief - net.GetBeliefs().GetItems());
    batches.ComputeErrors(start, node.outcomes, errors.GetItems());
    int result = GetSamplingQuality()->Note(handle, errors.GetItems(), node.outcomes, share);
    if (result < 0) return result;
  }
  return 0;
}

int WriteResults(SampleNet& net) {
  for (int i = 0; i < net.GetCount(); ++i) {
    const double sum = SampleNet::NormalizeBelief(net[i]);
    KVN_nodeValue* value = net.View().GetValue(i);
    if (!IsUsefulWeight(sum)) {
      if (value != nullptr) value->SetValueValid();
      return KVN_NO_USEFUL_SAMPLES;
    }
    if (value == nullptr) continue;
    if (int result = net[i].WriteToValue(*value); result < 0) return result;
  }
  return 0;
}

}  // namespace

int RunSamplingPhase(SampleNet& net, int samples, KVN_random& random) {
  BatchRecorder batches;
  if (int result = batches.Setup(net.GetBeliefs().GetSize(), samples); result < 0) return result;
  double total = 0.0;
  for (int s = 0; s < samples; ++s) {
    const double weight = net.DrawSample(random);
    if (weight > 0.0) {
      total += weight;
      batches.AddWeight(weight);
      for (int i = 0; i < net.GetCount(); ++i) {
        SampleNode& node = net[i];
        if (!node.HasEvidence()) node.belief[node.state] += weight;
      }
    }
    if (batches.IsBatchEnd(s + 1)) batches.CloseBatch(net.GetBeliefs().GetItems(), total);
  }
  if (IsUsefulWeight(total)) {
    if (int result = NoteQuality(net, batches); result < 0) return result;
  }
  return WriteResults(net);
}
