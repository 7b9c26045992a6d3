#include "inference/exact/sepsetWalk.h"

#include <algorithm>

void SepsetWalk::Build(const KVN_Dmatrix& large, const KVN_intArray& steps) {
  count = 0;
  for (int d = large.GetNumberOfDimensions() - 1; d >= 0; --d) {
    int cells = large.GetSizeOfDimension(d);
    if (cells == 1) continue;
    if (count > 0 && steps[d] == levels[count - 1].cells * levels[count - 1].step) {
      levels[count - 1].cells *= cells;
    } else {
      levels[count++] = {cells, steps[d]};
    }
  }
  if (count == 0) levels[count++] = {1, 0};
}

/// Calls visit(index) for the cells of the large table in order; `index` is that in the small one.
template <typename Visit>
void SepsetWalk::ForEach(Visit visit) const {
  int at[kMostLevels] = {};
  int start = 0;
  for (;;) {
    for (int i = 0, index = start; i < levels[0].cells; ++i, index += levels[0].step) visit(index);
    int level = 1;
    while (level < count && ++at[level] == levels[level].cells) {
      start -= (levels[level].cells - 1) * levels[level].step;
      at[level++] = 0;
    }
    if (level == count) return;
    start += levels[level].step;
  }
}

void SepsetWalk::Sum(const double* large, double* small) const {
  ForEach([&](int index) { small[index] += *large++; });
}

double SepsetWalk::Multiply(double* large, const double* small) const {
  double largest = 0.0;
  ForEach([&](int index) {
    *large *= small[index];
    largest = std::max(largest, *large++);
  });
  return largest;
}
