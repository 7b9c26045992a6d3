#include <utility>

#include "definitions/noisyMAX.h"
#include "foundation/resultCodes.h"
#include "inference/exact/relevanceGraph.h"
#include "network/node.h"
#include "values/nodeValue.h"

namespace {

/// The factor of one parent: rows for its outcomes, columns for the child's. The distinguished
/// outcome acts through the leak alone.
int MakeFactor(const KVN_noisyMAX& gate, const KVN_Dmatrix& inclusive, int parentIndex,
               KVN_Dmatrix& factor) {
  const KVN_intArray& strengths = *gate.GetStrengths(parentIndex);
  int parentOutcomes = strengths.GetNumItems();
  int outcomes = inclusive.GetSizeOfDimension(1);
  int sizes[] = {parentOutcomes, outcomes};
  if (int result = factor.Setup(sizes, 2); result < 0) return result;
  int leakRow = inclusive.GetSizeOfDimension(0) - 1;
  for (int u = 0; u < parentOutcomes; ++u) {
    int rank = strengths.FindPosition(u);
    int row = rank == parentOutcomes - 1 ? leakRow : gate.RowOffset(parentIndex) + rank;
    for (int k = 0; k < outcomes; ++k) {
      factor[u * outcomes + k] = inclusive[row * outcomes + k];
    }
  }
  return 0;
}

int AddFactorRecord(RelevanceGraph& graph, int number, int parent, KVN_Dmatrix&& factor) {
  int added = graph.GetPool().Take();
  if (added < 0) return added;
  RelevanceNode& record = graph.Record(added);
  record.outcomes = graph.Record(number).outcomes;
  record.evidence = record.outcomes - 1;
  if (int result = record.parents.Add(parent); result < 0) return result;
  if (int result = record.SetTable(std::move(factor)); result < 0) return result;
  KVN_intArray& siblings = graph.Record(parent).children;
  siblings[siblings.FindPosition(number)] = added;
  ++graph.evidenceCount;
  return graph.nodes.Add(added);
}

}  // namespace

int DecomposeNoisyMax(RelevanceGraph& graph, int number) {
  RelevanceNode& record = graph.Record(number);
  if (record.node->GetType() != KVN_TYPE_NOISY_MAX || record.parents.GetNumItems() < 2 ||
      record.node->Value()->GetEvidence() != record.outcomes - 1) {
    return 0;
  }
  const KVN_noisyMAX& gate = static_cast<KVN_noisyMAX&>(*record.node->Definition());
  KVN_Dmatrix inclusive;
  if (int result = gate.GetInclusiveParameters(inclusive); result < 0) return result;
  for (int i = 0; i < record.parents.GetNumItems(); ++i) {
    KVN_Dmatrix factor;
    if (int result = MakeFactor(gate, inclusive, i, factor); result < 0) return result;
    int result = AddFactorRecord(graph, number, record.parents[i], std::move(factor));
    if (result < 0) return result;
  }
  record.parents.Flush();
  KVN_Dmatrix leak;
  if (int result = leak.Setup(&record.outcomes, 1); result < 0) return result;
  int leakStart = inclusive.GetSize() - record.outcomes;
  for (int k = 0; k < record.outcomes; ++k) leak[k] = inclusive[leakStart + k];
  return record.SetTable(std::move(leak));
}
