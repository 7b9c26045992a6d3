#include "expressions/elementaryFunctions.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>

namespace {

constexpr double kPi = 3.141592653589793;

/// Toward zero, into the range of the type; 0 for a NaN.
std::int64_t Truncated(double x) {
  constexpr double kLimit = 9223372036854775808.0;  // 2^63
  if (std::isnan(x)) return 0;
  if (x >= kLimit) return std::numeric_limits<std::int64_t>::max();
  if (x < -kLimit) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(x);
}

std::int64_t TruncatedSize(double x) { return Truncated(std::fabs(x)); }

/// The product from `first` to n in steps; given up once it is infinite, at n = 301 at the latest.
double Product(std::int64_t first, std::int64_t n, int step) {
  double product = 1.0;
  for (std::int64_t i = first; i <= n && std::isfinite(product); i += step) {
    product *= static_cast<double>(i);
  }
  return product;
}

double Factorial(double x) {
  const std::int64_t n = Truncated(x);
  return std::isnan(x) || n < 0 ? 0.0 : Product(2, n, 1);
}

std::int64_t Divisor(const double* args) {
  return std::gcd(TruncatedSize(args[0]), TruncatedSize(args[1]));
}

}  // namespace

double EvaluateAbs(const double* args, int) { return std::fabs(args[0]); }
double EvaluateAcos(const double* args, int) { return std::acos(args[0]); }

double EvaluateAnd(const double* args, int count) {
  return std::find(args, args + count, 0.0) == args + count ? 1.0 : 0.0;
}

double EvaluateAsin(const double* args, int) { return std::asin(args[0]); }
double EvaluateAtan(const double* args, int) { return std::atan(args[0]); }
double EvaluateAtan2(const double* args, int) { return std::atan2(args[0], args[1]); }

double EvaluateCombin(const double* args, int) {
  const auto n = static_cast<double>(TruncatedSize(args[0]));
  const auto k = static_cast<double>(TruncatedSize(args[1]));
  return Factorial(n) / (Factorial(n - k) * Factorial(k));
}

double EvaluateCos(const double* args, int) { return std::cos(args[0]); }
double EvaluateCosh(const double* args, int) { return std::cosh(args[0]); }
double EvaluateExp(const double* args, int) { return std::exp(args[0]); }
double EvaluateFact(const double* args, int) { return Factorial(args[0]); }

double EvaluateFactDouble(const double* args, int) {
  const std::int64_t n = Truncated(args[0]);
  if (std::isnan(args[0]) || n < 0) return 0.0;
  return Product(n % 2 == 1 ? 3 : 2, n, 2);
}

double EvaluateGcd(const double* args, int) { return static_cast<double>(Divisor(args)); }
double EvaluateIf(const double* args, int) { return args[0] == 0.0 ? args[2] : args[1]; }

/// The product is meant to wrap at 32 bits, so that files computed with it give the same numbers.
double EvaluateLcm(const double* args, int) {
  const std::int64_t divisor = Divisor(args);
  if (divisor == 0) return 0.0;
  const std::uint32_t product = static_cast<std::uint32_t>(TruncatedSize(args[0])) *
                                static_cast<std::uint32_t>(TruncatedSize(args[1]));
  return static_cast<double>(static_cast<std::int32_t>(product) / divisor);
}

double EvaluateLn(const double* args, int) { return std::log(args[0]); }
double EvaluateLog(const double* args, int) { return std::log(args[0]) / std::log(args[1]); }
double EvaluateLog10(const double* args, int) { return std::log10(args[0]); }
double EvaluateMax(const double* args, int count) { return *std::max_element(args, args + count); }
double EvaluateMin(const double* args, int count) { return *std::min_element(args, args + count); }

double EvaluateMultinomial(const double* args, int count) {
  double sum = 0.0;
  double product = 1.0;
  for (int i = 0; i < count; i++) {
    sum += std::trunc(args[i]);
    product *= Factorial(args[i]);
  }
  return Factorial(sum) / product;
}

double EvaluateOr(const double* args, int count) {
  return std::any_of(args, args + count, [](double x) { return x != 0.0; }) ? 1.0 : 0.0;
}

double EvaluatePi(const double*, int) { return kPi; }
double EvaluatePow10(const double* args, int) { return std::pow(10.0, args[0]); }
double EvaluateSign(const double* args, int) {
  return args[0] > 0.0 ? 1.0 : args[0] < 0.0 ? -1.0 : 0.0;
}
double EvaluateSin(const double* args, int) { return std::sin(args[0]); }
double EvaluateSinh(const double* args, int) { return std::sinh(args[0]); }
double EvaluateSqr(const double* args, int) { return args[0] * args[0]; }
double EvaluateSqrt(const double* args, int) { return std::sqrt(args[0]); }
double EvaluateSqrtPi(const double* args, int) { return std::sqrt(args[0] * kPi); }

double EvaluateSum(const double* args, int count) {
  double sum = 0.0;
  for (int i = 0; i < count; i++) sum += args[i];
  return sum;
}

double EvaluateSumSq(const double* args, int count) {
  double sum = 0.0;
  for (int i = 0; i < count; i++) sum += args[i] * args[i];
  return sum;
}

double EvaluateSwitch(const double* args, int count) {
  const std::int64_t last = count - 1;
  return args[std::clamp<std::int64_t>(Truncated(args[0]), 1, last)];
}

double EvaluateTan(const double* args, int) { return std::tan(args[0]); }
double EvaluateTanh(const double* args, int) { return std::tanh(args[0]); }

double EvaluateTrim(const double* args, int) {
  return args[0] < args[1] ? args[1] : args[0] > args[2] ? args[2] : args[0];
}

double EvaluateXor(const double* args, int count) {
  const auto nonZero = std::count_if(args, args + count, [](double x) { return x != 0.0; });
  return nonZero % 2 == 0 ? 0.0 : 1.0;
}
