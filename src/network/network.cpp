#include "network/network.h"

#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

#include "definitions/nodeDefinition.h"
#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/caseList.h"
#include "network/node.h"
#include "network/nodeEntry.h"
#include "network/submodel.h"
#include "network/submodelHandler.h"
#include "network/temporalEngine.h"
#include "network/updateAlgorithm.h"
#include "values/nodeValue.h"

namespace {

constexpr int kDefaultSize = 50;
constexpr int kDefaultSamples = 1000;
constexpr int kDefaultDiscSamples = 10000;
constexpr int kDefaultSpare = 3;
constexpr int kFirstHybridAlgorithm = 13;
constexpr int kLastHybridAlgorithm = 16;
constexpr int kLastShowAs = 3;
constexpr int kLastTemporalType = 3;
constexpr int kMessageSize = 2000;

constexpr const char* kRootName = "Unnamed";
constexpr const char* kTestGroupCostKey = "DIAG_TESTGROUPCOST";

}  // namespace

KVN_network::KVN_network() {
  // Without memory the network isn't ready.
  (void)Initialize(kDefaultSize, kDefaultSize);
}

KVN_network::KVN_network(const KVN_network& source) : KVN_network() { (void)Assign(source, 0); }

KVN_network& KVN_network::operator=(const KVN_network& source) {
  (void)Assign(source, /*skipTemporal=*/0);
  return *this;
}

KVN_network::~KVN_network() {
  DestroyNodes();
  delete[] nodes;
}

int KVN_network::Initialize(int initialSize, int newGrowBy) {
  CleanUp(/*deep=*/1);
  growBy = newGrowBy > 0 ? newGrowBy : int{kDefaultSize};
  int result = AllocateTable(initialSize > 0 ? initialSize : int{kDefaultSize});
  if (result == 0 && submodels == nullptr) {
    submodels.reset(new (std::nothrow) KVN_submodelHandler(this));
    if (submodels == nullptr || !submodels->IsReady()) result = KVN_NO_MEMORY;
  } else if (result == 0) {
    result = submodels->Clear();
  }
  if (result == 0) result = Header().SetId(kRootName);
  if (result == 0) result = Header().SetName(kRootName);
  SetReady(result == 0);
  return result;
}

/// Gives an empty network its table.
int KVN_network::AllocateTable(int newSize) {
  nodes = new (std::nothrow) KVN_nodeEntry[newSize];
  if (nodes == nullptr) return KVN_NO_MEMORY;
  size = newSize;
  capacity = newSize;
  return KVN_SUCCESS;
}

KVN_nodeEntry& KVN_network::Entry(int handle) const { return nodes[handle]; }

void KVN_network::ClearMarks(int mask) {
  for (int handle = 0; handle < size; handle++) nodes[handle].marks &= ~mask;
}

void KVN_network::DestroyNodes() {
  for (int handle = 0; handle < size; handle++) nodes[handle].CleanUp(/*deep=*/0);
  numNodes = 0;
  numTargets = 0;
  lowestFree = 0;
  mayHaveCurrentValue = false;
  mayGoStale = false;
  index.Clear();
  order.Flush();
}

void KVN_network::CleanUp(int deep) {
  if (deep != 0) {
    creation.CleanUp(deep);
    userProperties.CleanUp(deep);
    documentation.CleanUp(deep);
    if (submodels != nullptr) submodels->CleanUp(deep);
    cases.reset();
    temporal.reset();
  }
  DestroyNodes();
  delete[] std::exchange(nodes, nullptr);
  size = 0;
  capacity = 0;
  growBy = kDefaultSize;
  numSamples = kDefaultSamples;
  discSamples = kDefaultDiscSamples;
  spare = kDefaultSpare;
  (void)CheckReadiness(/*deep=*/0);
}

int KVN_network::CheckReadiness(int deep) {
  if (deep != 0) {
    (void)creation.CheckReadiness(deep);
    (void)userProperties.CheckReadiness(deep);
    if (submodels != nullptr) (void)submodels->CheckReadiness(deep);
    for (int handle = GetFirstNode(); handle >= 0; handle = GetNextNode(handle)) {
      (void)GetNode(handle)->CheckReadiness(deep);
    }
  }
  bool ready = submodels != nullptr;
  for (int handle = GetFirstNode(); handle >= 0; handle = GetNextNode(handle)) {
    if (!GetNode(handle)->IsReady() && DeleteNode(handle) < 0) ready = false;
  }
  SetReady(ready);
  return ready ? KVN_SUCCESS : KVN_NOT_READY;
}

int KVN_network::CheckConsistency(int deep) {
  if (deep != 0) {
    (void)creation.CheckConsistency(deep);
    (void)userProperties.CheckConsistency(deep);
    if (submodels != nullptr) (void)submodels->CheckConsistency(deep);
  }
  bool consistent = creation.IsConsistent() && userProperties.IsConsistent() &&
                    submodels != nullptr && submodels->IsConsistent();
  for (int handle = GetFirstNode(); handle >= 0; handle = GetNextNode(handle)) {
    KVN_node& node = *GetNode(handle);
    if (deep != 0) (void)node.CheckConsistency(deep);
    if (node.IsConsistent()) continue;
    const char* id = node.GetId() != nullptr ? node.GetId() : "(null)";
    char message[kMessageSize];
    std::snprintf(message, sizeof message,
                  "ERROR: Node [%s] is not consistent. Inference may not be correct", id);
    LogError(KVN_NOT_CONSISTENT, message);
    consistent = false;
    break;  // one node is enough to warn the user; a large network would flood the log
  }
  SetConsistent(consistent);
  return consistent ? KVN_SUCCESS : KVN_NOT_CONSISTENT;
}

KVN_header& KVN_network::Header() { return submodels->GetSubmodel(KVN_ROOT_SUBMODEL)->Header(); }

// --- Targets.

int KVN_network::SetTarget(int handle) {
  if (!IsLive(handle) || (Entry(handle).marks & KVN_MARK_TARGET) != 0) return KVN_REFUSED;
  Entry(handle).marks |= KVN_MARK_TARGET;
  numTargets++;
  return KVN_SUCCESS;
}

int KVN_network::UnSetTarget(int handle) {
  if (!IsLive(handle) || (Entry(handle).marks & KVN_MARK_TARGET) == 0) return KVN_REFUSED;
  Entry(handle).marks &= ~KVN_MARK_TARGET;
  numTargets--;
  return KVN_SUCCESS;
}

int KVN_network::IsTarget(int handle) const {
  if (!IsLive(handle)) return KVN_REFUSED;
  return (Entry(handle).marks & KVN_MARK_TARGET) != 0 ? 1 : 0;
}

int KVN_network::ClearAllTargets() {
  ClearMarks(KVN_MARK_TARGET);
  numTargets = 0;
  return KVN_SUCCESS;
}

// --- Listeners.

void KVN_network::TellTypeChanged(int handle, int oldType) {
  if (cases != nullptr) cases->NodeTypeChanged(handle, oldType);
  if (temporal != nullptr) temporal->NodeTypeChanged(handle, oldType);
}

void KVN_network::TellOutcomeAdded(int handle, int position) {
  if (cases != nullptr) cases->OutcomeAdded(handle, position);
  if (temporal != nullptr) temporal->OutcomeAdded(handle, position);
}

void KVN_network::TellOutcomeRemoved(int handle, int position) {
  if (cases != nullptr) cases->OutcomeRemoved(handle, position);
  if (temporal != nullptr) temporal->OutcomeRemoved(handle, position);
}

void KVN_network::TellOutcomesReordered(int handle, const KVN_intArray& outcomeOrder) {
  if (cases != nullptr) cases->OutcomesReordered(handle, outcomeOrder);
  if (temporal != nullptr) temporal->OutcomesReordered(handle, outcomeOrder);
}

// --- Settings.

void KVN_network::SetDefaultBNAlgorithm(int code) {
  if (code >= KVN_ALG_CLUSTERING && code <= KVN_ALG_RELEVANCE_DECOMPOSITION_2) {
    defaultBNAlgorithm = code;
  }
}

void KVN_network::SetDefaultIDAlgorithm(int code) {
  if (code == 0 || code == 1) defaultIDAlgorithm = code;
}

void KVN_network::SetDefaultHybridAlgorithm(int code) {
  if (code >= kFirstHybridAlgorithm && code <= kLastHybridAlgorithm) defaultHybridAlgorithm = code;
}

void KVN_network::SetShowAs(int mode) {
  if (mode >= 0 && mode <= kLastShowAs) showAs = mode;
}

int KVN_network::SetEpisParams(const EpisParameters& parameters) {
  if (!parameters.IsLegal()) return KVN_REFUSED;
  hybridParameters = parameters;
  return KVN_SUCCESS;
}

int KVN_network::SetSolverParameters(const KVN_solverParameters& parameters) {
  if (!parameters.IsAcceptable()) return KVN_REFUSED;
  solverParameters = parameters;
  return KVN_SUCCESS;
}

int KVN_network::SetSolverSteps(int steps) {
  if (steps < 1) return KVN_REFUSED;
  solverSteps = steps;
  return KVN_SUCCESS;
}

int KVN_network::IsTestGroupCost(int handle) const {
  if (!IsLive(handle)) return KVN_REFUSED;
  const KVN_userProperties* properties = GetNode(handle)->UserProperties();
  const int position = properties != nullptr ? properties->FindProperty(kTestGroupCostKey) : -1;
  if (position < 0) return 0;
  const char* value = properties->GetValue(position);
  return value != nullptr && std::strcmp(value, "True") == 0 ? 1 : 0;
}

/// A node without cost children pays for no group any more.
void KVN_network::DropTestGroupCost(int handle) {
  if (Entry(handle).costChildren.GetNumItems() > 0 || IsTestGroupCost(handle) != 1) return;
  KVN_userProperties* properties = GetNode(handle)->UserProperties();
  (void)properties->DeleteProperty(properties->FindProperty(kTestGroupCostKey));
}

int KVN_network::GetTemporalType(int handle) const {
  return IsLive(handle) ? Entry(handle).temporalType : int{KVN_REFUSED};
}

int KVN_network::SetTemporalType(int handle, int type) {
  if (!IsLive(handle) || type < 0 || type > kLastTemporalType) return KVN_REFUSED;
  Entry(handle).temporalType = type;
  return KVN_SUCCESS;
}
