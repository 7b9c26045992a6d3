#include "inference/exact/treeInput.h"

#include <cmath>
#include <cstddef>
#include <new>
#include <numeric>
#include <utility>

#include "inference/exact/relevanceGraph.h"

namespace {

/// Rounding of a sum of doubles near 1; a distribution that misses 1 by more is treated as a table.
constexpr double kUnitTolerance = 4e-15;

/// Distance in cells to each state of a variable that is to be visited.
using StateOffsets = std::vector<std::int64_t>;

StateOffsets AllStates(int states, std::int64_t stride) {
  StateOffsets offsets(static_cast<std::size_t>(states));
  for (int k = 0; k < states; ++k) offsets[k] = k * stride;
  return offsets;
}

/// Visits the runs of a table along its last variable, for every combination of states of the
/// others, the one before the last fastest. A step costs no more than the digits that turn over, so
/// that a whole table is read about as fast as its runs are.
class RowWalk {
 public:
  /// An entry for each variable of the table, in table order; a table of one cell has none.
  explicit RowWalk(std::vector<StateOffsets> visited) : outer(std::move(visited)), run(1, 0) {
    if (outer.empty()) return;
    run = std::move(outer.back());
    outer.pop_back();
    at.assign(outer.size(), 0);
    for (const StateOffsets& offsets : outer) start += offsets[0];
  }
  /// Where the present run starts, and the distances of its cells from there.
  std::int64_t Start() const { return start; }
  const StateOffsets& Run() const { return run; }
  /// Places in their lists of the states of all variables but the last.
  const std::vector<int>& At() const { return at; }
  /// False at the end.
  bool Next() {
    for (std::size_t d = outer.size(); d-- > 0;) {
      const StateOffsets& offsets = outer[d];
      start -= offsets[at[d]];
      at[d] = at[d] + 1 < static_cast<int>(offsets.size()) ? at[d] + 1 : 0;
      start += offsets[at[d]];
      if (at[d] != 0) return true;
    }
    return false;
  }

 private:
  std::vector<StateOffsets> outer;
  StateOffsets run;
  std::vector<int> at;
  std::int64_t start = 0;
};

/// Which of the listed states of a table's variables have been seen with a cell above 0.
class Support {
 public:
  explicit Support(const std::vector<std::vector<int>>& choices) : marks(choices.size()) {
    for (std::size_t d = 0; d < choices.size(); ++d) {
      marks[d].assign(choices[d].size(), 0);
      open += choices[d].size();
    }
  }
  bool Has(std::size_t d, int choice) const { return marks[d][choice] != 0; }
  void Add(std::size_t d, int choice) {
    open -= marks[d][choice] == 0 ? 1 : 0;
    marks[d][choice] = 1;
  }
  bool IsComplete() const { return open == 0; }

 private:
  std::vector<std::vector<char>> marks;
  std::size_t open = 0;
};

/// Looks for what the run at `cells` supports. Once its combination of outer states is supported
/// it tells no more than the own states that are still without support (`missing`, which shrinks).
void AddSupportOfRun(const double* cells, const RowWalk& walk, std::vector<int>& missing,
                     Support& support) {
  const std::size_t last = walk.At().size();
  bool isTold = true;
  for (std::size_t d = 0; isTold && d < last; ++d) isTold = support.Has(d, walk.At()[d]);
  if (isTold && missing.empty()) return;
  const StateOffsets& run = walk.Run();
  // Not a number counts as support: it must not vanish from the result.
  for (std::size_t i = 0; i < missing.size();) {
    if (cells[run[missing[i]]] == 0.0) {
      ++i;
      continue;
    }
    support.Add(last, missing[i]);
    missing[i] = missing.back();
    missing.pop_back();
  }
  bool isSupported = false;
  for (std::size_t k = 0; !isTold && !isSupported && k < run.size(); ++k) {
    isSupported = cells[run[k]] != 0.0;
  }
  for (std::size_t d = 0; isSupported && d < last; ++d) support.Add(d, walk.At()[d]);
}

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
  RowWalk walk(OffsetsOf(position));
  do {
    const double* cells = factors[position].cells + walk.Start();
    for (std::int64_t offset : walk.Run()) {
      if (cells[offset] == 0.0) return true;
    }
  } while (walk.Next());
  return false;
}

/// Takes from `alive` each state that no cell of the table supports, with all other variables at
/// states that are alive; lists the variables that lost one. False when one has none left.
bool TreeInput::RemoveUnsupported(int position, std::vector<int>& shrunk) {
  const TreeFactor& factor = factors[position];
  const std::size_t count = factor.variables.size();
  if (count == 0) return true;  // an impossible cell shows in the sums
  std::vector<std::vector<int>> choices(count);
  std::vector<StateOffsets> offsets(count);
  for (std::size_t d = 0; d < count; ++d) {
    const std::vector<char>& outcomes = alive[factor.variables[d]];
    for (int k = 0; k < static_cast<int>(outcomes.size()); ++k) {
      if (outcomes[k] == 0) continue;
      choices[d].push_back(k);
      offsets[d].push_back(k * factor.strides[d]);
    }
  }
  Support support(choices);
  std::vector<int> missing(choices.back().size());
  std::iota(missing.begin(), missing.end(), 0);
  RowWalk walk(std::move(offsets));
  do {
    AddSupportOfRun(factor.cells + walk.Start(), walk, missing, support);
  } while (!support.IsComplete() && walk.Next());
  for (std::size_t d = 0; !support.IsComplete() && d < count; ++d) {
    int v = factor.variables[d];
    std::size_t lost = 0;
    for (std::size_t i = 0; i < choices[d].size(); ++i) {
      if (support.Has(d, static_cast<int>(i))) continue;
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
  double* next = copy.get();
  RowWalk walk(OffsetsOf(position));
  do {
    const double* run = factor.cells + walk.Start();
    for (std::int64_t offset : walk.Run()) *next++ = run[offset];
  } while (walk.Next());
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

/// The states of each variable of a table that are left, in its cells.
std::vector<StateOffsets> TreeInput::OffsetsOf(int position) const {
  const TreeFactor& factor = factors[position];
  std::vector<StateOffsets> offsets(factor.variables.size());
  for (std::size_t d = 0; d < offsets.size(); ++d) {
    const int v = factor.variables[d];
    for (int k = 0; k < states[v]; ++k) offsets[d].push_back(OutcomeOf(v, k) * factor.strides[d]);
  }
  return offsets;
}

bool TreeInput::IsDistribution(int position) const {
  const TreeFactor& factor = factors[position];
  if (factor.variables.empty() || factor.variables.back() != position) return false;
  std::vector<StateOffsets> offsets(factor.variables.size());
  for (std::size_t d = 0; d < offsets.size(); ++d) {
    offsets[d] = AllStates(states[factor.variables[d]], factor.strides[d]);
  }
  RowWalk walk(std::move(offsets));
  do {
    const double* run = factor.cells + walk.Start();
    double sum = 0.0;
    for (std::int64_t offset : walk.Run()) sum += run[offset];
    if (!(std::fabs(sum - 1.0) <= kUnitTolerance)) return false;
  } while (walk.Next());
  return true;
}
