#include "formats/text/lexicalAnalizer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "foundation/resultCodes.h"
#include "tests/support/logWatch.h"
#include "tests/support/scratchFolder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A lexer on a file of these bytes.
struct Input {
  explicit Input(const std::string& bytes, int table = KVN_LEXICAL_DEFAULT)
      : lexer(std::make_unique<KVN_lexicalAnalizer>(table)) {
    EXPECT_EQ(lexer->OpenFile(folder.Write("in", bytes).c_str()), 0);
  }

  /// The next token as "class:text", or the code of a failure.
  std::string Peek() const {
    KVN_token token;
    const int result = lexer->GetToken(token);
    if (result < 0) return std::to_string(result);
    EXPECT_EQ(token.length, static_cast<int>(std::string(token.text).size()));
    return std::to_string(token.type) + ":" + token.text;
  }
  std::string Next() const {
    const std::string text = Peek();
    if (text[0] != '-') lexer->ConsumeToken();
    return text;
  }
  /// All tokens up to the first failure, with blanks between; the end of the input is left out.
  std::string Rest() const {
    std::string texts;
    std::string text = Next();
    for (; text[0] != '-'; text = Next()) texts += (texts.empty() ? "" : " ") + text;
    return text == "-111" ? texts : texts + (texts.empty() ? "" : " ") + text;
  }

  ScratchFolder folder;
  std::unique_ptr<KVN_lexicalAnalizer> lexer;
};

// A table as text: one row per state, in it one letter per class. 0 to 9 and a to f are states,
// '-' ends the token, S scans a string, L, B and N skip a comment, U is unknown. The classes are:
constexpr const char* kClassHeader = "xd_/=*#.sqobu%,|e";
constexpr const char* kClassSamples = "x5_/=*#.+\"; \r%,|e";  // a character of each class

const char* const kDefaultRows[KVN_LEXICAL_STATES] = {
    "128458879S80U8881", "111---------U---1", "-2-----7--------a", "-3--------------b",
    "---L-BN----------", "----6------------", "----U------------", "-3---------------",
    "-----------------", "-2-----3---------", "-e------c--------", "-f------d--------",
    "-e---------------", "-f---------------", "-e---------------", "-f---------------",
};

struct RowCase {
  int table;
  int state;
  const char* row;
};
const RowCase kOtherRows[] = {
    {KVN_LEXICAL_ERGO, 0, "121818119110U1111"},
    {KVN_LEXICAL_ERGO, 1, "11111111111-U1111"},
    {KVN_LEXICAL_ERGO, 2, "12111117111--111a"},
    {KVN_LEXICAL_ERGO, 3, "13111111111--111b"},
    {KVN_LEXICAL_ERGO, 4, "111-1-11111--111-"},
    {KVN_LEXICAL_ERGO, 7, "131-1-11111--111-"},
    {KVN_LEXICAL_ERGO, 8, "111-1-11111--111-"},
    {KVN_LEXICAL_ERGO, 9, "121-1-13111--111-"},
    {KVN_LEXICAL_ERGO, 14, "-a---------------"},
    {KVN_LEXICAL_ERGO, 15, "-b---------------"},
    {KVN_LEXICAL_HUGIN, 0, "128458879S80UL881"},
    {KVN_LEXICAL_HUGIN, 14, "-a---------------"},
    {KVN_LEXICAL_HUGIN, 15, "-b---------------"},
    {KVN_LEXICAL_MICROSOFT, 0, "128458879S80U8001"},
    {KVN_LEXICAL_MICROSOFT, 14, "-a---------------"},
    {KVN_LEXICAL_MICROSOFT, 15, "-b---------------"},
    {KVN_LEXICAL_UNSIGNED, 0, "128458878S80U8881"},
};

const char* ExpectedRow(int table, int state) {
  for (const RowCase& c : kOtherRows) {
    if (c.table == table && c.state == state) return c.row;
  }
  return kDefaultRows[state];
}

char LetterOf(int cell) {
  switch (cell) {
    case KVN_LEXICAL_STRING:
      return 'S';
    case KVN_LEXICAL_LINE_COMMENT:
      return 'L';
    case KVN_LEXICAL_BLOCK_COMMENT:
      return 'B';
    case KVN_LEXICAL_NESTED_COMMENT:
      return 'N';
    case KVN_LEXICAL_UNKNOWN:
      return 'U';
    case KVN_LEXICAL_END:
      return '-';
    default:
      return "0123456789abcdef"[cell];
  }
}

TEST(LexicalTables, HoldTheAutomatonOfEachFormat) {
  const unsigned char* classes = GetCharacterClasses();
  KVN_lexicalTransitions cells = {};
  for (int table = 1; table <= 5; table++) {
    ASSERT_EQ(CopyLexicalTable(table, cells), 0);
    for (int state = 0; state < KVN_LEXICAL_STATES; state++) {
      std::string row;
      for (const char* sample = kClassSamples; *sample != '\0'; sample++) {
        row += LetterOf(cells[classes[static_cast<int>(*sample)]][state]);
      }
      EXPECT_EQ(row, ExpectedRow(table, state))
          << "table " << table << ", state " << state << "\nclasses  " << kClassHeader;
    }
  }
  EXPECT_EQ(CopyLexicalTable(0, cells), KVN_REFUSED);
  EXPECT_EQ(CopyLexicalTable(6, cells), KVN_REFUSED);
}

TEST(LexicalTables, GiveEveryByteItsClass) {
  // Bytes beyond ASCII are unknown, and so are control characters but the three kinds of blanks.
  const unsigned char* classes = GetCharacterClasses();
  int counts[KVN_LEXICAL_ROWS] = {};
  for (int i = 0; i < 256; i++) counts[classes[i]]++;
  // 52 letters without e and E; 32 punctuation signs of which 10 have classes of their own, the
  // sign class holding two of them.
  const int expected[KVN_LEXICAL_ROWS] = {50, 10, 1, 1, 1, 1, 1, 1, 2, 1, 20, 4, 158, 1, 1, 1, 2};
  for (int i = 0; i < KVN_LEXICAL_ROWS; i++) EXPECT_EQ(counts[i], expected[i]) << "class " << i;
  EXPECT_EQ(classes[0], classes[static_cast<int>(' ')]);
}

struct TokenCase {
  int table;
  const char* input;
  const char* tokens;
};
const TokenCase kTokenCases[] = {
    {1, "ID=foo;", "1:ID 5:= 1:foo 8:;"},
    {1, "12abc a.b _a a_1", "2:12 1:abc 1:a 7:. 1:b 8:_ 1:a 1:a_1"},
    {1, "1e5 1.5e3 12e 1e+5 1e5.2", "2:1e5 3:1.5e3 2:12e 2:1e+5 2:1e5 3:.2"},
    {1, "3., .5 -.5 -5 + x", "7:3. 8:, 3:.5 3:-.5 2:-5 9:+ 1:x"},
    {1, "-. a==b / c", "3:-. 1:a 6:== 1:b 4:/ 1:c"},
    {1, "a // b /* c\nd", "1:a 1:d"},
    {1, "a/*b*/c /* d\n e * / */ f", "1:a 1:c 1:f"},
    {1, "/*/ a", "1:a"},
    {1, "\"// x\" 'y", "70:// x 8:' 1:y"},
    {1, "/# a #/ b", "1:b"},
    // The second mark of the first line is not seen: two more lines with a mark are needed.
    {1, "/# /# #/ x\n#/ y\n#/ z", "1:z"},
    {1, "a % b\nc", "1:a 8:% 1:b 1:c"},
    {3, "a % b\nc", "1:a 1:c"},
    {1, "1e12+3 1e1+3", "2:1e12 2:+3 2:1e1 2:+3"},
    {3, "1e12+3 1e1+3", "2:1e12+3 2:1e1 2:+3"},
    {4, "a,b|c,\n d", "1:a 1:b 1:c 1:d"},
    {5, "-5", "8:- 2:5"},
    {2, "a,b/*c \"x\" 12 1.5 //c", "1:a,b/*c 1:\"x\" 2:12 3:1.5 8:/ 1:/c"},
    {6, "a b", ""},
    {1, "", ""},
    {1, " \t\n \n", ""},
    {1, "a\r\nb\r", "1:a 1:b"},
};

TEST(LexicalAnalizer, CutsTokens) {
  for (const TokenCase& c : kTokenCases) {
    SCOPED_TRACE(testing::Message() << "table " << c.table << ": " << c.input);
    const LogWatch log;
    EXPECT_EQ(Input(c.input, c.table).Rest(), c.tokens);
    EXPECT_THAT(log.Texts(), IsEmpty());
  }
}

TEST(LexicalAnalizer, SkipsMoreCharactersOnDemand) {
  const Input input("a,b | \"x,y\" ,/, 1");
  input.lexer->AddWhitespace(",|");
  EXPECT_EQ(input.Rest(), "1:a 1:b 70:x,y 4:/ 2:1");
}

struct StringCase {
  const char* input;
  const char* text;
};
const StringCase kStringCases[] = {
    {R"("")", ""},
    {R"("a\"b\\c\nd\re\tf\bg")", "a\"b\\c\nd\re\tf\bg"},
    {R"("\q\")", R"(\q")"},  // closed by the quote that the test adds
    {"\"line\nfeed\"", "linefeed"},
    {"\"lone\rreturn\nline\"", "loneline"},
    {"\"ab \\ \n \t\b cd\"", "ab cd"},
    {"\"ab\\\n  cd\"", "abcd"},
    {"\"ab\\ \n\n  \\|  cd\"", "ab  cd"},
    {"\"a\\  b\"", "ab"},
    {"\"bytes \x01\xe9\"", "bytes \x01\xe9"},
};

TEST(LexicalAnalizer, ResolvesEscapesAndLineBreaksOfStrings) {
  for (const StringCase& c : kStringCases) {
    SCOPED_TRACE(c.input);
    const Input input(std::string(c.input) + "\" ;");
    EXPECT_EQ(input.Next(), std::string("70:") + c.text);
  }
}

struct FailureCase {
  std::string input;
  const char* tokens;  // the first failure last
  const char* later;   // what two further tries give
  const char* message;
  std::size_t messageCount;
};
const char kUnknown1[] = "ERROR: Line 1 : UNKNOWN CHARACTER";
const char kUnknown3[] = "ERROR: Line 3 : UNKNOWN CHARACTER";
const char kOpenString[] = "ERROR: UNEXPECTED END OF FILE. UNTERMINATED STRING";
const char kOpenBlock[] = "ERROR: UNEXPECTED END OF FILE. UNMATCHED '/*'";
const char kOpenNested[] = "ERROR: UNEXPECTED END OF FILE. UNMATCHED '/#'";
const std::string kNulInString("\"a\0b\"\nc", 7);
const FailureCase kFailureCases[] = {
    // It is meant that the position stays on an unknown character for ever.
    {"a \x01 b", "1:a -126", "-126 -126", kUnknown1, 3},
    {"\n\na\rb", "-126", "-126 -126", kUnknown3, 3},
    {"===", "-126", "-126 -126", kUnknown1, 3},
    {"a \"bc", "1:a -128", "-111 -111", kOpenString, 1},
    {"\"bc\n", "-128", "-111 -111", kOpenString, 1},
    {"\"bc\\ ", "-128", "-111 -111", kOpenString, 1},
    {"a /* b", "1:a -128", "-111 -111", kOpenBlock, 1},
    {"/# b\n/# #/ #/\nc", "-128", "-111 -111", kOpenNested, 1},
    {"a // b", "1:a", "-111 -111", nullptr, 0},
    {kNulInString, "-128", "1:c 1:c", kOpenString, 1},
};

TEST(LexicalAnalizer, TellsWhyThereAreNoMoreTokens) {
  for (const FailureCase& c : kFailureCases) {
    SCOPED_TRACE(c.input);
    const LogWatch log;
    const Input input(c.input);
    EXPECT_EQ(input.Rest(), c.tokens);
    const std::string first = input.Peek();
    EXPECT_EQ(first + " " + input.Peek(), c.later);
    EXPECT_EQ(log.Texts(), std::vector<std::string>(c.messageCount, c.message ? c.message : ""));
  }
}

TEST(LexicalAnalizer, UnknownCharacterIsTheTextOfItsRecord) {
  const Input input("ab\x01");
  KVN_token token;
  EXPECT_EQ(input.lexer->GetToken(token), KVN_LEXICAL_ERROR);
  EXPECT_EQ(token.type, KVN_TOKEN_UNKNOWN);
  EXPECT_STREQ(token.text, "\x01");
  EXPECT_EQ(token.length, 2);  // of what stood before it
}

TEST(LexicalAnalizer, NulHidesTheRestOfItsLine) {
  EXPECT_EQ(Input(std::string("ab\0cd\ne /* \0 */\n*/ f\0", 22)).Rest(), "1:ab 1:e 1:f");
}

TEST(LexicalAnalizer, TakesBackFiveTokens) {
  const Input input("a b c d e f g h");
  for (const char* text : {"1:a", "1:b", "1:c", "1:d", "1:e", "1:f"}) EXPECT_EQ(input.Next(), text);
  EXPECT_EQ(input.Peek(), "1:g");
  EXPECT_EQ(input.Peek(), "1:g");
  // With a token in hand the last consumed one comes back.
  EXPECT_EQ(input.lexer->UngetToken(), 0);
  EXPECT_EQ(input.Peek(), "1:f");
  for (int i = 0; i < 3; i++) EXPECT_EQ(input.lexer->UngetToken(), 0);
  EXPECT_EQ(input.lexer->UngetToken(), KVN_REFUSED);
  EXPECT_EQ(input.Rest(), "1:c 1:d 1:e 1:f 1:g 1:h");
  // With none in hand it is the one before the last consumed one.
  EXPECT_EQ(input.lexer->UngetToken(), 0);
  EXPECT_EQ(input.Rest(), "1:g 1:h");
}

TEST(LexicalAnalizer, TextOutlivesTheNextTokens) {
  const Input input("first second third");
  KVN_token first, other;
  ASSERT_EQ(input.lexer->GetToken(first), 0);
  for (int i = 0; i < 2; i++) {
    input.lexer->ConsumeToken();
    ASSERT_EQ(input.lexer->GetToken(other), 0);
  }
  EXPECT_STREQ(first.text, "first");
  EXPECT_STREQ(other.text, "third");
}

TEST(LexicalAnalizer, OpensAnotherFileAfresh) {
  const Input input("a b c");
  EXPECT_EQ(input.Next(), "1:a");
  EXPECT_EQ(input.Peek(), "1:b");
  EXPECT_EQ(input.lexer->OpenFile(input.folder.Write("other", "\nx").c_str()), 0);
  EXPECT_EQ(input.Rest(), "1:x");
  EXPECT_EQ(input.lexer->GetLineCount(), 2);
  EXPECT_EQ(input.lexer->UngetToken(), KVN_REFUSED);
  EXPECT_EQ(input.lexer->OpenFile(input.folder.Path("none").c_str()), KVN_FILE_IO);
  EXPECT_EQ(input.Peek(), "-111");
}

// A line longer than the buffer arrives in pieces. The same text must give the same tokens wherever
// the seams fall, so it is shifted through every offset of its longest token.
TEST(LexicalAnalizer, JoinsTokensOverTheSeams) {
  const char* const words[] = {"identifier_42",
                               "-12345.6789e-12",
                               "/* comment */",
                               "==",
                               "3.",
                               "/# nested #/",
                               "(",
                               "123456789",
                               "x"};
  std::string line, expected;
  while (line.size() < 100000) {
    for (const char* word : words) line += std::string(word) + " ";
    expected += expected.empty() ? "" : " ";
    expected += "1:identifier_42 3:-12345.6789e-12 6:== 7:3. 8:( 2:123456789 1:x";
  }
  for (int offset = 0; offset < 20; offset++) {
    const Input input(std::string(static_cast<std::size_t>(offset), ' ') + line);
    ASSERT_EQ(input.Rest(), expected) << "offset " << offset;
    EXPECT_EQ(input.lexer->GetLineCount(), 1);
  }
}

TEST(LexicalAnalizer, LineCommentTakesAllPiecesOfItsLine) {
  EXPECT_EQ(Input("a //" + std::string(100000, 'x') + " y\nb").Rest(), "1:a 1:b");
  EXPECT_EQ(Input("/# /#" + std::string(100000, 'x') + " #/\n#/\n#/ b").Rest(), "1:b");
}

TEST(LexicalAnalizer, CutsLongTokensAndGoesOn) {
  const std::size_t kept = KVN_lexicalAnalizer::kMaxTokenLength;
  const std::string broken = [] {  // a string of 30,000 bytes on 30 lines
    std::string text;
    for (int i = 0; i < 30; i++) text += std::string(1000, 's') + "\n";
    return text;
  }();
  struct Case {
    std::string input, text;
  };
  const Case cases[] = {
      {std::string(kept, 'i'), "1:" + std::string(kept, 'i')},
      {std::string(kept + 1, 'i'), "1:" + std::string(kept, 'i')},
      {std::string(200000, 'i'), "1:" + std::string(kept, 'i')},
      {std::string(200000, '7'), "2:" + std::string(kept, '7')},
      {"\"" + broken + "\"", "70:" + std::string(kept, 's')},
      {"\"" + std::string(31000, 's') + "\"", "70:" + std::string(kept, 's')},
  };
  for (const Case& c : cases) {
    const Input input(c.input + " next");
    EXPECT_EQ(input.Next(), c.text);
    EXPECT_EQ(input.Rest(), "1:next");
  }
}

TEST(LexicalAnalizer, StringThatReachesASeamIsUnterminated) {
  const LogWatch log;
  const Input input("\"" + std::string(10000000, 's') + "\" x\ny");
  EXPECT_EQ(input.Peek(), "-128");
  EXPECT_THAT(log.Texts(), ElementsAre(kOpenString));
  EXPECT_EQ(input.Next(), "1:" + std::string(KVN_lexicalAnalizer::kMaxTokenLength, 's'));
}

}  // namespace
