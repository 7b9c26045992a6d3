#pragma once

/// Number of discrete updates that this program has run.
extern int theUpdateCount;

/// Set to make the next updates answer this instead of computing; 0 computes.
extern int theForcedResult;

/// The update of this number, counted from 1, leaves every posterior at zeros; 0 for none.
extern int theBlindUpdate;
