#pragma once

#include <cstdint>

#include "formats/text/fileFormat.h"
#include "foundation/intArray.h"

class KVN_doubleArray;

/// The Ergo format, extension "erg": numbers and words by position, in sections with headings.
/// Tokens are words between blanks; "/" and "*" alone are punctuators, and there are neither
/// comments nor strings. docs/formats.md holds the layout.
///
/// Carried are discrete chance nodes: identifiers, states, centres and numbers. A table is either
/// the full one, in the engine's order (the last parent and then the node's own states fastest), or
/// the compact one of a noisy-MAX gate.
///
/// Everything is found by its position, so reading ends where a number or a heading is missing:
/// what follows could only be taken for something else. Where no further heading follows a section
/// the file is complete.
class KVN_ergoSpeaker : public KVN_fileFormat {
 public:
  explicit KVN_ergoSpeaker(KVN_network& target) : KVN_fileFormat(target) {}

  /// KVN_REFUSED for a number of nodes below 0, KVN_SYNTAX_ERROR where the layout is broken, with a
  /// message; what was read so far stays. Else 0, or the code of OpenLexer.
  int ReadFile(const char* fileName) override;
  /// KVN_REFUSED, with a message, for a node that is neither a table nor deterministic; the target
  /// is then untouched.
  int WriteFile(const char* fileName) override;

 private:
  // Reading, ergoSpeaker.cpp.
  int ReadNetwork();
  int RequireInteger(int& value);
  int RequireNumber(double& value);
  int ReadNodes(int count);
  int AddNode();
  int ReadParents(int handle);
  int ReadSections();
  int ReadHeading(int& section);
  int ReadProbabilities();
  int ReadTable(int handle);
  int StoreTable(int handle, const KVN_doubleArray& numbers);
  int StoreFullTable(int handle, const KVN_doubleArray& numbers);
  int StoreCompactTable(int handle, const KVN_doubleArray& numbers);
  int ReverseStrengths();
  int ReadNames();
  int NameNode(int handle, const char* word);
  int ReadLabels();
  int ReadCenters();
  int ReadWord(std::string& word);

  // Writing, ergoSpeakerWriter.cpp.
  int WriteStructure();
  void WriteProbabilities();
  void WriteNames();
  void WriteLabels();
  void WriteCenters();
  void PutHeading(const char* word);
  void PutCell(const char* text);
  void PutInt(int value, const char* behind);

  KVN_intArray nodes;           // handles in the order of the file
  std::int64_t statesLeft = 0;  // that the nodes still to come may have: the bytes of the file
};
