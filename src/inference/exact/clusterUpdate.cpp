#include "inference/exact/clusterUpdate.h"

#include <cstdlib>
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

/// A user property as a decimal integer, 0 when it is absent or no number.
int IntegerProperty(KVN_network& network, const char* key) {
  const KVN_userProperties& properties = network.UserProperties();
  int position = properties.FindProperty(key);
  const char* value = position < 0 ? nullptr : properties.GetValue(position);
  return value == nullptr ? 0 : std::atoi(value);
}

int PositiveOr(int value, int substitute) { return value > 0 ? value : substitute; }

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

  bool RunGroups(int groupSize, std::int64_t wholeLimit, std::int64_t halfLimit);
  bool RunWhole(std::int64_t limit) {
    std::vector<int> handles;
    return ListPendingChildrenFirst(handles) &&
           Halve(handles.data(), static_cast<int>(handles.size()), limit);
  }

 private:
  bool ListPendingChildrenFirst(std::vector<int>& handles);
  bool RunGroup(std::vector<int>& group, std::int64_t wholeLimit, std::int64_t halfLimit);
  bool Halve(const int* handles, int count, std::int64_t limit);

  KVN_network& network;
  std::vector<unsigned char> pending;  // by handle: still to be computed
  std::vector<int> savedTargets;
};

/// False without memory for the order.
bool Decomposition::ListPendingChildrenFirst(std::vector<int>& handles) {
  const KVN_intArray& order = network.GetOrderOfNodes();
  if (order.GetNumItems() != network.GetNumberOfNodes()) return false;
  for (int i = order.GetNumItems() - 1; i >= 0; --i) {
    if (pending[order[i]] != 0) handles.push_back(order[i]);
  }
  return true;
}

bool Decomposition::RunGroups(int groupSize, std::int64_t wholeLimit, std::int64_t halfLimit) {
  std::vector<int> handles;
  if (!ListPendingChildrenFirst(handles)) return false;
  std::vector<int> group;
  for (int h : handles) {
    // A run ticks off every node that it could read out, so fewer may be left than were listed.
    if (pending[h] == 0) continue;
    group.push_back(h);
    if (static_cast<int>(group.size()) < groupSize) continue;
    if (!RunGroup(group, wholeLimit, halfLimit)) return false;
    group.clear();
  }
  return group.empty() || RunGroup(group, wholeLimit, halfLimit);
}

bool Decomposition::RunGroup(std::vector<int>& group, std::int64_t wholeLimit,
                             std::int64_t halfLimit) {
  int count = static_cast<int>(group.size());
  for (int h : group) (void)network.SetTarget(h);
  bool done = ClusterUpdate(network, pending.data(), count == 1 ? 0 : wholeLimit);
  for (int h : group) (void)network.UnSetTarget(h);
  if (done || count == 1) return done;
  int half = count / 2;
  return Halve(group.data() + half, count - half, halfLimit) &&
         Halve(group.data(), half, halfLimit);
}

/// The depth is the logarithm of the count.
bool Decomposition::Halve(const int* handles, int count, std::int64_t limit) {
  if (count < 1) return true;
  if (count == 1) limit = 0;
  bool any = false;
  for (int i = 0; i < count; ++i) {
    if (pending[handles[i]] == 0) continue;
    (void)network.SetTarget(handles[i]);
    any = true;
  }
  if (!any) return true;
  bool done = ClusterUpdate(network, pending.data(), limit);
  (void)network.ClearAllTargets();
  if (done || count == 1) return done;
  int half = count / 2;
  return Halve(handles + half, count - half, limit) && Halve(handles, half, limit);
}

int ResultOf(bool done) { return done ? KVN_SUCCESS : KVN_NO_MEMORY; }

}  // namespace

bool ClusterUpdate(KVN_network& network, unsigned char* pending, std::int64_t limit) {
  JoinTreeOptions options;
  options.effort = IntegerProperty(network, kEffort) > 0;
  int result = 0;
  std::unique_ptr<RelevanceParts> parts =
      ReduceNetwork(network, /*absorbRoots=*/true, /*useDeterminism=*/true, result);
  if (parts == nullptr) return result == 0;
  for (int i = 0; i < parts->GetCount(); ++i) {
    RelevanceGraph& part = (*parts)[i];
    if (part.GetSize() == 1) {
      RelevanceNode& record = part.Node(0);
      if (WriteOwnTable(record) < 0) return false;
      if (pending != nullptr && record.node != nullptr) pending[record.node->Handle()] = 0;
    } else {
      JoinTree tree(part, options);
      if (!tree.Run(pending, limit)) return false;
    }
    parts->Free(i);
  }
  return true;
}

bool ClusteringUpdate(KVN_network& network) {
  if (ClusterUpdate(network, nullptr, 0)) return true;
  if (network.GetNumberOfTargets() == 1 ||
      network.UserProperties().FindProperty(kDisableFallback) >= 0) {
    return false;
  }
  return DecomposedUpdate(network);
}

bool DecomposedUpdate(KVN_network& network) {
  int whole = IntegerProperty(network, kWholeLimit);
  int half =
      whole > 0 ? whole : PositiveOr(IntegerProperty(network, kHalfLimit), kDefaultHalfLimit);
  int groupSize = PositiveOr(IntegerProperty(network, kGroupSize), kDefaultGroupSize);
  return Decomposition(network).RunGroups(groupSize, whole > 0 ? whole : 0, half);
}

bool DecomposedUpdateWhole(KVN_network& network) {
  int limit = PositiveOr(IntegerProperty(network, kHalfLimit), kDefaultHalfLimit);
  return Decomposition(network).RunWhole(limit);
}

int RunClustering(KVN_network& network) { return ResultOf(ClusteringUpdate(network)); }

int RunRelevanceDecomposition(KVN_network& network) { return ResultOf(DecomposedUpdate(network)); }

int RunRelevanceDecomposition2(KVN_network& network) {
  return ResultOf(DecomposedUpdateWhole(network));
}
