#pragma once

#include <memory>
#include <string>
#include <vector>

class KVN_expression;

/// The two sides of an equation, such as `y` and `Normal(x,1)+z`. Value type: a copy has trees of
/// its own.
///
/// A side is null only before the first Parse or SetDefault, and after a Parse that failed; every
/// operation then does what it can with the other side, and the value of a missing side is 0.
class KVN_equationSides {
 public:
  KVN_equationSides();
  KVN_equationSides(const KVN_equationSides& source);
  KVN_equationSides& operator=(const KVN_equationSides& source);
  KVN_equationSides(KVN_equationSides&& source) noexcept;
  KVN_equationSides& operator=(KVN_equationSides&& source) noexcept;
  ~KVN_equationSides();

  /// Replaces both trees. KVN_REFUSED with the parser's message for a text that isn't an
  /// expression, KVN_EXPRESSION_ERROR for one without "=" at the top: both sides are then null.
  /// Either pointer may be null.
  [[nodiscard]] int Parse(const std::string& text, int* errorPosition, std::string* error);
  /// `id = names[0] + names[1] + ...`, or `id = 0` without names.
  void SetDefault(const std::string& id, const std::vector<std::string>& names);
  /// Adds a variable to the right side, or makes it the right side in place of a 0. KVN_REFUSED,
  /// unchanged, for a sum that is as deep as a tree may be; KVN_NO_MEMORY.
  [[nodiscard]] int AppendTerm(const std::string& name);

  /// Appends the names of both sides, left side first, each once.
  void GetVariables(std::vector<std::string>& names) const;
  void AssignVariable(const std::string& name, double value);
  void RenameVariable(const std::string& oldName, const std::string& newName);

  /// Rearranges so that the left side is the variable alone. KVN_REFUSED for a variable that
  /// doesn't occur exactly once after simplification, or that stands in what has no inverse;
  /// KVN_NO_MEMORY. After a failure the sides are somewhere between, or missing (solve a copy). The
  /// values of the variables stay, and each distribution is drawn once as before.
  [[nodiscard]] int Solve(const std::string& name);

  /// Appends left side, "=" and right side, without spaces.
  void Print(std::string& out) const;

  /// Value of the right side less that of the left one: 0 where the equation holds.
  double ComputeResidual() const;

  /// Whether a side draws random numbers, as of the last Parse.
  bool HasDistribution() const { return hasDistribution; }
  bool IsComplete() const { return lhs != nullptr && rhs != nullptr; }
  KVN_expression* Lhs() const { return lhs.get(); }
  KVN_expression* Rhs() const { return rhs.get(); }

 private:
  void Clear();
  int IsolateVariable(const std::string& name);

  std::unique_ptr<KVN_expression> lhs;
  std::unique_ptr<KVN_expression> rhs;
  bool hasDistribution = false;
};
