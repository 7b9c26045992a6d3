#pragma once

/// The distributions of the function table: a sample, the moments and the density of each. Samples
/// come from KVN_functionRandom(); U is one of its uniforms, a multiple of 1/32767 from 0 to 1,
/// both ends included. The parameters are not checked: what has no value gives an infinity or a
/// NaN.
///
/// A density need not be normalised: Beta, Lognormal, Triangular and Weibull give it relative to
/// its largest value.

double SampleBernoulli(const double* args, int count);
void MomentsOfBernoulli(double& mean, double& variance, const double* args);
double DensityOfBernoulli(double x, const double* args);

double SampleBeta(const double* args, int count);
void MomentsOfBeta(double& mean, double& variance, const double* args);
double DensityOfBeta(double x, const double* args);

/// At most 10,000,000 trials. A number of trials that isn't whole takes one more.
double SampleBinomial(const double* args, int count);
void MomentsOfBinomial(double& mean, double& variance, const double* args);
/// Always 0.0, and this is meant: no density is offered.
double DensityOfBinomial(double x, const double* args);

/// Infinite when U is 0.
double SampleExponential(const double* args, int count);
void MomentsOfExponential(double& mean, double& variance, const double* args);
double DensityOfExponential(double x, const double* args);

double SampleLognormal(const double* args, int count);
/// The mean is exp((m + s) / 2), and this is meant, although the samples have another one.
void MomentsOfLognormal(double& mean, double& variance, const double* args);
double DensityOfLognormal(double x, const double* args);

double SampleNormal(const double* args, int count);
void MomentsOfNormal(double& mean, double& variance, const double* args);
/// Takes the second argument for the variance, where the others take it for the standard deviation.
/// This is meant.
double DensityOfNormal(double x, const double* args);

/// Arguments: minimum, mode, maximum.
double SampleTriangular(const double* args, int count);
void MomentsOfTriangular(double& mean, double& variance, const double* args);
/// Reads the arguments as minimum, maximum, mode. This is meant.
double DensityOfTriangular(double x, const double* args);

double SampleUniform(const double* args, int count);
void MomentsOfUniform(double& mean, double& variance, const double* args);
/// The same for any x, outside the bounds too. This is meant.
double DensityOfUniform(double x, const double* args);

/// Infinite when U is 0.
double SampleWeibull(const double* args, int count);
void MomentsOfWeibull(double& mean, double& variance, const double* args);
double DensityOfWeibull(double x, const double* args);
