#pragma once

#include <string>

/// Numbers and fields of the reports.

std::string Fixed(double value, int digits);

/// The value itself for negative `digits`.
double Rounded(double value, int digits);

/// Quoted where a comma, a quote or a line break asks for it.
std::string CsvField(const std::string& text);
