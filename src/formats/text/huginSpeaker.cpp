#include "formats/text/huginSpeaker.h"

#include <algorithm>
#include <limits>

#include "definitions/nodeDefinition.h"
#include "foundation/doubleArray.h"
#include "foundation/intArray.h"
#include "foundation/stringArray.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeInfo.h"
#include "network/screenInfo.h"
#include "network/submodelHandler.h"
#include "network/userProperties.h"

namespace {

// Of all these only node_size is used; the others are settings of a program's windows and are
// dropped on purpose.
const char* const kNetStatements[] = {"node_size",
                                      "HR_Monitor_InitSD",
                                      "HR_Monitor_InitStates",
                                      "HR_Monitor_OpenGraph",
                                      "HR_Monitor_GraphPrecision",
                                      "HR_Monitor_AutoUpdGraph",
                                      "HR_Compile_ApproxEpsilon",
                                      "HR_Compile_Approximate",
                                      "HR_Compile_Compress",
                                      "HR_Compile_TriangMethod",
                                      "HR_Propagate_AutoNormal",
                                      "HR_Propagate_AutoSum",
                                      "HR_Propagate_Auto",
                                      "HR_Font_Italic",
                                      "HR_Font_Weight",
                                      "HR_Font_Size",
                                      "HR_Font_Name",
                                      "HR_Grid_GridShow",
                                      "HR_Grid_GridSnap",
                                      "HR_Grid_Y",
                                      "HR_Grid_X",
                                      "HRUNTIME_Monitor_InitStates",
                                      "HRUNTIME_Monitor_OpenGraph",
                                      "HRUNTIME_Monitor_GraphPrecision",
                                      "HRUNTIME_Monitor_AutoUpdGraph",
                                      "HRUNTIME_Compile_ApproxEpsilon",
                                      "HRUNTIME_Compile_Approximate",
                                      "HRUNTIME_Compile_Compress",
                                      "HRUNTIME_Compile_TriangMethod",
                                      "HRUNTIME_Propagate_AutoNormal",
                                      "HRUNTIME_Propagate_AutoSum",
                                      "HRUNTIME_Propagate_Auto",
                                      "HRUNTIME_Font_Italic",
                                      "HRUNTIME_Font_Weight",
                                      "HRUNTIME_Font_Size",
                                      "HRUNTIME_Font_Name",
                                      "HRUNTIME_Grid_GridShow",
                                      "HRUNTIME_Grid_GridSnap",
                                      "HRUNTIME_Grid_Y",
                                      "HRUNTIME_Grid_X",
                                      nullptr};

const char* const kNodeWords[] = {"discrete", "continuous", "node", "decision", "utility", nullptr};

bool IsEmpty(const char* text) { return text == nullptr || *text == '\0'; }

}  // namespace

int KVN_huginSpeaker::ReadFile(const char* fileName) {
  if (int result = OpenLexer(fileName, KVN_LEXICAL_HUGIN); result < 0) return result;
  if (PeekIs("net") == 1) {
    ReadNetwork();
  } else {
    (void)ReportToken("ERROR: '%s' : 'net' expected");
  }
  const long long top = TopEdge();
  for (int handle = network->GetFirstNode(); handle >= 0; handle = network->GetNextNode(handle)) {
    int& y = network->GetNode(handle)->Info().Screen().position.center_Y;
    y = Flip(top, y);
  }
  NormalizeTables();
  CloseLexer();
  return 0;
}

int KVN_huginSpeaker::ReadIdentifierList(KVN_stringArray& list) {
  if (!list.IsReady()) return KVN_NOT_READY;
  return ReadBracketed([&] { return ReadStringRun(list); });
}

int KVN_huginSpeaker::ReadDoubleList(KVN_doubleArray& list) {
  return ReadBracketed([&] { return ReadNumberRun(list); });
}

/// All nodes come before all potentials: what comes behind the last potential is told and left.
void KVN_huginSpeaker::ReadNetwork() {
  ConsumeToken();
  if (RequireToken(KVN_TOKEN_PUNCTUATOR, "{") == 0) {
    ReadStatements([this] { return ReadNetStatement(); });
  } else {
    SkipBlock();
  }
  while (PeekInList(kNodeWords) == 1) {
    if (ReadNode() < 0) SkipBlock();
  }
  while (PeekIs("potential") == 1) {
    if (ReadPotential() < 0) SkipBlock();
  }
  if (PeekToken() == 0) (void)ReportToken("ERROR: '%s' : 'potential' expected");
}

int KVN_huginSpeaker::ReadNetStatement() {
  if (PeekInList(kNetStatements) != 1) return ReportToken("ERROR: '%s' : Unknown Net Statement");
  if (TokenIs("node_size") == 1) return ReadNodeSize();
  (void)SkipStatement();  // its failure is the end of the file, which ends the block too
  return 0;
}

int KVN_huginSpeaker::ReadNodeSize() {
  ConsumeToken();
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "="); result < 0) return result;
  KVN_intArray sizes;
  if (int result = ReadBracketed([&] { return ReadPointRun(sizes); }); result < 0) return result;
  if (sizes.GetNumItems() < 2) return ReportError(KVN_REFUSED, "ERROR: Wrong node size");
  KVN_rectangle& rectangle = network->Submodels().NodeDefaults().position;
  rectangle.width = sizes[0];
  rectangle.height = sizes[1];
  return 0;
}

int KVN_huginSpeaker::ReadNode() {
  if (int result = ReadNodeType(); result < 0) return result;
  const int handle = CreateNode();
  if (handle < 0) return handle;
  bool hasStates = false;
  const int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "{");
  if (result == 0) {
    ReadStatements([&] { return ReadNodeStatement(handle, hasStates); });
    KVN_node& node = *network->GetNode(handle);
    if (IsEmpty(node.Info().Header().GetName())) {
      (void)ReportError(node.SetName(node.GetId()), nullptr);  // memory: told, and reading goes on
    }
  }
  FinishNode(handle, result == 0 && (hasStates || nodeType == KVN_TYPE_TABLE));
  return result;
}

int KVN_huginSpeaker::ReadNodeType() {
  if (PeekIs("continuous") == 1) {
    // The node is read as a discrete one all the same: it stays if it has states.
    (void)ReportError(KVN_SYNTAX_ERROR, "ERROR: : Continuous nodes not supported (yet)");
    ConsumeToken();
  } else if (TokenIs("discrete") == 1) {
    ConsumeToken();
  }
  if (int result = PeekToken(); result < 0) return ReportError(result, nullptr);
  nodeType = TokenIs("node") == 1       ? KVN_TYPE_CPT
             : TokenIs("decision") == 1 ? KVN_TYPE_LIST
             : TokenIs("utility") == 1  ? KVN_TYPE_TABLE
                                        : KVN_TYPE_NONE;
  if (nodeType == KVN_TYPE_NONE) return ReportToken("ERROR: '%s' : Unknown Node Type");
  ConsumeToken();
  return 0;
}

int KVN_huginSpeaker::ReadNodeStatement(int handle, bool& hasStates) {
  KVN_node& node = *network->GetNode(handle);
  int result = ReadLabel(node);
  if (result == KVN_NOT_THIS_STATEMENT) result = ReadPosition(node);
  if (result == KVN_NOT_THIS_STATEMENT) result = ReadStates(node, hasStates);
  if (result == KVN_NOT_THIS_STATEMENT) result = ReadProperty(node);
  return result;
}

int KVN_huginSpeaker::ReadLabel(KVN_node& node) {
  if (int result = ReadStatement("label", KVN_TOKEN_STRING); result != 0) return result;
  return ReportError(node.SetName(tokenText), nullptr);
}

int KVN_huginSpeaker::ReadPosition(KVN_node& node) {
  if (AcceptToken(KVN_TOKEN_IDENTIFIER, "position") != 0) return KVN_NOT_THIS_STATEMENT;
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "="); result < 0) return result;
  KVN_intArray point;
  if (int result = ReadBracketed([&] { return ReadPointRun(point); }); result < 0) return result;
  return SetPosition(node, point);
}

int KVN_huginSpeaker::ReadStates(KVN_node& node, bool& hasStates) {
  if (AcceptToken(KVN_TOKEN_IDENTIFIER, "states") != 0) return KVN_NOT_THIS_STATEMENT;
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "="); result < 0) return result;
  KVN_stringArray names;
  if (int result = ReadIdentifierList(names); result < 0) return result;
  if (int result = SetOutcomes(*node.Definition(), names); result < 0) {
    return ReportError(result, nullptr);
  }
  hasStates = true;
  return 0;
}

/// An attribute with a text becomes a user property; one with another value is not this statement.
int KVN_huginSpeaker::ReadProperty(KVN_node& node) {
  if (AcceptToken(KVN_TOKEN_IDENTIFIER, nullptr) != 0) return KVN_NOT_THIS_STATEMENT;
  const char* const key = tokenText;  // stays valid over the two tokens that follow
  if (AcceptToken(KVN_TOKEN_PUNCTUATOR, "=") != 0) return KVN_NOT_THIS_STATEMENT;
  if (AcceptToken(KVN_TOKEN_STRING, nullptr) != 0) return KVN_NOT_THIS_STATEMENT;
  return ReportError(std::min(node.Info().UserProperties().AddProperty(key, tokenText), 0),
                     nullptr);
}

int KVN_huginSpeaker::ReadPotential() {
  ConsumeToken();
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "("); result < 0) return result;
  const int child = FindChild();
  if (child < 0) return child;
  if (AcceptToken(KVN_TOKEN_PUNCTUATOR, "|") != 0 && PeekIsIdentifier() == 1) {
    return ReportError(KVN_SYNTAX_ERROR, "ERROR: Undirected arcs not (yet) supported");
  }
  if (int result = ReadParents(child); result < 0) return result;
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "{"); result < 0) return result;
  ReadStatements([&] { return ReadPotentialStatement(child); });
  return 0;
}

int KVN_huginSpeaker::ReadPotentialStatement(int child) {
  if (AcceptToken(KVN_TOKEN_IDENTIFIER, "data") != 0) {
    return ReportToken("ERROR: '%s' : Unknown potential statement");
  }
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "="); result < 0) return result;
  KVN_doubleArray numbers;
  if (int result = ReadNestedList(numbers); result < 0) return result;
  return StoreNumbers(child, numbers);
}

int KVN_huginSpeaker::ReadNestedList(KVN_doubleArray& numbers) {
  int depth = 0;
  do {
    double number = 0.0;
    if (AcceptToken(KVN_TOKEN_PUNCTUATOR, "(") == 0) {
      ++depth;
    } else if (depth == 0) {
      return RequireToken(kNoClass, nullptr);
    } else if (PeekIsNumber() == 1) {
      // A sign and a point make a token of this class too, and no number.
      if (int result = ReadDouble(number); result < 0) return ReportError(result, nullptr);
      if (numbers.Add(number) == KVN_NO_MEMORY) return ReportError(KVN_NO_MEMORY, nullptr);
    } else if (AcceptToken(KVN_TOKEN_PUNCTUATOR, ")") == 0) {
      --depth;
    } else {
      return RequireToken(kNoClass, nullptr);
    }
  } while (depth > 0);
  return 0;
}

/// Numbers that are too few or too many go as far as there are both, and the log tells it.
int KVN_huginSpeaker::StoreNumbers(int child, const KVN_doubleArray& numbers) {
  KVN_nodeDefinition* const definition = network->DefinitionOf(child);
  if (definition == nullptr) return ReportError(KVN_REFUSED, nullptr);
  KVN_Dmatrix* table = nullptr;
  const int result = definition->GetDefinition(table);
  if (result < 0) return numbers.GetNumItems() == 0 ? 0 : ReportError(result, nullptr);
  if (numbers.GetNumItems() != table->GetSize()) {
    (void)ReportCellCount(child, numbers.GetNumItems(), table->GetSize());
    if (numbers.GetNumItems() == 0) return 0;
  }
  return ReportError(definition->SetDefinition(numbers), nullptr);
}

void KVN_huginSpeaker::NormalizeTables() {
  for (int handle = network->GetFirstNode(); handle >= 0; handle = network->GetNextNode(handle)) {
    const int type = network->TypeOf(handle);
    if ((type & KVN_TYPE_BIT_UTILITY) != 0) continue;
    KVN_nodeDefinition* const definition = network->DefinitionOf(handle);
    KVN_Dmatrix* table = nullptr;
    if (definition != nullptr && definition->GetDefinition(table) == 0) table->Normalize();
  }
}

/// Lowest number for a network without nodes, where nobody asks for it.
long long KVN_huginSpeaker::TopEdge() const {
  long long top = std::numeric_limits<long long>::min();
  for (int handle = network->GetFirstNode(); handle >= 0; handle = network->GetNextNode(handle)) {
    const KVN_rectangle& rectangle = network->GetNode(handle)->Info().Screen().position;
    const long long y = rectangle.center_Y;
    top = std::max(top, y - rectangle.height / 2);
  }
  return top;
}

int KVN_huginSpeaker::Flip(long long top, int y) {
  constexpr long long kLowest = std::numeric_limits<int>::min();
  constexpr long long kHighest = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(top - y, kLowest, kHighest));
}
