#pragma once

#include "formats/text/blankListFormat.h"

/// The Hugin format, extension "net": a block `net`, a block per node, and a `potential` per node
/// with its parents and numbers. "%" starts a comment. docs/formats.md holds the grammar.
///
/// Carried are discrete chance nodes, decisions and utilities with identifier, label, states,
/// position and further text attributes, which become user properties of the node. A decision gets
/// its information arcs from a potential without numbers.
///
/// Numbers. The list may be nested in any way, for its brackets only count: the order is that of
/// the engine's tables, the last parent and then the node's own states fastest. Probabilities are
/// normalised row by row after reading, so that counts and percents are right too. Utilities are
/// not: each would become 1.
///
/// Geometry. In the file y grows upward, on the engine's screens downward. Both ways y becomes the
/// largest top edge (centre minus half the height) of the network minus y, so that a picture that
/// is read and written again has moved as a whole, with its shape kept.
class KVN_huginSpeaker : public KVN_blankListFormat {
 public:
  explicit KVN_huginSpeaker(KVN_network& target) : KVN_blankListFormat(target) {}

  /// 0 whatever the file holds; KVN_FILE_IO and KVN_NO_MEMORY when it can't be opened. A file that
  /// does not begin with `net` is left unread, which the log tells.
  int ReadFile(const char* fileName) override;
  int WriteFile(const char* fileName) override;

 protected:
  /// `("a" "b")`
  int ReadIdentifierList(KVN_stringArray& list) override;
  int WriteIdentifierList(const KVN_stringArray& list, bool whole) override;
  /// `(1 2)`
  int ReadDoubleList(KVN_doubleArray& list) override;
  int WriteDoubleList(const KVN_doubleArray& list, bool whole) override;
  int WriteIntList(const KVN_intArray& list, bool whole) override;
  int WriteStatement(const char* name, const char* value, bool quoted, bool escaped) override;
  /// With the brace on the line of the name, for a block within a block.
  int WriteBlockStart(const char* name) override;

 private:
  // Reading, huginSpeaker.cpp.
  void ReadNetwork();
  int ReadNetStatement();
  int ReadNodeSize();
  int ReadNode();
  int ReadNodeType();
  int ReadNodeStatement(int handle, bool& hasStates);
  int ReadLabel(KVN_node& node);
  int ReadPosition(KVN_node& node);
  int ReadStates(KVN_node& node, bool& hasStates);
  int ReadProperty(KVN_node& node);
  int ReadPotential();
  int ReadPotentialStatement(int child);
  int ReadNestedList(KVN_doubleArray& numbers);
  int StoreNumbers(int child, const KVN_doubleArray& numbers);
  void NormalizeTables();

  // Writing, huginSpeakerWriter.cpp.
  void WriteNet();
  void WriteNode(int handle, long long top);
  void WriteProperties(KVN_node& node);
  int WritePotential(int handle);

  /// The number from which each y is subtracted.
  long long TopEdge() const;
  static int Flip(long long top, int y);
};
