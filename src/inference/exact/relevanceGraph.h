#pragma once

#include <memory>

#include "foundation/dmatrix.h"
#include "foundation/intArray.h"

class KVN_network;
class KVN_node;
class RelevanceGraph;

/// Meanings of RelevanceNode::mark. After the components are labelled it holds the number of the
/// component, from 1.
enum RelevanceMark : int {
  kMarkUntouched = 0,
  kMarkDeterminismDone = 2,
  kMarkAbsorbedRoot = 10,
  kMarkSorted = 16,  // for algorithms that sort a part
  kMarkBarren = 20,
};

/// How RelevanceNode holds its table.
enum RelevanceTableKind : int {
  kTableNone = 0,
  kTableOwned = 1,       // private to the record
  kTableDefinition = 2,  // the definition's, never changed; fetched at first use
  kTableGate = 4,        // a noisy-MAX node whose table has not been chosen yet
};

/// One variable of a reduced network: its arcs, evidence and conditional table, free to be changed
/// without touching the network.
///
/// `parents` and `children` hold numbers of records in the pool. The table has the parents first,
/// in that order, and the node itself as its last dimension.
class RelevanceNode {
 public:
  RelevanceNode() = default;
  RelevanceNode(const RelevanceNode&) = delete;
  RelevanceNode& operator=(const RelevanceNode&) = delete;

  KVN_node* node = nullptr;  // not owned; null for a record that stands for no node of the network
  KVN_intArray parents;
  KVN_intArray children;
  int outcomes = 0;
  int evidence = -1;  // observed outcome, or -1
  int mark = kMarkUntouched;
  int kind = kTableNone;
  int position = -1;  // in the part that holds the record

  bool HasEvidence() const { return evidence >= 0; }
  /// The table; null when it can't be had (a gate too large to expand, or memory).
  const KVN_Dmatrix* GetTable();
  /// Takes over `table` as the private one. KVN_NO_MEMORY leaves the record as it was.
  [[nodiscard]] int SetTable(KVN_Dmatrix&& table);
  /// Gives a private table away when it has been used.
  void DropTable();

 private:
  const KVN_Dmatrix* shared = nullptr;  // not owned: the definition's
  std::unique_ptr<KVN_Dmatrix> owned;
};

/// The records of one reduction, in one block that its parts share: it is freed with the last part,
/// in whatever order these go.
class RelevanceNodePool {
 public:
  /// Null without memory. The caller holds the one reference.
  static RelevanceNodePool* Make(int capacity);
  void AddReference() { ++references; }
  void Release();

  RelevanceNode& operator[](int number) { return records[number]; }
  /// Number of the next unused record, KVN_NO_MEMORY when the pool is used up.
  int Take();
  int GetCount() const { return count; }

 private:
  explicit RelevanceNodePool(int theCapacity) : capacity(theCapacity) {}
  ~RelevanceNodePool() = default;

  std::unique_ptr<RelevanceNode[]> records;
  int capacity;
  int count = 0;
  int references = 1;
};

/// A reduced network, or one independent part of it. Parts are what algorithms receive; they live
/// for one update, and results go straight into the values of the network's nodes.
class RelevanceGraph {
 public:
  RelevanceGraph(KVN_network& network, RelevanceNodePool& pool);
  RelevanceGraph(const RelevanceGraph&) = delete;
  RelevanceGraph& operator=(const RelevanceGraph&) = delete;
  ~RelevanceGraph();

  KVN_network& GetNetwork() const { return network; }
  int GetSize() const { return nodes.GetNumItems(); }
  /// By position in this part.
  RelevanceNode& Node(int position) { return pool[nodes[position]]; }
  /// By number in the pool, as the lists of parents and children hold it.
  RelevanceNode& Record(int number) { return pool[number]; }
  RelevanceNodePool& GetPool() { return pool; }

  KVN_intArray nodes;  // pool numbers
  int evidenceCount = 0;
  bool noisyMaxRelevance = false;

 private:
  KVN_network& network;
  RelevanceNodePool& pool;
};

/// The independent parts of a reduced network. Empty when every requested value was settled by the
/// reduction itself.
class RelevanceParts {
 public:
  RelevanceParts() = default;

  int GetCount() const { return count; }
  RelevanceGraph& operator[](int index) { return *parts[index]; }
  /// Gives room for `capacity` parts; KVN_NO_MEMORY.
  [[nodiscard]] int Reserve(int capacity);
  void Add(std::unique_ptr<RelevanceGraph> part);
  /// Frees one part; its place stays, and may not be used again before Compact.
  void Free(int index) { parts[index].reset(); }
  /// Closes the gaps that Free has left.
  void Compact();

 private:
  std::unique_ptr<std::unique_ptr<RelevanceGraph>[]> parts;
  int count = 0;
};

/// Reduces the network to what the posteriors of its targets need (of all nodes when it has no
/// targets) and cuts the rest into independent parts: barren nodes go (Shachter 1986), evidence
/// cuts its outgoing arcs and settles whatever it determines by logic, roots with one child are
/// summed into it (with `absorbRoots`), and components without a target go (Druzdzel and Suermondt,
/// 1994, Relevance in probabilistic models).
///
/// Values that become known are written at once, also of nodes that are no target (intended). The
/// network is otherwise as before. Contradictory evidence isn't noticed here: it shows as a sum of
/// zero in the algorithm that follows.
///
/// Null with `result` 0 when there is nothing to compute, with KVN_NO_MEMORY when a table could not
/// be had, and with KVN_REFUSED for a node without definition or value.
std::unique_ptr<RelevanceParts> ReduceNetwork(KVN_network& network, bool absorbRoots,
                                              bool useDeterminism, int& result);

/// Writes the record's one-dimensional table into its node's value as it stands, and marks it
/// valid. A record without node writes nothing. KVN_NO_MEMORY when there is no table.
int WriteOwnTable(RelevanceNode& record);

/// Gives the record evidence and writes it into its node's value as a point mass, valid.
/// KVN_REFUSED for an outcome out of range.
int SetRecordEvidence(RelevanceNode& record, int outcome);

/// Writes the value of every part of one record and takes the part out of the list.
void ReleaseOneNodeParts(RelevanceParts& parts);

/// Replaces a noisy-MAX record that is observed in its last outcome by one observed record for each
/// parent, since that outcome's probability is a product of one factor for each cause (Diez 1993;
/// Heckerman and Breese 1996). Nothing happens to other records, or with fewer than two parents.
/// 0, or KVN_NO_MEMORY.
int DecomposeNoisyMax(RelevanceGraph& graph, int number);
