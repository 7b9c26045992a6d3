#include "ormel/solveReport.h"

#include <algorithm>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <ostream>

#include "definitions/nodeDefinition.h"
#include "foundation/dmatrix.h"
#include "foundation/idArray.h"
#include "foundation/numberText.h"
#include "network/network.h"
#include "network/node.h"
#include "ormel/policyWalk.h"
#include "ormel/queryReport.h"
#include "ormel/reportText.h"
#include "ormel/text.h"
#include "values/nodeValue.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr int kDefaultTableDigits = 4;
constexpr const char* kBold = "\x1b[1m";
constexpr const char* kPlain = "\x1b[0m";

std::string IdOf(const KVN_network& network, int handle) {
  return ToUtf8(network.GetNode(handle)->GetId());
}

std::vector<std::string> StatesOf(const KVN_network& network, int handle) {
  std::vector<std::string> states;
  const KVN_idArray* names = network.DefinitionOf(handle)->GetOutcomesNames();
  for (int i = 0; names != nullptr && i < names->GetNumItems(); i++) {
    states.push_back(ToUtf8((*names)[i]));
  }
  return states;
}

bool IsOpenDecision(const KVN_network& network, int handle) {
  return network.TypeOf(handle) == KVN_TYPE_LIST && !network.ValueOf(handle)->HasEvidence();
}

/// The states that row `row` of the decision's table stands for.
std::vector<std::string> RowStates(const SolveReport::Decision& decision, std::size_t row) {
  std::vector<std::string> states(decision.given.size());
  for (std::size_t i = decision.given.size(); i-- > 0;) {
    const std::vector<std::string>& names = decision.givenStates[i];
    states[i] = names[row % names.size()];
    row /= names.size();
  }
  return states;
}

SolveReport::Decision NewDecision(KVN_network& network, int handle) {
  SolveReport::Decision made;
  made.id = IdOf(network, handle);
  made.alternatives = StatesOf(network, handle);
  return made;
}

}  // namespace

std::vector<int> OpenNodesInOrder(KVN_network& network) {
  KVN_intArray order;
  std::vector<int> open;
  if (network.GetTemporalOrder(order) != 0) return open;
  for (int handle : order) {
    const KVN_nodeValue* value = network.ValueOf(handle);
    if (value != nullptr && !value->HasEvidence()) open.push_back(handle);
  }
  return open;
}

void CollectPolicy(KVN_network& network, const std::vector<int>& order, SolveReport& report) {
  const PolicyWalk walk(network, order);
  const std::vector<int>& enumerated = walk.GetScenarioNodes();
  for (int handle : order) {
    if (!IsOpenDecision(network, handle)) continue;
    SolveReport::Decision made = NewDecision(network, handle);
    made.matters = std::find(enumerated.begin(), enumerated.end(), handle) != enumerated.end();
    KVN_Dmatrix* table = nullptr;
    if (made.matters && network.ValueOf(handle)->GetValue(table) == 0) {
      for (int parent : network.ValueOf(handle)->GetIndexingParents()) {
        made.given.push_back(IdOf(network, parent));
        made.givenStates.push_back(StatesOf(network, parent));
      }
      made.expected.assign(table->GetData(), table->GetData() + table->GetSize());
      made.best = walk.BestOf(handle);
    }
    report.decisions.push_back(made);
  }
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    const std::vector<double>& numbers = walk.ResultOf(h);
    if (numbers.empty()) continue;
    if ((network.TypeOf(h) & KVN_TYPE_BIT_UTILITY) == 0) {
      report.posteriors.push_back({IdOf(network, h), StatesOf(network, h), numbers});
      continue;
    }
    report.utilities.emplace_back(IdOf(network, h), numbers[0]);
    if (network.GetNumberOfChildren(h) == 0) report.expectedUtility += numbers[0];
  }
}

void CollectBestChoice(KVN_network& network, const std::vector<int>& order, SolveReport& report) {
  for (int handle : order) {
    if (!IsOpenDecision(network, handle)) continue;
    KVN_Dmatrix* choice = nullptr;
    if (network.ValueOf(handle)->GetValue(choice) != 0) return;
    SolveReport::Decision made = NewDecision(network, handle);
    const double* best = std::max_element(choice->GetData(), choice->GetData() + choice->GetSize());
    made.best.push_back(static_cast<int>(best - choice->GetData()));
    report.decisions.push_back(made);
    return;
  }
}

// --- The table.

namespace {

/// Columns of a table, each as wide as its longest text.
class Columns {
 public:
  void AddRow(const std::vector<std::string>& row) {
    widths.resize(std::max(widths.size(), row.size()), 0);
    for (std::size_t i = 0; i < row.size(); i++) widths[i] = std::max(widths[i], row[i].size());
    rows.push_back(row);
  }
  void Print(std::ostream& stream) const {
    for (const std::vector<std::string>& row : rows) {
      std::string line = " ";
      for (std::size_t i = 0; i < row.size(); i++) {
        line += " " + row[i] + std::string(widths[i] - row[i].size() + 1, ' ');
      }
      stream << line.substr(0, line.find_last_not_of(' ') + 1) << '\n';
    }
  }

 private:
  std::vector<std::vector<std::string>> rows;
  std::vector<std::size_t> widths;
};

void PrintDecision(const SolveReport::Decision& decision, int digits, std::ostream& stream) {
  if (!decision.matters) {
    stream << "  no utility depends on it\n";
    return;
  }
  const std::size_t count = decision.alternatives.size();
  if (decision.expected.empty()) {
    for (std::size_t k = 0; k < count; k++) {
      stream << (decision.best[0] == static_cast<int>(k) ? "  * " : "    ")
             << ToPrintable(decision.alternatives[k].c_str()) << '\n';
    }
    return;
  }
  Columns columns;
  std::vector<std::string> head = decision.given;
  for (std::string& id : head) id = ToPrintable(id.c_str());
  if (!head.empty()) head.push_back("|");
  for (const std::string& name : decision.alternatives) {
    head.push_back("  " + ToPrintable(name.c_str()));
  }
  columns.AddRow(head);
  for (std::size_t row = 0; row < decision.best.size(); row++) {
    if (decision.best[row] < 0) continue;
    std::vector<std::string> line = RowStates(decision, row);
    for (std::string& state : line) state = ToPrintable(state.c_str());
    if (!line.empty()) line.push_back("|");
    for (std::size_t k = 0; k < count; k++) {
      const char* const mark = decision.best[row] == static_cast<int>(k) ? "* " : "  ";
      const double expected = decision.expected[row * count + k];
      const bool isPossible = expected != KVN_UNDEFINED_VALUE;
      line.push_back(mark + (isPossible ? Fixed(expected, digits) : std::string("-")));
    }
    columns.AddRow(line);
  }
  columns.Print(stream);
  const auto impossible = std::count(decision.best.begin(), decision.best.end(), -1);
  if (impossible > 0) stream << "  " << impossible << " other combinations can't come about\n";
}

}  // namespace

void PrintSolveTable(const SolveReport& report, int digits, bool colour, std::ostream& stream) {
  const int decimals = digits < 0 ? kDefaultTableDigits : digits;
  const char* const on = colour ? kBold : "";
  const char* const off = colour ? kPlain : "";
  const bool isPolicy = report.method == "policy";
  if (isPolicy) {
    stream << on << "Expected utility of the best strategy" << off << "  "
           << Fixed(report.expectedUtility, decimals) << '\n';
  }
  for (const SolveReport::Decision& decision : report.decisions) {
    stream << '\n' << on << "Decision " << ToPrintable(decision.id.c_str()) << off << '\n';
    PrintDecision(decision, decimals, stream);
  }
  if (!isPolicy) return;
  stream << '\n' << on << "Utilities under this strategy" << off << '\n';
  Columns columns;
  for (const auto& [id, utility] : report.utilities) {
    columns.AddRow({ToPrintable(id.c_str()), Fixed(utility, decimals)});
  }
  columns.Print(stream);
  if (report.posteriors.empty()) return;
  stream << '\n' << on << "Posteriors under this strategy" << off << '\n';
  QueryReport nodes;
  for (const SolveReport::Node& node : report.posteriors) {
    QueryReport::Node shown;
    shown.id = node.id;
    shown.states = node.states;
    shown.posterior = node.posterior;
    nodes.nodes.push_back(shown);
  }
  PrintQueryTable(nodes, decimals, colour, stream);
}

// --- The others.

namespace {

/// The items of a row-major list as lists in lists, one level for each of `given`.
template <class Item>
Json Nested(const SolveReport::Decision& decision, std::size_t level, std::size_t& row, Item item) {
  if (level == decision.given.size()) return item(row++);
  Json list = Json::array();
  for (std::size_t i = 0; i < decision.givenStates[level].size(); i++) {
    list.push_back(Nested(decision, level + 1, row, item));
  }
  return list;
}

Json JsonOf(const SolveReport::Decision& decision, int digits) {
  const std::size_t count = decision.alternatives.size();
  Json made = {
      {"given", decision.given},
      {"alternatives", decision.alternatives},
      {"expected", nullptr},
      {"best", nullptr},
  };
  if (!decision.expected.empty()) {
    std::size_t row = 0;
    made["expected"] = Nested(decision, 0, row, [&](std::size_t r) {
      Json numbers = Json::array();
      for (std::size_t k = 0; k < count; k++) {
        const double expected = decision.expected[r * count + k];
        if (decision.best[r] < 0 || expected == KVN_UNDEFINED_VALUE) {
          numbers.push_back(nullptr);
        } else {
          numbers.push_back(Rounded(expected, digits));
        }
      }
      return numbers;
    });
  }
  if (!decision.best.empty()) {
    std::size_t row = 0;
    made["best"] = Nested(decision, 0, row, [&](std::size_t r) {
      const int best = decision.best[r];
      return best < 0 ? Json() : Json(decision.alternatives[static_cast<std::size_t>(best)]);
    });
  }
  return made;
}

}  // namespace

void PrintSolveJson(const SolveReport& report, int digits, std::ostream& stream) {
  Json decisions = Json::object();
  for (const SolveReport::Decision& decision : report.decisions) {
    decisions[decision.id] = JsonOf(decision, digits);
  }
  Json utilities = Json::object();
  for (const auto& [id, utility] : report.utilities) utilities[id] = Rounded(utility, digits);
  Json posteriors = Json::object();
  for (const SolveReport::Node& node : report.posteriors) {
    Json states = Json::object();
    for (std::size_t k = 0; k < node.states.size(); k++) {
      states[node.states[k]] = Rounded(node.posterior[k], digits);
    }
    posteriors[node.id] = states;
  }
  Json answer = {
      {"network", report.network}, {"method", report.method},   {"decisions", decisions},
      {"utilities", utilities},    {"notices", report.notices},
  };
  if (report.method == "policy") {
    answer["expected_utility"] = Rounded(report.expectedUtility, digits);
    answer["posteriors"] = posteriors;
  }
  stream << answer.dump(2) << '\n';
}

void PrintSolveCsv(const SolveReport& report, int digits, std::ostream& stream) {
  stream << "decision,given,alternative,expected,best\n";
  for (const SolveReport::Decision& decision : report.decisions) {
    const std::size_t count = decision.alternatives.size();
    for (std::size_t row = 0; row < decision.best.size(); row++) {
      const std::vector<std::string> states = RowStates(decision, row);
      std::string given;
      for (std::size_t i = 0; i < states.size(); i++) {
        given += (i == 0 ? "" : ";") + decision.given[i] + "=" + states[i];
      }
      for (std::size_t k = 0; k < count; k++) {
        std::string number;
        const bool isPossible = !decision.expected.empty() && decision.best[row] >= 0 &&
                                decision.expected[row * count + k] != KVN_UNDEFINED_VALUE;
        if (isPossible) number = Json(Rounded(decision.expected[row * count + k], digits)).dump();
        stream << CsvField(decision.id) << ',' << CsvField(given) << ','
               << CsvField(decision.alternatives[k]) << ',' << number << ','
               << (decision.best[row] == static_cast<int>(k) ? 1 : 0) << '\n';
      }
    }
  }
}
