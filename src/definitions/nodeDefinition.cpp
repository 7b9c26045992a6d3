#include "definitions/nodeDefinition.h"

#include <algorithm>
#include <string>

#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/extraDefinition.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeCost.h"

KVN_nodeDefinition::KVN_nodeDefinition(KVN_network* theNetwork, int theHandle)
    : network(theNetwork), handle(theHandle) {
  SetReady(HasNode());
}

int KVN_nodeDefinition::CheckReadiness(int /*deep*/) {
  SetReady(HasNode());
  return IsReady() ? KVN_SUCCESS : KVN_NOT_READY;
}

int KVN_nodeDefinition::AddParent(int /*parent*/) { return KVN_NOT_APPLICABLE; }

int KVN_nodeDefinition::RemoveParent(int /*parent*/) { return KVN_NOT_APPLICABLE; }

int KVN_nodeDefinition::AbsorbParentEvidence(int /*parent*/) { return KVN_NOT_APPLICABLE; }

int KVN_nodeDefinition::MarginalizeParent(int /*parent*/) { return KVN_NOT_APPLICABLE; }

int KVN_nodeDefinition::ParentOutcomeInserted(int /*parent*/, int /*position*/) {
  return KVN_NOT_APPLICABLE;
}

int KVN_nodeDefinition::ParentOutcomeRemoved(int /*parent*/, int /*position*/) {
  return KVN_NOT_APPLICABLE;
}

int KVN_nodeDefinition::ParentOutcomesReordered(int /*parent*/, const KVN_intArray& /*order*/) {
  return KVN_NOT_APPLICABLE;
}

int KVN_nodeDefinition::ReorderParents(const KVN_intArray& /*order*/) { return KVN_NOT_APPLICABLE; }

void KVN_nodeDefinition::ParentRenamed(int /*parent*/, const char* /*oldId*/,
                                       const char* /*newId*/) {}

int KVN_nodeDefinition::EventQuery(int /*code*/) { return KVN_SUCCESS; }

int KVN_nodeDefinition::ForwardEvent(int code) {
  if (code == KVN_CHANGE_NO_CASCADE) Notify(code);
  return KVN_SUCCESS;
}

int KVN_nodeDefinition::GetSize() { return KVN_NOT_APPLICABLE; }

int KVN_nodeDefinition::ConvertFrom(KVN_nodeDefinition& /*source*/) { return KVN_NOT_APPLICABLE; }

int KVN_nodeDefinition::ReCreate() { return KVN_NOT_APPLICABLE; }

int KVN_nodeDefinition::Assign(KVN_nodeDefinition& source) {
  if (!source.IsReady()) return KVN_NOT_READY;
  network = source.network;
  handle = source.handle;
  return KVN_SUCCESS;
}

int KVN_nodeDefinition::RemoveNonDiscreteParents() { return KVN_NOT_APPLICABLE; }

int KVN_nodeDefinition::AddOutcome(const char* /*name*/) { return KVN_NOT_APPLICABLE; }

int KVN_nodeDefinition::InsertOutcome(int /*position*/, const char* /*name*/) {
  return KVN_NOT_APPLICABLE;
}

int KVN_nodeDefinition::RemoveOutcome(int /*position*/) { return KVN_NOT_APPLICABLE; }

int KVN_nodeDefinition::GetNumberOfOutcomes() const { return KVN_NOT_APPLICABLE; }

int KVN_nodeDefinition::RenameOutcome(int /*position*/, const char* /*name*/) {
  return KVN_NOT_APPLICABLE;
}

int KVN_nodeDefinition::RenameOutcomes(const KVN_stringArray& /*names*/) {
  return KVN_NOT_APPLICABLE;
}

const KVN_idArray* KVN_nodeDefinition::GetOutcomesNames() const { return nullptr; }

int KVN_nodeDefinition::SetNumberOfOutcomes(const KVN_stringArray& /*names*/) {
  return KVN_NOT_APPLICABLE;
}

int KVN_nodeDefinition::SetNumberOfOutcomes(int /*count*/) { return KVN_NOT_APPLICABLE; }

int KVN_nodeDefinition::ChangeOrderOfOutcomes(const KVN_intArray& /*order*/) {
  return KVN_NOT_APPLICABLE;
}

namespace {

/// One run of KVN_nodeDefinition::ChangeOutcomes. Removals come before additions, so that an
/// outcome may take over the name of one that goes; temporary outcomes keep the count at 2 in
/// between, which RemoveOutcome insists on.
class OutcomeEdit {
 public:
  OutcomeEdit(KVN_nodeDefinition& theDefinition, const KVN_stringArray& theNames,
              KVN_intArray& theMapping)
      : definition(theDefinition),
        names(theNames),
        mapping(theMapping),
        entryCount(UsedCount(theMapping)) {
    int kept = 0;
    for (int j = 0; j < entryCount; j++) kept += mapping[j] >= 0 ? 1 : 0;
    temporaryCount = std::max(0, 2 - kept);
  }

  int Run() {
    const int oldCount = definition.GetNumberOfOutcomes();
    if (oldCount < 0) return oldCount;
    if (int result = AddTemporaries(); result != 0) return result;
    if (int result = RemoveUnmapped(oldCount); result != 0) return result;
    if (int result = AddNew(); result != 0) return result;
    if (int result = RemoveTemporaries(); result != 0) return result;
    if (!IsIdentity()) {
      if (int result = definition.ChangeOrderOfOutcomes(mapping); result != 0) return result;
    }
    return definition.RenameOutcomes(names);
  }

 private:
  int AddTemporaries() {
    std::string name = "tmpStateUI";
    for (int i = 0; i < temporaryCount; i++) {
      name += '0';
      if (int result = definition.AddOutcome(name.c_str()); result != 0) return result;
    }
    return 0;
  }

  int RemoveUnmapped(int oldCount) {
    for (int i = oldCount - 1; i >= 0; i--) {
      int* const end = mapping.GetItems() + entryCount;
      if (std::find(mapping.GetItems(), end, i) != end) continue;
      if (int result = definition.RemoveOutcome(i); result != 0) return result;
      for (int j = 0; j < entryCount; j++) mapping[j] -= mapping[j] > i ? 1 : 0;
    }
    return 0;
  }

  int AddNew() {
    const int firstNew = definition.GetNumberOfOutcomes() - temporaryCount;
    for (int j = 0; j < entryCount; j++) {
      if (mapping[j] >= 0) continue;
      if (int result = definition.AddOutcome(names[j]); result != 0) return result;
      mapping[j] = firstNew + addedCount++;
    }
    return 0;
  }

  /// They stand between the outcomes that were kept and those that were added.
  int RemoveTemporaries() {
    for (int i = 0; i < temporaryCount; i++) {
      if (int result = definition.RemoveOutcome(entryCount - addedCount); result != 0) {
        return result;
      }
    }
    return 0;
  }

  bool IsIdentity() const {
    for (int j = 0; j < entryCount; j++) {
      if (mapping[j] != j) return false;
    }
    return true;
  }

  KVN_nodeDefinition& definition;
  const KVN_stringArray& names;
  KVN_intArray& mapping;
  int entryCount;
  int temporaryCount = 0;
  int addedCount = 0;
};

}  // namespace

int KVN_nodeDefinition::ChangeOutcomes(const KVN_stringArray& names, KVN_intArray& mapping) {
  if (UsedCount(names) != UsedCount(mapping)) return KVN_REFUSED;
  return OutcomeEdit(*this, names, mapping).Run();
}

int KVN_nodeDefinition::GetDefinition(KVN_idArray*& /*out*/) { return KVN_NOT_APPLICABLE; }

int KVN_nodeDefinition::Reserved() { return KVN_NOT_APPLICABLE; }

int KVN_nodeDefinition::GetDefinition(KVN_doubleArray*& /*out*/) { return KVN_NOT_APPLICABLE; }

int KVN_nodeDefinition::GetDefinition(KVN_Dmatrix*& /*out*/) { return KVN_NOT_APPLICABLE; }

int KVN_nodeDefinition::SetDefinition(const KVN_Dmatrix& /*source*/) { return KVN_NOT_APPLICABLE; }

int KVN_nodeDefinition::SetDefinition(const KVN_stringArray& /*source*/) {
  return KVN_NOT_APPLICABLE;
}

int KVN_nodeDefinition::SetDefinition(const KVN_intArray& /*source*/) { return KVN_NOT_APPLICABLE; }

int KVN_nodeDefinition::SetDefinition(const KVN_doubleArray& /*source*/) {
  return KVN_NOT_APPLICABLE;
}

void KVN_nodeDefinition::CopyParametersTo(KVN_nodeDefinition& /*target*/) {}

bool KVN_nodeDefinition::HasNode() const { return network != nullptr && network->IsLive(handle); }

const KVN_intArray& KVN_nodeDefinition::Parents() const {
  static const KVN_intArray none;
  return HasNode() ? network->GetParents(handle) : none;
}

int KVN_nodeDefinition::NumberOfParents() const { return Parents().GetNumItems(); }

int KVN_nodeDefinition::PositionOf(int parent) const { return Parents().FindPosition(parent); }

int KVN_nodeDefinition::OutcomesOf(int node) const {
  const KVN_nodeDefinition* other = network != nullptr ? network->DefinitionOf(node) : nullptr;
  return other != nullptr ? other->GetNumberOfOutcomes() : KVN_REFUSED;
}

int KVN_nodeDefinition::TypeOf(int node) const {
  return network != nullptr ? network->TypeOf(node) : static_cast<int>(KVN_TYPE_NONE);
}

void KVN_nodeDefinition::Notify(int code) {
  if (network != nullptr) (void)network->NotifyChange(handle, code);
}

namespace {

/// Tells the definitions of a node's children, then the costs of its cost children. The lists are
/// copied, because a child's definition may edit arcs. The first definition that fails ends the
/// walk with its code; costs hold back no edit of the model.
template <class TellDefinition, class TellCost>
int TellChildren(const KVN_network& network, int handle, TellDefinition tellDefinition,
                 TellCost tellCost) {
  KVN_intArray children;
  if (int result = children.Assign(network.GetChildren(handle)); result < 0) return result;
  for (int child : children) {
    KVN_nodeDefinition* definition = network.DefinitionOf(child);
    if (definition == nullptr) continue;
    if (int result = tellDefinition(*definition); result != 0) return result;
  }
  KVN_intArray costChildren;
  const KVN_intArray& listed = network.GetChildren(handle, /*layer=*/1);
  if (int result = costChildren.Assign(listed); result < 0) return result;
  for (int child : costChildren) {
    const KVN_node* node = network.GetNode(child);
    if (node != nullptr && node->Cost() != nullptr) (void)tellCost(*node->Cost());
  }
  return KVN_SUCCESS;
}

}  // namespace

KVN_extraDefinition* KVN_nodeDefinition::Extra() const {
  return HasNode() ? network->GetNode(handle)->ExtraDefinition() : nullptr;
}

int KVN_nodeDefinition::OutcomeAdded(int position) {
  if (HasNode()) {
    network->TellOutcomeAdded(handle, position);
    const int result = TellChildren(
        *network, handle,
        [&](KVN_nodeDefinition& child) { return child.ParentOutcomeInserted(handle, position); },
        [&](KVN_nodeCost& cost) { return cost.ParentOutcomeAdded(handle, position); });
    if (result != 0) return result;
  }
  if (KVN_extraDefinition* extra = Extra()) (void)extra->OutcomeAdded(position);
  return OutcomeCountChanged();
}

int KVN_nodeDefinition::OutcomeRemoved(int position, KVN_idArray& names) {
  if (int result = names.Delete(position); result < 0) return result;
  if (HasNode()) {
    network->TellOutcomeRemoved(handle, position);
    const int result = TellChildren(
        *network, handle,
        [&](KVN_nodeDefinition& child) { return child.ParentOutcomeRemoved(handle, position); },
        [&](KVN_nodeCost& cost) { return cost.ParentOutcomeRemoved(handle, position); });
    if (result != 0) return result;
  }
  if (KVN_extraDefinition* extra = Extra()) (void)extra->OutcomeRemoved(position);
  return OutcomeCountChanged();
}

int KVN_nodeDefinition::OutcomeCountChanged() {
  (void)CheckReadiness(/*deep=*/0);
  Notify(KVN_CHANGE_OUTCOMES);
  return KVN_SUCCESS;
}

// It is meant that nobody notifies the network of a change here: the numbers keep their meaning,
// and a value that is valid stays so.
int KVN_nodeDefinition::OutcomesReordered(const KVN_intArray& order) {
  if (!HasNode()) return KVN_SUCCESS;
  if (KVN_extraDefinition* extra = Extra()) (void)extra->ReorderOutcomes(order);
  const int result = TellChildren(
      *network, handle,
      [&](KVN_nodeDefinition& child) { return child.ParentOutcomesReordered(handle, order); },
      [&](KVN_nodeCost& cost) { return cost.ParentOutcomesReordered(handle, order); });
  if (result != 0) return result;
  network->TellOutcomesReordered(handle, order);
  return KVN_SUCCESS;
}

void KVN_nodeDefinition::OutcomesReplaced() {
  if (!HasNode()) return;
  if (KVN_extraDefinition* extra = Extra()) (void)extra->Refresh();
  for (int child : network->GetChildren(handle, /*layer=*/1)) {
    const KVN_node* node = network->GetNode(child);
    // Rebuild reports its own failures.
    if (node != nullptr && node->Cost() != nullptr) (void)node->Cost()->Rebuild();
  }
}

int KVN_nodeDefinition::AddAllParents() {
  KVN_intArray parents;
  if (int result = parents.Assign(Parents()); result < 0) return result;
  for (int parent : parents) {
    if (int result = AddParent(parent); result != 0) {
      (void)LogError(result, "Parent could not be added");
    }
  }
  return KVN_SUCCESS;
}

void KVN_nodeDefinition::DropAllParents() {
  if (HasNode()) (void)network->RemoveAllParents(handle);
}

int KVN_nodeDefinition::DropNonDiscreteParents() {
  KVN_intArray unwanted;
  for (int parent : Parents()) {
    if ((TypeOf(parent) & KVN_TYPE_BIT_DISCRETE) != 0) continue;
    if (int result = unwanted.Add(parent); result < 0) return result;
  }
  for (int parent : unwanted) {
    if (int result = network->RemoveArc(parent, handle, /*layer=*/0); result < 0) return result;
  }
  return KVN_SUCCESS;
}

bool HasTableDimension(int definitionType) {
  switch (definitionType) {
    case KVN_TYPE_LIST:
    case KVN_TYPE_CPT:
    case KVN_TYPE_TRUTHTABLE:
    case KVN_TYPE_NOISY_MAX:
    case KVN_TYPE_NOISY_ADDER:
      return true;
    default:
      return false;
  }
}
