#include "ormel/formulaPrint.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "expressions/equationSides.h"
#include "expressions/expressionParser.h"
#include "expressions/function.h"
#include "expressions/operators.h"

namespace {

using Children = std::vector<const KVN_expression*>;

Children ChildrenOf(const KVN_expression& node) {
  switch (node.GetKind()) {
    case KVN_KIND_VARIABLE:
    case KVN_KIND_CONSTANT:
      return {};
    case KVN_KIND_FUNCTION:
    case KVN_KIND_DISTRIBUTION: {
      const auto& call = static_cast<const KVN_function&>(node);
      return {std::begin(call.args), std::end(call.args)};
    }
    case KVN_KIND_CONDITIONAL: {
      const auto& choice = static_cast<const KVN_operatorConditional&>(node);
      return {choice.condition, choice.whenTrue, choice.whenFalse};
    }
    default: {
      const auto& pair = static_cast<const KVN_binaryOperator&>(node);
      return {pair.left, pair.right};
    }
  }
}

/// The two nodes without their children. A constant may have its minus in either place.
bool IsSameNode(const KVN_expression& a, const KVN_expression& b) {
  if (a.GetKind() != b.GetKind()) return false;
  if (a.GetKind() == KVN_KIND_CONSTANT) {
    return a.sign * a.Evaluate() == b.sign * b.Evaluate();
  }
  if (a.sign != b.sign) return false;
  if (a.GetKind() == KVN_KIND_VARIABLE) {
    return static_cast<const KVN_variable&>(a).name == static_cast<const KVN_variable&>(b).name;
  }
  const bool isCall = a.GetKind() == KVN_KIND_FUNCTION || a.GetKind() == KVN_KIND_DISTRIBUTION;
  return !isCall || std::strcmp(static_cast<const KVN_function&>(a).GetName(),
                                static_cast<const KVN_function&>(b).GetName()) == 0;
}

bool IsSameTree(const KVN_expression* first, const KVN_expression* second) {
  std::vector<std::pair<const KVN_expression*, const KVN_expression*>> pending = {{first, second}};
  while (!pending.empty()) {
    const auto [a, b] = pending.back();
    pending.pop_back();
    if (a == nullptr && b == nullptr) continue;
    if (a == nullptr || b == nullptr || !IsSameNode(*a, *b)) return false;
    const Children ofA = ChildrenOf(*a);
    const Children ofB = ChildrenOf(*b);
    for (std::size_t i = 0; i < ofA.size(); i++) pending.emplace_back(ofA[i], ofB[i]);
  }
  return true;
}

/// Names of the variables, sorted, each once.
std::vector<std::string> VariablesOf(const KVN_expression* root) {
  std::vector<std::string> names;
  Children pending = {root};
  while (!pending.empty()) {
    const KVN_expression* const node = pending.back();
    pending.pop_back();
    if (node == nullptr) continue;
    if (node->GetKind() == KVN_KIND_VARIABLE) {
      names.push_back(static_cast<const KVN_variable&>(*node).name);
    }
    const Children children = ChildrenOf(*node);
    pending.insert(pending.end(), children.begin(), children.end());
  }
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
  return names;
}

Printed Compare(const KVN_expression* before, const KVN_expression* after) {
  if (after == nullptr || VariablesOf(before) != VariablesOf(after)) return Printed::kUnreadable;
  return IsSameTree(before, after) ? Printed::kKept : Printed::kChanged;
}

}  // namespace

Printed WhatPrintingKeeps(const KVN_expression& formula) {
  std::string text;
  PrintSigned(formula, text);
  const std::unique_ptr<KVN_expression> back(ParseExpression(text.c_str(), nullptr, nullptr));
  return Compare(&formula, back.get());
}

Printed WhatPrintingKeeps(const KVN_equationSides& equation) {
  std::string text;
  equation.Print(text);
  KVN_equationSides back;
  if (back.Parse(text, nullptr, nullptr) < 0) return Printed::kUnreadable;
  return std::max(Compare(equation.Lhs(), back.Lhs()), Compare(equation.Rhs(), back.Rhs()));
}
