#pragma once

#include <memory>

#include "formats/text/blankListFormat.h"

class KVN_Dmatrix;
class KVN_idArray;

/// The Microsoft format for belief networks, extension "dsc": a line with the network's name, a
/// block per node, and a block per node with its parents and its table, a row per parent
/// configuration. "," and "|" are blanks. docs/formats.md holds the grammar.
///
/// Carried are discrete chance nodes, decisions and utilities with identifier, name, states and
/// position. Rows may stand in any order, since each names its parent states by index. Numbers are
/// kept as they are in the file, not normalised.
class KVN_microsoftSpeaker : public KVN_blankListFormat {
 public:
  explicit KVN_microsoftSpeaker(KVN_network& target) : KVN_blankListFormat(target) {}

  /// 0 whatever the file holds; KVN_FILE_IO and KVN_NO_MEMORY when it can't be opened. A file that
  /// does not begin with `belief`, `diagnostic` or `trouble` is left unread, which the log tells.
  int ReadFile(const char* fileName) override;
  int WriteFile(const char* fileName) override;

 protected:
  /// `"a", "b"`, without brackets, as the states of a node.
  int ReadIdentifierList(KVN_stringArray& list) override;
  int WriteIdentifierList(const KVN_stringArray& list, bool whole) override;
  /// `1, 2`, without brackets, as a row of a table.
  int ReadDoubleList(KVN_doubleArray& list) override;
  int WriteDoubleList(const KVN_doubleArray& list, bool whole) override;
  /// `(1, 2)`
  int ReadIntList(KVN_intArray& list) override;
  /// `name : (1 2);`
  int WriteIntListStatement(const char* name, const KVN_intArray& list, bool whole) override;
  int ReadStatement(const char* name, int type) override;
  int WriteStatement(const char* name, const char* value, bool quoted, bool escaped) override;
  int WriteBlockStart(const char* name) override;

 private:
  /// The cells that the statements of one table block have set.
  struct CellMarks {
    std::unique_ptr<bool[]> isSet;
    int count = 0;  // cells marked
  };

  // Reading, microsoftSpeaker.cpp.
  void ReadNetwork();
  void ReadObject();
  int ReadNode();
  int ReadNodeStatement(int handle, bool& hasType);
  int ReadLabel(KVN_node& node);
  int ReadName(KVN_node& node);
  int ReadPosition(KVN_node& node);
  int ReadType(KVN_node& node, bool& hasType);
  int ReadStates(int& count, KVN_stringArray& names);
  int ReadTable(int type);
  int ReadRow(int child, CellMarks& marks);
  int ReadRowStart(const KVN_Dmatrix& table, int& start, bool& hasCoordinates);

  // Writing, microsoftSpeakerWriter.cpp.
  void WriteNode(int handle);
  void WriteType(const KVN_idArray& names);
  int WriteTable(int handle);
  int WriteRows(const KVN_Dmatrix& table);
};
