#include "ormel/definitionContent.h"

#include <algorithm>

#include "definitions/cast.h"
#include "definitions/demorgan.h"
#include "definitions/mau.h"
#include "definitions/noisyAdder.h"
#include "definitions/noisyMAX.h"
#include "expressions/equation.h"

std::vector<double> NumbersOf(KVN_nodeDefinition& definition, bool asTable) {
  std::vector<double> numbers;
  const auto take = [&numbers](const KVN_doubleArray& list) {
    numbers.insert(numbers.end(), list.GetItems(), list.GetItems() + UsedCount(list));
  };
  switch (asTable ? KVN_TYPE_NONE : definition.GetType()) {
    case KVN_TYPE_CAST: {
      const auto& gate = static_cast<const KVN_cast&>(definition);
      take(gate.GetPositiveWeights());
      take(gate.GetNegativeWeights());
      numbers.push_back(gate.GetBaseline());
      break;
    }
    case KVN_TYPE_DEMORGAN: {
      const auto& gate = static_cast<const KVN_demorgan&>(definition);
      take(gate.GetParentWeights());
      numbers.push_back(gate.GetPriorBelief());
      break;
    }
    case KVN_TYPE_NOISY_MAX:
      take(static_cast<const KVN_noisyMAX&>(definition).GetParameters().GetItems());
      break;
    case KVN_TYPE_NOISY_ADDER:
      take(static_cast<const KVN_noisyAdder&>(definition).GetParameters().GetItems());
      take(static_cast<const KVN_noisyAdder&>(definition).GetWeights());
      break;
    case KVN_TYPE_EQUATION: {
      const auto& equation = static_cast<const KVN_equation&>(definition);
      numbers = {equation.GetLowerBound(), equation.GetUpperBound()};
      for (const KVN_discInterval& interval : equation.GetDiscIntervals()) {
        numbers.push_back(interval.upper);
      }
      break;
    }
    case KVN_TYPE_LIST:        // its choice values have a check of their own
    case KVN_TYPE_TRUTHTABLE:  // written as names
      break;
    default: {
      KVN_Dmatrix* table = nullptr;
      if (definition.GetDefinition(table) == 0) take(table->GetItems());
      break;
    }
  }
  return numbers;
}

Rows RowsOf(KVN_nodeDefinition& definition) {
  KVN_Dmatrix* table = nullptr;
  const int outcomes = definition.GetNumberOfOutcomes();
  if (definition.GetDefinition(table) != 0 || outcomes < 1) return Rows::kExact;
  Rows worst = Rows::kExact;
  for (int start = 0; start + outcomes <= table->GetSize(); start += outcomes) {
    int ones = 0;
    int others = 0;
    for (int i = 0; i < outcomes; i++) {
      const double cell = (*table)[start + i];
      if (cell == 1.0) ones++;
      if (cell != 0.0 && cell != 1.0) others++;
    }
    if (ones == 0) return Rows::kOpen;
    if (ones > 1 || others > 0) worst = Rows::kInexact;
  }
  return worst;
}

bool HasUsualWeights(KVN_mau& utility) {
  KVN_Dmatrix* weights = nullptr;
  if (utility.GetDefinition(weights) != 0) return true;
  return std::all_of(weights->GetData(), weights->GetData() + weights->GetSize(),
                     [](double weight) { return weight == 1.0; });
}

bool HasFirstStates(KVN_nodeDefinition& definition) {
  KVN_Dmatrix* table = nullptr;
  const int outcomes = definition.GetNumberOfOutcomes();
  if (definition.GetDefinition(table) != 0 || outcomes < 1) return false;
  for (int i = 0; i < table->GetSize(); i++) {
    if ((*table)[i] != (i % outcomes == 0 ? 1.0 : 0.0)) return false;
  }
  return true;
}
