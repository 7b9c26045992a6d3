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
#include "network/network.h"
#include "network/node.h"
#include "ormel/reportText.h"
#include "ormel/text.h"
#include "values/nodeValue.h"

namespace {

constexpr int kBarWidth = 40;
constexpr int kDefaultTableDigits = 4;
constexpr const char* kBold = "\x1b[1m";
constexpr const char* kPlain = "\x1b[0m";

}  // namespace

void CollectPosteriors(KVN_network& network, const std::vector<int>& targets, QueryReport& report) {
  for (int handle : targets) {
    const KVN_node& node = *network.GetNode(handle);
    KVN_Dmatrix* matrix = nullptr;
    KVN_nodeValue* const value = node.Value();
    const KVN_idArray* const names = node.Definition()->GetOutcomesNames();
    if (value == nullptr || !value->IsValueValid() || value->GetValue(matrix) != 0 ||
        names == nullptr || matrix->GetSize() != names->GetNumItems()) {
      report.invalid.push_back(ToUtf8(node.GetId()));
      continue;
    }
    QueryReport::Node made;
    made.id = ToUtf8(node.GetId());
    made.observed = value->HasEvidence() ? value->GetEvidence() : -1;
    for (int k = 0; k < names->GetNumItems(); k++) {
      made.states.push_back(ToUtf8((*names)[k]));
      made.posterior.push_back((*matrix)[k]);
    }
    report.nodes.push_back(made);
  }
}

void PrintQueryTable(const QueryReport& report, int digits, bool colour, std::ostream& stream) {
  std::size_t width = 0;
  for (const QueryReport::Node& node : report.nodes) {
    for (const std::string& state : node.states) width = std::max(width, state.size());
  }
  const int decimals = digits < 0 ? kDefaultTableDigits : digits;
  for (const QueryReport::Node& node : report.nodes) {
    stream << (colour ? kBold : "") << ToPrintable(node.id.c_str()) << (colour ? kPlain : "")
           << (node.observed >= 0 ? "  (observed)" : "") << '\n';
    for (std::size_t k = 0; k < node.states.size(); k++) {
      const double p = node.posterior[k];
      const long filled = p > 0.0 && p <= 1.0 ? std::lround(p * kBarWidth) : 0;
      const std::string bar(static_cast<std::size_t>(filled), '#');
      stream << "  " << std::left << std::setw(static_cast<int>(width) + 2)
             << ToPrintable(node.states[k].c_str()) << Fixed(p, decimals)
             << (bar.empty() ? "" : "  ") << bar << '\n';
    }
  }
}

void PrintQueryJson(const QueryReport& report, int digits, std::ostream& stream) {
  using Json = nlohmann::ordered_json;
  Json evidence = Json::object();
  for (const auto& [node, state] : report.evidence) evidence[node] = state;
  Json posteriors = Json::object();
  for (const QueryReport::Node& node : report.nodes) {
    Json states = Json::object();
    for (std::size_t k = 0; k < node.states.size(); k++) {
      states[node.states[k]] = Rounded(node.posterior[k], digits);
    }
    posteriors[node.id] = states;
  }
  const Json answer = {
      {"network",    report.network  },
      {"algorithm",  report.algorithm},
      {"evidence",   evidence        },
      {"posteriors", posteriors      },
      {"invalid",    report.invalid  },
  };
  stream << answer.dump(2) << '\n';
}

void PrintQueryCsv(const QueryReport& report, int digits, std::ostream& stream) {
  stream << "node,state,probability\n";
  for (const QueryReport::Node& node : report.nodes) {
    for (std::size_t k = 0; k < node.states.size(); k++) {
      const nlohmann::json number = Rounded(node.posterior[k], digits);
      stream << CsvField(node.id) << ',' << CsvField(node.states[k]) << ',' << number.dump()
             << '\n';
    }
  }
}
