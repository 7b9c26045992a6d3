#include "formats/text/microsoftSpeaker.h"

#include <algorithm>
#include <new>

#include "definitions/nodeDefinition.h"
#include "foundation/doubleArray.h"
#include "foundation/intArray.h"
#include "foundation/stringArray.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"

namespace {

const char* const kNetworkWords[] = {"diagnostic", "belief", "trouble", nullptr};

/// Words that begin a table, with the type that they make of the node.
struct TableWord {
  const char* word;
  int type;
};
constexpr TableWord kTableWords[] = {
    {"probability", KVN_TYPE_CPT},
    {"utility", KVN_TYPE_TABLE},
    {"information", KVN_TYPE_LIST},
};

}  // namespace

int KVN_microsoftSpeaker::ReadFile(const char* fileName) {
  if (int result = OpenLexer(fileName, KVN_LEXICAL_MICROSOFT); result < 0) return result;
  lexer->AddWhitespace(",|");
  if (PeekInList(kNetworkWords) == 1) {
    ReadNetwork();
  } else {
    (void)ReportToken("ERROR: '%s' : 'belief network' expected");
  }
  CloseLexer();
  return 0;
}

int KVN_microsoftSpeaker::ReadIdentifierList(KVN_stringArray& list) { return ReadStringRun(list); }

int KVN_microsoftSpeaker::ReadDoubleList(KVN_doubleArray& list) { return ReadNumberRun(list); }

int KVN_microsoftSpeaker::ReadIntList(KVN_intArray& list) {
  return ReadBracketed([&] { return ReadIntegerRun(list); });
}

int KVN_microsoftSpeaker::ReadStatement(const char* name, int type) {
  return ReadStatementWith(name, ":", type);
}

/// A fault in the first line costs the network's name only.
void KVN_microsoftSpeaker::ReadNetwork() {
  ConsumeToken();
  if (RequireToken(KVN_TOKEN_IDENTIFIER, "network") == 0 &&
      RequireToken(KVN_TOKEN_STRING, nullptr) == 0) {
    (void)network->Header().SetName(tokenText);  // without memory the network stays without a name
  }
  while (PeekToken() == 0) ReadObject();
}

void KVN_microsoftSpeaker::ReadObject() {
  const auto* row = std::find_if(std::begin(kTableWords), std::end(kTableWords),
                                 [this](const TableWord& w) { return TokenIs(w.word) == 1; });
  const bool isNode = TokenIs("node") == 1;
  if (isNode || row != std::end(kTableWords)) {
    ConsumeToken();
    if ((isNode ? ReadNode() : ReadTable(row->type)) < 0) SkipBlock();
  } else {
    (void)ReportToken("ERROR: '%s' : Unknown Object");
    SkipToBrace();
  }
  (void)AcceptToken(KVN_TOKEN_PUNCTUATOR, ";");
}

int KVN_microsoftSpeaker::ReadNode() {
  nodeType = KVN_TYPE_CPT;
  const int handle = CreateNode();
  if (handle < 0) return handle;
  bool hasType = false;
  const int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "{");
  if (result == 0) ReadStatements([&] { return ReadNodeStatement(handle, hasType); });
  FinishNode(handle, result == 0 && (hasType || nodeType == KVN_TYPE_TABLE));
  return result;
}

int KVN_microsoftSpeaker::ReadNodeStatement(int handle, bool& hasType) {
  KVN_node& node = *network->GetNode(handle);
  int result = ReadLabel(node);
  if (result == KVN_NOT_THIS_STATEMENT) result = ReadName(node);
  if (result == KVN_NOT_THIS_STATEMENT) result = ReadPosition(node);
  if (result == KVN_NOT_THIS_STATEMENT) result = ReadType(node, hasType);
  return result;
}

/// Any other label is a label and no more.
int KVN_microsoftSpeaker::ReadLabel(KVN_node& node) {
  if (int result = ReadStatement("label", KVN_TOKEN_IDENTIFIER); result != 0) return result;
  const int type = TokenIs("decision") == 1  ? KVN_TYPE_LIST
                   : TokenIs("utility") == 1 ? KVN_TYPE_TABLE
                                             : KVN_TYPE_NONE;
  if (type == KVN_TYPE_NONE) return 0;
  nodeType = type;
  return ReportError(node.ChangeType(type), nullptr);
}

int KVN_microsoftSpeaker::ReadName(KVN_node& node) {
  if (int result = ReadStatement("name", KVN_TOKEN_STRING); result != 0) return result;
  return ReportError(node.SetName(tokenText), nullptr);
}

int KVN_microsoftSpeaker::ReadPosition(KVN_node& node) {
  if (AcceptToken(KVN_TOKEN_IDENTIFIER, "position") != 0) return KVN_NOT_THIS_STATEMENT;
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, ":"); result < 0) return result;
  KVN_intArray point;
  if (int result = ReadIntList(point); result < 0) return result;
  return SetPosition(node, point);
}

int KVN_microsoftSpeaker::ReadType(KVN_node& node, bool& hasType) {
  if (AcceptToken(KVN_TOKEN_IDENTIFIER, "type") != 0) return KVN_NOT_THIS_STATEMENT;
  int count = 0;
  KVN_stringArray names;
  if (int result = ReadStates(count, names); result < 0) return result;
  if (names.GetNumItems() != count) {
    (void)ReportNumber(
        KVN_REFUSED, "ERROR: '%d' : Size of list doesn't match number of outcomes. Using list size",
        count);
  }
  if (node.Definition() == nullptr || SetOutcomes(*node.Definition(), names) < 0) {
    return ReportNumber(KVN_REFUSED, "ERROR: '%d' : Couldn't set the number of outcomes",
                        names.GetNumItems());
  }
  hasType = true;
  return 0;
}

/// `: discrete[n] = { "a", "b" }`
int KVN_microsoftSpeaker::ReadStates(int& count, KVN_stringArray& names) {
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, ":"); result < 0) return result;
  if (int result = RequireToken(KVN_TOKEN_IDENTIFIER, "discrete"); result < 0) return result;
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "["); result < 0) return result;
  if (ReadInteger(count) < 0) return ReportToken("ERROR: '%s' : Expecting number of states");
  for (const char* text : {"]", "=", "{"}) {
    if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, text); result < 0) return result;
  }
  if (int result = ReadIdentifierList(names); result < 0) return result;
  return RequireToken(KVN_TOKEN_PUNCTUATOR, "}");
}

/// A table of which some cells are set and others aren't is told; one without any statement stands
/// for the default, as for the information that a decision has.
int KVN_microsoftSpeaker::ReadTable(int type) {
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "("); result < 0) return result;
  const int child = FindChild();
  if (child < 0) return child;
  if (int result = network->GetNode(child)->ChangeType(type); result < 0) {
    return ReportError(result, "ERROR: Unknown Node Type");
  }
  if (int result = ReadParents(child); result < 0) return result;
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "{"); result < 0) return result;
  CellMarks marks;
  ReadStatements([&] { return ReadRow(child, marks); });
  const int cells = network->DefinitionOf(child)->GetSize();
  if (marks.count > 0 && marks.count < cells) (void)ReportCellCount(child, marks.count, cells);
  return 0;
}

/// Numbers go into the table from the row's position on, as far as there are cells. A row that ends
/// in the middle of a distribution, or beyond the table, is told.
int KVN_microsoftSpeaker::ReadRow(int child, CellMarks& marks) {
  KVN_Dmatrix* table = nullptr;
  if (int result = network->DefinitionOf(child)->GetDefinition(table); result < 0) {
    return ReportError(result, nullptr);
  }
  int start = 0;
  bool hasCoordinates = false;
  if (int result = ReadRowStart(*table, start, hasCoordinates); result < 0) return result;
  KVN_doubleArray numbers;
  if (int result = ReadDoubleList(numbers); result < 0) return result;

  const int cells = table->GetSize();
  if (marks.isSet == nullptr) marks.isSet.reset(new (std::nothrow) bool[cells]());
  if (marks.isSet == nullptr) return ReportError(KVN_NO_MEMORY, nullptr);
  const int found = numbers.GetNumItems();
  const int count = std::min(found, cells - start);
  for (int i = 0; i < count; ++i) {
    (*table)[start + i] = numbers[i];
    marks.count += marks.isSet[start + i] ? 0 : 1;
    marks.isSet[start + i] = true;
  }
  const int rowSize = table->GetSizeOfDimension(table->GetNumberOfDimensions() - 1);
  const bool isWhole = found > 0 && found % rowSize == 0 && found == count;
  return isWhole ? 0 : ReportCellCount(child, found, hasCoordinates ? rowSize : cells);
}

/// `(i, j, ...) :`, one index for each parent, or a number. `start` becomes the flat index of the
/// row, 0 where no coordinates stand.
int KVN_microsoftSpeaker::ReadRowStart(const KVN_Dmatrix& table, int& start, bool& hasCoordinates) {
  hasCoordinates = PeekIsOpenParenthesis() == 1;
  if (!hasCoordinates) {
    return PeekIsNumber() == 1 ? 0 : ReportToken("ERROR: '%s' : Unknown Node Statement");
  }
  KVN_intArray coordinates;
  int result = ReadIntList(coordinates);
  if (result == 0) result = coordinates.Add(0);  // the child's first outcome
  if (result < 0 || coordinates.GetNumItems() != table.GetNumberOfDimensions() ||
      !table.IsInRange(coordinates)) {
    return ReportError(KVN_REFUSED, "ERROR: Invalid coordinates");
  }
  start = table.IndexOf(coordinates);
  return RequireToken(KVN_TOKEN_PUNCTUATOR, ":");
}
