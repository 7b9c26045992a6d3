#pragma once

#include "foundation/dmatrix.h"
#include "foundation/idArray.h"
#include "foundation/intArray.h"
#include "foundation/object.h"
#include "foundation/stringArray.h"

class KVN_extraDefinition;
class KVN_network;

/// Definition type codes. The low bits read: 1 decision alternatives, 2 probabilistic, 4
/// deterministic or functional, 8 utility, 16 discrete outcomes; each higher bit marks one family.
enum KVN_definitionType : int {
  KVN_TYPE_NONE = 0,
  KVN_TYPE_EQUATION = 4,
  KVN_TYPE_TABLE = 8,
  KVN_TYPE_LIST = 17,
  KVN_TYPE_CPT = 18,
  KVN_TYPE_TRUTHTABLE = 20,
  KVN_TYPE_CAST = 50,
  KVN_TYPE_DEMORGAN = 82,
  KVN_TYPE_NOISY_MAX = 146,
  KVN_TYPE_NOISY_ADDER = 274,
  KVN_TYPE_MAU = 520,
  KVN_TYPE_EQUATION_SCC = 1028,
  KVN_TYPE_DCHILD_HPARENT = 2064,
  KVN_TYPE_DISTRIBUTION = 4098,
  KVN_TYPE_H_EQUATION = 4100,
};
constexpr int KVN_TYPE_BIT_DECISION = 1;
constexpr int KVN_TYPE_BIT_UTILITY = 8;
constexpr int KVN_TYPE_BIT_DISCRETE = 16;

/// A row of probabilities counts as summing to 1 inside these bounds, both included.
constexpr double KVN_ROW_SUM_LOW = 0.999995;
constexpr double KVN_ROW_SUM_HIGH = 1.000005;

/// What a node means: the one interface through which the network, the formats and inference see a
/// definition. A definition keeps no arc list of its own: it asks the network for the node's
/// parents, and the network tells it by these slots what has changed. It names its node by network
/// pointer and handle, never by a node pointer.
///
/// Slots keep their order. An unsupported one answers KVN_NOT_APPLICABLE, so callers may ask any
/// node. A mutator that fails halfway leaves what it has done; every mutator of a shape ends in
/// CheckReadiness(0), and only the Set... and Assign operations run CheckConsistency. `consistent`
/// is a status: nothing refuses because of it.
class KVN_nodeDefinition : public KVN_object {
 public:
  /// Ready and consistent when `network` has a node at `handle`.
  KVN_nodeDefinition(KVN_network* network, int handle);
  KVN_nodeDefinition(const KVN_nodeDefinition&) = delete;
  KVN_nodeDefinition& operator=(const KVN_nodeDefinition&) = delete;
  ~KVN_nodeDefinition() override = default;

  int CheckReadiness(int deep) override;

  virtual int GetType() const = 0;
  /// The word of the type in files.
  virtual const char* GetTypeName() const = 0;

  /// `parent` has just become a parent: its position in the network's list says which dimension it
  /// gets. The table repeats its rows along it, so that no posterior moves until numbers are set.
  [[nodiscard]] virtual int AddParent(int parent);
  /// `parent` is about to leave the network's list; of its dimension the slice of its first outcome
  /// stays.
  virtual int RemoveParent(int parent);
  /// Drop the dimension of a parent, keeping the slice of its evidence (summing it out with the
  /// parent's own table as weights). The arc stays, so that later parents no longer stand at the
  /// positions of their dimensions: for copies whose graph isn't edited any more.
  virtual int AbsorbParentEvidence(int parent);
  virtual int MarginalizeParent(int parent);
  virtual int ParentOutcomeInserted(int parent, int position);
  virtual int ParentOutcomeRemoved(int parent, int position);
  virtual int ParentOutcomesReordered(int parent, const KVN_intArray& order);
  /// The network's list was permuted: new position k holds old parent `order[k]`.
  virtual int ReorderParents(const KVN_intArray& order);
  virtual void ParentRenamed(int parent, const char* oldId, const char* newId);

  virtual int EventQuery(int code);
  /// Relays KVN_CHANGE_NO_CASCADE to the network; always 0.
  virtual int ForwardEvent(int code);

  /// Number of cells of the table.
  virtual int GetSize();
  virtual int ConvertFrom(KVN_nodeDefinition& source);
  /// Builds the default numbers for the present outcomes and parents.
  virtual int ReCreate();
  /// Takes the content of any other definition as far as it can be converted. KVN_NOT_READY leaves
  /// this one alone; 0 for itself.
  virtual int Assign(KVN_nodeDefinition& source);
  /// Removes the arcs from parents without discrete outcomes.
  virtual int RemoveNonDiscreteParents();

  virtual int AddOutcome(const char* name);
  virtual int InsertOutcome(int position, const char* name);
  virtual int RemoveOutcome(int position);
  virtual int GetNumberOfOutcomes() const;
  virtual int RenameOutcome(int position, const char* name);
  virtual int RenameOutcomes(const KVN_stringArray& names);
  /// Null for a definition without outcomes.
  virtual const KVN_idArray* GetOutcomesNames() const;
  virtual int SetNumberOfOutcomes(const KVN_stringArray& names);
  virtual int SetNumberOfOutcomes(int count);
  virtual int ChangeOrderOfOutcomes(const KVN_intArray& order);
  /// Edits the outcomes as a whole: new outcome j continues old outcome `mapping[j]`, or is new
  /// where that is negative. `mapping` is used up. Ends at the first step that fails, with the
  /// partly edited state standing.
  virtual int ChangeOutcomes(const KVN_stringArray& names, KVN_intArray& mapping);

  /// Look into the definition; pointers stay its own.
  virtual int GetDefinition(KVN_idArray*& out);
  virtual int Reserved();
  virtual int GetDefinition(KVN_doubleArray*& out);
  virtual int GetDefinition(KVN_Dmatrix*& out);
  /// Replace numbers without a check of shapes or of sums.
  virtual int SetDefinition(const KVN_Dmatrix& source);
  virtual int SetDefinition(const KVN_stringArray& source);
  virtual int SetDefinition(const KVN_intArray& source);
  virtual int SetDefinition(const KVN_doubleArray& source);
  /// Copies the numbers alone into a definition of the same class.
  virtual void CopyParametersTo(KVN_nodeDefinition& target);

  KVN_network* GetNetwork() const { return network; }
  int GetHandle() const { return handle; }
  void Attach(KVN_network* newNetwork) { network = newNetwork; }

 protected:
  /// The node's position list in the network, 0 parents when there is no node.
  const KVN_intArray& Parents() const;
  int NumberOfParents() const;
  /// Position of `parent` among the parents, KVN_REFUSED if it isn't one.
  int PositionOf(int parent) const;
  /// Outcome count of another node's definition; negative when it has none.
  int OutcomesOf(int node) const;
  int TypeOf(int node) const;
  /// Whether the network has a node at the handle: everything that asks the graph tests it first,
  /// since a definition may outlive or precede its node.
  bool HasNode() const;

  /// Spread the news of an edit of this node's outcomes that has just been done to its own data:
  /// to the bookkeeping of the network, the children on both layers and the extra definition. The
  /// first child that fails ends the spreading with its code.
  int OutcomeAdded(int position);
  int OutcomeRemoved(int position, KVN_idArray& names);
  int OutcomesReordered(const KVN_intArray& order);
  /// The outcome set was replaced as a whole: refreshes the extra definition and the cost tables
  /// of the cost children.
  void OutcomesReplaced();
  /// Adds every parent of the network's list through AddParent; a failure is told to the log with
  /// "Parent could not be added" and doesn't stop the loop, nor is it the result: KVN_NO_MEMORY,
  /// with none added, is the only one but 0.
  [[nodiscard]] int AddAllParents();
  /// Removes all arcs into this node.
  void DropAllParents();
  /// Body of RemoveNonDiscreteParents for the classes that have it.
  int DropNonDiscreteParents();
  /// Tells the network (KVN_CHANGE_...). Its result is of no concern to the edit that was done.
  void Notify(int code);

  KVN_network* network;  // not owned
  int handle;

 private:
  /// Null without a node, or for a node without one.
  KVN_extraDefinition* Extra() const;
  int OutcomeCountChanged();
};

/// Whether a parent of this type gets a dimension in a child's table: 17, 18, 20, 146 and 274.
/// Other discrete kinds are left out on purpose.
bool HasTableDimension(int definitionType);

/// Makes the definition for a type code; the caller owns it. Null for a code without a class.
KVN_nodeDefinition* NewDefinition(int typeCode, KVN_network* network, int handle);

/// Whether NewDefinition has a class for the code.
bool IsDefinitionType(int typeCode);

/// A definition of the same class with the same content; null when memory is short or the class
/// can't be copied.
KVN_nodeDefinition* CloneDefinition(KVN_nodeDefinition& source);
