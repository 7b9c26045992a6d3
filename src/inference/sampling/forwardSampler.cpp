#include "inference/sampling/forwardSampler.h"

#include <memory>
#include <new>

#include "foundation/random.h"
#include "foundation/resultCodes.h"
#include "inference/exact/relevanceGraph.h"
#include "inference/sampling/partOrder.h"
#include "inference/sampling/partSamples.h"
#include "network/network.h"

namespace {

/// The reduced network with the records of its parts.
struct Job {
  std::unique_ptr<RelevanceParts> parts;
  std::unique_ptr<PartSamples[]> samples;  // one for each part
  int count = 0;
};

int MakeJob(KVN_network& network, ForwardSampler& sampler, Job& job) {
  int result = 0;
  job.parts = ReduceNetwork(network, /*absorbRoots=*/true, /*useDeterminism=*/true, result);
  if (job.parts == nullptr) return result;
  ReleaseOneNodeParts(*job.parts);
  job.count = job.parts->GetCount();
  job.samples.reset(new (std::nothrow) PartSamples[job.count]);
  if (job.samples == nullptr) return KVN_NO_MEMORY;
  for (int i = 0; i < job.count; ++i) {
    RelevanceGraph& part = (*job.parts)[i];
    if (result = sampler.Sort(part); result < 0) return result;
    result = job.samples[i].Build(part, network.GetNumberOfSamples());
    if (result < 0) return result;
  }
  return sampler.Prepare(job.samples.get(), job.count);
}

void Take(ForwardSampler& sampler, Job& job, int part, int s, KVN_random& random) {
  PartSamples& samples = job.samples[part];
  const double weight = sampler.Draw(samples, part, random);
  if (weight != 0.0) {
    samples.Keep(weight);
    sampler.Kept(samples, part, s, weight);
  }
  samples.EndSample(s + 1);
}

/// All parts are finished, and whether the last one has useful samples stands for all (intended).
int FinishAll(Job& job) {
  int result = 0;
  for (int i = 0; i < job.count; ++i) {
    result = job.samples[i].Finish();
    if (result < 0 && result != KVN_NO_USEFUL_SAMPLES) return result;
  }
  return result;
}

}  // namespace

int ForwardSampler::Sort(RelevanceGraph& part) const { return SortParentsFirst(part); }

int ForwardSampler::Prepare(PartSamples* /*parts*/, int /*count*/) { return 0; }

int RunForwardSampler(KVN_network& network, ForwardSampler& sampler) {
  Job job;
  if (int result = MakeJob(network, sampler, job); result < 0) return result;
  KVN_random& random = KVN_simpleSamplerRandom();
  for (int s = 0; s < network.GetNumberOfSamples(); ++s) {
    for (int i = 0; i < job.count; ++i) Take(sampler, job, i, s, random);
  }
  return FinishAll(job);
}

int RunPartByPart(KVN_network& network, ForwardSampler& sampler) {
  Job job;
  if (int result = MakeJob(network, sampler, job); result < 0) return result;
  KVN_random& random = KVN_simpleSamplerRandom();
  for (int i = 0; i < job.count; ++i) {
    for (int s = 0; s < network.GetNumberOfSamples(); ++s) Take(sampler, job, i, s, random);
  }
  return FinishAll(job);
}
