#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdint>
#include <optional>
#include <ostream>

#include "definitions/nodeDefinition.h"
#include "foundation/random.h"
#include "inference/sampling/samplingQuality.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/updateAlgorithm.h"
#include "network/userProperties.h"
#include "ormel/commandTools.h"
#include "ormel/computeCommand.h"
#include "ormel/contradiction.h"
#include "ormel/equationQuery.h"
#include "ormel/equationReport.h"
#include "ormel/evidenceInput.h"
#include "ormel/exitCodes.h"
#include "ormel/output.h"
#include "ormel/queryReport.h"
#include "ormel/text.h"
#include "values/nodeValue.h"

namespace {

constexpr const char* kEffortProperty = "KVN_CLUSTERING_EFFORT";

/// How an algorithm comes by its posteriors.
enum class Kind {
  kExact,
  kForward,   // samples from the thread's generator, wherever that stands
  kAdaptive,  // samples from a generator that it seeds by itself
  kLoopy,     // approximate, and without the mark that a value is valid
};

struct AlgorithmName {
  const char* name;
  int code;
  Kind kind;
};
constexpr AlgorithmName kAlgorithms[] = {
    {"clustering", KVN_ALG_CLUSTERING, Kind::kExact},
    {"sepset-join-tree", KVN_ALG_SEPSET_JOIN_TREE, Kind::kExact},
    {"polytree", KVN_ALG_POLYTREE, Kind::kExact},
    {"relevance-decomposition", KVN_ALG_RELEVANCE_DECOMPOSITION, Kind::kExact},
    {"relevance-decomposition-2", KVN_ALG_RELEVANCE_DECOMPOSITION_2, Kind::kExact},
    {"logic-sampling", KVN_ALG_LOGIC_SAMPLING, Kind::kForward},
    {"likelihood-weighting", KVN_ALG_LIKELIHOOD_WEIGHTING, Kind::kForward},
    {"self-importance", KVN_ALG_SELF_IMPORTANCE, Kind::kForward},
    {"backward-sampling", KVN_ALG_BACKWARD_SAMPLING, Kind::kForward},
    {"ais", KVN_ALG_AIS_SAMPLING, Kind::kAdaptive},
    {"epis", KVN_ALG_EPIS_SAMPLING, Kind::kAdaptive},
    {"loopy", KVN_ALG_LOOPY_PROPAGATION, Kind::kLoopy},
};

/// The algorithms that this build has.
std::vector<std::string> AlgorithmNames() {
  std::vector<std::string> names;
  for (const AlgorithmName& row : kAlgorithms) {
    for (const KVN_updateAlgorithm* entry = theUpdateAlgorithms; entry->code >= 0; entry++) {
      if (entry->code == row.code) names.emplace_back(row.name);
    }
  }
  return names;
}

/// While it lives, the engine's samplers run from one seed and note how good they are.
class SamplingScope {
 public:
  /// Without a seed the forward samplers go on where their generator stands, and the adaptive ones
  /// take the clock's for all their runs: either way the answer can be had again with `Seed`.
  SamplingScope(Kind kind, const std::optional<std::uint32_t>& wanted) {
    if (kind == Kind::kForward) {
      seed = wanted.value_or(KVN_simpleSamplerRandom().GetState());
      KVN_simpleSamplerRandom().Seed(seed);
    } else {
      seed = wanted.value_or(NewAdaptiveSeed());
      SetAdaptiveSeed(seed);
    }
    SetSamplingQuality(&quality);
  }
  SamplingScope(const SamplingScope&) = delete;
  SamplingScope& operator=(const SamplingScope&) = delete;
  ~SamplingScope() {
    SetSamplingQuality(nullptr);
    UseClockForAdaptiveSeed();
  }

  std::uint32_t Seed() const { return seed; }
  const SamplingQuality& Quality() const { return quality; }

 private:
  std::uint32_t seed = 0;
  SamplingQuality quality;
};

class QueryCommand : public ComputeCommand {
 public:
  const char* Name() const override { return "query"; }
  const char* Purpose() const override { return "Compute posterior probabilities"; }
  const char* Examples() const override {
    return "  ormel query examples/chest-clinic.kvn -e Dyspnea=yes -e VisitToAsia=yes\n"
           "  ormel query network.net -t Cause --output json --evidence-file case.json\n"
           "  ormel query network.net --soft Sensor=0.7,0.3 --algorithm sepset-join-tree\n"
           "  ormel query large.net -e Alarm=on --algorithm epis --samples 100000 --seed 1\n"
           "  ormel query examples/cooling-tank.xkvn -e Load=3.2 --samples 10000";
  }

  std::vector<std::string> Forms() const override { return {"table", "json", "csv"}; }

  void Declare(CLI::App& app) override {
    DeclareCase(app, "Observed state, by name or #index, or number; repeatable");
    app.add_option("--evidence-file", evidenceFile, "Lines NODE=STATE, or a JSON object")
        ->type_name("FILE");
    app.add_option("--soft", soft, "Likelihood of each state; repeatable")
        ->type_name("NODE=p1,p2,...")
        ->allow_extra_args(false);
    app.add_option("-t,--target", targetNames, "Node wanted (default: all); repeatable")
        ->type_name("NODE")
        ->allow_extra_args(false);
    app.add_option("--algorithm", algorithm, "How to compute (default: clustering)")
        ->check(CLI::IsMember(AlgorithmNames()))
        ->type_name("NAME");
    app.add_option("--samples", samples, "Number of samples of the sampling algorithms")
        ->check(CLI::PositiveNumber)
        ->type_name("N");
    app.add_option("--seed", seed,
                   "Start of the random numbers (default: the clock's for ais, epis)")
        ->type_name("S");
    app.add_option("--digits", digits, "Decimals shown (default: 4 in the table, else all)")
        ->check(CLI::Range(0, 17))
        ->type_name("N");
    app.add_flag("--discretize", discretize, "Answer an equation network over its intervals");
    app.add_flag("--documented-order", documentedOrder,
                 "Eliminate by lowest weight alone, without pruning of states");
  }

 private:
  const char* Done() const override { return "queried"; }

  int CollectEvidence(EvidenceInput& input, Output& output) const override {
    if (!evidenceFile.empty()) {
      if (int code = ReadEvidenceFile(evidenceFile, input, output); code != kExitDone) return code;
    }
    if (int code = ComputeCommand::CollectEvidence(input, output); code != kExitDone) return code;
    for (const std::string& text : soft) {
      if (int code = ParseLikelihood(text, input, output); code != kExitDone) return code;
    }
    return kExitDone;
  }

  int Answer(KVN_network& network, const EvidenceInput& input, const CommonOptions& options,
             Output& output) const override {
    std::vector<int> targets;
    if (int code = SetTargets(network, targets, output); code != kExitDone) return code;
    if (int code = SetEvidence(network, input, output); code != kExitDone) return code;
    const Kind kind = Prepare(network);
    const SamplingScope scope(kind, seed);
    if (HasEquations(network)) {
      if (seed) KVN_functionRandom().Seed(*seed);
      const EquationQuery query{options.output, digits, discretize, !targetNames.empty()};
      return AnswerEquations(network, targets, query, output);
    }
    if (discretize) {
      output.Say(Severity::kError, "--discretize: the network has no equation nodes");
      return kExitBadUsage;
    }
    {
      const LogCapture log;
      if (int result = network.UpdateBeliefs(); result != 0) {
        return TellUpdateFailure(result, log, output);
      }
    }
    if (const int node = FindContradiction(network, input); node >= 0) {
      output.Say(Severity::kError, "the evidence is impossible as a whole: node " +
                                       ToUtf8(network.GetNode(node)->GetId()) +
                                       " can't be what follows from it");
      return kExitImpossible;
    }
    QueryReport report;
    report.network = ToUtf8(network.Header().GetId());
    report.algorithm = algorithm;
    report.isDiagram = HasDecisions(network);
    report.isApproximate = kind == Kind::kLoopy;
    for (const auto& [node, state] : input.findings) report.evidence.emplace_back(node, state);
    NameStates(network, report);
    CollectPosteriors(network, targets, report);
    if (kind == Kind::kForward || kind == Kind::kAdaptive) {
      report.sampling = {network.GetNumberOfSamples(), scope.Seed()};
      AddQuality(scope.Quality(), report);
    }
    Print(report, options, output);
    TellReservations(kind, output);
    const bool hasEvidence = !input.findings.empty() || !input.likelihoods.empty();
    return TellInvalid(report, hasEvidence, output);
  }

  static bool HasDecisions(const KVN_network& network) {
    for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
      if ((network.TypeOf(h) & (KVN_TYPE_BIT_DECISION | KVN_TYPE_BIT_UTILITY)) != 0) return true;
    }
    return false;
  }

  int SetTargets(KVN_network& network, std::vector<int>& targets, Output& output) const {
    (void)network.ClearAllTargets();
    for (const std::string& name : targetNames) {
      const int handle = FindNodeOrTell(network, name, output);
      if (handle < 0) return kExitBadUsage;
      if (network.IsTarget(handle) == 1) continue;
      (void)network.SetTarget(handle);
      targets.push_back(handle);
    }
    if (targets.empty()) {
      for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) targets.push_back(h);
    }
    std::sort(targets.begin(), targets.end());
    return kExitDone;
  }

  Kind Prepare(KVN_network& network) const {
    Kind kind = Kind::kExact;
    for (const AlgorithmName& row : kAlgorithms) {
      if (algorithm != row.name) continue;
      network.SetDefaultBNAlgorithm(row.code);
      kind = row.kind;
    }
    if (samples > 0) network.SetNumberOfSamples(samples);
    if (!documentedOrder && network.UserProperties().FindProperty(kEffortProperty) < 0) {
      (void)network.UserProperties().AddProperty(kEffortProperty, "1");
    }
    return kind;
  }

  /// Evidence by "#index" is shown by the state's name.
  static void NameStates(const KVN_network& network, QueryReport& report) {
    for (auto& [node, state] : report.evidence) {
      const int handle = network.FindNode(node.c_str());
      const KVN_nodeValue& value = *network.ValueOf(handle);
      state = ToUtf8((*network.DefinitionOf(handle)->GetOutcomesNames())[value.GetEvidence()]);
    }
  }

  void Print(const QueryReport& report, const CommonOptions& options, Output& output) const {
    if (options.IsJson()) {
      PrintQueryJson(report, digits, output.Data());
    } else if (options.output == "csv") {
      PrintQueryCsv(report, digits, output.Data());
    } else {
      PrintQueryTable(report, digits, output.colourData, output.Data());
    }
  }

  void TellReservations(Kind kind, Output& output) const {
    if (kind == Kind::kLoopy) {
      output.Say(Severity::kNote,
                 "loopy propagation: the probabilities are approximate, and nothing tells by how "
                 "much");
    }
    const bool draws = kind == Kind::kForward || kind == Kind::kAdaptive;
    if (!draws && (samples > 0 || seed)) {
      output.Say(Severity::kNote, algorithm +
                                      " draws no samples: --samples and --seed have no "
                                      "meaning here");
    }
  }

  /// Without decisions only evidence that is impossible as a whole leaves nodes without posteriors.
  static int TellInvalid(const QueryReport& report, bool hasEvidence, Output& output) {
    if (report.invalid.empty()) return kExitDone;
    const bool isImpossible = hasEvidence && !report.isDiagram;
    const char* const why = isImpossible       ? "; the evidence is impossible as a whole"
                            : report.isDiagram ? "; 'ormel solve' shows what depends on decisions"
                                               : "";
    output.Say(Severity::kError, "no posterior for: " + Joined(report.invalid) + why);
    return isImpossible ? kExitImpossible : kExitRefused;
  }

  std::string evidenceFile;
  std::vector<std::string> soft;
  std::vector<std::string> targetNames;
  std::string algorithm = "clustering";
  int samples = 0;
  std::optional<std::uint32_t> seed;
  int digits = -1;
  bool discretize = false;
  bool documentedOrder = false;
};

}  // namespace

std::unique_ptr<Command> MakeQueryCommand() { return std::make_unique<QueryCommand>(); }
