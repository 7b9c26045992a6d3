#include "inference/exact/relevanceGraph.h"

#include <new>
#include <utility>

#include "definitions/nodeDefinition.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/node.h"
#include "values/nodeValue.h"

const KVN_Dmatrix* RelevanceNode::GetTable() {
  if (owned != nullptr) return owned.get();
  if (shared == nullptr && node != nullptr && node->Definition() != nullptr) {
    // Asked for as late as possible: a gate expands its table here, and many are cut away before.
    KVN_Dmatrix* table = nullptr;
    if (node->Definition()->GetDefinition(table) == 0) shared = table;
    kind = kTableDefinition;
  }
  return shared;
}

int RelevanceNode::SetTable(KVN_Dmatrix&& table) {
  if (owned == nullptr) owned.reset(new (std::nothrow) KVN_Dmatrix);
  if (owned == nullptr) return KVN_NO_MEMORY;
  shared = nullptr;
  *owned = std::move(table);
  kind = kTableOwned;
  return 0;
}

void RelevanceNode::DropTable() {
  owned.reset();
  shared = nullptr;
  kind = kTableNone;
}

RelevanceNodePool* RelevanceNodePool::Make(int capacity) {
  RelevanceNodePool* pool = new (std::nothrow) RelevanceNodePool(capacity);
  if (pool == nullptr) return nullptr;
  pool->records.reset(new (std::nothrow) RelevanceNode[capacity]);
  if (pool->records == nullptr) {
    delete pool;
    return nullptr;
  }
  return pool;
}

void RelevanceNodePool::Release() {
  if (--references == 0) delete this;
}

int RelevanceNodePool::Take() { return count < capacity ? count++ : KVN_NO_MEMORY; }

RelevanceGraph::RelevanceGraph(KVN_network& theNetwork, RelevanceNodePool& thePool)
    : network(theNetwork), pool(thePool) {
  pool.AddReference();
}

RelevanceGraph::~RelevanceGraph() {
  for (int number : nodes) pool[number].DropTable();
  pool.Release();
}

int RelevanceParts::Reserve(int capacity) {
  parts.reset(new (std::nothrow) std::unique_ptr<RelevanceGraph>[capacity]);
  return parts == nullptr ? KVN_NO_MEMORY : 0;
}

void RelevanceParts::Add(std::unique_ptr<RelevanceGraph> part) { parts[count++] = std::move(part); }

void RelevanceParts::Compact() {
  int kept = 0;
  for (int i = 0; i < count; ++i) {
    if (parts[i] == nullptr) continue;
    if (kept != i) parts[kept] = std::move(parts[i]);
    ++kept;
  }
  count = kept;
}

int WriteOwnTable(RelevanceNode& record) {
  if (record.node == nullptr) return 0;
  const KVN_Dmatrix* table = record.GetTable();
  if (table == nullptr) return KVN_NO_MEMORY;
  KVN_nodeValue& value = *record.node->Value();
  if (int result = value.SetValue(*table); result < 0) return result;
  value.SetValueValid();
  return 0;
}

int SetRecordEvidence(RelevanceNode& record, int outcome) {
  if (outcome < 0 || outcome >= record.outcomes) return KVN_REFUSED;
  record.evidence = outcome;
  if (record.node == nullptr) return 0;
  KVN_Dmatrix pointMass;
  if (int result = pointMass.Setup(&record.outcomes, 1); result < 0) return result;
  pointMass[outcome] = 1.0;
  KVN_nodeValue& value = *record.node->Value();
  if (int result = value.SetValue(pointMass); result < 0) return result;
  value.SetValueValid();
  return 0;
}

void ReleaseOneNodeParts(RelevanceParts& parts) {
  for (int i = 0; i < parts.GetCount(); ++i) {
    if (parts[i].GetSize() != 1) continue;
    (void)WriteOwnTable(parts[i].Node(0));  // without memory the value stays invalid
    parts.Free(i);
  }
  parts.Compact();
}
