#pragma once

#include <memory>
#include <string>

#include "formats/text/lexicalTables.h"
#include "formats/text/textFile.h"
#include "foundation/object.h"

/// Classes of tokens. Class 2 includes numbers with an exponent and no point ("1e5", but also
/// "12e"); class 7 includes a number that ends right after its point ("3."), which is therefore no
/// number to the list readers; the text of a string has no quotes and its escapes are resolved.
enum KVN_tokenType : int {
  KVN_TOKEN_IDENTIFIER = 1,
  KVN_TOKEN_INTEGER = 2,
  KVN_TOKEN_REAL = 3,
  KVN_TOKEN_SLASH = 4,
  KVN_TOKEN_EQUAL = 5,
  KVN_TOKEN_DOUBLE_EQUAL = 6,
  KVN_TOKEN_POINT = 7,
  KVN_TOKEN_PUNCTUATOR = 8,
  KVN_TOKEN_SIGN = 9,
  KVN_TOKEN_STRING = 70,
  KVN_TOKEN_UNKNOWN = 90,  // never returned with a result of 0
};

/// A token as callers see it. The text belongs to the lexer, ends with a NUL and stays valid until
/// five more tokens have been scanned.
struct KVN_token {
  int type = 0;
  const char* text = "";
  int length = 0;      // bytes of `text`
  bool isCut = false;  // it was longer
};

/// Cuts a text file into tokens with a table-driven automaton. One automaton serves all text
/// formats: the five tables (lexicalTables.h) make the difference.
///
/// The input is read a line at a time into a buffer of 32,000 bytes. A longer line arrives in
/// pieces; identifiers and numbers are joined over the seam, a string that reaches the seam is
/// unterminated. A token keeps its first 10,211 bytes, the rest of it is scanned and dropped. A NUL
/// byte in a file hides what follows it in the buffer, so the rest of its line.
///
/// GetToken looks ahead and ConsumeToken moves on; the last five tokens can be taken back.
///
/// The object owns about 95 KB of buffers and is meant to live for one file at a time.
///
/// A result below 0 of GetToken means that there are no more tokens to be had: KVN_NO_MORE_TOKENS,
/// KVN_LEXICAL_ERROR (which repeats for ever: the position does not move past an unknown
/// character) or KVN_UNEXPECTED_EOF, the last two with a message in the log. Every loop over tokens
/// must end on any of them.
class KVN_lexicalAnalizer : public KVN_object {
 public:
  static constexpr int kBufferSize = 32000;
  static constexpr int kMaxTokenLength = 10211;

  /// `table` is 1 to 5; another number gives an analyser to which every character is skipped input.
  /// Without memory the object is not ready and OpenFile fails.
  explicit KVN_lexicalAnalizer(int table);
  KVN_lexicalAnalizer(const KVN_lexicalAnalizer&) = delete;
  KVN_lexicalAnalizer& operator=(const KVN_lexicalAnalizer&) = delete;

  int CheckReadiness(int deep) override;
  ~KVN_lexicalAnalizer() override;

  /// Starts on a file, dropping all tokens of an earlier one. An empty file opens well and has no
  /// tokens. With `returnsEndLines` a carriage return alone ends a line, as the files of old
  /// machines have it. KVN_FILE_IO with "OPEN FILE FAILED" in the log; KVN_NO_MEMORY.
  [[nodiscard]] int OpenFile(const char* name, bool returnsEndLines = false);

  /// The next token, which stays the next one until ConsumeToken. A result below 0 leaves `token`
  /// as it was, but for an unknown character, which becomes a token of class KVN_TOKEN_UNKNOWN.
  [[nodiscard]] int GetToken(KVN_token& token);
  void ConsumeToken();
  /// Makes the token before the present one the next one; "present" is the token in hand or, where
  /// there is none, the last one consumed. KVN_REFUSED at the oldest of the five.
  [[nodiscard]] int UngetToken();

  /// For the parts of a format that are no tokens. All three begin behind the last consumed token,
  /// or where the token in hand began, and none reports anything.
  ///
  /// Reads up to `mark`, over line ends and whatever the characters are. The mark is consumed and
  /// is no part of `text`, which may be null. KVN_NO_MORE_TOKENS at the end of the file; `text` is
  /// then as it was.
  [[nodiscard]] int ReadRaw(const char* mark, std::string* text);
  /// Reads the next run of characters that are no blanks. KVN_NO_MORE_TOKENS.
  [[nodiscard]] int ReadWord(std::string& word);
  /// Whether `text` stands next, behind blanks; consumes nothing but them.
  [[nodiscard]] bool IsNext(const char* text);

  /// From now on a backslash and two hexadecimal digits in a string stand for a byte other than 0,
  /// which would end the text.
  void AcceptHexEscapes() { hasHexEscapes = true; }

  /// Characters to skip ahead of a token, besides blank, tab and line feed. They still are what
  /// they are inside and right behind one.
  void AddWhitespace(const char* characters);

  /// Lines read so far: the line of the next token, or of the token in hand.
  int GetLineCount() const { return inputFile.GetLineCount(); }

 private:
  static constexpr int kHistorySize = 5;

  /// One token with its own storage. There is one slot more than tokens to remember: the next token
  /// is scanned into the spare one, so that a failed scan spoils no record and nothing is copied
  /// twice.
  struct Slot {
    int type;
    int length;
    bool isCut;
    char text[kMaxTokenLength + 1];
  };

  enum Flags : unsigned { kFromFile = 1, kTokenInHand = 4 };

  void DropTokenInHand();
  int ScanToken(KVN_token& token);
  int SkipBlanks();
  int RunAutomaton();
  int FinishToken();
  int ScanString();
  int ScanEscape(bool& skipping);
  int SkipComment(int action);
  int SkipBlockComment();
  int SkipNestedComment();
  int ReportUnknownCharacter(KVN_token& token);
  int ReportUnexpectedEnd(const char* message);

  int ReadPiece(int kept);
  int ReadNextLine();
  int SkipRestOfLine();
  bool IsAtSeam(const char* position) const;
  void ContinueOverSeam();

  Slot& Scanned() { return slots[spareSlot]; }
  void Append(char character);
  void AppendRange(const char* first, const char* last);
  void PushScanned(int type);
  void GiveRecord(KVN_token& token) const;

  KVN_lexicalTransitions transitions = {};
  char* tokenStart = nullptr;    // into `buffer`
  char* scanPosition = nullptr;  // into `buffer`, not before tokenStart
  char* lineEnd = nullptr;       // the NUL that ends what was read into `buffer`
  int previousState = 0;
  int currentState = 0;
  std::unique_ptr<char[]> buffer;
  KVN_textFile inputFile;
  unsigned flags = 0;

  bool whitespace[256] = {};  // never the NUL
  bool hasHexEscapes = false;

  std::unique_ptr<Slot[]> slots;  // kHistorySize + 1, used in a circle
  int spareSlot = 0;              // the records are the historyCount slots before this one
  int historyCount = 0;
  int historyPosition = -1;  // the record that GetToken gives out, 0 is the oldest
};
