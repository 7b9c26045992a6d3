// Moving one layer of an equation's left side over to the right side. Nodes are made before
// anything moves, so that a failure leaves the equation as it stands.

#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "expressions/function.h"
#include "expressions/functionTable.h"
#include "expressions/operators.h"
#include "expressions/variableVisitor.h"

namespace {

KVN_expression* Detach(KVN_expression*& slot) { return std::exchange(slot, nullptr); }

/// `lhs`, the node that holds the slot `kept`, gives way to that child.
bool KeepChild(KVN_expression*& lhs, KVN_expression*& kept) {
  KVN_expression* child = Detach(kept);
  delete std::exchange(lhs, child);
  return true;
}

/// rhs becomes `rhs kind other`, or `other kind rhs` when rhs goes second; `lhs` keeps one child.
bool Move(KVN_expression*& lhs, KVN_expression*& rhs, KVN_expression*& kept, int kind,
          KVN_expression*& other, bool rhsFirst) {
  KVN_binaryOperator* made = NewBinaryOperator(kind, nullptr, nullptr);
  if (made == nullptr) return false;
  made->left = rhsFirst ? rhs : Detach(other);
  made->right = rhsFirst ? Detach(other) : rhs;
  rhs = made;
  return KeepChild(lhs, kept);
}

constexpr bool kRhsFirst = true;
constexpr bool kRhsSecond = false;

/// 0 or 1 for the operand that holds the variable, -1 for none.
int PlaceOf(const std::string& variable, KVN_expression& first, KVN_expression& second) {
  if (CountVariable(first, variable) > 0) return 0;
  return CountVariable(second, variable) > 0 ? 1 : -1;
}

/// A new call `name(argument)`; null, and the argument stays the caller's, without memory.
KVN_function* NewCall(const char* name, KVN_expression* argument) {
  auto* made = new (std::nothrow) KVN_function(FindFunction(name));
  if (made != nullptr) made->args[0] = argument;
  return made;
}

/// `base ^ (1 / exponent)` without its base and its exponent, or null.
std::unique_ptr<KVN_binaryOperator> NewRoot() {
  std::unique_ptr<KVN_expression> one(new (std::nothrow) KVN_constant(1.0));
  std::unique_ptr<KVN_binaryOperator> inverse(
      NewBinaryOperator(KVN_KIND_DIVIDE, one.get(), nullptr));
  if (one == nullptr || inverse == nullptr) return nullptr;
  (void)one.release();  // it is in `inverse`
  std::unique_ptr<KVN_binaryOperator> root(NewBinaryOperator(KVN_KIND_EXP, nullptr, inverse.get()));
  if (root != nullptr) (void)inverse.release();
  return root;
}

KVN_expression*& ExponentOf(KVN_binaryOperator& root) {
  return static_cast<KVN_binaryOperator*>(root.right)->right;
}

/// Functions of one argument and their inverses, both ways.
constexpr std::array<const char*, 2> kInverses[] = {
    {"Sin", "Asin"}, {"Cos", "Acos"}, {"Tan", "Atan"},
    {"Exp", "Ln"},   {"Sqr", "Sqrt"}, {"Pow10", "Log10"},
};

/// Null for a function without one.
const char* InverseOf(const char* name) {
  for (const auto& [one, other] : kInverses) {
    if (std::strcmp(name, one) == 0) return other;
    if (std::strcmp(name, other) == 0) return one;
  }
  return nullptr;
}

/// A function of one argument that Isolate knows; null for all others.
const char* InverseOf(const KVN_function& call) {
  const bool isKnown = call.descriptor != &theUnknownFunctionRow && call.args[0] != nullptr;
  return isKnown ? InverseOf(call.GetName()) : nullptr;
}

bool IsLog(const KVN_function& call) {
  return call.descriptor != nullptr && call.descriptor == FindFunction("Log");
}

}  // namespace

bool HasInverse(const KVN_expression& node) {
  const int kind = node.GetKind();
  if (kind >= KVN_KIND_PLUS && kind <= KVN_KIND_EXP) return true;
  if (kind != KVN_KIND_FUNCTION) return false;
  const auto& call = static_cast<const KVN_function&>(node);
  return IsLog(call) || InverseOf(call) != nullptr;
}

bool KVN_operatorPlus::Isolate(const std::string& variable, KVN_expression*& lhs,
                               KVN_expression*& rhs) {
  const int place = PlaceOf(variable, *left, *right);
  if (place < 0) return false;
  return place == 0 ? Move(lhs, rhs, left, KVN_KIND_MINUS, right, kRhsFirst)
                    : Move(lhs, rhs, right, KVN_KIND_MINUS, left, kRhsFirst);
}

bool KVN_operatorMinus::Isolate(const std::string& variable, KVN_expression*& lhs,
                                KVN_expression*& rhs) {
  const int place = PlaceOf(variable, *left, *right);
  if (place < 0) return false;
  return place == 0 ? Move(lhs, rhs, left, KVN_KIND_PLUS, right, kRhsFirst)
                    : Move(lhs, rhs, right, KVN_KIND_MINUS, left, kRhsSecond);
}

bool KVN_operatorMultiply::Isolate(const std::string& variable, KVN_expression*& lhs,
                                   KVN_expression*& rhs) {
  const int place = PlaceOf(variable, *left, *right);
  if (place < 0) return false;
  return place == 0 ? Move(lhs, rhs, left, KVN_KIND_DIVIDE, right, kRhsFirst)
                    : Move(lhs, rhs, right, KVN_KIND_DIVIDE, left, kRhsFirst);
}

bool KVN_operatorDivide::Isolate(const std::string& variable, KVN_expression*& lhs,
                                 KVN_expression*& rhs) {
  const int place = PlaceOf(variable, *left, *right);
  if (place < 0) return false;
  return place == 0 ? Move(lhs, rhs, left, KVN_KIND_MULTIPLY, right, kRhsFirst)
                    : Move(lhs, rhs, right, KVN_KIND_DIVIDE, left, kRhsSecond);
}

/// `a ^ b = rhs` gives `a = rhs ^ (1/b)` or `b = Ln(rhs) / Ln(a)`.
bool KVN_operatorExp::Isolate(const std::string& variable, KVN_expression*& lhs,
                              KVN_expression*& rhs) {
  const int place = PlaceOf(variable, *left, *right);
  if (place == 0) {
    std::unique_ptr<KVN_binaryOperator> root = NewRoot();
    if (root == nullptr) return false;
    root->left = rhs;
    ExponentOf(*root) = Detach(right);
    rhs = root.release();
    return KeepChild(lhs, left);
  }
  if (place < 0) return false;
  std::unique_ptr<KVN_function> top(NewCall("Ln", nullptr));
  std::unique_ptr<KVN_function> bottom(NewCall("Ln", nullptr));
  if (top == nullptr || bottom == nullptr) return false;
  KVN_binaryOperator* quotient = NewBinaryOperator(KVN_KIND_DIVIDE, top.get(), bottom.get());
  if (quotient == nullptr) return false;
  top.release()->args[0] = rhs;
  bottom.release()->args[0] = Detach(left);
  rhs = quotient;
  return KeepChild(lhs, right);
}

namespace {

/// `Log(a, b) = rhs`, b the base, gives `a = b ^ rhs` or `b = a ^ (1/rhs)`.
bool IsolateLog(const std::string& variable, KVN_expression*& lhs, KVN_expression*& rhs) {
  auto& log = static_cast<KVN_function&>(*lhs);
  const int place = PlaceOf(variable, *log.args[0], *log.args[1]);
  if (place == 0) return Move(lhs, rhs, log.args[0], KVN_KIND_EXP, log.args[1], kRhsSecond);
  if (place < 0) return true;  // meant, see the header
  std::unique_ptr<KVN_binaryOperator> root = NewRoot();
  if (root == nullptr) return false;
  root->left = Detach(log.args[0]);
  ExponentOf(*root) = rhs;
  rhs = root.release();
  return KeepChild(lhs, log.args[1]);
}

}  // namespace

bool KVN_function::Isolate(const std::string& variable, KVN_expression*& lhs,
                           KVN_expression*& rhs) {
  if (IsLog(*this)) return IsolateLog(variable, lhs, rhs);
  const char* inverse = InverseOf(*this);
  if (inverse == nullptr || CountVariable(*args[0], variable) == 0) return false;
  KVN_function* call = NewCall(inverse, rhs);
  if (call == nullptr) return false;
  rhs = call;
  return KeepChild(lhs, args[0]);
}
