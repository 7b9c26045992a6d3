#pragma once

#include <string>
#include <unordered_set>
#include <vector>

class KVN_expression;
class KVN_variable;

/// Is shown the variables of a tree by KVN_expression::Accept: depth first, the left child before
/// the right one, condition before branches, arguments in order. May change name and value, not the
/// tree. Names are compared exactly, upper and lower case apart.
class KVN_variableVisitor {
 public:
  virtual ~KVN_variableVisitor() = default;
  virtual void Visit(KVN_variable& variable) = 0;
};

/// Sets the value of every variable of one name.
class AssigningVisitor : public KVN_variableVisitor {
 public:
  AssigningVisitor(const std::string& variableName, double number)
      : name(variableName), value(number) {}
  void Visit(KVN_variable& variable) override;

 private:
  const std::string& name;
  double value;
};

/// Counts the variables of one name.
class CountingVisitor : public KVN_variableVisitor {
 public:
  explicit CountingVisitor(const std::string& variableName) : name(variableName) {}
  void Visit(KVN_variable& variable) override;
  int GetCount() const { return count; }

 private:
  const std::string& name;
  int count = 0;
};

/// Gives every variable of one name another one.
class RenamingVisitor : public KVN_variableVisitor {
 public:
  RenamingVisitor(const std::string& from, const std::string& to) : oldName(from), newName(to) {}
  void Visit(KVN_variable& variable) override;

 private:
  // Copies: the name to replace may be that of a variable which is renamed on the way.
  const std::string oldName;
  const std::string newName;
};

/// Appends each name that is not in the list yet: names in the order of their first occurrence.
class GetVarsVisitor : public KVN_variableVisitor {
 public:
  explicit GetVarsVisitor(std::vector<std::string>& list);
  void Visit(KVN_variable& variable) override;

 private:
  std::vector<std::string>* names;        // not owned
  std::unordered_set<std::string> known;  // the same, for long formulas
};

void AssignVariable(KVN_expression& root, const std::string& name, double value);
int CountVariable(KVN_expression& root, const std::string& name);
void RenameVariable(KVN_expression& root, const std::string& oldName, const std::string& newName);
/// Keeps what `names` already holds.
void GetVariables(KVN_expression& root, std::vector<std::string>& names);
