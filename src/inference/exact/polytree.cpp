#include "inference/exact/polytree.h"

#include <algorithm>
#include <cstdint>

#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "inference/exact/polytreeCorrection.h"
#include "inference/exact/polytreeGraph.h"
#include "inference/exact/polytreeWalk.h"
#include "network/network.h"
#include "values/nodeValue.h"

namespace {

int RefuseLoops() {
  return LogError(KVN_FAILURE,
                  "PolyTree algorithm can not be applied to this network, because it is not singly "
                  "connected.");
}

// How many steps the walk is given where the exact beliefs are known: a dozen findings or more may
// reach every node, and small networks are always finished.
constexpr std::int64_t kStepsPerNode = 64;
constexpr std::int64_t kLeastSteps = 1000000;

int ComputeBeliefs(KVN_network& network) {
  PolytreeGraph graph(network);
  if (int result = graph.Build(); result < 0) return result;
  PolytreeCorrection correction(graph);
  if (int result = correction.Compute(); result < 0) return result;
  graph.Initialise();
  std::int64_t limit = PolytreeWalk::kNoLimit;
  if (correction.IsPossible()) limit = std::max(kStepsPerNode * graph.GetSize(), kLeastSteps);
  if (int result = PolytreeWalk(graph).Run(limit); result < 0) return result;
  correction.Apply();
  return 0;
}

}  // namespace

int PolytreeUpdate(KVN_network& network) {
  if (network.GetNumberOfNodes() == 0) return 0;
  int isTree = network.IsSinglyConnected();
  if (isTree < 0) return isTree;
  if (isTree == 0) return RefuseLoops();
  int result = ComputeBeliefs(network);
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    KVN_nodeValue* value = network.ValueOf(h);
    if (value == nullptr) continue;
    // It is meant that nodes out of reach become valid too.
    if (result == 0) {
      value->SetValueValid();
    } else if (!value->HasEvidence()) {
      value->ClearValueValid();
    }
  }
  return result;
}
