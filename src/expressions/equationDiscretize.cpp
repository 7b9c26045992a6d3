// Estimates of an equation node's table over intervals.

#include <memory>
#include <new>
#include <unordered_map>

#include "expressions/equation.h"
#include "expressions/equationNode.h"
#include "expressions/expression.h"
#include "expressions/variableBinding.h"
#include "foundation/random.h"
#include "foundation/resultCodes.h"
#include "network/network.h"

namespace {

// Range of a parent that has none of its own, as in a coupled component.
constexpr double kUnboundedLow = -1.0;
constexpr double kUnboundedHigh = 1.0;

/// A parent, and the range that its value is drawn from.
struct DrawnParent {
  std::string id;
  const KVN_equation* intervals = nullptr;  // not owned; null: the range stays
  double low = kUnboundedLow;
  double high = kUnboundedHigh;
};

/// The parents with intervals in list order, then those without: the order of the table's
/// dimensions, and that of the draws.
std::vector<DrawnParent> ParentsToDraw(const KVN_network& network, int handle) {
  std::vector<DrawnParent> discrete;
  std::vector<DrawnParent> continuous;
  for (int parent : network.GetParents(handle)) {
    DrawnParent entry;
    entry.id = IdentifierOfNode(&network, parent);
    const KVN_nodeDefinition* definition = network.DefinitionOf(parent);
    if (definition != nullptr && definition->GetType() == KVN_TYPE_EQUATION) {
      const auto& equation = static_cast<const KVN_equation&>(*definition);
      entry.low = equation.GetLowerBound();
      entry.high = equation.GetUpperBound();
      if (!equation.GetDiscIntervals().empty()) entry.intervals = &equation;
    }
    (entry.intervals != nullptr ? discrete : continuous).push_back(entry);
  }
  discrete.insert(discrete.end(), continuous.begin(), continuous.end());
  return discrete;
}

/// Fills one row after the other.
class RowSampler {
 public:
  RowSampler(const KVN_equation& node, std::vector<DrawnParent> parentsToDraw, unsigned seed)
      : equation(node),
        intervals(node.GetDiscIntervals()),
        parents(std::move(parentsToDraw)),
        numbers(parents.size()),
        counts(intervals.size()),
        random(seed) {}

  int Setup(const std::string& ownId) {
    KVN_equationSides solved = equation.GetEquation();
    if (!solved.IsComplete()) return KVN_NO_MEMORY;
    // An equation that can't be solved for the node is taken by its right side.
    const int result = solved.Solve(ownId);
    if (result == KVN_NO_MEMORY) return result;
    if (result < 0) solved = equation.GetEquation();
    if (!solved.IsComplete()) return KVN_NO_MEMORY;
    formula.reset(solved.Rhs()->Clone());
    if (formula == nullptr) return KVN_NO_MEMORY;
    isRandom = !formula->IsDeterministic();
    std::unordered_map<std::string, int> positions;
    for (std::size_t i = 0; i < parents.size(); ++i) {
      positions[parents[i].id] = static_cast<int>(i);
    }
    binding.Bind(*formula, positions);
    return KVN_SUCCESS;
  }

  void SetRow(const KVN_intArray& coordinates) {
    for (std::size_t i = 0; i < parents.size() && parents[i].intervals != nullptr; ++i) {
      (void)parents[i].intervals->GetInterval(coordinates[static_cast<int>(i)], parents[i].low,
                                              parents[i].high);
    }
  }

  void Fill(double* row, int samples, bool avoidZero, std::vector<float>* accepted) {
    counts.assign(counts.size(), 0);
    long long hits = 0;
    for (int s = 0; s < samples; ++s) {
      const double value = Draw();
      // What isn't a number is outside too.
      if (!(equation.GetLowerBound() <= value && value <= equation.GetUpperBound())) continue;
      ++counts[IntervalOf(value)];
      ++hits;
      if (accepted != nullptr) accepted->push_back(static_cast<float>(value));
    }
    const auto count = static_cast<long long>(counts.size());
    if (hits == 0) {
      counts.assign(counts.size(), 1);
      hits = count;
    } else if (avoidZero && isRandom) {
      // A formula without chance keeps its zeros: they are certain.
      for (long long& cell : counts) {
        if (cell != 0) continue;
        cell = 1;
        ++hits;
      }
    }
    for (std::size_t i = 0; i < counts.size(); ++i) {
      row[i] = counts[i] > 0 ? static_cast<double>(counts[i]) / static_cast<double>(hits) : 0.0;
    }
  }

 private:
  double Draw() {
    for (std::size_t i = 0; i < parents.size(); ++i) {
      const DrawnParent& parent = parents[i];
      numbers[i] = parent.low + (parent.high - parent.low) * random.Uniform();
    }
    binding.Apply(numbers.data());
    return SignedValue(*formula);
  }

  std::size_t IntervalOf(double value) const {
    for (std::size_t i = 0; i + 1 < intervals.size(); ++i) {
      if (value < intervals[i].upper) return i;
    }
    return intervals.size() - 1;
  }

  const KVN_equation& equation;
  const std::vector<KVN_discInterval>& intervals;
  std::vector<DrawnParent> parents;
  std::vector<double> numbers;  // drawn for each parent
  std::vector<long long> counts;
  KVN_random random;
  std::unique_ptr<KVN_expression> formula;
  KVN_variableBinding binding;
  bool isRandom = false;
};

}  // namespace

int KVN_equation::Discretize(unsigned seed, std::vector<std::vector<float>>* samplesOut) {
  if (intervals.empty() || !HasNode()) return KVN_REFUSED;
  std::vector<DrawnParent> parents = ParentsToDraw(*network, handle);
  KVN_intArray sizes;
  for (const DrawnParent& parent : parents) {
    if (parent.intervals == nullptr) break;
    const int count = static_cast<int>(parent.intervals->GetDiscIntervals().size());
    if (int result = sizes.Add(count); result < 0) return result;
  }
  const int ownCount = static_cast<int>(intervals.size());
  if (int result = sizes.Add(ownCount); result < 0) return result;
  std::unique_ptr<KVN_Dmatrix> table(new (std::nothrow) KVN_Dmatrix());
  if (table == nullptr) return KVN_NO_MEMORY;
  if (int result = table->Setup(sizes); result < 0) return result;

  RowSampler sampler(*this, std::move(parents), seed);
  if (int result = sampler.Setup(OwnId()); result < 0) return result;
  if (samplesOut != nullptr) {
    samplesOut->clear();
    samplesOut->resize(static_cast<std::size_t>(table->GetSize() / ownCount));
  }
  KVN_intArray coordinates;
  for (int start = 0; start < table->GetSize(); start += ownCount) {
    if (int result = table->CoordinatesOf(start, coordinates); result < 0) return result;
    sampler.SetRow(coordinates);
    std::vector<float>* accepted = samplesOut != nullptr
                                       ? &(*samplesOut)[static_cast<std::size_t>(start / ownCount)]
                                       : nullptr;
    sampler.Fill(table->GetData() + start, network->GetDiscSamples(),
                 network->GetDiscAvoidZero() != 0, accepted);
  }
  discreteTable = std::move(table);
  return KVN_SUCCESS;
}
