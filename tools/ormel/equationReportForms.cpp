// The answers of an equation network as a table, as JSON and as CSV.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <ostream>

#include "ormel/equationReport.h"
#include "ormel/reportText.h"
#include "ormel/text.h"

namespace {

using Json = nlohmann::ordered_json;
using Node = EquationReport::Node;
using Range = EquationReport::Range;

constexpr int kProbabilityDigits = 4;
constexpr int kSignificantDigits = 6;
constexpr int kBarEndDigits = 4;

std::string NumberText(double number, int digits, int significant = kSignificantDigits) {
  if (digits >= 0 || std::isnan(number)) return Fixed(number, digits);
  char text[64];
  std::snprintf(text, sizeof text, "%.*g", significant, number);
  return text;
}

Json NumberJson(double number, int digits) {
  if (!std::isfinite(number)) return nullptr;
  return Rounded(number, digits);
}

void PrintRanges(const std::vector<Range>& ranges, int digits, std::ostream& stream) {
  std::vector<std::string> labels;
  std::size_t width = 0;
  for (const Range& range : ranges) {
    const bool isBar = range.id.empty();
    const std::string name = isBar ? "" : ToPrintable(range.id.c_str()) + "  ";
    const int significant = isBar ? kBarEndDigits : kSignificantDigits;
    labels.push_back(name + NumberText(range.lower, digits, significant) + " to " +
                     NumberText(range.upper, digits, significant));
    width = std::max(width, labels.back().size());
  }
  for (std::size_t i = 0; i < ranges.size(); i++) {
    const double p = ranges[i].probability;
    stream << "  " << labels[i] << std::string(width - labels[i].size() + 2, ' ')
           << Fixed(p, digits < 0 ? kProbabilityDigits : digits);
    if (const std::string bar = BarOf(p); !bar.empty()) stream << "  " << bar;
    stream << '\n';
  }
}

void PrintMoments(const Node& node, int digits, std::ostream& stream) {
  stream << "  mean " << NumberText(node.mean, digits) << "  deviation "
         << NumberText(node.deviation, digits);
  if (node.hasQuantiles) {
    stream << "  5 % " << NumberText(node.low, digits) << "  95 % "
           << NumberText(node.high, digits);
  }
  if (node.samples > 0) stream << "  (" << node.samples << " samples)";
  stream << '\n';
  if (node.undefined > 0) {
    stream << "  " << node.undefined
           << " samples are no numbers; the quantiles are of the others\n";
  }
}

}  // namespace

void PrintEquationTable(const EquationReport& report, int digits, bool colour,
                        std::ostream& stream) {
  for (const Node& node : report.nodes) {
    PrintNodeName(node.id, colour, stream);
    stream << (node.isObserved ? "  (observed)" : "") << '\n';
    if (node.hasMoments) PrintMoments(node, digits, stream);
    PrintRanges(node.intervals.empty() ? node.histogram : node.intervals, digits, stream);
  }
}

void PrintEquationJson(const EquationReport& report, int digits, std::ostream& stream) {
  Json evidence = Json::object();
  for (const auto& [node, number] : report.evidence) evidence[node] = number;
  Json values = Json::object();
  for (const Node& node : report.nodes) {
    Json made = {{"mean", nullptr}, {"deviation", nullptr}, {"quantiles", nullptr}};
    if (node.hasMoments) {
      made["mean"] = NumberJson(node.mean, digits);
      made["deviation"] = NumberJson(node.deviation, digits);
    }
    if (node.hasQuantiles) {
      made["quantiles"] = {{"0.05", NumberJson(node.low, digits)},
                           {"0.95", NumberJson(node.high, digits)}};
    }
    made["intervals"] = Json::array();
    for (const Range& range : node.intervals) {
      made["intervals"].push_back({{"id", range.id},
                                   {"lower", NumberJson(range.lower, digits)},
                                   {"upper", NumberJson(range.upper, digits)},
                                   {"probability", NumberJson(range.probability, digits)}});
    }
    values[node.id] = made;
  }
  const Json answer = {
      {"network", report.network}, {"algorithm", report.method}, {"evidence", evidence},
      {"values", values},          {"invalid", report.invalid},
  };
  stream << answer.dump(2) << '\n';
}

void PrintEquationCsv(const EquationReport& report, int digits, std::ostream& stream) {
  stream << "node,quantity,value\n";
  for (const Node& node : report.nodes) {
    const auto line = [&](const std::string& quantity, double number) {
      stream << CsvField(node.id) << ',' << CsvField(quantity) << ','
             << NumberJson(number, digits).dump() << '\n';
    };
    if (node.hasMoments) {
      line("mean", node.mean);
      line("deviation", node.deviation);
    }
    if (node.hasQuantiles) {
      line("quantile 0.05", node.low);
      line("quantile 0.95", node.high);
    }
    for (const Range& range : node.intervals) line("interval " + range.id, range.probability);
  }
}
