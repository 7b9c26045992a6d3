#include "inference/sampling/loopyPropagation.h"

#include "inference/sampling/messagePropagation.h"
#include "inference/sampling/runOnParts.h"
#include "inference/sampling/sampleNet.h"
#include "network/network.h"
#include "values/nodeValue.h"

namespace {

/// Without the valid mark; a value that has it, by evidence, keeps it.
int WriteNumbers(const SampleNode& node, KVN_nodeValue& value) {
  KVN_Dmatrix posterior;
  if (int result = posterior.Setup(&node.outcomes, 1); result < 0) return result;
  node.CopyBelief(posterior.GetData());
  return value.SetValue(posterior);
}

int Propagate(SampleNet& net, int rounds) {
  MessagePropagation messages(net);
  if (int result = messages.Build(); result < 0) return result;
  if (int result = messages.RunWithBeliefs(rounds); result < 0) return result;
  for (int i = 0; i < net.GetCount(); ++i) {
    SampleNode& node = net[i];
    for (int x = 0; x < node.outcomes; ++x) node.belief[x] = messages.GetBelief(i)[x];
    (void)SampleNet::NormalizeBelief(node);
    KVN_nodeValue* value = net.View().GetValue(i);
    if (value == nullptr) continue;
    if (int result = WriteNumbers(node, *value); result < 0) return result;
  }
  return 0;
}

}  // namespace

int RunLoopyPropagation(KVN_network& network) {
  return RunOnParts(network, Propagate, network.GetEpisParams().proplen);
}
