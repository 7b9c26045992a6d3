#include "inference/hybrid/discretizingUpdate.h"

#include <unordered_map>
#include <utility>
#include <vector>

#include "expressions/equation.h"
#include "expressions/equationNode.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/updateAlgorithm.h"
#include "network/userProperties.h"
#include "values/valEqEvaluation.h"

namespace {

KVN_equation* EquationAt(const KVN_network& network, int handle) {
  if (network.TypeOf(handle) != KVN_TYPE_EQUATION) return nullptr;
  return static_cast<KVN_equation*>(network.DefinitionOf(handle));
}

bool HasIntervals(const KVN_network& network, int handle) {
  const KVN_equation* equation = EquationAt(network, handle);
  return equation != nullptr && !equation->GetDiscIntervals().empty();
}

/// The number of the evidence; false without any.
bool GetFinding(const KVN_network& network, int handle, double& number) {
  KVN_nodeValue* value = network.ValueOf(handle);
  return value != nullptr && value->HasEvidence() && value->GetValue(number) == 0;
}

/// Narrows the ranges of observed nodes without intervals to their numbers while it lives, so that
/// the tables of their children are estimated for these. Such tables fit this evidence alone and
/// are dropped at both ends.
class HeldRanges {
 public:
  explicit HeldRanges(KVN_network& heldNetwork) : network(heldNetwork) {
    for (int handle = network.GetFirstNode(); handle >= 0; handle = network.GetNextNode(handle)) {
      KVN_equation* equation = EquationAt(network, handle);
      double number = 0.0;
      if (equation == nullptr || !equation->GetDiscIntervals().empty()) continue;
      if (!GetFinding(network, handle, number)) continue;
      held.push_back({handle, equation->GetLowerBound(), equation->GetUpperBound()});
      equation->SetBounds(number, number);
      DropTablesBelow(handle);
    }
  }
  HeldRanges(const HeldRanges&) = delete;
  HeldRanges& operator=(const HeldRanges&) = delete;
  ~HeldRanges() {
    for (const Range& range : held) {
      EquationAt(network, range.handle)->SetBounds(range.lower, range.upper);
      DropTablesBelow(range.handle);
    }
  }

 private:
  struct Range {
    int handle;
    double lower;
    double upper;
  };

  void DropTablesBelow(int handle) {
    for (int child : network.GetChildren(handle)) {
      if (KVN_equation* equation = EquationAt(network, child)) equation->DropDiscreteTable();
    }
  }

  KVN_network& network;
  std::vector<Range> held;
};

/// The discrete network over the intervals.
class DiscreteTwin {
 public:
  explicit DiscreteTwin(KVN_network& equations) : network(equations) {
    twin.SetUpdateFlags(0);
    twin.SetChangeMask(0);
  }

  int Run() {
    if (!twin.IsReady()) return KVN_NO_MEMORY;
    const KVN_intArray order = network.GetOrderOfNodes();
    if (order.GetNumItems() != network.GetNumberOfNodes()) return KVN_NO_MEMORY;
    for (int handle : order) {
      if (!HasIntervals(network, handle)) continue;
      if (int result = AddTwin(handle); result < 0) return result;
    }
    // Behind the nodes: evidence on one that gets parents later would be checked against half of
    // its table.
    for (const auto& pair : pairs) {
      if (int result = CopyMarks(pair.first, pair.second); result < 0) return result;
    }
    if (int result = CopySettings(); result < 0) return result;
    if (int result = twin.UpdateBeliefs(); result < 0) return result;
    for (const auto& pair : pairs) CopyBack(pair.first, pair.second);
    return KVN_SUCCESS;
  }

 private:
  int AddTwin(int handle) {
    KVN_equation& equation = *EquationAt(network, handle);
    // Before the twin is made: a table that is too large says so by itself.
    if (equation.GetDiscreteTable() == nullptr) {
      if (int result = equation.Discretize(/*seed=*/0, nullptr); result < 0) return result;
    }
    const int made = twin.AddNode(KVN_TYPE_CPT, IdentifierOfNode(&network, handle).c_str());
    if (made < 0) return made;
    KVN_nodeDefinition* definition = twin.DefinitionOf(made);
    if (definition == nullptr || twin.ValueOf(made) == nullptr) return KVN_NO_MEMORY;
    KVN_stringArray names;
    for (const KVN_discInterval& interval : equation.GetDiscIntervals()) {
      if (int result = names.Add(interval.id.c_str()); result < 0) return result;
    }
    if (int result = definition->SetNumberOfOutcomes(names); result < 0) return result;
    for (int parent : network.GetParents(handle)) {
      const auto found = twinOf.find(parent);
      if (found == twinOf.end()) continue;
      // Nothing else is against an arc between two new nodes, whatever its code says.
      if (twin.AddArc(found->second, made, /*layer=*/0) < 0) return KVN_NO_MEMORY;
    }
    twinOf[handle] = made;
    pairs.emplace_back(handle, made);
    if (int result = definition->SetDefinition(*equation.GetDiscreteTable()); result < 0) {
      return result;
    }
    // A parent may have got another number of intervals since; it doesn't drop its children's
    // tables.
    if (twin.TableFits(made)) return KVN_SUCCESS;
    if (int result = equation.Discretize(/*seed=*/0, nullptr); result < 0) return result;
    return definition->SetDefinition(*equation.GetDiscreteTable());
  }

  int CopyMarks(int handle, int made) {
    if (network.IsTarget(handle) == 1) (void)twin.SetTarget(made);
    double number = 0.0;
    if (!GetFinding(network, handle, number)) return KVN_SUCCESS;
    const auto& intervals = EquationAt(network, handle)->GetDiscIntervals();
    const int last = static_cast<int>(intervals.size()) - 1;
    int outcome = 0;
    while (outcome < last && !(number < intervals[static_cast<std::size_t>(outcome)].upper)) {
      ++outcome;
    }
    return twin.ValueOf(made)->SetEvidence(outcome);
  }

  int CopySettings() {
    twin.SetDefaultBNAlgorithm(network.GetDefaultBNAlgorithm());
    twin.SetNumberOfSamples(network.GetNumberOfSamples());
    (void)twin.SetEpisParams(network.GetEpisParams());  // acceptable there, so here too
    // Properties tune the algorithms.
    return twin.UserProperties().Assign(network.UserProperties());
  }

  void CopyBack(int handle, int made) {
    KVN_nodeValue* value = network.ValueOf(handle);
    KVN_nodeValue* result = twin.ValueOf(made);
    KVN_Dmatrix* posterior = nullptr;
    if (value == nullptr || value->GetType() != KVN_VALUE_EQUATION || value->HasEvidence()) return;
    // Loopy propagation gives numbers without the mark that they are valid, here as there.
    const bool isValid = result->IsValueValid();
    if (!isValid && twin.GetDefaultBNAlgorithm() != KVN_ALG_LOOPY_PROPAGATION) return;
    if (result->GetValue(posterior) < 0) return;
    const double* cells = posterior->GetData();
    // One probability for each interval: the outcomes were made from them.
    (void)static_cast<KVN_valEqEvaluation*>(value)->SetDiscretized(
        std::vector<double>(cells, cells + posterior->GetSize()));
    if (!isValid) value->ClearValueValid();
  }

  KVN_network& network;
  KVN_network twin;
  std::unordered_map<int, int> twinOf;
  std::vector<std::pair<int, int>> pairs;  // handles here and there, parents first
};

}  // namespace

int DiscretizingUpdate(KVN_network& network, int equationHandle) {
  if (!HasIntervals(network, equationHandle)) return KVN_NOT_APPLICABLE;
  const HeldRanges held(network);
  const int result = DiscreteTwin(network).Run();
  // The code says "ask the next node" to the caller, and that would do the same again.
  return result == KVN_NOT_APPLICABLE ? int{KVN_REFUSED} : result;
}
