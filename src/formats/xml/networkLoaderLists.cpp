// Lists of words and single numbers on their way from the file to the work area.

#include <algorithm>
#include <cstring>

#include "definitions/demorgan.h"
#include "expressions/expression.h"
#include "expressions/expressionParser.h"
#include "formats/xml/networkLoader.h"
#include "formats/xml/xmlText.h"
#include "foundation/numberText.h"
#include "network/network.h"

namespace {

constexpr std::int64_t kUsualList = 4096;
/// Tables up to this may be built before their numbers are counted.
constexpr std::int64_t kSmallTable = 1 << 20;
/// No table has more cells; the product of the outcome counts stops here.
constexpr std::int64_t kManyCells = std::int64_t{1} << 31;

const char* const kParentTypeWords[] = {"inhibitor", "requirement", "cause", "barrier"};

}  // namespace

void XmlNetLoader::ResetWork() {
  nodeHandle = -1;
  definition = nullptr;
  parents.Flush();
  ++serial;
  stateIds.CleanUp(/*deep=*/1);
  stateSet.clear();
  stateLabels.clear();
  defaultState = -1;
  faultStates.Flush();
  for (KVN_doubleArray* list : {&numbers, &weights, &positiveWeights, &negativeWeights}) {
    list->Flush();
  }
  integers.Flush();
  parentTypes.Flush();
  hasParameters = false;
  hasStrengths = false;
  baseline = -1.0;
  priorBelief = -1.0;
  formulas.clear();
  resultIndex.clear();
  resultNames.CleanUp(/*deep=*/1);
  results.Flush();
  formula.clear();
  intervals.clear();
}

void XmlNetLoader::AddParentWord() {
  const auto found = nodeHandles.find(GetText());
  if (found == nodeHandles.end()) {
    AbortWith("Node parent not found: '%s'", GetText());
    return;
  }
  int& lastChild = childOfParent[found->second];
  if (lastChild == serial) {
    AbortWith("Duplicate parent: '%s'", GetText());
    return;
  }
  lastChild = serial;
  if (parents.Add(found->second) != 0) Abort("AddArc failed");  // no memory
}

std::int64_t XmlNetLoader::CountCells(std::int64_t own) const {
  std::int64_t cells = own;
  for (int parent : parents) {
    const KVN_nodeDefinition* above = network.DefinitionOf(parent);
    const int outcomes = above != nullptr ? above->GetNumberOfOutcomes() : 0;
    cells = std::min(cells * std::max(outcomes, 1), kManyCells);
  }
  return cells;
}

std::int64_t XmlNetLoader::CountParameters(std::int64_t own) const {
  std::int64_t rows = 1;
  for (int parent : parents) {
    const KVN_nodeDefinition* above = network.DefinitionOf(parent);
    if (above != nullptr) rows += std::max(above->GetNumberOfOutcomes(), 0);
  }
  return std::min(rows, kManyCells) * own;
}

std::int64_t XmlNetLoader::CountChoices(std::int64_t& others) const {
  std::int64_t choices = 1;
  for (int parent : parents) {
    if (network.TypeOf(parent) == KVN_TYPE_LIST) {
      choices = std::min(choices * network.DefinitionOf(parent)->GetNumberOfOutcomes(), kManyCells);
    } else {
      ++others;
    }
  }
  return choices;
}

bool XmlNetLoader::MayFill(std::int64_t cells, int listed) {
  return cells <= kSmallTable || cells == listed;
}

/// Makes room for the whole list where its length can be told, as far as the file can fill it.
void XmlNetLoader::StartNumbers() {
  const bool isTable = definition != nullptr && definition->GetType() == KVN_TYPE_CPT;
  const std::int64_t wanted = isTable ? CountCells(stateIds.GetNumItems()) : kUsualList;
  const std::int64_t count = std::min(std::max(wanted, std::int64_t{1}), longestList);
  (void)numbers.SetSizeFlush(static_cast<int>(count));  // the list grows when there is no room
}

void XmlNetLoader::StartParameters() {
  hasParameters = true;
  StartNumbers();
}

void XmlNetLoader::StartStrengths() { hasStrengths = true; }

void XmlNetLoader::AddDouble(KVN_doubleArray& list) {
  double value = 0.0;
  if (ReadWholeDouble(GetText(), value) && list.Add(value) == 0) return;
  AbortWith("Can't read list of doubles, failed at element %d", list.GetNumItems() + 1);
}

void XmlNetLoader::AddCostWord() {
  if (std::strcmp(GetText(), "n/a") != 0) return AddDouble(numbers);
  if (numbers.Add(KVN_NOT_AVAILABLE_VALUE) != 0) Abort("SetCosts failed");  // no memory
}

void XmlNetLoader::AddIntegerWord() {
  int value = 0;
  if (ReadWholeInt(GetText(), value) && integers.Add(value) == 0) return;
  AbortWith("Can't read list of integers, failed at element %d", integers.GetNumItems() + 1);
}

void XmlNetLoader::AddTypeWord() {
  for (int type = KVN_DEMORGAN_INHIBITOR; type <= KVN_DEMORGAN_BARRIER; ++type) {
    if (std::strcmp(GetText(), kParentTypeWords[type]) == 0 && parentTypes.Add(type) == 0) return;
  }
  AbortWith("Invalid parent type '%s' at element %d", GetText(), parentTypes.GetNumItems() + 1);
}

void XmlNetLoader::AddResultingState() {
  const auto [name, isNew] = resultIndex.try_emplace(GetText(), resultNames.GetNumItems());
  if ((isNew && resultNames.Add(GetText()) != 0) || results.Add(name->second) != 0) {
    Abort("SetResultingStates failed");  // no memory
  }
}

void XmlNetLoader::EndExpression() {
  formulas.emplace_back(ParseExpression(GetText(), nullptr, nullptr));
  if (formulas.back() == nullptr) AbortWith("Invalid expression: %s", GetText());
}

void XmlNetLoader::EndBaseline() {
  if (!ReadWholeDouble(GetText(), baseline)) Abort("Can't read baseline");
}

void XmlNetLoader::EndPriorBelief() {
  if (!ReadWholeDouble(GetText(), priorBelief)) Abort("Can't read prior belief");
}
