#pragma once

#include "values/nodeValue.h"

/// Value of a utility node: the expected utility for each combination of the indexing parents.
///
/// The matrix has the indexing parents in order and a last dimension of size 1; a new value has one
/// cell. There is no evidence of any kind: those operations answer KVN_NOT_APPLICABLE.
class KVN_expectedUtility : public KVN_nodeValue {
 public:
  using KVN_nodeValue::GetValue;

  /// Without a shape until ReCreate; NewValue does both.
  KVN_expectedUtility(KVN_network* owningNetwork, int nodeHandle);

  void CleanUp(int deep) override;

  /// Takes the matrix of a value of the same type; any other source leaves one cell.
  int Assign(KVN_nodeValue& source) override;
  int ReCreate() override;
  int GetType() const override { return KVN_VALUE_EXPECTED_UTILITY; }
  int GetValue(KVN_Dmatrix*& out) override;
  int SetValue(const KVN_Dmatrix& source) override;

  /// As the operations of the same names of the utility definition, on the expected utilities and
  /// without notification.
  double GetMinimum() const;
  double GetMaximum() const;
  int Rescale(double fromLow, double fromHigh, double toLow, double toHigh);

 protected:
  KVN_Dmatrix matrix;
};
