#include "inference/exact/clusterUpdate.h"

#include <memory>
#include <new>
#include <vector>

#include "foundation/intArray.h"
#include "foundation/resultCodes.h"
#include "inference/exact/joinTree.h"
#include "inference/exact/relevanceGraph.h"
#include "network/network.h"
#include "network/node.h"
#include "network/userProperties.h"

namespace {

constexpr const char* kEffort = "KVN_CLUSTERING_EFFORT";
constexpr const char* kGroupSize = "KVN_REL_DECOMP_THRESHOLD";
constexpr const char* kHalfLimit = "KVN_REL_DECOMP_THRESHOLD2";
constexpr const char* kWholeLimit = "KVN_REL_DECOMP_THRESHOLD3";
constexpr const char* kDisableFallback = "KVN_REL_DECOMP_DISABLE_FALLBACK";
constexpr int kDefaultGroupSize = 32;
constexpr int kDefaultHalfLimit = 0x10000;

int IntegerProperty(KVN_network& network, const char* key) {
  return network.UserProperties().GetInteger(key);
}

int PositiveOr(int value, int substitute) { return value > 0 ? value : substitute; }

/// Whether fewer targets may do: what the network refuses stays refused.
bool IsTooLarge(int result) { return result == KVN_NO_MEMORY; }

/// One update by groups of targets. The network's own targets are put aside for its duration.
class Decomposition {
 public:
  explicit Decomposition(KVN_network& theNetwork) : network(theNetwork) {
    bool all = network.GetNumberOfTargets() == 0;
    pending.assign(network.GetSize(), 0);
    for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
      bool isTarget = network.IsTarget(h) == 1;
      pending[h] = all || isTarget ? 1 : 0;
      if (isTarget) savedTargets.push_back(h);
    }
    (void)network.ClearAllTargets();
  }
  Decomposition(const Decomposition&) = delete;
  Decomposition& operator=(const Decomposition&) = delete;
  ~Decomposition() {
    (void)network.ClearAllTargets();
    for (int h : savedTargets) (void)network.SetTarget(h);
  }

  int RunGroups(int groupSize, std::int64_t wholeLimit, std::int64_t halfLimit);
  int RunWhole(std::int64_t limit) {
    std::vector<int> handles;
    if (int result = ListPendingChildrenFirst(handles); result < 0) return result;
    return Halve(handles.data(), static_cast<int>(handles.size()), limit);
  }

 private:
  int ListPendingChildrenFirst(std::vector<int>& handles);
  int RunGroup(std::vector<int>& group, std::int64_t wholeLimit, std::int64_t halfLimit);
  int RunHalves(const int* handles, int count, std::int64_t limit);
  int Halve(const int* handles, int count, std::int64_t limit);

  KVN_network& network;
  std::vector<unsigned char> pending;  // by handle: still to be computed
  std::vector<int> savedTargets;
};

int Decomposition::ListPendingChildrenFirst(std::vector<int>& handles) {
  const KVN_intArray& order = network.GetOrderOfNodes();
  if (order.GetNumItems() != network.GetNumberOfNodes()) return KVN_NO_MEMORY;
  for (int i = order.GetNumItems() - 1; i >= 0; --i) {
    if (pending[order[i]] != 0) handles.push_back(order[i]);
  }
  return KVN_SUCCESS;
}

int Decomposition::RunGroups(int groupSize, std::int64_t wholeLimit, std::int64_t halfLimit) {
  std::vector<int> handles;
  if (int result = ListPendingChildrenFirst(handles); result < 0) return result;
  std::vector<int> group;
  for (int h : handles) {
    // A run ticks off every node that it could read out, so fewer may be left than were listed.
    if (pending[h] == 0) continue;
    group.push_back(h);
    if (static_cast<int>(group.size()) < groupSize) continue;
    if (int result = RunGroup(group, wholeLimit, halfLimit); result < 0) return result;
    group.clear();
  }
  return group.empty() ? int{KVN_SUCCESS} : RunGroup(group, wholeLimit, halfLimit);
}

int Decomposition::RunGroup(std::vector<int>& group, std::int64_t wholeLimit,
                            std::int64_t halfLimit) {
  int count = static_cast<int>(group.size());
  for (int h : group) (void)network.SetTarget(h);
  int result = ClusterUpdate(network, pending.data(), count == 1 ? 0 : wholeLimit);
  for (int h : group) (void)network.UnSetTarget(h);
  if (!IsTooLarge(result) || count == 1) return result;
  return RunHalves(group.data(), count, halfLimit);
}

/// The later one first: children come first in the list, and parents are in the networks of these.
int Decomposition::RunHalves(const int* handles, int count, std::int64_t limit) {
  int half = count / 2;
  if (int result = Halve(handles + half, count - half, limit); result < 0) return result;
  return Halve(handles, half, limit);
}

/// The depth is the logarithm of the count.
int Decomposition::Halve(const int* handles, int count, std::int64_t limit) {
  if (count < 1) return KVN_SUCCESS;
  if (count == 1) limit = 0;
  bool any = false;
  for (int i = 0; i < count; ++i) {
    if (pending[handles[i]] == 0) continue;
    (void)network.SetTarget(handles[i]);
    any = true;
  }
  if (!any) return KVN_SUCCESS;
  int result = ClusterUpdate(network, pending.data(), limit);
  (void)network.ClearAllTargets();
  if (!IsTooLarge(result) || count == 1) return result;
  return RunHalves(handles, count, limit);
}

}  // namespace

int ClusterUpdate(KVN_network& network, unsigned char* pending, std::int64_t limit) {
  JoinTreeOptions options;
  options.effort = IntegerProperty(network, kEffort) > 0;
  int result = 0;
  std::unique_ptr<RelevanceParts> parts =
      ReduceNetwork(network, /*absorbRoots=*/true, /*useDeterminism=*/true, result);
  if (parts == nullptr) return result;
  for (int i = 0; i < parts->GetCount(); ++i) {
    RelevanceGraph& part = (*parts)[i];
    if (part.GetSize() == 1) {
      RelevanceNode& record = part.Node(0);
      if (result = WriteOwnTable(record); result < 0) return result;
      if (pending != nullptr && record.node != nullptr) pending[record.node->Handle()] = 0;
    } else {
      JoinTree tree(part, options);
      if (!tree.Run(pending, limit)) return KVN_NO_MEMORY;
    }
    parts->Free(i);
  }
  return KVN_SUCCESS;
}

int ClusteringUpdate(KVN_network& network) {
  int result = ClusterUpdate(network, nullptr, 0);
  if (!IsTooLarge(result) || network.GetNumberOfTargets() == 1 ||
      network.UserProperties().FindProperty(kDisableFallback) >= 0) {
    return result;
  }
  return DecomposedUpdate(network);
}

int DecomposedUpdate(KVN_network& network) {
  int whole = IntegerProperty(network, kWholeLimit);
  int half =
      whole > 0 ? whole : PositiveOr(IntegerProperty(network, kHalfLimit), kDefaultHalfLimit);
  int groupSize = PositiveOr(IntegerProperty(network, kGroupSize), kDefaultGroupSize);
  return Decomposition(network).RunGroups(groupSize, whole > 0 ? whole : 0, half);
}

int DecomposedUpdateWhole(KVN_network& network) {
  int limit = PositiveOr(IntegerProperty(network, kHalfLimit), kDefaultHalfLimit);
  return Decomposition(network).RunWhole(limit);
}
