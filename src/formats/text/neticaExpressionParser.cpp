#include "formats/text/neticaExpressionParser.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>
#include <utility>

#include "expressions/function.h"
#include "expressions/functionTable.h"
#include "expressions/operators.h"

namespace {

constexpr int kAsTheyStand = 0;
constexpr int kWithoutFirst = 1;  // the first argument names the variable itself
constexpr int kClipOrder = 2;

struct ForeignFunction {
  const char* name;
  int arity;  // as in KVN_functionRow
  const char* engineName;
  int order;
};

/// Sorted by name.
constexpr ForeignFunction kForeign[] = {
    {"BernoulliDist", 2, "Bernoulli", kWithoutFirst},
    {"BetaDist", 3, "Beta", kWithoutFirst},
    {"BinomialDist", 3, "Binomial", kWithoutFirst},
    {"ExponentialDist", 2, "Exponential", kWithoutFirst},
    {"LognormalDist", 3, "Lognormal", kWithoutFirst},
    {"NormalDist", 3, "Normal", kWithoutFirst},
    {"TriangularEnd3Dist", 4, "Triangular", kWithoutFirst},
    {"UniformDist", 3, "Uniform", kWithoutFirst},
    {"WeibullDist", 3, "Weibull", kWithoutFirst},
    {"binomial", 2, "Combin", kAsTheyStand},
    {"clip", 3, "Trim", kClipOrder},
    {"plus", -1, "Sum", kAsTheyStand},
};

const ForeignFunction* FindForeign(const std::string& name) {
  const auto* const row = std::lower_bound(
      std::begin(kForeign), std::end(kForeign), name,
      [](const ForeignFunction& f, const std::string& wanted) { return f.name < wanted; });
  return row != std::end(kForeign) && name == row->name ? row : nullptr;
}

/// Place of the foreign argument that becomes argument `i`.
int SourceOf(int order, int i) {
  constexpr int kClip[] = {2, 0, 1};
  if (order == kClipOrder) return kClip[i];
  return order == kWithoutFirst ? i + 1 : i;
}

}  // namespace

bool KVN_neticaExpressionParser::MakeFunction(const std::string& name, KVN_function*& function,
                                              int& arity) {
  const ForeignFunction* const row = FindForeign(name);
  if (row == nullptr) return KVN_expressionParser::MakeFunction(name, function, arity);
  KVN_function* const made = new (std::nothrow) KVN_unknownFunction(name);
  if (made == nullptr) return false;
  function = made;
  arity = row->arity;
  return true;
}

KVN_function* KVN_neticaExpressionParser::ValidateFunction(KVN_function* function,
                                                           std::string& error) {
  const ForeignFunction* const row = FindForeign(function->GetName());
  if (row == nullptr) return KVN_expressionParser::ValidateFunction(function, error);
  KVN_function* translated = nullptr;
  int arity = 0;
  if (!KVN_expressionParser::MakeFunction(row->engineName, translated, arity) ||
      translated == nullptr) {
    error = "Unexpected error in TranslateFunction";
    return nullptr;
  }
  const int count = function->GetArgumentCount() - (row->order == kWithoutFirst ? 1 : 0);
  for (int i = 0; i < count; ++i) {
    translated->args[i] = std::exchange(function->args[SourceOf(row->order, i)], nullptr);
  }
  // A sum takes two arguments at least.
  if (arity < 0 && count == 1) translated->args[1] = new (std::nothrow) KVN_constant(0.0);
  delete function;  // with the first argument of a distribution
  return translated;
}

std::string TranslateNeticaEquation(const char* text, const char* id, std::string& error) {
  const char* const sign = std::strchr(text, '=');
  if (sign == nullptr) {
    error = "Can't find the '=' sign in equation";
    return "";
  }
  KVN_neticaExpressionParser parser;
  std::unique_ptr<KVN_expression> formula(parser.Parse(sign + 1, &error, nullptr));
  if (formula == nullptr) return "";
  // As a comparison, so that what binds no tighter than its "=" gets parentheses.
  auto variable = std::make_unique<KVN_variable>(id);
  const KVN_operatorEQ equation(variable.release(), formula.release());
  std::string printed;
  equation.Print(printed);
  return printed;
}
