// Copying of whole networks.

#include <new>

#include "foundation/resultCodes.h"
#include "network/caseList.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeEntry.h"
#include "network/quietScope.h"
#include "network/submodelHandler.h"
#include "network/temporalEngine.h"

int KVN_network::Assign(const KVN_network& source, int skipTemporal) {
  if (this == &source) return KVN_SUCCESS;
  if (!source.IsReady() || !source.submodels->IsReady()) return KVN_NOT_READY;
  if (submodels == nullptr) return KVN_NO_MEMORY;
  CleanUp(/*deep=*/1);
  if (source.size > 0) {
    if (int result = AllocateTable(source.size); result < 0) return result;
  }
  if (int result = CopyEntries(source, skipTemporal); result < 0) return result;
  if (int result = creation.Assign(source.creation); result < 0) return result;
  if (int result = userProperties.Assign(source.userProperties); result < 0) return result;
  if (int result = documentation.Assign(source.documentation); result < 0) return result;
  if (int result = submodels->Assign(*source.submodels); result < 0) return result;
  CopySettings(source);
  return CopyListeners(source, skipTemporal);
}

int KVN_network::CopyEntries(const KVN_network& source, int skipTemporal) {
  KVN_quietScope quiet(*this);
  for (int handle = 0; handle < source.size; handle++) {
    const KVN_nodeEntry& entry = source.nodes[handle];
    if (entry.node == nullptr) continue;
    if (int result = CopyEntry(entry, handle, skipTemporal); result < 0) return result;
  }
  return KVN_SUCCESS;
}

int KVN_network::CopyEntry(const KVN_nodeEntry& source, int handle, int skipTemporal) {
  KVN_nodeEntry& entry = Entry(handle);
  if (int result = entry.parents.Assign(source.parents); result < 0) return result;
  if (int result = entry.children.Assign(source.children); result < 0) return result;
  if (int result = entry.costParents.Assign(source.costParents); result < 0) return result;
  if (int result = entry.costChildren.Assign(source.costChildren); result < 0) return result;
  // The copy of the node silences the source's hooks for itself.
  entry.node = new (std::nothrow) KVN_node(*source.node);
  if (entry.node == nullptr) return KVN_NO_MEMORY;
  if (int result = entry.node->Attach(this); result < 0) return result;
  entry.temporalType = skipTemporal != 0 ? 0 : source.temporalType;
  entry.marks = source.marks;
  entry.level = source.level;
  numNodes++;
  if ((entry.marks & KVN_MARK_TARGET) != 0) numTargets++;
  index.Add(entry.node->GetId(), handle);
  return KVN_SUCCESS;
}

void KVN_network::CopySettings(const KVN_network& source) {
  growBy = source.growBy;
  numSamples = source.numSamples;
  discSamples = source.discSamples;
  defaultBNAlgorithm = source.defaultBNAlgorithm;
  defaultIDAlgorithm = source.defaultIDAlgorithm;
  defaultHybridAlgorithm = source.defaultHybridAlgorithm;
  equationDiscretized = source.equationDiscretized;
  discAvoidZero = source.discAvoidZero;
  order = source.order;
  updateFlags = source.updateFlags;
  changeMask = source.changeMask;
  spare = source.spare;
  reservedWord = source.reservedWord;
  noisyMaxRelevance = source.noisyMaxRelevance;
  showAs = source.showAs;
  // The setters test what they are given; a record that isn't acceptable stays behind.
  (void)SetSolverParameters(source.solverParameters);
  (void)SetSolverSteps(source.solverSteps);
  (void)SetHybridParameters(source.hybridParameters);
}

int KVN_network::CopyListeners(const KVN_network& source, int skipTemporal) {
  if (source.cases != nullptr) {
    cases.reset(source.cases->Clone(*this));
    if (cases == nullptr) return KVN_NO_MEMORY;
  }
  if (source.temporal != nullptr && skipTemporal == 0) {
    temporal.reset(source.temporal->Clone(*this));
    if (temporal == nullptr) return KVN_NO_MEMORY;
  }
  return KVN_SUCCESS;
}
