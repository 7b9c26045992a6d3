#pragma once

/// Measured numbers with the goal that each is held against. They are printed as a table after the
/// benchmarks have run, since a counter of the benchmark library has no place for a goal.

enum class Better { kLower, kHigher };

/// Notes a number. A later note of the same name replaces the earlier one where it is better: the
/// best of several runs is the least disturbed one. A goal of 0 stands for none.
void NoteResult(const char* name, double value, const char* unit, double goal, Better better);

/// The number noted under a name; 0 when there is none yet.
double NotedResult(const char* name);

/// Highest resident memory of this process since ResetPeakMemory, in MB (10^6 bytes).
void ResetPeakMemory();
double PeakMemory();
/// Resident memory now.
double ResidentMemory();

/// Seconds of processor time that this process has used. All that is measured here runs in one
/// thread and finds its files in the page cache, so on a quiet machine this is the time on the
/// clock; on a busy one it is what remains comparable.
double Now();
/// Seconds on the clock on the wall.
double WallNow();
