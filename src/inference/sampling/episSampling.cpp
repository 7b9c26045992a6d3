#include "inference/sampling/episSampling.h"

#include <algorithm>

#include "foundation/resultCodes.h"
#include "inference/sampling/importanceRows.h"
#include "inference/sampling/messagePropagation.h"
#include "inference/sampling/runOnParts.h"
#include "inference/sampling/sampleNet.h"
#include "inference/sampling/samplingPhase.h"
#include "network/network.h"

namespace {

/// Arcs of the longest chain in the network, or KVN_NO_MEMORY.
int FindDepth(KVN_network& network) {
  KVN_intArray depths;  // by handle
  if (int result = depths.SetSize(network.GetSize()); result < 0) return result;
  const KVN_intArray& order = network.GetOrderOfNodes();
  if (order.GetNumItems() < network.GetNumberOfNodes()) return KVN_NO_MEMORY;  // it was cut short
  int depth = 0;
  for (int handle : order) {
    for (int parent : network.GetParents(handle)) {
      depths[handle] = std::max(depths[handle], depths[parent] + 1);
    }
    depth = std::max(depth, depths[handle]);
  }
  return depth;
}

double CutoffFor(const EpisParameters& settings, int outcomes) {
  if (outcomes <= settings.numstates1) return settings.eps1;
  if (outcomes <= settings.numstates2) return settings.eps2;
  if (outcomes <= settings.numstates3) return settings.eps3;
  return settings.eps4;
}

void WeighByLambda(SampleNode& node, const KVN_doubleArray& lambda) {
  for (int start = 0; start < node.cpt->GetSize(); start += node.outcomes) {
    const double* row = node.cpt->GetData() + start;
    double* importance = node.icpt.GetData() + start;
    double sum = 0.0;
    for (int x = 0; x < node.outcomes; ++x) {
      importance[x] = row[x] * lambda[x];
      sum += importance[x];
    }
    for (int x = 0; x < node.outcomes; ++x) {
      importance[x] = sum > 0.0 ? importance[x] / sum : 1.0 / node.outcomes;
    }
  }
}

void ApplyCutoff(SampleNode& node, double cutoff) {
  for (int start = 0; start < node.icpt.GetSize(); start += node.outcomes) {
    CutOff(node.icpt.GetData() + start, node.outcomes, cutoff);
  }
}

int PrepareImportance(SampleNet& net, int rounds, const EpisParameters& settings) {
  MessagePropagation messages(net);
  if (int result = messages.Build(); result < 0) return result;
  messages.Run(rounds);
  for (int i = 0; i < net.GetCount(); ++i) {
    SampleNode& node = net[i];
    WeighByLambda(node, messages.ComputeLambda(i));
    if (node.HasEvidence() || !node.relevantAncestor) continue;
    ApplyCutoff(node, CutoffFor(settings, node.outcomes));
  }
  return 0;
}

int SampleWithPropagation(SampleNet& net, int rounds) {
  if (int result = net.PrepareTables(); result < 0) return result;
  KVN_network& network = net.View().GetNetwork();
  KVN_random& random = KVN_adaptiveSamplerRandom();
  random.Seed(NewAdaptiveSeed());
  net.ClearBeliefs();
  if (int result = PrepareImportance(net, rounds, network.GetEpisParams()); result < 0) {
    return result;
  }
  return RunSamplingPhase(net, network.GetNumberOfSamples(), random);
}

}  // namespace

int RunEpisSampling(KVN_network& network) {
  const int depth = FindDepth(network);  // of the whole, so once for all parts
  if (depth < 0) return depth;
  return RunOnParts(network, SampleWithPropagation,
                    std::min(network.GetEpisParams().proplen, depth));
}
