#include "values/mauExpectedUtility.h"

#include "definitions/mau.h"
#include "foundation/numberText.h"
#include "foundation/resultCodes.h"
#include "network/network.h"

int KVN_mauExpectedUtility::ComputeFromParents() {
  matrix.FillWith(KVN_UNDEFINED_VALUE);
  if (int result = Prepare(); result < 0) return result;
  KVN_intArray coordinates;
  if (int result = coordinates.SetSize(matrix.GetNumberOfDimensions()); result < 0) return result;
  std::vector<double> numbers(inputs.size());
  int cell = 0;
  do {
    for (std::size_t k = 0; k < inputs.size(); k++) {
      int index = 0;
      for (std::size_t d = 0; d < inputs[k].strides.size(); d++) {
        index += inputs[k].strides[d] * coordinates[static_cast<int>(d)];
      }
      numbers[k] = (*inputs[k].cells)[index];
    }
    const int row = SelectRow(coordinates, definition->GetRowMultipliers());
    if (row >= 0) matrix[cell] = CombineInputs(numbers, row);
    cell++;
  } while (matrix.NextCoordinates(coordinates) == 0);
  return KVN_SUCCESS;
}

int KVN_mauExpectedUtility::Prepare() {
  inputs.clear();
  selectors.clear();
  if (network == nullptr || network->TypeOf(handle) != KVN_TYPE_MAU) return KVN_REFUSED;
  if (matrix.GetNumberOfDimensions() != indexingParents.GetNumItems() + 1) return KVN_REFUSED;
  definition = static_cast<KVN_mau*>(network->DefinitionOf(handle));
  if (!definition->NumbersFit()) return KVN_REFUSED;
  for (int parent : network->GetParents(handle)) {
    const KVN_nodeValue* value = network->ValueOf(parent);
    if (value == nullptr) return KVN_REFUSED;
    if (network->TypeOf(parent) == KVN_TYPE_LIST) {
      selectors.push_back({indexingParents.FindPosition(parent), value->GetEvidence()});
    } else if (int result = PrepareInput(parent); result < 0) {
      return result;
    }
  }
  return KVN_SUCCESS;
}

int KVN_mauExpectedUtility::PrepareInput(int parent) {
  KVN_nodeValue* value = network->ValueOf(parent);
  const int type = value->GetType();
  if (type != KVN_VALUE_EXPECTED_UTILITY && type != KVN_VALUE_MAU_EXPECTED_UTILITY) {
    return KVN_SUCCESS;  // adds nothing
  }
  KVN_Dmatrix* cells = nullptr;
  if (int result = value->GetValue(cells); result < 0) return result;
  const KVN_intArray& indexing = value->GetIndexingParents();
  if (cells->GetNumberOfDimensions() != indexing.GetNumItems() + 1) return KVN_REFUSED;
  Input input{cells, std::vector<int>(indexingParents.GetNumItems(), 0)};
  for (int i = 0; i < indexing.GetNumItems(); i++) {
    const int dimension = indexingParents.FindPosition(indexing[i]);
    if (dimension < 0) return KVN_REFUSED;
    if (cells->GetSizeOfDimension(i) != matrix.GetSizeOfDimension(dimension)) return KVN_REFUSED;
    input.strides[dimension] = cells->GetMultipliers()[i];
  }
  inputs.push_back(std::move(input));
  return KVN_SUCCESS;
}

int KVN_mauExpectedUtility::SelectRow(const KVN_intArray& coordinates,
                                      const KVN_intArray& multipliers) const {
  int row = 0;
  for (std::size_t i = 0; i < selectors.size(); i++) {
    const auto [dimension, choice] = selectors[i];
    const int outcome = dimension >= 0 ? coordinates[dimension] : choice;
    if (outcome < 0) return KVN_REFUSED;
    row += outcome * multipliers[static_cast<int>(i)];
  }
  return row;
}

double KVN_mauExpectedUtility::CombineInputs(const std::vector<double>& numbers, int row) const {
  for (double number : numbers) {
    if (number == KVN_UNDEFINED_VALUE) return number;
  }
  return definition->Combine(numbers.data(), static_cast<int>(numbers.size()), row);
}
