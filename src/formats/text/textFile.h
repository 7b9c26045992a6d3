#pragma once

#include <cstdio>
#include <string>

#include "foundation/object.h"
#include "foundation/resultCodes.h"

/// A stream of text: read line by line, or written with indentation and word wrap.
///
/// Writing. The target is never half written: the text goes to a temporary file beside it, which
/// takes the target's name when Close finds that every write has succeeded. After a failure Close
/// removes the temporary file and the old file stands as it was. A target that exists and is no
/// regular file (a device, a pipe) is written directly.
///
/// No operation but Open reports to the log. A failed write is remembered until Close, so a writer
/// may ignore the results in between and look at that of Close alone.
class KVN_textFile : public KVN_object {
 public:
  static constexpr int kMaxMargin = 1019;
  static constexpr int kContinuationSize = 1021;
  /// Mode of the writing operations: write the indent after every line break.
  static constexpr int kIndentLines = 2;

  KVN_textFile() = default;
  KVN_textFile(const KVN_textFile&) = delete;
  KVN_textFile& operator=(const KVN_textFile&) = delete;
  /// As Close.
  ~KVN_textFile() override;

  /// `mode` is KVN_OPEN_TO_READ or KVN_OPEN_TO_WRITE. Closes what was open. KVN_FILE_IO with "OPEN
  /// FILE FAILED" in the log, also for a folder; KVN_REFUSED for another mode.
  [[nodiscard]] int Open(const char* name, int mode);
  /// Whether a carriage return that no line feed follows ends a line; for the files opened next.
  void SetReturnsEndLines(bool endLines) { returnsEndLines = endLines; }
  /// 0, or KVN_FILE_IO when something could not be written since Open; then the target is as it was
  /// before. 0 when nothing is open.
  int Close();
  /// Closes a file that is being written and leaves the target as it was before Open.
  void Discard();
  bool IsOpen() const { return file != nullptr; }

  /// Result of the last operation: 0, KVN_END_OF_FILE or KVN_FILE_IO.
  int GetStatus() const { return status; }
  /// Lines begun since Open; the pieces of a line longer than the reader's buffer count once.
  int GetLineCount() const { return lineCount; }

  /// Reads up to a line feed, which is kept, or size - 1 bytes, and adds a NUL. A carriage return
  /// directly before a line feed, or at the very end of the file, is dropped. KVN_END_OF_FILE when
  /// there is nothing left, KVN_FILE_IO when nothing can be read; then the buffer stays as it was.
  int ReadLine(char* buffer, int size);
  /// Bytes that the last ReadLine stored before its NUL; NUL bytes of the file count.
  int GetLineLength() const { return lineLength; }
  /// Whether the last ReadLine came to the end of its line, and not of the caller's buffer.
  bool IsLineComplete() const { return lineComplete; }

  /// Blanks for the current level. Level 0 writes nothing.
  int WriteIndent();
  /// Writes with no regard to the margin; mode kIndentLines writes the indent after every line
  /// break that is followed by more text.
  int PutLines(const char* text, int mode);
  /// Writes with word wrap. A line that grows beyond the margin is broken after its last blank or
  /// tab of this text, or before this text if it has none, or else inside the word, one character
  /// beyond the margin. A broken line ends with the continuation text.
  int Write(const char* text, int mode);
  int WriteIndented(const char* text, int mode);
  /// Bytes as they stand, for formats that lay out their lines themselves: no indentation, no word
  /// wrap, and the column is not kept.
  int WriteBytes(const char* bytes, int count) { return Put(bytes, count); }

  /// KVN_REFUSED when the indentation has reached 1,019 columns.
  int IncreaseIndent();
  /// KVN_REFUSED at level 0.
  int DecreaseIndent();
  /// KVN_REFUSED unless 0 <= width < right margin.
  int SetIndentWidth(int width);
  /// KVN_REFUSED below 0 and at or below the indent width; 1,020 and more become 1,019.
  int SetRightMargin(int columns);
  /// Text at the end of a line that wrapping broke, cut to 1,020 bytes; null clears it.
  ///
  /// A continuation that starts with a backslash says that the text is an escaped string, whose
  /// reader skips the blanks after the break. Write then never breaks between a backslash and the
  /// character it belongs to, and where the rest starts with a blank it puts "\|" before it, so
  /// that the string reads back as it was.
  void SetContinuation(const char* text);

  int GetColumn() const { return column; }
  int GetRightMargin() const { return rightMargin; }
  int GetIndentLevel() const { return indentLevel; }
  int GetIndentWidth() const { return indentWidth; }
  /// Columns that WriteIndent writes.
  int GetIndentation() const { return indentLevel * indentWidth; }
  bool HasContinuation() const { return continuation[0] != '\0'; }

 private:
  std::FILE* OpenToRead(const char* name);
  std::FILE* OpenToWrite(const char* name);
  std::FILE* OpenTemporary(int permissions);
  int FailWrite();
  int Put(const char* text, int length);
  int BreakLine(int mode);
  const char* WrapLine(const char* text, int length, int startColumn, int mode);
  int FindSplit(const char* text, int length) const;
  void ResumeString(const char* rest);
  bool ContinuesString() const { return continuation[0] == '\\'; }

  std::FILE* file = nullptr;  // owned
  int status = KVN_FILE_IO;
  int lineCount = 0;
  int rightMargin = 70;
  int column = 0;
  int lineStart = 0;  // first column of text on the present line, known within Write
  int indentLevel = 0;
  int indentWidth = 1;
  char continuation[kContinuationSize] = {};

  int lineLength = 0;
  bool lineComplete = true;
  bool isWriting = false;
  bool returnsEndLines = false;
  bool hasFailed = false;     // a write since Open
  std::string targetName;     // the file that Close renames to
  std::string temporaryName;  // empty when the target is written directly
};
