#include "formats/text/lexicalAnalizer.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

#include "foundation/errorLog.h"

namespace {

/// Class of the token that ends in a state.
int TokenTypeOf(int state) {
  switch (state) {
    case 10:
    case 12:
    case 14:
      return KVN_TOKEN_INTEGER;
    case 11:
    case 13:
    case 15:
      return KVN_TOKEN_REAL;
    default:
      return state;
  }
}

/// -1 for a character that is none.
int HexDigit(char character) {
  if (character >= '0' && character <= '9') return character - '0';
  if (character >= 'A' && character <= 'F') return character - 'A' + 10;
  return character >= 'a' && character <= 'f' ? character - 'a' + 10 : -1;
}

bool IsBlankOrTab(char character) { return character == ' ' || character == '\t'; }

}  // namespace

KVN_lexicalAnalizer::KVN_lexicalAnalizer(int table)
    : buffer(new (std::nothrow) char[kBufferSize]),
      slots(new (std::nothrow) Slot[kHistorySize + 1]()) {
  (void)CopyLexicalTable(table, transitions);  // it is meant that a wrong number leaves them empty
  AddWhitespace(" \t\n");
  if (CheckReadiness(/*deep=*/0) < 0) return;
  buffer[0] = '\0';
  tokenStart = scanPosition = lineEnd = buffer.get();
}

KVN_lexicalAnalizer::~KVN_lexicalAnalizer() = default;

int KVN_lexicalAnalizer::CheckReadiness(int /*deep*/) {
  SetReady(buffer != nullptr && slots != nullptr);
  return IsReady() ? 0 : KVN_NOT_READY;
}

int KVN_lexicalAnalizer::OpenFile(const char* name, bool returnsEndLines) {
  if (!IsReady()) return KVN_NO_MEMORY;
  flags = 0;
  historyCount = 0;
  historyPosition = -1;
  buffer[0] = '\0';
  tokenStart = scanPosition = lineEnd = buffer.get();
  inputFile.SetReturnsEndLines(returnsEndLines);
  if (int result = inputFile.Open(name, KVN_OPEN_TO_READ); result < 0) return result;
  flags = kFromFile;
  const int result = ReadNextLine();
  return result == KVN_END_OF_FILE ? 0 : result;
}

int KVN_lexicalAnalizer::GetToken(KVN_token& token) {
  if ((flags & kTokenInHand) == 0 && historyPosition == historyCount - 1) return ScanToken(token);
  GiveRecord(token);
  return 0;
}

void KVN_lexicalAnalizer::ConsumeToken() {
  if (historyPosition < historyCount - 1) {
    flags |= kTokenInHand;
    ++historyPosition;
  } else {
    flags &= ~unsigned{kTokenInHand};
    tokenStart = scanPosition;
  }
}

int KVN_lexicalAnalizer::UngetToken() {
  if (historyPosition <= 0) return KVN_REFUSED;
  --historyPosition;
  return 0;
}

void KVN_lexicalAnalizer::AddWhitespace(const char* characters) {
  if (characters == nullptr) return;
  for (; *characters != '\0'; ++characters) {
    whitespace[static_cast<unsigned char>(*characters)] = true;
  }
}

int KVN_lexicalAnalizer::ScanToken(KVN_token& token) {
  if (!IsReady()) return KVN_NO_MORE_TOKENS;
  while (true) {
    if (int result = SkipBlanks(); result < 0) return result;
    int result = 0;
    switch (const int action = RunAutomaton()) {
      case KVN_LEXICAL_SKIP:
        ++tokenStart;
        continue;
      case KVN_LEXICAL_LINE_COMMENT:
      case KVN_LEXICAL_BLOCK_COMMENT:
      case KVN_LEXICAL_NESTED_COMMENT:
        result = SkipComment(action);
        if (result < 0) return result;
        tokenStart = scanPosition;
        continue;
      case KVN_LEXICAL_STRING:
        result = ScanString();
        break;
      case KVN_LEXICAL_END:
        result = FinishToken();
        break;
      default:
        return ReportUnknownCharacter(token);
    }
    if (result == 0) GiveRecord(token);
    return result;
  }
}

void KVN_lexicalAnalizer::DropTokenInHand() {
  flags &= ~unsigned{kTokenInHand};
  historyPosition = historyCount - 1;
}

int KVN_lexicalAnalizer::ReadRaw(const char* mark, std::string* text) {
  DropTokenInHand();
  const std::size_t length = std::strlen(mark);
  std::string read;
  do {
    // Nobody wants the text: what can be a part of the mark is enough.
    if (text == nullptr && read.size() > length) read.erase(0, read.size() - length);
    while (tokenStart < lineEnd) {
      read += *tokenStart++;
      if (read.size() < length || read.compare(read.size() - length, length, mark) != 0) continue;
      scanPosition = tokenStart;
      read.resize(read.size() - length);
      if (text != nullptr) text->swap(read);
      return 0;
    }
  } while (ReadNextLine() == 0);
  scanPosition = tokenStart;
  return KVN_NO_MORE_TOKENS;
}

int KVN_lexicalAnalizer::ReadWord(std::string& word) {
  DropTokenInHand();
  if (int result = SkipBlanks(); result < 0) return result;
  word.clear();
  while (true) {
    while (*tokenStart != '\0' && !whitespace[static_cast<unsigned char>(*tokenStart)]) {
      word += *tokenStart++;
    }
    if (!IsAtSeam(tokenStart) || ReadNextLine() < 0) break;
  }
  scanPosition = tokenStart;
  return 0;
}

bool KVN_lexicalAnalizer::IsNext(const char* text) {
  DropTokenInHand();
  if (SkipBlanks() < 0) return false;
  const std::size_t length = std::strlen(text);
  if (lineEnd - tokenStart < static_cast<std::ptrdiff_t>(length) && IsAtSeam(lineEnd)) {
    ContinueOverSeam();
  }
  scanPosition = tokenStart;
  return std::strncmp(tokenStart, text, length) == 0;
}

/// Puts `tokenStart` on a character that is neither blank nor the end of the buffer.
int KVN_lexicalAnalizer::SkipBlanks() {
  while (true) {
    while (whitespace[static_cast<unsigned char>(*tokenStart)]) ++tokenStart;
    if (*tokenStart != '\0') return 0;
    if (ReadNextLine() < 0) return KVN_NO_MORE_TOKENS;
  }
}

/// Runs from `tokenStart` to the first action, which is the result, and leaves `scanPosition` on
/// the character that led to it.
int KVN_lexicalAnalizer::RunAutomaton() {
  const unsigned char* const classes = GetCharacterClasses();
  Scanned().length = 0;
  Scanned().isCut = false;
  currentState = 0;
  scanPosition = tokenStart;
  while (true) {
    const int next = transitions[classes[static_cast<unsigned char>(*scanPosition)]][currentState];
    if (next > 0 && next < KVN_LEXICAL_STATES) {
      previousState = currentState;
      currentState = next;
      ++scanPosition;
    } else if (IsAtSeam(scanPosition)) {
      ContinueOverSeam();
    } else {
      previousState = currentState;
      currentState = next;
      return next;
    }
  }
}

int KVN_lexicalAnalizer::FinishToken() {
  AppendRange(tokenStart, scanPosition);
  PushScanned(TokenTypeOf(previousState));
  return 0;
}

int KVN_lexicalAnalizer::ReportUnknownCharacter(KVN_token& token) {
  // The position stays, and so does the error: the rest of the file can't be reached.
  token.type = KVN_TOKEN_UNKNOWN;
  token.length = static_cast<int>(scanPosition - tokenStart);
  Scanned().length = 0;
  Append(*scanPosition);
  Scanned().text[1] = '\0';
  token.text = Scanned().text;
  char message[64];
  std::snprintf(message, sizeof message, "ERROR: Line %d : UNKNOWN CHARACTER", GetLineCount());
  return LogError(KVN_LEXICAL_ERROR, message);
}

/// Reads up to the closing quote; `scanPosition` stands on the opening one.
int KVN_lexicalAnalizer::ScanString() {
  bool skipping = false;  // behind a backslash at the end of a line: blanks are dropped
  ++scanPosition;
  while (true) {
    const char character = *scanPosition;
    if (character == '\n' || character == '\r') {
      // It is meant that a lone carriage return drops the rest of its line too.
      if (SkipRestOfLine() < 0) break;
    } else if (character == '\0') {
      if (!skipping || ReadNextLine() < 0) break;
    } else if (skipping && (IsBlankOrTab(character) || character == '\b')) {
      ++scanPosition;
    } else if (character == '"') {
      ++scanPosition;
      PushScanned(KVN_TOKEN_STRING);
      return 0;
    } else {
      skipping = false;
      if (character != '\\' || ScanEscape(skipping) == 0) {
        Append(character);
        ++scanPosition;
      }
    }
  }
  return ReportUnexpectedEnd("ERROR: UNEXPECTED END OF FILE. UNTERMINATED STRING");
}

/// Reads a backslash pair. The result is 0 when it is none and the backslash stands for itself.
int KVN_lexicalAnalizer::ScanEscape(bool& skipping) {
  switch (const char second = scanPosition[1]) {
    case '"':
    case '\\':
      Append(second);
      break;
    case 'b':
      Append('\b');
      break;
    case 'n':
      Append('\n');
      break;
    case 'r':
      Append('\r');
      break;
    case 't':
      Append('\t');
      break;
    case '\b':
    case '\t':
    case '\r':
    case ' ':
    case '\n':
      skipping = true;
      break;
    case '|':
      break;
    default: {
      const int high = hasHexEscapes ? HexDigit(second) : -1;
      const int low = high < 0 ? -1 : HexDigit(scanPosition[2]);
      if (low < 0 || high + low == 0) return 0;
      Append(static_cast<char>(16 * high + low));
      ++scanPosition;
      break;
    }
  }
  scanPosition += 2;
  return 1;
}

int KVN_lexicalAnalizer::SkipComment(int action) {
  switch (action) {
    case KVN_LEXICAL_LINE_COMMENT:
      return SkipRestOfLine() < 0 ? KVN_NO_MORE_TOKENS : 0;
    case KVN_LEXICAL_BLOCK_COMMENT:
      return SkipBlockComment();
    default:
      return SkipNestedComment();
  }
}

/// The search starts on the "*" of the opening mark, so that "/*/" is a whole comment.
int KVN_lexicalAnalizer::SkipBlockComment() {
  while (true) {
    if (char* mark = std::strstr(scanPosition, "*/"); mark != nullptr) {
      scanPosition = mark + 2;
      return 0;
    }
    if (IsAtSeam(lineEnd)) {
      tokenStart = lineEnd - 1;  // may be the "*" of a mark that the seam cuts
      ContinueOverSeam();
      scanPosition = tokenStart;
    } else if (ReadNextLine() < 0) {
      scanPosition = lineEnd;
      return ReportUnexpectedEnd("ERROR: UNEXPECTED END OF FILE. UNMATCHED '/*'");
    }
  }
}

/// It is meant that a mark that does not end the comment takes the rest of its line with it, so
/// that a second mark on that line is not counted.
int KVN_lexicalAnalizer::SkipNestedComment() {
  int depth = 1;
  while (true) {
    char* mark = scanPosition;
    while (*mark != '\0' && std::strncmp(mark, "#/", 2) != 0 && std::strncmp(mark, "/#", 2) != 0) {
      ++mark;
    }
    if (*mark != '\0') {
      depth += *mark == '/' ? 1 : -1;
      scanPosition = mark + 2;
      if (depth == 0) return 0;
    } else if (IsAtSeam(mark) && mark > scanPosition) {
      tokenStart = mark - 1;  // may be the first half of a mark that the seam cuts
      ContinueOverSeam();
      scanPosition = tokenStart;
      continue;
    }
    if (SkipRestOfLine() < 0) {
      scanPosition = lineEnd;
      return ReportUnexpectedEnd("ERROR: UNEXPECTED END OF FILE. UNMATCHED '/#'");
    }
  }
}

/// The next token is looked for behind what could be read.
int KVN_lexicalAnalizer::ReportUnexpectedEnd(const char* message) {
  tokenStart = scanPosition;
  return LogError(KVN_UNEXPECTED_EOF, message);
}

/// Fills the buffer behind its first `kept` bytes.
int KVN_lexicalAnalizer::ReadPiece(int kept) {
  if ((flags & kFromFile) == 0) return KVN_END_OF_FILE;
  const int result = inputFile.ReadLine(buffer.get() + kept, kBufferSize - 1 - kept);
  if (result == KVN_FILE_IO) {
    flags &= ~unsigned{kFromFile};  // tell it once
    return LogError(result, nullptr);
  }
  if (result == 0) lineEnd = buffer.get() + kept + inputFile.GetLineLength();
  return result;
}

/// The next line, or the next piece of a long one, from its start. A failure leaves the buffer and
/// the positions as they were.
int KVN_lexicalAnalizer::ReadNextLine() {
  if (int result = ReadPiece(/*kept=*/0); result < 0) return result;
  tokenStart = scanPosition = buffer.get();
  return 0;
}

int KVN_lexicalAnalizer::SkipRestOfLine() {
  int result = 0;
  do {
    const bool wasComplete = inputFile.IsLineComplete();
    result = ReadNextLine();
    if (wasComplete) break;
  } while (result == 0);
  return result;
}

bool KVN_lexicalAnalizer::IsAtSeam(const char* position) const {
  return position == lineEnd && !inputFile.IsLineComplete();
}

/// Joins the token in work, which has come to `lineEnd`, with the next piece of its line: moves
/// what is unread to the front and fills up. Of a token that is longer than a token may be, the
/// part so far is put into its text instead.
void KVN_lexicalAnalizer::ContinueOverSeam() {
  if (lineEnd - tokenStart > kMaxTokenLength) {
    AppendRange(tokenStart, lineEnd);
    tokenStart = lineEnd;
  }
  const int kept = static_cast<int>(lineEnd - tokenStart);
  std::memmove(buffer.get(), tokenStart, static_cast<std::size_t>(kept));
  tokenStart = buffer.get();
  scanPosition = lineEnd = buffer.get() + kept;
  *lineEnd = '\0';
  (void)ReadPiece(kept);  // at the end of the file the token ends here
}

void KVN_lexicalAnalizer::Append(char character) {
  Slot& slot = Scanned();
  if (slot.length < kMaxTokenLength) {
    slot.text[slot.length++] = character;
  } else {
    slot.isCut = true;
  }
}

void KVN_lexicalAnalizer::AppendRange(const char* first, const char* last) {
  Slot& slot = Scanned();
  const int count =
      static_cast<int>(std::min<std::ptrdiff_t>(last - first, kMaxTokenLength - slot.length));
  if (count < last - first) slot.isCut = true;
  std::memcpy(slot.text + slot.length, first, static_cast<std::size_t>(count));
  slot.length += count;
}

/// Makes the scanned token the newest record, in place of the oldest of five.
void KVN_lexicalAnalizer::PushScanned(int type) {
  Slot& slot = Scanned();
  slot.type = type;
  slot.text[slot.length] = '\0';
  spareSlot = (spareSlot + 1) % (kHistorySize + 1);
  historyCount = std::min(historyCount + 1, int{kHistorySize});
  historyPosition = historyCount - 1;
  flags |= kTokenInHand;
}

void KVN_lexicalAnalizer::GiveRecord(KVN_token& token) const {
  constexpr int kSlots = kHistorySize + 1;
  const Slot& slot = slots[(spareSlot + kSlots - historyCount + historyPosition) % kSlots];
  token.type = slot.type;
  token.text = slot.text;
  token.length = slot.length;
  token.isCut = slot.isCut;
}
