#include "inference/hybrid/equationSystem.h"

#include <string>
#include <unordered_map>

#include "expressions/equation.h"
#include "expressions/equationNode.h"
#include "expressions/equationSCC.h"
#include "expressions/expression.h"
#include "foundation/resultCodes.h"
#include "network/network.h"

const KVN_equationSides* EquationOf(const KVN_network& network, int handle) {
  const KVN_nodeDefinition* definition = network.DefinitionOf(handle);
  if (definition == nullptr) return nullptr;
  switch (definition->GetType()) {
    case KVN_TYPE_EQUATION:
      return &static_cast<const KVN_equation*>(definition)->GetEquation();
    case KVN_TYPE_EQUATION_SCC:
      return &static_cast<const KVN_equationSCC*>(definition)->GetEquation();
    default:
      return nullptr;
  }
}

int EquationSystem::Setup(const KVN_network& network, const std::vector<int>& handles,
                          const std::vector<int>& known) {
  unknowns = handles;
  members.clear();
  members.resize(handles.size());
  std::unordered_map<std::string, int> positions;
  for (std::size_t i = 0; i < handles.size(); ++i) {
    positions[IdentifierOfNode(&network, handles[i])] = static_cast<int>(i);
  }
  std::unordered_map<std::string, int> knownHandles;
  for (int handle : known) knownHandles[IdentifierOfNode(&network, handle)] = handle;

  for (std::size_t i = 0; i < handles.size(); ++i) {
    const KVN_equationSides* sides = EquationOf(network, handles[i]);
    if (sides == nullptr || !sides->IsComplete()) return KVN_REFUSED;
    Member& member = members[i];
    member.sides = *sides;
    if (!member.sides.IsComplete()) return KVN_NO_MEMORY;
    std::unordered_map<std::string, int> given = knownHandles;
    for (int parent : network.GetParents(handles[i])) {
      given[IdentifierOfNode(&network, parent)] = parent;
    }
    for (const auto& entry : positions) given.erase(entry.first);
    for (KVN_expression* side : {member.sides.Lhs(), member.sides.Rhs()}) {
      member.knownValues.Bind(*side, given);
      member.unknownValues.Bind(*side, positions);
    }
  }
  return KVN_SUCCESS;
}

int EquationSystem::Solve(std::vector<double>& numbers) {
  for (const Member& member : members) member.knownValues.Apply(numbers.data());
  std::vector<double> x(unknowns.size(), 0.0);
  const int result = NewtonSolve(*this, x, kNewtonStep, kNewtonIterations, nullptr);
  if (result < 0) return result;
  for (std::size_t i = 0; i < unknowns.size(); ++i) {
    numbers[static_cast<std::size_t>(unknowns[i])] = x[i];
  }
  return KVN_SUCCESS;
}

void EquationSystem::ComputeResiduals(const std::vector<double>& x,
                                      std::vector<double>& residuals) {
  for (std::size_t i = 0; i < members.size(); ++i) {
    members[i].unknownValues.Apply(x.data());
    residuals[i] = members[i].sides.ComputeResidual();
  }
}
