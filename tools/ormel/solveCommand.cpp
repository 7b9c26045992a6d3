#include <CLI/CLI.hpp>
#include <ostream>

#include "definitions/nodeDefinition.h"
#include "network/header.h"
#include "network/network.h"
#include "network/userProperties.h"
#include "ormel/commandTools.h"
#include "ormel/computeCommand.h"
#include "ormel/evidenceInput.h"
#include "ormel/exitCodes.h"
#include "ormel/output.h"
#include "ormel/solveReport.h"
#include "ormel/text.h"

namespace {

constexpr const char* kPolicy = "policy";
constexpr const char* kBest = "best";

bool StartsWith(const std::string& text, const char* start) { return text.rfind(start, 0) == 0; }

/// Whether the engine tells the user something by the message, besides what goes wrong: an
/// impossible scenario, for example, is none of his concern.
bool IsNotice(const std::string& text) {
  return StartsWith(text, "Temporal order assumed") || StartsWith(text, "Utilities not specified");
}

class SolveCommand : public ComputeCommand {
 public:
  const char* Name() const override { return "solve"; }
  const char* Purpose() const override { return "Find the best strategy of an influence diagram"; }
  const char* Examples() const override {
    return "  ormel solve examples/oil-wildcatter.xkvn\n"
           "  ormel solve examples/oil-wildcatter.xkvn -e Test=done -e Seismic=closed\n"
           "  ormel solve diagram.net --method best --output json";
  }
  std::vector<std::string> Forms() const override { return {"table", "json", "csv"}; }

  void Declare(CLI::App& app) override {
    DeclareCase(app, "What is observed or decided already, by name or #index; repeatable");
    app.add_option("--method", method,
                   "policy: all tables (default); best: the next decision's alternative alone")
        ->check(CLI::IsMember({kPolicy, kBest}))
        ->type_name("NAME");
    app.add_option("--digits", digits, "Decimals shown (default: 4 in the table, else all)")
        ->check(CLI::Range(0, 17))
        ->type_name("N");
    app.add_flag("--documented", documented,
                 "Leave out observations that matter only through later ones");
  }

 private:
  const char* Done() const override { return "solved"; }

  int Answer(KVN_network& network, const EvidenceInput& input, const CommonOptions& options,
             Output& output) const override {
    if (int code = SetEvidence(network, input, output); code != kExitDone) return code;
    if (int code = CheckContent(network, output); code != kExitDone) return code;
    Prepare(network);
    const std::vector<int> order = OpenNodesInOrder(network);
    SolveReport report;
    report.network = ToUtf8(network.Header().GetId());
    report.method = method;
    {
      const LogCapture log;
      if (int result = network.UpdateBeliefs(); result != 0) {
        return TellFailure(result, log, output);
      }
      for (const Diagnostic& message : log.Messages()) {
        if (IsNotice(message.text)) report.notices.push_back(ToUtf8(message.text.c_str()));
      }
    }
    if (method == kPolicy) {
      CollectPolicy(network, order, report);
    } else {
      CollectBestChoice(network, order, report);
    }
    for (const SolveReport::Decision& decision : report.decisions) {
      if (!decision.matters) report.notices.push_back("No utility depends on " + decision.id);
    }
    for (const std::string& notice : report.notices) {
      output.Say(Severity::kNote, ToPrintable(notice.c_str()));
    }
    Print(report, options, output);
    return kExitDone;
  }

  /// What leaves nothing to solve is told in one line instead of by empty tables.
  static int CheckContent(const KVN_network& network, Output& output) {
    bool hasUtilities = false;
    bool hasDecisions = false;
    for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
      hasUtilities = hasUtilities || (network.TypeOf(h) & KVN_TYPE_BIT_UTILITY) != 0;
      hasDecisions = hasDecisions || network.TypeOf(h) == KVN_TYPE_LIST;
    }
    if (!hasUtilities) {
      output.Say(Severity::kError, "Utilities not specified. Policies cannot be evaluated");
      return kExitRefused;
    }
    if (!hasDecisions) {
      output.Say(Severity::kNote, "there is no decision in the network");
    }
    return kExitDone;
  }

  void Prepare(KVN_network& network) const {
    network.SetDefaultIDAlgorithm(method == kPolicy ? 0 : 1);
    // The policy is wanted for the whole diagram, whatever posteriors the file asks for.
    (void)network.ClearAllTargets();
    if (documented) return;
    for (const char* key : {"KVN_POLICY_EFFORT", "KVN_CLUSTERING_EFFORT"}) {
      if (network.UserProperties().FindProperty(key) >= 0) continue;
      (void)network.UserProperties().AddProperty(key, "1");
    }
  }

  static int TellFailure(int result, const LogCapture& log, Output& output) {
    // The last message says what failed; those before it are of single scenarios.
    const std::string text = log.Messages().empty() ? "" : log.Messages().back().text + "; ";
    output.Say(Severity::kError,
               "not solved: " + ToPrintable(text.c_str()) + "code " + DescribeResult(result));
    return ExitCodeOfResult(result);
  }

  void Print(const SolveReport& report, const CommonOptions& options, Output& output) const {
    if (options.IsJson()) {
      PrintSolveJson(report, digits, output.Data());
    } else if (options.output == "csv") {
      PrintSolveCsv(report, digits, output.Data());
    } else {
      PrintSolveTable(report, digits, output.colourData, output.Data());
    }
  }

  std::string method = kPolicy;
  int digits = -1;
  bool documented = false;
};

}  // namespace

std::unique_ptr<Command> MakeSolveCommand() { return std::make_unique<SolveCommand>(); }
