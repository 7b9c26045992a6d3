#pragma once

class KVN_network;

/// What the network tells the engine of dynamic networks, which unrolls plates over time slices.
/// A network without plates has none; nothing makes one yet.
class KVN_temporalEngine {
 public:
  virtual ~KVN_temporalEngine() = default;
  virtual void NodeDeleted(int handle) = 0;
  virtual void NodeTypeChanged(int handle, int oldType) = 0;
  virtual void ArcAdded(int parent, int child) = 0;
  virtual void ArcRemoved(int parent, int child) = 0;
  virtual void OutcomeAdded(int handle, int position) = 0;
  virtual void OutcomeRemoved(int handle, int position) = 0;
  virtual void OutcomesReordered(int handle, const class KVN_intArray& order) = 0;
  virtual int UpdateBeliefs() = 0;
  virtual KVN_temporalEngine* Clone(KVN_network& network) const = 0;
};
