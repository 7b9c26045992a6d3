#include "tests/support/oracle.h"

#include <cmath>

#include "definitions/nodeDefinition.h"
#include "network/network.h"
#include "tests/support/networkBuilder.h"
#include "values/nodeValue.h"

namespace {

class Enumeration {
 public:
  explicit Enumeration(KVN_network& n) : network(n) {
    for (int handle : network.GetOrderOfNodes()) order.push_back(handle);
    outcomeOf.resize(network.GetSize());
    likelihoods.resize(network.GetSize());
    sums.resize(network.GetSize());
    for (int handle : order) {
      sums[handle].resize(network.DefinitionOf(handle)->GetNumberOfOutcomes());
      // A node that no table can depend on has no soft evidence as far as the engine goes.
      if (HasTableDimension(network.TypeOf(handle))) {
        (void)network.ValueOf(handle)->GetVirtualEvidence(likelihoods[handle]);
      }
    }
  }

  OracleResult Run() {
    Extend(0, 1.0L);
    OracleResult result;
    long double total = 0.0L;
    if (!order.empty()) {
      for (long double sum : sums[order[0]]) total += sum;
    }
    result.probability = static_cast<double>(total);
    result.isPossible = total > 0.0L;
    result.posteriors.resize(sums.size());
    for (int handle : order) {
      for (long double sum : sums[handle]) {
        if (result.isPossible) {
          result.posteriors[handle].push_back(static_cast<double>(sum / total));
        }
      }
    }
    return result;
  }

 private:
  void Extend(std::size_t depth, long double probability) {
    if (depth == order.size()) {
      for (int handle : order) sums[handle][outcomeOf[handle]] += probability;
      return;
    }
    const int handle = order[depth];
    const KVN_Dmatrix& table = TableOfNode(network, handle);
    int index = 0;
    for (int parent : network.GetParents(handle)) {
      index = index * network.DefinitionOf(parent)->GetNumberOfOutcomes() + outcomeOf[parent];
    }
    const int outcomes = static_cast<int>(sums[handle].size());
    const int evidence = network.ValueOf(handle)->GetEvidence();
    for (int x = 0; x < outcomes; x++) {
      if (evidence >= 0 && x != evidence) continue;
      long double extended = probability * table[index * outcomes + x];
      if (!likelihoods[handle].empty()) extended *= likelihoods[handle][x];
      if (extended == 0.0L) continue;
      outcomeOf[handle] = x;
      Extend(depth + 1, extended);
    }
  }

  KVN_network& network;
  std::vector<int> order;
  std::vector<int> outcomeOf;  // by handle, like all below
  std::vector<std::vector<double>> likelihoods;
  std::vector<std::vector<long double>> sums;
};

}  // namespace

OracleResult EnumeratePosteriors(KVN_network& network) { return Enumeration(network).Run(); }

testing::AssertionResult PosteriorsNear(KVN_network& network, const OracleResult& expected,
                                        double tolerance) {
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    if (network.GetNumberOfTargets() > 0 && network.IsTarget(h) != 1) continue;
    if (!network.ValueOf(h)->IsValueValid()) {
      return testing::AssertionFailure() << "node " << h << " is not valid";
    }
    const KVN_Dmatrix& value = MatrixOf(network, h);
    const std::vector<double>& posterior = expected.posteriors[h];
    if (value.GetSize() != static_cast<int>(posterior.size())) {
      return testing::AssertionFailure() << "node " << h << " has " << value.GetSize() << " cells";
    }
    for (int x = 0; x < value.GetSize(); x++) {
      if (std::fabs(value[x] - posterior[x]) <= tolerance) continue;
      return testing::AssertionFailure() << "node " << h << " has " << value[x] << " at outcome "
                                         << x << ", expected " << posterior[x];
    }
  }
  return testing::AssertionSuccess();
}
