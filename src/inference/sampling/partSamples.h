#pragma once

#include <memory>

#include "foundation/doubleArray.h"
#include "foundation/intArray.h"
#include "foundation/random.h"
#include "inference/sampling/batchRecorder.h"

class KVN_Dmatrix;
class KVN_node;
class RelevanceGraph;

/// Mark of a node whose parents the backward step has drawn.
constexpr int kTakenBackward = 20;

/// One node of a part in the current sample of a simple sampler.
struct PartSampleRecord {
  int visit = 0;
  int state = -1;     // outcome in the current sample; -1: unset
  int evidence = -1;  // observed outcome, or -1
  int outcomes = 0;
  int parentCount = 0;
  const int* parents = nullptr;        // their places in this part
  const int* steps = nullptr;          // step in the table for each parent
  const double* cells = nullptr;       // the table: parents first, own outcomes last
  double* weights = nullptr;           // accumulated, one per outcome
  const KVN_Dmatrix* table = nullptr;  // not owned
  KVN_node* node = nullptr;            // not owned; null for a record that stands for no node

  bool HasEvidence() const { return evidence >= 0; }
};

/// The first outcome where the running sum is strictly above one uniform draw, else the last one:
/// with a draw of exactly 1.0 and a row that sums to 1 that is what comes. `found` tells the cases
/// apart.
inline int DrawFrom(const double* row, int outcomes, KVN_random& random, bool& found) {
  const double r = random.Uniform();
  double sum = 0.0;
  for (int k = 0; k < outcomes; ++k) {
    sum += row[k];
    if (sum > r) {
      found = true;
      return k;
    }
  }
  found = false;
  return outcomes - 1;
}

inline int DrawFrom(const double* row, int outcomes, KVN_random& random) {
  bool found = false;
  return DrawFrom(row, outcomes, random, found);
}

/// The records of one sorted part with what its samples have added up so far. Lives for one call
/// and needs the part to live as long.
class PartSamples {
 public:
  PartSamples() = default;
  PartSamples(const PartSamples&) = delete;
  PartSamples& operator=(const PartSamples&) = delete;

  /// Makes the records in the part's order, which has parents first. `samples` is the number that
  /// the run will take. KVN_NO_MEMORY, or KVN_REFUSED for a table that doesn't have the shape its
  /// parents ask for.
  [[nodiscard]] int Build(RelevanceGraph& part, int samples);

  int GetCount() const { return count; }
  PartSampleRecord& operator[](int place) { return records[place]; }
  /// Flat index in the record's table of the row at its parents' states, all of which must be set.
  int RowOf(const PartSampleRecord& record) const {
    int row = 0;
    for (int i = 0; i < record.parentCount; ++i) {
      row += record.steps[i] * records[record.parents[i]].state;
    }
    return row;
  }

  /// Counts the present sample with a weight.
  void Keep(double weight);
  /// After sample number `done`, from 1, whether it was kept or not.
  void EndSample(int done) {
    if (batches.IsBatchEnd(done)) batches.CloseBatch(weights.GetItems(), total);
  }
  /// Writes the posteriors of all nodes into their values and marks these valid. Without useful
  /// weight the values of all nodes without evidence lose the mark and keep their numbers:
  /// KVN_NO_USEFUL_SAMPLES. KVN_NO_MEMORY leaves the values as far as it got.
  [[nodiscard]] int Finish();

 private:
  int AddFamily(RelevanceGraph& part, int place);
  int WritePosterior(const PartSampleRecord& record) const;
  int NoteQuality() const;

  std::unique_ptr<PartSampleRecord[]> records;
  int count = 0;
  KVN_intArray parents;     // of all records, one after the other
  KVN_intArray steps;       // likewise
  KVN_doubleArray weights;  // likewise
  double total = 0.0;
  BatchRecorder batches;
};
