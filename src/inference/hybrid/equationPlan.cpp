#include "inference/hybrid/equationPlan.h"

#include <algorithm>
#include <new>
#include <set>
#include <string>
#include <utility>

#include "expressions/equationNode.h"
#include "expressions/equationSCC.h"
#include "foundation/errorLog.h"
#include "foundation/numberText.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "values/nodeValue.h"

namespace {

// The misspelt words are meant: hosts look for the texts of messages.
int TellComponentFailure() { return LogError(KVN_REFUSED, "Faile in computing SCC."); }
int TellSystemFailure() { return LogError(KVN_REFUSED, "Faile in solving nonlinear quations."); }

}  // namespace

/// Nodes that are computed together: one, or those of a component.
struct EquationPlan::Unit {
  std::vector<int> members;  // a component's in ascending order of identifiers
  bool isComponent = false;
};

/// Walks the units depth first, each behind what it needs. Frames are on the heap: a chain of
/// equations may be as long as the network is large.
class EquationPlan::Ordering {
 public:
  explicit Ordering(KVN_network& ordered)
      : network(ordered), states(static_cast<std::size_t>(ordered.GetSize()), kNew) {}

  int Run(std::vector<Unit>& units) {
    const KVN_intArray roots = network.GetOrderOfNodes();
    if (roots.GetNumItems() != network.GetNumberOfNodes()) return KVN_NO_MEMORY;
    for (int root : roots) {
      if (int result = Enter(root); result < 0) return result;
      while (!frames.empty()) {
        Frame& frame = frames.back();
        if (frame.position < frame.needed.size()) {
          const int next = frame.needed[frame.position++];
          if (int result = Enter(next); result < 0) return result;
          continue;
        }
        // A coupled node needn't be one of its own set.
        State(frame.root) = kDone;
        for (int member : frame.unit.members) State(member) = kDone;
        units.push_back(std::move(frame.unit));
        frames.pop_back();
      }
    }
    return KVN_SUCCESS;
  }

 private:
  enum NodeState : char { kNew, kOpen, kDone };
  struct Frame {
    int root = -1;  // the node that asked for the unit
    Unit unit;
    std::vector<int> needed;  // parents from outside
    std::size_t position = 0;
  };

  NodeState& State(int handle) { return states[static_cast<std::size_t>(handle)]; }

  int Enter(int handle) {
    if (State(handle) == kDone) return KVN_SUCCESS;
    if (State(handle) == kOpen) return TellComponentFailure();
    Frame frame;
    if (int result = MakeUnit(handle, frame.unit); result < 0) return result;
    const std::vector<int>& members = frame.unit.members;
    const std::set<int> inside(members.begin(), members.end());
    frame.root = handle;
    State(handle) = kOpen;
    for (int member : members) {
      State(member) = kOpen;
      for (int parent : network.GetParents(member)) {
        if (inside.count(parent) == 0) frame.needed.push_back(parent);
      }
    }
    frames.push_back(std::move(frame));
    return KVN_SUCCESS;
  }

  int MakeUnit(int handle, Unit& unit) const {
    unit.isComponent = network.TypeOf(handle) == KVN_TYPE_EQUATION_SCC;
    if (!unit.isComponent) {
      unit.members = {handle};
      return KVN_SUCCESS;
    }
    const auto& definition = static_cast<const KVN_equationSCC&>(*network.DefinitionOf(handle));
    for (const std::string& name : definition.GetSccVariables()) {
      const int member = network.FindNode(name.c_str());
      if (member < 0 || EquationOf(network, member) == nullptr) return TellComponentFailure();
      unit.members.push_back(member);
    }
    return KVN_SUCCESS;
  }

  KVN_network& network;
  std::vector<NodeState> states;  // by handle
  std::vector<Frame> frames;
};

int EquationPlan::Setup(KVN_network& network) {
  numbers.assign(static_cast<std::size_t>(network.GetSize()), KVN_UNDEFINED_VALUE);
  std::vector<Unit> units;
  if (int result = Ordering(network).Run(units); result < 0) return result;
  for (const Unit& unit : units) {
    if (int result = AddUnit(network, unit); result < 0) return result;
  }
  // A node of two overlapping components is computed twice and told once.
  std::vector<bool> isListed(numbers.size(), false);
  const auto isRepeated = [&](int handle) {
    const bool was = isListed[static_cast<std::size_t>(handle)];
    isListed[static_cast<std::size_t>(handle)] = true;
    return was;
  };
  computed.erase(std::remove_if(computed.begin(), computed.end(), isRepeated), computed.end());
  return KVN_SUCCESS;
}

int EquationPlan::AddUnit(KVN_network& network, const Unit& unit) {
  std::vector<int> unknowns;
  std::vector<int> known;
  for (int member : unit.members) {
    KVN_nodeValue* value = network.ValueOf(member);
    double& number = numbers[static_cast<std::size_t>(member)];
    if (value != nullptr && value->HasEvidence() && value->GetValue(number) == 0) {
      known.push_back(member);
    } else {
      unknowns.push_back(member);
    }
  }
  if (unknowns.empty() && !known.empty()) return KVN_SUCCESS;
  return unit.isComponent ? AddSystem(network, unknowns, known)
                          : AddFormula(network, unknowns.front());
}

int EquationPlan::AddFormula(KVN_network& network, int handle) {
  const KVN_equationSides& sides = *EquationOf(network, handle);
  KVN_equationSides solved = sides;
  if (!solved.IsComplete()) return KVN_NO_MEMORY;
  const int result = solved.Solve(IdentifierOfNode(&network, handle));
  if (result == KVN_NO_MEMORY) return result;
  if (result < 0) {
    // New random numbers at each look would leave the method nothing to hold on to.
    if (sides.HasDistribution()) return TellSystemFailure();
    return AddSystem(network, {handle}, {});
  }
  Step step;
  step.handle = handle;
  step.formula.reset(solved.Rhs()->Clone());
  if (step.formula == nullptr) return KVN_NO_MEMORY;
  std::unordered_map<std::string, int> parents;
  for (int parent : network.GetParents(handle)) {
    parents[IdentifierOfNode(&network, parent)] = parent;
  }
  step.binding.Bind(*step.formula, parents);
  steps.push_back(std::move(step));
  computed.push_back(handle);
  return KVN_SUCCESS;
}

int EquationPlan::AddSystem(KVN_network& network, const std::vector<int>& unknowns,
                            const std::vector<int>& known) {
  if (unknowns.empty()) return TellSystemFailure();
  Step step;
  step.system.reset(new (std::nothrow) EquationSystem());
  if (step.system == nullptr) return KVN_NO_MEMORY;
  const int result = step.system->Setup(network, unknowns, known);
  if (result < 0) return result == KVN_NO_MEMORY ? result : TellComponentFailure();
  steps.push_back(std::move(step));
  computed.insert(computed.end(), unknowns.begin(), unknowns.end());
  return KVN_SUCCESS;
}

int EquationPlan::Run() {
  for (const Step& step : steps) {
    if (step.formula != nullptr) {
      step.binding.Apply(numbers.data());
      numbers[static_cast<std::size_t>(step.handle)] = SignedValue(*step.formula);
      continue;
    }
    const int result = step.system->Solve(numbers);
    if (result < 0) return result == KVN_NO_MEMORY ? result : TellSystemFailure();
  }
  return KVN_SUCCESS;
}
