#include "ormel/queryReport.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <ostream>
#include <sstream>

#include "definitions/nodeDefinition.h"
#include "foundation/dmatrix.h"
#include "foundation/idArray.h"
#include "inference/sampling/samplingQuality.h"
#include "network/network.h"
#include "network/node.h"
#include "ormel/reportText.h"
#include "ormel/text.h"
#include "values/nodeValue.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr int kDefaultTableDigits = 4;

/// Nothing for what wasn't sampled.
std::string DescribeShare(const QueryReport::Node& node) {
  if (node.standardErrors.empty() || node.observed >= 0) return "";
  return "  (" + Fixed(100.0 * node.effectiveShare, 1) + " % of the samples counted)";
}

std::string DescribeError(const QueryReport::Node& node, std::size_t state, int decimals) {
  if (node.standardErrors.empty() || node.observed >= 0) return "";
  const double error = node.standardErrors[state];
  return " +/- " + (std::isnan(error) ? "unknown" : Fixed(error, decimals));
}

/// A number that is none becomes null in the output.
Json ByState(const QueryReport::Node& node, const std::vector<double>& numbers, int digits) {
  Json states = Json::object();
  for (std::size_t k = 0; k < node.states.size(); k++) {
    states[node.states[k]] = Rounded(numbers[k], digits);
  }
  return states;
}

bool IsFinite(const KVN_Dmatrix& numbers) {
  return std::all_of(numbers.GetData(), numbers.GetData() + numbers.GetSize(),
                     [](double number) { return std::isfinite(number); });
}

}  // namespace

void CollectPosteriors(KVN_network& network, const std::vector<int>& targets, QueryReport& report) {
  for (int handle : targets) {
    const KVN_node& node = *network.GetNode(handle);
    KVN_Dmatrix* matrix = nullptr;
    KVN_nodeValue* const value = node.Value();
    const KVN_idArray* const names = node.Definition()->GetOutcomesNames();
    if (value == nullptr || !(value->IsValueValid() || report.isApproximate) ||
        value->GetValue(matrix) != 0 || names == nullptr ||
        matrix->GetSize() != names->GetNumItems() || !IsFinite(*matrix)) {
      report.invalid.push_back(ToUtf8(node.GetId()));
      continue;
    }
    QueryReport::Node made;
    made.handle = handle;
    made.id = ToUtf8(node.GetId());
    made.observed = value->HasEvidence() ? value->GetEvidence() : -1;
    for (int k = 0; k < names->GetNumItems(); k++) {
      made.states.push_back(ToUtf8((*names)[k]));
      made.posterior.push_back((*matrix)[k]);
    }
    report.nodes.push_back(made);
  }
}

void AddQuality(const SamplingQuality& quality, QueryReport& report) {
  for (QueryReport::Node& node : report.nodes) {
    const double* const errors = quality.GetStandardErrors(node.handle);
    node.effectiveShare = quality.GetEffectiveShare(node.handle);
    for (std::size_t k = 0; k < node.states.size(); k++) {
      node.standardErrors.push_back(errors == nullptr ? 0.0 : errors[k]);
    }
  }
}

void PrintQueryTable(const QueryReport& report, int digits, bool colour, std::ostream& stream) {
  std::size_t width = 0;
  for (const QueryReport::Node& node : report.nodes) {
    for (const std::string& state : node.states) width = std::max(width, state.size());
  }
  const int decimals = digits < 0 ? kDefaultTableDigits : digits;
  for (const QueryReport::Node& node : report.nodes) {
    PrintNodeName(node.id, colour, stream);
    stream << (node.observed >= 0     ? "  (observed)"
               : report.isApproximate ? "  (approximate)"
                                      : "")
           << DescribeShare(node) << '\n';
    for (std::size_t k = 0; k < node.states.size(); k++) {
      const double p = node.posterior[k];
      const std::string bar = BarOf(p);
      stream << "  " << std::left << std::setw(static_cast<int>(width) + 2)
             << ToPrintable(node.states[k].c_str()) << Fixed(p, decimals)
             << DescribeError(node, k, decimals) << (bar.empty() ? "" : "  ") << bar << '\n';
    }
  }
}

void PrintQueryJson(const QueryReport& report, int digits, std::ostream& stream) {
  Json evidence = Json::object();
  for (const auto& [node, state] : report.evidence) evidence[node] = state;
  Json posteriors = Json::object();
  Json errors = Json::object();
  Json shares = Json::object();
  for (const QueryReport::Node& node : report.nodes) {
    posteriors[node.id] = ByState(node, node.posterior, digits);
    if (!report.sampling) continue;
    errors[node.id] = ByState(node, node.standardErrors, digits);
    shares[node.id] = Rounded(node.effectiveShare, digits);
  }
  Json answer = {
      {"network", report.network},
      {"algorithm", report.algorithm},
  };
  if (report.sampling) {
    answer["samples"] = report.sampling->samples;
    answer["seed"] = report.sampling->seed;
  }
  if (report.isApproximate) answer["approximate"] = true;
  answer["evidence"] = evidence;
  answer["posteriors"] = posteriors;
  if (report.sampling) {
    answer["standardErrors"] = errors;
    answer["effectiveShares"] = shares;
  }
  answer["invalid"] = report.invalid;
  stream << answer.dump(2) << '\n';
}

void PrintQueryCsv(const QueryReport& report, int digits, std::ostream& stream) {
  stream << "node,state,probability" << (report.sampling ? ",standard_error,effective_share" : "")
         << '\n';
  for (const QueryReport::Node& node : report.nodes) {
    for (std::size_t k = 0; k < node.states.size(); k++) {
      stream << CsvField(node.id) << ',' << CsvField(node.states[k]) << ','
             << Json(Rounded(node.posterior[k], digits)).dump();
      if (report.sampling) {
        stream << ',' << Json(Rounded(node.standardErrors[k], digits)).dump() << ','
               << Json(Rounded(node.effectiveShare, digits)).dump();
      }
      stream << '\n';
    }
  }
}
