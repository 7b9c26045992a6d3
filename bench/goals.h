#pragma once

/// Measured numbers with the goal that each is held against. They are printed as a table after the
/// benchmarks have run, since a counter of the benchmark library has no place for a goal.

enum class Better { kLower, kHigher };

/// Notes a number. A later note of the same name replaces the earlier one where it is better: the
/// best of several runs is the least disturbed one. A goal of 0 stands for none.
void NoteResult(const char* name, double value, const char* unit, double goal, Better better);

/// The number noted under a name; 0 when there is none yet.
double NotedResult(const char* name);
