// A multi-attribute utility that combines its parents by formulas.

#include <memory>
#include <new>
#include <set>
#include <string>
#include <vector>

#include "definitions/mau.h"
#include "definitions/mauExpressionTable.h"
#include "expressions/expression.h"
#include "expressions/operators.h"
#include "expressions/variableVisitor.h"
#include "foundation/numberText.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/node.h"

namespace {

using Names = std::set<std::string>;  // sorted: the order in which arcs are added

const char* IdOf(const KVN_network& network, int handle) {
  const KVN_node* node = network.GetNode(handle);
  const char* id = node == nullptr ? nullptr : node->GetId();
  return id == nullptr ? "" : id;
}

/// Decides which identifiers the formulas of a node may name: those of utilities that don't depend
/// on the node itself.
class NameChecker {
 public:
  NameChecker(KVN_network& theNetwork, int theHandle) : network(theNetwork), handle(theHandle) {
    KVN_intArray below;
    if (network.GetDescendants(handle, below) < 0) return;
    for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
      const int type = network.TypeOf(h);
      if (h == handle || (type != KVN_TYPE_TABLE && type != KVN_TYPE_MAU)) continue;
      if (!below.IsInList(h)) allowed.insert(IdOf(network, h));
    }
  }

  bool IsAllowedName(const std::string& name, std::string& error) const {
    if (allowed.count(name) != 0) return true;
    if (name == IdOf(network, handle)) {
      error = "self-references not allowed";
    } else if (network.FindNode(name.c_str()) >= 0) {
      error = "only non-descendant utility/ALU/MAU nodes are allowed";
    } else {
      error = "unknown identifier";
    }
    return false;
  }

 private:
  KVN_network& network;
  int handle;
  Names allowed;
};

/// Collects the names of the formulas and stops looking at the first one that isn't allowed.
class MauVarVisitor : public KVN_variableVisitor {
 public:
  explicit MauVarVisitor(const NameChecker& theChecker) : checker(theChecker) {}
  void Visit(KVN_variable& variable) override {
    if (error.empty() && checker.IsAllowedName(variable.name, error)) names.insert(variable.name);
  }

  Names names;
  std::string error;

 private:
  const NameChecker& checker;
};

void CollectNames(KVN_expression& expression, Names& names) {
  std::vector<std::string> list;
  GetVariables(expression, list);
  names.insert(list.begin(), list.end());
}

bool IsZero(const KVN_expression& expression) {
  return expression.GetKind() == KVN_KIND_CONSTANT &&
         static_cast<const KVN_constant&>(expression).value == 0.0;
}

}  // namespace

// Here, where the table's class is known.
KVN_mau::KVN_mau(KVN_network* theNetwork, int theHandle)
    : KVN_nodeDefinition(theNetwork, theHandle) {}
KVN_mau::~KVN_mau() = default;

KVN_expression* KVN_mau::AddTerm(KVN_expression* expression, const char* id) {
  std::unique_ptr<KVN_expression> first(expression);
  std::unique_ptr<KVN_expression> term(new (std::nothrow) KVN_variable(id));
  if (first == nullptr || term == nullptr) return nullptr;
  if (IsZero(*first)) return term.release();
  auto* sum = new (std::nothrow) KVN_operatorPlus(first.get(), term.get());
  if (sum == nullptr) return nullptr;
  (void)first.release();
  (void)term.release();
  return sum;
}

KVN_expression* KVN_mau::MakeSum(const std::vector<std::string>& ids) {
  KVN_expression* sum = new (std::nothrow) KVN_constant(0.0);
  for (const std::string& id : ids) {
    if (sum == nullptr) return nullptr;
    sum = AddTerm(sum, id.c_str());
  }
  return sum;
}

KVN_expression* KVN_mau::GetExpression(int cell) const {
  return expressions == nullptr ? nullptr : expressions->GetItem(cell);
}

int KVN_mau::ShapeOfExpressions(KVN_intArray& shape) const {
  KVN_intArray decisions;
  if (int result = ParentsOfKind(Kind::kDecision, decisions); result < 0) return result;
  for (int decision : decisions) {
    if (int result = shape.Add(OutcomesOf(decision)); result < 0) return result;
  }
  return shape.GetNumItems() == 0 ? shape.Add(1) : int{KVN_SUCCESS};
}

int KVN_mau::CountExpressions() const {
  KVN_intArray shape;
  if (ShapeOfExpressions(shape) < 0) return KVN_NO_MEMORY;
  long long count = 1;
  for (int size : shape) {
    count *= size;
    if (count > 0x7fffffff) return KVN_NO_MEMORY;
  }
  return static_cast<int>(count);
}

int KVN_mau::SetExpressions(const KVN_mauExpressionTable* table, std::string* message) {
  std::string unused;
  std::string& text = message == nullptr ? unused : *message;
  if (table == nullptr) {
    expressions.reset();
    return KVN_SUCCESS;
  }
  if (!HasNode()) return KVN_REFUSED;
  KVN_intArray shape;
  if (expressions == nullptr) {
    if (int result = ShapeOfExpressions(shape); result < 0) return result;
  } else if (int result = shape.Assign(expressions->GetDimensions()); result < 0) {
    return result;
  }
  if (!table->HasShape(shape)) {
    text = "Wrong matrix dimensions";
    return KVN_REFUSED;
  }
  const NameChecker checker(*network, handle);
  MauVarVisitor visitor(checker);
  for (int cell = 0; cell < table->GetSize(); cell++) {
    KVN_expression* expression = table->GetItem(cell);
    if (expression == nullptr) {
      visitor.error = "no expression";
    } else if (!expression->IsDeterministic()) {
      visitor.error = "Distributions not allowed";
    } else {
      expression->Accept(visitor);
    }
    if (visitor.error.empty()) continue;
    text = "Invalid expression at index " + std::to_string(cell) + ": " + visitor.error;
    return KVN_FAILURE;
  }
  // The copy comes first: the table may be this node's own.
  std::unique_ptr<KVN_mauExpressionTable> copy(new (std::nothrow) KVN_mauExpressionTable);
  if (copy == nullptr) return KVN_NO_MEMORY;
  if (int result = copy->Assign(*table); result < 0) return result;
  expressions.reset();
  const std::vector<std::string> names(visitor.names.begin(), visitor.names.end());
  if (int result = ReplaceUtilities(names); result < 0) return result;
  expressions = std::move(copy);
  return KVN_SUCCESS;
}

/// The utility parents become the nodes of these names. The decisions keep their arcs.
int KVN_mau::ReplaceUtilities(const std::vector<std::string>& names) {
  KVN_intArray list;
  if (int result = list.Assign(Parents()); result < 0) return result;
  for (int parent : list) {
    if (KindOf(parent) == Kind::kDecision) continue;
    if (int result = network->RemoveArc(parent, handle, /*layer=*/0); result < 0) return result;
  }
  for (const std::string& name : names) {
    const int parent = network->FindNode(name.c_str());
    if (int result = network->AddArc(parent, handle, /*layer=*/0); result < 0) return result;
  }
  return KVN_SUCCESS;
}

void KVN_mau::ParentRenamed(int /*parent*/, const char* oldId, const char* newId) {
  if (expressions == nullptr || oldId == nullptr || newId == nullptr) return;
  for (int cell = 0; cell < expressions->GetSize(); cell++) {
    if (expressions->GetItem(cell) == nullptr) continue;
    RenameVariable(*expressions->GetItem(cell), oldId, newId);
  }
}

int KVN_mau::AddToExpressions(int utility) {
  for (int cell = 0; expressions != nullptr && cell < expressions->GetSize(); cell++) {
    KVN_expression* old = expressions->GetItem(cell);
    KVN_expression* sum = old == nullptr ? nullptr : AddTerm(old->Clone(), IdOf(*network, utility));
    if (sum == nullptr) return KVN_NO_MEMORY;
    expressions->SetItem(cell, sum);
  }
  return KVN_SUCCESS;
}

/// It is meant that a formula that named the parent isn't kept as far as possible: what remains is
/// the plain sum of its other names.
int KVN_mau::RemoveFromExpressions(int utility) {
  for (int cell = 0; expressions != nullptr && cell < expressions->GetSize(); cell++) {
    if (expressions->GetItem(cell) == nullptr) continue;
    Names names;
    CollectNames(*expressions->GetItem(cell), names);
    if (names.erase(IdOf(*network, utility)) == 0) continue;
    KVN_expression* sum = MakeSum(std::vector<std::string>(names.begin(), names.end()));
    if (sum == nullptr) return KVN_NO_MEMORY;
    expressions->SetItem(cell, sum);
  }
  return KVN_SUCCESS;
}

int KVN_mau::AddExpressionDimension(int position, int outcomes) {
  if (expressions == nullptr) return KVN_SUCCESS;
  KVN_Dmatrix cells;
  if (int result = expressions->ListCells(cells); result < 0) return result;
  KVN_intArray decisions;
  if (int result = ParentsOfKind(Kind::kDecision, decisions); result < 0) return result;
  // The first decision takes the place of the dimension that stands for none.
  const int result = decisions.GetNumItems() == 1 ? cells.Setup(&outcomes, 1)
                                                  : cells.AddDimension(position, outcomes);
  return result < 0 ? result : expressions->TakeCells(cells);
}

int KVN_mau::RemoveExpressionDimension(int position) {
  if (expressions == nullptr) return KVN_SUCCESS;
  KVN_Dmatrix cells;
  if (int result = expressions->ListCells(cells); result < 0) return result;
  const int none = 1;
  const int result = cells.GetNumberOfDimensions() == 1 ? cells.Setup(&none, 1)
                                                        : cells.RemoveDimension(position, 0);
  return result < 0 ? result : expressions->TakeCells(cells);
}

/// Removes the arcs from utilities that no formula names any more.
int KVN_mau::PruneParents() {
  if (expressions == nullptr) return KVN_SUCCESS;
  Names names;
  for (int cell = 0; cell < expressions->GetSize(); cell++) {
    if (expressions->GetItem(cell) != nullptr) CollectNames(*expressions->GetItem(cell), names);
  }
  KVN_intArray list;
  if (int result = list.Assign(Parents()); result < 0) return result;
  for (int parent : list) {
    const bool isUtility = KindOf(parent) == Kind::kUtility;
    if (!isUtility || names.count(IdOf(*network, parent)) != 0) continue;
    if (int result = network->RemoveArc(parent, handle, /*layer=*/0); result < 0) return result;
  }
  return KVN_SUCCESS;
}

double KVN_mau::Evaluate(const double* inputs, int count, int cell) const {
  const KVN_expression* formula = expressions->GetItem(cell);
  std::unique_ptr<KVN_expression> copy(formula == nullptr ? nullptr : formula->Clone());
  if (copy == nullptr) return KVN_UNDEFINED_VALUE;
  int next = 0;
  for (int parent : Parents()) {
    if (KindOf(parent) != Kind::kUtility || next == count) continue;
    AssignVariable(*copy, IdOf(*network, parent), inputs[next++]);
  }
  return SignedValue(*copy);
}
