#pragma once

#include <vector>

class KVN_mau;
class KVN_nodeDefinition;

/// The numbers that a definition is written with: those of the table that it stands for, or its
/// own.
std::vector<double> NumbersOf(KVN_nodeDefinition& definition, bool asTable);

/// How a deterministic node's rows can be written as names.
enum class Rows {
  kExact,    // each has its single 1.0
  kInexact,  // one holds something besides its first 1.0
  kOpen,     // one has no 1.0
};

Rows RowsOf(KVN_nodeDefinition& definition);

/// Whether the weights that a multi-attribute utility with formulas keeps besides are those of a
/// new one.
bool HasUsualWeights(KVN_mau& utility);

/// Whether each row gives its first state, as those of a new deterministic definition do.
bool HasFirstStates(KVN_nodeDefinition& definition);
