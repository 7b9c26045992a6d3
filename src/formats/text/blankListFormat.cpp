#include "formats/text/blankListFormat.h"

#include <cstdio>
#include <cstring>

#include "definitions/nodeDefinition.h"
#include "foundation/doubleArray.h"
#include "foundation/intArray.h"
#include "foundation/numberText.h"
#include "foundation/stringArray.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeInfo.h"
#include "network/screenInfo.h"

namespace {

constexpr int kIndentWidth = 4;
constexpr int kMaxQuoted = 10210;  // bytes of a text; a reader's token holds one more

/// Types that have a block in either format.
bool HasBlock(int type) {
  switch (type) {
    case KVN_TYPE_TABLE:
    case KVN_TYPE_LIST:
    case KVN_TYPE_CPT:
    case KVN_TYPE_TRUTHTABLE:
    case KVN_TYPE_NOISY_MAX:
    case KVN_TYPE_NOISY_ADDER:
      return true;
    default:
      return false;
  }
}

/// Only a lack of memory ends the reading of a list.
int UnlessNoMemory(int result) { return result == KVN_NO_MEMORY ? result : 0; }

}  // namespace

// Skipping.

int KVN_blankListFormat::SkipStatement() {
  int depth = 0;
  while (true) {
    if (int result = PeekToken(); result < 0) return ReportError(result, nullptr);
    if (tokenType == KVN_TOKEN_PUNCTUATOR) {
      if (*tokenText == '{') ++depth;
      if (*tokenText == '}' && --depth == -1) (void)ReportToken("ERROR: '%s' : ';' expected");
      if (*tokenText == ';' && depth == 0) return 0;
    }
    ConsumeToken();
  }
}

void KVN_blankListFormat::SkipBlock() {
  int depth = 0;
  while (PeekToken() == 0) {
    const bool isPunctuator = tokenType == KVN_TOKEN_PUNCTUATOR;
    ConsumeToken();
    if (!isPunctuator) continue;
    if (*tokenText == '{') ++depth;
    if (*tokenText == '}' && --depth <= 0) return;
  }
}

void KVN_blankListFormat::SkipToBrace() {
  while (PeekToken() == 0) {
    const bool isBrace = tokenType == KVN_TOKEN_PUNCTUATOR && *tokenText == '}';
    ConsumeToken();
    if (isBrace) return;
  }
}

// Lists.

int KVN_blankListFormat::ReadStringRun(KVN_stringArray& list) {
  if (!list.IsReady()) return KVN_NOT_READY;
  while (PeekIsString() == 1) {
    if (int result = UnlessNoMemory(list.Add(tokenText)); result < 0) return result;
    ConsumeToken();
  }
  return 0;
}

int KVN_blankListFormat::ReadNumberRun(KVN_doubleArray& list) {
  while (PeekIsNumber() == 1) {
    double value = 0.0;
    if (int result = ReadDouble(value); result < 0) return ReportError(result, nullptr);
    if (int result = UnlessNoMemory(list.Add(value)); result < 0) return result;
  }
  return 0;
}

int KVN_blankListFormat::ReadIntegerRun(KVN_intArray& list) {
  while (PeekIsInteger() == 1) {
    int value = 0;
    if (int result = ReadInteger(value); result < 0) return ReportError(result, nullptr);
    if (int result = UnlessNoMemory(list.Add(value)); result < 0) return result;
  }
  return 0;
}

int KVN_blankListFormat::ReadPointRun(KVN_intArray& list) {
  while (PeekIsNumber() == 1) {
    int value = 0;
    (void)TextToInt(tokenText, value);
    if (int result = UnlessNoMemory(list.Add(value)); result < 0) return result;
    ConsumeToken();
  }
  return 0;
}

// Messages.

int KVN_blankListFormat::ReportCellCount(int child, int found, int expected) {
  std::snprintf(errorMessage, sizeof errorMessage,
                "ERROR: Node (\"%s\") : %d numbers found, %d expected", IdentifierOf(child), found,
                expected);
  return ReportError(KVN_REFUSED, errorMessage);
}

// Nodes.

int KVN_blankListFormat::CreateNode() {
  if (int result = RequireToken(KVN_TOKEN_IDENTIFIER, nullptr); result < 0) return result;
  const int handle = network->AddNode(nodeType, tokenText);
  if (handle >= 0 && network->DefinitionOf(handle) != nullptr) return handle;
  if (handle >= 0) (void)network->DeleteNode(handle);  // memory was short: it can't be worked with
  return ReportText(handle < 0 ? handle : int{KVN_NO_MEMORY},
                    "ERROR: Couldn't Create Node (\"%s\")", tokenText);
}

void KVN_blankListFormat::FinishNode(int handle, bool isWhole) {
  const KVN_nodeDefinition* const definition = network->DefinitionOf(handle);
  if (isWhole && definition != nullptr && definition->IsReady()) return;
  (void)ReportText(KVN_NOT_READY, "ERROR: Node not ready (valid). Node (\"%s\") deleted",
                   IdentifierOf(handle));
  (void)network->DeleteNode(handle);
}

int KVN_blankListFormat::SetOutcomes(KVN_nodeDefinition& definition, const KVN_stringArray& names) {
  const int count = names.GetNumItems();
  if (count == 0) return KVN_REFUSED;
  const int handle = definition.GetHandle();
  if (int result = budget.SetOutcomes(*network, handle, names); result < 0) return result;
  if (definition.GetNumberOfOutcomes() > count) {
    (void)ReportText(KVN_REFUSED, "ERROR: Node (\"%s\") : Two states needed, one added",
                     IdentifierOf(handle));
  }
  return 0;
}

int KVN_blankListFormat::SetPosition(KVN_node& node, const KVN_intArray& point) {
  if (point.GetNumItems() < 2) return ReportError(KVN_REFUSED, "ERROR: Wrong position coordinates");
  KVN_rectangle& rectangle = node.Info().Screen().position;
  rectangle.center_X = point[0];
  rectangle.center_Y = point[1];
  return 0;
}

int KVN_blankListFormat::FindChild() {
  if (int result = RequireToken(KVN_TOKEN_IDENTIFIER, nullptr); result < 0) return result;
  const int handle = network->FindNode(tokenText);
  if (handle >= 0) return handle;
  return ReportText(handle, "ERROR: Node (\"%s\") not found", tokenText);
}

int KVN_blankListFormat::ReadParents(int child) {
  while (AcceptToken(KVN_TOKEN_IDENTIFIER, nullptr) == 0) {
    const int result = budget.AddArc(*network, network->FindNode(tokenText), child, /*layer=*/0);
    if (result < 0) {
      (void)ReportText(result, "ERROR: Couldn't add arc from parent node (\"%s\")", tokenText);
    }
  }
  return RequireToken(KVN_TOKEN_PUNCTUATOR, ")");
}

const char* KVN_blankListFormat::IdentifierOf(int handle) const {
  const KVN_node* const node = network->GetNode(handle);
  const char* const id = node == nullptr ? nullptr : node->GetId();
  return id == nullptr ? "_Unnamed_Node_" : id;
}

// Writing.

int KVN_blankListFormat::CheckWritable(const KVN_intArray& order, const char* networkMessage,
                                       const char* typeMessage) {
  if (order.GetNumItems() < network->GetNumberOfNodes()) return ReportError(KVN_NO_MEMORY, nullptr);
  for (int handle : order) {
    if (network->TypeOf(handle) == KVN_TYPE_MAU) return ReportError(KVN_REFUSED, networkMessage);
  }
  for (int handle : order) {
    if (HasBlock(network->TypeOf(handle))) continue;
    const KVN_nodeDefinition* const definition = network->DefinitionOf(handle);
    return ReportText(KVN_REFUSED, typeMessage,
                      definition == nullptr ? nullptr : definition->GetTypeName());
  }
  return 0;
}

int KVN_blankListFormat::StartFile(const char* fileName) {
  if (int result = outputFile.Open(fileName, KVN_OPEN_TO_WRITE); result < 0) return result;
  return outputFile.SetIndentWidth(kIndentWidth);
}

int KVN_blankListFormat::PutQuoted(const char* text) {
  char cut[kMaxQuoted + 1];
  char escaped[2 * kMaxQuoted + 1];
  std::snprintf(cut, sizeof cut, "%s", text);
  EscapeString(cut, escaped);
  PutText("\"");
  PutText(escaped);
  return PutText("\"");
}

int KVN_blankListFormat::PutStatement(const char* name, const char* separator, const char* value,
                                      bool quoted, bool escaped) {
  if (name == nullptr || value == nullptr) return 0;
  outputFile.WriteIndent();
  PutText(name);
  PutText(separator);
  if (quoted && escaped) {
    PutQuoted(value);
  } else {
    if (quoted) PutText("\"");
    PutText(value);
    if (quoted) PutText("\"");
  }
  return PutText(";\n");
}

void KVN_blankListFormat::OpenBlock(const char* word, const char* name) {
  PutText(word);
  PutText(name);
  PutText("\n{\n");
  (void)outputFile.IncreaseIndent();  // these formats go one or two levels deep
}

void KVN_blankListFormat::CloseBlock() {
  (void)outputFile.DecreaseIndent();
  PutText("}\n");
}
