#pragma once

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

/// Bytes per second at which one thread sums an array of doubles that fits into no cache: the best
/// of several runs.
double MemoryBandwidth();
