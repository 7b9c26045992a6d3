#include "bench/exactBenchReport.h"

#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <nlohmann/json.hpp>

#include "bench/measure.h"

namespace {

// The references agree with each other within 2e-13; sums over millions of cells add rounding.
constexpr double kTolerance = 1e-9;

std::string ProcessorName() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
  }
  return "unknown";
}

std::string Today() {
  const time_t now = time(nullptr);
  tm parts = {};
  char text[32] = "";
  if (gmtime_r(&now, &parts) != nullptr) strftime(text, sizeof text, "%Y-%m-%d", &parts);
  return text;
}

double GeometricMean(const std::vector<double>& values) {
  double sum = 0.0;
  for (const double value : values) sum += std::log(value);
  return values.empty() ? 0.0 : std::exp(sum / static_cast<double>(values.size()));
}

std::string DifferenceText(const ExactResult& result) {
  char text[32] = "-";
  if (result.difference >= 0.0) std::snprintf(text, sizeof text, "%.1e", result.difference);
  return text;
}

}  // namespace

bool ExactResult::IsWrong() const {
  return code != 0 || invalid > 0 || difference > kTolerance || std::isnan(difference);
}

double ExactResult::CellsPerSecond() const {
  return propagationMs > 0.0 ? static_cast<double>(cells) / propagationMs * 1e3 : 0.0;
}

double ExactResult::TimesStream(double bytesPerSecond) const {
  const double streamMs = static_cast<double>(cells) * sizeof(double) / bytesPerSecond * 1e3;
  return streamMs > 0.0 ? propagationMs / streamMs : 0.0;
}

std::string ExactResult::Name() const {
  return network + "/" + (evidence == "none" ? "prior" : "evidence") + "/" +
         (effort ? "effort" : "documented");
}

ExactContext DescribeMachine() {
  ExactContext context;
  context.date = Today();
  context.processor = ProcessorName();
  (void)getloadavg(&context.load1, 1);
  context.bytesPerSecond = MemoryBandwidth();
  return context;
}

void PrintHead(const ExactContext& context) {
  std::printf("%s, %s, load average %.1f, memory streams %.1f GB/s, best of up to %d runs\n",
              context.date.c_str(), context.processor.c_str(), context.load1,
              context.bytesPerSecond / 1e9, context.runs);
  std::printf("%-12s %-9s %-10s %8s %8s %9s %9s %9s %7s %10s %11s %8s %8s %7s %8s\n", "network",
              "evidence", "order", "load", "findings", "triang.", "propag.", "update", "cliques",
              "largest", "cells", "table", "Mcell/s", "x mem.", "differ.");
  std::printf("%-12s %-9s %-10s %8s %8s %9s %9s %9s %7s %10s %11s %8s %8s %7s %8s\n", "", "", "",
              "ms", "ms", "ms", "ms", "ms", "", "cells", "", "MB", "", "", "");
}

void PrintRow(const ExactContext& context, const ExactResult& result) {
  const std::string found =
      result.evidence == "none"
          ? "none"
          : (result.evidence == "sampled" ? "drawn " : "given ") + std::to_string(result.findings);
  std::printf(
      "%-12s %-9s %-10s %8.1f %8.2f %9.3f %9.3f %9.3f %7lld %10lld %11lld %8.2f %8.0f %7.2f %8s",
      result.network.c_str(), found.c_str(), result.effort ? "effort" : "documented", result.loadMs,
      result.findingsMs, result.triangulationMs, result.propagationMs, result.updateMs,
      static_cast<long long>(result.cliques), static_cast<long long>(result.largestCells),
      static_cast<long long>(result.cells), static_cast<double>(result.bytes) / 1e6,
      result.CellsPerSecond() / 1e6, result.TimesStream(context.bytesPerSecond),
      DifferenceText(result).c_str());
  if (result.code != 0) std::printf("  RESULT %d", result.code);
  if (result.invalid > 0) std::printf("  %d NOT VALID", result.invalid);
  if (result.difference > kTolerance) std::printf("  WRONG");
  std::printf("\n");
  std::fflush(stdout);
}

void PrintSummary(const std::vector<ExactResult>& results) {
  for (const bool effort : {false, true}) {
    std::vector<double> updates;
    double largest = -1.0;
    for (const ExactResult& result : results) {
      if (result.effort != effort || result.updateMs <= 0.0) continue;
      updates.push_back(result.updateMs);
      largest = std::max(largest, result.difference);
    }
    std::printf("%-10s geometric mean of %zu updates %.3f ms, largest difference %.1e\n",
                effort ? "effort" : "documented", updates.size(), GeometricMean(updates), largest);
  }
}

bool WriteJson(const std::string& name, const ExactContext& context,
               const std::vector<ExactResult>& results) {
  nlohmann::ordered_json root;
  root["context"] = {
      {"date", context.date},     {"processor", context.processor},
      {"folder", context.folder}, {"runs", context.runs},
      {"load1", context.load1},   {"bytesPerSecond", context.bytesPerSecond},
  };
  root["benchmarks"] = nlohmann::ordered_json::array();
  for (const ExactResult& result : results) {
    root["benchmarks"].push_back({
        {"name", result.Name()},
        {"evidence", result.evidence},
        {"findings", result.findings},
        {"code", result.code},
        {"findings_ms", result.findingsMs},
        {"load_ms", result.loadMs},
        {"update_ms", result.updateMs},
        {"triangulation_ms", result.triangulationMs},
        {"propagation_ms", result.propagationMs},
        {"cliques", result.cliques},
        {"cells", result.cells},
        {"largest_cells", result.largestCells},
        {"table_bytes", result.bytes},
        {"cells_per_second", result.CellsPerSecond()},
        {"times_stream", result.TimesStream(context.bytesPerSecond)},
        {"difference", result.difference},
        {"invalid", result.invalid},
    });
  }
  std::ofstream file(name);
  file << root.dump(1) << "\n";
  return file.good();
}
