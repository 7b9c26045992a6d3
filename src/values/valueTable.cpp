// The one place that knows which value class goes with which kind of definition.

#include <memory>
#include <new>

#include "definitions/nodeDefinition.h"
#include "values/beliefVector.h"
#include "values/expectedUtility.h"
#include "values/listOfDecisions.h"
#include "values/mauExpectedUtility.h"
#include "values/valEqEvaluation.h"
#include "values/valcontinuous.h"

namespace {

// Value type code for a definition type code; 0 where no class stands.
int ValueTypeFor(int definitionType) {
  switch (definitionType) {
    case KVN_TYPE_TABLE:
      return KVN_VALUE_EXPECTED_UTILITY;
    case KVN_TYPE_MAU:
      return KVN_VALUE_MAU_EXPECTED_UTILITY;
    case KVN_TYPE_LIST:
      return KVN_VALUE_LIST_OF_DECISIONS;
    case KVN_TYPE_CPT:
    case KVN_TYPE_TRUTHTABLE:
    case KVN_TYPE_CAST:
    case KVN_TYPE_DEMORGAN:
    case KVN_TYPE_NOISY_MAX:
    case KVN_TYPE_NOISY_ADDER:
    case KVN_TYPE_DCHILD_HPARENT:
      return KVN_VALUE_BELIEF_VECTOR;
    case KVN_TYPE_EQUATION:
    case KVN_TYPE_EQUATION_SCC:
      return KVN_VALUE_EQUATION;
    case KVN_TYPE_DISTRIBUTION:
    case KVN_TYPE_H_EQUATION:
      return KVN_VALUE_CONTINUOUS;
    default:
      return 0;
  }
}

// A value without a shape.
KVN_nodeValue* MakeValue(int valueType, KVN_network* network, int handle) {
  switch (valueType) {
    case KVN_VALUE_BELIEF_VECTOR:
      return new (std::nothrow) KVN_beliefVector(network, handle);
    case KVN_VALUE_EXPECTED_UTILITY:
      return new (std::nothrow) KVN_expectedUtility(network, handle);
    case KVN_VALUE_MAU_EXPECTED_UTILITY:
      return new (std::nothrow) KVN_mauExpectedUtility(network, handle);
    case KVN_VALUE_LIST_OF_DECISIONS:
      return new (std::nothrow) KVN_listOfDecisions(network, handle);
    case KVN_VALUE_EQUATION:
      return new (std::nothrow) KVN_valEqEvaluation(network, handle);
    case KVN_VALUE_CONTINUOUS:
      return new (std::nothrow) KVN_valcontinuous(network, handle);
    default:
      return nullptr;
  }
}

}  // namespace

bool HasValueClass(int definitionType) { return ValueTypeFor(definitionType) != 0; }

KVN_nodeValue* NewValue(int definitionType, KVN_network* network, int handle) {
  KVN_nodeValue* made = MakeValue(ValueTypeFor(definitionType), network, handle);
  // A node whose definition is missing gets a value that isn't ready; the node isn't either. The
  // values of continuous nodes have no shape to make.
  if (made != nullptr) (void)made->ReCreate();
  return made;
}

KVN_nodeValue* CloneValue(KVN_nodeValue& source) {
  // The value of a hybrid node isn't copied with its node (intended).
  if (source.GetType() == KVN_VALUE_CONTINUOUS) return nullptr;
  std::unique_ptr<KVN_nodeValue> made(
      MakeValue(source.GetType(), source.GetNetwork(), source.GetHandle()));
  if (made == nullptr || made->Assign(source) < 0) return nullptr;
  return made.release();
}
