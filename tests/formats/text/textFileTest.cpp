#include "formats/text/textFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <filesystem>

#include "foundation/resultCodes.h"
#include "tests/support/logWatch.h"
#include "tests/support/scratchFolder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kIndent = KVN_textFile::kIndentLines;

/// Limits the size of files for its lifetime: to a writer, a full disk.
class FullDisk {
 public:
  explicit FullDisk(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &saved);
    const rlimit limited = {bytes, saved.rlim_max};
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
    savedHandler = signal(SIGXFSZ, SIG_IGN);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &saved);
    signal(SIGXFSZ, savedHandler);
  }

 private:
  rlimit saved = {};
  sighandler_t savedHandler = SIG_DFL;
};

struct LineCase {
  std::string bytes;
  std::string lines;  // as read with a buffer of 8, so in pieces of 7, each followed by "|"
  int lineCount;
};
const std::string kNulBytes("a\0b\nc", 5);
const std::string kNulLines("a\0b\n|c|", 7);
const LineCase kLineCases[] = {
    {"", "", 0},
    {"a\n\nbc", "a\n|\n|bc|", 3},
    {"a\r\n\r\nb\r\n", "a\n|\n|b\n|", 3},
    {"a\r", "a|", 1},
    {"a\rb\r\r\n", "a\rb\r\n|", 1},
    {"1234567890123456\nx", "1234567|8901234|56\n|x|", 2},
    {"123456\r\nx", "123456\n|x|", 2},
    {"1234567\r\nx", "1234567|\n|x|", 2},
    {kNulBytes, kNulLines, 2},
};

TEST(TextFile, ReadsLinesAndPiecesOfLines) {
  const ScratchFolder folder;
  for (const LineCase& c : kLineCases) {
    SCOPED_TRACE(c.bytes);
    KVN_textFile file;
    ASSERT_EQ(file.Open(folder.Write("in", c.bytes).c_str(), KVN_OPEN_TO_READ), 0);
    std::string lines;
    char buffer[8];
    while (file.ReadLine(buffer, sizeof buffer) == 0) {
      lines += std::string(buffer, static_cast<std::size_t>(file.GetLineLength())) + "|";
    }
    EXPECT_EQ(lines, c.lines);
    EXPECT_EQ(file.GetLineCount(), c.lineCount);
    EXPECT_EQ(file.GetStatus(), KVN_END_OF_FILE);
    EXPECT_EQ(file.Close(), 0);
    EXPECT_EQ(file.ReadLine(buffer, sizeof buffer), KVN_FILE_IO);
  }
}

TEST(TextFile, WhatCannotBeOpenedIsToldOnce) {
  const ScratchFolder folder;
  const std::string missing = folder.Path("none");
  const std::string below = folder.Path("none/file");
  const std::string here = folder.Path(".");
  const std::string overlong = folder.Path(std::string(300, 'x'));
  struct Case {
    const char* name;
    int mode;
  };
  const Case cases[] = {
      {nullptr, KVN_OPEN_TO_READ},
      {nullptr, KVN_OPEN_TO_WRITE},
      {"", KVN_OPEN_TO_READ},
      {"", KVN_OPEN_TO_WRITE},
      {missing.c_str(), KVN_OPEN_TO_READ},
      {below.c_str(), KVN_OPEN_TO_WRITE},
      {here.c_str(), KVN_OPEN_TO_READ},
      {here.c_str(), KVN_OPEN_TO_WRITE},
      {overlong.c_str(), KVN_OPEN_TO_READ},
      {overlong.c_str(), KVN_OPEN_TO_WRITE},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << (c.name != nullptr ? c.name : "(null)") << " " << c.mode);
    const LogWatch log;
    KVN_textFile file;
    EXPECT_EQ(file.Open(c.name, c.mode), KVN_FILE_IO);
    EXPECT_EQ(file.GetStatus(), KVN_FILE_IO);
    EXPECT_EQ(file.Write("x", kIndent), KVN_FILE_IO);
    EXPECT_EQ(file.PutLines("x", kIndent), KVN_FILE_IO);
    EXPECT_THAT(log.Texts(), ElementsAre("OPEN FILE FAILED"));
  }
  EXPECT_EQ(folder.CountEntries(), 0);
}

TEST(TextFile, TheTargetAppearsWholeOrNotAtAll) {
  const ScratchFolder folder;
  const std::string target = folder.Write("net", "old");
  std::filesystem::permissions(target, std::filesystem::perms(0640));
  std::filesystem::create_symlink(target, folder.Path("link"));
  {
    KVN_textFile file;
    ASSERT_EQ(file.Open(folder.Path("link").c_str(), KVN_OPEN_TO_WRITE), 0);
    EXPECT_EQ(file.PutLines("new", kIndent), 0);
    EXPECT_EQ(folder.Read("net"), "old");
    EXPECT_EQ(file.Close(), 0);
  }
  EXPECT_EQ(folder.Read("net"), "new");
  EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("link")));
  EXPECT_EQ(std::filesystem::status(target).permissions(), std::filesystem::perms(0640));
  {
    KVN_textFile file;
    ASSERT_EQ(file.Open(target.c_str(), KVN_OPEN_TO_WRITE), 0);
    EXPECT_EQ(file.PutLines("half", kIndent), 0);
    file.Discard();
  }
  EXPECT_EQ(folder.Read("net"), "new");
  EXPECT_EQ(folder.CountEntries(), 2);
}

TEST(TextFile, AFullDiskKeepsTheOldFile) {
  const ScratchFolder folder;
  const std::string target = folder.Write("net", "old");
  for (const char* name : {"net", "fresh"}) {
    SCOPED_TRACE(name);
    const LogWatch log;
    KVN_textFile file;
    ASSERT_EQ(file.Open(folder.Path(name).c_str(), KVN_OPEN_TO_WRITE), 0);
    const FullDisk full(100000);
    const std::string line(1000, 'x');
    for (int i = 0; i < 200; i++) file.PutLines(line.c_str(), kIndent);
    EXPECT_EQ(file.GetStatus(), KVN_FILE_IO);
    EXPECT_EQ(file.Close(), KVN_FILE_IO);
    EXPECT_THAT(log.Texts(), IsEmpty());
  }
  EXPECT_EQ(folder.Read("net"), "old");
  EXPECT_EQ(folder.CountEntries(), 1);

  KVN_textFile device;  // what fits the stream's buffer fails no earlier than at the end
  ASSERT_EQ(device.Open("/dev/full", KVN_OPEN_TO_WRITE), 0);
  EXPECT_EQ(device.PutLines("x", kIndent), 0);
  EXPECT_EQ(device.Close(), KVN_FILE_IO);
}

struct WrapCase {
  const char* name;
  int margin, level;
  const char* before;  // on the line already
  const char* text;
  const char* continuation;
  const char* result;  // from the start of the file
};
// The indent unit is 2. A line breaks when its column passes the margin: with margin 10 the 11th
// character is one too many.
const WrapCase kWrapCases[] = {
    {"fits to the margin", 10, 0, "", "abcd efghi", "", "abcd efghi"},
    {"breaks behind the last blank", 10, 0, "", "abcd efg hij", "\\ ", "abcd efg \\ \nhij"},
    {"the blank itself may be one too many", 10, 0, "", "abcdefghij kl", "~", "abcdefghij ~\nkl"},
    {"indent after the break", 10, 2, "", "ab cd ef", "", "    ab cd \n    ef"},
    {"indent even at the end of the text", 10, 1, "", "abcdefgh ", "", "  abcdefgh \n  "},
    {"no indent behind a last line feed", 10, 1, "", "ab\ncd\n", "", "  ab\n  cd\n"},
    {"a word goes to a fresh line", 10, 1, "ab = ", "cdefg", "\\ ", "  ab = \\ \n  cdefg"},
    {"a long word is cut one beyond", 10, 1, "", "abcdefghijk", "", "  abcdefghi\n  jk"},
    {"first a fresh line, then the cut", 10, 1, "x", "abcdefghijk", "~",
     "  x~\n  abcdefghi~\n  jk"},
    {"indentation beyond the margin", 4, 3, "", "ab", "", "      a\n      b\n      "},
    {"column counts over writes", 10, 0, "abcdefgh ", "ij", "", "abcdefgh \nij"},
    {"a line feed ends the count", 10, 0, "abcdefgh\n", "ijkl mnop", "", "abcdefgh\nijkl mnop"},
    {"a UTF-8 character is not cut", 4, 0, "", "abcd\u00e9gh", "", "abcd\n\u00e9gh"},
    {"bytes of no encoding are", 1, 0, "", "\xA9\xA9\xA9", "", "\xA9\xA9\n\xA9"},
    // In strings: no cut inside a pair, and blanks behind a break are kept by "\|".
    {"a pair is not cut", 4, 0, "", "abcd\\nef", "\\ ", "abcd\\ \n\\nef"},
    {"a pair of backslashes may end", 4, 0, "", "abc\\\\ef", "\\ ", "abc\\\\\\ \nef"},
    {"a pair alone on a line", 1, 0, "", "a\\nb", "\\ ", "a\\ \n\\n\\ \nb"},
    {"blanks behind a break", 4, 0, "", "abcd  ef", "\\ ", "abcd \\ \n\\| \\ \nef"},
};

TEST(TextFile, WrapsAtTheMargin) {
  const ScratchFolder folder;
  for (const WrapCase& c : kWrapCases) {
    SCOPED_TRACE(c.name);
    KVN_textFile file;
    EXPECT_EQ(file.SetRightMargin(20), 0);
    EXPECT_EQ(file.SetIndentWidth(c.margin < 3 ? 0 : 2), 0);
    EXPECT_EQ(file.SetRightMargin(c.margin), 0);
    for (int i = 0; i < c.level; i++) EXPECT_EQ(file.IncreaseIndent(), 0);
    ASSERT_EQ(file.Open(folder.Path("out").c_str(), KVN_OPEN_TO_WRITE), 0);
    EXPECT_EQ(file.WriteIndented(c.before, kIndent), 0);
    file.SetContinuation(c.continuation);
    EXPECT_EQ(file.Write(c.text, kIndent), 0);
    EXPECT_EQ(file.Close(), 0);
    EXPECT_EQ(folder.Read("out"), c.result);
  }
}

TEST(TextFile, PutLinesIndentsBetweenLinesAndIgnoresTheMargin) {
  const ScratchFolder folder;
  KVN_textFile file;
  EXPECT_EQ(file.SetRightMargin(4), 0);
  EXPECT_EQ(file.IncreaseIndent(), 0);
  ASSERT_EQ(file.Open(folder.Path("out").c_str(), KVN_OPEN_TO_WRITE), 0);
  EXPECT_EQ(file.PutLines("one two\n\nthree\n", kIndent), 0);
  EXPECT_EQ(file.GetColumn(), 0);
  EXPECT_EQ(file.PutLines("four\nfive", 0), 0);
  EXPECT_EQ(file.GetColumn(), 4);
  EXPECT_EQ(file.Close(), 0);
  EXPECT_EQ(folder.Read("out"), "one two\n \n three\nfour\nfive");
}

TEST(TextFile, MarginAndIndentLimitEachOther) {
  KVN_textFile file;
  EXPECT_EQ(file.GetRightMargin(), 70);
  EXPECT_EQ(file.SetIndentWidth(70), KVN_REFUSED);
  EXPECT_EQ(file.SetIndentWidth(-1), KVN_REFUSED);
  EXPECT_EQ(file.SetIndentWidth(69), 0);
  EXPECT_EQ(file.SetRightMargin(69), KVN_REFUSED);
  EXPECT_EQ(file.SetRightMargin(-5), KVN_REFUSED);
  EXPECT_EQ(file.SetRightMargin(1020), 0);
  EXPECT_EQ(file.GetRightMargin(), 1019);
  EXPECT_EQ(file.DecreaseIndent(), KVN_REFUSED);
  for (int i = 0; i < 15; i++) EXPECT_EQ(file.IncreaseIndent(), 0);  // 15 * 69 = 1035
  EXPECT_EQ(file.IncreaseIndent(), KVN_REFUSED);
  EXPECT_EQ(file.GetIndentLevel(), 15);
}

}  // namespace
