#include <algorithm>

#include "definitions/nodeDefinition.h"
#include "formats/text/microsoftSpeaker.h"
#include "foundation/doubleArray.h"
#include "foundation/intArray.h"
#include "foundation/numberText.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeInfo.h"
#include "network/screenInfo.h"

namespace {

const char* TableWordOf(int type) {
  switch (type) {
    case KVN_TYPE_LIST:
      return "information (";
    case KVN_TYPE_TABLE:
      return "utility (";
    default:
      return "probability (";
  }
}

}  // namespace

int KVN_microsoftSpeaker::WriteFile(const char* fileName) {
  const KVN_intArray& order = network->GetOrderOfNodes();
  if (int result = CheckWritable(order, "ERROR: This Network cannot be saved in Microsotf format",
                                 "ERROR: '%s' : Node type not supported by MSBN");
      result < 0) {
    return result;
  }
  if (int result = StartFile(fileName); result < 0) return result;
  const char* const name = network->Header().GetName();
  PutText("belief network ");
  PutQuoted(name == nullptr ? "_Unnamed_Network_" : name);
  PutText("\n");
  for (int handle : order) WriteNode(handle);
  for (int handle : order) {
    if (int result = WriteTable(handle); result < 0) {
      outputFile.Discard();
      return ReportError(result, nullptr);
    }
  }
  return outputFile.Close();
}

/// One string a line. The comma after the last one is as good as a blank to a reader.
int KVN_microsoftSpeaker::WriteIdentifierList(const KVN_stringArray& list, bool whole) {
  const int count = whole ? list.GetSize() : list.GetNumItems();
  int result = 0;
  for (int i = 0; i < count; ++i) {
    outputFile.WriteIndent();
    PutQuoted(list.GetString(i) == nullptr ? "" : list.GetString(i));
    result = PutText(",\n");
  }
  return result;
}

int KVN_microsoftSpeaker::WriteDoubleList(const KVN_doubleArray& list, bool whole) {
  const int count = whole ? list.GetSize() : list.GetNumItems();
  int result = 0;
  for (int i = 0; i < count; ++i) {
    if (i > 0) PutText(" ");
    result = PutNumber(list[i]);
  }
  return result;
}

int KVN_microsoftSpeaker::WriteIntListStatement(const char* name, const KVN_intArray& list,
                                                bool whole) {
  if (name == nullptr) return 0;
  const int count = whole ? list.GetSize() : list.GetNumItems();
  char text[kNumberTextSize];
  outputFile.WriteIndent();
  PutText(name);
  PutText(" : (");
  for (int i = 0; i < count; ++i) {
    if (i > 0) PutText(" ");
    IntToText(list[i], text);
    PutText(text);
  }
  return PutText(");\n");
}

int KVN_microsoftSpeaker::WriteStatement(const char* name, const char* value, bool quoted,
                                         bool escaped) {
  return PutStatement(name, " : ", value, quoted, escaped);
}

int KVN_microsoftSpeaker::WriteBlockStart(const char* name) {
  if (name != nullptr) OpenBlock(name, "");
  return outputFile.GetStatus();
}

void KVN_microsoftSpeaker::WriteNode(int handle) {
  KVN_node& node = *network->GetNode(handle);
  const KVN_nodeDefinition& definition = *node.Definition();
  const KVN_rectangle& rectangle = node.Info().Screen().position;
  OpenBlock("node ", IdentifierOf(handle));
  (void)WriteStringStatement("name", node.Info().Header().GetName());
  if (definition.GetType() == KVN_TYPE_TABLE)
    (void)WriteStatement("label", "utility", false, false);
  if (definition.GetType() == KVN_TYPE_LIST)
    (void)WriteStatement("label", "decision", false, false);
  // A utility has no states, and a reader could not set any.
  if (const KVN_idArray* names = definition.GetOutcomesNames(); names != nullptr) WriteType(*names);
  KVN_intArray point;
  (void)point.Add(rectangle.center_X);  // two numbers fit into the array itself
  (void)point.Add(rectangle.center_Y);
  (void)WriteIntListStatement("position", point, /*whole=*/false);
  CloseBlock();
}

void KVN_microsoftSpeaker::WriteType(const KVN_idArray& names) {
  char count[kNumberTextSize];
  IntToText(names.GetNumItems(), count);
  outputFile.WriteIndent();
  PutText("type : discrete[");
  PutText(count);
  PutText("] = \n");
  outputFile.WriteIndent();
  PutText("{\n");
  (void)outputFile.IncreaseIndent();
  (void)WriteIdentifierList(names, /*whole=*/false);
  (void)outputFile.DecreaseIndent();
  outputFile.WriteIndent();
  PutText("};\n");
}

int KVN_microsoftSpeaker::WriteTable(int handle) {
  const int type = network->TypeOf(handle);
  const KVN_intArray& parents = network->GetParents(handle);
  PutText(TableWordOf(type));
  PutText(IdentifierOf(handle));
  if (parents.GetNumItems() > 0) PutText(" |");
  for (int i = 0; i < parents.GetNumItems(); ++i) {
    PutText(i > 0 ? ", " : " ");
    PutText(IdentifierOf(parents[i]));
  }
  OpenBlock(")", "");
  if (type != KVN_TYPE_LIST) {
    KVN_Dmatrix* table = nullptr;
    if (int result = network->DefinitionOf(handle)->GetDefinition(table); result < 0) return result;
    if (int result = WriteRows(*table); result < 0) return result;
  }
  CloseBlock();
  return 0;
}

/// A row per parent configuration. A table without parents has one row, without coordinates.
int KVN_microsoftSpeaker::WriteRows(const KVN_Dmatrix& table) {
  const int parents = table.GetNumberOfDimensions() - 1;
  const int rowSize = parents < 0 ? 1 : table.GetSizeOfDimension(parents);
  char text[kNumberTextSize];
  KVN_intArray coordinates;
  KVN_doubleArray row;
  if (int result = row.SetSize(rowSize); result < 0) return result;
  row.UseAsList(rowSize);
  for (int start = 0; start < table.GetSize(); start += rowSize) {
    if (int result = table.CoordinatesOf(start, coordinates); result < 0) return result;
    outputFile.WriteIndent();
    for (int i = 0; i < parents; ++i) {
      PutText(i == 0 ? "(" : ", ");
      IntToText(coordinates[i], text);
      PutText(text);
    }
    if (parents > 0) PutText(") : ");
    std::copy_n(table.GetData() + start, rowSize, row.begin());
    (void)WriteDoubleList(row, /*whole=*/false);
    PutText(";\n");
  }
  return 0;
}
