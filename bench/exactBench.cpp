// All posteriors by join trees, with and without evidence, on every network file of a folder.
//
// usage: exactBench [--only NAME]... [--runs N] [--json FILE] [FOLDER]
//
// Evidence and reference posteriors come from the folder `posteriors` beside FOLDER: files
// <network>.noevid.json and <network>.evid.json with {"evidence": {node: state}, "posteriors":
// {node: {state: probability}}}, the states in the order of the network file. A network without
// such a file gets drawn evidence and no comparison.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "bench/exactBenchReport.h"
#include "bench/measure.h"
#include "definitions/nodeDefinition.h"
#include "foundation/dmatrix.h"
#include "foundation/errorLog.h"
#include "inference/exact/joinTree.h"
#include "network/fileSpeaker.h"
#include "network/network.h"
#include "network/updateAlgorithm.h"
#include "values/nodeValue.h"

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;  // the order of the states counts

constexpr std::uint64_t kSeed = 15;
constexpr double kEvidenceShare = 0.15;
constexpr double kLongRun = 3.0;    // seconds of runs after which no more are begun
constexpr double kShortRun = 0.02;  // seconds; shorter runs are repeated four times as often

struct Settings {
  fs::path folder = KVN_NETWORKS;
  std::string json = "exactBench.json";
  std::vector<std::string> only;
  int runs = 5;
};

struct Finding {
  int handle;
  int outcome;
};

/// A network with the findings of one case and what should come out.
struct Case {
  KVN_network network;
  std::string evidence = "none";
  std::vector<Finding> findings;
  double findingsMs = 0.0;                    // for setting all of them
  std::vector<std::vector<double>> expected;  // by handle, empty where unknown
};

KVN_Dmatrix* TableOf(KVN_network& network, int handle) {
  KVN_Dmatrix* table = nullptr;
  const int result = network.DefinitionOf(handle)->GetDefinition(table);
  return result == 0 ? table : nullptr;
}

/// Some files have rows that miss a sum of 1 by some 1e-7, and the references were computed on
/// normalised rows.
void NormalizeTables(KVN_network& network) {
  for (int node = network.GetFirstNode(); node >= 0; node = network.GetNextNode(node)) {
    if (KVN_Dmatrix* table = TableOf(network, node)) table->Normalize();
  }
}

/// One outcome for every node, drawn parents first. Empty when a node has no table.
std::vector<int> DrawOutcomes(KVN_network& network, std::mt19937_64& engine) {
  std::vector<int> outcomes(static_cast<std::size_t>(network.GetSize()), 0);
  for (int node : network.GetOrderOfNodes()) {
    const KVN_Dmatrix* table = TableOf(network, node);
    if (table == nullptr) return {};
    const int count = network.DefinitionOf(node)->GetNumberOfOutcomes();
    int row = 0;
    for (int parent : network.GetParents(node)) {
      row = row * network.DefinitionOf(parent)->GetNumberOfOutcomes() + outcomes[parent];
    }
    double left = static_cast<double>(engine() >> 11) * 0x1p-53;
    int& outcome = outcomes[node];
    int possible = 0;  // rounding must not end at an outcome of probability 0
    for (outcome = 0; outcome < count; outcome++) {
      const double probability = (*table)[row * count + outcome];
      if (probability > 0.0) possible = outcome;
      if ((left -= probability) < 0.0) break;
    }
    outcome = possible;
  }
  return outcomes;
}

/// Findings on a share of the nodes, leaves before others, out of one draw of the whole network, so
/// that they are possible together.
std::vector<Finding> DrawFindings(KVN_network& network) {
  std::mt19937_64 engine(kSeed);
  const std::vector<int> outcomes = DrawOutcomes(network, engine);
  std::vector<int> nodes;
  for (int node = network.GetFirstNode(); node >= 0; node = network.GetNextNode(node)) {
    nodes.push_back(node);
  }
  for (std::size_t i = nodes.size(); i > 1; i--) std::swap(nodes[i - 1], nodes[engine() % i]);
  std::stable_partition(nodes.begin(), nodes.end(),
                        [&](int node) { return network.GetNumberOfChildren(node) == 0; });
  nodes.resize(static_cast<std::size_t>(kEvidenceShare * static_cast<double>(nodes.size())));
  std::vector<Finding> findings;
  for (int node : nodes) {
    if (!outcomes.empty()) findings.push_back({node, outcomes[node]});
  }
  return findings;
}

bool ReadReference(const fs::path& name, Case& made) {
  std::ifstream file(name);
  const Json root = Json::parse(file, nullptr, /*allow_exceptions=*/false);
  if (root.is_discarded()) return false;
  made.expected.resize(static_cast<std::size_t>(made.network.GetSize()));
  for (const auto& [id, states] : root["posteriors"].items()) {
    const int handle = made.network.FindNode(id.c_str());
    if (handle < 0) return false;
    int outcome = 0;
    for (const auto& [state, probability] : states.items()) {
      made.expected[handle].push_back(probability.get<double>());
      if (root["evidence"].value(id, "") == state) made.findings.push_back({handle, outcome});
      outcome++;
    }
  }
  return made.findings.size() == root["evidence"].size();
}

bool PrepareCase(const fs::path& file, bool withEvidence, Case& made) {
  if (made.network.ReadFile(file.c_str()) != 0 || made.network.GetNumberOfNodes() == 0) {
    return false;
  }
  made.network.SetDefaultBNAlgorithm(KVN_ALG_CLUSTERING);
  NormalizeTables(made.network);
  const fs::path reference =
      file.parent_path().parent_path() / "posteriors" /
      (file.stem().string() + (withEvidence ? ".evid.json" : ".noevid.json"));
  if (fs::exists(reference)) {
    if (withEvidence) made.evidence = "reference";
    if (!ReadReference(reference, made)) return false;
  } else if (withEvidence) {
    made.evidence = "sampled";
    made.findings = DrawFindings(made.network);
  }
  const double start = Now();
  for (const Finding& finding : made.findings) {
    if (made.network.ValueOf(finding.handle)->SetEvidence(finding.outcome) != 0) return false;
  }
  made.findingsMs = (Now() - start) * 1e3;
  return true;
}

/// Runs updates until enough were made, and keeps the least of each time.
void MeasureUpdates(KVN_network& network, int runs, ExactResult& result) {
  double spent = 0.0;
  int wanted = runs;
  for (int run = 0; run < wanted && spent < kLongRun; run++) {
    (void)network.InvalidateAllBeliefs();
    JoinTreeStatistics statistics;
    JoinTree::statistics = &statistics;
    const double start = Now();
    result.code = network.UpdateBeliefs();
    const double seconds = Now() - start;
    JoinTree::statistics = nullptr;
    spent += seconds;
    if (seconds < kShortRun) wanted = 4 * runs;
    const auto keepLeast = [run](double& least, double value) {
      least = run == 0 ? value : std::min(least, value);
    };
    keepLeast(result.updateMs, seconds * 1e3);
    keepLeast(result.triangulationMs, statistics.triangulationSeconds * 1e3);
    keepLeast(result.propagationMs, statistics.propagationSeconds * 1e3);
    result.cliques = statistics.cliques;
    result.cells = statistics.cells;
    result.largestCells = statistics.largestCells;
    result.bytes = statistics.bytes;
  }
}

void CompareWithReference(Case& made, ExactResult& result) {
  KVN_network& network = made.network;
  for (int node = network.GetFirstNode(); node >= 0; node = network.GetNextNode(node)) {
    if (!network.ValueOf(node)->IsValueValid()) result.invalid++;
    if (made.expected.empty()) continue;
    KVN_Dmatrix* posterior = nullptr;
    if (network.ValueOf(node)->GetValue(posterior) != 0) continue;
    const std::vector<double>& expected = made.expected[node];
    if (posterior->GetSize() != static_cast<int>(expected.size())) {
      result.difference = NAN;
      return;
    }
    for (int i = 0; i < posterior->GetSize(); i++) {
      result.difference = std::max(result.difference, std::fabs((*posterior)[i] - expected[i]));
    }
  }
}

double MeasureLoad(const fs::path& file) {
  double least = 0.0;
  for (int run = 0; run < 3; run++) {
    const double start = Now();
    KVN_network network;
    (void)network.ReadFile(file.c_str());  // PrepareCase sees a failure
    const double milliseconds = (Now() - start) * 1e3;
    least = run == 0 ? milliseconds : std::min(least, milliseconds);
  }
  return least;
}

bool MeasureNetwork(const fs::path& file, const Settings& settings, const ExactContext& context,
                    std::vector<ExactResult>& results) {
  const double loadMs = MeasureLoad(file);
  bool good = true;
  for (const bool withEvidence : {false, true}) {
    Case made;
    if (!PrepareCase(file, withEvidence, made)) {
      std::printf("%-12s cannot be prepared: %s\n", file.stem().c_str(), GetLastErrorMessage());
      return false;
    }
    for (const bool effort : {false, true}) {
      if (effort) (void)made.network.UserProperties().AddProperty("KVN_CLUSTERING_EFFORT", "1");
      ExactResult result;
      result.network = file.stem().string();
      result.evidence = made.evidence;
      result.findings = static_cast<int>(made.findings.size());
      result.findingsMs = made.findingsMs;
      result.effort = effort;
      result.loadMs = loadMs;
      MeasureUpdates(made.network, settings.runs, result);
      CompareWithReference(made, result);
      PrintRow(context, result);
      good = good && !result.IsWrong();
      results.push_back(result);
    }
  }
  return good;
}

std::vector<fs::path> FilesOf(const Settings& settings) {
  std::vector<fs::path> files;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(settings.folder, error)) {
    const std::string stem = entry.path().stem().string();
    const bool wanted =
        settings.only.empty() ||
        std::find(settings.only.begin(), settings.only.end(), stem) != settings.only.end();
    if (wanted && DetectFileFormat(entry.path().c_str()) > 0) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

bool ParseArguments(int argc, char** argv, Settings& settings) {
  for (int i = 1; i < argc; i++) {
    const std::string argument = argv[i];
    const bool hasValue = i + 1 < argc;
    if (argument == "--only" && hasValue) {
      settings.only.emplace_back(argv[++i]);
    } else if (argument == "--runs" && hasValue) {
      settings.runs = std::atoi(argv[++i]);
    } else if (argument == "--json" && hasValue) {
      settings.json = argv[++i];
    } else if (argument.rfind("--", 0) == 0) {
      return false;
    } else {
      settings.folder = argument;
    }
  }
  return settings.runs > 0;
}

}  // namespace

int main(int argc, char** argv) {
  Settings settings;
  if (!ParseArguments(argc, argv, settings)) {
    std::fprintf(stderr, "usage: %s [--only NAME]... [--runs N] [--json FILE] [FOLDER]\n", argv[0]);
    return 2;
  }
  const std::vector<fs::path> files = FilesOf(settings);
  if (files.empty()) {
    std::fprintf(stderr, "no network files in %s\n", settings.folder.c_str());
    return 2;
  }
  ExactContext context = DescribeMachine();
  context.folder = settings.folder.string();
  context.runs = settings.runs;
  PrintHead(context);
  std::vector<ExactResult> results;
  bool good = true;
  for (const fs::path& file : files) {
    good = MeasureNetwork(file, settings, context, results) && good;
  }
  PrintSummary(results);
  if (!WriteJson(settings.json, context, results)) {
    std::fprintf(stderr, "cannot write %s\n", settings.json.c_str());
    return 2;
  }
  return good ? 0 : 1;
}
