#pragma once

#include <map>
#include <string>

#include "formats/text/fileFormat.h"
#include "foundation/doubleArray.h"
#include "foundation/intArray.h"
#include "foundation/stringArray.h"

class KVN_node;
class KVN_nodeDefinition;

/// XMLBIF version 0.3, extension "xml03": a variable per node, then a definition per node with its
/// parents and its numbers. It exists for the exchange with other programs and is no relative of
/// the native XML format: no XML parser is at work. Tags are tokens of the lexer, texts go as they
/// stand up to the next "</". So files are read that a parser would refuse, such as
/// `<OUTCOME><9</OUTCOME>`; comments behind the start of the network cost a message each.
/// docs/formats.md holds the grammar.
///
/// Carried are discrete chance nodes, decisions and utilities: identifiers, states, parents and
/// numbers. The numbers of a table come in the engine's order, the last parent and then the node's
/// own states fastest.
class KVN_xmlSpeaker : public KVN_fileFormat {
 public:
  explicit KVN_xmlSpeaker(KVN_network& target) : KVN_fileFormat(target) {}

  /// KVN_SYNTAX_ERROR when no start tag `BIF` is found, KVN_REFUSED for another version than 0.3,
  /// with a message each; else 0 whatever the file holds, or the code of OpenLexer.
  int ReadFile(const char* fileName) override;
  /// Nodes of any kind are written; one that is neither chance, decision nor utility gets a message
  /// and a type that no reader takes.
  int WriteFile(const char* fileName) override;

 protected:
  /// Consumes up to and with the next complete end tag, whatever its name.
  int SkipStatement() override;
  /// `1 2 `: each number is followed by a blank.
  int WriteDoubleList(const KVN_doubleArray& list, bool whole) override;
  void BeginContinuation() override { UseBackslashContinuation(); }
  void EndContinuation() override { outputFile.SetContinuation(nullptr); }

 private:
  /// A start or end tag. Of the attributes only the two that the format knows are kept.
  struct Tag {
    std::string name;
    std::string type;
    std::string version;
    bool isEnd = false;    // </name>
    bool isEmpty = false;  // <name/>
  };

  // Reading, xmlSpeaker.cpp.
  int FindStartTag();
  int ReadTag();
  int ReadTagBody();
  int ReadAttribute();
  int ReadAttributeValue(std::string& value);
  void SkipMarkup();
  template <typename Child>
  void ReadElements(const char* name, Child readChild);
  bool EndsOuterElement(const char* name);
  int ReadText(std::string& text);
  int ReadEndTagName();
  void DropText();
  void SkipElement(const char* name);
  void RefuseElement(const char* format);

  void ReadNetworkChild();
  void NameNetwork();
  void ReadVariable();
  void ReadVariableChild(int handle);
  void NameNode(KVN_node& node);
  void AddOutcome();
  void SetOutcomes(int handle);
  void ReadDefinition();
  void ReadDefinitionChild();
  void ReadFor();
  void ReadGiven();
  void ReadTable();
  bool ReadTableItem();
  void FinishDefinition();
  void StoreNumbers(KVN_nodeDefinition& definition);
  void WarnOfColumns(KVN_nodeDefinition& definition);
  int FindVariable(const std::string& name) const;
  const char* IdOf(int handle) const;

  // Writing, xmlSpeakerWriter.cpp.
  void WriteElement(const char* name, const char* text);
  void WriteTag(const char* before, const char* name);
  void WriteVariable(int handle);
  int WriteDefinition(int handle);
  const char* TypeWordOf(int handle);

  Tag tag;                    // the one that was read last
  bool isAtEnd = false;       // no more tokens, and that was told
  bool isTagPending = false;  // it is still to be dealt with, by the element around
  std::string networkId;      // given at the end: the nodes come first where both want it
  bool hasNetworkName = false;
  std::map<std::string, int> variables;  // handles by the names in the file
  KVN_stringArray outcomes;              // of the variable in hand
  KVN_doubleArray probabilities;         // of the definition in hand, as are the following
  KVN_intArray givenNodes;
  int forNode = -1;
  bool hasFor = false;  // known or not
  bool hasTable = false;
};
