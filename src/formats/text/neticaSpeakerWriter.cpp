#include <cstring>

#include "definitions/noisyMAX.h"
#include "definitions/truthTable.h"
#include "formats/text/neticaSpeaker.h"
#include "foundation/doubleArray.h"
#include "foundation/resultCodes.h"
#include "network/creation.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeInfo.h"
#include "network/screenInfo.h"
#include "network/userProperties.h"

namespace {

constexpr int kIndentWidth = 4;

bool HasBlock(int type) {
  return type == KVN_TYPE_TABLE || type == KVN_TYPE_LIST || type == KVN_TYPE_CPT ||
         type == KVN_TYPE_TRUTHTABLE || type == KVN_TYPE_NOISY_MAX;
}

const char* KindOf(int type) {
  if ((type & KVN_TYPE_BIT_DECISION) != 0) return "DECISION";
  return (type & KVN_TYPE_BIT_UTILITY) != 0 ? "UTILITY" : "NATURE";
}

}  // namespace

int KVN_neticaSpeaker::WriteFile(const char* fileName) {
  const KVN_intArray& order = network->GetOrderOfNodes();
  for (int handle : order) {
    if (network->TypeOf(handle) != KVN_TYPE_MAU) continue;
    return ReportError(KVN_REFUSED, "ERROR: This Network cannot be saved in Netica format");
  }
  for (int handle : order) {
    if (HasBlock(network->TypeOf(handle))) continue;
    return ReportError(KVN_REFUSED, "ERROR: Unsupported node type");
  }
  if (int result = outputFile.Open(fileName, KVN_OPEN_TO_WRITE); result < 0) return result;
  (void)outputFile.SetIndentWidth(kIndentWidth);
  PutText("// ~->[DNET-1]->~\n\n");
  const char* const id = network->Header().GetId();
  WriteBlockStart((std::string("bnet ") + (id != nullptr ? id : "_Unnamed_Network_")).c_str());
  WriteHeader();
  for (int handle : order) {
    if (int result = WriteNode(handle); result < 0) {
      outputFile.Discard();
      return ReportError(result, nullptr);
    }
  }
  CloseBlock();
  return outputFile.Close();
}

int KVN_neticaSpeaker::WriteBlockStart(const char* name) {
  if (name == nullptr) return 0;
  outputFile.WriteIndent();
  PutText(name);
  const int result = PutText(" {\n");
  (void)outputFile.IncreaseIndent();  // the format goes three levels deep
  return result;
}

void KVN_neticaSpeaker::CloseBlock() {
  (void)outputFile.DecreaseIndent();
  outputFile.WriteIndent();
  PutText("};\n");
}

void KVN_neticaSpeaker::WriteHeader() {
  const KVN_header& header = network->Header();
  (void)WriteStringStatement("title", header.GetName());
  (void)WriteStringStatement("comment", header.GetComment());
  (void)WriteStringStatement("author", network->Creation().GetCreator());
  WriteBlockStart("visual V1");
  CloseBlock();
}

int KVN_neticaSpeaker::WriteNode(int handle) {
  KVN_node& node = *network->GetNode(handle);
  const int type = network->TypeOf(handle);
  const bool isDiscrete = (type & KVN_TYPE_BIT_DISCRETE) != 0;
  const bool isDeterministic = type == KVN_TYPE_TRUTHTABLE || type == KVN_TYPE_TABLE;
  WriteBlockStart((std::string("node ") + IdOf(handle)).c_str());
  (void)WriteStatement("kind", KindOf(type), false, false);
  (void)WriteBoolStatement("discrete", isDiscrete);
  (void)WriteStatement("chance", isDeterministic ? "DETERMIN" : "CHANCE", false, false);
  (void)WriteStringStatement("title", node.Info().Header().GetName());
  (void)WriteStringStatement("comment", node.Info().Header().GetComment());
  KVN_stringArray parents;
  for (int parent : network->GetParents(handle)) {
    const KVN_node* const other = network->GetNode(parent);
    const char* const id = other != nullptr ? other->GetId() : nullptr;
    if (int result = parents.Add(id != nullptr ? id : "UnknownParent"); result < 0) return result;
  }
  (void)WriteIdentifierListStatement("parents", parents, /*whole=*/false);
  if (int result = WriteDefinition(handle); result < 0) return result;
  WriteUser(node);
  WriteVisual(node.Info().Screen().position);
  CloseBlock();
  return 0;
}

/// It is meant that two kinds go out under words that the reader doesn't know: what is left of a
/// deterministic node are its states, of a gate nothing.
int KVN_neticaSpeaker::WriteDefinition(int handle) {
  KVN_nodeDefinition& definition = *network->DefinitionOf(handle);
  const int type = definition.GetType();
  const KVN_idArray* const names = definition.GetOutcomesNames();
  if (names != nullptr) {
    (void)WriteIdentifierListStatement(type == KVN_TYPE_NOISY_MAX ? "NAMESTATES" : "states", *names,
                                       /*whole=*/false);
  }
  if (type == KVN_TYPE_TRUTHTABLE) {
    KVN_stringArray states;
    const int result = static_cast<KVN_truthTable&>(definition).GetResultingStates(states);
    if (result < 0) return result;
    return WriteIdentifierListStatement("RESULTINGSTATES", states, /*whole=*/false);
  }
  if (type == KVN_TYPE_NOISY_MAX) {
    const KVN_Dmatrix& parameters = static_cast<KVN_noisyMAX&>(definition).GetParameters();
    return WriteDoubleListStatement("PROBABILITIES", parameters.GetItems(), /*whole=*/true);
  }
  if (type == KVN_TYPE_LIST) return 0;
  KVN_Dmatrix* table = nullptr;
  if (int result = definition.GetDefinition(table); result < 0) return result;
  const char* const start = type == KVN_TYPE_CPT ? "probs = " : "functable = ";
  outputFile.WriteIndent();
  PutText(start);
  const int inner = type == KVN_TYPE_CPT ? 1 : 2;
  const int column = static_cast<int>(std::strlen(start));
  if (int result = WriteNestedList(*table, inner, column, /*separator=*/","); result < 0) {
    return result;
  }
  return PutText(";\n");
}

void KVN_neticaSpeaker::WriteUser(KVN_node& node) {
  const KVN_userProperties& properties = node.Info().UserProperties();
  WriteBlockStart("user U1");
  for (int i = 0; i < properties.GetCount(); ++i) {
    const char* const value = properties.GetValue(i);
    (void)WriteStringStatement(properties.GetKey(i), value == nullptr ? "" : value);
  }
  CloseBlock();
}

void KVN_neticaSpeaker::WriteVisual(const KVN_rectangle& place) {
  WriteBlockStart("visual V1");
  KVN_intArray center;
  (void)center.Add(place.center_X);  // two numbers fit into the array itself
  (void)center.Add(place.center_Y);
  (void)WriteIntListStatement("center", center, /*whole=*/false);
  CloseBlock();
}
