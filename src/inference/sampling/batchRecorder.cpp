#include "inference/sampling/batchRecorder.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "foundation/resultCodes.h"
#include "inference/sampling/samplingQuality.h"

int BatchRecorder::Setup(int cellCount, int sampleCount) {
  if (GetSamplingQuality() == nullptr || sampleCount <= 0) return 0;
  cells = cellCount;
  samples = sampleCount;
  const int batches = std::min(SamplingQuality::kBatches, samples);
  if (cells > std::numeric_limits<int>::max() / batches) return KVN_NO_MEMORY;
  if (int result = sums.SetSize(batches * cells); result < 0) return result;
  if (int result = totals.SetSize(batches); result < 0) return result;
  batchCount = batches;
  nextEnd = samples / batches;
  return 0;
}

void BatchRecorder::CloseBatch(const double* accumulated, double total) {
  std::copy(accumulated, accumulated + cells, sums.GetItems() + std::ptrdiff_t{closed} * cells);
  totals[closed++] = total;
  nextEnd = static_cast<int>(std::int64_t{samples} * (closed + 1) / batchCount);
}

void BatchRecorder::AddSquare(double weight) {
  if (weight > largest) {
    squares *= (largest / weight) * (largest / weight);
    largest = weight;
  }
  squares += (weight / largest) * (weight / largest);
}

double BatchRecorder::WeightIn(int batch, int cell) const {
  const double before = batch == 0 ? 0.0 : sums[(batch - 1) * cells + cell];
  return sums[batch * cells + cell] - before;
}

double BatchRecorder::TotalIn(int batch) const {
  return totals[batch] - (batch == 0 ? 0.0 : totals[batch - 1]);
}

/// With W the weight of an outcome in a batch, T that of the batch and p the posterior: the
/// residuals W - p T add up to 0, and their spread over the whole weight is the error of p. They
/// are divided before they are squared, for a tiny weight has no square.
void BatchRecorder::ComputeErrors(int start, int count, double* errors) const {
  const double total = totals[batchCount - 1];
  for (int k = 0; k < count; ++k) {
    const double posterior = sums[(batchCount - 1) * cells + start + k] / total;
    double spread = 0.0;
    for (int b = 0; b < batchCount; ++b) {
      const double residual = (WeightIn(b, start + k) - posterior * TotalIn(b)) / total;
      spread += residual * residual;
    }
    errors[k] = batchCount < 2 ? std::numeric_limits<double>::quiet_NaN()
                               : std::sqrt(spread * batchCount / (batchCount - 1));
  }
}

double BatchRecorder::ComputeEffectiveShare() const {
  const double total = totals[batchCount - 1] / largest;
  return std::min(1.0, total * total / (squares * samples));
}
