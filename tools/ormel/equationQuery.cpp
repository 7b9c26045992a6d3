#include "ormel/equationQuery.h"

#include <algorithm>

#include "network/header.h"
#include "network/network.h"
#include "ormel/commandTools.h"
#include "ormel/equationReport.h"
#include "ormel/exitCodes.h"
#include "ormel/output.h"
#include "ormel/text.h"
#include "values/nodeValue.h"

namespace {

bool HasEvidenceBelow(const KVN_network& network) {
  for (int handle = network.GetFirstNode(); handle >= 0; handle = network.GetNextNode(handle)) {
    const KVN_nodeValue* value = network.ValueOf(handle);
    if (value != nullptr && value->IsEvidence() && network.GetNumberOfParents(handle) > 0) {
      return true;
    }
  }
  return false;
}

/// A node with intervals has no answer only where the evidence is impossible as a whole.
int TellInvalid(const KVN_network& network, const EquationReport& report, Output& output) {
  if (report.invalid.empty()) return kExitDone;
  const std::vector<int> able = DiscretizedNodes(network);
  const bool isImpossible =
      !report.evidence.empty() &&
      std::all_of(report.invalid.begin(), report.invalid.end(), [&](const std::string& id) {
        return std::binary_search(able.begin(), able.end(), network.FindNode(id.c_str()));
      });
  output.Say(Severity::kError, "no answer for: " + Joined(report.invalid) +
                                   (isImpossible ? "; the evidence is impossible as a whole"
                                                 : "; a node needs intervals"));
  return isImpossible ? kExitImpossible : kExitRefused;
}

}  // namespace

int AnswerEquations(KVN_network& network, std::vector<int> targets, const EquationQuery& query,
                    Output& output) {
  network.SetEquationDiscretized(query.isDiscretized ? 1 : 0);
  if (query.isDiscretized) {
    if (!query.hasTargets) targets = DiscretizedNodes(network);
  } else if (!PrepareEquations(network, targets)) {
    output.Say(Severity::kNote,
               "too many samples to keep: no quantiles; name the wanted nodes with --target");
  }
  {
    const LogCapture log;
    if (int result = network.UpdateBeliefs(); result != 0) {
      const int code = TellUpdateFailure(result, log, output);
      if (!query.isDiscretized && HasEvidenceBelow(network)) {
        output.Say(Severity::kNote,
                   "evidence on a node with parents needs intervals and --discretize");
      }
      return code;
    }
  }
  EquationReport report;
  report.network = ToUtf8(network.Header().GetId());
  report.method = query.isDiscretized ? "intervals" : "solver";
  CollectValues(network, targets, report);
  if (query.form == "json") {
    PrintEquationJson(report, query.digits, output.Data());
  } else if (query.form == "csv") {
    PrintEquationCsv(report, query.digits, output.Data());
  } else {
    PrintEquationTable(report, query.digits, output.colourData, output.Data());
  }
  return TellInvalid(network, report, output);
}
