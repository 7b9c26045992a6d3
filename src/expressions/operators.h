#pragma once

#include <string>
#include <vector>

#include "expressions/expression.h"

/// Nodes written with a sign of the language rather than a name.
class KVN_operator : public KVN_expression {
 public:
  bool IsOperator() const override { return true; }
};

/// An operator between two operands, both owned.
class KVN_binaryOperator : public KVN_operator {
 public:
  KVN_binaryOperator(KVN_expression* leftOperand, KVN_expression* rightOperand)
      : left(leftOperand), right(rightOperand) {}
  ~KVN_binaryOperator() override;
  KVN_expression* Clone() const override;
  void CollectDistributions(KVN_expression** slot, std::vector<KVN_expression**>& found) override;
  bool IsDeterministic() const override;
  void Accept(KVN_variableVisitor& visitor) override;
  bool Simplify(KVN_expression*& self) override;
  double Evaluate() const override;
  void Print(std::string& out) const override;

  /// Binding strength, 0 (loosest) to 4.
  virtual int GetPrecedence() const = 0;
  /// The value for the two signed operands.
  virtual double Apply(double a, double b) const = 0;
  virtual const char* GetSymbol() const = 0;

  /// This node's own step of Simplify. The base folds two constants; the sign of the folded node
  /// is lost unless the operator has moved it to an operand before.
  virtual bool Rewrite(KVN_expression*& self);

  KVN_expression* left;   // owned
  KVN_expression* right;  // owned

 protected:
  bool HasConstants() const;
  /// For two constants only, which no other rule is for, not even where the memory ends: 2*0 must
  /// not become -2, as x*0 does.
  bool Fold(KVN_expression*& self);
};

class KVN_operatorPlus : public KVN_binaryOperator {
 public:
  using KVN_binaryOperator::KVN_binaryOperator;
  int GetKind() const override { return KVN_KIND_PLUS; }
  bool Isolate(const std::string& variable, KVN_expression*& lhs, KVN_expression*& rhs) override;
  double Evaluate() const override;
  int GetPrecedence() const override { return 2; }
  double Apply(double a, double b) const override { return a + b; }
  const char* GetSymbol() const override { return "+"; }
  bool Rewrite(KVN_expression*& self) override;
};

class KVN_operatorMinus : public KVN_binaryOperator {
 public:
  using KVN_binaryOperator::KVN_binaryOperator;
  int GetKind() const override { return KVN_KIND_MINUS; }
  bool Isolate(const std::string& variable, KVN_expression*& lhs, KVN_expression*& rhs) override;
  double Evaluate() const override;
  int GetPrecedence() const override { return 2; }
  double Apply(double a, double b) const override { return a - b; }
  const char* GetSymbol() const override { return "-"; }
  bool Rewrite(KVN_expression*& self) override;
};

class KVN_operatorMultiply : public KVN_binaryOperator {
 public:
  using KVN_binaryOperator::KVN_binaryOperator;
  int GetKind() const override { return KVN_KIND_MULTIPLY; }
  bool Isolate(const std::string& variable, KVN_expression*& lhs, KVN_expression*& rhs) override;
  double Evaluate() const override;
  int GetPrecedence() const override { return 3; }
  double Apply(double a, double b) const override { return a * b; }
  const char* GetSymbol() const override { return "*"; }
  bool Rewrite(KVN_expression*& self) override;
};

class KVN_operatorDivide : public KVN_binaryOperator {
 public:
  using KVN_binaryOperator::KVN_binaryOperator;
  int GetKind() const override { return KVN_KIND_DIVIDE; }
  bool Isolate(const std::string& variable, KVN_expression*& lhs, KVN_expression*& rhs) override;
  double Evaluate() const override;
  int GetPrecedence() const override { return 3; }
  double Apply(double a, double b) const override { return a / b; }
  const char* GetSymbol() const override { return "/"; }
  bool Rewrite(KVN_expression*& self) override;
};

/// left to the power of right.
class KVN_operatorExp : public KVN_binaryOperator {
 public:
  using KVN_binaryOperator::KVN_binaryOperator;
  int GetKind() const override { return KVN_KIND_EXP; }
  bool Isolate(const std::string& variable, KVN_expression*& lhs, KVN_expression*& rhs) override;
  int GetPrecedence() const override { return 4; }
  double Apply(double a, double b) const override;
  const char* GetSymbol() const override { return "^"; }
  bool Rewrite(KVN_expression*& self) override;
};

// The comparisons compare plain doubles, without any tolerance, and give 1.0 or 0.0. Simplify folds
// them when both sides are constants and otherwise leaves their sides alone.

class KVN_operatorEQ : public KVN_binaryOperator {
 public:
  using KVN_binaryOperator::KVN_binaryOperator;
  int GetKind() const override { return KVN_KIND_EQ; }
  int GetPrecedence() const override { return 0; }
  double Apply(double a, double b) const override { return a == b ? 1.0 : 0.0; }
  const char* GetSymbol() const override { return "="; }
};

class KVN_operatorNE : public KVN_binaryOperator {
 public:
  using KVN_binaryOperator::KVN_binaryOperator;
  int GetKind() const override { return KVN_KIND_NE; }
  int GetPrecedence() const override { return 0; }
  double Apply(double a, double b) const override { return a != b ? 1.0 : 0.0; }
  const char* GetSymbol() const override { return "<>"; }
};

class KVN_operatorLT : public KVN_binaryOperator {
 public:
  using KVN_binaryOperator::KVN_binaryOperator;
  int GetKind() const override { return KVN_KIND_LT; }
  int GetPrecedence() const override { return 1; }
  double Apply(double a, double b) const override { return a < b ? 1.0 : 0.0; }
  const char* GetSymbol() const override { return "<"; }
};

class KVN_operatorLE : public KVN_binaryOperator {
 public:
  using KVN_binaryOperator::KVN_binaryOperator;
  int GetKind() const override { return KVN_KIND_LE; }
  int GetPrecedence() const override { return 1; }
  double Apply(double a, double b) const override { return a <= b ? 1.0 : 0.0; }
  const char* GetSymbol() const override { return "<="; }
};

class KVN_operatorGT : public KVN_binaryOperator {
 public:
  using KVN_binaryOperator::KVN_binaryOperator;
  int GetKind() const override { return KVN_KIND_GT; }
  int GetPrecedence() const override { return 1; }
  double Apply(double a, double b) const override { return a > b ? 1.0 : 0.0; }
  const char* GetSymbol() const override { return ">"; }
};

class KVN_operatorGE : public KVN_binaryOperator {
 public:
  using KVN_binaryOperator::KVN_binaryOperator;
  int GetKind() const override { return KVN_KIND_GE; }
  int GetPrecedence() const override { return 1; }
  double Apply(double a, double b) const override { return a >= b ? 1.0 : 0.0; }
  const char* GetSymbol() const override { return ">="; }
};

/// A new operator of one of the eleven binary kinds, which takes the operands over. Null, and the
/// operands stay the caller's, for another kind or when the memory ends. Operands may be null.
KVN_binaryOperator* NewBinaryOperator(int kind, KVN_expression* left, KVN_expression* right);

/// condition ? whenTrue : whenFalse. A condition of exactly 0 selects whenFalse; only the selected
/// branch is evaluated. All three are owned.
class KVN_operatorConditional : public KVN_operator {
 public:
  KVN_operatorConditional(KVN_expression* test, KVN_expression* first, KVN_expression* second)
      : condition(test), whenTrue(first), whenFalse(second) {}
  ~KVN_operatorConditional() override;
  KVN_expression* Clone() const override;
  int GetKind() const override { return KVN_KIND_CONDITIONAL; }
  /// A distribution in a branch is reported with the slot of `condition`. This is meant: readers of
  /// the list count on it, so writing through such a slot replaces the condition.
  void CollectDistributions(KVN_expression** slot, std::vector<KVN_expression**>& found) override;
  bool IsDeterministic() const override;
  void Accept(KVN_variableVisitor& visitor) override;
  bool Simplify(KVN_expression*& self) override;
  double Evaluate() const override;
  void Print(std::string& out) const override;

  /// Binds looser than every binary operator.
  virtual int GetPrecedence() const { return -1; }

  KVN_expression* condition;  // owned
  KVN_expression* whenTrue;   // owned
  KVN_expression* whenFalse;  // owned
};
