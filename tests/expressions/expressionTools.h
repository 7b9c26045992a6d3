#pragma once

#include <memory>
#include <string>

#include "expressions/expression.h"
#include "expressions/expressionParser.h"

using Tree = std::unique_ptr<KVN_expression>;

/// The tree of a text that parses; null, which the test then stumbles over, if it doesn't.
inline Tree Parsed(const std::string& text) {
  return Tree(ParseExpression(text.c_str(), nullptr, nullptr));
}

inline std::string Printed(const KVN_expression& tree) {
  std::string text;
  PrintSigned(tree, text);
  return text;
}

inline double ValueOf(const std::string& text) {
  const Tree tree = Parsed(text);
  return SignedValue(*tree);
}

/// "term,term,..." and the like: `count` copies with the separator between them.
inline std::string Repeated(const std::string& item, int count, const std::string& separator) {
  std::string text;
  for (int i = 0; i < count; i++) text += (i > 0 ? separator : "") + item;
  return text;
}
