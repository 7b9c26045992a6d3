#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "formats/text/fileFormat.h"
#include "foundation/doubleArray.h"
#include "foundation/stringArray.h"

class KVN_Dmatrix;
class KVN_equation;
class KVN_node;
class KVN_nodeDefinition;
class KVN_rectangle;

/// The Netica text format, extension "dne": `bnet`, blocks of statements, and in them blocks for
/// nodes, properties and layout. docs/formats.md holds the grammar.
///
/// Carried are discrete chance nodes, decisions and utilities, with names, comments, properties and
/// positions. Equation nodes are read, their formulas translated, and can't be written. A node is
/// made when its block begins, without a definition: its kind follows from several statements, and
/// the definition is made when the first one needs it.
///
/// Lists of numbers may be nested in any way or not at all, and may leave out the last number of
/// each row. Parents may stand behind their children in the file: the arcs and numbers of such a
/// node are set when all nodes are known.
class KVN_neticaSpeaker : public KVN_fileFormat {
 public:
  explicit KVN_neticaSpeaker(KVN_network& target) : KVN_fileFormat(target) {}

  /// A fault costs the statement that it stands in; only one in `bnet id {` fails the reading. A
  /// file that does not begin with `bnet` is left unread, which the log tells.
  int ReadFile(const char* fileName) override;
  /// KVN_REFUSED, with a message, for a node of a kind that the format lacks; the target is then
  /// untouched. It is meant that the numbers of deterministic nodes and of noisy-MAX gates go out
  /// under words that no reader of this format takes.
  int WriteFile(const char* fileName) override;

 protected:
  /// `name {`
  int WriteBlockStart(const char* name) override;
  void BeginContinuation() override { UseBackslashContinuation(); }
  void EndContinuation() override { outputFile.SetContinuation(nullptr); }

 private:
  /// What the file has said of one node.
  struct NodeInHand {
    int handle = -1;
    bool isRefused = false;  // of no kind that there is: deleted at the end of its block
    bool hasStates = false;  // by name
    bool hasLevels = false;
    bool hasEquation = false;
    bool hasTable = false;    // numbers or states for the configurations of the parents
    int statesWanted = 0;     // `numstates`
    bool isDeferred = false;  // a parent is not known yet
    bool lacksParent = false;
    KVN_stringArray parents;
    // To be stored when all else is known: the states, the kind, the parents.
    bool hasNumbers = false;
    KVN_doubleArray numbers;
    std::vector<int> impossible;  // which of `numbers` were given as `@imposs`
    bool hasResults = false;
    KVN_stringArray results;
    std::string equation;
    // Where they stood, for what is told of them later.
    int countLine = 0;
    int parentsLine = 0;
    int tableLine = 0;
    int equationLine = 0;
  };

  /// While one lives, what is reported names this line and not the present one.
  class AtLine {
   public:
    AtLine(KVN_neticaSpeaker& owner, int line) : speaker(owner) { speaker.faultLine = line; }
    ~AtLine() { speaker.faultLine = 0; }
    AtLine(const AtLine&) = delete;
    AtLine& operator=(const AtLine&) = delete;

   private:
    KVN_neticaSpeaker& speaker;
  };

  // Reading: neticaSpeaker.cpp has the network and its layout, neticaReaderNode.cpp the nodes.
  int ReadNet();
  int ReadNetStatement();
  int ReadNetText();
  /// `id { statements }`, behind the word that begins it.
  template <typename Statement>
  int ReadNamedBlock(Statement readStatement) {
    if (int result = RequireToken(KVN_TOKEN_IDENTIFIER, nullptr); result < 0) return result;
    if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "{"); result < 0) return result;
    return ReadBlockBody(readStatement);
  }
  int ReadVisualNet();
  int ReadWindow();
  int ReadColor(int& color);
  int ReadParamStatement();
  int ReadVisualNodeStatement(KVN_node& node);
  int ReadLink();
  int ReadPair(const char* name, int& first, int& second, const char* message);
  int SkipKnown();

  int ReadNode();
  int ReadNodeStatement();
  int ReadKind();
  int ReadDiscrete();
  int ReadChance();
  int ReadNumberOfStates();
  int ReadUserStatement();
  int ReadDefinitionStatement();
  int ReadParents();
  int ReadStates();
  int ReadProbabilities();
  int ReadFunctionTable();
  int ReadNumbers(KVN_doubleArray& numbers);
  int ReadNumbersInHand();
  int ReadNumber(KVN_doubleArray& numbers, std::vector<int>& impossible);
  int ReadNames(KVN_stringArray& names);
  int TellMemory(int result);
  template <typename Element>
  int ReadNested(Element readElement);
  int NeedDefinition();
  void UseNumberOfStates();
  void AddParents(NodeInHand& hand);
  void StoreResults(NodeInHand& hand);
  void ReportCount(const char* format, int handle, int found, int expected);
  void StoreNumbers(NodeInHand& hand);
  void TellWhatIsMissing(bool isEquation);
  void StoreParts(NodeInHand& hand);
  int Line() const { return lexer->GetLineCount(); }
  void FinishNode();
  void FinishDeferred();
  const char* IdOf(int handle) const;

  // Equation nodes, neticaReaderEquation.cpp.
  KVN_equation* EquationOf(int handle) const;
  int NameIntervals(KVN_equation& equation, const KVN_stringArray& names);
  int ReportIntervals(int result);
  int ReadLevels();
  int ReadEquation();
  void StoreEquation(NodeInHand& hand);

  // Writing, neticaSpeakerWriter.cpp.
  void WriteHeader();
  int WriteNode(int handle);
  int WriteDefinition(int handle);
  void WriteUser(KVN_node& node);
  void WriteVisual(const KVN_rectangle& place);
  void CloseBlock();

  int nodeKind = 0;  // KVN_TYPE_BIT_..., or the type that they make
  std::unique_ptr<NodeInHand> inHand;
  std::vector<std::unique_ptr<NodeInHand>> deferred;
  std::int64_t statesLeft = 0;  // that nodes may still ask for by their number
};
