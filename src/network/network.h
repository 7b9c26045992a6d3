#pragma once

#include <cstdint>
#include <memory>

#include "foundation/episParameters.h"
#include "foundation/identifierIndex.h"
#include "foundation/intArray.h"
#include "foundation/object.h"
#include "network/algorithmParameters.h"
#include "network/creation.h"
#include "network/documentation.h"
#include "network/userProperties.h"

class KVN_caseList;
class KVN_ciDefinition;
class KVN_header;
struct KVN_logicFrame;
class KVN_node;
class KVN_nodeDefinition;
class KVN_nodeEntry;
class KVN_nodeValue;
class KVN_submodelHandler;
class KVN_temporalEngine;

/// Codes of KVN_network::NotifyChange: what a definition did to itself.
constexpr int KVN_CHANGE_OUTCOMES = 64;        // an outcome was added or removed
constexpr int KVN_CHANGE_NUMBERS = 128;        // the numbers were set
constexpr int KVN_CHANGE_DEFINITION = 256;     // the definition was replaced or rebuilt
constexpr int KVN_CHANGE_NO_CASCADE = 123445;  // relayed event: no value becomes stale

/// Bits of KVN_network::changeMask beyond the three above: the hooks that may run.
constexpr int KVN_HOOK_ARC_ADDED = 1;
constexpr int KVN_HOOK_ARC_REMOVED = 2;
constexpr int KVN_HOOK_EVIDENCE_SET = 4;
constexpr int KVN_HOOK_EVIDENCE_CLEARED = 8;

/// Bits of KVN_network::updateFlags.
constexpr int KVN_UPDATE_TRACK_CHANGES = 1;       // the hooks do their work
constexpr int KVN_UPDATE_PROPAGATE_EVIDENCE = 2;  // logical consequences of evidence are derived
constexpr int KVN_UPDATE_AUTOMATIC = 8;           // every hook ends with UpdateBeliefs
constexpr int KVN_UPDATE_NO_SAMPLING = 16;        // equation networks are not sampled

/// Bits of KVN_network::loadFlags, non-zero only during ReadFile.
constexpr int KVN_LOAD_RUNNING = 1;
constexpr int KVN_LOAD_ANY_ARC_ORDER = 2;
constexpr int KVN_LOAD_REPEATED_IDS = 4;

/// The model object of the engine: a table of nodes addressed by integer handles, two layers of
/// arcs over them, the submodel tree, descriptive data and the settings of the algorithms.
///
/// Handles. A handle is the index of a slot in the table. The handle of a live node never changes;
/// a deleted one is reused. Invariants:
///   - p is in the parents of c exactly when c is in the children of p, on each layer;
///   - layer 0 is acyclic, except while KVN_LOAD_ANY_ARC_ORDER is set;
///   - the position of a parent in the list is its dimension in the child's table.
///
/// The table. `size` grows by `growBy` slots when all are taken, which decides what handles are
/// given out; the memory behind it grows by half, so that the entries seldom move.
///
/// Layers. 0 is the normal layer; 1 holds the observation costs and has no influence on inference.
///
/// Results. 0, or KVN_REFUSED for a bad handle or argument, KVN_NO_MEMORY, KVN_NOT_APPLICABLE for a
/// refused arc, KVN_NOT_READY for a source that isn't ready. A network belongs to one thread, and
/// the walks over it keep their state in the entries: they are not reentrant.
///
/// Memory. A network that got none when it was made isn't ready: it takes no nodes and no file
/// until Initialize succeeds.
class KVN_network : public KVN_object, private KVN_identifierIndex::Source {
 public:
  KVN_network();
  /// See Assign; a source that isn't ready leaves an empty network.
  KVN_network(const KVN_network& source);
  KVN_network& operator=(const KVN_network& source);
  ~KVN_network() override;

  /// Empties the network and allocates the table; a value that isn't positive becomes 50. The
  /// root submodel is called "Unnamed".
  int Initialize(int initialSize, int growBy);

  /// Takes everything over, handles and holes included; with `skipTemporal` every node becomes a
  /// plain one. Beliefs and evidence of both networks stay as they are: no notification runs.
  /// Nodes whose definition or value can't be copied stay behind not ready, and the next
  /// CheckReadiness deletes them (intended). KVN_NOT_READY leaves this network alone; without
  /// memory it ends as far as it got.
  int Assign(const KVN_network& source, int skipTemporal);

  // --- Walks over the table, by ascending handle.

  int GetFirstNode() const;
  /// Next live handle after `handle`, which needn't be live; KVN_REFUSED at the end.
  int GetNextNode(int handle) const;
  int GetLastNode() const;
  int GetNumberOfNodes() const { return numNodes; }
  /// Slots in the table, free ones included.
  int GetSize() const { return size; }
  /// Appends the live handles.
  int GetAllNodes(KVN_intArray& list) const;
  bool IsLive(int handle) const;

  // --- Look-up.

  /// The lowest handle whose identifier is `id` exactly; KVN_REFUSED if none. Doesn't scan.
  int FindNode(const char* id) const;
  /// Null for a bad handle.
  KVN_node* GetNode(int handle) const;
  /// Null for a bad handle, or a node without one.
  KVN_nodeDefinition* DefinitionOf(int handle) const;
  KVN_nodeValue* ValueOf(int handle) const;
  /// Definition type code of a node; 0 for a bad handle or a node without definition.
  int TypeOf(int handle) const;
  /// Whether a node other than `exceptHandle`, or a submodel, has the identifier: they share one
  /// namespace. Identifiers that begin with '@' are never counted as used.
  int IsIdentifierUsed(const char* id, int exceptHandle = -1) const;
  /// Called by a header: whether the rename is accepted; the definitions of the node and of its
  /// children are told if so. IdentifierChanged must follow as soon as the new text stands, for
  /// the look-up by identifier.
  int AcceptRename(int handle, const char* oldId, const char* newId);
  void IdentifierChanged(int handle);

  // --- Nodes.

  /// The handle of a new node; a null id is generated. KVN_REFUSED when the id is in use. An
  /// illegal id doesn't fail the call (intended): the node gets a generated identifier, and the
  /// given text as its name. A definition that can't be made is told to the log and left out.
  int AddNode(int definitionType, const char* id);
  int DeleteNode(int handle);
  /// Writes "Node" and a number that isn't in use; `buffer` holds at least 32 bytes.
  void GetNewNodeName(char* buffer) const;

  // --- Arcs.

  /// KVN_REFUSED for a bad handle, an arc that stands already in either direction, or one that
  /// would close a cycle; KVN_NOT_APPLICABLE where the temporal kinds forbid it, or when the
  /// child's definition refuses ("Arc rejected by child node" in the log). Cost arcs (layer 1) have
  /// neither duplicate nor cycle test (intended). A failure leaves the graph unchanged.
  int AddArc(int parent, int child, int layer);
  int RemoveArc(int parent, int child, int layer);
  int RemoveAllParents(int handle);
  /// The lists themselves, without a handle check: copy one before nodes are added, since the table
  /// may move.
  const KVN_intArray& GetParents(int handle, int layer = 0) const;
  const KVN_intArray& GetChildren(int handle, int layer = 0) const;
  int GetNumberOfParents(int handle, int layer = 0) const;
  int GetNumberOfChildren(int handle, int layer = 0) const;
  /// Position of `parent` in the parent list of `child`, KVN_REFUSED if it isn't one.
  int PositionOfParent(int parent, int child, int layer = 0) const;
  int IsArcEitherWay(int a, int b) const;
  /// Permutes the parents as KVN_intArray::ChangeOrder does, and the definition with them.
  int ChangeOrderOfParents(int handle, const KVN_intArray& order);

  // --- Coupled equations.

  /// Makes the nodes one strongly coupled component: the identifiers of all of them, as they are
  /// now, become the set of each. KVN_REFUSED, unchanged, for an empty list or a node that isn't a
  /// KVN_equationSCC.
  int DeclareComponent(const KVN_intArray& handles);
  /// Empties the set of this one node; KVN_REFUSED for a node that has none.
  int ClearComponent(int handle);

  // --- Targets.

  int SetTarget(int handle);
  int UnSetTarget(int handle);
  int IsTarget(int handle) const;
  int ClearAllTargets();
  int GetNumberOfTargets() const { return numTargets; }

  // --- Graph queries.

  /// All live nodes, parents before children; ties by handle and parent order. The list is the
  /// network's own and the next call overwrites it: copy it before the network changes.
  const KVN_intArray& GetOrderOfNodes();
  /// Appends the nodes below, in handle order.
  int GetDescendants(int handle, KVN_intArray& list);
  /// Appends the nodes with evidence or propagated evidence, in handle order.
  int GetEvidenceNodes(KVN_intArray& list) const;
  /// Keeps those of `list` whose definition type has a bit of `mask`.
  int FilterByDefinitionType(const KVN_intArray& list, int mask, KVN_intArray& result) const;
  int GetDiscreteParents(int handle, KVN_intArray& result, int layer) const;
  int IsSinglyConnected();
  /// Height of each node above its deepest leaf; the largest.
  int ComputeLevels();
  /// Result of the last ComputeLevels.
  int GetLevel(int handle) const;
  /// Order for decision evaluation: before each decision what is known when it is made.
  int GetTemporalOrder(KVN_intArray& list);
  /// Whether the discrete node's table has the shape that its parents ask for.
  bool TableFits(int handle) const;

  // --- Evidence and updating.

  /// Hooks, called by values, definitions and the arc operations.
  int EvidenceChanged(int handle);
  int EvidenceCleared(int handle);
  int VirtualEvidenceChanged(int handle);
  int NotifyChange(int handle, int code);
  int ArcAdded(int parent, int child);
  int ArcRemoved(int parent, int child);
  /// Called by a value that has become valid or has got evidence, or that joins the network so,
  /// with whether a change elsewhere can make it stale.
  void NoteCurrentValue(bool canGoStale) {
    mayHaveCurrentValue = true;
    if (canGoStale) mayGoStale = true;
  }

  /// Computes all posteriors (or expected utilities) by the algorithm that fits the network's
  /// content and settings. 0 or a code; the node values tell what is valid.
  int UpdateBeliefs();
  /// The part of it for networks of discrete chance nodes, without a look at the content.
  int UpdateDiscrete();
  int InvalidateAllBeliefs();
  int ClearAllPropagatedEvidence();

  // --- Listeners below the nodes: the cases, and the temporal engine if there is one.

  void TellTypeChanged(int handle, int oldType);
  void TellOutcomeAdded(int handle, int position);
  void TellOutcomeRemoved(int handle, int position);
  void TellOutcomesReordered(int handle, const KVN_intArray& order);

  // --- Files.

  /// Empties the network and reads the file; a format of 0 is told by the extension. 0 or the
  /// reader's code; what was read up to a failure stays. Syntax errors of a text format are in the
  /// error log and not in the result.
  int ReadFile(const char* fileName, int format = 0, std::intptr_t options = 0);
  int WriteFile(const char* fileName, int format = 0, std::intptr_t options = 0);

  // --- Parts and settings.

  /// The root submodel's header: the network's own identifier, name and comment. There is none
  /// after CleanUp(1), nor in a network that got no memory when it was made.
  KVN_header& Header();
  KVN_creation& Creation() { return creation; }
  KVN_userProperties& UserProperties() { return userProperties; }
  KVN_documentation& Documentation() { return documentation; }
  KVN_submodelHandler& Submodels() const { return *submodels; }
  /// Null when the network carries none.
  KVN_caseList* Cases() const { return cases.get(); }
  KVN_temporalEngine* Temporal() const { return temporal.get(); }

  int GetNumberOfSamples() const { return numSamples; }
  void SetNumberOfSamples(int n) { numSamples = n; }
  int GetDiscSamples() const { return discSamples; }
  void SetDiscSamples(int n) { discSamples = n; }
  int GetDiscAvoidZero() const { return discAvoidZero; }
  void SetDiscAvoidZero(int flag) { discAvoidZero = flag != 0; }
  int GetDefaultBNAlgorithm() const { return defaultBNAlgorithm; }
  /// Codes outside 0 to 12 are ignored.
  void SetDefaultBNAlgorithm(int code);
  int GetDefaultIDAlgorithm() const { return defaultIDAlgorithm; }
  /// 0 policy evaluation, 1 best policy search; others are ignored.
  void SetDefaultIDAlgorithm(int code);
  int GetDefaultHybridAlgorithm() const { return defaultHybridAlgorithm; }
  /// Codes outside 13 to 16 are ignored.
  void SetDefaultHybridAlgorithm(int code);
  int GetEquationDiscretized() const { return equationDiscretized; }
  void SetEquationDiscretized(int flag) { equationDiscretized = flag != 0; }
  int GetUpdateFlags() const { return updateFlags; }
  void SetUpdateFlags(int flags) { updateFlags = flags; }
  int GetChangeMask() const { return changeMask; }
  void SetChangeMask(int mask) { changeMask = mask; }
  int GetLoadFlags() const { return loadFlags; }
  /// How faults are named on screen, 0 to 3; other values are ignored.
  int GetShowAs() const { return showAs; }
  void SetShowAs(int mode);
  int GetNoisyMaxRelevance() const { return noisyMaxRelevance; }
  void SetNoisyMaxRelevance(int flag) { noisyMaxRelevance = flag != 0; }
  const EpisParameters& GetEpisParams() const { return hybridParameters; }
  /// KVN_REFUSED, unchanged, for a record that isn't acceptable. Both names set the same record.
  int SetEpisParams(const EpisParameters& parameters);
  int SetHybridParameters(const EpisParameters& parameters) { return SetEpisParams(parameters); }
  const KVN_solverParameters& GetSolverParameters() const { return solverParameters; }
  int SetSolverParameters(const KVN_solverParameters& parameters);
  int GetSolverSteps() const { return solverSteps; }
  /// KVN_REFUSED below 1.
  int SetSolverSteps(int steps);
  /// Whether the node pays its observation cost once for a group of tests.
  int IsTestGroupCost(int handle) const;
  int GetTemporalType(int handle) const;
  int SetTemporalType(int handle, int type);

  void CleanUp(int deep) override;
  /// Deletes every node that isn't ready (intended: a half-read node must not stay).
  int CheckReadiness(int deep) override;
  /// Stops at the first node that isn't consistent and tells the log which.
  int CheckConsistency(int deep) override;

 private:
  const char* IdentifierOf(int number) const override;

  KVN_nodeEntry& Entry(int handle) const;
  void ClearMarks(int mask);
  int FindFreeSlot();
  int GrowTable();
  void DestroyNodes();
  void ResetForReading();
  int FindNodeExcept(const char* id, int exceptHandle) const;
  int NameNewNode(int handle, const char* id);
  int RemoveArcsOf(int handle, KVN_intArray KVN_nodeEntry::*list, int layer, bool asParent);
  bool IsArcPossible(int parent, int child) const;
  bool HasArc(int parent, int child) const;
  int ReachesDownward(int from, int to);
  bool GateFits(const KVN_ciDefinition& gate) const;
  int AddPlainArc(int parent, int child);
  int RemovePlainArc(int parent, int child);
  int AddCostArc(int parent, int child);
  int RemoveCostArc(int parent, int child);
  void DropTestGroupCost(int handle);
  int AllocateTable(int newSize);
  int CopyEntries(const KVN_network& source, int skipTemporal);
  int CopyEntry(const KVN_nodeEntry& source, int handle, int skipTemporal);
  void CopySettings(const KVN_network& source);
  int CopyListeners(const KVN_network& source, int skipTemporal);

  // Staleness (changeCascade.cpp). A walk that runs out of memory answers KVN_NO_MEMORY.
  int ChangeCascade(int handle);
  int CascadeFrom(int handle, bool& needDecisions);
  int MarkEvidenceAncestors();
  int Spread(int start, int pending, bool& needDecisions);
  int EnterSpread(int handle, int direction, bool& needDecisions);
  int SpreadEvidence(int handle, bool& needDecisions);
  void GiveUpWalk(bool& needDecisions);
  void InvalidateDecisions();
  bool HasCurrentValue() const;
  bool HasValueToGoStale() const;
  int ArcChanged(int child, int hook);
  void AutomaticUpdate();

  // Logical consequences of evidence (evidenceLogic.cpp).
  int CheckPossible(int handle) const;
  int PropagateEvidence(int handle);
  int PropagateAllEvidence();
  int EvidenceCoordinates(int handle, KVN_intArray& coordinates) const;
  int StepForward(KVN_logicFrame& frame, int& follow);
  int StepBackward(KVN_logicFrame& frame, int& follow);
  int Conclude(int from, int other, int outcome, int& follow);

  // Updating (updateDriver.cpp, softEvidence.cpp).
  int RunDiscreteAlgorithm();
  int UpdateEquations();
  int UpdateHybrid();
  int UpdateDecisionNetwork();
  int UpdateTemporal();
  int ResetValue(int handle);
  int InstallSoftEvidence(KVN_intArray& helpers);
  int AddSoftEvidenceHelper(int handle, KVN_intArray& helpers);
  void RemoveSoftEvidence(const KVN_intArray& helpers);

  KVN_creation creation;
  KVN_userProperties userProperties;
  KVN_documentation documentation;
  std::unique_ptr<KVN_submodelHandler> submodels;
  KVN_nodeEntry* nodes = nullptr;  // owned table, indexed by handle
  int size = 0;
  int capacity = 0;  // entries allocated; those from `size` on are empty
  int numNodes = 0;
  int growBy = 50;
  int numTargets = 0;
  int numSamples = 1000;
  int discSamples = 10000;
  int defaultBNAlgorithm = 0;
  int defaultIDAlgorithm = 0;
  int defaultHybridAlgorithm = 14;
  unsigned char equationDiscretized = 0;
  unsigned char discAvoidZero = 1;
  KVN_intArray order;
  int updateFlags = 3;
  int changeMask = 463;
  int loadFlags = 0;
  int spare = 3;
  EpisParameters hybridParameters;
  int solverSteps = 5;
  KVN_solverParameters solverParameters;
  int reservedWord = 0;
  std::unique_ptr<KVN_caseList> cases;
  std::unique_ptr<KVN_temporalEngine> temporal;
  unsigned char noisyMaxRelevance = 0;
  int showAs = 0;
  KVN_identifierIndex index{*this};  // node identifiers, beside the table
  int lowestFree = 0;                // no slot below it is free
  std::int64_t arcTests = 0;         // numbers used so far for KVN_nodeEntry::arcTest
  bool mayHaveCurrentValue = false;  // false: no value is valid, and none has evidence
  bool mayGoStale = false;           // false: no value's CanGoStale holds
};
