#include "inference/sampling/backwardSampling.h"

#include <algorithm>

#include "foundation/resultCodes.h"
#include "inference/sampling/forwardSampler.h"
#include "inference/sampling/partSamples.h"

namespace {

/// The cells of a record's table at its own state and those of its parents that are set: one for
/// each configuration of the other parents, in flat order.
class OpenParents {
 public:
  [[nodiscard]] int Reserve(int parents) {
    if (int result = open.SetSize(parents); result < 0) return result;
    return coordinates.SetSize(parents);
  }

  /// False when no parent is open.
  bool Select(PartSamples& samples, PartSampleRecord& theRecord) {
    record = &theRecord;
    count = 0;
    start = record->state;
    for (int i = 0; i < record->parentCount; ++i) {
      const int state = samples[record->parents[i]].state;
      if (state < 0) {
        open[count++] = i;
      } else {
        start += record->steps[i] * state;
      }
    }
    return count > 0;
  }

  double Sum(PartSamples& samples) {
    double sum = 0.0;
    GoFirst();
    do sum += record->cells[cell];
    while (GoNext(samples));
    return sum;
  }

  /// Sets the open parents to the first configuration at which the running sum of the cells, each
  /// divided by `sum`, is strictly above `r`; leaves them unset when there is none.
  void SetParents(PartSamples& samples, double sum, double r) {
    double running = 0.0;
    GoFirst();
    do {
      running += record->cells[cell] / sum;
      if (running > r) {
        for (int i = 0; i < count; ++i) Parent(samples, i).state = coordinates[i];
        return;
      }
    } while (GoNext(samples));
  }

 private:
  PartSampleRecord& Parent(PartSamples& samples, int i) {
    return samples[record->parents[open[i]]];
  }

  void GoFirst() {
    std::fill_n(coordinates.GetItems(), count, 0);
    cell = start;
  }

  bool GoNext(PartSamples& samples) {
    for (int i = count - 1; i >= 0; --i) {
      const int step = record->steps[open[i]];
      if (++coordinates[i] < Parent(samples, i).outcomes) {
        cell += step;
        return true;
      }
      cell -= step * (coordinates[i] - 1);
      coordinates[i] = 0;
    }
    return false;
  }

  PartSampleRecord* record = nullptr;  // not owned
  KVN_intArray open;                   // positions in the parent list
  KVN_intArray coordinates;            // of the open parents
  int count = 0;
  int start = 0;
  int cell = 0;
};

class BackwardSampler : public ForwardSampler {
 public:
  int Prepare(PartSamples* parts, int count) override {
    int most = 0;
    for (int i = 0; i < count; ++i) {
      for (int r = 0; r < parts[i].GetCount(); ++r) most = std::max(most, parts[i][r].parentCount);
    }
    return parents.Reserve(most);
  }

  double Draw(PartSamples& samples, int /*part*/, KVN_random& random) override {
    for (int i = 0; i < samples.GetCount(); ++i) {
      samples[i].visit = 0;
      samples[i].state = samples[i].evidence;
    }
    double weight = 1.0;
    for (int i = 0; i < samples.GetCount(); ++i) {
      const PartSampleRecord& record = samples[i];
      if (!record.HasEvidence() || record.visit == kTakenBackward) continue;
      if (!WalkUp(samples, i, random, weight)) return 0.0;
    }
    return DrawForward(samples, random, weight);
  }

 private:
  /// False when the weight has become 0.
  bool WalkUp(PartSamples& samples, int place, KVN_random& random, double& weight) {
    while (true) {  // each step goes to a parent, so it ends at a root
      PartSampleRecord& record = samples[place];
      if (record.parentCount == 0) return true;
      if (parents.Select(samples, record)) {
        record.visit = kTakenBackward;
        const double sum = parents.Sum(samples);
        weight *= sum;
        if (weight <= 0.0) return false;
        parents.SetParents(samples, sum, random.Uniform());
      }
      place = record.parents[0];
      const PartSampleRecord& next = samples[place];
      // Still unset after a draw that found no cell: there is no outcome to go on from.
      if (next.visit == kTakenBackward || next.state < 0) return true;
    }
  }

  static double DrawForward(PartSamples& samples, KVN_random& random, double weight) {
    for (int i = 0; i < samples.GetCount(); ++i) {
      PartSampleRecord& record = samples[i];
      const double* row = record.cells + samples.RowOf(record);
      if (record.state < 0) {
        record.state = DrawFrom(row, record.outcomes, random);
      } else if (record.visit != kTakenBackward) {
        weight *= row[record.state];
        if (weight == 0.0) return 0.0;
      }
    }
    return weight;
  }

  OpenParents parents;
};

}  // namespace

int RunBackwardSampling(KVN_network& network) {
  BackwardSampler sampler;
  return RunPartByPart(network, sampler);
}
