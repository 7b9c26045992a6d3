#pragma once

/// Calls of the allocation functions so far in this process. A program that is built with
/// allocationCount.cpp has them replaced.
long long CountAllocations();
