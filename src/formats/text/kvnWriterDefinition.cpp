#include "definitions/cast.h"
#include "definitions/noisyMAX.h"
#include "definitions/truthTable.h"
#include "formats/text/kvnSpeaker.h"
#include "foundation/dmatrix.h"
#include "foundation/intArray.h"
#include "foundation/numberText.h"
#include "foundation/stringArray.h"
#include "network/extraDefinition.h"
#include "network/network.h"

namespace {

const char* WordOfDiagnosisType(int type) {
  switch (type) {
    case KVN_DIAGNOSIS_TARGET:
      return "TARGET";
    case KVN_DIAGNOSIS_OBSERVATION:
      return "OBSERVATION";
    case KVN_DIAGNOSIS_AUXILIARY:
      return "AUXILIARY";
    default:
      return nullptr;
  }
}

}  // namespace

/// Kinds without a statement of their own leave the block empty: the format can't carry them.
void KVN_kvnSpeaker::WriteDefinition(KVN_nodeDefinition& definition) {
  (void)WriteBlockStart("DEFINITION");
  KVN_Dmatrix* matrix = nullptr;
  switch (definition.GetType()) {
    case KVN_TYPE_TABLE:
      if (definition.GetDefinition(matrix) == 0) {
        (void)WriteDoubleListStatement("UTILITIES", matrix->GetItems(), /*whole=*/true);
      }
      break;
    case KVN_TYPE_MAU:
      if (definition.GetDefinition(matrix) == 0) {
        (void)WriteDoubleListStatement("WEIGHTS", matrix->GetItems(), /*whole=*/true);
      }
      break;
    case KVN_TYPE_LIST:
      (void)WriteIdentifierListStatement("NAMECHOICES", *definition.GetOutcomesNames(), false);
      break;
    case KVN_TYPE_CPT:
      WriteStateNames(definition);
      if (definition.GetDefinition(matrix) == 0) {
        (void)WriteDoubleListStatement("PROBABILITIES", matrix->GetItems(), /*whole=*/true);
      }
      break;
    case KVN_TYPE_TRUTHTABLE: {
      WriteStateNames(definition);
      KVN_stringArray states;
      if (Note(static_cast<KVN_truthTable&>(definition).GetResultingStates(states)) == 0) {
        (void)WriteIdentifierListStatement("RESULTINGSTATES", states, /*whole=*/false);
      }
      break;
    }
    case KVN_TYPE_CAST: {
      KVN_cast& cast = static_cast<KVN_cast&>(definition);
      (void)WriteDoubleListStatement("PWEIGHTS", cast.GetPositiveWeights(), /*whole=*/false);
      (void)WriteDoubleListStatement("NWEIGHTS", cast.GetNegativeWeights(), /*whole=*/false);
      char number[kNumberTextSize];
      DoubleToText(cast.GetBaseline(), number);
      (void)WriteStatement("BASELINE", number, /*quoted=*/true, /*escaped=*/false);
      break;
    }
    case KVN_TYPE_NOISY_MAX: {
      KVN_noisyMAX& gate = static_cast<KVN_noisyMAX&>(definition);
      WriteStateNames(definition);
      WriteStrengths(gate);
      (void)WriteDoubleListStatement("PROBABILITIES", gate.GetParameters().GetItems(),
                                     /*whole=*/true);
      break;
    }
    default:
      break;
  }
  (void)WriteBlockEnd();
}

void KVN_kvnSpeaker::WriteStateNames(KVN_nodeDefinition& definition) {
  (void)WriteIdentifierListStatement("NAMESTATES", *definition.GetOutcomesNames(),
                                     /*whole=*/false);
}

/// For each parent in order the rank of each state: the inverse of what the gate keeps.
void KVN_kvnSpeaker::WriteStrengths(KVN_noisyMAX& definition) {
  KVN_intArray flat;
  for (int i = 0; definition.GetStrengths(i) != nullptr; ++i) {
    const KVN_intArray& strengths = *definition.GetStrengths(i);
    for (int state = 0; state < strengths.GetNumItems(); ++state) {
      if (Note(flat.Add(strengths.FindPosition(state))) != 0) return;
    }
  }
  (void)WriteIntListStatement("STRENGTHS", flat, /*whole=*/false);
}

void KVN_kvnSpeaker::WriteExtraDefinition(KVN_extraDefinition& extra) {
  (void)WriteBlockStart("EXTRA_DEFINITION");
  (void)WriteStatement("DIAGNOSIS_TYPE", WordOfDiagnosisType(extra.GetDiagnosisType()),
                       /*quoted=*/false, /*escaped=*/false);
  (void)WriteBoolStatement("RANKED", extra.GetRanked() != 0);
  (void)WriteBoolStatement("MANDATORY", extra.GetMandatory() != 0);
  (void)WriteBoolStatement("SETASDEFAULT", extra.GetSetAsDefault() != 0);
  (void)WriteIntStatement("SHOWAS", extra.GetShowAs());
  (void)WriteIntListStatement("FAULT_STATES", extra.GetFaultStates(), /*whole=*/false);
  (void)WriteStringListStatement("FAULT_NAMES", extra.GetFaultNames(), /*whole=*/false);
  (void)WriteStringListStatement("FAULT_LABELS", extra.GetFaultLabels(), /*whole=*/false);
  (void)WriteIntStatement("DEFAULT_STATE", extra.GetDefaultOutcome());
  for (int i = 0; i < extra.GetOutcomeCount(); ++i) {
    if (KVN_documentation* documents = extra.GetStateDocumentation(i); documents != nullptr) {
      WriteDocumentation(*documents);
    }
  }
  (void)WriteStringListStatement("STATECOMMENTS", extra.GetStateComments(), /*whole=*/false);
  (void)WriteStringListStatement("STATEREPAIRINFO", extra.GetStateRepairInfo(), /*whole=*/false);
  (void)WriteStringStatement("QUESTION", extra.GetQuestion());
  (void)WriteBlockEnd();
}
