#include "network/extraDefinition.h"

#include <new>
#include <string>
#include <utility>

#include "definitions/nodeDefinition.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/node.h"
#include "network/ownedText.h"

namespace {

using Documents = std::unique_ptr<KVN_documentation[]>;

/// Makes `documents` an array of `count`, where i takes over the old one at `sourceOf(i)`, or is
/// new where that is negative. KVN_NO_MEMORY leaves the array as it was.
template <typename SourceOf>
int RearrangeDocuments(Documents& documents, int count, SourceOf sourceOf) {
  if (count == 0) {
    documents.reset();
    return KVN_SUCCESS;
  }
  Documents made(new (std::nothrow) KVN_documentation[static_cast<std::size_t>(count)]);
  if (made == nullptr) return KVN_NO_MEMORY;
  for (int i = 0; i < count; i++) {
    if (const int source = sourceOf(i); source >= 0) made[i] = std::move(documents[source]);
  }
  documents = std::move(made);
  return KVN_SUCCESS;
}

int CopyDocuments(const Documents& source, int count, Documents& result) {
  if (int code = RearrangeDocuments(result, count, [](int) { return -1; }); code < 0) return code;
  for (int i = 0; i < count; i++) {
    if (int code = result[i].Assign(source[i]); code < 0) return code;
  }
  return KVN_SUCCESS;
}

const char* TextOrEmpty(const char* text) { return text == nullptr ? "" : text; }

int ResizeTexts(KVN_stringArray& list, int count) {
  while (list.GetNumItems() > count) {
    if (int result = list.Delete(list.GetNumItems() - 1); result < 0) return result;
  }
  while (list.GetNumItems() < count) {
    if (int result = list.Add(""); result < 0) return result;
  }
  return KVN_SUCCESS;
}

}  // namespace

KVN_extraDefinition::KVN_extraDefinition(KVN_network* ofNetwork, int ofHandle)
    : network(ofNetwork), handle(ofHandle) {}

KVN_extraDefinition::~KVN_extraDefinition() = default;

int KVN_extraDefinition::GetOutcomeCount() const {
  if (network == nullptr) return 0;
  const KVN_nodeDefinition* definition = network->DefinitionOf(handle);
  if (definition == nullptr) return 0;
  const int count = definition->GetNumberOfOutcomes();
  return count > 0 ? count : 0;
}

int KVN_extraDefinition::SetFaultStates(const KVN_intArray& flags) {
  if (int result = FitToOutcomes(); result < 0) return result;
  if (UsedCount(flags) != GetCount()) return KVN_REFUSED;
  faultStates.CopyItems(flags);
  return KVN_SUCCESS;
}

int KVN_extraDefinition::SetFaultState(int outcome, int flag) {
  if (int result = FitToOutcomes(); result < 0) return result;
  if (outcome < 0 || outcome >= GetCount()) return KVN_REFUSED;
  faultStates[outcome] = flag;
  return KVN_SUCCESS;
}

int KVN_extraDefinition::SetDefaultOutcome(int outcome) {
  if (int result = FitToOutcomes(); result < 0) return result;
  if (outcome < 0 || outcome >= GetCount()) return KVN_REFUSED;
  defaultOutcome = outcome;
  return KVN_SUCCESS;
}

KVN_documentation* KVN_extraDefinition::GetStateDocumentation(int outcome) {
  if (FitToOutcomes() < 0) return nullptr;
  return outcome >= 0 && outcome < GetCount() ? &documents[outcome] : nullptr;
}

int KVN_extraDefinition::SetFaultNames(const KVN_stringArray& names) {
  return SetTexts(faultNames, names);
}

int KVN_extraDefinition::SetFaultName(int outcome, const char* name) {
  return SetText(faultNames, outcome, name);
}

int KVN_extraDefinition::SetFaultLabel(int position, const char* label) {
  if (int result = FitToOutcomes(); result < 0) return result;
  if (position < 0 || position >= GetCount()) return KVN_REFUSED;
  const char* text = TextOrEmpty(label);
  return IsLabelRefused(text) ? KVN_REFUSED : faultLabels.SetString(position, text);
}

int KVN_extraDefinition::SetFaultLabels(const KVN_stringArray& labels) {
  if (int result = FitToOutcomes(); result < 0) return result;
  if (UsedCount(labels) != GetCount()) return KVN_REFUSED;
  return MakeLabelsUnique(labels);
}

int KVN_extraDefinition::MakeLabelsUnique(const KVN_stringArray& labels) {
  int worst = KVN_SUCCESS;
  const int count = UsedCount(labels);
  for (int i = 0; i < count; i++) {
    int result = SetFaultLabel(i, labels.GetString(i));
    if (result == KVN_REFUSED && i < GetCount()) {
      std::string made;
      CreateLabel(labels.GetString(i), made);
      if (SetFaultLabel(i, made.c_str()) == KVN_NO_MEMORY) result = KVN_NO_MEMORY;
    }
    if (result == KVN_NO_MEMORY) return result;
    if (result < 0) worst = KVN_REFUSED;
  }
  return worst;
}

void KVN_extraDefinition::CreateLabel(const char* base, std::string& out) const {
  std::string mended = TextOrEmpty(base);
  if (KVN_idArray::MakeValidId(mended) < 0) mended = "x";
  // The network has `sum` labels at most, so one of the first sum + 1 numbers is free.
  long long number = 1 + SumOfOutcomeCounts();
  do {
    out = mended + std::to_string(number++);
  } while (IsLabelRefused(out.c_str()) || !faultLabels.IsThisIdentifierValid(out.c_str()));
}

int KVN_extraDefinition::SetStateComments(const KVN_stringArray& comments) {
  return SetTexts(stateComments, comments);
}

int KVN_extraDefinition::SetStateComment(int outcome, const char* comment) {
  return SetText(stateComments, outcome, comment);
}

int KVN_extraDefinition::SetStateRepairInfo(const KVN_stringArray& texts) {
  return SetTexts(stateRepairInfo, texts);
}

int KVN_extraDefinition::SetStateRepairInfo(int outcome, const char* text) {
  return SetText(stateRepairInfo, outcome, text);
}

const char* KVN_extraDefinition::GetQuestion() const { return TextOrEmpty(question.get()); }

int KVN_extraDefinition::SetQuestion(const char* text) {
  char* copy = CopyOfText(text);
  if (copy == nullptr && text != nullptr) return KVN_NO_MEMORY;
  question.reset(copy);
  return KVN_SUCCESS;
}

void KVN_extraDefinition::SetDiagnosisType(int type) {
  const bool isKnown = type >= KVN_DIAGNOSIS_TARGET && type <= KVN_DIAGNOSIS_AUXILIARY;
  diagnosisType = isKnown ? type : int{KVN_DIAGNOSIS_AUXILIARY};
}

void KVN_extraDefinition::SetShowAs(int mode) {
  if (mode >= 0 && mode <= kShowAsInherited) showAs = mode;
}

int KVN_extraDefinition::OutcomeAdded(int position) {
  const int count = GetCount();
  if (position < 0 || position > count) return KVN_REFUSED;
  const auto sourceOf = [position](int i) { return i < position ? i : i == position ? -1 : i - 1; };
  if (int result = RearrangeDocuments(documents, count + 1, sourceOf); result < 0) return result;
  if (int result = faultStates.Insert(position, 0); result < 0) return result;
  KVN_stringArray* const lists[] = {&faultNames, &faultLabels, &stateComments, &stateRepairInfo};
  for (KVN_stringArray* list : lists) {
    if (int result = list->Insert(position, ""); result < 0) return result;
  }
  return stateData != nullptr ? stateData->OutcomeAdded(position) : KVN_SUCCESS;
}

int KVN_extraDefinition::OutcomeRemoved(int position) {
  const int count = GetCount();
  if (position < 0 || position >= count) return KVN_REFUSED;
  const auto sourceOf = [position](int i) { return i < position ? i : i + 1; };
  if (int result = RearrangeDocuments(documents, count - 1, sourceOf); result < 0) return result;
  if (int result = faultStates.Delete(position); result < 0) return result;
  KVN_stringArray* const lists[] = {&faultNames, &faultLabels, &stateComments, &stateRepairInfo};
  for (KVN_stringArray* list : lists) {
    if (int result = list->Delete(position); result < 0) return result;
  }
  if (defaultOutcome == position) {
    defaultOutcome = 0;
  } else if (defaultOutcome > position) {
    defaultOutcome--;
  }
  return stateData != nullptr ? stateData->OutcomeRemoved(position) : KVN_SUCCESS;
}

int KVN_extraDefinition::ReorderOutcomes(const KVN_intArray& order) {
  // It is meant that nothing is rolled back: a list refuses only an order that doesn't fit the
  // outcomes, and then the definition has refused it before.
  if (int result = faultStates.ChangeOrder(order); result < 0) return result;
  KVN_stringArray* const lists[] = {&faultNames, &faultLabels, &stateComments, &stateRepairInfo};
  for (KVN_stringArray* list : lists) {
    if (int result = list->ChangeOrder(order); result < 0) return result;
  }
  if (int result = CheckPermutation(order, GetCount()); result < 0) return result;
  const auto sourceOf = [&order](int i) { return order[i]; };
  if (int result = RearrangeDocuments(documents, GetCount(), sourceOf); result < 0) return result;
  for (int i = 0; i < GetCount(); i++) {
    if (order[i] == defaultOutcome) {
      defaultOutcome = i;
      break;
    }
  }
  return stateData != nullptr ? stateData->Reorder(order) : KVN_SUCCESS;
}

int KVN_extraDefinition::Refresh() {
  ClearLists();
  return ResizeLists(GetOutcomeCount());
}

int KVN_extraDefinition::FitToOutcomes() {
  const int count = GetOutcomeCount();
  return HasCount(count) ? KVN_SUCCESS : ResizeLists(count);
}

int KVN_extraDefinition::Assign(const KVN_extraDefinition& source) {
  if (this == &source) return KVN_SUCCESS;
  if (!source.IsReady()) return KVN_NOT_READY;
  KVN_extraDefinition made(source.network, source.handle);
  int result = made.faultStates.Assign(source.faultStates);
  if (result == 0) result = CopyDocuments(source.documents, source.GetCount(), made.documents);
  if (result == 0) result = made.faultNames.Assign(source.faultNames);
  if (result == 0) result = made.faultLabels.Assign(source.faultLabels);
  if (result == 0) result = made.stateComments.Assign(source.stateComments);
  if (result == 0) result = made.stateRepairInfo.Assign(source.stateRepairInfo);
  if (result == 0) result = made.SetQuestion(source.question.get());
  if (result == 0 && source.stateData != nullptr) {
    made.stateData.reset(source.stateData->Clone());
    if (made.stateData == nullptr) result = KVN_NO_MEMORY;
  }
  if (result < 0) return result;

  network = source.network;
  handle = source.handle;
  faultStates.Swap(made.faultStates);
  documents.swap(made.documents);
  faultNames.Swap(made.faultNames);
  faultLabels.Swap(made.faultLabels);
  stateComments.Swap(made.stateComments);
  stateRepairInfo.Swap(made.stateRepairInfo);
  question.swap(made.question);
  stateData.swap(made.stateData);
  defaultOutcome = source.defaultOutcome;
  diagnosisType = source.diagnosisType;
  ranked = source.ranked;
  mandatory = source.mandatory;
  setAsDefault = source.setAsDefault;
  showAs = source.showAs;
  return KVN_SUCCESS;
}

void KVN_extraDefinition::CleanUp(int /*deep*/) {
  ClearLists();
  question.reset();
  (void)CheckReadiness(0);
}

bool KVN_extraDefinition::IsLabelRefused(const char* label) const {
  if (*label == '\0') return false;
  // It is meant that a file is believed here: comparing across all nodes read so far would find
  // nothing that the writer of the file had not been asked already.
  const bool isLoading = network != nullptr && network->GetLoadFlags() != 0;
  return !isLoading && IsLabelUsedElsewhere(label);
}

bool KVN_extraDefinition::IsLabelUsedElsewhere(const char* label) const {
  if (network == nullptr) return false;
  for (int node = network->GetFirstNode(); node >= 0; node = network->GetNextNode(node)) {
    if (node == handle) continue;
    const KVN_extraDefinition* other = network->GetNode(node)->ExtraDefinition();
    if (other != nullptr && other->faultLabels.IsInList(label)) return true;
  }
  return false;
}

long long KVN_extraDefinition::SumOfOutcomeCounts() const {
  if (network == nullptr) return 0;
  long long sum = 0;
  for (int node = network->GetFirstNode(); node >= 0; node = network->GetNextNode(node)) {
    const KVN_nodeDefinition* definition = network->DefinitionOf(node);
    if (definition == nullptr) continue;
    if (const int count = definition->GetNumberOfOutcomes(); count > 0) sum += count;
  }
  return sum;
}

bool KVN_extraDefinition::HasCount(int count) const {
  return faultStates.GetNumItems() == count && faultNames.GetNumItems() == count &&
         faultLabels.GetNumItems() == count && stateComments.GetNumItems() == count &&
         stateRepairInfo.GetNumItems() == count;
}

int KVN_extraDefinition::ResizeLists(int count) {
  if (count == 0) ClearLists();  // no slot may stay: an array with slots alone counts as full
  const int before = GetCount();
  const auto sourceOf = [before](int i) { return i < before ? i : -1; };
  if (int result = RearrangeDocuments(documents, count, sourceOf); result < 0) return result;
  while (faultStates.GetNumItems() > count) {
    if (int result = faultStates.Delete(faultStates.GetNumItems() - 1); result < 0) return result;
  }
  while (faultStates.GetNumItems() < count) {
    if (int result = faultStates.Add(0); result < 0) return result;
  }
  KVN_stringArray* const lists[] = {&faultNames, &faultLabels, &stateComments, &stateRepairInfo};
  for (KVN_stringArray* list : lists) {
    if (int result = ResizeTexts(*list, count); result < 0) return result;
  }
  if (defaultOutcome >= count) defaultOutcome = 0;
  for (int i = before; stateData != nullptr && i != count;) {
    if (int result = i < count ? stateData->OutcomeAdded(i++) : stateData->OutcomeRemoved(--i);
        result < 0) {
      return result;
    }
  }
  return KVN_SUCCESS;
}

void KVN_extraDefinition::ClearLists() {
  faultStates.CleanUp();
  documents.reset();
  faultNames.CleanUp(/*deep=*/1);
  faultLabels.CleanUp(/*deep=*/1);
  stateComments.CleanUp(/*deep=*/1);
  stateRepairInfo.CleanUp(/*deep=*/1);
  stateData.reset();
  defaultOutcome = 0;
}

int KVN_extraDefinition::SetTexts(KVN_stringArray& list, const KVN_stringArray& texts) {
  if (int result = FitToOutcomes(); result < 0) return result;
  if (UsedCount(texts) != GetCount()) return KVN_REFUSED;
  KVN_stringArray made;
  for (int i = 0; i < GetCount(); i++) {
    if (int result = made.Add(TextOrEmpty(texts[i])); result < 0) return result;
  }
  list.Swap(made);
  return KVN_SUCCESS;
}

int KVN_extraDefinition::SetText(KVN_stringArray& list, int outcome, const char* text) {
  if (int result = FitToOutcomes(); result < 0) return result;
  if (outcome < 0 || outcome >= GetCount()) return KVN_REFUSED;
  return list.SetString(outcome, TextOrEmpty(text));
}
