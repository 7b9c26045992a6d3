#include "formats/text/fileFormat.h"

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <new>

#include "foundation/errorLog.h"
#include "foundation/numberText.h"
#include "foundation/resultCodes.h"
#include "network/network.h"

namespace {

constexpr int kMaxPiece = 10210;  // bytes of a text that WriteLine and WriteText write

char ToLower(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                              : character;
}

/// Only the ASCII letters have a case, whatever the locale of the host says.
bool EqualIgnoringCase(const char* a, const char* b, int length) {
  for (int i = 0; i < length; ++i) {
    if (ToLower(a[i]) != ToLower(b[i])) return false;
  }
  return true;
}

/// Word for a class of tokens in messages, or null.
const char* ClassWord(int type) {
  switch (type) {
    case KVN_TOKEN_IDENTIFIER:
      return "Identifier";
    case KVN_TOKEN_INTEGER:
      return "Integer";
    case KVN_TOKEN_REAL:
      return "Real Number";
    case KVN_TOKEN_PUNCTUATOR:
      return "Punctuator";
    case KVN_TOKEN_STRING:
      return "String";
    default:
      return nullptr;
  }
}

/// Whether a run without blanks is longer than `width`.
bool HasWordLongerThan(const char* text, int width) {
  int length = 0;
  for (; *text != '\0'; ++text) {
    length = *text == ' ' || *text == '\t' || *text == '\n' ? 0 : length + 1;
    if (length > width) return true;
  }
  return false;
}

/// Cuts a text to what one piece may hold, and escapes it on demand. Points at the source where
/// nothing has to be changed.
class Piece {
 public:
  Piece(const char* source, bool escaped, void (*escape)(const char*, char*)) : text(source) {
    if (std::strlen(source) >= static_cast<std::size_t>(kMaxPiece)) {
      std::memcpy(cut, source, kMaxPiece);
      cut[kMaxPiece] = '\0';
      text = cut;
    }
    if (!escaped) return;
    escape(text, result);
    text = result;
  }
  const char* Text() const { return text; }

 private:
  const char* text;
  char cut[kMaxPiece + 1];
  char result[2 * kMaxPiece + 1];
};

}  // namespace

KVN_fileFormat::KVN_fileFormat(KVN_network& target) : network(&target) {}

KVN_fileFormat::~KVN_fileFormat() {
  outputFile.Close();
  CloseLexer();
}

int KVN_fileFormat::OpenLexer(const char* fileName, int table, bool returnsEndLines) {
  lexer.reset(new (std::nothrow) KVN_lexicalAnalizer(table));
  if (lexer == nullptr) return KVN_NO_MEMORY;
  if (int result = lexer->OpenFile(fileName, returnsEndLines); result < 0) {
    CloseLexer();
    return result;
  }
  std::error_code failed;
  const auto bytes = std::filesystem::file_size(fileName, failed);
  fileBytes = failed ? std::numeric_limits<int>::max() : static_cast<std::int64_t>(bytes);
  budget.Start(fileBytes);
  return 0;
}

// Tokens.

int KVN_fileFormat::PeekToken() {
  if (lexer == nullptr) return KVN_REFUSED;
  KVN_token token;
  if (int result = lexer->GetToken(token); result < 0) return result;
  tokenType = token.type;
  tokenText = token.text;
  tokenLength = token.length;
  isTokenCut = token.isCut;
  return 0;
}

void KVN_fileFormat::ConsumeToken() {
  if (lexer != nullptr) lexer->ConsumeToken();
}

void KVN_fileFormat::TakeToken() {
  ConsumeToken();
  if (!isTokenCut) return;
  (void)ReportNumber(KVN_REFUSED, "ERROR: Text of more than %d characters, cut", tokenLength);
}

bool KVN_fileFormat::TokenIsOfClass(int type) const {
  return tokenType == type || (type == KVN_TOKEN_REAL && tokenType == KVN_TOKEN_INTEGER);
}

bool KVN_fileFormat::TokenFits(int type, const char* text) const {
  if (text == nullptr) return tokenType == type;
  if (type != KVN_TOKEN_PUNCTUATOR && tokenType != type) return false;
  return static_cast<int>(std::strlen(text)) == tokenLength &&
         EqualIgnoringCase(tokenText, text, tokenLength);
}

int KVN_fileFormat::AcceptToken(int type, const char* text) {
  if (int result = PeekToken(); result < 0) return result;
  if (!TokenFits(type, text)) return KVN_SYNTAX_ERROR;
  TakeToken();
  return 0;
}

int KVN_fileFormat::RequireToken(int type, const char* text) {
  if (lexer == nullptr) return ReportError(KVN_SYNTAX_ERROR, "ERROR: Unable to parse file");
  if (PeekToken() == 0 && TokenFits(type, text)) {
    TakeToken();
    return 0;
  }
  return ReportMisfit(type, text);
}

/// Looks at the next token once more, to tell a wrong one from none.
int KVN_fileFormat::ReportMisfit(int type, const char* text) {
  char expected[512];
  const char* const word = ClassWord(type);
  if (text != nullptr) {
    std::snprintf(expected, sizeof expected, "'%s'", text);
  } else {
    std::snprintf(expected, sizeof expected, "%s", word != nullptr ? word : "");
  }
  const bool isKnown = *expected != '\0';
  if (PeekToken() < 0) {
    std::snprintf(errorMessage, sizeof errorMessage,
                  isKnown ? "ERROR: End of File : Expecting %s" : "ERROR: Unexpected End of File%s",
                  expected);
  } else {
    std::snprintf(errorMessage, sizeof errorMessage,
                  isKnown ? "ERROR: '%s' : %s expected" : "ERROR: '%s' : Unexpected%s", tokenText,
                  expected);
  }
  return ReportError(KVN_SYNTAX_ERROR, errorMessage);
}

int KVN_fileFormat::AddUnnamedNode(int type) {
  const int handle = network->AddNode(type, nullptr);
  if (handle >= 0 && network->DefinitionOf(handle) != nullptr) return handle;
  if (handle >= 0) (void)network->DeleteNode(handle);
  return ReportError(handle < 0 ? handle : int{KVN_NO_MEMORY}, "ERROR: Couldn't Create Node");
}

int KVN_fileFormat::ReadInteger(int& value) {
  if (int result = PeekToken(); result < 0) return result;
  if (tokenType != KVN_TOKEN_INTEGER) return KVN_SYNTAX_ERROR;
  ConsumeToken();
  return TextToInt(tokenText, value);
}

int KVN_fileFormat::ReadDouble(double& value) {
  if (int result = PeekToken(); result < 0) return result;
  if (!TokenIsOfClass(KVN_TOKEN_REAL)) return KVN_SYNTAX_ERROR;
  ConsumeToken();
  double number = 0.0;
  if (int result = TextToDouble(tokenText, number); result < 0) return result;
  value = number;
  return 0;
}

int KVN_fileFormat::ReadIdentifierToken(std::string& value) {
  if (int result = AcceptToken(KVN_TOKEN_IDENTIFIER, nullptr); result < 0) return result;
  value = tokenText;
  return 0;
}

int KVN_fileFormat::ReadStringToken(std::string& value) {
  if (int result = AcceptToken(KVN_TOKEN_STRING, nullptr); result < 0) return result;
  value = tokenText;
  return 0;
}

int KVN_fileFormat::TokenIs(const char* text) const {
  if (text == nullptr || static_cast<int>(std::strlen(text)) != tokenLength) return 0;
  if (caseSensitive) return std::strcmp(tokenText, text) == 0 ? 1 : 0;
  return EqualIgnoringCase(tokenText, text, tokenLength) ? 1 : 0;
}

int KVN_fileFormat::TokenInList(const char* const* table) const {
  if (table == nullptr) return 0;
  for (; *table != nullptr; ++table) {
    if (TokenIs(*table) == 1) return 1;
  }
  return 0;
}

int KVN_fileFormat::PeekIs(const char* text) {
  const int result = PeekToken();
  return result < 0 ? result : TokenIs(text);
}

int KVN_fileFormat::PeekInList(const char* const* table) {
  const int result = PeekToken();
  return result < 0 ? result : TokenInList(table);
}

int KVN_fileFormat::PeekIsOfClass(int type) {
  const int result = PeekToken();
  return result < 0 ? result : TokenIsOfClass(type);
}

int KVN_fileFormat::PeekIsComma() {
  const int result = PeekIsOfClass(KVN_TOKEN_PUNCTUATOR);
  return result == 1 ? *tokenText == ',' : result;
}

int KVN_fileFormat::PeekIsOpenParenthesis() {
  const int result = PeekIsOfClass(KVN_TOKEN_PUNCTUATOR);
  return result == 1 ? *tokenText == '(' : result;
}

int KVN_fileFormat::PeekIsIdentifier() { return PeekIsOfClass(KVN_TOKEN_IDENTIFIER); }
int KVN_fileFormat::PeekIsString() { return PeekIsOfClass(KVN_TOKEN_STRING); }
int KVN_fileFormat::PeekIsNumber() { return PeekIsOfClass(KVN_TOKEN_REAL); }
int KVN_fileFormat::PeekIsInteger() { return PeekIsOfClass(KVN_TOKEN_INTEGER); }

// Recovery and blocks.

int KVN_fileFormat::SkipStatement() {
  int depth = 0;
  while (true) {
    if (int result = PeekToken(); result < 0) return ReportError(result, nullptr);
    if (tokenType == KVN_TOKEN_PUNCTUATOR) {
      if (*tokenText == '{') ++depth;
      if (*tokenText == '}') --depth;
      if (*tokenText == ';' && depth == 0) return 0;
    }
    ConsumeToken();
  }
}

int KVN_fileFormat::SkipStatementAfterBlock() { return SkipStatement(); }

int KVN_fileFormat::ReadBlockStart(const char* /*name*/) { return 0; }
int KVN_fileFormat::ReadBlockEnd() { return RequireToken(KVN_TOKEN_PUNCTUATOR, "}"); }
int KVN_fileFormat::WriteBlockStart(const char* /*name*/) { return 0; }

int KVN_fileFormat::WriteBlockEnd() {
  (void)outputFile.DecreaseIndent();  // a refusal means that the text stands at the left already
  const int result = WriteLine("};\n");
  (void)outputFile.DecreaseIndent();
  return result;
}

int KVN_fileFormat::IsBlockEnd() {
  const int result = PeekIsOfClass(KVN_TOKEN_PUNCTUATOR);
  return result < 0 || (result == 1 && *tokenText == '}') ? 1 : 0;
}

int KVN_fileFormat::ReadBraceBlockStart(const char* name) {
  if (name == nullptr) return 0;
  if (AcceptToken(KVN_TOKEN_IDENTIFIER, name) != 0) return KVN_NOT_THIS_STATEMENT;
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, "="); result < 0) return result;
  return RequireToken(KVN_TOKEN_PUNCTUATOR, "{");
}

int KVN_fileFormat::WriteBraceBlockStart(const char* name) {
  if (name == nullptr) return 0;
  WriteLine(name);
  WriteText(" = \n");
  (void)outputFile.IncreaseIndent();  // refused only where no text would fit on a line
  const int result = WriteLine("{\n");
  (void)outputFile.IncreaseIndent();
  return result;
}

int KVN_fileFormat::ReportError(int code, const char* message) {
  if (code == 0) return 0;
  if (lexer == nullptr) return LogError(code, message);
  char prefix[64];
  const int line = faultLine > 0 ? faultLine : lexer->GetLineCount();
  std::snprintf(prefix, sizeof prefix, "(line %d) : ", line);
  return LogError(code, message, prefix);
}

int KVN_fileFormat::ReportText(int code, const char* format, const char* text) {
  std::snprintf(errorMessage, sizeof errorMessage, format, text == nullptr ? "(null)" : text);
  return ReportError(code, errorMessage);
}

int KVN_fileFormat::ReportNumber(int code, const char* format, int number) {
  std::snprintf(errorMessage, sizeof errorMessage, format, number);
  return ReportError(code, errorMessage);
}

int KVN_fileFormat::ReportToken(const char* format) {
  if (PeekToken() < 0) return RequireToken(kNoClass, nullptr);
  return ReportText(KVN_SYNTAX_ERROR, format, tokenText);
}

void KVN_fileFormat::BeginContinuation() {}
void KVN_fileFormat::EndContinuation() {}

// Statements.

int KVN_fileFormat::ReadStatementWith(const char* name, const char* separator, int type) {
  if (name == nullptr) return KVN_REFUSED;
  if (AcceptToken(KVN_TOKEN_IDENTIFIER, name) != 0) return KVN_NOT_THIS_STATEMENT;
  if (int result = RequireToken(KVN_TOKEN_PUNCTUATOR, separator); result < 0) return result;
  return RequireToken(type, nullptr);
}

int KVN_fileFormat::ReadStatement(const char* name, int type) {
  return ReadStatementWith(name, "=", type);
}

int KVN_fileFormat::ReadIntStatement(const char* name, int& value) {
  if (int result = ReadStatement(name, KVN_TOKEN_INTEGER); result != 0) return result;
  return TextToInt(tokenText, value);
}

int KVN_fileFormat::ReadBoolStatement(const char* name, int& value) {
  if (int result = ReadStatement(name, KVN_TOKEN_IDENTIFIER); result != 0) return result;
  const int isTrue = TokenIs("TRUE");
  if (isTrue == 0 && TokenIs("FALSE") == 0) {
    std::snprintf(errorMessage, sizeof errorMessage, "ERROR: (\"%s\") : Boolean Expected",
                  tokenText);
    return ReportError(KVN_SYNTAX_ERROR, errorMessage);
  }
  value = isTrue;
  return 0;
}

int KVN_fileFormat::WriteStatement(const char* name, const char* value, bool quoted, bool escaped) {
  if (name == nullptr || value == nullptr) return 0;
  // Signs go out with no regard to the margin: a quote that moved to the next line would take the
  // indent before it into the string.
  constexpr int kMode = KVN_textFile::kIndentLines;
  WriteLine(name, false);
  outputFile.PutLines(" = ", kMode);
  if (quoted) outputFile.PutLines("\"", kMode);
  if (quoted || escaped) {
    WriteText(value, escaped);
  } else {
    outputFile.PutLines(value, kMode);
  }
  if (quoted) outputFile.PutLines("\"", kMode);
  return outputFile.PutLines(";\n", kMode);
}

int KVN_fileFormat::WriteIntStatement(const char* name, int value) {
  char text[kNumberTextSize];
  IntToText(value, text);
  return WriteStatement(name, text, false, false);
}

int KVN_fileFormat::WriteBoolStatement(const char* name, bool value) {
  return WriteStatement(name, value ? "TRUE" : "FALSE", false, false);
}

int KVN_fileFormat::WriteStringStatement(const char* name, const char* value) {
  return WriteStatement(name, value, true, true);
}

// Pieces of text.

/// Word wrap where it is harmless. Without a continuation text a word that is too long for a line
/// would be read back as two, so such a text is not wrapped at all.
int KVN_fileFormat::WriteWrapped(const char* text) {
  constexpr int kMode = KVN_textFile::kIndentLines;
  const int width = outputFile.GetRightMargin() - outputFile.GetIndentation();
  if (!outputFile.HasContinuation() && HasWordLongerThan(text, width)) {
    return outputFile.PutLines(text, kMode);
  }
  return outputFile.Write(text, kMode);
}

int KVN_fileFormat::PutText(const char* text) {
  return outputFile.PutLines(text, KVN_textFile::kIndentLines);
}

int KVN_fileFormat::PutNumber(double value) {
  char text[kNumberTextSize];
  DoubleToText(value, text);
  return PutText(text);
}

int KVN_fileFormat::WriteLine(const char* text, bool escaped) {
  if (text == nullptr) return 0;
  const Piece piece(text, escaped, EscapeString);
  if (int result = outputFile.WriteIndent(); result < 0) return result;
  return WriteWrapped(piece.Text());
}

int KVN_fileFormat::WriteText(const char* text, bool escaped) {
  if (text == nullptr) return 0;
  const Piece piece(text, escaped, EscapeString);
  if (escaped) BeginContinuation();
  const int result = WriteWrapped(piece.Text());
  if (escaped) EndContinuation();
  return result;
}

void KVN_fileFormat::EscapeString(const char* source, char* destination) {
  for (; *source != '\0'; ++source) {
    char escaped = '\0';
    switch (*source) {
      case '\t':
        escaped = 't';
        break;
      case '\n':
        escaped = 'n';
        break;
      case '\r':
        escaped = 'r';
        break;
      case '"':
      case '\\':
        escaped = *source;
        break;
      default:
        break;
    }
    if (escaped != '\0') *destination++ = '\\';
    *destination++ = escaped != '\0' ? escaped : *source;
  }
  *destination = '\0';
}
