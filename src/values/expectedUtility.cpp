#include "values/expectedUtility.h"

#include "foundation/resultCodes.h"
#include "values/utilityScale.h"

KVN_expectedUtility::KVN_expectedUtility(KVN_network* owningNetwork, int nodeHandle)
    : KVN_nodeValue(owningNetwork, nodeHandle) {}

void KVN_expectedUtility::CleanUp(int deep) {
  KVN_nodeValue::CleanUp(deep);
  if (deep) matrix.CleanUp();
  (void)CheckReadiness(/*deep=*/0);  // only the flag is wanted
}

int KVN_expectedUtility::Assign(KVN_nodeValue& source) {
  if (!source.IsReady()) return KVN_NOT_READY;
  if (this == &source) return KVN_SUCCESS;
  CleanUp(/*deep=*/1);
  if (int result = KVN_nodeValue::Assign(source); result < 0) return result;
  if (source.GetType() == GetType()) {
    KVN_Dmatrix* results = nullptr;
    if (int result = source.GetValue(results); result < 0) return result;
    if (int result = matrix.Assign(*results); result < 0) return result;
  } else if (int result = ReCreate(); result < 0) {
    return result;
  }
  (void)CheckReadiness(/*deep=*/1);  // status only
  (void)CheckConsistency(/*deep=*/1);
  return KVN_SUCCESS;
}

int KVN_expectedUtility::ReCreate() {
  CleanUp(/*deep=*/1);
  if (int result = matrix.AppendDimension(1); result < 0) return result;
  (void)CheckReadiness(/*deep=*/1);  // status only
  return KVN_SUCCESS;
}

int KVN_expectedUtility::GetValue(KVN_Dmatrix*& out) {
  out = &matrix;
  return KVN_SUCCESS;
}

int KVN_expectedUtility::SetValue(const KVN_Dmatrix& source) { return matrix.Assign(source); }

double KVN_expectedUtility::GetMinimum() const { return RangeOfCells(matrix).low; }

double KVN_expectedUtility::GetMaximum() const { return RangeOfCells(matrix).high; }

int KVN_expectedUtility::Rescale(double fromLow, double fromHigh, double toLow, double toHigh) {
  if (!IsReady()) return KVN_NOT_READY;
  (void)RescaleCells(matrix, {fromLow, fromHigh}, {toLow, toHigh});  // nobody to notify
  return KVN_SUCCESS;
}
