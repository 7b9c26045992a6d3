#include "ormel/summary.h"

#include <nlohmann/json.hpp>
#include <vector>

#include "definitions/cast.h"
#include "definitions/ciDefinition.h"
#include "definitions/demorgan.h"
#include "network/network.h"
#include "network/node.h"
#include "network/submodel.h"
#include "network/submodelHandler.h"
#include "ormel/text.h"

namespace {

using Json = nlohmann::ordered_json;

Json TextOrNull(const char* text) { return text == nullptr ? Json() : Json(ToUtf8(text)); }

/// Numbers that the definition keeps. A gate's table isn't asked for: it may be too large to build.
long long CountNumbers(KVN_nodeDefinition& definition) {
  switch (definition.GetType()) {
    case KVN_TYPE_CAST: {
      const auto& gate = static_cast<const KVN_cast&>(definition);
      return gate.GetPositiveWeights().GetNumItems() + gate.GetNegativeWeights().GetNumItems() + 1;
    }
    case KVN_TYPE_DEMORGAN:
      return static_cast<const KVN_demorgan&>(definition).GetParentWeights().GetNumItems() + 1;
    case KVN_TYPE_NOISY_MAX:
    case KVN_TYPE_NOISY_ADDER:
      return static_cast<const KVN_ciDefinition&>(definition).GetParameters().GetSize();
    default:
      return definition.GetSize() > 0 ? definition.GetSize() : 0;
  }
}

/// Sizes of the table that the definition stands for; empty for one without numbers.
std::vector<int> TableShape(KVN_network& network, int handle, KVN_nodeDefinition& definition) {
  std::vector<int> shape;
  if (CountNumbers(definition) == 0) return shape;
  for (int parent : network.GetParents(handle)) {
    const KVN_nodeDefinition* above = network.DefinitionOf(parent);
    const int outcomes = above == nullptr ? 0 : above->GetNumberOfOutcomes();
    if (outcomes > 0) shape.push_back(outcomes);
  }
  const int own = definition.GetNumberOfOutcomes();
  shape.push_back(own > 0 ? own : 1);
  return shape;
}

/// As a double: a gate of forty parents stands for more cells than an integer can count.
double CellsOf(const std::vector<int>& shape) {
  double cells = 1.0;
  for (int size : shape) cells *= size;
  return cells;
}

/// An integer as far as it is exact.
Json NumberOf(double count) {
  constexpr double kExact = 9007199254740992.0;
  return count <= kExact ? Json(static_cast<long long>(count)) : Json(count);
}

Json SubmodelsOf(KVN_network& network) {
  Json ids = Json::array();
  KVN_intArray handles;
  if (network.Submodels().GetDescendants(handles) < 0) return ids;
  for (int handle : handles) {
    if (handle == KVN_ROOT_SUBMODEL) continue;
    ids.push_back(TextOrNull(network.Submodels().GetSubmodel(handle)->Header().GetId()));
  }
  return ids;
}

Json PropertiesOf(KVN_userProperties& properties) {
  Json pairs = Json::object();
  for (int i = 0; i < properties.GetCount(); i++) {
    pairs[ToUtf8(properties.GetKey(i))] = TextOrNull(properties.GetValue(i));
  }
  return pairs;
}

}  // namespace

Json Summarize(KVN_network& network) {
  Json kinds = Json::object();
  Json largest;
  double largestCells = 0.0;
  long long arcs = 0;
  long long costArcs = 0;
  long long numbers = 0;
  for (int handle = network.GetFirstNode(); handle >= 0; handle = network.GetNextNode(handle)) {
    arcs += network.GetNumberOfParents(handle, 0);
    costArcs += network.GetNumberOfParents(handle, 1);
    KVN_nodeDefinition* definition = network.DefinitionOf(handle);
    if (definition == nullptr) continue;
    Json& count = kinds[definition->GetTypeName()];
    count = count.is_null() ? 1 : count.get<int>() + 1;
    numbers += CountNumbers(*definition);
    const std::vector<int> shape = TableShape(network, handle, *definition);
    const double cells = shape.empty() ? 0.0 : CellsOf(shape);
    if (cells <= largestCells) continue;
    largestCells = cells;
    largest = {
        {"node", TextOrNull(network.GetNode(handle)->GetId())},
        {"numbers", NumberOf(cells)},
        {"shape", shape},
    };
  }
  return {
      {"identifier", TextOrNull(network.Header().GetId())},
      {"name", TextOrNull(network.Header().GetName())},
      {"nodes", network.GetNumberOfNodes()},
      {"nodesByKind", kinds},
      {"arcs", arcs},
      {"costArcs", costArcs},
      {"largestTable", largest},
      {"numbers", numbers},
      {"submodels", SubmodelsOf(network)},
      {"properties", PropertiesOf(network.UserProperties())},
  };
}
