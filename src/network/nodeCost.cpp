#include "network/nodeCost.h"

#include "definitions/nodeDefinition.h"
#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/network.h"

namespace {
constexpr int kCostLayer = 1;
}

KVN_nodeCost::KVN_nodeCost(KVN_network* ofNetwork, int ofHandle)
    : network(ofNetwork), handle(ofHandle) {
  (void)costs.AppendDimension(1);  // one cell has room without allocation
  SetReady(network != nullptr);
}

int KVN_nodeCost::EventQuery(int /*code*/) { return KVN_SUCCESS; }

int KVN_nodeCost::ForwardEvent(int /*code*/) { return KVN_SUCCESS; }

int KVN_nodeCost::SetCosts(const KVN_doubleArray& values) {
  if (!IsReady()) return KVN_NOT_READY;
  if (UsedCount(values) != costs.GetSize()) return KVN_REFUSED;
  costs.GetItems().CopyItems(values);
  (void)CheckReadiness(1);
  (void)CheckConsistency(1);
  return KVN_SUCCESS;
}

int KVN_nodeCost::AddParent(int parent) {
  if (!IsReady()) return KVN_NOT_READY;
  if (!HasTableDimension(network->TypeOf(parent))) return KVN_REFUSED;
  const int position = PositionOf(parent);
  if (position < 0) return position;
  const int outcomes = network->DefinitionOf(parent)->GetNumberOfOutcomes();
  if (outcomes < 1) return KVN_SUCCESS;
  return costs.AddDimension(position, outcomes);
}

int KVN_nodeCost::RemoveParent(int parent) {
  if (!IsReady()) return KVN_NOT_READY;
  const int type = network->TypeOf(parent);
  if (type == KVN_TYPE_TABLE) return KVN_REFUSED;
  if (!HasTableDimension(type)) return KVN_SUCCESS;
  const int position = PositionOf(parent);
  if (position < 0) return position;
  // A parent that had no outcomes when it came has no dimension; the node's own one must stay.
  if (costs.GetNumberOfDimensions() < 2) return KVN_SUCCESS;
  return costs.RemoveDimension(position);
}

int KVN_nodeCost::ParentOutcomeAdded(int parent, int position) {
  if (!IsReady()) return KVN_NOT_READY;
  const int dimension = PositionOf(parent);
  if (dimension < 0) return dimension;
  if (int result = costs.PushSlice(dimension); result < 0) return result;
  return costs.ShiftSlice(dimension, position, 0.0);
}

int KVN_nodeCost::ParentOutcomeRemoved(int parent, int position) {
  if (!IsReady()) return KVN_NOT_READY;
  const int dimension = PositionOf(parent);
  if (dimension < 0) return dimension;
  if (int result = costs.RemoveSlice(dimension, position); result < 0) return result;
  return costs.ShrinkDimension(dimension);
}

int KVN_nodeCost::ParentOutcomesReordered(int parent, const KVN_intArray& order) {
  if (!IsReady()) return KVN_NOT_READY;
  const int dimension = PositionOf(parent);
  if (dimension < 0) return dimension;
  return costs.ChangeOrderWithinDimension(dimension, order);
}

int KVN_nodeCost::Rebuild() {
  costs.CleanUp();
  if (int result = costs.AppendDimension(1); result < 0) return result;
  if (CheckReadiness(0) < 0 || !network->IsLive(handle)) return KVN_SUCCESS;
  for (int parent : network->GetParents(handle, kCostLayer)) {
    if (int result = AddParent(parent); result < 0) {
      (void)LogError(result, "Parent could not be added");
    }
  }
  return KVN_SUCCESS;
}

int KVN_nodeCost::Assign(const KVN_nodeCost& source) {
  if (this == &source) return KVN_SUCCESS;
  if (!source.IsReady()) return KVN_NOT_READY;
  if (int result = costs.Assign(source.costs); result < 0) return result;
  network = source.network;
  handle = source.handle;
  return CheckReadiness(0);
}

void KVN_nodeCost::CleanUp(int /*deep*/) {
  costs.CleanUp();
  (void)CheckReadiness(0);
}

int KVN_nodeCost::CheckReadiness(int /*deep*/) {
  SetReady(network != nullptr);
  return IsReady() ? KVN_SUCCESS : KVN_NOT_READY;
}

int KVN_nodeCost::PositionOf(int parent) const {
  return network->PositionOfParent(parent, handle, kCostLayer);
}
