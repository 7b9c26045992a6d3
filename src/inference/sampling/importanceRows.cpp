#include "inference/sampling/importanceRows.h"

namespace {

/// Probabilities below the threshold are raised, in nodes with fewer outcomes than this.
struct Threshold {
  int outcomesBelow;
  double probability;
};
constexpr Threshold kThresholds[] = {
    {6, 0.1},
    {9, 0.04},
    {21, 0.0025},
};

/// Below 0: none.
double ThresholdFor(int outcomes) {
  for (const Threshold& row : kThresholds) {
    if (outcomes < row.outcomesBelow) return row.probability;
  }
  return -1.0;
}

}  // namespace

void SpreadEvenly(const double* row, double* importance, int count) {
  int possible = 0;
  for (int k = 0; k < count; ++k) possible += row[k] != 0.0 ? 1 : 0;
  for (int k = 0; k < count; ++k) importance[k] = row[k] == 0.0 ? 0.0 : 1.0 / possible;
}

void RaiseSmall(const double* row, double* importance, int count) {
  const double threshold = ThresholdFor(count);
  if (threshold < 0.0) {
    SpreadEvenly(row, importance, count);
    return;
  }
  int largest = 0;
  double added = 0.0;
  for (int k = 0; k < count; ++k) {
    if (row[k] > row[largest]) largest = k;
    const bool isSmall = row[k] < threshold && row[k] != 0.0;
    importance[k] = isSmall ? threshold : row[k];
    if (isSmall) added += threshold - row[k];
  }
  importance[largest] -= added;
}

void LearnFromScores(const double* score, double* importance, int count, double learningRate) {
  double sum = 0.0;
  for (int k = 0; k < count; ++k) sum += score[k];
  if (sum == 0.0) return;
  for (int k = 0; k < count; ++k) {
    importance[k] = (1 - learningRate) * importance[k] + learningRate * score[k] / sum;
  }
}

void CutOff(double* importance, int count, double cutoff) {
  int possible = 0;
  int raised = 0;
  double added = 0.0;
  for (int k = 0; k < count; ++k) {
    if (importance[k] == 0.0) continue;
    ++possible;
    if (!(importance[k] < cutoff)) continue;
    added += cutoff - importance[k];
    importance[k] = cutoff;
    ++raised;
  }
  if (raised == 0 || raised == possible) return;
  const double share = added / (possible - raised);
  for (int k = 0; k < count; ++k) {
    if (importance[k] > cutoff) importance[k] -= share;
  }
}
