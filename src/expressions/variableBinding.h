#pragma once

#include <string>
#include <unordered_map>
#include <vector>

class KVN_expression;
class KVN_variable;

/// A variable of a formula, and where in a list of numbers the one stands that it is to take.
struct KVN_boundVariable {
  KVN_variable* variable;  // not owned
  int source;
};

/// The variables of a formula that loops set before each evaluation: found by name once, since a
/// comparison of names takes longer than the evaluation. Valid as long as the tree isn't changed.
class KVN_variableBinding {
 public:
  /// Adds the variables of the tree whose names are among `sources`; the others keep their values.
  void Bind(KVN_expression& root, const std::unordered_map<std::string, int>& sources);
  void Apply(const double* numbers) const;

 private:
  std::vector<KVN_boundVariable> bound;
};
