#include "inference/sampling/runOnParts.h"

#include "foundation/resultCodes.h"
#include "inference/exact/relevanceGraph.h"
#include "inference/sampling/sampleNet.h"
#include "inference/sampling/samplingFailure.h"
#include "network/network.h"

int RunOnParts(KVN_network& network, int (*algorithm)(SampleNet& net, int rounds), int rounds) {
  (void)network.InvalidateAllBeliefs();
  int result = 0;
  std::unique_ptr<RelevanceParts> parts =
      ReduceNetwork(network, /*absorbRoots=*/true, /*useDeterminism=*/true, result);
  if (parts == nullptr) return result;
  for (int i = 0; i < parts->GetCount(); ++i) {
    SampleNet net((*parts)[i]);
    result = net.Build();
    if (result == 0) result = algorithm(net, rounds);
    if (result == KVN_NO_MEMORY || result == KVN_REFUSED) return result;
    if (result < 0) return FailForWantOfSamples();
    parts->Free(i);
  }
  return 0;
}
