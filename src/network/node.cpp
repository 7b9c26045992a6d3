#include "network/node.h"

#include <cstring>
#include <new>
#include <utility>

#include "definitions/nodeDefinition.h"
#include "foundation/errorLog.h"
#include "foundation/intArray.h"
#include "foundation/resultCodes.h"
#include "network/extraDefinition.h"
#include "network/network.h"
#include "network/nodeCost.h"
#include "network/nodeInfo.h"
#include "network/quietScope.h"
#include "network/submodelHandler.h"
#include "values/nodeValue.h"

namespace {

struct TypeWord {
  const char* word;
  int code;
};
constexpr TypeWord kTypeWords[] = {
    {"CPT", KVN_TYPE_CPT},
    {"TRUTHTABLE", KVN_TYPE_TRUTHTABLE},
    {"LIST", KVN_TYPE_LIST},
    {"TABLE", KVN_TYPE_TABLE},
    {"NOISY_MAX", KVN_TYPE_NOISY_MAX},
    {"NOISY_ADDER", KVN_TYPE_NOISY_ADDER},
    {"MAU", KVN_TYPE_MAU},
    {"CAST", KVN_TYPE_CAST},
    {"DEMORGAN", KVN_TYPE_DEMORGAN},
    {"DCHILDHPARENT", KVN_TYPE_DCHILD_HPARENT},
    {"DISTRIBUTION", KVN_TYPE_DISTRIBUTION},
    {"HEQUATION", KVN_TYPE_H_EQUATION},
};

int OutcomeCountOf(const KVN_nodeDefinition* definition) {
  const int count = definition != nullptr ? definition->GetNumberOfOutcomes() : 0;
  return count > 0 ? count : 0;
}

}  // namespace

int DefinitionTypeOfName(const char* typeName) {
  if (typeName == nullptr) return KVN_REFUSED;
  for (const TypeWord& row : kTypeWords) {
    if (std::strcmp(row.word, typeName) == 0) return row.code;
  }
  return KVN_REFUSED;
}

KVN_node::KVN_node(KVN_network* owner, int newHandle)
    : info(new (std::nothrow) KVN_nodeInfo(this)),
      nodeCost(new (std::nothrow) KVN_nodeCost(owner, newHandle)),
      network(owner),
      handle(newHandle),
      submodel(KVN_ROOT_SUBMODEL) {
  SetReady(false);
}

KVN_node::KVN_node(const KVN_node& source)
    : KVN_object(), network(source.network), handle(source.handle), submodel(source.submodel) {
  if (source.IsReady() && network != nullptr) {
    KVN_quietScope quiet(*network);
    CopyParts(source);
  }
  (void)KVN_node::CheckReadiness(/*deep=*/0);
  (void)KVN_node::CheckConsistency(/*deep=*/0);
}

KVN_node::~KVN_node() { ReleaseParts(); }

/// What fails for want of memory stays null or incomplete, so that the copy isn't ready.
void KVN_node::CopyParts(const KVN_node& source) {
  info.reset(new (std::nothrow) KVN_nodeInfo(this));
  if (info == nullptr || info->Assign(*source.info) < 0) {
    info.reset();
    return;
  }
  if (source.definition != nullptr) definition.reset(CloneDefinition(*source.definition));
  if (source.value != nullptr) value.reset(CloneValue(*source.value));
  nodeCost.reset(new (std::nothrow) KVN_nodeCost(network, handle));
  if (nodeCost != nullptr && source.nodeCost != nullptr) (void)nodeCost->Assign(*source.nodeCost);
  if (source.extraDefinition == nullptr) return;
  extraDefinition.reset(new (std::nothrow) KVN_extraDefinition(network, handle));
  if (extraDefinition != nullptr) (void)extraDefinition->Assign(*source.extraDefinition);
}

void KVN_node::ReleaseParts() {
  info.reset();
  definition.reset();
  value.reset();
  nodeCost.reset();
  extraDefinition.reset();
}

const char* KVN_node::GetId() const { return info != nullptr ? info->Header().GetId() : nullptr; }

int KVN_node::SetId(const char* id) {
  return info != nullptr ? info->Header().SetId(id) : KVN_NOT_READY;
}

int KVN_node::SetName(const char* text) {
  return info != nullptr ? info->Header().SetName(text) : KVN_NOT_READY;
}

int KVN_node::SetComment(const char* text) {
  return info != nullptr ? info->Header().SetComment(text) : KVN_NOT_READY;
}

KVN_userProperties* KVN_node::UserProperties() const {
  return info != nullptr ? &info->UserProperties() : nullptr;
}

int KVN_node::GetType() const { return definition != nullptr ? definition->GetType() : 0; }

int KVN_node::ChangeDefinition(int typeCode) {
  const int result = MakeDefinition(typeCode);
  return result == 0 && definition != nullptr ? FitExtraDefinition() : result;
}

int KVN_node::MakeDefinition(int typeCode) {
  definition.reset();
  if (typeCode == KVN_TYPE_NONE) return KVN_SUCCESS;
  if (!IsDefinitionType(typeCode)) return KVN_REFUSED;
  definition.reset(NewDefinition(typeCode, network, handle));
  return definition != nullptr ? KVN_SUCCESS : KVN_NO_MEMORY;
}

/// Makes the extra definition if there is none yet, and gives its lists an entry for each outcome.
int KVN_node::FitExtraDefinition() {
  if (extraDefinition != nullptr) return extraDefinition->FitToOutcomes();
  extraDefinition.reset(new (std::nothrow) KVN_extraDefinition(network, handle));
  return extraDefinition != nullptr ? extraDefinition->Refresh() : KVN_NO_MEMORY;
}

int KVN_node::ChangeValue(int definitionType) {
  value.reset();
  if (definitionType == KVN_TYPE_NONE) return KVN_SUCCESS;
  if (!HasValueClass(definitionType)) return KVN_REFUSED;
  value.reset(NewValue(definitionType, network, handle));
  return value != nullptr ? KVN_SUCCESS : KVN_NO_MEMORY;
}

int KVN_node::ChangeType(int typeCode) {
  const int oldType = GetType();
  if (oldType == typeCode) return KVN_SUCCESS;
  std::unique_ptr<KVN_nodeDefinition> oldDefinition = std::move(definition);
  std::unique_ptr<KVN_nodeValue> oldValue = std::move(value);
  const int oldCount = OutcomeCountOf(oldDefinition.get());

  // A failure from here on doesn't stop the work: the old kind is gone, and the neighbours must
  // hear of it.
  int result = MakeDefinition(typeCode);
  if (int valueResult = ChangeValue(typeCode); result == 0) result = valueResult;
  const int converted = ConvertOldParts(oldDefinition.get(), oldValue.get());
  if (result == 0) result = converted;
  oldDefinition.reset();
  oldValue.reset();

  OutcomesReplaced(oldCount);
  (void)KVN_node::CheckReadiness(/*deep=*/0);
  DropNonDiscreteParents();
  if (network != nullptr) network->TellTypeChanged(handle, oldType);
  return result;
}

int KVN_node::ChangeType(const char* typeName) {
  return ChangeType(DefinitionTypeOfName(typeName));
}

int KVN_node::ConvertOldParts(KVN_nodeDefinition* oldDefinition, KVN_nodeValue* oldValue) {
  int result = KVN_SUCCESS;
  if (definition != nullptr && oldDefinition != nullptr) {
    result = definition->Assign(*oldDefinition);
    // A conversion that was refused at once has left the defaults; one that broke off has left an
    // emptied definition, and its own default numbers are better than none.
    if (result < 0 && result != KVN_NOT_APPLICABLE) (void)definition->ReCreate();
  }
  if (value != nullptr && oldValue != nullptr) {
    const int valueResult = value->Assign(*oldValue);
    if (result == 0) result = valueResult;
  }
  return result;
}

/// Fits what has an entry for each outcome, after a change from a definition with `oldCount` of
/// them. The tables of children are left to the user.
void KVN_node::OutcomesReplaced(int oldCount) {
  if (definition == nullptr) return;
  (void)FitExtraDefinition();  // without memory its lists stay as they were
  if (OutcomeCountOf(definition.get()) == oldCount) return;
  if (network == nullptr || !network->IsLive(handle)) return;
  const KVN_intArray costChildren(network->GetChildren(handle, /*layer=*/1));
  for (int child : costChildren) {
    KVN_nodeCost* cost = network->GetNode(child)->Cost();
    // A parent without outcomes is left out of the table, and Rebuild tells the log.
    if (cost != nullptr) (void)cost->Rebuild();
  }
}

/// Removes the arcs that the new kind can't have. Kinds that keep all their parents say so by
/// KVN_NOT_APPLICABLE, so the results tell nothing.
void KVN_node::DropNonDiscreteParents() {
  if (definition != nullptr) (void)definition->RemoveNonDiscreteParents();
  if (network == nullptr || !network->IsLive(handle)) return;
  // The list of children loses those whose arc goes.
  const KVN_intArray children(network->GetChildren(handle));
  for (int child : children) {
    KVN_nodeDefinition* childDefinition = network->DefinitionOf(child);
    if (childDefinition != nullptr) (void)childDefinition->RemoveNonDiscreteParents();
  }
}

int KVN_node::SetSubmodel(int submodelHandle) {
  if (network == nullptr || submodelHandle < 0) return KVN_REFUSED;
  if (network->Submodels().GetSubmodel(submodelHandle) == nullptr) return KVN_REFUSED;
  submodel = submodelHandle;
  return KVN_SUCCESS;
}

int KVN_node::SetSubmodel(const char* submodelId) {
  const int found = network != nullptr && submodelId != nullptr
                        ? network->Submodels().Find(submodelId)
                        : int{KVN_REFUSED};
  if (found < 0) return LogError(KVN_ILLEGAL_ID, "Unknown submodel");
  submodel = found;
  return KVN_SUCCESS;
}

int KVN_node::SetDiagnosisFlags(int ranked, int mandatory, int setAsDefault) {
  if (extraDefinition == nullptr) return KVN_REFUSED;
  extraDefinition->SetRanked(ranked);
  extraDefinition->SetMandatory(mandatory);
  extraDefinition->SetSetAsDefault(setAsDefault);
  return KVN_SUCCESS;
}

int KVN_node::Attach(KVN_network* newNetwork) {
  if (newNetwork == nullptr) return KVN_REFUSED;
  if (!newNetwork->IsReady()) return KVN_NOT_READY;
  network = newNetwork;
  if (definition != nullptr) definition->Attach(newNetwork);
  if (value != nullptr) value->Attach(newNetwork);
  if (nodeCost != nullptr) nodeCost->Attach(newNetwork);
  if (extraDefinition != nullptr) extraDefinition->Attach(newNetwork);
  return KVN_SUCCESS;
}

void KVN_node::CleanUp(int deep) {
  if (deep != 0) {
    KVN_object* const parts[] = {info.get(), definition.get(), value.get(), nodeCost.get(),
                                 extraDefinition.get()};
    for (KVN_object* part : parts) {
      if (part != nullptr) part->CleanUp(deep);
    }
  }
  ReleaseParts();
  (void)CheckReadiness(/*deep=*/0);
}

int KVN_node::CheckReadiness(int deep) {
  KVN_object* const parts[] = {info.get(), definition.get(), value.get()};
  bool ready = true;
  for (KVN_object* part : parts) {
    if (part != nullptr && deep != 0) (void)part->CheckReadiness(deep);
    ready = ready && part != nullptr && part->IsReady();
  }
  SetReady(ready);
  return ready ? KVN_SUCCESS : KVN_NOT_READY;
}

int KVN_node::CheckConsistency(int deep) {
  KVN_object* const parts[] = {info.get(), definition.get(), value.get()};
  bool consistent = true;
  for (KVN_object* part : parts) {
    if (part != nullptr && deep != 0) (void)part->CheckConsistency(deep);
    consistent = consistent && part != nullptr && part->IsConsistent();
  }
  SetConsistent(consistent);
  return consistent ? KVN_SUCCESS : KVN_NOT_CONSISTENT;
}
