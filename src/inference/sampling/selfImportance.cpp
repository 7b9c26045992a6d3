#include "inference/sampling/selfImportance.h"

#include <memory>
#include <new>

#include "foundation/dmatrix.h"
#include "foundation/resultCodes.h"
#include "inference/sampling/forwardSampler.h"
#include "inference/sampling/partSamples.h"

namespace {

constexpr int kRevisionInterval = 100;

/// What one node is drawn from, and what its configurations have added up to.
struct ImportanceTables {
  KVN_Dmatrix importance;
  KVN_Dmatrix score;
};

class SelfImportance : public ForwardSampler {
 public:
  int Prepare(PartSamples* parts, int count) override {
    tables.reset(new (std::nothrow) std::unique_ptr<ImportanceTables[]>[count]);
    if (tables == nullptr) return KVN_NO_MEMORY;
    for (int i = 0; i < count; ++i) {
      if (int result = MakeTables(parts[i], tables[i]); result < 0) return result;
    }
    return 0;
  }

  double Draw(PartSamples& samples, int part, KVN_random& random) override {
    ImportanceTables* own = tables[part].get();
    double evidenceWeight = 1.0;
    double ratio = 1.0;
    for (int i = 0; i < samples.GetCount(); ++i) {
      PartSampleRecord& record = samples[i];
      const int start = samples.RowOf(record);
      const double* row = record.cells + start;
      if (record.HasEvidence()) {
        record.state = record.evidence;
        evidenceWeight *= row[record.state];
        if (evidenceWeight == 0.0) return 0.0;
        continue;
      }
      const double* importance = own[i].importance.GetData() + start;
      bool found = false;
      record.state = DrawFrom(importance, record.outcomes, random, found);
      const double drawn = importance[record.state];
      // Twice for a cell that was drawn, once for the last outcome taken for want of one: meant so.
      if (found && drawn != 0.0) ratio *= row[record.state] / drawn;
      if (drawn != 0.0) ratio *= row[record.state] / drawn;
      if (ratio == 0.0) return 0.0;
    }
    return ratio * evidenceWeight;
  }

  void Kept(PartSamples& samples, int part, int s, double weight) override {
    ImportanceTables* own = tables[part].get();
    for (int i = 0; i < samples.GetCount(); ++i) {
      const PartSampleRecord& record = samples[i];
      own[i].score[samples.RowOf(record) + record.state] += weight;
    }
    if (s == 0 || s % kRevisionInterval != 0) return;
    for (int i = 0; i < samples.GetCount(); ++i) Revise(*samples[i].table, own[i]);
  }

 private:
  static int MakeTables(PartSamples& samples, std::unique_ptr<ImportanceTables[]>& made) {
    made.reset(new (std::nothrow) ImportanceTables[samples.GetCount()]);
    if (made == nullptr) return KVN_NO_MEMORY;
    for (int i = 0; i < samples.GetCount(); ++i) {
      const KVN_Dmatrix& table = *samples[i].table;
      if (int result = made[i].importance.Assign(table); result < 0) return result;
      if (int result = made[i].score.Assign(table); result < 0) return result;
      made[i].score.FillWith(0.0);
    }
    return 0;
  }

  /// The score keeps its normalised contents, as the start of what comes after.
  static void Revise(const KVN_Dmatrix& table, ImportanceTables& own) {
    own.score.Normalize();
    (void)own.importance.Add(own.score, table);  // all three have one shape
    own.importance.Normalize();
  }

  std::unique_ptr<std::unique_ptr<ImportanceTables[]>[]> tables;  // by part and record
};

}  // namespace

int RunSelfImportance(KVN_network& network) {
  SelfImportance sampler;
  return RunForwardSampler(network, sampler);
}
