#include <cstdio>

#include "definitions/cast.h"
#include "definitions/cpt.h"
#include "definitions/noisyMAX.h"
#include "formats/text/kvnSpeaker.h"
#include "foundation/dmatrix.h"
#include "foundation/doubleArray.h"
#include "foundation/intArray.h"
#include "foundation/numberText.h"
#include "foundation/resultCodes.h"
#include "foundation/stringArray.h"
#include "network/extraDefinition.h"
#include "network/network.h"
#include "network/node.h"

namespace {

/// The numbers from `last` down to 0.
KVN_intArray Descending(int last) {
  KVN_intArray order;
  for (int i = last; i >= 0; --i) (void)order.Add(i);  // a short order is refused by its user
  return order;
}

/// The strengths that make a noisy-AND parent out of a noisy-OR one. It is meant that the last
/// outcome moves to the front and the others stay as they are: of two outcomes the first is the
/// distinguished one then, of more the last but one.
KVN_intArray LastOutcomeFirst(int outcomes) {
  KVN_intArray order;
  (void)order.Add(outcomes - 1);
  for (int i = 0; i < outcomes - 1; ++i) (void)order.Add(i);
  return order;
}

}  // namespace

template <typename List, typename Reader, typename Setter>
int KVN_kvnSpeaker::ReadListStatement(const char* name, List& list, Reader reader, Setter setter) {
  if (int result = ReadAssignment(name); result != 0) return result;
  if (int result = reader(list); result != 0) return result;
  return ReportError(setter(), nullptr);
}

int KVN_kvnSpeaker::ReadDefinition(KVN_node& node) {
  if (int result = ReadAssignment("DEFINITION"); result != 0) return result;
  // Without a TYPE there is nothing to read into; the recovery skips the whole block, since its
  // brace isn't consumed yet.
  if (node.Definition() == nullptr) return ReportError(KVN_REFUSED, nullptr);
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "{"); result != 0) return result;
  return ReadBlockBody([&] { return ReadDefinitionStatement(*node.Definition()); });
}

int KVN_kvnSpeaker::ReadDefinitionStatement(KVN_nodeDefinition& definition) {
  KVN_stringArray names;
  KVN_doubleArray numbers;
  KVN_intArray ints;
  auto ids = [this](KVN_stringArray& list) { return ReadIdentifierList(list); };
  auto doubles = [this](KVN_doubleArray& list) { return ReadDoubleList(list); };
  auto setNames = [&] { return budget.SetOutcomes(*network, definition.GetHandle(), names); };
  auto setNumbers = [&] { return definition.SetDefinition(numbers); };
  KVN_cast* cast =
      definition.GetType() == KVN_TYPE_CAST ? static_cast<KVN_cast*>(&definition) : nullptr;
  return FirstOf(
      [&] { return ReadListStatement("NAMESTATES", names, ids, setNames); },
      [&] {
        return ReadListStatement("PROBABILITIES", numbers, doubles,
                                 [&] { return SetProbabilities(definition, numbers); });
      },
      [&] {
        return ReadListStatement("RESULTINGSTATES", names, ids,
                                 [&] { return definition.SetDefinition(names); });
      },
      [&] { return ReadListStatement("NAMECHOICES", names, ids, setNames); },
      [&] { return ReadListStatement("UTILITIES", numbers, doubles, setNumbers); },
      [&] { return ReadListStatement("WEIGHTS", numbers, doubles, setNumbers); },
      [&] {
        return ReadListStatement("PWEIGHTS", numbers, doubles, [&] {
          return cast == nullptr ? KVN_NOT_APPLICABLE : cast->SetPositiveWeights(numbers);
        });
      },
      [&] {
        return ReadListStatement("NWEIGHTS", numbers, doubles, [&] {
          return cast == nullptr ? KVN_NOT_APPLICABLE : cast->SetNegativeWeights(numbers);
        });
      },
      [&] {
        // A string on purpose: the number may be one of the reserved texts.
        return ReadText("BASELINE", KVN_TOKEN_STRING, [&](const char* text) {
          double value = 0.0;
          int result = TextToDouble(text, value);
          if (result == 0) result = cast == nullptr ? KVN_NOT_APPLICABLE : cast->SetBaseline(value);
          return ReportError(result, nullptr);
        });
      },
      [&] {
        if (int result = ReadAssignment("STRENGTHS"); result != 0) return result;
        if (int result = ReadIntList(ints); result != 0) return result;
        return SetStrengths(definition, ints);
      },
      [&] { return ReportUnknown("Definition Statement"); });
}

int KVN_kvnSpeaker::SetProbabilities(KVN_nodeDefinition& definition,
                                     const KVN_doubleArray& values) {
  switch (definition.GetType()) {
    case KVN_TYPE_NOISY_MAX: {
      KVN_noisyMAX& gate = static_cast<KVN_noisyMAX&>(definition);
      if (noisyOrMode != 0) return gate.SetLegacyProbabilities(values);
      if (noisyAndMode != 0) return SetNoisyAnd(gate, values);
      return gate.SetDefinition(values);
    }
    case KVN_TYPE_CPT:
    case KVN_TYPE_TRUTHTABLE:
      // The operation that counts: a table of the wrong size must not pass in silence.
      return static_cast<KVN_cpt&>(definition).SetProbabilities(values);
    default:
      return definition.SetDefinition(values);
  }
}

/// The numbers of a noisy-AND are those of a noisy-OR with every order reversed.
int KVN_kvnSpeaker::SetNoisyAnd(KVN_noisyMAX& definition, const KVN_doubleArray& values) {
  int outcomes = definition.GetNumberOfOutcomes();
  const KVN_intArray& parents = network->GetParents(definition.GetHandle());
  int rows = definition.GetParameters().GetSizeOfDimension(0) - parents.GetNumItems();
  int sizes[] = {rows, outcomes};
  KVN_Dmatrix table;
  if (int result = table.Setup(sizes, 2); result < 0) return result;
  if (UsedCount(values) != table.GetSize()) return KVN_REFUSED;
  table.GetItems().CopyItems(values);

  const KVN_intArray reversed = Descending(outcomes - 1);
  if (int result = definition.ChangeOrderOfOutcomes(reversed); result != 0) return result;
  for (int i = 0; definition.GetStrengths(i) != nullptr; ++i) {
    KVN_intArray order = LastOutcomeFirst(definition.GetStrengths(i)->GetNumItems());
    if (int result = definition.SetParentOutcomeStrengths(i, order); result != 0) return result;
  }
  if (int result = table.ChangeOrderWithinDimension(1, reversed); result != 0) return result;
  return definition.SetLegacyProbabilities(table.GetItems());
}

int KVN_kvnSpeaker::SetStrengths(KVN_nodeDefinition& definition, const KVN_intArray& flat) {
  if (definition.GetType() != KVN_TYPE_NOISY_MAX) return ReportError(KVN_NOT_APPLICABLE, nullptr);
  KVN_noisyMAX& gate = static_cast<KVN_noisyMAX&>(definition);
  int start = 0;
  for (int i = 0; gate.GetStrengths(i) != nullptr; ++i) {
    int outcomes = gate.GetStrengths(i)->GetNumItems();
    KVN_intArray inverse;
    bool consistent = start + outcomes <= flat.GetNumItems();
    // The file has the rank of each state; the gate wants the states by rank.
    for (int rank = 0; consistent && rank < outcomes; ++rank) {
      int state = 0;
      while (state < outcomes && flat[start + state] != rank) ++state;
      consistent = state < outcomes && inverse.Add(state) == 0;
    }
    if (!consistent || gate.SetParentOutcomeStrengths(i, inverse) != 0) {
      std::snprintf(errorMessage, sizeof errorMessage,
                    "ERROR: NoisyMAX strengths are inconsistent for parent %d", i);
      return ReportError(KVN_SYNTAX_ERROR, errorMessage);
    }
    start += outcomes;
  }
  return 0;
}

int KVN_kvnSpeaker::ReadExtraDefinition(KVN_node& node) {
  if (int result = ReadAssignment("EXTRA_DEFINITION"); result != 0) return result;
  if (node.ExtraDefinition() == nullptr) return ReportError(KVN_REFUSED, nullptr);
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "{"); result != 0) return result;
  return ReadBlockBody([&] { return ReadExtraStatement(*node.ExtraDefinition()); });
}

int KVN_kvnSpeaker::ReadExtraStatement(KVN_extraDefinition& extra) {
  KVN_stringArray texts;
  KVN_intArray flags;
  auto strings = [this](KVN_stringArray& list) { return ReadStringList(list); };
  auto countedTexts = [&](const char* name, const char* message, auto setter) {
    if (int result = ReadAssignment(name); result != 0) return result;
    if (int result = ReadStringList(texts); result != 0) return result;
    if (extra.GetOutcomeCount() < 1) return 0;
    return ReportError(setter() != 0 ? KVN_REFUSED : 0, message);
  };
  return FirstOf(
      [&] { return ReadDiagnosisType(extra); },
      [&] { return ReadBool("RANKED", [&](int flag) { extra.SetRanked(flag); }); },
      [&] { return ReadBool("MANDATORY", [&](int flag) { extra.SetMandatory(flag); }); },
      [&] { return ReadBool("SETASDEFAULT", [&](int flag) { extra.SetSetAsDefault(flag); }); },
      [&] { return ReadInt("SHOWAS", [&](int mode) { extra.SetShowAs(mode); }); },
      [&] {
        return ReadListStatement(
            "FAULT_STATES", flags, [this](KVN_intArray& list) { return ReadIntList(list); },
            [&] { return extra.SetFaultStates(flags); });
      },
      [&] {
        return ReadListStatement("FAULT_NAMES", texts, strings,
                                 [&] { return extra.SetFaultNames(texts); });
      },
      [&] {
        return ReadListStatement("FAULT_LABELS", texts, strings,
                                 [&] { return extra.SetFaultLabels(texts); });
      },
      [&] {
        int outcome = 0;
        if (int result = ReadIntStatement("DEFAULT_STATE", outcome); result != 0) return result;
        if (extra.GetOutcomeCount() < 1) return 0;
        return ReportError(extra.SetDefaultOutcome(outcome), nullptr);
      },
      [&] { return ReadStateDocumentation(extra); },
      [&] {
        return countedTexts("STATECOMMENTS", "Wrong number of state comments",
                            [&] { return extra.SetStateComments(texts); });
      },
      [&] {
        return countedTexts("STATEREPAIRINFO", "Wrong number of repair comments",
                            [&] { return extra.SetStateRepairInfo(texts); });
      },
      [&] {
        return ReadText("QUESTION", KVN_TOKEN_STRING, [&](const char* text) {
          return ReportError(extra.SetQuestion(text), nullptr);
        });
      },
      // The same words as for a definition: intended.
      [&] { return ReportUnknown("Definition Statement"); });
}

int KVN_kvnSpeaker::ReadDiagnosisType(KVN_extraDefinition& extra) {
  return ReadText("DIAGNOSIS_TYPE", KVN_TOKEN_IDENTIFIER, [&](const char*) {
    int type = KVN_DIAGNOSIS_AUXILIARY;  // also for any word that isn't known
    if (TokenIs("TARGET") != 0) type = KVN_DIAGNOSIS_TARGET;
    if (TokenIs("OBSERVATION") != 0) type = KVN_DIAGNOSIS_OBSERVATION;
    extra.SetDiagnosisType(type);
    return 0;
  });
}

int KVN_kvnSpeaker::ReadStateDocumentation(KVN_extraDefinition& extra) {
  KVN_documentation* documentation = extra.GetStateDocumentation(stateDocumentationIndex);
  if (documentation == nullptr) {
    // Beyond the last state: the recovery skips the block, whose brace isn't consumed yet.
    if (int result = ReadAssignment("DOCUMENTATION"); result != 0) return result;
    return ReportError(KVN_REFUSED, nullptr);
  }
  int result = ReadDocumentation(*documentation);
  if (result != KVN_NOT_THIS_STATEMENT) ++stateDocumentationIndex;
  return result;
}
