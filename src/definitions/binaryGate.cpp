#include "definitions/binaryGate.h"

#include <algorithm>

#include "network/network.h"

namespace {

// 2^31 cells are beyond what a table may have, so there are fewer dimensions than this.
constexpr int kMaxDimensions = 32;

KVN_idArray MakeOutcomeNames() {
  KVN_idArray made;
  (void)made.Add("True");  // without memory at the first use there are no names to show
  (void)made.Add("False");
  return made;
}

}  // namespace

int KVN_binaryGate::Init() {
  const int result = ReCreate();
  SetReady(true);
  return result == KVN_NO_MEMORY ? result : KVN_SUCCESS;
}

int KVN_binaryGate::AddParent(int parent) {
  if (!IsReady()) return KVN_NOT_READY;
  // A gate is ready even before it has a place.
  if (network == nullptr || !network->IsLive(parent)) return KVN_REFUSED;
  if (TypeOf(parent) != GetType()) return KVN_NOT_APPLICABLE;
  const int position = PositionOf(parent);
  if (position < 0) return position;
  if (int result = InsertNumbers(position); result < 0) return result;
  if (int result = RebuildTable(); result < 0) {
    (void)DeleteNumbers(position);
    return result;
  }
  ComputeTable();
  (void)CheckReadiness(0);
  return KVN_SUCCESS;
}

int KVN_binaryGate::RemoveParent(int parent) {
  if (!IsReady()) return KVN_NOT_READY;
  const int position = PositionOf(parent);
  if (position < 0) return position;
  if (int result = DeleteNumbers(position); result < 0) return result;
  if (int result = RebuildTable(); result < 0) return result;
  ComputeTable();
  (void)CheckReadiness(0);
  return KVN_SUCCESS;
}

const KVN_idArray* KVN_binaryGate::GetOutcomesNames() const {
  static const KVN_idArray theNames = MakeOutcomeNames();
  return &theNames;
}

int KVN_binaryGate::GetDefinition(KVN_doubleArray*& out) {
  out = &table.GetItems();
  return KVN_SUCCESS;
}

int KVN_binaryGate::GetDefinition(KVN_Dmatrix*& out) {
  out = &table;
  return KVN_SUCCESS;
}

int KVN_binaryGate::RebuildTable() {
  const int dimensions = CountOfNumbers() + 1;
  if (dimensions >= kMaxDimensions) return KVN_NO_MEMORY;
  int sizes[kMaxDimensions];
  std::fill_n(sizes, dimensions, 2);
  return table.Setup(sizes, dimensions);
}

void KVN_binaryGate::ComputeTable() {
  const int dimensions = table.GetNumberOfDimensions() - 1;  // those of parents
  const int parentCount = std::min({NumberOfParents(), CountOfNumbers(), dimensions});
  double* cell = table.GetData();
  const int rows = table.GetSize() / 2;
  for (int row = 0; row < rows; row++) {
    // All dimensions are binary: the coordinates of a row are the bits of its number.
    int coordinates[kMaxDimensions];
    for (int i = 0; i < parentCount; i++) coordinates[i] = (row >> (dimensions - 1 - i)) & 1;
    const double p = RowProbability(coordinates, parentCount);
    *cell++ = p;
    *cell++ = 1 - p;
  }
}
