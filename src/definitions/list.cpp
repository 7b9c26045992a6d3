#include "definitions/list.h"

#include <algorithm>

#include "definitions/outcomeNames.h"
#include "foundation/resultCodes.h"
#include "network/network.h"

namespace {

constexpr const char* kPrefix = "Choice";
constexpr int kMinimum = 2;

}  // namespace

KVN_list::KVN_list(KVN_network* theNetwork, int theHandle)
    : KVN_nodeDefinition(theNetwork, theHandle) {}

int KVN_list::Init() {
  const int result = ReCreate();
  (void)CheckReadiness(/*deep=*/1);
  return result;
}

void KVN_list::CleanUp(int deep) {
  if (deep != 0) {
    numberOfOutcomes = 0;
    outcomes.CleanUp(deep);
    choiceValues.CleanUp();
  }
  (void)CheckReadiness(/*deep=*/0);
}

int KVN_list::CheckReadiness(int deep) {
  if (deep != 0) (void)outcomes.CheckReadiness(deep);
  SetReady(outcomes.IsReady());
  return IsReady() ? KVN_SUCCESS : KVN_NOT_READY;
}

int KVN_list::CheckConsistency(int deep) {
  if (deep != 0) (void)outcomes.CheckConsistency(deep);
  SetConsistent(outcomes.IsConsistent());
  return IsConsistent() ? KVN_SUCCESS : KVN_NOT_CONSISTENT;
}

int KVN_list::AddParent(int parent) {
  if (!IsReady()) return KVN_NOT_READY;
  return HasTableDimension(TypeOf(parent)) ? KVN_SUCCESS : KVN_REFUSED;
}

int KVN_list::ReCreate() {
  if (int result = FillOutcomeNames(outcomes, kPrefix, kMinimum); result < 0) return result;
  numberOfOutcomes = outcomes.GetNumItems();
  (void)CheckReadiness(/*deep=*/0);  // AddParent asks for it
  return AddAllParents();
}

int KVN_list::Assign(KVN_nodeDefinition& source) {
  if (!source.IsReady()) return KVN_NOT_READY;
  if (&source == this) return KVN_SUCCESS;
  CleanUp(/*deep=*/1);
  if (int result = KVN_nodeDefinition::Assign(source); result < 0) return result;
  if (source.GetType() != KVN_TYPE_NONE) {
    if (int result = Convert(source); result < 0) return result;
  }
  (void)CheckReadiness(/*deep=*/1);
  (void)CheckConsistency(/*deep=*/1);
  Notify(KVN_CHANGE_DEFINITION);
  return KVN_SUCCESS;
}

int KVN_list::Convert(KVN_nodeDefinition& source) {
  switch (source.GetType()) {
    case KVN_TYPE_EQUATION:
    case KVN_TYPE_EQUATION_SCC:
    case KVN_TYPE_TABLE:
      return ReCreate();
    case KVN_TYPE_LIST: {
      if (int result = TakeNames(source); result < 0) return result;
      KVN_doubleArray* values = nullptr;
      if (int result = source.GetDefinition(values); result < 0) return result;
      if (int result = choiceValues.Assign(*values); result < 0) return result;
      return ReCreate();
    }
    case KVN_TYPE_CPT:
    case KVN_TYPE_TRUTHTABLE:
    case KVN_TYPE_NOISY_MAX:
    case KVN_TYPE_NOISY_ADDER:
      if (int result = TakeNames(source); result < 0) return result;
      DropAllParents();
      return ReCreate();
    default:
      return KVN_REFUSED;
  }
}

int KVN_list::TakeNames(const KVN_nodeDefinition& source) {
  const KVN_idArray* names = source.GetOutcomesNames();
  return names == nullptr ? KVN_REFUSED : CopyOutcomeNames(outcomes, *names);
}

int KVN_list::AddOutcome(const char* name) { return InsertOutcome(outcomes.GetNumItems(), name); }

int KVN_list::InsertOutcome(int position, const char* name) {
  if (!IsReady()) return KVN_NOT_READY;
  if (int result = InsertOutcomeName(outcomes, position, name, kPrefix); result < 0) return result;
  numberOfOutcomes++;
  return OutcomeAdded(position);
}

int KVN_list::RemoveOutcome(int position) {
  if (!IsReady()) return KVN_NOT_READY;
  if (numberOfOutcomes < kMinimum + 1) return KVN_REFUSED;
  // Tested here because there is no table to refuse it, and the list of names accepts any slot.
  if (position < 0 || position >= numberOfOutcomes) return KVN_REFUSED;
  numberOfOutcomes--;
  return OutcomeRemoved(position, outcomes);
}

int KVN_list::RenameOutcome(int position, const char* name) {
  if (!IsReady()) return KVN_NOT_READY;
  return outcomes.SetString(position, name);
}

int KVN_list::RenameOutcomes(const KVN_stringArray& names) {
  if (!IsReady() || !names.IsReady()) return KVN_NOT_READY;
  if (int result = ReplaceOutcomeNames(outcomes, names); result < 0) return result;
  (void)CheckReadiness(/*deep=*/0);
  return KVN_SUCCESS;
}

int KVN_list::SetNumberOfOutcomes(const KVN_stringArray& names) {
  if (HasNode() && network->GetNumberOfChildren(handle) > 0) return KVN_HAS_CHILDREN;
  if (!names.IsReady()) return KVN_NOT_READY;
  // Made before the old ones go: `names` may be this definition's own list.
  KVN_idArray made;
  const int count = UsedCount(names);
  if (int result = MakeOutcomeNames(made, names); result < 0) {
    return result == KVN_NO_MEMORY ? result : SetNumberOfOutcomes(count);
  }
  CleanUp(/*deep=*/1);
  outcomes.SetAllowEmpty(made.GetAllowEmpty());
  outcomes.Swap(made);
  return RebuildForNewOutcomes();
}

int KVN_list::SetNumberOfOutcomes(int count) {
  if (HasNode() && network->GetNumberOfChildren(handle) > 0) return KVN_HAS_CHILDREN;
  CleanUp(/*deep=*/1);
  const int wanted = std::max(count, kMinimum);
  if (int result = FillOutcomeNames(outcomes, kPrefix, wanted); result < 0) return result;
  return RebuildForNewOutcomes();
}

int KVN_list::RebuildForNewOutcomes() {
  const int result = ReCreate();
  OutcomesReplaced();
  (void)CheckReadiness(/*deep=*/0);
  if (result == KVN_SUCCESS) Notify(KVN_CHANGE_DEFINITION);
  return result;
}

int KVN_list::ChangeOrderOfOutcomes(const KVN_intArray& order) {
  if (int result = outcomes.ChangeOrder(order); result < 0) return result;
  (void)choiceValues.ChangeOrder(order);  // refused, and rightly so, when their number differs
  return OutcomesReordered(order);
}

int KVN_list::GetDefinition(KVN_idArray*& out) {
  out = &outcomes;
  return KVN_SUCCESS;
}

int KVN_list::GetDefinition(KVN_doubleArray*& out) {
  out = &choiceValues;
  return KVN_SUCCESS;
}

int KVN_list::SetDefinition(const KVN_stringArray& source) {
  if (!source.IsReady()) return KVN_NOT_READY;
  if (int result = CopyOutcomeNames(outcomes, source); result < 0) return result;
  numberOfOutcomes = outcomes.GetNumItems();
  return KVN_SUCCESS;
}

int KVN_list::SetDefinition(const KVN_doubleArray& source) { return choiceValues.Assign(source); }
