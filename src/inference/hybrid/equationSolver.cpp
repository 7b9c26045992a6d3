#include "inference/hybrid/equationSolver.h"

#include <utility>
#include <vector>

#include "definitions/nodeDefinition.h"
#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "inference/hybrid/equationPlan.h"
#include "inference/hybrid/equationSystem.h"
#include "network/network.h"
#include "values/valEqEvaluation.h"

namespace {

/// A value to write to, and where its number stands.
using Receiver = std::pair<KVN_valEqEvaluation*, int>;

std::vector<Receiver> ReceiversOf(const KVN_network& network, const EquationPlan& plan) {
  std::vector<Receiver> receivers;
  for (int handle : plan.GetComputed()) {
    KVN_nodeValue* value = network.ValueOf(handle);
    if (value == nullptr || value->GetType() != KVN_VALUE_EQUATION) continue;
    receivers.emplace_back(static_cast<KVN_valEqEvaluation*>(value), handle);
  }
  return receivers;
}

/// Forgets the last results of all nodes without evidence, of those that get no number now as well.
void ResetAll(const KVN_network& network) {
  for (int handle = network.GetFirstNode(); handle >= 0; handle = network.GetNextNode(handle)) {
    KVN_nodeValue* value = network.ValueOf(handle);
    if (value == nullptr || value->GetType() != KVN_VALUE_EQUATION || value->HasEvidence())
      continue;
    static_cast<KVN_valEqEvaluation*>(value)->ResetSamples();
  }
}

double NumberOf(const EquationPlan& plan, int handle) {
  return plan.GetNumbers()[static_cast<std::size_t>(handle)];
}

}  // namespace

int SolveEquations(KVN_network& network) {
  bool isRandom = false;
  for (int handle = network.GetFirstNode(); handle >= 0; handle = network.GetNextNode(handle)) {
    const KVN_equationSides* sides = EquationOf(network, handle);
    if (sides == nullptr) {
      return LogError(KVN_REFUSED, "Unable to handle hybrid networks with equation solver.");
    }
    if (!sides->HasDistribution()) continue;
    if (network.TypeOf(handle) == KVN_TYPE_EQUATION_SCC) {
      // Meant as it is spelt: hosts look for the texts of messages.
      return LogError(KVN_REFUSED,
                      "Unable to sovle a network contains strongly-coupled components with "
                      "distribution definitions.");
    }
    isRandom = true;
  }
  return isRandom ? SampleEquations(network) : SolveDeterministic(network);
}

int SolveDeterministic(KVN_network& network) {
  EquationPlan plan;
  if (int result = plan.Setup(network); result < 0) return result;
  if (int result = plan.Run(); result < 0) return result;
  ResetAll(network);
  for (const auto& [value, handle] : ReceiversOf(network, plan)) {
    value->SetPoint(NumberOf(plan, handle));
  }
  return KVN_SUCCESS;
}

int SampleEquations(KVN_network& network) {
  const int count = network.GetNumberOfSamples();
  if (count < 1) {
    return LogError(KVN_NO_USEFUL_SAMPLES,
                    "No useful samples have been generated for some of nodes.");
  }
  EquationPlan plan;
  if (int result = plan.Setup(network); result < 0) return result;
  const std::vector<Receiver> receivers = ReceiversOf(network, plan);
  ResetAll(network);
  for (int sample = 0; sample < count; ++sample) {
    if (int result = plan.Run(); result < 0) {
      ResetAll(network);
      return result;
    }
    for (const auto& [value, handle] : receivers) value->AddSample(NumberOf(plan, handle));
  }
  for (const Receiver& receiver : receivers) receiver.first->FinishSamples();
  return KVN_SUCCESS;
}
