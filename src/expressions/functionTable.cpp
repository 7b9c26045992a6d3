#include "expressions/functionTable.h"

#include <algorithm>
#include <iterator>

#include "expressions/distributions.h"
#include "expressions/elementaryFunctions.h"

// clang-format off
const KVN_functionRow theFunctionTable[KVN_FUNCTION_COUNT] = {
    {"Abs", 1, EvaluateAbs, nullptr, nullptr},
    {"Acos", 1, EvaluateAcos, nullptr, nullptr},
    {"And", -2, EvaluateAnd, nullptr, nullptr},
    {"Asin", 1, EvaluateAsin, nullptr, nullptr},
    {"Atan", 1, EvaluateAtan, nullptr, nullptr},
    {"Atan2", 2, EvaluateAtan2, nullptr, nullptr},
    {"Bernoulli", 1, SampleBernoulli, DensityOfBernoulli, MomentsOfBernoulli},
    {"Beta", 2, SampleBeta, DensityOfBeta, MomentsOfBeta},
    {"Binomial", 2, SampleBinomial, DensityOfBinomial, MomentsOfBinomial},
    {"Combin", 2, EvaluateCombin, nullptr, nullptr},
    {"Cos", 1, EvaluateCos, nullptr, nullptr},
    {"Cosh", 1, EvaluateCosh, nullptr, nullptr},
    {"Exp", 1, EvaluateExp, nullptr, nullptr},
    {"Exponential", 1, SampleExponential, DensityOfExponential, MomentsOfExponential},
    {"Fact", 1, EvaluateFact, nullptr, nullptr},
    {"FactDouble", 1, EvaluateFactDouble, nullptr, nullptr},
    {"GCD", 2, EvaluateGcd, nullptr, nullptr},
    {"If", 3, EvaluateIf, nullptr, nullptr},
    {"LCM", 2, EvaluateLcm, nullptr, nullptr},
    {"Ln", 1, EvaluateLn, nullptr, nullptr},
    {"Log", 2, EvaluateLog, nullptr, nullptr},
    {"Log10", 1, EvaluateLog10, nullptr, nullptr},
    {"Lognormal", 2, SampleLognormal, DensityOfLognormal, MomentsOfLognormal},
    {"Max", -2, EvaluateMax, nullptr, nullptr},
    {"Min", -2, EvaluateMin, nullptr, nullptr},
    {"Multinomial", -2, EvaluateMultinomial, nullptr, nullptr},
    {"Normal", 2, SampleNormal, DensityOfNormal, MomentsOfNormal},
    {"Or", -2, EvaluateOr, nullptr, nullptr},
    {"Pi", 0, EvaluatePi, nullptr, nullptr},
    {"Pow10", 1, EvaluatePow10, nullptr, nullptr},
    {"Sign", 1, EvaluateSign, nullptr, nullptr},
    {"Sin", 1, EvaluateSin, nullptr, nullptr},
    {"Sinh", 1, EvaluateSinh, nullptr, nullptr},
    {"Sqr", 1, EvaluateSqr, nullptr, nullptr},
    {"Sqrt", 1, EvaluateSqrt, nullptr, nullptr},
    {"SqrtPi", 1, EvaluateSqrtPi, nullptr, nullptr},
    {"Sum", -2, EvaluateSum, nullptr, nullptr},
    {"SumSq", -2, EvaluateSumSq, nullptr, nullptr},
    {"Switch", -3, EvaluateSwitch, nullptr, nullptr},
    {"Tan", 1, EvaluateTan, nullptr, nullptr},
    {"Tanh", 1, EvaluateTanh, nullptr, nullptr},
    {"Triangular", 3, SampleTriangular, DensityOfTriangular, MomentsOfTriangular},
    {"Trim", 3, EvaluateTrim, nullptr, nullptr},
    {"Uniform", 2, SampleUniform, DensityOfUniform, MomentsOfUniform},
    {"Weibull", 2, SampleWeibull, DensityOfWeibull, MomentsOfWeibull},
    {"Xor", -2, EvaluateXor, nullptr, nullptr},
};
// clang-format on

namespace {

// Of ASCII letters only: the names of the table have no others, and the locale must not matter.
char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// Below, at or above 0 as `a` comes before, is or comes after `b`.
int CompareNames(const char* a, const char* b) {
  while (*a != '\0' && Lower(*a) == Lower(*b)) a++, b++;
  return static_cast<unsigned char>(Lower(*a)) - static_cast<unsigned char>(Lower(*b));
}

}  // namespace

const KVN_functionRow* FindFunction(const std::string& name) {
  const KVN_functionRow* row =
      std::lower_bound(std::begin(theFunctionTable), std::end(theFunctionTable), name.c_str(),
                       [](const KVN_functionRow& r, const char* wanted) {
                         return CompareNames(r.name, wanted) < 0;
                       });
  if (row == std::end(theFunctionTable)) return nullptr;
  return CompareNames(row->name, name.c_str()) == 0 ? row : nullptr;
}
