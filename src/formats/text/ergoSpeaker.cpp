#include "formats/text/ergoSpeaker.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "definitions/noisyMAX.h"
#include "foundation/doubleArray.h"
#include "foundation/idArray.h"
#include "foundation/numberText.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "network/node.h"
#include "network/nodeInfo.h"
#include "network/screenInfo.h"

namespace {

enum Section : int { kProbabilities, kNames, kLabels, kCenters, kSectionCount };
constexpr const char* kSections[kSectionCount] = {"Probabilities", "Names", "Labels", "Centers"};

char ToLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// It is meant that the beginning of the word is enough.
bool IsBeginningOf(const char* text, int length, const char* word) {
  for (int i = 0; i < length; ++i) {
    if (word[i] == '\0' || ToLower(text[i]) != ToLower(word[i])) return false;
  }
  return true;
}

/// Numbers of the compact table: a row for the leak and one for each state of each parent but the
/// last, each without its last number, which follows from the others.
std::int64_t CompactSize(const KVN_network& network, int handle, int outcomes) {
  std::int64_t rows = 1;
  for (int parent : network.GetParents(handle)) {
    rows += network.DefinitionOf(parent)->GetNumberOfOutcomes() - 1;
  }
  return rows * (outcomes - 1);
}

/// Numbers of the full table; -1 for more than a table can hold.
std::int64_t FullSize(const KVN_network& network, int handle, int outcomes) {
  constexpr std::int64_t kLargest = 0x7fffffff;
  std::int64_t size = outcomes;
  for (int parent : network.GetParents(handle)) {
    size *= network.DefinitionOf(parent)->GetNumberOfOutcomes();
    if (size > kLargest) return -1;
  }
  return size;
}

/// The row of `outcomes` numbers that the cumulative ones at `cumulative` stand for. What would be
/// negative, since the numbers don't rise, becomes 0.
int AddRow(const double* cumulative, int outcomes, KVN_doubleArray& rows) {
  double before = 0.0;
  for (int k = 0; k < outcomes; ++k) {
    const double upTo = k + 1 < outcomes ? std::clamp(cumulative[k], 0.0, 1.0) : 1.0;
    if (int result = rows.Add(std::max(upTo - before, 0.0)); result < 0) return result;
    before = upTo;
  }
  return 0;
}

bool AreFinite(const KVN_Dmatrix& matrix) {
  const double* const cells = matrix.GetItems().GetItems();
  return std::all_of(cells, cells + matrix.GetSize(), [](double x) { return std::isfinite(x); });
}

}  // namespace

int KVN_ergoSpeaker::ReadFile(const char* fileName) {
  if (int result = OpenLexer(fileName, KVN_LEXICAL_ERGO); result < 0) return result;
  statesLeft = fileBytes;
  nodes.CleanUp();
  const int result = ReadNetwork();
  CloseLexer();
  return result;
}

int KVN_ergoSpeaker::ReadNetwork() {
  int count = 0;
  if (int result = RequireInteger(count); result < 0) return result;
  if (count < 0)
    return ReportText(KVN_REFUSED, "ERROR: (\"%s\") : Invalid number of nodes", tokenText);
  if (count == 0) return 0;
  if (int result = ReadNodes(count); result < 0) return result;
  for (int handle : nodes) {
    if (int result = ReadParents(handle); result < 0) return result;
  }
  return ReadSections();
}

/// Its text stays in `tokenText`.
int KVN_ergoSpeaker::RequireInteger(int& value) {
  const int result = ReadInteger(value);
  return result == 0 ? 0 : RequireToken(KVN_TOKEN_INTEGER, nullptr);
}

/// To the lexer ".5" and "5." are words like any other.
int KVN_ergoSpeaker::RequireNumber(double& value) {
  if (ReadDouble(value) == 0) return 0;
  if (PeekToken() == 0 && std::strchr("+-.0123456789", *tokenText) != nullptr &&
      *ScanDouble(tokenText, value) == '\0') {
    ConsumeToken();
    return 0;
  }
  if (PeekToken() < 0) return RequireToken(KVN_TOKEN_REAL, nullptr);
  return ReportToken("ERROR: '%s' : Real Number expected");
}

/// A node is made when its number of states is read, so that a count that the file does not keep
/// costs no memory.
int KVN_ergoSpeaker::ReadNodes(int count) {
  for (int i = 0; i < count; ++i) {
    if (int result = AddNode(); result < 0) return result;
  }
  return 0;
}

int KVN_ergoSpeaker::AddNode() {
  int states = 0;
  if (int result = RequireInteger(states); result < 0) return result;
  // No file says anything of more states than it has bytes, and two cost next to nothing.
  if (states < 2 || (states > 2 && states > statesLeft)) {
    (void)ReportText(KVN_REFUSED, "ERROR: '%s' : Invalid number of states", tokenText);
    states = 2;  // meant, for what is below 2 too: the sections behind count on this node
  }
  if (states > 2) statesLeft -= states;
  const int handle = AddUnnamedNode(KVN_TYPE_NOISY_MAX);
  if (handle < 0) return handle;
  if (int result = nodes.Add(handle); result < 0) return ReportError(result, nullptr);
  return ReportError(network->DefinitionOf(handle)->SetNumberOfOutcomes(states), nullptr);
}

int KVN_ergoSpeaker::ReadParents(int handle) {
  int count = 0;
  if (int result = RequireInteger(count); result < 0) return result;
  if (count < 0) {
    (void)ReportText(KVN_REFUSED, "ERROR:'%s' : Invalid number of parents", tokenText);
  }
  for (int i = 0; i < count; ++i) {
    int position = 0;
    if (int result = RequireInteger(position); result < 0) return result;
    const bool isNode = position >= 1 && position <= nodes.GetNumItems();
    const int result =
        network->AddArc(isNode ? nodes[position - 1] : KVN_REFUSED, handle, /*layer=*/0);
    if (result < 0) {
      (void)ReportText(result, "ERROR: Couldn't Add Arc From Parent Node (\"%s\")", tokenText);
    }
  }
  return 0;
}

// Sections.

/// What follows the last section is not read. It is told, since numbers too many in a table end the
/// sections before their time.
int KVN_ergoSpeaker::ReadSections() {
  int result = 0;
  while (result == 0 && PeekIs("/") == 1) {
    int section = kSectionCount;
    result = ReadHeading(section);
    if (result < 0) break;
    switch (section) {
      case kProbabilities:
        result = ReadProbabilities();
        break;
      case kNames:
        result = ReadNames();
        break;
      case kLabels:
        result = ReadLabels();
        break;
      default:
        result = ReadCenters();
        break;
    }
  }
  if (result == 0 && PeekToken() == 0) (void)ReportToken("ERROR: '%s' : Unexpected");
  return result;
}

int KVN_ergoSpeaker::ReadHeading(int& section) {
  ConsumeToken();
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "*"); result < 0) return result;
  if (int result = RequireToken(KVN_TOKEN_IDENTIFIER, nullptr); result < 0) return result;
  section = 0;
  while (section < kSectionCount && !IsBeginningOf(tokenText, tokenLength, kSections[section])) {
    ++section;
  }
  if (section == kSectionCount) {
    return ReportText(KVN_SYNTAX_ERROR, "ERROR: (\"%s\") : Unknown Section", tokenText);
  }
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "*"); result < 0) return result;
  return RequireToken(KVN_TOKEN_PUNCTUATOR, "/");
}

int KVN_ergoSpeaker::ReadProbabilities() {
  for (int handle : nodes) {
    if (int result = ReadTable(handle); result < 0) return result;
  }
  return ReverseStrengths();
}

int KVN_ergoSpeaker::ReadTable(int handle) {
  int size = 0;
  if (int result = RequireInteger(size); result < 0) return result;
  if (size < 0) return ReportText(KVN_REFUSED, "ERROR:'%s' : Invalid table size", tokenText);
  KVN_doubleArray numbers;
  for (int i = 0; i < size; ++i) {
    double value = 0.0;
    if (int result = RequireNumber(value); result < 0) return result;
    if (int result = numbers.Add(value); result < 0) return ReportError(result, nullptr);
  }
  const int result = StoreTable(handle, numbers);
  // Without memory the node may be left without a definition, so that nothing can follow.
  if (result == KVN_NO_MEMORY) return ReportError(result, "ERROR: Couldn't set probabilities");
  if (result < 0) (void)ReportError(KVN_REFUSED, "ERROR: Couldn't set probabilities");
  return 0;
}

int KVN_ergoSpeaker::StoreTable(int handle, const KVN_doubleArray& numbers) {
  const int outcomes = network->DefinitionOf(handle)->GetNumberOfOutcomes();
  const std::int64_t size = numbers.GetNumItems();
  if (size == FullSize(*network, handle, outcomes)) return StoreFullTable(handle, numbers);
  if (size == CompactSize(*network, handle, outcomes)) return StoreCompactTable(handle, numbers);
  return KVN_REFUSED;
}

int KVN_ergoSpeaker::StoreFullTable(int handle, const KVN_doubleArray& numbers) {
  KVN_node& node = *network->GetNode(handle);
  if (int result = node.ChangeType(KVN_TYPE_CPT); result < 0) return result;
  return node.Definition()->SetDefinition(numbers);
}

/// The leak comes first in the file and last in the gate, whose rows are read as holding the leak.
int KVN_ergoSpeaker::StoreCompactTable(int handle, const KVN_doubleArray& numbers) {
  auto* const gate = dynamic_cast<KVN_noisyMAX*>(network->DefinitionOf(handle));
  if (gate == nullptr) return KVN_REFUSED;  // the section stands twice in the file
  const int outcomes = gate->GetNumberOfOutcomes();
  const int rowSize = outcomes - 1;
  const int rows = numbers.GetNumItems() / rowSize;
  KVN_doubleArray list;
  for (int row = 1; row <= rows; ++row) {
    const double* const cumulative = numbers.GetItems() + (row % rows) * rowSize;
    if (int result = AddRow(cumulative, outcomes, list); result < 0) return result;
  }
  if (int result = gate->SetLegacyProbabilities(list); result < 0) return result;
  if (AreFinite(gate->GetParameters())) return 0;
  // A leak that leaves nothing to the causes can't be taken out of their rows.
  (void)gate->ReCreate();
  return KVN_REFUSED;
}

/// Below a plain table the states count from the one that doesn't act. All tables are known by now,
/// so that the order of the nodes in the file makes no difference.
int KVN_ergoSpeaker::ReverseStrengths() {
  for (int handle : nodes) {
    auto* const gate = dynamic_cast<KVN_noisyMAX*>(network->DefinitionOf(handle));
    const KVN_intArray& parents = network->GetParents(handle);
    for (int i = 0; gate != nullptr && i < parents.GetNumItems(); ++i) {
      if (network->TypeOf(parents[i]) != KVN_TYPE_CPT) continue;
      KVN_intArray order;
      for (int k = network->DefinitionOf(parents[i])->GetNumberOfOutcomes() - 1; k >= 0; --k) {
        if (int result = order.Add(k); result < 0) return ReportError(result, nullptr);
      }
      (void)ReportError(gate->SetParentOutcomeStrengths(i, order), nullptr);
    }
  }
  return 0;
}

/// A word of any characters. The heading of another section is none: a word is missing before it.
int KVN_ergoSpeaker::ReadWord(std::string& word) {
  if (lexer->IsNext("/*") || lexer->ReadWord(word) < 0) {
    return RequireToken(KVN_TOKEN_IDENTIFIER, nullptr);
  }
  return 0;
}

int KVN_ergoSpeaker::ReadNames() {
  KVN_stringArray words;
  int result = 0;
  for (int i = 0; i < nodes.GetNumItems() && result == 0; ++i) {
    std::string word;
    result = ReadWord(word);
    if (result == 0) result = words.Add(word.c_str());
  }
  // The generated identifiers go first: they may be names in this file.
  for (int i = 0; i < words.GetNumItems(); ++i) {
    (void)network->GetNode(nodes[i])->SetId(("@" + std::to_string(i)).c_str());
  }
  KVN_intArray unnamed;
  for (int i = 0; i < words.GetNumItems(); ++i) {
    if (NameNode(nodes[i], words[i]) < 0) (void)unnamed.Add(nodes[i]);
  }
  for (int handle : unnamed) {
    char id[32];
    network->GetNewNodeName(id);
    (void)network->GetNode(handle)->SetId(id);
  }
  return result;
}

int KVN_ergoSpeaker::NameNode(int handle, const char* word) {
  KVN_node& node = *network->GetNode(handle);
  (void)ReportError(node.SetName(word), nullptr);
  std::string id = word;
  (void)KVN_idArray::MakeValidId(id);  // refuses nothing but the empty text
  const int result = node.SetId(id.c_str());
  if (result < 0) (void)ReportText(result, "ERROR: [%s] Duplicated Identifier", word);
  return result;
}

/// The number of states is known, and nodes with children keep it: the states are renamed.
int KVN_ergoSpeaker::ReadLabels() {
  for (int handle : nodes) {
    KVN_nodeDefinition& definition = *network->DefinitionOf(handle);
    KVN_stringArray names;
    for (int i = 0; i < definition.GetNumberOfOutcomes(); ++i) {
      std::string word;
      if (int result = ReadWord(word); result < 0) return result;
      if (int result = names.Add(word.c_str()); result < 0) return ReportError(result, nullptr);
    }
    (void)ReportError(definition.RenameOutcomes(names), nullptr);
  }
  return 0;
}

int KVN_ergoSpeaker::ReadCenters() {
  for (int handle : nodes) {
    KVN_rectangle& rectangle = network->GetNode(handle)->Info().Screen().position;
    for (int* coordinate : {&rectangle.center_X, &rectangle.center_Y}) {
      if (int result = RequireInteger(*coordinate); result < 0) return result;
    }
  }
  return 0;
}
