#include "formats/text/xmlSpeaker.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>
#include <utility>

#include "definitions/nodeDefinition.h"
#include "foundation/idArray.h"
#include "foundation/identifier.h"
#include "foundation/resultCodes.h"
#include "network/header.h"
#include "network/network.h"
#include "network/node.h"

namespace {

struct TypeWord {
  const char* word;
  int type;
};
/// "nature" is what most programs write for a chance node. Without the attribute it is one too.
constexpr TypeWord kTypeWords[] = {
    {"", KVN_TYPE_CPT},          {"chance", KVN_TYPE_CPT},    {"nature", KVN_TYPE_CPT},
    {"decision", KVN_TYPE_LIST}, {"utility", KVN_TYPE_TABLE},
};

/// Depth of the elements that hold others; 3 for all that hold texts.
int DepthOf(const std::string& name) {
  if (name == "BIF") return 0;
  if (name == "NETWORK") return 1;
  return name == "VARIABLE" || name == "DEFINITION" ? 2 : 3;
}

bool IsKnown(const std::string& name) {
  static constexpr const char* kTexts[] = {"NAME", "PROPERTY", "OUTCOME", "FOR", "GIVEN", "TABLE"};
  return DepthOf(name) < 3 || std::any_of(std::begin(kTexts), std::end(kTexts),
                                          [&name](const char* known) { return name == known; });
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

/// Without the blanks around it, and with one for each run of blanks within: how a text is laid out
/// over lines is no part of it.
void Squeeze(std::string& text) {
  const auto areBlanks = [](char left, char right) { return left == ' ' && right == ' '; };
  std::replace_if(text.begin(), text.end(), IsBlank, ' ');
  text.erase(std::unique(text.begin(), text.end(), areBlanks), text.end());
  if (!text.empty() && text.front() == ' ') text.erase(0, 1);
  if (!text.empty() && text.back() == ' ') text.pop_back();
}

struct Entity {
  const char* name;
  char character;
};
constexpr Entity kEntities[] = {
    {"&lt;", '<'}, {"&gt;", '>'}, {"&amp;", '&'}, {"&quot;", '"'}, {"&apos;", '\''},
};

/// The five entities that every XML file has; any other stands for itself.
void ReplaceEntities(std::string& text) {
  for (std::size_t at = text.find('&'); at != std::string::npos; at = text.find('&', at + 1)) {
    for (const Entity& entity : kEntities) {
      const std::size_t length = std::strlen(entity.name);
      if (text.compare(at, length, entity.name) != 0) continue;
      text.replace(at, length, 1, entity.character);
      break;
    }
  }
}

bool IsSumOne(double sum) { return sum >= KVN_ROW_SUM_LOW && sum <= KVN_ROW_SUM_HIGH; }

}  // namespace

int KVN_xmlSpeaker::ReadFile(const char* fileName) {
  if (int result = OpenLexer(fileName, KVN_LEXICAL_DEFAULT); result < 0) return result;
  int result = FindStartTag();
  if (result == 0 && tag.version != "0.3") {
    result = ReportError(KVN_REFUSED, "ERROR: Incorrect BIF Version");
  }
  if (result == 0) {
    ReadElements("BIF", [this] {
      if (tag.name == "NETWORK") {
        ReadElements("NETWORK", [this] { ReadNetworkChild(); });
        NameNetwork();
      } else {
        RefuseElement("ERROR: '%s' : Misplaced statement");
      }
    });
  }
  CloseLexer();
  return result;
}

// Tags.

/// Whatever stands before the start tag is passed over byte by byte: the prologs of other programs
/// hold quotes, addresses and letters that are no tokens.
int KVN_xmlSpeaker::FindStartTag() {
  while (lexer->ReadRaw("<", nullptr) == 0) {
    if (lexer->IsNext("!--")) {
      (void)lexer->ReadRaw("-->", nullptr);  // its failure is the end of the file
    } else if (lexer->IsNext("BIF") && PeekIs("BIF") == 1) {
      return ReadTagBody();
    }
  }
  return RequireToken(KVN_TOKEN_IDENTIFIER, "BIF");
}

/// The next start or end tag becomes `tag`. KVN_SYNTAX_ERROR, reported.
int KVN_xmlSpeaker::ReadTag() {
  if (isTagPending) {
    isTagPending = false;
    return 0;
  }
  while (true) {
    if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "<"); result < 0) return result;
    if (PeekIs("!") != 1 && TokenIs("?") != 1) return ReadTagBody();
    SkipMarkup();
  }
}

/// A comment, or what else begins with "<!" or "<?": it costs a message and nothing more.
void KVN_xmlSpeaker::SkipMarkup() {
  (void)ReportToken("ERROR: '%s' : Misplaced statement");
  (void)lexer->ReadRaw(lexer->IsNext("!--") ? "-->" : ">", nullptr);  // or to the file's end
}

/// Behind the "<".
int KVN_xmlSpeaker::ReadTagBody() {
  tag = Tag();
  tag.isEnd = AcceptToken(KVN_TOKEN_PUNCTUATOR, "/") == 0;
  if (int result = RequireToken(KVN_TOKEN_IDENTIFIER, nullptr); result < 0) return result;
  tag.name = tokenText;
  while (PeekIsIdentifier() == 1) {
    if (int result = ReadAttribute(); result < 0) return result;
  }
  tag.isEmpty = AcceptToken(KVN_TOKEN_PUNCTUATOR, "/") == 0;
  return RequireToken(KVN_TOKEN_PUNCTUATOR, ">");
}

/// `name = "value"`. A name with a prefix, as those of namespaces, is known by its last part.
int KVN_xmlSpeaker::ReadAttribute() {
  std::string name;
  do {
    if (int result = RequireToken(KVN_TOKEN_IDENTIFIER, nullptr); result < 0) return result;
    name = tokenText;
  } while (AcceptToken(KVN_TOKEN_PUNCTUATOR, ":") == 0);
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "="); result < 0) return result;
  std::string value;
  if (int result = ReadAttributeValue(value); result < 0) return result;
  if (name == "TYPE") tag.type = value;
  if (name == "VERSION") tag.version = value;
  return 0;
}

int KVN_xmlSpeaker::ReadAttributeValue(std::string& value) {
  if (AcceptToken(KVN_TOKEN_PUNCTUATOR, "'") == 0) {
    if (lexer->ReadRaw("'", &value) == 0) return 0;
    return RequireToken(KVN_TOKEN_PUNCTUATOR, "'");
  }
  if (int result = RequireToken(KVN_TOKEN_STRING, nullptr); result < 0) return result;
  value = tokenText;
  return 0;
}

int KVN_xmlSpeaker::SkipStatement() {
  isTagPending = false;
  while (lexer->ReadRaw("</", nullptr) == 0) {
    if (AcceptToken(KVN_TOKEN_IDENTIFIER, nullptr) == 0 &&
        AcceptToken(KVN_TOKEN_PUNCTUATOR, ">") == 0) {
      return 0;
    }
  }
  return ReportError(KVN_NO_MORE_TOKENS, nullptr);
}

/// Reads the elements within `name`, whose start tag is the present one, up to its end tag.
/// `readChild` is called as `void ()` with the start tag of each. Where the end tag is missing, the
/// tag that shows it ends the element too, and is left to the one around.
template <typename Child>
void KVN_xmlSpeaker::ReadElements(const char* name, Child readChild) {
  if (tag.isEmpty) return;
  while (!isAtEnd) {
    if (ReadTag() < 0) {
      isAtEnd = PeekToken() < 0;  // the elements around this one needn't tell it again
      if (isAtEnd) return;
      (void)SkipStatement();
    } else if (tag.isEnd && tag.name == name) {
      return;
    } else if (EndsOuterElement(name)) {
      isTagPending = true;
      return;
    } else if (!tag.isEnd) {
      readChild();
    }
  }
}

/// Whether the tag can't stand within `name`; what can't stand there, nor end it, is told too.
bool KVN_xmlSpeaker::EndsOuterElement(const char* name) {
  const int depth = DepthOf(tag.name);
  const int own = DepthOf(name);
  // A variable within a variable means that an end tag is missing.
  const bool ends = tag.isEnd ? depth < own : own == 2 && depth <= own;
  if (!ends && !tag.isEnd) return false;
  (void)ReportText(KVN_SYNTAX_ERROR, "ERROR: '%s' : Misplaced statement", tag.name.c_str());
  return ends;
}

/// The text of the element whose start tag is the present one, without its layout. Its own end tag
/// must follow; KVN_SYNTAX_ERROR, reported.
int KVN_xmlSpeaker::ReadText(std::string& text) {
  text.clear();
  if (tag.isEmpty) return 0;
  if (lexer->ReadRaw("</", &text) < 0) return RequireToken(KVN_TOKEN_PUNCTUATOR, "<");
  if (int result = RequireToken(KVN_TOKEN_IDENTIFIER, tag.name.c_str()); result < 0) {
    // The tag of an element around this one ends that one too; any other is a slip.
    if (ReadEndTagName() == 0) isTagPending = DepthOf(tag.name) < 3;
    return result;
  }
  if (const std::size_t null = text.find('\0'); null != std::string::npos) {
    text.erase(null);  // the engine's texts end there
    (void)ReportText(KVN_SYNTAX_ERROR, "ERROR: '%s' : Text with a null character", text.c_str());
  }
  Squeeze(text);
  ReplaceEntities(text);
  return RequireToken(KVN_TOKEN_PUNCTUATOR, ">");
}

/// Behind the "</".
int KVN_xmlSpeaker::ReadEndTagName() {
  tag = Tag();
  tag.isEnd = true;
  if (int result = AcceptToken(KVN_TOKEN_IDENTIFIER, nullptr); result < 0) return result;
  tag.name = tokenText;
  return AcceptToken(KVN_TOKEN_PUNCTUATOR, ">");
}

void KVN_xmlSpeaker::DropText() {
  std::string dropped;
  (void)ReadText(dropped);  // a failure is told, and there is nothing to undo
}

/// Passes over the rest of an element and all that is in it.
void KVN_xmlSpeaker::SkipElement(const char* name) {
  if (tag.isEmpty) return;
  const std::string end = std::string("</") + name;
  if (lexer->ReadRaw(end.c_str(), nullptr) == 0) (void)RequireToken(KVN_TOKEN_PUNCTUATOR, ">");
}

/// For an element that can't stand here, whose start tag is the present one. An empty one has no
/// end tag: the next would be another element's.
void KVN_xmlSpeaker::RefuseElement(const char* format) {
  (void)ReportText(KVN_SYNTAX_ERROR, format, tag.name.c_str());
  if (!tag.isEmpty) (void)SkipStatement();
}

// Elements.

void KVN_xmlSpeaker::ReadNetworkChild() {
  if (tag.name == "VARIABLE") return ReadVariable();
  if (tag.name == "DEFINITION") return ReadDefinition();
  if (tag.name == "PROPERTY") return DropText();
  if (tag.name == "NAME") {
    if (std::string text; ReadText(text) == 0) {
      (void)ReportError(network->Header().SetName(text.c_str()), nullptr);
      networkId = text;
      hasNetworkName = true;
    }
    return;
  }
  RefuseElement(IsKnown(tag.name) ? "ERROR: '%s' : Misplaced statement"
                                  : "ERROR: '%s' : Unknown Net Field");
}

/// Nodes and networks share their identifiers, and others write files where a node is called as the
/// network is. The node then keeps the name, since other elements refer to it.
void KVN_xmlSpeaker::NameNetwork() {
  if (!std::exchange(hasNetworkName, false)) return;
  if (!IsLegalHeaderId(networkId.c_str())) {
    (void)ReportText(KVN_ILLEGAL_ID, "ERROR: '%s' : Illegal identifier", networkId.c_str());
  } else if (network->FindNode(networkId.c_str()) >= 0) {
    (void)ReportText(KVN_ILLEGAL_ID, "ERROR: [%s] Duplicated Identifier", networkId.c_str());
  } else {
    (void)ReportError(network->Header().SetId(networkId.c_str()), nullptr);
  }
}

void KVN_xmlSpeaker::ReadVariable() {
  const auto* const row = std::find_if(std::begin(kTypeWords), std::end(kTypeWords),
                                       [this](const TypeWord& w) { return tag.type == w.word; });
  if (row == std::end(kTypeWords)) {
    (void)ReportText(KVN_REFUSED, "ERROR: %s : Unknown node type", tag.type.c_str());
    return SkipElement("VARIABLE");
  }
  const int handle = AddUnnamedNode(row->type);
  if (handle < 0) return SkipElement("VARIABLE");
  outcomes.CleanUp(/*deep=*/1);
  ReadElements("VARIABLE", [&] { ReadVariableChild(handle); });
  SetOutcomes(handle);
}

void KVN_xmlSpeaker::ReadVariableChild(int handle) {
  if (tag.name == "NAME") return NameNode(*network->GetNode(handle));
  if (tag.name == "OUTCOME") return AddOutcome();
  if (tag.name == "PROPERTY") return DropText();
  RefuseElement("ERROR: '%s' : Unknown Node Field");
}

/// A name that is no identifier gives one that is, and stays the node's name: the definitions know
/// the node by it. A name that is taken leaves the generated identifier.
void KVN_xmlSpeaker::NameNode(KVN_node& node) {
  std::string text;
  if (ReadText(text) < 0) return;
  (void)ReportError(node.SetName(text.c_str()), nullptr);
  std::string id = text;
  if (KVN_idArray::MakeValidId(id) < 0) {
    (void)ReportText(KVN_ILLEGAL_ID, "ERROR: '%s' : Illegal identifier", text.c_str());
  } else if (node.SetId(id.c_str()) < 0) {
    (void)ReportText(KVN_ILLEGAL_ID, "ERROR: [%s] Duplicated Identifier", text.c_str());
  }
  variables.emplace(text, node.Handle());  // of two variables of one name the first is meant
}

void KVN_xmlSpeaker::AddOutcome() {
  std::string text;
  if (ReadText(text) < 0) return;
  std::string id = text;
  if (KVN_idArray::MakeValidId(id) < 0 || outcomes.Add(id.c_str()) < 0) {
    (void)ReportText(KVN_REFUSED, "ERROR: %s : Invalid outcome name", text.c_str());
  }
}

void KVN_xmlSpeaker::SetOutcomes(int handle) {
  const int count = outcomes.GetNumItems();
  if (count == 0) return;
  KVN_nodeDefinition& definition = *network->DefinitionOf(handle);
  if (definition.SetNumberOfOutcomes(outcomes) < 0) {
    (void)ReportError(KVN_REFUSED, "ERROR: Invalid Outcomes");
  } else if (definition.GetNumberOfOutcomes() > count) {
    (void)ReportText(KVN_REFUSED, "ERROR: Node (\"%s\") : Two states needed, one added",
                     IdOf(handle));
  }
}

void KVN_xmlSpeaker::ReadDefinition() {
  probabilities.CleanUp();
  givenNodes.CleanUp();
  forNode = -1;
  hasFor = false;
  hasTable = false;
  ReadElements("DEFINITION", [this] { ReadDefinitionChild(); });
  FinishDefinition();
}

void KVN_xmlSpeaker::ReadDefinitionChild() {
  if (tag.name == "FOR") return ReadFor();
  if (tag.name == "GIVEN") return ReadGiven();
  if (tag.name == "TABLE") return ReadTable();
  if (tag.name == "PROPERTY") return DropText();
  RefuseElement("ERROR: '%s' : Unknown Definition Field");
}

int KVN_xmlSpeaker::FindVariable(const std::string& name) const {
  const auto found = variables.find(name);
  return found != variables.end() ? found->second : network->FindNode(name.c_str());
}

const char* KVN_xmlSpeaker::IdOf(int handle) const {
  const KVN_node* const node = network->GetNode(handle);
  return node == nullptr || node->GetId() == nullptr ? "_Unnamed_Node_" : node->GetId();
}

void KVN_xmlSpeaker::ReadFor() {
  std::string text;
  hasFor = true;
  if (ReadText(text) < 0) return;
  const int handle = FindVariable(text);
  if (handle < 0) {
    (void)ReportText(handle, "ERROR: %s : Node not found", text.c_str());
  } else if (forNode >= 0 && forNode != handle) {
    (void)ReportText(KVN_REFUSED, "ERROR: %s : Extra [FOR] entry. Ignored.", text.c_str());
  } else {
    forNode = handle;
  }
}

void KVN_xmlSpeaker::ReadGiven() {
  std::string text;
  if (ReadText(text) < 0) return;
  const int handle = FindVariable(text);
  if (handle < 0) {
    (void)ReportText(handle, "ERROR: %s : Invalid parent", text.c_str());
  } else if (givenNodes.Add(handle) < 0) {
    (void)ReportError(KVN_NO_MEMORY, nullptr);
  }
}

/// A table with anything but numbers counts for nothing: numbers that don't stand where they belong
/// are worse than none.
void KVN_xmlSpeaker::ReadTable() {
  probabilities.CleanUp();
  hasTable = !tag.isEmpty;
  while (hasTable && ReadTableItem()) continue;
}

/// False at the end of the table.
bool KVN_xmlSpeaker::ReadTableItem() {
  double value = 0.0;
  if (ReadDouble(value) == 0) {
    if (probabilities.Add(value) == 0) return true;
    (void)ReportError(KVN_NO_MEMORY, nullptr);
  } else if (AcceptToken(KVN_TOKEN_PUNCTUATOR, "<") != 0) {
    (void)ReportToken("ERROR: '%s' : Real Number expected");
  } else if (PeekIs("!") == 1) {
    SkipMarkup();
    return true;
  } else if (ReadTagBody() == 0) {
    if (tag.isEnd && tag.name == "TABLE") return false;
    // As in ReadText: skipping from here would lose this tag and take the next definition for the
    // rest of this one.
    isTagPending = DepthOf(tag.name) < 3;
    (void)ReportText(
        KVN_SYNTAX_ERROR,
        isTagPending ? "ERROR: '%s' : 'TABLE' expected" : "ERROR: '%s' : Unknown Definition Field",
        tag.name.c_str());
  }
  hasTable = false;
  if (!isTagPending) (void)SkipStatement();
  return false;
}

void KVN_xmlSpeaker::FinishDefinition() {
  if (forNode < 0) {
    if (!hasFor) (void)ReportError(KVN_SYNTAX_ERROR, "ERROR: [FOR] entry missing. Ignored.");
    return;
  }
  for (int parent : givenNodes) {
    if (int result = budget.AddArc(*network, parent, forNode, /*layer=*/0); result < 0) {
      std::snprintf(errorMessage, sizeof errorMessage,
                    "ERROR: Couldn't add arc from node [%s] to node [%s]", IdOf(parent),
                    IdOf(forNode));
      (void)ReportError(result, errorMessage);
    }
  }
  if (hasTable) StoreNumbers(*network->DefinitionOf(forNode));
}

void KVN_xmlSpeaker::StoreNumbers(KVN_nodeDefinition& definition) {
  const int expected = std::max(definition.GetSize(), 0);  // a decision has no numbers
  const int count = probabilities.GetNumItems();
  if (count != expected) {
    std::snprintf(errorMessage, sizeof errorMessage,
                  "ERROR: Node [%s] was expecting %d numbers but %d were read", IdOf(forNode),
                  expected, count);
    (void)ReportError(KVN_REFUSED, errorMessage);
  } else if (count > 0) {
    (void)ReportError(definition.SetDefinition(probabilities), nullptr);
    WarnOfColumns(definition);
  }
}

/// Some programs write the node's own states slowest. The file doesn't say so, but where every
/// column of the table sums to 1 and no row does it is plain.
void KVN_xmlSpeaker::WarnOfColumns(KVN_nodeDefinition& definition) {
  const int states = definition.GetNumberOfOutcomes();
  if (definition.GetType() != KVN_TYPE_CPT || states < 1) return;
  const int rows = probabilities.GetNumItems() / states;
  if (rows < 2) return;
  for (int row = 0; row < rows; ++row) {
    double sum = 0.0;
    double sumOfColumn = 0.0;
    for (int state = 0; state < states; ++state) {
      sum += probabilities[row * states + state];
      sumOfColumn += probabilities[state * rows + row];
    }
    if (IsSumOne(sum) || !IsSumOne(sumOfColumn)) return;
  }
  (void)ReportText(KVN_NOT_CONSISTENT,
                   "ERROR: Node [%s] : No row of the table sums to 1 but every column does. "
                   "It may have the states of the node slowest",
                   IdOf(forNode));
}
