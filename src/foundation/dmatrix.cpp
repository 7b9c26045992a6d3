#include "foundation/dmatrix.h"

#include <algorithm>
#include <utility>

#include "foundation/resultCodes.h"

KVN_Dmatrix::KVN_Dmatrix(const KVN_intArray& sizes) {
  // A failure leaves the table empty, as the header tells.
  (void)Setup(sizes);
}

KVN_Dmatrix::KVN_Dmatrix(const KVN_Dmatrix& source) {
  // A failure leaves the table empty, as the header tells.
  (void)Assign(source);
}

KVN_Dmatrix& KVN_Dmatrix::operator=(const KVN_Dmatrix& source) {
  if (Assign(source) < 0) CleanUp();
  return *this;
}

int KVN_Dmatrix::Setup(const KVN_intArray& sizes) {
  return Setup(sizes.GetItems(), UsedCount(sizes));
}

int KVN_Dmatrix::Setup(const int* sizes, int count) {
  if (count < 0 || (count > 0 && sizes == nullptr)) return KVN_REFUSED;
  if (std::any_of(sizes, sizes + count, [](int size) { return size < 1; })) return KVN_REFUSED;
  KVN_Dmatrix made;
  int cells = 0;
  if (int result = made.SetDimensions(sizes, count, cells); result < 0) return result;
  if (cells == GetSize()) {  // only the shape differs, so the cells need no second block
    made.items.Swap(items);
    made.FillWith(0.0);
  } else if (int result = made.items.SetSize(cells); result < 0) {
    return result;
  }
  made.items.UseAsList(-1);
  Swap(made);
  return KVN_SUCCESS;
}

void KVN_Dmatrix::CleanUp() {
  dimensions.CleanUp();
  multipliers.CleanUp();
  items.CleanUp();
}

int KVN_Dmatrix::Assign(const KVN_Dmatrix& source) {
  if (this == &source) return KVN_SUCCESS;
  KVN_intArray newDimensions, newMultipliers;
  if (int result = newDimensions.Assign(source.dimensions); result < 0) return result;
  if (int result = newMultipliers.Assign(source.multipliers); result < 0) return result;
  if (int result = items.Assign(source.items); result < 0) return result;
  dimensions.Swap(newDimensions);
  multipliers.Swap(newMultipliers);
  return KVN_SUCCESS;
}

void KVN_Dmatrix::Swap(KVN_Dmatrix& other) noexcept {
  dimensions.Swap(other.dimensions);
  multipliers.Swap(other.multipliers);
  items.Swap(other.items);
}

/// Fills `dimensions` and `multipliers` from sizes >= 1, and counts the cells. On failure some may
/// be set: this is for a table that is being made and will be dropped then.
int KVN_Dmatrix::SetDimensions(const int* sizes, int count, int& cells) {
  if (int result = dimensions.SetSize(count); result < 0) return result;
  if (int result = multipliers.SetSize(count); result < 0) return result;
  long long product = count > 0 ? 1 : 0;
  for (int i = count - 1; i >= 0; i--) {
    dimensions[i] = sizes[i];
    multipliers[i] = static_cast<int>(product);
    product *= sizes[i];
    if (product > 0x7fffffff) return KVN_NO_MEMORY;
  }
  dimensions.UseAsList(-1);
  multipliers.UseAsList(-1);
  cells = static_cast<int>(product);
  return KVN_SUCCESS;
}

double& KVN_Dmatrix::Subscript(const KVN_intArray& coordinates) {
  static double spare;
  if (GetSize() > 0 && IsInRange(coordinates)) return At(coordinates);
  spare = 0.0;
  return spare;
}

int KVN_Dmatrix::IndexOf(const int* const* coordinates) const {
  int index = 0;
  for (int i = 0; i < GetNumberOfDimensions(); i++) index += multipliers[i] * *coordinates[i];
  return index;
}

int KVN_Dmatrix::CoordinatesOf(int index, KVN_intArray& coordinates) const {
  if (index < 0 || index >= GetSize()) return KVN_REFUSED;
  const int rank = GetNumberOfDimensions();
  if (int result = coordinates.SetSize(rank); result < 0) return result;
  for (int i = 0; i < rank; i++) {
    coordinates[i] = index / multipliers[i];
    index %= multipliers[i];
  }
  coordinates.UseAsList(-1);
  return KVN_SUCCESS;
}

int KVN_Dmatrix::NextCoordinates(KVN_intArray& coordinates) const {
  int d = GetNumberOfDimensions() - 1;
  if (UsedCount(coordinates) <= d) return KVN_REFUSED;
  while (d >= 0 && coordinates[d] >= dimensions[d] - 1) d--;
  if (d < 0) return KVN_REFUSED;
  coordinates[d]++;
  for (int i = d + 1; i < GetNumberOfDimensions(); i++) coordinates[i] = 0;
  return KVN_SUCCESS;
}

bool KVN_Dmatrix::IsInRange(const KVN_intArray& coordinates) const {
  if (UsedCount(coordinates) < GetNumberOfDimensions()) return false;
  for (int i = 0; i < GetNumberOfDimensions(); i++) {
    if (coordinates[i] < 0 || coordinates[i] >= dimensions[i]) return false;
  }
  return true;
}

bool KVN_Dmatrix::SameDimensions(const KVN_Dmatrix& other) const {
  return GetSize() == other.GetSize() &&
         std::equal(dimensions.begin(), dimensions.end(), other.dimensions.begin(),
                    other.dimensions.end());
}

int KVN_Dmatrix::Add(const KVN_Dmatrix& a, const KVN_Dmatrix& b) {
  if (!SameDimensions(a) || !SameDimensions(b)) return KVN_REFUSED;
  for (int i = 0; i < GetSize(); i++) items[i] = a.items[i] + b.items[i];
  return KVN_SUCCESS;
}

void KVN_Dmatrix::Normalize() {
  if (GetSize() == 0) return;
  const int length = dimensions[GetNumberOfDimensions() - 1];
  double* const end = GetData() + GetSize();
  for (double* run = GetData(); run != end; run += length) {
    double sum = 0.0;
    for (int i = 0; i < length; i++) sum += run[i];
    if (sum == 1.0) continue;
    if (sum == 0.0) {
      std::fill_n(run, length, 1.0 / length);
    } else {
      for (int i = 0; i < length; i++) run[i] /= sum;
    }
  }
}

int KVN_Dmatrix::CompleteColumn(KVN_intArray& coordinates) {
  if (GetSize() == 0 || !IsInRange(coordinates)) return KVN_REFUSED;
  const int result = CompleteColumn(IndexOf(coordinates));
  coordinates[GetNumberOfDimensions() - 1] = 0;
  return result;
}

int KVN_Dmatrix::CompleteColumn(int index) {
  if (index < 0 || index >= GetSize()) return KVN_REFUSED;
  const int length = dimensions[GetNumberOfDimensions() - 1];
  const double* const run = GetData() + (index - index % length);
  double sum = 0.0;
  for (int i = 0; i < length; i++) sum += run[i];
  const double others = sum - items[index];
  items[index] = 1.0 - others;
  return KVN_SUCCESS;
}
