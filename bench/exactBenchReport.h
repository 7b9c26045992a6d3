#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// What one network, case and elimination order cost. Times are processor time, the least of
/// several runs.
struct ExactResult {
  std::string network;
  std::string evidence;  // "none", "reference" or "sampled"
  int findings = 0;
  double findingsMs = 0.0;  // for setting them, one after the other, on a fresh network; one run
  bool effort = false;      // the user property KVN_CLUSTERING_EFFORT is 1
  int code = 0;             // of the update
  double loadMs = 0.0;
  double updateMs = 0.0;
  double triangulationMs = 0.0;
  double propagationMs = 0.0;
  std::int64_t cliques = 0;
  std::int64_t cells = 0;
  std::int64_t largestCells = 0;
  std::int64_t bytes = 0;
  int invalid = 0;           // nodes without a valid posterior
  double difference = -1.0;  // largest, to the reference posteriors; below 0 without them

  bool IsWrong() const;
  double CellsPerSecond() const;
  /// Propagation as a multiple of the time in which the memory would stream the clique cells once.
  /// Below 1 where large cliques are never stored: their cells stay in the first-level cache.
  double TimesStream(double bytesPerSecond) const;
  /// Network, evidence and order: the name under which results are compared.
  std::string Name() const;
};

/// The measuring machine and run.
struct ExactContext {
  std::string date;
  std::string processor;
  std::string folder;
  int runs = 0;
  double load1 = 0.0;  // load average at the start: above 1 the machine was not quiet
  double bytesPerSecond = 0.0;
};

ExactContext DescribeMachine();

void PrintHead(const ExactContext& context);
void PrintRow(const ExactContext& context, const ExactResult& result);
void PrintSummary(const std::vector<ExactResult>& results);

/// The results as JSON, in the layout that compare.py reads. False when the file can't be written.
bool WriteJson(const std::string& name, const ExactContext& context,
               const std::vector<ExactResult>& results);
