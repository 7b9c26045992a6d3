#pragma once

#include <string>

#include "expressions/expressionParser.h"

/// Reads formulas of Netica's equation language into those of the engine: the grammar is the same,
/// some functions have other names, another order of arguments, or the variable itself as their
/// first argument.
///
/// It is meant that `clip(x, low, high)` becomes `Trim(high, x, low)`.
class KVN_neticaExpressionParser : public KVN_expressionParser {
 protected:
  /// A call of a foreign name has the number of arguments that Netica asks for.
  bool MakeFunction(const std::string& name, KVN_function*& function, int& arity) override;
  /// Answers the engine's function in place of a foreign one.
  KVN_function* ValidateFunction(KVN_function* function, std::string& error) override;
};

/// The equation `id = formula` for the text of an `equation` statement, whose left side is dropped:
/// it repeats what the node's name and parents say. Empty, with `error`, for a text without "=" or
/// with a formula that can't be read.
std::string TranslateNeticaEquation(const char* text, const char* id, std::string& error);
