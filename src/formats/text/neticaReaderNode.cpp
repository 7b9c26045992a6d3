// The node blocks of a Netica file.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

#include "definitions/nodeDefinition.h"
#include "definitions/truthTable.h"
#include "formats/text/neticaSpeaker.h"
#include "foundation/numberText.h"
#include "foundation/resultCodes.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeInfo.h"
#include "network/userProperties.h"

namespace {

constexpr int kBitChance = 2;
constexpr int kBitDeterministic = 4;

// The last ones come from later versions of the program.
const char* const kNodeWords[] = {
    "measure",       "units",     "inputs",   "numcases", "fading",     "delays",
    "persist",       "position",  "evidcost", "author",   "whochanged", "whenchanged",
    "locked",        "value",     "evidence", "belief",   "children",   "statetitles",
    "statecomments", "ExperBase", "EqnDirty", "Disabled", nullptr};

/// The definition that a set of KVN_TYPE_BIT_... stands for: of the kinds that the engine has this
/// format has words for five. KVN_TYPE_NONE for any other set.
int TypeOfKind(int kind) {
  switch (kind) {
    case kBitChance:
      return KVN_TYPE_EQUATION;  // neither discrete nor deterministic
    case KVN_TYPE_TABLE:
    case KVN_TYPE_LIST:
    case KVN_TYPE_CPT:
    case KVN_TYPE_TRUTHTABLE:
    case KVN_TYPE_EQUATION:
      return kind;
    default:
      return KVN_TYPE_NONE;
  }
}

/// A row of nothing but impossible cells belongs to states of the parents that can't meet: any
/// distribution will do, and an even one is consistent, or one state where the node is
/// deterministic. `width` numbers of each row stood in the file, to which the positions in
/// `impossible` refer; `numbers` has whole rows.
void EvenOutImpossible(KVN_doubleArray& numbers, const std::vector<int>& impossible, int width,
                       int states, bool isDeterministic) {
  for (std::size_t i = 0; i + width <= impossible.size(); ++i) {
    const int first = impossible[i];
    if (first % width != 0 || impossible[i + width - 1] != first + width - 1) continue;
    double* const row = &numbers[first / width * states];
    std::fill(row, row + states, isDeterministic ? 0.0 : 1.0 / states);
    if (isDeterministic) row[0] = 1.0;
  }
}

/// Rows of one number less than there are states get the one that is missing.
int CompleteRows(KVN_doubleArray& numbers, int states) {
  KVN_doubleArray whole;
  const int rows = numbers.GetNumItems() / (states - 1);
  for (int row = 0; row < rows; ++row) {
    double rest = 1.0;
    for (int k = 0; k < states - 1; ++k) {
      const double number = numbers[row * (states - 1) + k];
      rest -= number;
      if (int result = whole.Add(number); result < 0) return result;
    }
    if (int result = whole.Add(std::max(rest, 0.0)); result < 0) return result;
  }
  numbers = whole;
  return 0;
}

}  // namespace

int KVN_neticaSpeaker::ReadNode() {
  if (int result = RequireToken(KVN_TOKEN_IDENTIFIER, nullptr); result < 0) return result;
  inHand = std::make_unique<NodeInHand>();  // may throw, and so comes before the node
  inHand->handle = network->AddNode(KVN_TYPE_NONE, tokenText);
  if (inHand->handle < 0) {
    return ReportText(inHand->handle, "ERROR: Couldn't Create Node (\"%s\")", tokenText);
  }
  nodeKind = KVN_TYPE_CPT;
  int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "{");
  if (result == 0) result = ReadBlockBody([this] { return ReadNodeStatement(); });
  FinishNode();
  return result;
}

const char* KVN_neticaSpeaker::IdOf(int handle) const {
  const KVN_node* const node = network->GetNode(handle);
  return node == nullptr || node->GetId() == nullptr ? "_Unnamed_Node_" : node->GetId();
}

int KVN_neticaSpeaker::ReadNodeStatement() {
  KVN_node& node = *network->GetNode(inHand->handle);
  if (AcceptToken(KVN_TOKEN_IDENTIFIER, "user") == 0) {
    return ReadNamedBlock([this] { return ReadUserStatement(); });
  }
  if (AcceptToken(KVN_TOKEN_IDENTIFIER, "visual") == 0) {
    return ReadNamedBlock([&] { return ReadVisualNodeStatement(node); });
  }
  int result = ReadKind();
  if (result == KVN_NOT_THIS_STATEMENT) result = ReadDiscrete();
  if (result == KVN_NOT_THIS_STATEMENT) result = ReadChance();
  if (result == KVN_NOT_THIS_STATEMENT) {
    result = ReadStatement("title", KVN_TOKEN_STRING);
    if (result == 0) return ReportError(node.SetName(tokenText), nullptr);
  }
  if (result == KVN_NOT_THIS_STATEMENT) {
    result = ReadStatement("comment", KVN_TOKEN_STRING);
    if (result == 0) return ReportError(node.SetComment(tokenText), nullptr);
  }
  if (result == KVN_NOT_THIS_STATEMENT) result = ReadNumberOfStates();
  if (result == KVN_NOT_THIS_STATEMENT) result = ReadDefinitionStatement();
  return result;
}

int KVN_neticaSpeaker::ReadKind() {
  if (int result = ReadStatement("kind", KVN_TOKEN_IDENTIFIER); result != 0) return result;
  if (TokenIs("NATURE") == 1) {
    nodeKind &= ~(KVN_TYPE_BIT_DECISION | KVN_TYPE_BIT_UTILITY);
  } else if (TokenIs("DECISION") == 1) {
    nodeKind &= ~(kBitChance | kBitDeterministic | KVN_TYPE_BIT_UTILITY);
    nodeKind |= KVN_TYPE_BIT_DECISION;
  } else if (TokenIs("UTILITY") == 1) {
    nodeKind = KVN_TYPE_TABLE;
  } else if (TokenIs("ASSUME") == 1) {
    nodeKind = KVN_TYPE_CPT;
    (void)ReportError(KVN_REFUSED, "ERROR: nodes of type ASSUME not supported (yet)");
  } else {
    // A constant, or a cut-off parent: as a chance node it would say what nobody said.
    inHand->isRefused = true;
    return ReportText(KVN_SYNTAX_ERROR, "ERROR: '%s' : Unknown Node Type", tokenText);
  }
  return 0;
}

/// Of a utility `discrete` and `chance` are passed over.
int KVN_neticaSpeaker::ReadDiscrete() {
  int isDiscrete = 0;
  if (int result = ReadBoolStatement("discrete", isDiscrete); result != 0) return result;
  if (nodeKind == KVN_TYPE_TABLE) return 0;
  nodeKind &= ~KVN_TYPE_BIT_DISCRETE;
  if (isDiscrete != 0) nodeKind |= KVN_TYPE_BIT_DISCRETE;
  return 0;
}

int KVN_neticaSpeaker::ReadChance() {
  if (int result = ReadStatement("chance", KVN_TOKEN_IDENTIFIER); result != 0) return result;
  if ((nodeKind & (kBitChance | kBitDeterministic)) == 0) return 0;
  const bool isChance = TokenIs("CHANCE") == 1;
  if (!isChance && TokenIs("DETERMIN") == 0) {
    return ReportText(KVN_SYNTAX_ERROR, "ERROR: '%s' : Unknown Node Type", tokenText);
  }
  nodeKind &= ~(kBitChance | kBitDeterministic);
  nodeKind |= isChance ? kBitChance : kBitDeterministic;
  return 0;
}

/// Of use where nothing else tells how many states there are.
int KVN_neticaSpeaker::ReadNumberOfStates() {
  int count = 0;
  const int result = ReadIntStatement("numstates", count);
  if (result == 0 && !inHand->hasStates) {
    inHand->statesWanted = count;
    inHand->countLine = Line();
  }
  return result;
}

int KVN_neticaSpeaker::ReadUserStatement() {
  if (int result = RequireToken(KVN_TOKEN_IDENTIFIER, nullptr); result < 0) return result;
  const std::string key = tokenText;
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "="); result < 0) return result;
  if (int result = RequireToken(KVN_TOKEN_STRING, nullptr); result < 0) return result;
  KVN_userProperties& properties = network->GetNode(inHand->handle)->Info().UserProperties();
  if (properties.FindProperty(key.c_str()) >= 0) {
    return ReportText(KVN_REFUSED, "ERROR: '%s' : Duplicated property", key.c_str());
  }
  return ReportError(std::min(properties.AddProperty(key.c_str(), tokenText), 0), nullptr);
}

int KVN_neticaSpeaker::ReadDefinitionStatement() {
  const struct {
    const char* word;
    int (KVN_neticaSpeaker::*read)();
  } statements[] = {
      {"parents", &KVN_neticaSpeaker::ReadParents},
      {"states", &KVN_neticaSpeaker::ReadStates},
      {"probs", &KVN_neticaSpeaker::ReadProbabilities},
      {"functable", &KVN_neticaSpeaker::ReadFunctionTable},
      {"levels", &KVN_neticaSpeaker::ReadLevels},
      {"equation", &KVN_neticaSpeaker::ReadEquation},
  };
  for (const auto& statement : statements) {
    if (AcceptToken(KVN_TOKEN_IDENTIFIER, statement.word) != 0) continue;
    if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "="); result < 0) return result;
    // Of a node without a definition that was told already.
    return NeedDefinition() < 0 ? SkipKnown() : (this->*statement.read)();
  }
  if (PeekInList(kNodeWords) == 1) return SkipKnown();
  return ReportToken("ERROR: '%s' : Unknown Node Statement");
}

/// Makes the definition that the kind asks for, at the first statement that needs it. Where the
/// words for the kind stand behind that statement, the next one converts the definition: what they
/// say together counts, and not what the first of them would mean alone.
int KVN_neticaSpeaker::NeedDefinition() {
  if (inHand->isRefused) return KVN_REFUSED;
  KVN_node& node = *network->GetNode(inHand->handle);
  const int type = TypeOfKind(nodeKind);
  const bool isNew = node.Definition() == nullptr;
  const bool wasEquation = node.GetType() == KVN_TYPE_EQUATION;
  if (!isNew && (type == KVN_TYPE_NONE || type == node.GetType())) return 0;
  const int result = type == KVN_TYPE_NONE ? KVN_REFUSED : node.ChangeType(type);
  if (node.Definition() != nullptr && (!isNew || result == 0)) {
    if (isNew) nodeKind = type;
    const bool keepsStates = result == 0 && (type & KVN_TYPE_BIT_DISCRETE) != 0;
    const bool losesLevels = inHand->hasLevels && (result < 0 || wasEquation);
    if (losesLevels || (inHand->hasStates && !keepsStates && !isNew)) {
      (void)ReportText(KVN_REFUSED,
                       "ERROR: Node (\"%s\") : Kind told behind a definition that it loses",
                       IdOf(inHand->handle));
    }
    return 0;
  }
  inHand->isRefused = true;
  return ReportText(KVN_REFUSED, "ERROR: Type of node [%s] unsupported", IdOf(inHand->handle));
}

// Statements of the definition.

/// Reading a list tells what is wrong in it, but not that memory ran out.
int KVN_neticaSpeaker::TellMemory(int result) {
  return result == KVN_NO_MEMORY ? ReportError(result, nullptr) : result;
}

int KVN_neticaSpeaker::ReadParents() {
  if (!inHand->isDeferred) inHand->parents.CleanUp(/*deep=*/1);  // those of an earlier list stand
  if (int result = ReadIdentifierList(inHand->parents); result < 0) return TellMemory(result);
  bool areKnown = true;
  for (int i = 0; i < inHand->parents.GetNumItems(); ++i) {
    areKnown = areKnown && network->FindNode(inHand->parents[i]) >= 0;
  }
  inHand->isDeferred = !areKnown;
  inHand->parentsLine = Line();
  if (areKnown) AddParents(*inHand);
  return 0;
}

void KVN_neticaSpeaker::AddParents(NodeInHand& hand) {
  const AtLine line(*this, hand.parentsLine);
  for (int i = 0; i < hand.parents.GetNumItems(); ++i) {
    const char* const id = hand.parents[i];
    const int result = budget.AddArc(*network, network->FindNode(id), hand.handle, /*layer=*/0);
    if (result == 0) continue;
    hand.lacksParent = true;
    std::snprintf(errorMessage, sizeof errorMessage,
                  "ERROR: Couldn't add arc from node [%s] to node [%s]", id, IdOf(hand.handle));
    (void)ReportError(result, errorMessage);
  }
}

int KVN_neticaSpeaker::ReadStates() {
  KVN_stringArray names;
  if (int result = ReadIdentifierList(names); result < 0) return TellMemory(result);
  KVN_nodeDefinition& definition = *network->DefinitionOf(inHand->handle);
  const int count = names.GetNumItems();
  if (count == 0) return ReportError(KVN_REFUSED, nullptr);
  inHand->statesWanted = 0;
  inHand->hasStates = true;
  if (KVN_equation* equation = EquationOf(inHand->handle); equation != nullptr) {
    return NameIntervals(*equation, names);
  }
  if (int result = budget.SetOutcomes(*network, inHand->handle, names); result < 0) {
    return ReportError(result, nullptr);
  }
  if (definition.GetNumberOfOutcomes() > count) {
    (void)ReportText(KVN_REFUSED, "ERROR: Node (\"%s\") : Two states needed, one added",
                     IdOf(inHand->handle));
  }
  return 0;
}

/// "(" elements "," elements ")", nested in any way. An element is read by `int ()`, which answers
/// KVN_NOT_THIS_STATEMENT for what is none. Behind a comma there must be one, since a row with a
/// gap would look like one that leaves out its last number; blanks may do for a comma.
template <typename Element>
int KVN_neticaSpeaker::ReadNested(Element readElement) {
  int depth = 0;
  bool isBehindElement = false;  // or behind a list
  bool isBehindComma = false;
  do {
    if (AcceptToken(KVN_TOKEN_PUNCTUATOR, "(") == 0) {
      ++depth;
      isBehindElement = isBehindComma = false;
    } else if (depth > 0 && !isBehindComma && AcceptToken(KVN_TOKEN_PUNCTUATOR, ")") == 0) {
      --depth;
      isBehindElement = true;
    } else if (isBehindElement && AcceptToken(KVN_TOKEN_PUNCTUATOR, ",") == 0) {
      isBehindElement = false;
      isBehindComma = true;
    } else {
      const int result = depth == 0 ? KVN_NOT_THIS_STATEMENT : readElement();
      if (result == KVN_NOT_THIS_STATEMENT) return RequireToken(kNoClass, nullptr);
      if (result < 0) return result;
      isBehindElement = true;
      isBehindComma = false;
    }
  } while (depth > 0);
  return 0;
}

int KVN_neticaSpeaker::ReadNumbers(KVN_doubleArray& numbers) {
  return ReadNested([&] {
    double value = 0.0;
    return ReadDouble(value) != 0 ? KVN_NOT_THIS_STATEMENT : TellMemory(numbers.Add(value));
  });
}

/// Of a list with a fault nothing is kept, nor of one that stood before.
int KVN_neticaSpeaker::ReadNumbersInHand() {
  inHand->numbers.CleanUp();
  inHand->impossible.clear();
  inHand->tableLine = Line();
  const int result = ReadNested([this] { return ReadNumber(inHand->numbers, inHand->impossible); });
  inHand->hasNumbers = result == 0;
  return result;
}

/// A number, or `@imposs` for a cell that no states of the parents lead to.
int KVN_neticaSpeaker::ReadNumber(KVN_doubleArray& numbers, std::vector<int>& impossible) {
  double value = 0.0;
  if (ReadDouble(value) != 0) {
    if (AcceptToken(KVN_TOKEN_PUNCTUATOR, "@") != 0 ||
        AcceptToken(KVN_TOKEN_IDENTIFIER, "imposs") != 0) {
      return KVN_NOT_THIS_STATEMENT;
    }
    impossible.push_back(numbers.GetNumItems());
  }
  return ReportError(numbers.Add(value), nullptr);
}

int KVN_neticaSpeaker::ReadNames(KVN_stringArray& names) {
  return ReadNested([&] {
    if (AcceptToken(KVN_TOKEN_IDENTIFIER, nullptr) != 0) return KVN_NOT_THIS_STATEMENT;
    return ReportError(names.Add(tokenText), nullptr);
  });
}

int KVN_neticaSpeaker::ReadProbabilities() {
  if (EquationOf(inHand->handle) != nullptr) return SkipKnown();  // the formula stands for them
  if (int result = ReadNumbersInHand(); result < 0) return result;
  inHand->hasTable = true;
  return 0;
}

/// Where a file tells how many states there are, and not their names. What it asks for is held
/// against its size: no file says anything of more states than it has bytes.
void KVN_neticaSpeaker::UseNumberOfStates() {
  const int count = std::exchange(inHand->statesWanted, 0);
  const AtLine line(*this, inHand->countLine);
  KVN_nodeDefinition& definition = *network->DefinitionOf(inHand->handle);
  if (count == 0 || count == definition.GetNumberOfOutcomes()) return;
  if ((definition.GetType() & KVN_TYPE_BIT_DISCRETE) == 0) return;
  if (count < 2 || count > statesLeft) {
    (void)ReportNumber(KVN_REFUSED, "ERROR: '%d' : Invalid number of states", count);
    return;
  }
  statesLeft -= count;
  (void)ReportError(budget.SetOutcomes(*network, inHand->handle, count), nullptr);
}

/// A decision's table is the policy that somebody has computed once.
int KVN_neticaSpeaker::ReadFunctionTable() {
  const int type = network->TypeOf(inHand->handle);
  inHand->hasTable = true;
  if ((type & KVN_TYPE_BIT_DECISION) != 0) return SkipKnown();
  inHand->tableLine = Line();
  int result = 0;
  if ((type & KVN_TYPE_BIT_DISCRETE) != 0) {
    inHand->hasResults = false;
    inHand->results.CleanUp(/*deep=*/1);
    result = ReadNames(inHand->results);
    inHand->hasResults = result == 0;
  } else {
    result = ReadNumbersInHand();
  }
  return result;
}

/// A state for each configuration of the parents, all of them states of the node.
void KVN_neticaSpeaker::StoreResults(NodeInHand& hand) {
  KVN_nodeDefinition& definition = *network->DefinitionOf(hand.handle);
  const KVN_idArray* const states = definition.GetOutcomesNames();
  const int count = hand.results.GetNumItems();
  for (int i = 0; states != nullptr && i < count; ++i) {
    if (states->IsInList(hand.results[i])) continue;
    (void)ReportText(KVN_REFUSED, "ERROR: '%s' : Unknown state", hand.results[i]);
    return;
  }
  const int expected = definition.GetSize() / std::max(definition.GetNumberOfOutcomes(), 1);
  if (count == expected) {
    (void)ReportError(definition.SetDefinition(hand.results), nullptr);
  } else {
    ReportCount("ERROR: Node (\"%s\") : %d states found, %d expected", hand.handle, count,
                expected);
  }
}

/// `format` takes the node, what was found and what was expected.
void KVN_neticaSpeaker::ReportCount(const char* format, int handle, int found, int expected) {
  std::snprintf(errorMessage, sizeof errorMessage, format, IdOf(handle), found, expected);
  (void)ReportError(KVN_REFUSED, errorMessage);
}

/// Numbers that are too few or too many are worse than none: it isn't known where they belong.
void KVN_neticaSpeaker::StoreNumbers(NodeInHand& hand) {
  KVN_nodeDefinition& definition = *network->DefinitionOf(hand.handle);
  const AtLine line(*this, hand.tableLine);
  if (hand.lacksParent && (hand.hasResults || hand.hasNumbers)) {
    (void)ReportText(KVN_REFUSED, "ERROR: Node (\"%s\") : Table for a parent that is missing",
                     IdOf(hand.handle));
    return;
  }
  if (hand.hasResults) StoreResults(hand);
  if (!hand.hasNumbers) return;
  const int expected = std::max(definition.GetSize(), 0);
  const int states = definition.GetNumberOfOutcomes();
  int count = hand.numbers.GetNumItems();
  const bool lacksLast = states > 1 && count == expected / states * (states - 1);
  if (lacksLast) {
    if (int result = CompleteRows(hand.numbers, states); result < 0) {
      (void)ReportError(result, nullptr);
      return;
    }
    count = hand.numbers.GetNumItems();
  }
  if (count != expected) {
    return ReportCount("ERROR: Node (\"%s\") : %d numbers found, %d expected", hand.handle, count,
                       expected);
  }
  // A row without its last number is told by one number at least.
  if (states > 1) {
    EvenOutImpossible(hand.numbers, hand.impossible, lacksLast ? states - 1 : states, states,
                      definition.GetType() == KVN_TYPE_TRUTHTABLE);
  }
  (void)ReportError(definition.SetDefinition(hand.numbers), nullptr);
}

/// At the end of a node's block.
void KVN_neticaSpeaker::FinishNode() {
  const bool isWhole = NeedDefinition() == 0 && network->DefinitionOf(inHand->handle)->IsReady();
  if (!isWhole) {
    (void)ReportText(KVN_NOT_READY, "ERROR: Node not ready (valid). Node (\"%s\") deleted",
                     IdOf(inHand->handle));
    (void)network->DeleteNode(inHand->handle);
    inHand.reset();
    return;
  }
  if (TypeOfKind(nodeKind) == KVN_TYPE_NONE) {
    // The last words for the kind made none, and the definition is of the one before.
    (void)ReportText(KVN_REFUSED, "ERROR: Type of node [%s] unsupported", IdOf(inHand->handle));
  }
  UseNumberOfStates();
  if (!inHand->isDeferred) StoreParts(*inHand);
  TellWhatIsMissing(EquationOf(inHand->handle) != nullptr);
  if (inHand->isDeferred) deferred.push_back(std::move(inHand));
  inHand.reset();
}

/// A node of which the file says what the engine doesn't take, and nothing else.
void KVN_neticaSpeaker::TellWhatIsMissing(bool isEquation) {
  const char* message = nullptr;
  if (isEquation && !inHand->hasEquation) message = "ERROR: Node (\"%s\") : No equation";
  if (!isEquation && inHand->hasEquation && !inHand->hasTable) {
    message = "ERROR: Node (\"%s\") : Equation without a table";
  }
  if (message != nullptr) (void)ReportText(KVN_NOT_APPLICABLE, message, IdOf(inHand->handle));
}

/// The nodes whose parents stand behind them.
void KVN_neticaSpeaker::FinishDeferred() {
  for (const std::unique_ptr<NodeInHand>& hand : deferred) {
    AddParents(*hand);
    StoreParts(*hand);
  }
  deferred.clear();
}

/// Only when the block has ended its kind, its states and its parents are sure. What is wrong is
/// told with the line where it stood.
void KVN_neticaSpeaker::StoreParts(NodeInHand& hand) {
  StoreNumbers(hand);
  StoreEquation(hand);
}
