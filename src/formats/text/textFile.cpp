#include "formats/text/textFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "foundation/errorLog.h"

namespace {

constexpr std::size_t kStreamBuffer = 1 << 16;
constexpr int kDefaultPermissions = 0666;  // before the umask
constexpr int kTemporaryNames = 1000;      // tried one after the other

/// Characters that the reader of a string drops after a broken line.
bool IsDroppedAfterBreak(char character) {
  return character == ' ' || character == '\t' || character == '\b';
}

/// Bytes that the UTF-8 sequence around a cut at `position` has before the cut; 0 where the cut is
/// between characters or the bytes are of another encoding.
int BytesBeforeCut(const char* text, int position) {
  constexpr int kLongestStart = 3;
  int before = 0;
  while ((text[position - before] & 0xC0) == 0x80) {
    if (before == kLongestStart || before + 1 >= position) return 0;
    ++before;
  }
  return before;
}

/// The file behind a chain of links, so that a link is not replaced by a file.
std::string ResolveLinks(const char* name) {
  char* resolved = realpath(name, nullptr);
  std::string result(resolved != nullptr ? resolved : name);
  free(resolved);
  return result;
}

/// Next character, with a carriage return before a line feed or the end of the file left out.
int NextCharacter(std::FILE* file, bool returnsEndLines) {
  const int character = getc_unlocked(file);
  if (character != '\r') return character;
  const int next = getc_unlocked(file);
  if (next == '\n' || next == EOF) return next;
  ungetc(next, file);
  return returnsEndLines ? '\n' : character;
}

}  // namespace

KVN_textFile::~KVN_textFile() { Close(); }

int KVN_textFile::Open(const char* name, int mode) {
  Close();
  status = KVN_FILE_IO;
  if (mode != KVN_OPEN_TO_READ && mode != KVN_OPEN_TO_WRITE) return KVN_REFUSED;
  isWriting = mode == KVN_OPEN_TO_WRITE;
  if (name != nullptr && *name != '\0') file = isWriting ? OpenToWrite(name) : OpenToRead(name);
  if (file == nullptr) return LogError(KVN_FILE_IO, "OPEN FILE FAILED");
  (void)std::setvbuf(file, nullptr, _IOFBF, kStreamBuffer);  // a refusal leaves a smaller buffer
  lineCount = 0;
  lineLength = 0;
  lineComplete = true;
  column = 0;
  hasFailed = false;
  return status = 0;
}

std::FILE* KVN_textFile::OpenToRead(const char* name) {
  std::FILE* opened = std::fopen(name, "r");
  struct stat info;
  // A folder can be opened, but nothing can be read from it.
  if (opened != nullptr && fstat(fileno(opened), &info) == 0 && S_ISDIR(info.st_mode)) {
    std::fclose(opened);
    return nullptr;
  }
  return opened;
}

std::FILE* KVN_textFile::OpenToWrite(const char* name) {
  struct stat info;
  if (stat(name, &info) != 0) {
    if (errno != ENOENT) return nullptr;
    if (lstat(name, &info) == 0) return std::fopen(name, "w");  // a link to a file yet to be made
    targetName = name;
    return OpenTemporary(-1);
  }
  if (S_ISDIR(info.st_mode)) return nullptr;
  if (!S_ISREG(info.st_mode)) return std::fopen(name, "w");
  // A rename would replace a file that is protected against writing.
  if (access(name, W_OK) != 0) return nullptr;
  targetName = ResolveLinks(name);
  return OpenTemporary(static_cast<int>(info.st_mode) & 07777);
}

/// `permissions` below 0 are those of a new file.
std::FILE* KVN_textFile::OpenTemporary(int permissions) {
  const std::size_t slash = targetName.rfind('/');
  const std::string folder = slash == std::string::npos ? "" : targetName.substr(0, slash + 1);
  const std::string base = folder + ".kvn-" + std::to_string(getpid()) + "-";
  for (int number = 0; number < kTemporaryNames; ++number) {
    temporaryName = base + std::to_string(number) + ".tmp";
    const int descriptor =
        open(temporaryName.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, kDefaultPermissions);
    if (descriptor < 0 && errno == EEXIST) continue;
    if (descriptor < 0) break;
    if (permissions >= 0) (void)fchmod(descriptor, static_cast<mode_t>(permissions));
    std::FILE* opened = fdopen(descriptor, "w");
    if (opened != nullptr) return opened;
    close(descriptor);
    unlink(temporaryName.c_str());
    break;
  }
  temporaryName.clear();
  return nullptr;
}

int KVN_textFile::Close() {
  if (file == nullptr) return 0;
  if (std::fclose(file) != 0 && isWriting) hasFailed = true;
  file = nullptr;
  if (!temporaryName.empty()) {
    if (!hasFailed) hasFailed = std::rename(temporaryName.c_str(), targetName.c_str()) != 0;
    if (hasFailed) unlink(temporaryName.c_str());
    temporaryName.clear();
  }
  return status = hasFailed ? KVN_FILE_IO : 0;
}

void KVN_textFile::Discard() {
  hasFailed = true;
  (void)Close();  // a discarded file has no result
}

int KVN_textFile::ReadLine(char* buffer, int size) {
  if (file == nullptr || isWriting || buffer == nullptr || size < 2) return status = KVN_FILE_IO;
  const bool startsLine = lineComplete;
  int length = 0;
  int character = 0;
  while (length < size - 1 && character != '\n') {
    character = NextCharacter(file, returnsEndLines);
    if (character == EOF) break;
    buffer[length++] = static_cast<char>(character);
  }
  lineLength = length;
  lineComplete = character == '\n' || character == EOF;
  if (length == 0) return status = std::ferror(file) != 0 ? KVN_FILE_IO : KVN_END_OF_FILE;
  buffer[length] = '\0';
  if (startsLine) ++lineCount;
  return status = 0;
}

int KVN_textFile::FailWrite() {
  hasFailed = true;
  return status = KVN_FILE_IO;
}

int KVN_textFile::Put(const char* text, int length) {
  if (file == nullptr || !isWriting || hasFailed) return FailWrite();
  const std::size_t count = static_cast<std::size_t>(length);
  if (std::fwrite(text, 1, count, file) != count) return FailWrite();
  return status = 0;
}

int KVN_textFile::WriteIndent() {
  static constexpr char kBlanks[] = "                                ";
  static constexpr int kCount = static_cast<int>(sizeof kBlanks) - 1;
  for (int left = GetIndentation(); left > 0; left -= kCount) {
    if (int result = Put(kBlanks, std::min(left, kCount)); result < 0) return result;
  }
  column += GetIndentation();
  return status = file != nullptr ? 0 : KVN_FILE_IO;
}

int KVN_textFile::PutLines(const char* text, int mode) {
  if (file == nullptr) return FailWrite();
  if (text == nullptr) return status = 0;
  while (*text != '\0') {
    const char* end = strchrnul(text, '\n');
    const bool breaks = *end == '\n';
    const int length = static_cast<int>(end - text) + (breaks ? 1 : 0);
    if (int result = Put(text, length); result < 0) return result;
    text += length;
    column += length;
    if (breaks) {
      column = 0;
      if (mode == kIndentLines && *text != '\0') WriteIndent();
    }
  }
  return status;
}

int KVN_textFile::Write(const char* text, int mode) {
  if (file == nullptr) return FailWrite();
  if (text == nullptr) return status = 0;
  lineStart = GetIndentation();
  while (*text != '\0' && !hasFailed) {
    const int startColumn = column;
    int length = 0;
    // One character at least, so that a line already beyond the margin makes progress too.
    while (text[length] != '\0' && text[length] != '\n' && (column <= rightMargin || length == 0)) {
      ++length;
      ++column;
    }
    if (length > 0 && column > rightMargin) {
      text = WrapLine(text, length, startColumn, mode);
    } else if (text[length] == '\n') {
      Put(text, length + 1);
      text += length + 1;
      column = 0;
      lineStart = GetIndentation();
      if (mode == kIndentLines && *text != '\0') WriteIndent();
    } else {
      Put(text, length);
      text += length;
    }
  }
  return hasFailed ? FailWrite() : status;
}

/// Writes as much of the `length` characters as the line takes, breaks it, and returns the rest of
/// the text. The last of the characters is the one beyond the margin.
const char* KVN_textFile::WrapLine(const char* text, int length, int startColumn, int mode) {
  int kept = length;
  while (kept > 0 && text[kept - 1] != ' ' && text[kept - 1] != '\t') --kept;
  // Without a blank, a line that holds something else yet is left to it; otherwise the text is one
  // word too long for any line.
  if (kept == 0 && startColumn <= lineStart) kept = FindSplit(text, length);
  Put(text, kept);
  BreakLine(mode);
  ResumeString(text + kept);
  return text + kept;
}

/// Where to break a word: after `length` bytes, but not inside a UTF-8 sequence, since editors
/// refuse a file with halves of characters, and not inside a backslash pair of a string.
int KVN_textFile::FindSplit(const char* text, int length) const {
  const int split = length - BytesBeforeCut(text, length);
  if (!ContinuesString()) return split;
  int backslashes = 0;
  while (backslashes < split && text[split - 1 - backslashes] == '\\') ++backslashes;
  if (backslashes % 2 == 0) return split;
  if (split > 1) return split - 1;
  return text[split] != '\0' ? split + 1 : split;
}

int KVN_textFile::BreakLine(int mode) {
  Put(continuation, static_cast<int>(std::strlen(continuation)));
  Put("\n", 1);
  column = 0;
  if (mode == kIndentLines) WriteIndent();
  lineStart = std::max(column, GetIndentation());
  return status;
}

void KVN_textFile::ResumeString(const char* rest) {
  if (!ContinuesString() || !IsDroppedAfterBreak(*rest)) return;
  Put("\\|", 2);
  column += 2;
  lineStart = std::max(lineStart, column);
}

int KVN_textFile::WriteIndented(const char* text, int mode) {
  if (int result = WriteIndent(); result < 0) return result;
  return Write(text, mode);
}

int KVN_textFile::IncreaseIndent() {
  if (GetIndentation() >= kMaxMargin) return KVN_REFUSED;
  ++indentLevel;
  return 0;
}

int KVN_textFile::DecreaseIndent() {
  if (indentLevel < 1) return KVN_REFUSED;
  --indentLevel;
  return 0;
}

int KVN_textFile::SetIndentWidth(int width) {
  if (width < 0 || width > rightMargin - 1) return KVN_REFUSED;
  indentWidth = width;
  return 0;
}

int KVN_textFile::SetRightMargin(int columns) {
  if (columns < 0 || columns < indentWidth + 1) return KVN_REFUSED;
  rightMargin = std::min(columns, int{kMaxMargin});
  return 0;
}

void KVN_textFile::SetContinuation(const char* text) {
  std::snprintf(continuation, sizeof continuation, "%s", text != nullptr ? text : "");
}
