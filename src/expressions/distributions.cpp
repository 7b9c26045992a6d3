#include "expressions/distributions.h"

#include <cmath>

#include "foundation/random.h"

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kMostTrials = 10000000;
constexpr int kMostRejections = 100000;

double Uniform() { return KVN_functionRandom().Uniform(); }

double Square(double x) { return x * x; }

/// Sum of twelve uniforms, which has mean 6 and variance 1.
double StandardSample(double mean, double deviation) {
  double sum = 0.0;
  for (int i = 0; i < 12; i++) sum += Uniform();
  return mean + deviation * (sum - 6.0);
}

/// The series of Lanczos with six terms (Lanczos 1964, A precision approximation of the gamma
/// function, SIAM Journal on Numerical Analysis 1). Relative error below 2e-10 for x > 0.
double LogGamma(double x) {
  constexpr double kCoefficients[] = {76.18009172947146,     -86.50532032941677,
                                      24.01409824083091,     -1.231739572450155,
                                      0.1208650973866179e-2, -0.5395239384953e-5};
  const double t = x + 5.5;
  double series = 1.000000000190015;
  double divisor = x;
  for (const double coefficient : kCoefficients) series += coefficient / ++divisor;
  return (x + 0.5) * std::log(t) - t + std::log(2.5066282746310007 * series / x);
}

double Gamma(double x) { return std::exp(LogGamma(x)); }

double BetaAt(double x, double a, double b) {
  return std::pow(x, a - 1) * std::pow(1 - x, b - 1) /
         std::exp(LogGamma(a) + LogGamma(b) - LogGamma(a + b));
}

double BetaMode(double a, double b) { return (a - 1) / (a + b - 2); }

/// Joehnk 1964, Erzeugung von betaverteilten und gammaverteilten Zufallszahlen, Metrika 8. Good for
/// any positive shape; the mean when a hundred thousand tries were in vain.
double SampleBetaByPowers(double a, double b) {
  for (int i = 0; i < kMostRejections; i++) {
    const double x = std::pow(Uniform(), 1 / a);
    const double y = std::pow(Uniform(), 1 / b);
    if (x + y <= 1 && x + y > 0) return x / (x + y);
  }
  return a / (a + b);
}

double LognormalAt(double x, double m, double s) {
  if (x <= 0.0) return 0.0;
  return std::exp(-Square(std::log(x) - m) / (2 * s * s)) / (x * s * std::sqrt(2 * kPi));
}

double WeibullAt(double x, double a, double b) {
  return (b / a) * std::pow(x / a, b - 1) * std::exp(-std::pow(x / a, b));
}

}  // namespace

double SampleBernoulli(const double* args, int) { return Uniform() < args[0] ? 1.0 : 0.0; }

void MomentsOfBernoulli(double& mean, double& variance, const double* args) {
  mean = args[0];
  variance = args[0] * (1 - args[0]);
}

double DensityOfBernoulli(double x, const double* args) {
  return x == 1.0 ? args[0] : x == 0.0 ? 1 - args[0] : 0.0;
}

/// Rejection under the height of the mode. Where the formula for the mode gives no height (one
/// shape below 1, the other above) it would never end. With both at 1 or below, the "mode" is where
/// the density is lowest, and the samples are uniform (intended).
double SampleBeta(const double* args, int) {
  const double a = args[0];
  const double b = args[1];
  if (a == 1.0 && b == 1.0) return Uniform();
  const double height = BetaAt(BetaMode(a, b), a, b);
  if (!std::isfinite(height) || height <= 0.0) return SampleBetaByPowers(a, b);
  for (int i = 0; i < kMostRejections; i++) {
    const double x = Uniform();
    const double y = Uniform() * height;
    if (BetaAt(x, a, b) > y) return x;
  }
  return SampleBetaByPowers(a, b);
}

void MomentsOfBeta(double& mean, double& variance, const double* args) {
  const double sum = args[0] + args[1];
  mean = args[0] / sum;
  variance = args[0] * args[1] / (sum * sum * (sum + 1));
}

double DensityOfBeta(double x, const double* args) {
  const double a = args[0];
  const double b = args[1];
  return BetaAt(x, a, b) / BetaAt(BetaMode(a, b), a, b);
}

double SampleBinomial(const double* args, int) {
  double successes = 0.0;
  double rounds = 0.0;
  for (double n = args[0]; n > 0.0 && rounds < kMostTrials; n--, rounds++) {
    if (Uniform() < args[1]) successes++;
  }
  return successes;
}

void MomentsOfBinomial(double& mean, double& variance, const double* args) {
  mean = args[0] * args[1];
  variance = (1 - args[1]) * args[0] * args[1];
}

double DensityOfBinomial(double, const double*) { return 0.0; }

double SampleExponential(const double* args, int) { return -std::log(Uniform()) / args[0]; }

void MomentsOfExponential(double& mean, double& variance, const double* args) {
  mean = 1 / args[0];
  variance = 1 / Square(args[0]);
}

double DensityOfExponential(double x, const double* args) {
  return x < 0.0 ? 0.0 : std::exp(-x * args[0]);
}

double SampleLognormal(const double* args, int) {
  return std::exp(StandardSample(args[0], args[1]));
}

void MomentsOfLognormal(double& mean, double& variance, const double* args) {
  const double m = args[0];
  const double s = args[1];
  mean = std::exp((m + s) * 0.5);
  variance = (std::exp(s) - 1) * std::exp(2 * m + s);
}

double DensityOfLognormal(double x, const double* args) {
  const double m = args[0];
  const double s = args[1];
  return LognormalAt(x, m, s) / LognormalAt(std::exp(m - s * s), m, s);
}

double SampleNormal(const double* args, int) { return StandardSample(args[0], args[1]); }

void MomentsOfNormal(double& mean, double& variance, const double* args) {
  mean = args[0];
  variance = Square(args[1]);
}

double DensityOfNormal(double x, const double* args) {
  return std::exp(-Square(x - args[0]) / (2 * args[1])) / std::sqrt(2 * kPi * args[1]);
}

double SampleTriangular(const double* args, int) {
  const double a = args[0];
  const double b = args[1];
  const double c = args[2];
  const double u = Uniform();
  if ((b - a) / (c - a) < u) return c - std::sqrt((c - b) * (c - a) * (1 - u));
  return a + std::sqrt(u * (c - a) * (b - a));
}

void MomentsOfTriangular(double& mean, double& variance, const double* args) {
  const double a = args[0];
  const double b = args[1];
  const double c = args[2];
  mean = (a + b + c) / 3;
  variance = (a * a + b * b + c * c - a * b - a * c - b * c) / 18;
}

double DensityOfTriangular(double x, const double* args) {
  const double a = args[0];
  const double b = args[1];
  const double c = args[2];
  const double height = 2 / (b - a);
  if (a <= x && x <= c) return 2 * (x - a) / ((c - a) * (b - a)) / height;
  return 2 * (b - x) / ((b - c) * (b - a)) / height;
}

double SampleUniform(const double* args, int) { return args[0] + (args[1] - args[0]) * Uniform(); }

void MomentsOfUniform(double& mean, double& variance, const double* args) {
  mean = (args[0] + args[1]) / 2;
  variance = Square(args[1] - args[0]) / 12;
}

double DensityOfUniform(double, const double* args) { return 1 / (args[1] - args[0]); }

double SampleWeibull(const double* args, int) {
  return args[0] * std::pow(-std::log(Uniform()), 1 / args[1]);
}

void MomentsOfWeibull(double& mean, double& variance, const double* args) {
  const double a = args[0];
  const double b = args[1];
  mean = a * Gamma(1 + 1 / b);
  variance = a * a * Gamma(1 + 2 / b) - mean * mean;
}

double DensityOfWeibull(double x, const double* args) {
  const double a = args[0];
  const double b = args[1];
  const double mode = a * std::pow((b - 1) / b, 1 / b);
  return WeibullAt(x, a, b) / WeibullAt(mode, a, b);
}
