#include "foundation/sysCoordinates.h"

#include "foundation/resultCodes.h"

KVN_sysCoordinates::KVN_sysCoordinates(KVN_Dmatrix& table) {
  // IsLinked tells whether it worked.
  (void)Link(table);
}

void KVN_sysCoordinates::CleanUp(int /*deep*/) {
  matrix = nullptr;
  coordinates.CleanUp();
  locked.CleanUp();
  position = 0;
  CheckReadiness(0);
}

int KVN_sysCoordinates::CheckReadiness(int /*deep*/) {
  const int rank = matrix == nullptr ? 0 : matrix->GetNumberOfDimensions();
  SetReady(coordinates.GetSize() == rank && locked.GetSize() == rank);
  return IsReady() ? KVN_SUCCESS : KVN_NOT_READY;
}

int KVN_sysCoordinates::Link(KVN_Dmatrix& table) {
  const int rank = table.GetNumberOfDimensions();
  CleanUp(0);
  if (coordinates.SetSize(rank) < 0 || locked.SetSize(rank) < 0) {
    CleanUp(0);
    return KVN_NO_MEMORY;
  }
  coordinates.UseAsList(-1);
  locked.UseAsList(-1);
  matrix = &table;
  GoFirst();
  return CheckReadiness(0);
}

void KVN_sysCoordinates::GoFirst() {
  coordinates.FillWith(0);
  position = 0;
}

int KVN_sysCoordinates::Lock(int d) {
  if (d < 0 || d >= locked.GetSize()) return KVN_REFUSED;
  locked[d] = 1;
  return KVN_SUCCESS;
}

int KVN_sysCoordinates::Next() {
  if (matrix == nullptr) return KVN_REFUSED;
  const int rank = coordinates.GetSize();
  int d = rank - 1;
  while (d >= 0 && (locked[d] != 0 || coordinates[d] >= matrix->GetSizeOfDimension(d) - 1)) d--;
  if (d < 0) return KVN_REFUSED;
  coordinates[d]++;
  for (int i = d + 1; i < rank; i++) {
    if (locked[i] == 0) coordinates[i] = 0;
  }
  position = matrix->IndexOf(coordinates);
  return KVN_SUCCESS;
}

int KVN_sysCoordinates::GoToCurrentPosition() {
  if (matrix == nullptr) return KVN_REFUSED;
  position = matrix->IndexOf(coordinates);
  if (position >= 0 && position < matrix->GetSize()) return KVN_SUCCESS;
  GoFirst();
  return KVN_REFUSED;
}

int KVN_sysCoordinates::GoTo(int index) {
  if (matrix == nullptr || matrix->CoordinatesOf(index, coordinates) < 0) {
    GoFirst();
    return KVN_REFUSED;
  }
  position = index;
  return KVN_SUCCESS;
}
