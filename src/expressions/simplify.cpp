// The rewriting rules. Each operator tries its rules in order and takes the first that matches; a
// rule needs a few fixed levels of the tree only, so SimplifyTree can walk instead of recursing.
// Nodes that a rule needs anew are made before anything moves: without memory nothing changes.

#include <memory>
#include <new>
#include <utility>

#include "expressions/expressionWalk.h"
#include "expressions/function.h"
#include "expressions/operators.h"

namespace {

using OwnedTree = std::unique_ptr<KVN_expression>;

/// Set by KVN_valueBlindScope.
bool isValueBlind = false;
bool hasRunOut = false;

/// For a rule that can't get its nodes.
bool LeaveOut() {
  hasRunOut = true;
  return false;
}

/// A constant in the form that folding gives: the stored value isn't negative.
KVN_constant* NewFolded(double value) {
  auto* made = new (std::nothrow) KVN_constant(value < 0.0 ? -value : value);
  if (made != nullptr && value < 0.0) made->sign = -1;
  return made;
}

/// Puts `replacement` where `self` is and deletes the old node with the children it still has.
bool ReplaceBy(KVN_expression*& self, KVN_expression* replacement) {
  if (replacement == nullptr) return LeaveOut();
  delete std::exchange(self, replacement);
  return true;
}

/// Takes the child out of the slot, for ReplaceBy.
KVN_expression* Detach(KVN_expression*& slot) { return std::exchange(slot, nullptr); }

KVN_expression* DetachNegated(KVN_expression*& slot) {
  slot->sign = -slot->sign;
  return Detach(slot);
}

/// `self` becomes an operator of another kind with the operands in the slots.
bool BecomeBinary(KVN_expression*& self, int kind, KVN_expression*& left, KVN_expression*& right) {
  KVN_binaryOperator* made = NewBinaryOperator(kind, nullptr, nullptr);
  if (made == nullptr) return LeaveOut();
  made->left = Detach(left);
  made->right = Detach(right);
  return ReplaceBy(self, made);
}

bool IsSum(const KVN_expression& node) {
  return node.GetKind() == KVN_KIND_PLUS || node.GetKind() == KVN_KIND_MINUS;
}

/// The node as `a + c1` or `a - c1`, a not constant and c1 constant; null when it has another form.
/// A minus before the whole makes it another form.
KVN_binaryOperator* AsSumWithConstant(KVN_expression& node) {
  if (!IsSum(node) || node.sign < 0) return nullptr;
  auto& sum = static_cast<KVN_binaryOperator&>(node);
  return !IsConstant(*sum.left) && IsConstant(*sum.right) ? &sum : nullptr;
}

/// `(a + c1) + c2` and the like in the slots of an outer sum: `self` becomes `a kind constant`.
bool MergeConstants(KVN_expression*& self, KVN_binaryOperator& inner, int kind, double constant) {
  OwnedTree merged(NewFolded(constant));
  if (merged == nullptr) return LeaveOut();
  KVN_expression* right = merged.get();
  if (!BecomeBinary(self, kind, inner.left, right)) return false;
  (void)merged.release();  // it is in the new node
  return true;
}

/// `self`, a sum or difference, becomes the other one with the sign of its right side flipped.
bool BecomeWithFlippedRight(KVN_expression*& self, int kind) {
  auto& node = static_cast<KVN_binaryOperator&>(*self);
  if (!BecomeBinary(self, kind, node.left, node.right)) return false;
  KVN_expression& right = *static_cast<KVN_binaryOperator&>(*self).right;
  right.sign = -right.sign;
  return true;
}

/// Copies of what draws would draw for themselves, which a scope forbids.
bool MayCopy(const KVN_expression& node) { return !isValueBlind || node.IsDeterministic(); }

/// `factor op (b +- c)` becomes `(factor op b) +- (factor' op c)` with a copy of the factor, and
/// the sum keeps its sign; with the factor on the right side likewise. `sum` and `factor` are the
/// slots of `self`, an operator of that kind.
bool Distribute(KVN_expression*& self, int kind, KVN_expression*& sum, KVN_expression*& factor) {
  if (!MayCopy(*factor)) return false;
  const bool factorFirst = &factor == &static_cast<KVN_binaryOperator&>(*self).left;
  OwnedTree copy(factor->Clone());
  std::unique_ptr<KVN_binaryOperator> first(NewBinaryOperator(kind, nullptr, nullptr));
  std::unique_ptr<KVN_binaryOperator> second(NewBinaryOperator(kind, nullptr, nullptr));
  if (copy == nullptr || first == nullptr || second == nullptr) return LeaveOut();
  auto* kept = static_cast<KVN_binaryOperator*>(Detach(sum));
  (factorFirst ? first->left : first->right) = Detach(factor);
  (factorFirst ? first->right : first->left) = kept->left;
  (factorFirst ? second->left : second->right) = copy.release();
  (factorFirst ? second->right : second->left) = kept->right;
  kept->left = first.release();
  kept->right = second.release();
  return ReplaceBy(self, kept);
}

KVN_binaryOperator* NewProduct(KVN_expression* left, KVN_expression* right) {
  return NewBinaryOperator(KVN_KIND_MULTIPLY, left, right);
}

/// The product `self` of two sums, `(a op1 b) * (c op2 d)`, becomes
/// `((a*c op2 a'*d) op1 b*c') op3 b'*d'`. Signs before the two sums go to the whole.
bool MultiplyOut(KVN_expression*& self) {
  if (!MayCopy(*self)) return false;
  auto& product = static_cast<KVN_binaryOperator&>(*self);
  auto& leftSum = static_cast<KVN_binaryOperator&>(*product.left);
  auto& rightSum = static_cast<KVN_binaryOperator&>(*product.right);
  OwnedTree a(leftSum.left->Clone()), b(leftSum.right->Clone());
  OwnedTree c(rightSum.left->Clone()), d(rightSum.right->Clone());
  std::unique_ptr<KVN_binaryOperator> ac(NewProduct(nullptr, nullptr)),
      ad(NewProduct(nullptr, nullptr)), bc(NewProduct(nullptr, nullptr)),
      bd(NewProduct(nullptr, nullptr));
  const bool sameKind = leftSum.GetKind() == rightSum.GetKind();
  std::unique_ptr<KVN_binaryOperator> whole(
      NewBinaryOperator(sameKind ? KVN_KIND_PLUS : KVN_KIND_MINUS, nullptr, nullptr));
  if (!a || !b || !c || !d || !ac || !ad || !bc || !bd || !whole) return LeaveOut();
  whole->sign = leftSum.sign * rightSum.sign;
  leftSum.sign = rightSum.sign = 1;
  ac->left = leftSum.left;
  ac->right = rightSum.left;
  ad->left = a.release();
  ad->right = rightSum.right;
  bc->left = leftSum.right;
  bc->right = c.release();
  bd->left = b.release();
  bd->right = d.release();
  rightSum.left = ac.release();
  rightSum.right = ad.release();
  leftSum.left = Detach(product.right);
  leftSum.right = bc.release();
  whole->left = Detach(product.left);
  whole->right = bd.release();
  return ReplaceBy(self, whole.release());
}

}  // namespace

KVN_valueBlindScope::KVN_valueBlindScope() : wasBlind(isValueBlind) {
  isValueBlind = true;
  hasRunOut = false;
}
KVN_valueBlindScope::~KVN_valueBlindScope() { isValueBlind = wasBlind; }
bool KVN_valueBlindScope::HasRunOut() const { return hasRunOut; }

bool SimplifyTree(KVN_expression*& root) {
  bool changed = false;
  WalkTree(&root, [&](KVN_expression& node, KVN_expression** slot) {
    const int kind = node.GetKind();
    if (kind < KVN_KIND_PLUS || kind == KVN_KIND_CONDITIONAL) return true;
    if (static_cast<KVN_binaryOperator&>(node).Rewrite(*slot)) {
      changed = true;
      return false;
    }
    // Meant: the sides of a comparison are left as they are, so `(1+2)<x` stays.
    return kind <= KVN_KIND_EXP;
  });
  return changed;
}

int SimplifyFully(KVN_expression*& root, long long mostNodes) {
  int passes = 0;
  while (passes < KVN_MAX_SIMPLIFY_PASSES && root->Simplify(root)) {
    passes++;
    if (CountNodes(root) > mostNodes) break;
  }
  return passes;
}

bool KVN_binaryOperator::HasConstants() const { return IsConstant(*left) && IsConstant(*right); }

bool KVN_binaryOperator::Fold(KVN_expression*& self) {
  return ReplaceBy(self, NewFolded(Evaluate()));
}

bool KVN_binaryOperator::Rewrite(KVN_expression*& self) { return HasConstants() && Fold(self); }

bool KVN_operatorPlus::Rewrite(KVN_expression*& self) {
  if (sign < 0) {
    left->sign = -left->sign;
    right->sign = -right->sign;
    sign = 1;
    return true;
  }
  if (HasConstants()) return Fold(self);
  const bool leftIsConstant = IsConstant(*left);
  const bool rightIsConstant = IsConstant(*right);
  if (IsConstantOf(*left, 0.0)) return ReplaceBy(self, Detach(right));
  if (IsConstantOf(*right, 0.0)) return ReplaceBy(self, Detach(left));
  if (rightIsConstant && right->sign < 0) {
    return BecomeWithFlippedRight(self, KVN_KIND_MINUS);
  }
  if (leftIsConstant) {
    std::swap(left, right);
    return true;
  }
  KVN_binaryOperator* inner = rightIsConstant ? AsSumWithConstant(*left) : nullptr;
  if (inner == nullptr) return false;
  const double c1 = SignedValue(*inner->right);
  const double c2 = SignedValue(*right);
  const bool isPlus = inner->GetKind() == KVN_KIND_PLUS;
  return MergeConstants(self, *inner, KVN_KIND_PLUS, isPlus ? c1 + c2 : c2 - c1);
}

bool KVN_operatorMinus::Rewrite(KVN_expression*& self) {
  if (sign < 0) {
    std::swap(left, right);
    sign = 1;
    return true;
  }
  if (HasConstants()) return Fold(self);
  if (IsConstantOf(*left, 0.0)) return ReplaceBy(self, DetachNegated(right));
  if (IsConstantOf(*right, 0.0)) return ReplaceBy(self, Detach(left));
  const bool rightIsConstant = IsConstant(*right);
  if (right->sign < 0 && rightIsConstant != IsConstant(*left)) {
    return BecomeWithFlippedRight(self, KVN_KIND_PLUS);
  }
  KVN_binaryOperator* inner = rightIsConstant ? AsSumWithConstant(*left) : nullptr;
  if (inner == nullptr) return false;
  const double c1 = SignedValue(*inner->right);
  const double c2 = SignedValue(*right);
  const bool isPlus = inner->GetKind() == KVN_KIND_PLUS;
  return MergeConstants(self, *inner, inner->GetKind(), isPlus ? c1 - c2 : c1 + c2);
}

/// Two of these rules change what a formula means, and both are meant: a left side that is 0 with
/// the values of the moment makes the product 0, and `x * 0` with another x becomes `-x`.
bool KVN_operatorMultiply::Rewrite(KVN_expression*& self) {
  if (sign < 0) {
    left->sign = -left->sign;
    sign = 1;
    return true;
  }
  if (HasConstants()) return Fold(self);
  const bool rightIsConstant = IsConstant(*right);
  if (IsConstantOf(*left, 0.0)) return ReplaceBy(self, NewFolded(0.0));
  if (rightIsConstant && !isValueBlind && SignedValue(*left) == 0.0) {
    return ReplaceBy(self, NewFolded(0.0));
  }
  if (IsConstantOf(*left, 1.0)) return ReplaceBy(self, Detach(right));
  if (IsConstantOf(*right, 1.0)) return ReplaceBy(self, Detach(left));
  if (IsConstantOf(*left, -1.0)) return ReplaceBy(self, DetachNegated(right));
  if (IsConstantOf(*right, 0.0)) return ReplaceBy(self, DetachNegated(left));
  if (rightIsConstant) {
    std::swap(left, right);
    return true;
  }
  if (!left->IsOperator() && IsSum(*right)) return Distribute(self, GetKind(), right, left);
  if (!right->IsOperator() && IsSum(*left)) return Distribute(self, GetKind(), left, right);
  return IsSum(*left) && IsSum(*right) && MultiplyOut(self);
}

bool KVN_operatorDivide::Rewrite(KVN_expression*& self) {
  if (sign < 0) {
    left->sign = -left->sign;
    sign = 1;
    return true;
  }
  if (HasConstants()) return Fold(self);
  if (IsConstantOf(*left, 0.0)) return ReplaceBy(self, Detach(left));
  if (IsConstantOf(*right, 1.0)) return ReplaceBy(self, Detach(left));
  if (IsConstant(*right)) {
    OwnedTree inverse(NewFolded(1.0 / SignedValue(*right)));
    if (inverse == nullptr) return LeaveOut();
    KVN_expression* factor = inverse.get();
    if (!BecomeBinary(self, KVN_KIND_MULTIPLY, factor, left)) return false;
    (void)inverse.release();  // it is in the new node
    return true;
  }
  if (!right->IsOperator() && IsSum(*left)) return Distribute(self, GetKind(), left, right);
  // Meant: the signs are not looked at, so that `-x/x` becomes 1 too.
  const bool sameVariable =
      left->GetKind() == KVN_KIND_VARIABLE && right->GetKind() == KVN_KIND_VARIABLE &&
      static_cast<KVN_variable&>(*left).name == static_cast<KVN_variable&>(*right).name;
  return sameVariable && ReplaceBy(self, NewFolded(1.0));
}

bool KVN_operatorExp::Rewrite(KVN_expression*& self) {
  if (HasConstants()) return Fold(self);
  // Meant: the sign of a power of 0 is lost, as it is where a power is folded.
  return IsConstantOf(*right, 0.0) && ReplaceBy(self, NewFolded(1.0));
}
