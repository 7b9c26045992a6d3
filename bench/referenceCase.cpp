#include "bench/referenceCase.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "definitions/nodeDefinition.h"
#include "values/nodeValue.h"

namespace {

using Json = nlohmann::ordered_json;  // the order of the states counts

/// The references were computed on normalised rows, and some files miss a sum of 1 by some 1e-7.
bool NormalizeTables(KVN_network& network) {
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    KVN_Dmatrix* table = nullptr;
    if (network.DefinitionOf(h)->GetDefinition(table) != 0) return false;
    table->Normalize();
  }
  return true;
}

}  // namespace

bool ReadReferenceCase(const std::string& name, ReferenceCase& made) {
  const std::filesystem::path folder = KVN_NETWORKS;
  if (made.network.ReadFile((folder / (name + ".net")).c_str()) != 0) return false;
  if (!NormalizeTables(made.network)) return false;
  std::ifstream file(folder.parent_path() / "posteriors" / (name + ".evid.json"));
  const Json root = Json::parse(file, nullptr, /*allow_exceptions=*/false);
  if (root.is_discarded()) return false;
  made.expected.resize(static_cast<std::size_t>(made.network.GetSize()));
  for (const auto& [id, states] : root["posteriors"].items()) {
    const int handle = made.network.FindNode(id.c_str());
    if (handle < 0) return false;
    int outcome = 0;
    for (const auto& [state, probability] : states.items()) {
      made.expected[handle].push_back(probability.get<double>());
      if (root["evidence"].value(id, "") == state) {
        if (made.network.ValueOf(handle)->SetEvidence(outcome) != 0) return false;
      }
      outcome++;
    }
  }
  return true;
}

PosteriorErrors CompareWithReference(const ReferenceCase& measured) {
  PosteriorErrors errors;
  int cells = 0;
  const KVN_network& network = measured.network;
  for (int h = network.GetFirstNode(); h >= 0; h = network.GetNextNode(h)) {
    KVN_nodeValue& value = *network.ValueOf(h);
    const std::vector<double>& expected = measured.expected[h];
    if (value.HasEvidence() || expected.empty()) continue;
    KVN_Dmatrix* posterior = nullptr;
    if (value.GetValue(posterior) != 0 ||
        posterior->GetSize() != static_cast<int>(expected.size())) {
      errors.isComplete = false;
      continue;
    }
    errors.isComplete &= value.IsValueValid();
    for (int k = 0; k < posterior->GetSize(); k++) {
      const double error = std::fabs((*posterior)[k] - expected[k]);
      errors.largest = std::max(errors.largest, error);
      errors.meanSquare += error * error;
      cells++;
    }
  }
  if (cells > 0) errors.meanSquare /= cells;
  return errors;
}
