#include "formats/text/cellBudget.h"

#include <algorithm>

#include "definitions/nodeDefinition.h"
#include "foundation/resultCodes.h"
#include "network/network.h"

namespace {

constexpr std::int64_t kLeftOut = 1 << 24;

/// Cells of a node's table; 0 for the kinds whose numbers don't multiply with the parents.
std::int64_t CellsOf(const KVN_network& network, int handle) {
  switch (network.TypeOf(handle)) {
    case KVN_TYPE_CPT:
    case KVN_TYPE_TRUTHTABLE:
    case KVN_TYPE_TABLE:
    case KVN_TYPE_CAST:
    case KVN_TYPE_DEMORGAN:
      return std::max(network.DefinitionOf(handle)->GetSize(), 0);
    default:
      return 0;
  }
}

std::int64_t OutcomesOf(const KVN_network& network, int handle) {
  const KVN_nodeDefinition* const definition = network.DefinitionOf(handle);
  return definition == nullptr ? 1 : std::max(definition->GetNumberOfOutcomes(), 1);
}

/// Of the node's own table and of those of its children.
std::int64_t GrowthByOutcomes(const KVN_network& network, int handle, int count) {
  std::int64_t cells = CellsOf(network, handle);
  for (int child : network.GetChildren(handle)) cells += CellsOf(network, child);
  const std::int64_t before = OutcomesOf(network, handle);
  return cells / before * (count - before);
}

}  // namespace

void KVN_cellBudget::Start(std::int64_t fileBytes) {
  left = std::min(fileBytes, std::numeric_limits<std::int64_t>::max() - kLeftOut) + kLeftOut;
}

/// What tables shrink by isn't given back: nothing of it is needed, and no file can win by it.
template <typename Change>
int KVN_cellBudget::Spend(std::int64_t growth, Change change) {
  if (growth > left) return KVN_NO_MEMORY;
  const int result = change();
  if (result == 0) left -= std::max(growth, std::int64_t{0});
  return result;
}

int KVN_cellBudget::AddArc(KVN_network& network, int parent, int child, int layer) {
  const bool growsTable = layer == 0 && network.DefinitionOf(parent) != nullptr;
  const std::int64_t growth =
      growsTable ? CellsOf(network, child) * (OutcomesOf(network, parent) - 1) : 0;
  return Spend(growth, [&] { return network.AddArc(parent, child, layer); });
}

int KVN_cellBudget::SetOutcomes(KVN_network& network, int handle, const KVN_stringArray& names) {
  KVN_nodeDefinition& definition = *network.DefinitionOf(handle);
  return Spend(GrowthByOutcomes(network, handle, names.GetNumItems()),
               [&] { return definition.SetNumberOfOutcomes(names); });
}

int KVN_cellBudget::SetOutcomes(KVN_network& network, int handle, int count) {
  KVN_nodeDefinition& definition = *network.DefinitionOf(handle);
  return Spend(GrowthByOutcomes(network, handle, count),
               [&] { return definition.SetNumberOfOutcomes(count); });
}
