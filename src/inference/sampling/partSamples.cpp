#include "inference/sampling/partSamples.h"

#include <limits>
#include <new>

#include "foundation/resultCodes.h"
#include "inference/exact/relevanceGraph.h"
#include "inference/sampling/samplingFailure.h"
#include "inference/sampling/samplingQuality.h"
#include "network/node.h"
#include "values/nodeValue.h"

int PartSamples::Build(RelevanceGraph& part, int samples) {
  count = part.GetSize();
  records.reset(new (std::nothrow) PartSampleRecord[count]);
  if (records == nullptr) return KVN_NO_MEMORY;
  int cells = 0;
  for (int i = 0; i < count; ++i) {
    if (int result = AddFamily(part, i); result < 0) return result;
    if (records[i].outcomes > std::numeric_limits<int>::max() - cells) return KVN_NO_MEMORY;
    cells += records[i].outcomes;
  }
  if (int result = weights.SetSize(cells); result < 0) return result;
  int family = 0;
  int cell = 0;
  for (int i = 0; i < count; ++i) {  // now that the lists don't move any more
    PartSampleRecord& record = records[i];
    record.parents = parents.GetItems() + family;
    record.steps = steps.GetItems() + family;
    record.weights = weights.GetItems() + cell;
    family += record.parentCount;
    cell += record.outcomes;
  }
  return batches.Setup(cells, samples);
}

int PartSamples::AddFamily(RelevanceGraph& part, int place) {
  RelevanceNode& source = part.Node(place);
  PartSampleRecord& record = records[place];
  record.table = source.GetTable();
  if (record.table == nullptr) return KVN_NO_MEMORY;
  record.evidence = source.evidence;
  record.outcomes = source.outcomes;
  record.parentCount = source.parents.GetNumItems();
  record.cells = record.table->GetData();
  record.node = source.node;
  const KVN_Dmatrix& table = *record.table;
  if (table.GetNumberOfDimensions() != record.parentCount + 1) return KVN_REFUSED;
  if (table.GetSizeOfDimension(record.parentCount) != record.outcomes) return KVN_REFUSED;
  for (int i = 0; i < record.parentCount; ++i) {
    const RelevanceNode& parent = part.Record(source.parents[i]);
    if (table.GetSizeOfDimension(i) != parent.outcomes) return KVN_REFUSED;
    if (int result = parents.Add(parent.position); result < 0) return result;
    if (int result = steps.Add(table.GetMultipliers()[i]); result < 0) return result;
  }
  return 0;
}

void PartSamples::Keep(double weight) {
  total += weight;
  batches.AddWeight(weight);
  for (int i = 0; i < count; ++i) records[i].weights[records[i].state] += weight;
}

int PartSamples::Finish() {
  if (!IsUsefulWeight(total)) {
    for (int i = 0; i < count; ++i) {
      if (records[i].HasEvidence() || records[i].node == nullptr) continue;
      records[i].node->Value()->ClearValueValid();
    }
    return FailForWantOfSamples();
  }
  for (int i = 0; i < count; ++i) {
    if (int result = WritePosterior(records[i]); result < 0) return result;
  }
  return NoteQuality();
}

int PartSamples::WritePosterior(const PartSampleRecord& record) const {
  if (record.node == nullptr) return 0;
  KVN_Dmatrix posterior;
  if (int result = posterior.Setup(&record.outcomes, 1); result < 0) return result;
  for (int k = 0; k < record.outcomes; ++k) posterior[k] = record.weights[k] / total;
  KVN_nodeValue& value = *record.node->Value();
  if (int result = value.SetValue(posterior); result < 0) return result;
  value.SetValueValid();
  return 0;
}

int PartSamples::NoteQuality() const {
  if (!batches.IsActive()) return 0;
  const double share = batches.ComputeEffectiveShare();
  KVN_doubleArray errors;
  for (int i = 0; i < count; ++i) {
    const PartSampleRecord& record = records[i];
    if (record.node == nullptr || record.HasEvidence()) continue;
    if (int result = errors.SetSize(record.outcomes); result < 0) return result;
    const int start = static_cast<int>(record.weights - weights.GetItems());
    batches.ComputeErrors(start, record.outcomes, errors.GetItems());
    const int handle = record.node->Handle();
    int result = GetSamplingQuality()->Note(handle, errors.GetItems(), record.outcomes, share);
    if (result < 0) return result;
  }
  return 0;
}
