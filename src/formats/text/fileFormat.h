#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "formats/text/cellBudget.h"
#include "formats/text/lexicalAnalizer.h"
#include "formats/text/textFile.h"
#include "network/fileSpeaker.h"

class KVN_Dmatrix;
class KVN_doubleArray;
class KVN_intArray;
class KVN_network;
class KVN_stringArray;

/// Base of the text formats: a token in hand, readers and writers of statements, lists and blocks,
/// recovery after a syntax error, and the error report with its line number.
///
/// A speaker lives for one ReadFile or WriteFile. A read starts with OpenLexer and ends with
/// CloseLexer; a write opens `outputFile`, writes, and returns the result of its Close.
///
/// Reading. The chain of statement readers of a block is tried one after the other: a reader whose
/// keyword does not match answers KVN_NOT_THIS_STATEMENT and has consumed nothing. After a value
/// has been consumed its text is still in `tokenText`. A syntax error costs one statement: the
/// message goes to the log, ReadBlock skips to the end of the statement and goes on, and the block
/// as a whole is a success.
///
/// End of input. Every loop over tokens ends on any result below 0 of the lexer, be it the end of
/// the file or an error at which the lexer stands still.
///
/// Case. It is meant that AcceptToken and RequireToken ignore the case of their text, while
/// TokenIs, TokenInList, PeekIs and PeekInList compare exactly as long as `caseSensitive` is set:
/// keywords match in any case where a statement reader consumes them, and exactly where a block
/// dispatches on them.
///
/// Writing. Results of writers are 0 or KVN_FILE_IO. They may be ignored: the Close of `outputFile`
/// tells of any failure. A null name or value writes nothing and is no error, so that an absent
/// value does not occur in the file.
class KVN_fileFormat : public KVN_fileSpeaker {
 public:
  explicit KVN_fileFormat(KVN_network& target);
  KVN_fileFormat(const KVN_fileFormat&) = delete;
  KVN_fileFormat& operator=(const KVN_fileFormat&) = delete;
  /// Closes `outputFile`, then deletes the lexer.
  ~KVN_fileFormat() override;

 protected:
  // The table of virtual operations that the formats override goes on here with slot 9. Their
  // order stays as it is.

  /// Skips to the ";" that ends the statement and leaves it unconsumed; ";" inside braces do not
  /// count. It is meant that a stray "}" makes the depth -1, so that the skipping runs on into the
  /// statements after the block. At the end of the input its code is reported and returned.
  virtual int SkipStatement();
  /// After a block whose end was not found.
  virtual int SkipStatementAfterBlock();

  /// "(" elements separated by "," ")". "()" is a legal empty list, a comma before ")" is an error.
  /// Elements go to the end of `list`; after a failure it holds what was read so far.
  /// KVN_SYNTAX_ERROR (reported), KVN_NOT_READY for a string list that is not ready, the lexer's
  /// code, KVN_NO_MEMORY. Other refusals of the list's own Add are ignored.
  [[nodiscard]] virtual int ReadIdentifierList(KVN_stringArray& list);
  [[nodiscard]] virtual int ReadStringList(KVN_stringArray& list);
  /// Takes integers too.
  [[nodiscard]] virtual int ReadDoubleList(KVN_doubleArray& list);
  [[nodiscard]] virtual int ReadIntList(KVN_intArray& list);

  /// `name = (a, b, c);`. With `whole` all `size` slots go out, otherwise the used ones.
  virtual int WriteIdentifierListStatement(const char* name, const KVN_stringArray& list,
                                           bool whole);
  virtual int WriteIdentifierList(const KVN_stringArray& list, bool whole);
  virtual int WriteStringListStatement(const char* name, const KVN_stringArray& list, bool whole);
  virtual int WriteStringList(const KVN_stringArray& list, bool whole);
  virtual int WriteDoubleListStatement(const char* name, const KVN_doubleArray& list, bool whole);
  virtual int WriteDoubleList(const KVN_doubleArray& list, bool whole);
  virtual int WriteIntListStatement(const char* name, const KVN_intArray& list, bool whole);
  virtual int WriteIntList(const KVN_intArray& list, bool whole);

  /// `name = token of that class`, without the ";". The value's text is in `tokenText` afterwards.
  /// KVN_NOT_THIS_STATEMENT when the next token is not `name`; KVN_REFUSED for a null name; else
  /// as RequireToken.
  [[nodiscard]] virtual int ReadStatement(const char* name, int type);
  /// `value` is untouched by a failure.
  [[nodiscard]] virtual int ReadIntStatement(const char* name, int& value);
  /// 1 for TRUE, 0 for FALSE.
  [[nodiscard]] virtual int ReadBoolStatement(const char* name, int& value);

  /// `name = value;`. With neither `quoted` nor `escaped` the value goes out as it stands, without
  /// word wrap.
  virtual int WriteStatement(const char* name, const char* value, bool quoted, bool escaped);
  virtual int WriteIntStatement(const char* name, int value);
  virtual int WriteBoolStatement(const char* name, bool value);
  /// Quoted and escaped.
  virtual int WriteStringStatement(const char* name, const char* value);

  /// Brackets of a block. The base reads and writes no start: each format has its own.
  [[nodiscard]] virtual int ReadBlockStart(const char* name);
  [[nodiscard]] virtual int ReadBlockEnd();
  virtual int WriteBlockStart(const char* name);
  /// One indent level less, "};", one less again.
  virtual int WriteBlockEnd();
  /// 1 when the next token is "}" or there are no more tokens, else 0.
  virtual int IsBlockEnd();

  /// Logs `message`, or the code's standard text when it is null, behind "(line %d) : ". Returns
  /// the code. A code of 0 logs nothing, so the result of any operation may be passed through.
  virtual int ReportError(int code, const char* message);

  /// Called around the writing of escaped text: sets and clears the text at the end of a line that
  /// word wrap broke.
  virtual void BeginContinuation();
  virtual void EndContinuation();

  // The table ends here.

  /// Makes the lexer with a table of KVN_lexicalTableNumber and opens the file. KVN_NO_MEMORY, or
  /// KVN_FILE_IO with "OPEN FILE FAILED" in the log; then there is no lexer.
  [[nodiscard]] int OpenLexer(const char* fileName, int table, bool returnsEndLines = false);
  void CloseLexer() { lexer.reset(); }

  /// Takes the next token into hand (tokenType, tokenText, tokenLength) and leaves it unconsumed.
  /// 0, the lexer's code, or KVN_REFUSED without a lexer.
  [[nodiscard]] int PeekToken();
  /// Consumes the token in hand; its text stays valid.
  void ConsumeToken();
  /// The same, and tells of a token that was too long, whose text lacks its end.
  void TakeToken();

  /// Consumes the next token if its class and, where `text` is not null, its text fit. Class 8 with
  /// a text compares the text alone: operators such as "=" have classes of their own and may be
  /// asked for as punctuators. KVN_SYNTAX_ERROR when it does not fit, the lexer's code when there
  /// is none, KVN_REFUSED without a lexer; nothing is reported.
  int AcceptToken(int type, const char* text);
  /// The same, but every failure is reported and is KVN_SYNTAX_ERROR.
  [[nodiscard]] int RequireToken(int type, const char* text);

  /// Fits no token: RequireToken reports the one that is there as unexpected.
  static constexpr int kNoClass = -1;

  /// Logs a message that holds a text or a number; returns the code.
  int ReportText(int code, const char* format, const char* text);
  int ReportNumber(int code, const char* format, int number);
  /// The same with the next token as the text, or another message at the end of the file;
  /// KVN_SYNTAX_ERROR.
  int ReportToken(const char* format);

  /// Makes a node with a generated identifier. The handle, or a reported failure that leaves no
  /// node: AddNode gives one without a definition where memory is short.
  [[nodiscard]] int AddUnnamedNode(int type);

  /// One token of the class, consumed; KVN_SYNTAX_ERROR, with nothing reported, when the next one
  /// is of another class, and as AcceptToken. A failure leaves `value` untouched.
  [[nodiscard]] int ReadInteger(int& value);
  /// Takes integers too.
  [[nodiscard]] int ReadDouble(double& value);
  [[nodiscard]] int ReadIdentifierToken(std::string& value);
  [[nodiscard]] int ReadStringToken(std::string& value);

  /// Whether the token in hand is `text`, or one of a null-terminated table of words: 1 or 0.
  int TokenIs(const char* text) const;
  int TokenInList(const char* const* table) const;

  /// The same questions on the next token, which is taken into hand and not consumed: 1 or 0, or
  /// the code of PeekToken.
  int PeekIs(const char* text);
  int PeekInList(const char* const* table);
  int PeekIsComma();
  int PeekIsOpenParenthesis();
  int PeekIsIdentifier();
  int PeekIsString();
  int PeekIsNumber();
  int PeekIsInteger();

  /// A piece of text at the current indentation, with word wrap; what is beyond 10,210 bytes is
  /// cut off. `escaped` sends it through EscapeString.
  int WriteLine(const char* text, bool escaped = false);
  /// The same where the line stands, and with `escaped` between BeginContinuation and
  /// EndContinuation.
  int WriteText(const char* text, bool escaped = false);
  /// Text, or a number as DoubleToText gives it, where the line stands and without word wrap.
  int PutText(const char* text);
  int PutNumber(double value);
  /// A table as nested lists, a row per line with the separator behind it; `column` is where the
  /// first one begins, counted from the indentation. The cells of the last `innerDimensions`
  /// dimensions make a row, which goes out through WriteDoubleList. KVN_NO_MEMORY.
  [[nodiscard]] int WriteNestedList(const KVN_Dmatrix& table, int innerDimensions, int column,
                                    const char* separator);
  /// A backslash pair for tab, line feed, carriage return, double quote and backslash. The
  /// destination must hold twice the length of the source and a NUL.
  static void EscapeString(const char* source, char* destination);
  int SetRightMargin(int columns) { return outputFile.SetRightMargin(columns); }

  /// ReadStatement with another separator between the name and the value.
  [[nodiscard]] int ReadStatementWith(const char* name, const char* separator, int type);

  /// For the formats whose blocks are `NAME = { ... };`: their ReadBlockStart, WriteBlockStart and
  /// BeginContinuation. A null name reads and writes nothing, 0.
  [[nodiscard]] int ReadBraceBlockStart(const char* name);
  int WriteBraceBlockStart(const char* name);
  void UseBackslashContinuation() { outputFile.SetContinuation("\\ "); }

  /// Reads a whole block of statements with recovery. `readStatement` is called as `int ()` with
  /// the statement's first token not yet consumed, and leaves the ";" to this loop.
  ///
  /// The result of ReadBlockStart if that is not 0 (KVN_NOT_THIS_STATEMENT for another keyword),
  /// else 0 whatever happened inside.
  template <typename Statement>
  int ReadBlock(const char* name, Statement readStatement) {
    if (int result = ReadBlockStart(name); result != 0) return result;
    return ReadBlockBody(readStatement);
  }
  /// The part after the block's start.
  template <typename Statement>
  int ReadBlockBody(Statement readStatement) {
    while (IsBlockEnd() == 0) {
      if (readStatement() != 0) (void)SkipStatement();
      // The ";" that this skip leaves is the first token of the next round, which reports it:
      // that is the message that a missing ";" gets.
      if (AcceptToken(KVN_TOKEN_PUNCTUATOR, ";") != 0) (void)SkipStatement();
    }
    if (ReadBlockEnd() != 0) (void)SkipStatementAfterBlock();
    return 0;
  }

  KVN_network* network;                        // not owned, outlives this object
  std::unique_ptr<KVN_lexicalAnalizer> lexer;  // null except during a read
  std::int64_t fileBytes = 0;                  // of the file in work; the most where it isn't told
  KVN_cellBudget budget;                       // what the file's nodes may grow to
  KVN_textFile outputFile;
  int tokenType = 0;
  const char* tokenText = "";  // inside the lexer
  int tokenLength = 0;
  bool isTokenCut = false;
  int faultLine = 0;             // above 0: what ReportError names in place of the present line
  char errorMessage[1021] = {};  // where a message is composed before it is reported
  bool caseSensitive = true;

 private:
  bool TokenIsOfClass(int type) const;
  bool TokenFits(int type, const char* text) const;
  int PeekIsOfClass(int type);
  int RequireElement(int type);
  int ReportMisfit(int type, const char* text);
  template <typename AddElement>
  int ReadList(int type, AddElement addElement);

  int WriteWrapped(const char* text);
  int WriteElement(const char* text, const char* separator);
  template <typename TextOf>
  int WriteList(int count, TextOf textOf);
  template <typename WriteElements>
  int WriteListStatement(const char* name, WriteElements writeElements);
};
