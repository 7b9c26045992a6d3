// Node elements: the node at the start, its arcs, states and numbers at the end.

#include <algorithm>

#include "definitions/cast.h"
#include "definitions/cpt.h"
#include "definitions/demorgan.h"
#include "definitions/mau.h"
#include "definitions/mauExpressionTable.h"
#include "definitions/noisyAdder.h"
#include "definitions/noisyMAX.h"
#include "definitions/table.h"
#include "definitions/truthTable.h"
#include "expressions/expression.h"
#include "formats/xml/networkLoader.h"
#include "foundation/resultCodes.h"
#include "network/extraDefinition.h"
#include "network/network.h"
#include "network/node.h"

namespace {

const char* const kDiagnosisWords[] = {"target", "observation", "auxiliary"};
const char* const kTemporalWords[] = {"normal", "anchor", "terminal", "plate"};
const char* const kFunctionWords[] = {"average", "singlefault"};

constexpr int kNoList = -1;  // fills no table
/// 128 MB of defaults in gates.
constexpr std::int64_t kMostUnlisted = 1 << 24;
/// Tables of gates over binary nodes up to this many cells, those of twelve parents, are as many as
/// the file has nodes.
constexpr std::int64_t kUncountedCells = 1 << 13;

/// The list itself, or an array without slots for an empty one: a list that was used before keeps
/// its slots, and those would pass for a filled block.
template <class Array>
const Array& Used(const Array& list) {
  static const Array none;
  return list.GetNumItems() > 0 ? list : none;
}

}  // namespace

bool XmlNetLoader::GetWord(const char* name, const char* const* words, int count, int absent,
                           const char* complaint, int& value) {
  std::string text;
  GetAttribute(name, text);
  value = absent;
  if (text.empty()) return true;
  for (value = 0; value < count; ++value) {
    if (text == words[value]) return true;
  }
  AbortWith("%s: '%s'", complaint, text.c_str());
  return false;
}

bool XmlNetLoader::ReadAdderFunction(const Kind& kind) {
  function = KVN_ADDER_AVERAGE;
  return kind.type != KVN_TYPE_NOISY_ADDER ||
         GetWord("function", kFunctionWords, 2, KVN_ADDER_AVERAGE, "Invalid noisy adder function",
                 function);
}

void XmlNetLoader::StartNode(const Kind& kind) {
  std::string id;
  GetAttribute("id", id);
  bool isTarget = false;
  bool isRanked = false;
  bool isMandatory = false;
  int diagnosisType = 0;
  int temporalType = 0;
  if (!GetAttribute("target", isTarget, false) || !GetAttribute("ranked", isRanked, false) ||
      !GetAttribute("mandatory", isMandatory, false) ||
      !GetWord("diagtype", kDiagnosisWords, 3, KVN_DIAGNOSIS_AUXILIARY,
               "Unknown diagnosis node type", diagnosisType) ||
      !GetWord("dynamic", kTemporalWords, 4, 0, "Unknown dynamic node type", temporalType)) {
    return;
  }
  const int handle = CreateNode(kind, id, temporalType);
  if (handle < 0) return;
  KVN_node& node = *network.GetNode(handle);
  nodeHandles[node.GetId()] = handle;  // which isn't `id` if that is no identifier
  if (isTarget) (void)network.SetTarget(handle);
  KVN_extraDefinition& extra = *node.ExtraDefinition();
  extra.SetDiagnosisType(diagnosisType);
  extra.SetRanked(isRanked ? 1 : 0);
  extra.SetMandatory(isMandatory ? 1 : 0);
  if (!ReadAdderFunction(kind)) return;
  ResetWork();
  nodeHandle = handle;
  definition = node.Definition();
}

/// The handle of the new node; negative after an abort.
int XmlNetLoader::CreateNode(const Kind& kind, const std::string& id, int temporalType) {
  if (nodeHandles.count(id) != 0) {
    AbortWith("Duplicated node identifier: '%s'", id.c_str());
    return KVN_REFUSED;
  }
  const int handle = network.AddNode(kind.type, id.c_str());
  const KVN_node* node = network.GetNode(handle);
  const bool isWhole = node != nullptr && node->Definition() != nullptr &&
                       node->Value() != nullptr && node->ExtraDefinition() != nullptr;
  if (!isWhole) {
    if (handle >= 0) (void)network.DeleteNode(handle);  // it can't be worked with
    AbortWith("ORMEL failed to create node: '%s'", id.c_str());
    return KVN_REFUSED;
  }
  if (temporalType != 0 && network.SetTemporalType(handle, temporalType) != 0) {
    AbortWith("ORMEL failed to set dynamic node type to '%s' for '%s'",
              kTemporalWords[temporalType], id.c_str());
    return KVN_REFUSED;
  }
  return handle;
}

void XmlNetLoader::StartState() {
  std::string id;
  GetAttribute("id", id);
  if (!stateSet.insert(id).second) {
    AbortWith("Duplicate state identifier: '%s'", id.c_str());
    return;
  }
  const int index = stateIds.GetNumItems();
  bool isDefault = false;
  bool isFault = false;
  if (!GetAttribute("default", isDefault, false)) return;
  if (isDefault && defaultState >= 0) {
    AbortWith("Duplicate default state attribute at state: '%s'", id.c_str());
    return;
  }
  if (isDefault) defaultState = index;
  if (!GetAttribute("fault", isFault, false)) return;
  std::string label;
  GetAttribute("label", label);
  stateLabels.push_back(label);
  if (stateIds.Add(id.c_str()) != 0 || (isFault && faultStates.Add(index) != 0)) {
    Abort("SetNumberOfOutcomes failed");  // no memory
  }
}

void XmlNetLoader::EndNode(const Kind& kind) {
  if (!IsCountPlausible(kind) || !AddArcs(/*layer=*/0)) return;
  if (kind.hasStates && !SetStates()) return;
  if (kind.finish != nullptr) (this->*kind.finish)();
  numbers.Flush();
}

/// A large table that the list doesn't fill is refused before it is built, in the words that the
/// count would get afterwards.
bool XmlNetLoader::IsCountPlausible(const Kind& kind) {
  switch (kind.type) {
    case KVN_TYPE_CPT:
      return MayFill(CountCells(stateIds.GetNumItems()), numbers.GetNumItems()) ||
             Refuse("SetProbabilities failed");
    case KVN_TYPE_TABLE:
      return MayFill(CountCells(1), numbers.GetNumItems()) || Refuse("SetUtilities failed");
    case KVN_TYPE_MAU:
      return IsMauPlausible(kind);
    case KVN_TYPE_TRUTHTABLE:
      return AreRowsPlausible();
    case KVN_TYPE_NOISY_MAX:
    case KVN_TYPE_NOISY_ADDER:
      return IsGatePlausible(kind);
    case KVN_TYPE_CAST:
    case KVN_TYPE_DEMORGAN:
      return IsBinaryPlausible(kind);
    default:
      return true;
  }
}

/// These gates keep a full table, although their lists hold no more than a number or two a parent:
/// a few hundred bytes of a file make gigabytes.
bool XmlNetLoader::IsBinaryPlausible(const Kind& kind) {
  const int count = parents.GetNumItems();
  const std::int64_t cells = CountCells(2);
  if (cells <= kUncountedCells) return true;
  if (kind.type == KVN_TYPE_CAST) {
    if (positiveWeights.GetNumItems() != count) return Refuse("SetPositiveWeights failed");
    if (negativeWeights.GetNumItems() != count) return Refuse("SetNegativeWeights failed");
  } else {
    if (weights.GetNumItems() != count) return Refuse("SetParentWeights failed");
    if (parentTypes.GetNumItems() != count) return Refuse("SetParentTypes failed");
  }
  unlisted += cells;
  return unlisted <= kMostUnlisted || Refuse("AddArc failed");
}

/// A list of one word a row, while every row has as many cells as there are states.
bool XmlNetLoader::AreRowsPlausible() {
  const std::int64_t rows = CountCells(1);
  const int listed = results.GetNumItems();
  if (rows == listed || MayFill(CountCells(stateIds.GetNumItems()), kNoList)) return true;
  AbortWith("Invalid number of resulting states: %d, expected %lld", listed,
            static_cast<long long>(rows));
  return false;
}

/// A gate may do without parameters, and two lists of states make a table of the product of their
/// lengths: what no numbers stand for is held against a limit for the whole file.
bool XmlNetLoader::IsGatePlausible(const Kind& kind) {
  const std::int64_t cells = CountParameters(stateIds.GetNumItems());
  const int listed = numbers.GetNumItems();
  if (hasParameters && cells == listed) return true;
  unlisted += cells;
  if (unlisted <= kMostUnlisted) return true;
  if (hasParameters && kind.type == KVN_TYPE_NOISY_MAX) {
    AbortWith("Invalid weights vector size %d, expected %lld", listed,
              static_cast<long long>(cells));
  } else {
    Abort("SetNumberOfOutcomes failed");
  }
  return false;
}

bool XmlNetLoader::IsMauPlausible(const Kind& kind) {
  std::int64_t others = 0;
  const std::int64_t choices = CountChoices(others);
  const bool hasFormulas = kind.finish == &XmlNetLoader::FinishMauFormulas;
  if (!hasFormulas) {
    return MayFill(choices * std::max(others, std::int64_t{1}), weights.GetNumItems()) ||
           Refuse("SetWeights failed");
  }
  if (MayFill(choices, static_cast<int>(formulas.size()))) return true;
  AbortWith("Invalid number of expressions: %d, expected %lld", static_cast<int>(formulas.size()),
            static_cast<long long>(choices));
  return false;
}

bool XmlNetLoader::AddArcs(int layer) {
  for (int parent : parents) {
    if (network.AddArc(parent, nodeHandle, layer) != 0) return Refuse("AddArc failed");
  }
  return true;
}

bool XmlNetLoader::SetStates() {
  if (definition->SetNumberOfOutcomes(stateIds) != 0 || !HasAllRows()) {
    return Refuse("SetNumberOfOutcomes failed");
  }
  return SetStateMarks();
}

/// A gate that is built anew leaves out a parent that it has no memory for and only tells the log.
bool XmlNetLoader::HasAllRows() {
  const int type = definition->GetType();
  if (type != KVN_TYPE_NOISY_MAX && type != KVN_TYPE_NOISY_ADDER) return true;
  auto& gate = *static_cast<KVN_ciDefinition*>(definition);
  return gate.GetParameters().GetSize() == CountParameters(gate.GetNumberOfOutcomes());
}

bool XmlNetLoader::SetStateMarks() {
  KVN_extraDefinition& extra = *network.GetNode(nodeHandle)->ExtraDefinition();
  // A label that is no identifier is left out: it has no influence on the network.
  for (std::size_t i = 0; i < stateLabels.size(); ++i) {
    if (stateLabels[i].empty()) continue;
    if (!HadMemory(extra.SetFaultLabel(static_cast<int>(i), stateLabels[i].c_str()))) return false;
  }
  if (defaultState >= 0) {
    if (!HadMemory(extra.SetDefaultOutcome(defaultState))) return false;
    extra.SetSetAsDefault(1);
  }
  for (int state : faultStates) {
    if (!HadMemory(extra.SetFaultState(state, 1))) return false;
  }
  return true;
}

// --- Numbers, kind by kind.

void XmlNetLoader::FinishCpt() {
  if (static_cast<KVN_cpt*>(definition)->SetProbabilities(Used(numbers)) != 0) {
    Abort("SetProbabilities failed");
  }
}

void XmlNetLoader::FinishUtility() {
  if (static_cast<KVN_table*>(definition)->SetUtilities(Used(numbers)) != 0) {
    Abort("SetUtilities failed");
  }
}

void XmlNetLoader::FinishMau() {
  // The model takes any number of weights; a list that doesn't fill the table is an error here.
  const KVN_doubleArray& list = Used(weights);
  if (list.GetNumItems() != definition->GetSize() || definition->SetDefinition(list) != 0) {
    Abort("SetWeights failed");
  }
}

void XmlNetLoader::FinishMauFormulas() {
  KVN_mau& mau = *static_cast<KVN_mau*>(definition);
  const int count = static_cast<int>(formulas.size());
  const int expected = mau.CountExpressions();
  if (count != expected) {
    AbortWith("Invalid number of expressions: %d, expected %d", count, expected);
    return;
  }
  KVN_intArray shape;
  for (int parent : parents) {
    if (network.TypeOf(parent) != KVN_TYPE_LIST) continue;
    if (shape.Add(network.DefinitionOf(parent)->GetNumberOfOutcomes()) != 0) {
      return Abort("Unexpected error");
    }
  }
  if (shape.GetNumItems() == 0 && shape.Add(1) != 0) return Abort("Unexpected error");
  KVN_mauExpressionTable table;
  if (table.Setup(shape) != 0) return Abort("Unexpected error");
  for (int i = 0; i < count; ++i) {
    table.SetItem(i, formulas[static_cast<std::size_t>(i)].release());
    if (table.GetItem(i) == nullptr) return Abort("Unexpected error");
  }
  std::string message;
  if (mau.SetExpressions(&table, &message) != 0) {
    AbortWith("SetExpressions failed: '%s'", message.c_str());
  }
}

void XmlNetLoader::FinishTruthTable() {
  KVN_truthTable& table = *static_cast<KVN_truthTable*>(definition);
  const int outcomes = table.GetNumberOfOutcomes();
  const int rows = outcomes > 0 ? table.GetSize() / outcomes : 0;
  if (results.GetNumItems() != rows) {
    AbortWith("Invalid number of resulting states: %d, expected %d", results.GetNumItems(), rows);
    return;
  }
  std::vector<int> outcomeOfName;
  for (int i = 0; i < resultNames.GetNumItems(); ++i) {
    outcomeOfName.push_back(table.GetOutcomesNames()->FindPosition(resultNames[i]));
    if (outcomeOfName.back() >= 0) continue;
    AbortWith("Invalid resulting state: %s", resultNames[i]);
    return;
  }
  for (int& state : results) state = outcomeOfName[static_cast<std::size_t>(state)];
  if (table.SetResultingStates(Used(results)) != 0) Abort("SetResultingStates failed");
}

void XmlNetLoader::FinishCast() {
  KVN_cast& gate = *static_cast<KVN_cast*>(definition);
  if (gate.SetBaseline(baseline) != 0) return Abort("SetBaseline failed");
  if (parents.GetNumItems() == 0) return;
  if (gate.SetPositiveWeights(Used(positiveWeights)) != 0) {
    return Abort("SetPositiveWeights failed");
  }
  if (gate.SetNegativeWeights(Used(negativeWeights)) != 0) Abort("SetNegativeWeights failed");
}

void XmlNetLoader::FinishDemorgan() {
  KVN_demorgan& gate = *static_cast<KVN_demorgan*>(definition);
  if (gate.SetPriorBelief(priorBelief) != 0) return Abort("SetPriorBelief failed");
  if (parents.GetNumItems() == 0) return;
  if (gate.SetParentWeights(Used(weights)) != 0) return Abort("SetParentWeights failed");
  if (gate.SetParentTypes(Used(parentTypes)) != 0) Abort("SetParentTypes failed");
}

void XmlNetLoader::FinishNoisyMax() {
  KVN_noisyMAX& gate = *static_cast<KVN_noisyMAX*>(definition);
  if (hasStrengths && !SetStrengths(gate)) return Abort("SetParentOutcomeStrengths failed");
  if (!hasParameters) return;
  const int wanted = gate.GetParameters().GetSize();
  if (numbers.GetNumItems() != wanted) {
    AbortWith("Invalid weights vector size %d, expected %d", numbers.GetNumItems(), wanted);
    return;
  }
  if (gate.SetDefinition(numbers) != 0) Abort("SetWeights failed");
}

/// The file gives, parent by parent, the rank of each state; the gate wants the states by rank.
/// False for a list that is short or no permutation.
bool XmlNetLoader::SetStrengths(KVN_noisyMAX& gate) {
  int start = 0;
  for (int i = 0; gate.GetStrengths(i) != nullptr; ++i) {
    const int states = gate.GetStrengths(i)->GetNumItems();
    if (integers.GetNumItems() - start < states) return false;
    KVN_intArray byRank;
    if (byRank.SetSize(states) != 0) return false;
    byRank.FillWith(-1);
    for (int state = 0; state < states; ++state) {
      const int rank = integers[start + state];
      if (rank < 0 || rank >= states) return false;
      byRank[rank] = state;
    }
    byRank.UseAsList(-1);
    if (gate.SetParentOutcomeStrengths(i, byRank) != 0) return false;
    start += states;
  }
  return true;
}

void XmlNetLoader::FinishNoisyAdder() {
  KVN_noisyAdder& gate = *static_cast<KVN_noisyAdder*>(definition);
  if (!SetDistinguishedStates(gate)) return;
  // Both take as many numbers as the lists hold. A refusal would be one of the table, which isn't
  // built here.
  (void)gate.SetWeights(Used(weights));
  if (hasParameters) (void)gate.SetDefinition(Used(numbers));
  (void)gate.SetFunction(function);
}

bool XmlNetLoader::SetDistinguishedStates(KVN_noisyAdder& gate) {
  const int count = integers.GetNumItems();
  if (count != parents.GetNumItems() + 1) {
    // No blank before the second number, and it is to stay so: hosts look for the texts of
    // messages.
    AbortWith("Size of distinguished state vector is invalid: %d, expected%d", count,
              parents.GetNumItems() + 1);
    return false;
  }
  if (gate.SetDistinguishedState(integers[0]) != 0) {
    Abort("SetDistinguishedState call fails");
    return false;
  }
  for (int i = 1; i < count; ++i) {
    if (gate.SetParentDistinguishedState(i - 1, integers[i]) == 0) continue;
    Abort("SetParentDistinguishedState call fails");
    return false;
  }
  return true;
}
