#include "ormel/equationReport.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "definitions/nodeDefinition.h"
#include "expressions/equation.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "ormel/text.h"
#include "values/valEqEvaluation.h"

namespace {

constexpr double kLowQuantile = 0.05;
constexpr double kHighQuantile = 0.95;
constexpr int kBars = 10;
// Samples of all nodes together that are kept: 16 bytes each.
constexpr std::int64_t kMostSamples = 20'000'000;

const KVN_valEqEvaluation* ValueAt(const KVN_network& network, int handle) {
  const KVN_nodeValue* value = network.ValueOf(handle);
  if (value == nullptr || value->GetType() != KVN_VALUE_EQUATION) return nullptr;
  return static_cast<const KVN_valEqEvaluation*>(value);
}

const KVN_equation* EquationAt(const KVN_network& network, int handle) {
  if (network.TypeOf(handle) != KVN_TYPE_EQUATION) return nullptr;
  return static_cast<const KVN_equation*>(network.DefinitionOf(handle));
}

/// The smallest number with at least that share of the sorted numbers at or below it.
double QuantileOf(const std::vector<double>& sorted, double share) {
  const double rank = std::ceil(share * static_cast<double>(sorted.size()));
  return sorted[static_cast<std::size_t>(std::max(rank, 1.0)) - 1];
}

std::vector<EquationReport::Range> HistogramOf(const std::vector<double>& sorted) {
  std::vector<double> finite;
  for (double number : sorted) {
    if (std::isfinite(number)) finite.push_back(number);
  }
  std::vector<EquationReport::Range> bars;
  if (finite.empty() || !(finite.front() < finite.back())) return bars;
  const double low = finite.front();
  const double width = finite.back() / kBars - low / kBars;  // the difference may be too large
  if (!(width > 0.0)) return bars;
  for (int i = 0; i < kBars; i++) bars.push_back({"", low + i * width, low + (i + 1) * width, 0.0});
  bars.back().upper = finite.back();
  std::size_t bar = 0;
  for (double number : finite) {
    while (bar + 1 < bars.size() && number >= bars[bar].upper) bar++;
    bars[bar].probability += 1.0;
  }
  for (EquationReport::Range& range : bars) {
    range.probability /= static_cast<double>(sorted.size());
  }
  return bars;
}

void DescribeSamples(const KVN_valEqEvaluation& value, EquationReport::Node& node) {
  std::vector<double> numbers;
  for (const KVN_weightedSample& sample : value.GetSamples()) {
    if (std::isnan(sample.value)) {
      node.undefined++;
    } else {
      numbers.push_back(sample.value);
    }
  }
  if (numbers.empty()) return;
  std::sort(numbers.begin(), numbers.end());
  node.hasQuantiles = true;
  node.low = QuantileOf(numbers, kLowQuantile);
  node.high = QuantileOf(numbers, kHighQuantile);
  node.histogram = HistogramOf(numbers);
}

void DescribeIntervals(const KVN_equation& equation, const std::vector<double>& probabilities,
                       EquationReport::Node& node) {
  for (std::size_t i = 0; i < probabilities.size(); i++) {
    EquationReport::Range range;
    if (equation.GetInterval(static_cast<int>(i), range.lower, range.upper) != 0) break;
    range.id = ToUtf8(equation.GetDiscIntervals()[i].id.c_str());
    range.probability = probabilities[i];
    node.intervals.push_back(range);
  }
}

void DescribePoint(double number, EquationReport::Node& node) {
  node.hasMoments = true;
  node.mean = number;
  node.hasQuantiles = true;
  node.low = number;
  node.high = number;
}

}  // namespace

bool HasEquations(const KVN_network& network) {
  for (int handle = network.GetFirstNode(); handle >= 0; handle = network.GetNextNode(handle)) {
    const int type = network.TypeOf(handle);
    if (type == KVN_TYPE_EQUATION || type == KVN_TYPE_EQUATION_SCC) return true;
  }
  return false;
}

bool PrepareEquations(KVN_network& network, const std::vector<int>& targets) {
  const auto wanted = static_cast<std::int64_t>(targets.size());
  const bool keep = wanted * network.GetNumberOfSamples() <= kMostSamples;
  for (int handle = network.GetFirstNode(); handle >= 0; handle = network.GetNextNode(handle)) {
    KVN_nodeValue* value = network.ValueOf(handle);
    if (value == nullptr || value->GetType() != KVN_VALUE_EQUATION) continue;
    const bool isWanted = std::binary_search(targets.begin(), targets.end(), handle);
    static_cast<KVN_valEqEvaluation*>(value)->SetKeepSamples(keep && isWanted);
  }
  return keep;
}

std::vector<int> DiscretizedNodes(const KVN_network& network) {
  std::vector<int> handles;
  for (int handle = network.GetFirstNode(); handle >= 0; handle = network.GetNextNode(handle)) {
    const KVN_equation* equation = EquationAt(network, handle);
    const bool hasIntervals = equation != nullptr && !equation->GetDiscIntervals().empty();
    const KVN_nodeValue* value = network.ValueOf(handle);
    if (hasIntervals || (value != nullptr && value->HasEvidence())) handles.push_back(handle);
  }
  return handles;
}

void CollectValues(const KVN_network& network, const std::vector<int>& targets,
                   EquationReport& report) {
  for (int handle = network.GetFirstNode(); handle >= 0; handle = network.GetNextNode(handle)) {
    KVN_nodeValue* value = network.ValueOf(handle);
    double number = 0.0;
    if (value == nullptr || !value->HasEvidence() || value->GetValue(number) != 0) continue;
    report.evidence.emplace_back(ToUtf8(network.GetNode(handle)->GetId()), number);
  }
  for (int handle : targets) {
    EquationReport::Node node;
    node.id = ToUtf8(network.GetNode(handle)->GetId());
    const KVN_valEqEvaluation* value = ValueAt(network, handle);
    if (value == nullptr || !value->IsValueValid()) {
      report.invalid.push_back(node.id);
      continue;
    }
    double number = 0.0;
    const KVN_equation* equation = EquationAt(network, handle);
    if (value->HasEvidence() && network.ValueOf(handle)->GetValue(number) == 0) {
      node.isObserved = true;
      DescribePoint(number, node);
    } else if (!value->GetDiscretized().empty() && equation != nullptr) {
      DescribeIntervals(*equation, value->GetDiscretized(), node);
    } else if (value->GetSampleCount() == 0) {
      DescribePoint(value->GetMean(), node);
    } else {
      node.hasMoments = true;
      node.mean = value->GetMean();
      node.deviation = value->GetDeviation();
      node.samples = value->GetSampleCount();
      DescribeSamples(*value, node);
    }
    report.nodes.push_back(node);
  }
}
