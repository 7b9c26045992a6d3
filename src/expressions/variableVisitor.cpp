#include "expressions/variableVisitor.h"

#include "expressions/expression.h"

void AssigningVisitor::Visit(KVN_variable& variable) {
  if (variable.name == name) variable.value = value;
}

void CountingVisitor::Visit(KVN_variable& variable) {
  if (variable.name == name) count++;
}

void RenamingVisitor::Visit(KVN_variable& variable) {
  if (variable.name == oldName) variable.name = newName;
}

GetVarsVisitor::GetVarsVisitor(std::vector<std::string>& list)
    : names(&list), known(list.begin(), list.end()) {}

void GetVarsVisitor::Visit(KVN_variable& variable) {
  if (known.insert(variable.name).second) names->push_back(variable.name);
}

void AssignVariable(KVN_expression& root, const std::string& name, double value) {
  AssigningVisitor visitor(name, value);
  root.Accept(visitor);
}

int CountVariable(KVN_expression& root, const std::string& name) {
  CountingVisitor visitor(name);
  root.Accept(visitor);
  return visitor.GetCount();
}

void RenameVariable(KVN_expression& root, const std::string& oldName, const std::string& newName) {
  RenamingVisitor visitor(oldName, newName);
  root.Accept(visitor);
}

void GetVariables(KVN_expression& root, std::vector<std::string>& names) {
  GetVarsVisitor visitor(names);
  root.Accept(visitor);
}
