#pragma once

#include <iosfwd>
#include <string>

/// Pieces that the reports of a query have in common.

/// With that many decimals.
std::string Fixed(double value, int digits);
/// Rounded to that many decimals; as it is for a negative number.
double Rounded(double value, int digits);
/// Quoted where it has to be.
std::string CsvField(const std::string& text);
/// A bar for a probability; empty for one that is outside [0, 1] or rounds to nothing.
std::string BarOf(double probability);
/// The start of the line above a node's numbers.
void PrintNodeName(const std::string& id, bool colour, std::ostream& stream);
