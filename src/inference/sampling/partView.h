#pragma once

#include "inference/exact/relevanceGraph.h"

class KVN_nodeValue;

/// One part of a reduced network by places of its records, as a sample network sees it. The part
/// outlives it; sort the part first, for the places are those of its present order.
class PartView {
 public:
  explicit PartView(RelevanceGraph& thePart) : part(&thePart) {}

  int GetCount() const { return part->GetSize(); }
  KVN_network& GetNetwork() const { return part->GetNetwork(); }
  int GetOutcomes(int place) const { return part->Node(place).outcomes; }
  /// Null when it can't be had.
  const KVN_Dmatrix* GetTable(int place) const { return part->Node(place).GetTable(); }
  /// -1 for none.
  int GetEvidence(int place) const { return part->Node(place).evidence; }
  int GetParentCount(int place) const { return part->Node(place).parents.GetNumItems(); }
  int GetParent(int place, int i) const { return PlaceOf(part->Node(place).parents[i]); }
  int GetChildCount(int place) const { return part->Node(place).children.GetNumItems(); }
  int GetChild(int place, int i) const { return PlaceOf(part->Node(place).children[i]); }
  /// -1 for a record that stands for no node of the network.
  int GetHandle(int place) const;
  /// Null likewise.
  KVN_nodeValue* GetValue(int place) const;

 private:
  int PlaceOf(int number) const { return part->Record(number).position; }

  RelevanceGraph* part;  // not owned
};
