#include <algorithm>
#include <cstring>
#include <string_view>

#include "definitions/nodeDefinition.h"
#include "formats/text/huginSpeaker.h"
#include "foundation/doubleArray.h"
#include "foundation/intArray.h"
#include "foundation/numberText.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeInfo.h"
#include "network/screenInfo.h"
#include "network/submodelHandler.h"
#include "network/userProperties.h"

namespace {

// A reader takes a line in pieces of 32,000 bytes and can't join a string over the seam.
constexpr int kMaxStringLine = 10000;
constexpr const char* kData = "data = ";

const char* WordOf(int type) {
  switch (type) {
    case KVN_TYPE_LIST:
      return "decision ";
    case KVN_TYPE_TABLE:
      return "utility ";
    default:
      return "node ";
  }
}

/// Attributes that mean something else to a reader, which does not mind the case of letters.
bool IsReserved(std::string_view key) {
  for (std::string_view word : {"label", "position", "states"}) {
    // The bit turns capitals into small letters, and nothing else into a letter.
    if (std::equal(key.begin(), key.end(), word.begin(), word.end(),
                   [](char a, char b) { return (a | 0x20) == b; })) {
      return true;
    }
  }
  return false;
}

KVN_intArray PairOf(int first, int second) {
  KVN_intArray pair;
  (void)pair.Add(first);  // two numbers fit into the array itself
  (void)pair.Add(second);
  return pair;
}

}  // namespace

int KVN_huginSpeaker::WriteFile(const char* fileName) {
  const KVN_intArray& order = network->GetOrderOfNodes();
  if (int result = CheckWritable(order, "ERROR: This Network cannot be saved in Hugin format",
                                 "ERROR: '%s' : Node type not supported by Hugin");
      result < 0) {
    return result;
  }
  if (int result = StartFile(fileName); result < 0) return result;
  WriteNet();
  const long long top = TopEdge();
  for (int handle : order) WriteNode(handle, top);
  for (int handle : order) {
    if (int result = WritePotential(handle); result < 0) {
      outputFile.Discard();
      return ReportError(result, nullptr);
    }
  }
  return outputFile.Close();
}

int KVN_huginSpeaker::WriteIdentifierList(const KVN_stringArray& list, bool whole) {
  const int count = whole ? list.GetSize() : list.GetNumItems();
  PutText("(");
  for (int i = 0; i < count; ++i) {
    if (i > 0) PutText(outputFile.GetColumn() > kMaxStringLine ? "\n" : " ");
    PutQuoted(list.GetString(i) == nullptr ? "" : list.GetString(i));
  }
  return PutText(")");
}

int KVN_huginSpeaker::WriteDoubleList(const KVN_doubleArray& list, bool whole) {
  const int count = whole ? list.GetSize() : list.GetNumItems();
  PutText("(");
  for (int i = 0; i < count; ++i) {
    if (i > 0) PutText(" ");
    PutNumber(list[i]);
  }
  return PutText(")");
}

int KVN_huginSpeaker::WriteIntList(const KVN_intArray& list, bool whole) {
  const int count = whole ? list.GetSize() : list.GetNumItems();
  char text[kNumberTextSize];
  PutText("(");
  for (int i = 0; i < count; ++i) {
    if (i > 0) PutText(" ");
    IntToText(list[i], text);
    PutText(text);
  }
  return PutText(")");
}

int KVN_huginSpeaker::WriteStatement(const char* name, const char* value, bool quoted,
                                     bool escaped) {
  return PutStatement(name, " = ", value, quoted, escaped);
}

int KVN_huginSpeaker::WriteBlockStart(const char* name) {
  if (name == nullptr) return 0;
  outputFile.WriteIndent();
  PutText(name);
  const int result = PutText(" {\n");
  (void)outputFile.IncreaseIndent();
  return result;
}

void KVN_huginSpeaker::WriteNet() {
  const KVN_rectangle& rectangle = network->Submodels().NodeDefaults().position;
  OpenBlock("net ", "");
  (void)WriteIntListStatement("node_size", PairOf(rectangle.width, rectangle.height), false);
  CloseBlock();
}

void KVN_huginSpeaker::WriteNode(int handle, long long top) {
  KVN_node& node = *network->GetNode(handle);
  const KVN_nodeDefinition& definition = *node.Definition();
  const KVN_rectangle& rectangle = node.Info().Screen().position;
  PutText("\n");
  OpenBlock(WordOf(definition.GetType()), IdentifierOf(handle));
  (void)WriteStringStatement("label", node.Info().Header().GetName());
  (void)WriteIntListStatement("position", PairOf(rectangle.center_X, Flip(top, rectangle.center_Y)),
                              false);
  if (const KVN_idArray* names = definition.GetOutcomesNames(); names != nullptr) {
    (void)WriteIdentifierListStatement("states", *names, /*whole=*/false);
  }
  WriteProperties(node);
  CloseBlock();
}

void KVN_huginSpeaker::WriteProperties(KVN_node& node) {
  const KVN_userProperties& properties = node.Info().UserProperties();
  for (int i = 0; i < properties.GetCount(); ++i) {
    const char* const key = properties.GetKey(i);
    const char* const value = properties.GetValue(i);
    if (IsReserved(key)) {
      (void)ReportText(KVN_REFUSED, "ERROR: '%s' : Property not supported by Hugin", key);
      continue;
    }
    (void)WriteStringStatement(key, value == nullptr ? "" : value);
  }
}

int KVN_huginSpeaker::WritePotential(int handle) {
  PutText("\npotential (");
  PutText(IdentifierOf(handle));
  PutText(" |");
  for (int parent : network->GetParents(handle)) {
    PutText(" ");
    PutText(IdentifierOf(parent));
  }
  OpenBlock(")", "");
  const int type = network->TypeOf(handle);
  if (type != KVN_TYPE_LIST) {
    KVN_Dmatrix* table = nullptr;
    if (int result = network->DefinitionOf(handle)->GetDefinition(table); result < 0) return result;
    outputFile.WriteIndent();
    PutText(kData);
    const int inner = type == KVN_TYPE_TABLE ? 2 : 1;
    const int column = static_cast<int>(std::strlen(kData));
    if (int result = WriteNestedList(*table, inner, column, /*separator=*/""); result < 0) {
      return result;
    }
    PutText(";\n");
  }
  CloseBlock();
  return 0;
}
