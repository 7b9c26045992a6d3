#pragma once

/// The functions of the table that are no distributions, in the order of the table. Each takes the
/// arguments and their count, as KVN_evaluateFunction. None fails: what has no value gives an
/// infinity or a NaN. docs/expressions.md says what each computes.
double EvaluateAbs(const double* args, int count);
double EvaluateAcos(const double* args, int count);
double EvaluateAnd(const double* args, int count);
double EvaluateAsin(const double* args, int count);
double EvaluateAtan(const double* args, int count);
double EvaluateAtan2(const double* args, int count);
double EvaluateCombin(const double* args, int count);
double EvaluateCos(const double* args, int count);
double EvaluateCosh(const double* args, int count);
double EvaluateExp(const double* args, int count);
double EvaluateFact(const double* args, int count);
double EvaluateFactDouble(const double* args, int count);
double EvaluateGcd(const double* args, int count);
double EvaluateIf(const double* args, int count);
double EvaluateLcm(const double* args, int count);
double EvaluateLn(const double* args, int count);
double EvaluateLog(const double* args, int count);
double EvaluateLog10(const double* args, int count);
double EvaluateMax(const double* args, int count);
double EvaluateMin(const double* args, int count);
double EvaluateMultinomial(const double* args, int count);
double EvaluateOr(const double* args, int count);
double EvaluatePi(const double* args, int count);
double EvaluatePow10(const double* args, int count);
double EvaluateSign(const double* args, int count);
double EvaluateSin(const double* args, int count);
double EvaluateSinh(const double* args, int count);
double EvaluateSqr(const double* args, int count);
double EvaluateSqrt(const double* args, int count);
double EvaluateSqrtPi(const double* args, int count);
double EvaluateSum(const double* args, int count);
double EvaluateSumSq(const double* args, int count);
double EvaluateSwitch(const double* args, int count);
double EvaluateTan(const double* args, int count);
double EvaluateTanh(const double* args, int count);
double EvaluateTrim(const double* args, int count);
double EvaluateXor(const double* args, int count);
