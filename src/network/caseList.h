#pragma once

class KVN_network;

/// What the network tells its list of evidence cases, and nothing more: the model knows that a
/// network may carry cases, not how they are kept.
class KVN_caseList {
 public:
  virtual ~KVN_caseList() = default;
  virtual void NodeDeleted(int handle) = 0;
  virtual void NodeTypeChanged(int handle, int oldType) = 0;
  virtual void OutcomeAdded(int handle, int position) = 0;
  virtual void OutcomeRemoved(int handle, int position) = 0;
  virtual void OutcomesReordered(int handle, const class KVN_intArray& order) = 0;
  virtual KVN_caseList* Clone(KVN_network& network) const = 0;
};
