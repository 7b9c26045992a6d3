#include "expressions/equationSides.h"

#include <new>
#include <utility>

#include "expressions/expressionParser.h"
#include "expressions/operators.h"
#include "expressions/variableVisitor.h"
#include "foundation/resultCodes.h"

namespace {

using Tree = std::unique_ptr<KVN_expression>;

Tree Copy(const Tree& source) { return Tree(source != nullptr ? source->Clone() : nullptr); }

Tree NewVariable(const std::string& name) { return Tree(new (std::nothrow) KVN_variable(name)); }

Tree NewConstant(double value) { return Tree(new (std::nothrow) KVN_constant(value)); }

/// Null, with both operands deleted, where an operand or the memory is missing.
template <class Operator>
Tree Join(Tree left, Tree right) {
  if (left == nullptr || right == nullptr) return nullptr;
  Tree made(new (std::nothrow) Operator(left.get(), right.get()));
  if (made != nullptr) {
    (void)left.release();
    (void)right.release();
  }
  return made;
}

bool SimplifyOnce(Tree& tree) {
  KVN_expression* root = tree.release();
  const bool hasChanged = root->Simplify(root);
  tree.reset(root);
  return hasChanged;
}

void Negate(Tree& tree) { tree = Join<KVN_operatorMinus>(NewConstant(0.0), std::move(tree)); }

bool IsVariable(const KVN_expression& node, const std::string& name) {
  return node.GetKind() == KVN_KIND_VARIABLE && static_cast<const KVN_variable&>(node).name == name;
}

}  // namespace

KVN_equationSides::KVN_equationSides() = default;
KVN_equationSides::~KVN_equationSides() = default;
KVN_equationSides::KVN_equationSides(KVN_equationSides&& source) noexcept = default;
KVN_equationSides& KVN_equationSides::operator=(KVN_equationSides&& source) noexcept = default;

KVN_equationSides::KVN_equationSides(const KVN_equationSides& source)
    : lhs(Copy(source.lhs)), rhs(Copy(source.rhs)), hasDistribution(source.hasDistribution) {}

KVN_equationSides& KVN_equationSides::operator=(const KVN_equationSides& source) {
  if (this != &source) *this = KVN_equationSides(source);
  return *this;
}

void KVN_equationSides::Clear() {
  lhs.reset();
  rhs.reset();
  hasDistribution = false;
}

int KVN_equationSides::Parse(const std::string& text, int* errorPosition, std::string* error) {
  Clear();
  const Tree root(ParseExpression(text.c_str(), errorPosition, error));
  if (root == nullptr) return KVN_REFUSED;
  if (root->GetKind() != KVN_KIND_EQ) {
    if (error != nullptr) *error = "Toplevel '=' sign missing in equation";
    return KVN_EXPRESSION_ERROR;
  }
  auto& top = static_cast<KVN_operatorEQ&>(*root);
  lhs.reset(std::exchange(top.left, nullptr));
  rhs.reset(std::exchange(top.right, nullptr));
  hasDistribution = !lhs->IsDeterministic() || !rhs->IsDeterministic();
  return KVN_SUCCESS;
}

void KVN_equationSides::SetDefault(const std::string& id, const std::vector<std::string>& names) {
  Clear();
  lhs = NewVariable(id);
  rhs = names.empty() ? NewConstant(0.0) : NewVariable(names.front());
  for (std::size_t i = 1; i < names.size(); ++i) {
    rhs = Join<KVN_operatorPlus>(std::move(rhs), NewVariable(names[i]));
  }
}

int KVN_equationSides::AppendTerm(const std::string& name) {
  Tree term = NewVariable(name);
  if (term == nullptr) return KVN_NO_MEMORY;
  if (rhs == nullptr || IsConstantOf(*rhs, 0.0)) {
    rhs = std::move(term);
    return KVN_SUCCESS;
  }
  // What is deeper could be saved, but not read again.
  if (GetDepth(rhs.get()) >= KVN_MAX_TREE_DEPTH - 1) return KVN_REFUSED;
  Tree sum(new (std::nothrow) KVN_operatorPlus(rhs.get(), term.get()));
  if (sum == nullptr) return KVN_NO_MEMORY;
  (void)term.release();
  (void)rhs.release();
  rhs = std::move(sum);
  return KVN_SUCCESS;
}

void KVN_equationSides::GetVariables(std::vector<std::string>& names) const {
  if (lhs != nullptr) ::GetVariables(*lhs, names);
  if (rhs != nullptr) ::GetVariables(*rhs, names);
}

void KVN_equationSides::AssignVariable(const std::string& name, double value) {
  if (lhs != nullptr) ::AssignVariable(*lhs, name, value);
  if (rhs != nullptr) ::AssignVariable(*rhs, name, value);
}

void KVN_equationSides::RenameVariable(const std::string& oldName, const std::string& newName) {
  if (lhs != nullptr) ::RenameVariable(*lhs, oldName, newName);
  if (rhs != nullptr) ::RenameVariable(*rhs, oldName, newName);
}

int KVN_equationSides::Solve(const std::string& name) {
  if (!IsComplete()) return KVN_REFUSED;
  // The result is to hold for all values, and variables may have none yet.
  const KVN_valueBlindScope blind;
  lhs = Join<KVN_operatorMinus>(std::move(lhs), std::move(rhs));
  rhs = NewConstant(0.0);
  if (!IsComplete()) return KVN_NO_MEMORY;
  (void)SimplifyOnce(lhs);
  (void)SimplifyOnce(rhs);
  const int result = IsolateVariable(name);
  // With more memory the variable might have occurred once.
  if (result == KVN_REFUSED && blind.HasRunOut()) return KVN_NO_MEMORY;
  if (result < 0) return result;
  KVN_expression* root = rhs.release();
  (void)SimplifyFully(root);  // of the same value wherever it stops
  rhs.reset(root);
  return KVN_SUCCESS;
}

/// Moves all but the variable from the left side to the right one.
int KVN_equationSides::IsolateVariable(const std::string& name) {
  if (CountVariable(*lhs, name) != 1) return KVN_REFUSED;
  for (;;) {
    // A step takes no account of the sign of what it takes apart, so it is moved across before.
    if (lhs->sign == -1) {
      lhs->sign = 1;
      Negate(rhs);
      if (rhs == nullptr) return KVN_NO_MEMORY;
    }
    if (IsVariable(*lhs, name)) return KVN_SUCCESS;
    if (!HasInverse(*lhs)) return KVN_REFUSED;
    KVN_expression* left = lhs.release();
    KVN_expression* right = rhs.release();
    const KVN_expression* const oldLeft = left;
    const KVN_expression* const oldRight = right;
    const bool hasMoved = left->Isolate(name, left, right);
    lhs.reset(left);
    rhs.reset(right);
    if (!hasMoved) return KVN_NO_MEMORY;
    // Some functions claim success and move nothing.
    if (left == oldLeft && right == oldRight) return KVN_REFUSED;
  }
}

void KVN_equationSides::Print(std::string& out) const {
  if (!IsComplete()) return;
  // As the comparison "=" would print its operands: a looser or equal one on the right side is put
  // into parentheses, so that the text is parsed into the same two sides.
  const Tree whole = Join<KVN_operatorEQ>(Copy(lhs), Copy(rhs));
  if (whole != nullptr) whole->Print(out);
}

double KVN_equationSides::ComputeResidual() const {
  const double right = rhs != nullptr ? SignedValue(*rhs) : 0.0;
  const double left = lhs != nullptr ? SignedValue(*lhs) : 0.0;
  return right - left;
}
