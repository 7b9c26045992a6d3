#pragma once

#include <vector>

#include "foundation/dmatrix.h"
#include "foundation/intArray.h"
#include "foundation/object.h"

class KVN_network;

/// Value type codes.
enum KVN_valueType : int {
  KVN_VALUE_BELIEF_VECTOR = 3,
  KVN_VALUE_EXPECTED_UTILITY = 4,
  KVN_VALUE_LIST_OF_DECISIONS = 6,
  KVN_VALUE_MAU_EXPECTED_UTILITY = 7,
  KVN_VALUE_EQUATION = 8,
  KVN_VALUE_CONTINUOUS = 9,
};

/// Bits of KVN_nodeValue::valueFlags.
enum KVN_valueFlag : unsigned {
  KVN_VALUE_EVIDENCE = 1,             // the user has set an outcome or a number
  KVN_VALUE_VALID = 2,                // the matrix holds a current result
  KVN_VALUE_PROPAGATED_EVIDENCE = 4,  // the outcome follows from other evidence
  KVN_VALUE_RESERVED = 8,             // cleared with the evidence; nothing sets it
  KVN_VALUE_VIRTUAL_EVIDENCE = 16,    // soft evidence is present
};

/// What is known about a node now: evidence, soft evidence and the result of the last inference.
/// Values are the only result store, and the valid flag is the only mark of staleness.
///
/// A value may be indexed: its matrix then has one dimension for each indexing parent in front of
/// the node's own outcomes, so that one evaluation of decisions holds a result for each case.
///
/// Slots keep their order; an unsupported one answers KVN_NOT_APPLICABLE.
class KVN_nodeValue : public KVN_object {
 public:
  KVN_nodeValue(KVN_network* network, int handle);
  KVN_nodeValue(const KVN_nodeValue&) = delete;
  KVN_nodeValue& operator=(const KVN_nodeValue&) = delete;
  ~KVN_nodeValue() override = default;

  void CleanUp(int deep) override;

  virtual int ConvertFrom(KVN_nodeValue& source);
  /// KVN_NOT_READY leaves this value alone; 0 for itself.
  virtual int Assign(KVN_nodeValue& source);
  /// Drops evidence, flags and indexing parents, and shapes the matrix for the definition.
  virtual int ReCreate();
  virtual int GetType() const = 0;
  /// Number of cells of the matrix, KVN_NOT_APPLICABLE without one.
  virtual int GetSize();
  /// Adds an index dimension for `parent`, unless one of the two indexes the other already.
  virtual int AddIndexingParent(int parent);

  virtual int GetValue(double& out);
  /// Outcome of the evidence or propagated evidence; KVN_REFUSED without.
  virtual int GetEvidence() const;
  /// Replaces earlier user evidence. KVN_REFUSED for evidence that disagrees with propagated
  /// evidence; the network's code when it finds a contradiction, and the value then has no
  /// evidence.
  virtual int SetEvidence(int outcome);
  virtual int SetEvidence(double value);
  virtual int ClearEvidence();
  virtual int ClearPropagatedEvidence();
  virtual int SetPropagatedEvidence(double value);
  virtual int SetPropagatedEvidence(int outcome);
  /// Soft evidence: one likelihood per outcome.
  virtual int GetVirtualEvidence(std::vector<double>& out) const;
  virtual int SetVirtualEvidence(const std::vector<double>& values);
  /// The matrix, by pointer into the value.
  virtual int GetValue(KVN_Dmatrix*& out);
  /// Replaces the matrix without a check.
  virtual int SetValue(const KVN_Dmatrix& source);

  unsigned GetFlags() const { return valueFlags; }
  bool IsEvidence() const { return (valueFlags & KVN_VALUE_EVIDENCE) != 0; }
  bool IsPropagatedEvidence() const { return (valueFlags & KVN_VALUE_PROPAGATED_EVIDENCE) != 0; }
  /// User evidence or propagated evidence.
  bool HasEvidence() const { return IsEvidence() || IsPropagatedEvidence(); }
  bool IsVirtualEvidence() const { return (valueFlags & KVN_VALUE_VIRTUAL_EVIDENCE) != 0; }
  bool IsValueValid() const { return (valueFlags & KVN_VALUE_VALID) != 0; }
  void SetValueValid() { ChangeFlags(KVN_VALUE_VALID, 0); }
  void ClearValueValid() { ChangeFlags(0, KVN_VALUE_VALID); }
  /// Valid, or evidence without a valid matrix.
  bool IsCurrent() const { return IsValueValid() || HasEvidence(); }
  /// Whether a change elsewhere can take the validity away: that of evidence stands, but for a
  /// choice, which is to be made anew when a utility changes.
  bool CanGoStale() const;
  const KVN_intArray& GetIndexingParents() const { return indexingParents; }
  /// Only for resetting results before an update; the matrix keeps its shape.
  void ClearIndexingParents() { indexingParents.Flush(); }

  KVN_network* GetNetwork() const { return network; }
  int GetHandle() const { return handle; }
  void Attach(KVN_network* newNetwork);

 protected:
  /// Outcome count of the node's definition; negative when it has none.
  int GetOutcomeCount() const;

  /// Sets the bits `raised` and clears the bits `lowered`. The only way to change flags, and in one
  /// step: the network hears of each value that is valid or has evidence, and remembers it.
  void ChangeFlags(unsigned raised, unsigned lowered);

  KVN_network* network;  // not owned
  int handle;
  KVN_intArray indexingParents;  // handles, in dimension order

 private:
  void TellNetwork() const;

  unsigned valueFlags = 0;  // KVN_valueFlag bits
};

/// Makes the value that goes with a definition type code; the caller owns it. Null for a code
/// without one.
KVN_nodeValue* NewValue(int definitionType, KVN_network* network, int handle);

/// Whether NewValue has a class for the definition type code.
bool HasValueClass(int definitionType);

/// A value of the same class with the same content; null when memory is short or the class can't be
/// copied.
KVN_nodeValue* CloneValue(KVN_nodeValue& source);
