#include "bench/measure.h"

#include <malloc.h>
#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

constexpr std::size_t kStreamCells = std::size_t{1} << 26;  // 512 MB
constexpr int kStreamRuns = 5;

/// A line of /proc/self/status, in MB.
double StatusLine(const char* key) {
  std::FILE* file = std::fopen("/proc/self/status", "r");
  if (file == nullptr) return 0.0;
  char line[256];
  long kilobytes = 0;
  while (std::fgets(line, sizeof line, file) != nullptr) {
    if (std::strncmp(line, key, std::strlen(key)) != 0) continue;
    (void)std::sscanf(line + std::strlen(key), ": %ld", &kilobytes);
    break;
  }
  std::fclose(file);
  return static_cast<double>(kilobytes) * 1024.0 / 1e6;
}

}  // namespace

void ResetPeakMemory() {
  malloc_trim(0);  // what an earlier run has freed must not count
  if (std::FILE* file = std::fopen("/proc/self/clear_refs", "w"); file != nullptr) {
    std::fputs("5\n", file);
    std::fclose(file);
  }
}

double PeakMemory() { return StatusLine("VmHWM"); }

double ResidentMemory() { return StatusLine("VmRSS"); }

double Now() {
  timespec time = {};
  (void)clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double WallNow() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double MemoryBandwidth() {
  const std::vector<double> cells(kStreamCells, 1.0);
  double best = 0.0;
  for (int run = 0; run < kStreamRuns; run++) {
    const double start = Now();
    // Sixteen sums, so that the additions do not wait for each other.
    double sums[16] = {};
    for (std::size_t i = 0; i < kStreamCells; i += 16) {
      for (std::size_t j = 0; j < 16; j++) sums[j] += cells[i + j];
    }
    const double seconds = Now() - start;
    double total = 0.0;
    for (const double sum : sums) total += sum;
    // Always so: it keeps the loop from being dropped.
    if (total == static_cast<double>(kStreamCells)) {
      best = std::max(best, static_cast<double>(kStreamCells * sizeof(double)) / seconds);
    }
  }
  return best;
}
