#pragma once

#include <string>

/// Value of a call. `args` holds `count` numbers; it is not read when count is 0.
using KVN_evaluateFunction = double (*)(const double* args, int count);
/// Density, or a number in proportion to it, at x.
using KVN_densityFunction = double (*)(double x, const double* args);
using KVN_momentsFunction = void (*)(double& mean, double& variance, const double* args);

/// One function of the language.
struct KVN_functionRow {
  const char* name;  // as the language spells it
  int arity;         // n >= 0: exactly n arguments; -m: m to KVN_MAX_ARGUMENTS
  KVN_evaluateFunction evaluate;
  KVN_densityFunction density;  // null unless the row is a distribution, whose evaluate samples
  KVN_momentsFunction moments;  // null where density is
};

/// All functions. The distributions draw from the one generator KVN_functionRandom() of
/// foundation/random.h, which a caller may seed.
///
/// The rows are sorted by name without regard to case. docs/expressions.md explains each.
constexpr int KVN_FUNCTION_COUNT = 46;
extern const KVN_functionRow theFunctionTable[KVN_FUNCTION_COUNT];

/// The row of that name, upper and lower case alike; null when there is none.
const KVN_functionRow* FindFunction(const std::string& name);

/// Stands behind every KVN_unknownFunction: no name, no evaluation, any number of arguments.
extern const KVN_functionRow theUnknownFunctionRow;
