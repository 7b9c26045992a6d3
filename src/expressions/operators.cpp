#include "expressions/operators.h"

#include <cmath>
#include <new>

#include "expressions/expressionWalk.h"

KVN_binaryOperator* NewBinaryOperator(int kind, KVN_expression* left, KVN_expression* right) {
  switch (kind) {
    case KVN_KIND_PLUS:
      return new (std::nothrow) KVN_operatorPlus(left, right);
    case KVN_KIND_MINUS:
      return new (std::nothrow) KVN_operatorMinus(left, right);
    case KVN_KIND_DIVIDE:
      return new (std::nothrow) KVN_operatorDivide(left, right);
    case KVN_KIND_MULTIPLY:
      return new (std::nothrow) KVN_operatorMultiply(left, right);
    case KVN_KIND_EXP:
      return new (std::nothrow) KVN_operatorExp(left, right);
    case KVN_KIND_LT:
      return new (std::nothrow) KVN_operatorLT(left, right);
    case KVN_KIND_GT:
      return new (std::nothrow) KVN_operatorGT(left, right);
    case KVN_KIND_LE:
      return new (std::nothrow) KVN_operatorLE(left, right);
    case KVN_KIND_GE:
      return new (std::nothrow) KVN_operatorGE(left, right);
    case KVN_KIND_EQ:
      return new (std::nothrow) KVN_operatorEQ(left, right);
    case KVN_KIND_NE:
      return new (std::nothrow) KVN_operatorNE(left, right);
    default:
      return nullptr;
  }
}

KVN_binaryOperator::~KVN_binaryOperator() {
  DeleteTree(left);
  DeleteTree(right);
}

KVN_expression* KVN_binaryOperator::Clone() const { return CloneTree(*this); }

void KVN_binaryOperator::CollectDistributions(KVN_expression**,
                                              std::vector<KVN_expression**>& found) {
  CollectInTree(*this, found);
}

bool KVN_binaryOperator::IsDeterministic() const { return IsTreeDeterministic(*this); }

void KVN_binaryOperator::Accept(KVN_variableVisitor& visitor) { AcceptTree(*this, visitor); }

bool KVN_binaryOperator::Simplify(KVN_expression*& self) { return SimplifyTree(self); }

double KVN_operatorExp::Apply(double a, double b) const { return std::pow(a, b); }

KVN_operatorConditional::~KVN_operatorConditional() {
  DeleteTree(condition);
  DeleteTree(whenTrue);
  DeleteTree(whenFalse);
}

KVN_expression* KVN_operatorConditional::Clone() const { return CloneTree(*this); }

void KVN_operatorConditional::CollectDistributions(KVN_expression**,
                                                   std::vector<KVN_expression**>& found) {
  CollectInTree(*this, found);
}

bool KVN_operatorConditional::IsDeterministic() const { return IsTreeDeterministic(*this); }

void KVN_operatorConditional::Accept(KVN_variableVisitor& visitor) { AcceptTree(*this, visitor); }

bool KVN_operatorConditional::Simplify(KVN_expression*& self) { return SimplifyTree(self); }
