#include "expressions/equation.h"

#include <new>
#include <unordered_set>

#include "expressions/equationNode.h"
#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/network.h"

namespace {

constexpr double kDefaultLower = -1.0;
constexpr double kDefaultUpper = 1.0;

}  // namespace

KVN_equation::KVN_equation(KVN_network* theNetwork, int theHandle)
    : KVN_nodeDefinition(theNetwork, theHandle),
      lowerBound(kDefaultLower),
      upperBound(kDefaultUpper) {}

KVN_equation::~KVN_equation() = default;

int KVN_equation::Init() {
  equation.SetDefault(OwnId(), {});
  return equation.IsComplete() ? KVN_SUCCESS : KVN_NO_MEMORY;
}

std::string KVN_equation::OwnId() const { return IdentifierOfNode(network, handle); }

void KVN_equation::CleanUp(int deep) {
  if (deep != 0) {
    equation.SetDefault(OwnId(), {});
    lowerBound = kDefaultLower;
    upperBound = kDefaultUpper;
    intervals.clear();
    discreteTable.reset();
  }
  (void)CheckReadiness(/*deep=*/0);
}

// --- Arcs.

int KVN_equation::AddParent(int parent) {
  if (int result = CheckEquationParent(TypeOf(parent)); result < 0) return result;
  if (int result = equation.AppendTerm(IdentifierOfNode(network, parent)); result < 0) {
    return result;
  }
  discreteTable.reset();  // it has no dimension for the new parent
  return KVN_SUCCESS;
}

int KVN_equation::ReorderParents(const KVN_intArray& /*order*/) {
  DropDiscreteTable();
  return KVN_NOT_APPLICABLE;
}

int KVN_equation::RemoveParent(int parent) {
  equation.SetDefault(OwnId(), IdentifiersOfParents(network, handle, parent));
  discreteTable.reset();
  return equation.IsComplete() ? KVN_SUCCESS : KVN_NO_MEMORY;
}

void KVN_equation::ParentRenamed(int /*parent*/, const char* oldId, const char* newId) {
  if (oldId != nullptr && newId != nullptr) equation.RenameVariable(oldId, newId);
}

int KVN_equation::Assign(KVN_nodeDefinition& source) {
  if (!source.IsReady()) return KVN_NOT_READY;
  if (&source == this) return KVN_SUCCESS;
  if (int result = KVN_nodeDefinition::Assign(source); result < 0) return result;
  CleanUp(/*deep=*/1);  // after the copy of the node's place, on which its readiness depends
  if (source.GetType() != KVN_TYPE_EQUATION) return KVN_REFUSED;
  const auto& other = static_cast<const KVN_equation&>(source);
  std::unique_ptr<KVN_Dmatrix> table;
  if (other.discreteTable != nullptr) {
    table.reset(new (std::nothrow) KVN_Dmatrix());
    // Only a cache: without memory it is computed again.
    if (table != nullptr && table->Assign(*other.discreteTable) < 0) table.reset();
  }
  equation = other.equation;
  if (!equation.IsComplete()) return KVN_NO_MEMORY;
  lowerBound = other.lowerBound;
  upperBound = other.upperBound;
  intervals = other.intervals;
  discreteTable = std::move(table);
  (void)CheckReadiness(/*deep=*/1);  // status only
  (void)CheckConsistency(/*deep=*/1);
  Notify(KVN_CHANGE_DEFINITION);
  return KVN_SUCCESS;
}

// --- The equation.

bool KVN_equation::ValidateEquation(const std::string& text, std::vector<std::string>* variables,
                                    std::string* error, int* errorPosition) const {
  std::string unheard;
  std::string& message = error != nullptr ? *error : unheard;
  if (text.empty()) {
    message = "Equation cannot be empty.";
    return false;
  }
  KVN_equationSides parsed;
  if (parsed.Parse(text, errorPosition, &message) < 0) return false;
  std::vector<std::string> names;
  parsed.GetVariables(names);
  if (variables != nullptr) *variables = names;

  KVN_intArray list;
  if (HasNode()) (void)network->GetDescendants(handle, list);  // AddArc refuses what is missed
  const std::unordered_set<int> descendants(list.begin(), list.end());
  for (const std::string& name : names) {
    const int found = network != nullptr ? network->FindNode(name.c_str()) : int{KVN_REFUSED};
    if (found < 0) {
      message = "Unknown node identifier: " + name;
      return false;
    }
    if (descendants.count(found) != 0) {
      message = "Node " + name +
                " can't be used in equation for current node, because it would result in a cycle.";
      return false;
    }
  }
  return true;
}

int KVN_equation::SetEquation(const std::string& text, int* errorPosition, std::string* error) {
  std::string unheard;
  if (error == nullptr) error = &unheard;
  std::vector<std::string> names;
  if (!ValidateEquation(text, &names, error, errorPosition)) {
    return LogError(KVN_REFUSED, error->c_str());
  }
  const KVN_intArray oldParents = Parents();
  for (int parent : oldParents) (void)network->RemoveArc(parent, handle, /*layer=*/0);
  for (const std::string& name : names) {
    const int parent = network->FindNode(name.c_str());
    // A refused arc leaves a variable without a value; updates refuse such a network anyway.
    if (parent != handle) (void)network->AddArc(parent, handle, /*layer=*/0);
  }
  // Only now: each arc has touched the equation.
  const int result = equation.Parse(text, errorPosition, error);
  ForgetResultsFrom(network, handle);
  discreteTable.reset();
  return result;
}

// --- Range and intervals.

void KVN_equation::SetBounds(double lower, double upper) {
  if (lower == lowerBound && upper == upperBound) return;
  lowerBound = lower;
  upperBound = upper;
  discreteTable.reset();
}

int KVN_equation::SetDiscIntervals(const std::vector<KVN_discInterval>& list) {
  const std::size_t count = list.size();
  if (count < 2) return KVN_REFUSED;
  const KVN_idArray rule;
  std::unordered_set<std::string> ids;
  for (const KVN_discInterval& interval : list) {
    if (!rule.IsThisIdentifierValid(interval.id.c_str()) || !ids.insert(interval.id).second)
      return KVN_ILLEGAL_ID;
  }
  for (std::size_t i = 1; i + 1 < count; ++i) {
    if (!(list[i - 1].upper < list[i].upper)) return KVN_LENGTH_MISMATCH;
  }
  if (!(list[0].upper > lowerBound) || !(list[count - 2].upper < upperBound)) {
    return KVN_LENGTH_MISMATCH;
  }
  intervals = list;
  intervals.back().upper = upperBound;
  // It is meant that the parents' tables go and those of the children stay.
  for (int parent : Parents()) {
    KVN_nodeDefinition* definition = network->DefinitionOf(parent);
    if (definition == nullptr || definition->GetType() != KVN_TYPE_EQUATION) continue;
    static_cast<KVN_equation*>(definition)->DropDiscreteTable();
  }
  discreteTable.reset();
  return KVN_SUCCESS;
}

void KVN_equation::ClearDiscIntervals() {
  intervals.clear();
  discreteTable.reset();
}

int KVN_equation::GetInterval(int index, double& lower, double& upper) const {
  if (intervals.empty()) return KVN_NOT_APPLICABLE;
  const int count = static_cast<int>(intervals.size());
  if (index < 0 || index >= count) return KVN_REFUSED;
  lower = index == 0 ? lowerBound : intervals[index - 1].upper;
  upper = index == count - 1 ? upperBound : intervals[index].upper;
  return KVN_SUCCESS;
}
