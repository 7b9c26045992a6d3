#pragma once

class KVN_Dmatrix;

/// Utilities come on any scale; evaluation wants them between 0 and 1. The same rules hold for the
/// numbers of a utility node and for its expected utilities.
struct UtilityRange {
  double low, high;
};

/// Smallest and largest cell, undefined ones included (as numbers they are about 4e-308, which acts
/// as 0); 0.0 twice for a table without cells.
UtilityRange RangeOfCells(const KVN_Dmatrix& table);

/// Maps every cell linearly so that `from` becomes `to`, and tells whether the table was written.
///   - Equal bounds in `from` stand for the range of the cells; any other range is widened to hold
///     all cells.
///   - A range that is a single point, on either side, makes every cell `to.high`, undefined ones
///     too.
///   - Equal ranges change nothing: false.
///   - Undefined cells stay undefined.
bool RescaleCells(KVN_Dmatrix& table, UtilityRange from, UtilityRange to);
