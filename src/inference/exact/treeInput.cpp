#include "inference/exact/treeInput.h"

#include <cmath>
#include <cstddef>
#include <new>
#include <utility>

#include "inference/exact/relevanceGraph.h"

namespace {

/// Rounding of a sum of doubles near 1; a distribution that misses 1 by more is treated as a table.
constexpr double kUnitTolerance = 4e-15;

/// Odometer over the states of several variables: the last one fastest.
class StateWalk {
 public:
  explicit StateWalk(std::size_t count) : at(count, 0) {}
  /// False at the end. `sizeOf(i)` is the number of states of variable i.
  template <typename SizeOf>
  bool Next(SizeOf sizeOf) {
    for (std::size_t i = at.size(); i-- > 0;) {
      if (++at[i] < sizeOf(i)) return true;
      at[i] = 0;
    }
    return false;
  }
  std::vector<int> at;
};

}  // namespace

bool TreeInput::Load() {
  int n = part.GetSize();
  states.resize(n);
  factors.resize(n);
  kept.resize(n);
  for (int i = 0; i < n; ++i) {
    const RelevanceNode& record = part.Node(i);
    states[i] = record.HasEvidence() ? 1 : record.outcomes;
  }
  for (int i = 0; i < n; ++i) {
    RelevanceNode& record = part.Node(i);
    const KVN_Dmatrix* table = record.GetTable();
    if (table == nullptr) return false;
    TreeFactor& factor = factors[i];
    const KVN_intArray& multipliers = table->GetMultipliers();
    int parents = record.parents.GetNumItems();
    std::int64_t offset = record.HasEvidence() ? record.evidence : 0;
    for (int d = 0; d < parents; ++d) {
      const RelevanceNode& parent = part.Record(record.parents[d]);
      // Arcs from observed nodes are cut before a part is made; this holds without that, too.
      if (parent.HasEvidence()) {
        offset += static_cast<std::int64_t>(multipliers[d]) * parent.evidence;
      } else if (parent.outcomes > 1) {
        factor.variables.push_back(parent.position);
        factor.strides.push_back(multipliers[d]);
      }
    }
    if (states[i] > 1) {
      factor.variables.push_back(i);
      factor.strides.push_back(1);
    }
    factor.cells = table->GetData() + offset;
  }
  return true;
}

/// Whether a table rules out anything at all: most don't, and are never looked at again.
bool TreeInput::HasZeros(int position) const {
  const TreeFactor& factor = factors[position];
  StateWalk walk(factor.variables.size());
  do {
    std::int64_t offset = 0;
    for (std::size_t d = 0; d < walk.at.size(); ++d) offset += factor.strides[d] * walk.at[d];
    if (factor.cells[offset] == 0.0) return true;
  } while (walk.Next([&](std::size_t d) { return states[factor.variables[d]]; }));
  return false;
}

/// Takes from `alive` each state that no cell of the table supports, with all other variables at
/// states that are alive; lists the variables that lost one. False when one has none left.
bool TreeInput::RemoveUnsupported(int position, std::vector<int>& shrunk) {
  const TreeFactor& factor = factors[position];
  std::size_t count = factor.variables.size();
  std::vector<std::vector<int>> choices(count);
  std::vector<std::vector<char>> supported(count);
  std::size_t open = 0;  // states still without support
  for (std::size_t d = 0; d < count; ++d) {
    const std::vector<char>& outcomes = alive[factor.variables[d]];
    for (int k = 0; k < static_cast<int>(outcomes.size()); ++k) {
      if (outcomes[k] != 0) choices[d].push_back(k);
    }
    supported[d].assign(choices[d].size(), 0);
    open += choices[d].size();
  }
  StateWalk walk(count);
  do {
    std::int64_t offset = 0;
    for (std::size_t d = 0; d < count; ++d) offset += factor.strides[d] * choices[d][walk.at[d]];
    // Not a number counts as support: it must not vanish from the result.
    if (factor.cells[offset] == 0.0) continue;
    for (std::size_t d = 0; d < count; ++d) {
      char& mark = supported[d][walk.at[d]];
      open -= mark == 0;
      mark = 1;
    }
  } while (open > 0 &&
           walk.Next([&](std::size_t d) { return static_cast<int>(choices[d].size()); }));
  for (std::size_t d = 0; open > 0 && d < count; ++d) {
    int v = factor.variables[d];
    std::size_t lost = 0;
    for (std::size_t i = 0; i < choices[d].size(); ++i) {
      if (supported[d][i] != 0) continue;
      alive[v][choices[d][i]] = 0;
      ++lost;
    }
    if (lost == choices[d].size()) return false;
    if (lost > 0) shrunk.push_back(v);
  }
  return true;
}

bool TreeInput::PruneStates(bool& contradiction) {
  int n = GetSize();
  contradiction = false;
  alive.resize(n);
  std::vector<std::vector<int>> factorsOf(n);  // the tables that may rule out states
  std::vector<int> pending;
  std::vector<char> isPending(n, 0);
  for (int i = 0; i < n; ++i) alive[i].assign(states[i] > 1 ? states[i] : 0, 1);
  for (int i = n - 1; i >= 0; --i) {
    if (!HasZeros(i)) continue;
    for (int v : factors[i].variables) factorsOf[v].push_back(i);
    pending.push_back(i);
    isPending[i] = 1;
  }
  std::vector<char> changed(n, 0);
  std::vector<int> shrunk;
  while (!pending.empty()) {
    int i = pending.back();
    pending.pop_back();
    isPending[i] = 0;
    shrunk.clear();
    if (!RemoveUnsupported(i, shrunk)) {
      contradiction = true;
      return true;
    }
    for (int v : shrunk) {
      changed[v] = 1;
      for (int other : factorsOf[v]) {
        if (other == i || isPending[other] != 0) continue;
        isPending[other] = 1;
        pending.push_back(other);
      }
    }
  }
  for (int v = 0; v < n; ++v) {
    if (changed[v] == 0) continue;
    for (int k = 0; k < static_cast<int>(alive[v].size()); ++k) {
      if (alive[v][k] != 0) kept[v].push_back(k);
    }
    states[v] = static_cast<int>(kept[v].size());
  }
  return CompactFactors(changed);
}

bool TreeInput::CompactFactors(const std::vector<char>& changed) {
  for (int i = 0; i < GetSize(); ++i) {
    for (int v : factors[i].variables) {
      if (changed[v] == 0) continue;
      if (!CompactFactor(i)) return false;
      break;
    }
  }
  return true;
}

/// Copies the cells of the states that are left, and drops the variables that are known now.
bool TreeInput::CompactFactor(int position) {
  TreeFactor& factor = factors[position];
  TreeFactor compact;
  std::int64_t cells = 1;
  for (int v : factor.variables) cells *= states[v];
  std::unique_ptr<double[]> copy(new (std::nothrow) double[cells]);
  if (copy == nullptr) return false;
  StateWalk walk(factor.variables.size());
  double* next = copy.get();
  do {
    std::int64_t offset = 0;
    for (std::size_t d = 0; d < factor.variables.size(); ++d) {
      offset += factor.strides[d] * OutcomeOf(factor.variables[d], walk.at[d]);
    }
    *next++ = factor.cells[offset];
  } while (walk.Next([&](std::size_t d) { return states[factor.variables[d]]; }));
  std::int64_t stride = cells;
  for (int v : factor.variables) {
    stride /= states[v];
    if (states[v] == 1) continue;
    compact.variables.push_back(v);
    compact.strides.push_back(stride);
  }
  compact.cells = copy.get();
  copies.push_back(std::move(copy));
  factor = std::move(compact);
  return true;
}

bool TreeInput::IsDistribution(int position) const {
  const TreeFactor& factor = factors[position];
  if (factor.variables.empty() || factor.variables.back() != position) return false;
  StateWalk walk(factor.variables.size() - 1);
  do {
    const double* run = factor.cells;
    for (std::size_t d = 0; d < walk.at.size(); ++d) run += factor.strides[d] * walk.at[d];
    double sum = 0.0;
    for (int k = 0; k < states[position]; ++k) sum += run[k * factor.strides.back()];
    if (!(std::fabs(sum - 1.0) <= kUnitTolerance)) return false;
  } while (walk.Next([&](std::size_t d) { return states[factor.variables[d]]; }));
  return true;
}
