#pragma once

#include <memory>

#include "foundation/object.h"

class KVN_extraDefinition;
class KVN_header;
class KVN_network;
class KVN_nodeCost;
class KVN_nodeDefinition;
class KVN_nodeInfo;
class KVN_nodeValue;
class KVN_userProperties;

/// Holder of everything that belongs to one variable: description, definition (what is known
/// before evidence), value (what is known now), observation costs and diagnosis attributes. The
/// graph itself stays in the network's KVN_nodeEntry; a node knows only its network and its handle.
///
/// A node is ready (consistent) when info, definition and value exist and are ready (consistent).
/// Nodes are made by KVN_network::AddNode and by the copying of a network only.
class KVN_node : public KVN_object {
 public:
  KVN_node(KVN_network* network, int handle);
  /// The copy of `source`, which must be ready, otherwise this stays empty. The copy still points
  /// at the source's network: Attach aims it at its own. A definition or value that can't be
  /// copied is left out, and the copy isn't ready then.
  explicit KVN_node(const KVN_node& source);
  KVN_node& operator=(const KVN_node&) = delete;
  ~KVN_node() override;

  /// False where memory ran out while the node was made; such a node is of no use.
  bool IsWhole() const { return info != nullptr && nodeCost != nullptr; }

  /// The identifier; null when unset.
  const char* GetId() const;
  /// See KVN_header.
  [[nodiscard]] int SetId(const char* id);
  int SetName(const char* text);
  int SetComment(const char* text);

  /// The description; every node has one except the copy of a node that wasn't ready.
  KVN_nodeInfo& Info() { return *info; }
  /// The same as Info().UserProperties(); null where there is no description.
  KVN_userProperties* UserProperties() const;
  /// Null while a node has no definition: after AddNode with type 0, or a failed change of type.
  KVN_nodeDefinition* Definition() const { return definition.get(); }
  KVN_nodeValue* Value() const { return value.get(); }
  KVN_nodeCost* Cost() const { return nodeCost.get(); }
  /// Null until the node has had a definition.
  KVN_extraDefinition* ExtraDefinition() const { return extraDefinition.get(); }
  KVN_network* GetNetwork() const { return network; }
  int Handle() const { return handle; }

  /// Definition type code, 0 when there is no definition.
  int GetType() const;

  /// Destroys the definition (the value) and makes the one that goes with a definition type code.
  /// 0 makes none. KVN_REFUSED for an unknown code, KVN_NO_MEMORY: the node then has none.
  int ChangeDefinition(int typeCode);
  int ChangeValue(int definitionType);

  /// Changes the kind of the node and converts what can be converted from the old definition and
  /// value. The present type is a no-op without notification. The old objects are not restored on
  /// failure (intended): the result then tells why the node has no definition, or which conversion
  /// failed and left defaults.
  int ChangeType(int typeCode);
  /// The same by the type's word ("CPT", "TRUTHTABLE", ...); KVN_REFUSED for another word, and then
  /// the node has no definition.
  int ChangeType(const char* typeName);

  /// Handle of the owning submodel, as it was stored (with or without KVN_SUBMODEL_BIT).
  int GetSubmodel() const { return submodel; }
  /// KVN_REFUSED unless the handle names a live submodel.
  [[nodiscard]] int SetSubmodel(int submodelHandle);
  /// KVN_ILLEGAL_ID with "Unknown submodel" in the log.
  [[nodiscard]] int SetSubmodel(const char* submodelId);

  /// Bytes of the extra definition; KVN_REFUSED while there is none.
  int SetDiagnosisFlags(int ranked, int mandatory, int setAsDefault);

  /// Aims the node and its parts at `newNetwork`. KVN_REFUSED for null, KVN_NOT_READY if that
  /// network isn't ready.
  int Attach(KVN_network* newNetwork);

  void CleanUp(int deep) override;
  int CheckReadiness(int deep) override;
  int CheckConsistency(int deep) override;

 private:
  void CopyParts(const KVN_node& source);
  void ReleaseParts();
  int MakeDefinition(int typeCode);
  int FitExtraDefinition();
  void OutcomesReplaced(int oldCount);
  int ConvertOldParts(KVN_nodeDefinition* oldDefinition, KVN_nodeValue* oldValue);
  void DropNonDiscreteParents();

  // Destroyed in this order, front to back.
  std::unique_ptr<KVN_nodeInfo> info;
  std::unique_ptr<KVN_nodeDefinition> definition;
  std::unique_ptr<KVN_nodeValue> value;
  std::unique_ptr<KVN_nodeCost> nodeCost;
  std::unique_ptr<KVN_extraDefinition> extraDefinition;
  KVN_network* network;  // not owned: the network owns this node
  int handle;
  int submodel;
};

/// Definition type code for a type's word, KVN_REFUSED for any other word or null. Only the twelve
/// words that text files may use are known; "EQUATION" isn't one of them.
int DefinitionTypeOfName(const char* typeName);
