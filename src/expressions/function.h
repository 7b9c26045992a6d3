#pragma once

#include <string>
#include <vector>

#include "expressions/expression.h"

struct KVN_functionRow;

/// Most arguments of a call.
constexpr int KVN_MAX_ARGUMENTS = 30;

/// A call of a function of the table.
class KVN_function : public KVN_expression {
 public:
  /// `row` lives longer than the node; rows of the table always do.
  explicit KVN_function(const KVN_functionRow* row) : descriptor(row) {}
  ~KVN_function() override;
  KVN_expression* Clone() const override;
  int GetKind() const override { return KVN_KIND_FUNCTION; }
  void CollectDistributions(KVN_expression** slot, std::vector<KVN_expression**>& found) override;
  bool IsDeterministic() const override;
  void Accept(KVN_variableVisitor& visitor) override;
  /// Moves a function of one argument with an inverse in the table, and Log.
  bool Isolate(const std::string& variable, KVN_expression*& lhs, KVN_expression*& rhs) override;
  bool Simplify(KVN_expression*& self) override;
  /// NaN where the descriptor is null or has no evaluation function.
  double Evaluate() const override;
  void Print(std::string& out) const override;

  /// The spelling of the table, whatever the text had. Empty for a null descriptor.
  virtual const char* GetName() const;

  /// The arity of the row; where that is variable, the number of leading non-null `args`.
  int GetArgumentCount() const;

  const KVN_functionRow* descriptor;             // not owned, may be null
  KVN_expression* args[KVN_MAX_ARGUMENTS] = {};  // owned; null beyond the last
};

/// A call of a function of the table that has a density: Evaluate draws a sample. All random nodes
/// share one generator, KVN_functionRandom().
class KVN_distribution : public KVN_function {
 public:
  using KVN_function::KVN_function;
  int GetKind() const override { return KVN_KIND_DISTRIBUTION; }
  void CollectDistributions(KVN_expression** slot, std::vector<KVN_expression**>& found) override;
  bool IsDeterministic() const override { return false; }
};

/// A call of a name that the table doesn't have: keeps what a foreign file says, for printing. It
/// is never evaluated.
class KVN_unknownFunction : public KVN_function {
 public:
  explicit KVN_unknownFunction(const std::string& name);
  const char* GetName() const override { return functionName.c_str(); }

  std::string functionName;
};
