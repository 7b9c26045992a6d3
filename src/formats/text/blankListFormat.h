#pragma once

#include "formats/text/fileFormat.h"
#include "foundation/resultCodes.h"

class KVN_node;
class KVN_nodeDefinition;

/// What the Hugin and the Microsoft format have in common: node blocks first, then a block per node
/// with its parents and its numbers, and lists whose elements stand side by side without commas.
///
/// Reading. Every fault costs a statement or a block, is told to the log with its line, and reading
/// goes on: the result of a whole file is 0. A ";" between statements may be missing. A node is
/// made when its block begins and deleted again at the block's end unless the file has told its
/// outcomes: a file must not be given states that nobody wrote.
///
/// Writing. Blocks are `title`, "{", statements, "}", each on a line of its own, four columns
/// deeper per level, and no line is wrapped. A network with a node of a kind that the format lacks
/// is refused before the target is touched.
class KVN_blankListFormat : public KVN_fileFormat {
 public:
  explicit KVN_blankListFormat(KVN_network& target) : KVN_fileFormat(target) {}

 protected:
  /// As the base skips, with a message where a "}" is passed that closes more than this statement
  /// has opened: from there on the skipping costs statements of the blocks that follow.
  int SkipStatement() override;
  /// Consumes up to the "}" that closes the present depth, for a block that failed in its head
  /// (before its "{") or behind it.
  void SkipBlock();
  /// Consumes up to the next "}" of any depth.
  void SkipToBrace();

  /// All elements that stand here, without brackets; other than that the lists behave as those of
  /// the base do. Points take numbers of all kinds and keep their integer part, as C's atoi does.
  [[nodiscard]] int ReadStringRun(KVN_stringArray& list);
  [[nodiscard]] int ReadNumberRun(KVN_doubleArray& list);
  [[nodiscard]] int ReadIntegerRun(KVN_intArray& list);
  [[nodiscard]] int ReadPointRun(KVN_intArray& list);
  /// "(" what `readRun` reads ")".
  template <typename ReadRun>
  int ReadBracketed(ReadRun readRun) {
    if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "("); result < 0) return result;
    if (int result = readRun(); result < 0) return result;
    return RequireToken(KVN_TOKEN_PUNCTUATOR, ")");
  }

  /// Statements up to the block's "}", which is consumed. `readStatement` is called as `int ()`
  /// with the first token not yet consumed; what it refuses is skipped.
  template <typename Statement>
  void ReadStatements(Statement readStatement) {
    while (IsBlockEnd() == 0) {
      if (readStatement() != 0) (void)SkipStatement();
      (void)AcceptToken(KVN_TOKEN_PUNCTUATOR, ";");
    }
    (void)ReadBlockEnd();  // fails at the end of the file only, and has told it then
  }

  /// Makes a node of type `nodeType` named by the next token. The handle, or a reported failure.
  [[nodiscard]] int CreateNode();
  /// At the end of a node's block: deletes the node, with a message, unless it is ready and its
  /// block gave all that the kind needs.
  void FinishNode(int handle, bool isWhole);
  /// Gives the node its outcomes, names mended where needed. One outcome becomes two, with a
  /// message. An empty list is refused.
  [[nodiscard]] int SetOutcomes(KVN_nodeDefinition& definition, const KVN_stringArray& names);
  /// The first two numbers become the centre of the node's rectangle.
  [[nodiscard]] int SetPosition(KVN_node& node, const KVN_intArray& point);
  /// Handle of the node named by the next token, or a reported failure.
  [[nodiscard]] int FindChild();
  /// Identifiers up to and with the ")", each one a parent. One that is refused is told, and the
  /// next is taken.
  [[nodiscard]] int ReadParents(int child);
  /// Told when the numbers of a table aren't as many as its cells.
  int ReportCellCount(int child, int found, int expected);

  /// Whether every node can be written: 0, or KVN_REFUSED with a message, `networkMessage` when
  /// there is a node of several utilities and `typeMessage` (with the type's word) when there is
  /// another kind that no block is for. KVN_NO_MEMORY when `order`, the network's order of nodes,
  /// lacks some.
  int CheckWritable(const KVN_intArray& order, const char* networkMessage, const char* typeMessage);
  /// Opens the target; text begins at the left margin.
  [[nodiscard]] int StartFile(const char* fileName);
  /// Text in double quotes, escaped; what a reader could not take, beyond 10,210 bytes, is cut off.
  int PutQuoted(const char* text);
  /// `name`, the separator, the value as asked for, ";". Nothing for a null name or value.
  int PutStatement(const char* name, const char* separator, const char* value, bool quoted,
                   bool escaped);
  void OpenBlock(const char* word, const char* name);
  void CloseBlock();
  /// The identifier, or a stand-in for a node without one.
  const char* IdentifierOf(int handle) const;

  int nodeType = 0;  // type code of the node in hand
};
