#include "formats/text/fileFormat.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "foundation/numberText.h"
#include "foundation/resultCodes.h"
#include "network/network.h"
#include "tests/support/builders.h"
#include "tests/support/logWatch.h"
#include "tests/support/scratchFolder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// Opens the protected half of the base. Its blocks and continuation are those of the native
/// format; a file is a run of statements `IDENTIFIER = integer;` and blocks `B = { ... };`.
class Speaker : public KVN_fileFormat {
 public:
  explicit Speaker(KVN_network& target) : KVN_fileFormat(target) {}

  int ReadFile(const char* fileName) override { return OpenLexer(fileName, KVN_LEXICAL_DEFAULT); }
  int WriteFile(const char* fileName) override {
    return outputFile.Open(fileName, KVN_OPEN_TO_WRITE);
  }
  int ReadBlockStart(const char* name) override { return ReadBraceBlockStart(name); }
  int WriteBlockStart(const char* name) override { return WriteBraceBlockStart(name); }
  void BeginContinuation() override { UseBackslashContinuation(); }
  void EndContinuation() override { outputFile.SetContinuation(nullptr); }

  /// One statement of the test language; the values of the good ones are collected.
  int ReadTestStatement() {
    int result = ReadBlock("B", [this] { return ReadTestStatement(); });
    if (result != KVN_NOT_THIS_STATEMENT) return result;
    int value = 0;
    for (const char* name : {"x", "y"}) {
      result = ReadIntStatement(name, value);
      if (result == 0) values.push_back(value);
      if (result != KVN_NOT_THIS_STATEMENT) return result;
    }
    return ReportError(KVN_SYNTAX_ERROR, "Unknown");
  }
  int ReadTestBlock() {
    return ReadBlock("B", [this] { return ReadTestStatement(); });
  }

  std::string TokenText() const { return tokenText; }
  void IgnoreCase() { caseSensitive = false; }
  bool HasLexer() const { return lexer != nullptr; }

  using KVN_fileFormat::AcceptToken;
  using KVN_fileFormat::IsBlockEnd;
  using KVN_fileFormat::outputFile;
  using KVN_fileFormat::PeekInList;
  using KVN_fileFormat::PeekIs;
  using KVN_fileFormat::PeekIsComma;
  using KVN_fileFormat::PeekIsIdentifier;
  using KVN_fileFormat::PeekIsInteger;
  using KVN_fileFormat::PeekIsNumber;
  using KVN_fileFormat::PeekIsOpenParenthesis;
  using KVN_fileFormat::PeekIsString;
  using KVN_fileFormat::ReadBoolStatement;
  using KVN_fileFormat::ReadDouble;
  using KVN_fileFormat::ReadDoubleList;
  using KVN_fileFormat::ReadIdentifierList;
  using KVN_fileFormat::ReadIdentifierToken;
  using KVN_fileFormat::ReadInteger;
  using KVN_fileFormat::ReadIntList;
  using KVN_fileFormat::ReadIntStatement;
  using KVN_fileFormat::ReadStatement;
  using KVN_fileFormat::ReadStringList;
  using KVN_fileFormat::ReadStringToken;
  using KVN_fileFormat::ReportError;
  using KVN_fileFormat::RequireToken;
  using KVN_fileFormat::SkipStatement;
  using KVN_fileFormat::WriteBlockEnd;
  using KVN_fileFormat::WriteBoolStatement;
  using KVN_fileFormat::WriteDoubleListStatement;
  using KVN_fileFormat::WriteIdentifierListStatement;
  using KVN_fileFormat::WriteIntListStatement;
  using KVN_fileFormat::WriteIntStatement;
  using KVN_fileFormat::WriteLine;
  using KVN_fileFormat::WriteStatement;
  using KVN_fileFormat::WriteStringListStatement;
  using KVN_fileFormat::WriteStringStatement;

  std::vector<int> values;
};

class FileFormat : public testing::Test {
 protected:
  /// A speaker that reads these bytes.
  Speaker& Reading(const std::string& bytes) {
    reader = std::make_unique<Speaker>(network);
    EXPECT_EQ(reader->ReadFile(folder.Write("in", bytes).c_str()), 0);
    return *reader;
  }
  /// A speaker that writes; Written() gives what.
  Speaker& Writing() {
    writer = std::make_unique<Speaker>(network);
    EXPECT_EQ(writer->WriteFile(folder.Path("out").c_str()), 0);
    return *writer;
  }
  std::string Written() {
    EXPECT_EQ(writer->outputFile.Close(), 0);
    return folder.Read("out");
  }

  ScratchFolder folder;
  KVN_network network;
  std::unique_ptr<Speaker> reader, writer;
};

struct RequireCase {
  const char* input;
  int type;
  const char* text;
  const char* message;  // null: the token is there
};
// Operators may be asked for as punctuators.
const RequireCase kRequireCases[] = {
    {"Abc", 1, "aBC", nullptr},
    {"=", 8, "=", nullptr},
    {"+", 8, "+", nullptr},
    {"==", 8, "=", "(line 1) : ERROR: '==' : '=' expected"},
    {"\"\"", 8, ";", "(line 1) : ERROR: '' : ';' expected"},
    {"ab", 1, "abc", "(line 1) : ERROR: 'ab' : 'abc' expected"},
    {"\n\n3.5", 2, nullptr, "(line 3) : ERROR: '3.5' : Integer expected"},
    {"x", 3, nullptr, "(line 1) : ERROR: 'x' : Real Number expected"},
    {"x", 70, nullptr, "(line 1) : ERROR: 'x' : String expected"},
    {"3", 1, nullptr, "(line 1) : ERROR: '3' : Identifier expected"},
    {"3", 8, nullptr, "(line 1) : ERROR: '3' : Punctuator expected"},
    {"3", 9, nullptr, "(line 1) : ERROR: '3' : Unexpected"},
    {"\n", 8, "}", "(line 1) : ERROR: End of File : Expecting '}'"},
    {"", 70, nullptr, "(line 0) : ERROR: End of File : Expecting String"},
    {"", 9, nullptr, "(line 0) : ERROR: Unexpected End of File"},
};

TEST_F(FileFormat, RequiredTokenIsConsumedOrReported) {
  for (const RequireCase& c : kRequireCases) {
    SCOPED_TRACE(c.input);
    Speaker& speaker = Reading(c.input);
    const LogWatch log;
    const int result = speaker.RequireToken(c.type, c.text);
    if (c.message == nullptr) {
      EXPECT_EQ(result, 0);
      EXPECT_THAT(log.Texts(), IsEmpty());
      EXPECT_EQ(speaker.RequireToken(KVN_TOKEN_STRING, nullptr), KVN_SYNTAX_ERROR);
    } else {
      EXPECT_EQ(result, KVN_SYNTAX_ERROR);
      EXPECT_THAT(log.Texts(), ElementsAre(c.message));
      EXPECT_NE(speaker.AcceptToken(c.type, c.text), 0);
      EXPECT_THAT(log.Texts(), testing::SizeIs(1));
    }
  }
}

TEST_F(FileFormat, WithoutALexerThereIsNoToken) {
  Speaker speaker(network);
  const LogWatch log;
  EXPECT_EQ(speaker.AcceptToken(KVN_TOKEN_STRING, nullptr), KVN_REFUSED);
  EXPECT_EQ(speaker.PeekIs("x"), KVN_REFUSED);
  EXPECT_EQ(speaker.RequireToken(KVN_TOKEN_STRING, nullptr), KVN_SYNTAX_ERROR);
  EXPECT_THAT(log.Texts(), ElementsAre("ERROR: Unable to parse file"));
  EXPECT_EQ(speaker.ReadFile(folder.Path("none").c_str()), KVN_FILE_IO);
  EXPECT_FALSE(speaker.HasLexer());
}

TEST_F(FileFormat, DispatchIsExactWhileConsumingIgnoresCase) {
  const char* const words[] = {"node", "submodel", nullptr};
  Speaker& speaker = Reading("NODE submodel");
  EXPECT_EQ(speaker.PeekIs("node"), 0);
  EXPECT_EQ(speaker.PeekInList(words), 0);
  speaker.IgnoreCase();
  EXPECT_EQ(speaker.PeekIs("node"), 1);
  EXPECT_EQ(speaker.PeekInList(words), 1);
  EXPECT_EQ(speaker.PeekIs("nod"), 0);
  EXPECT_EQ(speaker.AcceptToken(KVN_TOKEN_IDENTIFIER, "node"), 0);
  EXPECT_EQ(speaker.PeekInList(words), 1);
  EXPECT_EQ(speaker.AcceptToken(KVN_TOKEN_IDENTIFIER, nullptr), 0);
  EXPECT_EQ(speaker.TokenText(), "submodel");
  EXPECT_EQ(speaker.PeekInList(words), KVN_NO_MORE_TOKENS);
}

TEST_F(FileFormat, PeeksTellClassesApart) {
  struct Case {
    const char* input;
    int identifier, string, number, integer, comma, parenthesis;
  };
  const Case cases[] = {
      {"abc", 1, 0, 0, 0, 0, 0}, {"\",\"", 0, 1, 0, 0, 0, 0}, {"12", 0, 0, 1, 1, 0, 0},
      {"1.5", 0, 0, 1, 0, 0, 0}, {"3.", 0, 0, 0, 0, 0, 0},    {",", 0, 0, 0, 0, 1, 0},
      {"(", 0, 0, 0, 0, 0, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.input);
    Speaker& speaker = Reading(c.input);
    EXPECT_EQ(speaker.PeekIsIdentifier(), c.identifier);
    EXPECT_EQ(speaker.PeekIsString(), c.string);
    EXPECT_EQ(speaker.PeekIsNumber(), c.number);
    EXPECT_EQ(speaker.PeekIsInteger(), c.integer);
    EXPECT_EQ(speaker.PeekIsComma(), c.comma);
    EXPECT_EQ(speaker.PeekIsOpenParenthesis(), c.parenthesis);
  }
}

TEST_F(FileFormat, ReadsSingleValues) {
  Speaker& speaker = Reading("7 -2.5 12e id \"te\\\"xt\" -. x");
  int integer = 0;
  double number = 0.0;
  std::string text;
  EXPECT_EQ(speaker.ReadStringToken(text), KVN_SYNTAX_ERROR);
  EXPECT_EQ(speaker.ReadInteger(integer), 0);
  EXPECT_EQ(speaker.ReadInteger(integer), KVN_SYNTAX_ERROR);
  EXPECT_EQ(integer, 7);
  EXPECT_EQ(speaker.ReadDouble(number), 0);
  EXPECT_EQ(number, -2.5);
  EXPECT_EQ(speaker.ReadDouble(number), 0);
  EXPECT_EQ(number, 12.0);
  EXPECT_EQ(speaker.ReadDouble(number), KVN_SYNTAX_ERROR);
  EXPECT_EQ(speaker.ReadIdentifierToken(text), 0);
  EXPECT_EQ(text, "id");
  EXPECT_EQ(speaker.ReadStringToken(text), 0);
  EXPECT_EQ(text, "te\"xt");
  EXPECT_EQ(speaker.ReadDouble(number), KVN_REFUSED);  // a real to the lexer, but no number
  EXPECT_EQ(number, 12.0);
}

struct ListCase {
  const char* input;
  const char* doubles;  // what the list reader of doubles stores, each with a blank behind
  const char* message;  // null: success
};
const ListCase kListCases[] = {
    {"()", "", nullptr},
    {"(1, 2.5,-.5)", "1 2.5 -0.5 ", nullptr},
    {"(1, 2,)", "1 2 ", "(line 1) : ERROR: ')' : Real Number expected"},
    {"(1 2)", "1 ", "(line 1) : ERROR: '2' : ')' expected"},
    {"(3., 2)", "", "(line 1) : ERROR: '3.' : ')' expected"},
    {"(1, -.)", "1 ", "(line 1) : ERROR: '-.' : Real Number expected"},
    {"(x)", "", "(line 1) : ERROR: 'x' : ')' expected"},
    {"1)", "", "(line 1) : ERROR: '1' : '(' expected"},
    {"(1,\n", "1 ", "(line 1) : ERROR: End of File : Expecting Real Number"},
    {"(1", "1 ", "(line 1) : ERROR: End of File : Expecting ')'"},
};

TEST_F(FileFormat, ReadsListsOfNumbers) {
  for (const ListCase& c : kListCases) {
    SCOPED_TRACE(c.input);
    const LogWatch log;
    KVN_doubleArray list;
    const int result = Reading(c.input).ReadDoubleList(list);
    std::string stored;
    char text[64];
    for (double value : list) {
      FormatDouble("%g", value, text, sizeof text);
      stored += std::string(text) + " ";
    }
    EXPECT_EQ(stored, c.doubles);
    EXPECT_EQ(result, c.message == nullptr ? 0 : KVN_SYNTAX_ERROR);
    if (c.message != nullptr) {
      EXPECT_THAT(log.Texts(), ElementsAre(c.message));
    }
  }
}

TEST_F(FileFormat, ReadsListsOfTheOtherKinds) {
  KVN_intArray ints;
  EXPECT_EQ(Reading("(4,-5 , 6)").ReadIntList(ints), 0);
  EXPECT_EQ(Reading("(7, 1.5)").ReadIntList(ints), KVN_SYNTAX_ERROR);
  EXPECT_THAT(ItemsOf(ints), ElementsAre(4, -5, 6, 7));
  KVN_stringArray strings;
  EXPECT_EQ(Reading("(a, b, a)").ReadIdentifierList(strings), 0);
  EXPECT_EQ(Reading("(\"x y\",\"\")").ReadStringList(strings), 0);
  EXPECT_EQ(Reading("(\"a\")").ReadIdentifierList(strings), KVN_SYNTAX_ERROR);
  EXPECT_THAT(TextsOf(strings), ElementsAre("a", "b", "a", "x y", ""));
  // What an identifier list refuses is left out, and the reading goes on.
  KVN_idArray ids;
  EXPECT_EQ(Reading("(a, b, a, c)").ReadIdentifierList(ids), 0);
  EXPECT_THAT(TextsOf(ids), ElementsAre("a", "b", "c"));
}

TEST_F(FileFormat, StatementReadersTellOtherStatementsFromErrors) {
  int value = -1;
  Speaker& speaker = Reading("Count = 12; FLAG = FALSE; FLAG = true; x 3; y = z");
  EXPECT_EQ(speaker.ReadIntStatement(nullptr, value), KVN_REFUSED);
  EXPECT_EQ(speaker.ReadIntStatement("OTHER", value), KVN_NOT_THIS_STATEMENT);
  EXPECT_EQ(speaker.ReadIntStatement("COUNT", value), 0);
  EXPECT_EQ(value, 12);
  EXPECT_EQ(speaker.AcceptToken(8, ";"), 0);
  EXPECT_EQ(speaker.ReadBoolStatement("FLAG", value), 0);
  EXPECT_EQ(value, 0);
  EXPECT_EQ(speaker.TokenText(), "FALSE");
  EXPECT_EQ(speaker.AcceptToken(8, ";"), 0);
  const LogWatch log;
  EXPECT_EQ(speaker.ReadBoolStatement("FLAG", value), KVN_SYNTAX_ERROR);
  EXPECT_EQ(speaker.AcceptToken(8, ";"), 0);
  EXPECT_EQ(speaker.ReadStatement("x", KVN_TOKEN_INTEGER), KVN_SYNTAX_ERROR);
  EXPECT_EQ(speaker.SkipStatement(), 0);
  EXPECT_EQ(speaker.AcceptToken(8, ";"), 0);
  EXPECT_EQ(speaker.ReadIntStatement("y", value), KVN_SYNTAX_ERROR);
  EXPECT_EQ(value, 0);
  EXPECT_THAT(log.Texts(), ElementsAre("(line 1) : ERROR: (\"true\") : Boolean Expected",
                                       "(line 1) : ERROR: '3' : '=' expected",
                                       "(line 1) : ERROR: 'z' : Integer expected"));
  EXPECT_EQ(speaker.ReportError(0, "nothing"), 0);
  EXPECT_EQ(speaker.ReportError(KVN_NO_MEMORY, nullptr), KVN_NO_MEMORY);
  EXPECT_EQ(log.Texts().back(), "(line 1) : OUT OF MEMORY");
}

struct BlockCase {
  const char* input;
  const char* values;    // each with a blank behind
  const char* messages;  // each with a line feed behind
};
// A bad statement costs itself, with the blocks inside it. A missing ";" is told by the one that is
// found. It is meant that recovery counts the "}" behind z in the sixth case, so it passes the ";"
// there and what follows, up to one inside the next braces; these so become the end of the inner
// block. The end of the file ends every loop.
const BlockCase kBlockCases[] = {
    {"b = { x = 1; Y = 2; }", "1 2 ", ""},
    {"B = { x = ?;\n z = 2; x = 3; }", "3 ",
     "(line 1) : ERROR: '?' : Integer expected\n(line 2) : Unknown\n"},
    {"B = { z { x = 1; }; x = 2; }", "2 ", "(line 1) : Unknown\n"},
    {"B = { B = { x = 1; z; }; B = { }; y = 2; }", "1 2 ", "(line 1) : Unknown\n"},
    {"B = { x = 1 y = 2; x = 3; }", "1 3 ", "(line 1) : Unknown\n"},
    {"B = { B = { z }; x = 1; B = { x = 2; y = 3; }; y = 4; }", "3 4 ", "(line 1) : Unknown\n"},
    {"B = { B = { x = 1;", "1 ",
     "(line 1) : ERROR: End of File : Expecting '}'\n(line 1) : NO MORE TOKENS\n"
     "(line 1) : NO MORE TOKENS\n"
     "(line 1) : ERROR: End of File : Expecting '}'\n(line 1) : NO MORE TOKENS\n"},
};

TEST_F(FileFormat, SyntaxErrorsInABlockCostOneStatement) {
  for (const BlockCase& c : kBlockCases) {
    SCOPED_TRACE(c.input);
    const LogWatch log;
    Speaker& speaker = Reading(c.input);
    EXPECT_EQ(speaker.ReadTestBlock(), 0);
    std::string values, messages;
    for (int value : speaker.values) values += std::to_string(value) + " ";
    for (const std::string& text : log.Texts()) messages += text + "\n";
    EXPECT_EQ(values, c.values);
    EXPECT_EQ(messages, c.messages);
  }
}

TEST_F(FileFormat, LexicalErrorsEndEveryLoop) {
  Speaker& speaker = Reading("B = { x = 1; B = { x = \x01; x = 2; }; x = 3; }");
  EXPECT_EQ(speaker.ReadTestBlock(), 0);
  EXPECT_THAT(speaker.values, ElementsAre(1));
  EXPECT_EQ(speaker.IsBlockEnd(), 1);
  // A brace in a string ends no block.
  EXPECT_EQ(Reading("\"}\"").IsBlockEnd(), 0);
}

TEST_F(FileFormat, WritesStatements) {
  Speaker& speaker = Writing();
  speaker.WriteBlockStart("HEADER");
  speaker.WriteStatement("ID", "net", false, false);
  speaker.WriteStatement("RAW", "a\n\tb", false, false);
  speaker.WriteStatement("ABSENT", nullptr, true, true);
  speaker.WriteStringStatement(nullptr, "x");
  speaker.WriteStringStatement("NAME", "tab\t\"quoted\" \\ \r\n");
  speaker.WriteIntStatement("COUNT", -5);
  speaker.WriteBoolStatement("FLAG", true);
  speaker.WriteBoolStatement("FLAG", false);
  speaker.WriteBlockEnd();
  EXPECT_EQ(Written(),
            "HEADER = \n {\n  ID = net;\n  RAW = a\n  \tb;\n"
            "  NAME = \"tab\\t\\\"quoted\\\" \\\\ \\r\\n\";\n"
            "  COUNT = -5;\n  FLAG = TRUE;\n  FLAG = FALSE;\n };\n");
}

TEST_F(FileFormat, WritesLists) {
  KVN_stringArray sized;
  ASSERT_EQ(sized.SetSize(2), 0);
  ASSERT_EQ(sized.SetString(0, "a"), 0);
  Speaker& speaker = Writing();
  speaker.WriteIdentifierListStatement("IDS", StringsOf({"a", "b"}), false);
  speaker.WriteIdentifierListStatement(nullptr, StringsOf({"a", "b"}), false);
  speaker.WriteIdentifierListStatement("NONE", sized, false);
  speaker.WriteIdentifierListStatement("WHOLE", sized, true);
  speaker.WriteStringListStatement("TEXTS", StringsOf({"x \"y\"", ""}), false);
  speaker.WriteDoubleListStatement("NUMBERS", DoublesOf({0.5, 1e-9, KVN_UNDEFINED_VALUE}), false);
  speaker.WriteIntListStatement("INTS", IntsOf({1, -2}), false);
  EXPECT_EQ(Written(),
            "IDS = (a, b);\nNONE = ();\nWHOLE = (a, );\nTEXTS = (\"x \\\"y\\\"\", \"\");\n"
            "NUMBERS = (0.50000000, 0.00000000, 0.0E-2);\nINTS = (1, -2);\n");
}

// The start takes 5 columns and a number with its separator 12: the sixth has no room behind 65.
TEST_F(FileFormat, ListsBreakBetweenElements) {
  Speaker& speaker = Writing();
  speaker.WriteDoubleListStatement("N", DoublesOf(std::vector<double>(7, 0.25)), false);
  const std::string number = "0.25000000";
  std::string expected = "N = (";
  for (int i = 0; i < 5; i++) expected += number + ", ";
  EXPECT_EQ(Written(), expected + "\n" + number + ", " + number + ");\n");

  // Three columns must be left for the next string: 6 + 62 + 2 leaves none of 70.
  const std::string longText(62, 's');
  Writing().WriteStringListStatement("T", StringsOf({longText.c_str(), "t"}), false);
  EXPECT_EQ(Written(), "T = (\"" + longText + "\",\n\"t\");\n");
}

TEST_F(FileFormat, LongWordsStayWhole) {
  const std::string word(200, 'w');
  Speaker& speaker = Writing();
  speaker.WriteIdentifierListStatement("IDS", StringsOf({"a", word.c_str(), "b"}), false);
  speaker.WriteDoubleListStatement("N", DoublesOf({1e308}), false);
  speaker.WriteLine(("node " + word + "\n").c_str());
  Speaker& reading = Reading(Written());
  KVN_stringArray ids;
  KVN_doubleArray numbers;
  reading.AcceptToken(KVN_TOKEN_IDENTIFIER, "IDS");
  reading.AcceptToken(KVN_TOKEN_PUNCTUATOR, "=");
  EXPECT_EQ(reading.ReadIdentifierList(ids), 0);
  EXPECT_THAT(TextsOf(ids), ElementsAre("a", word, "b"));
  reading.AcceptToken(KVN_TOKEN_PUNCTUATOR, ";");
  reading.AcceptToken(KVN_TOKEN_IDENTIFIER, "N");
  reading.AcceptToken(KVN_TOKEN_PUNCTUATOR, "=");
  EXPECT_EQ(reading.ReadDoubleList(numbers), 0);
  EXPECT_THAT(ItemsOf(numbers), ElementsAre(1e308));
  reading.AcceptToken(KVN_TOKEN_PUNCTUATOR, ";");
  EXPECT_EQ(reading.AcceptToken(KVN_TOKEN_IDENTIFIER, "node"), 0);
  EXPECT_EQ(reading.AcceptToken(KVN_TOKEN_IDENTIFIER, word.c_str()), 0);
}

TEST_F(FileFormat, PiecesAreCutAt10210Bytes) {
  Writing().WriteStringStatement("T", std::string(20000, '\n').c_str());
  Speaker& reading = Reading(Written());
  EXPECT_EQ(reading.ReadStatement("T", KVN_TOKEN_STRING), 0);
  EXPECT_EQ(reading.TokenText(), std::string(10210, '\n'));
}

// Word wrap may break a string anywhere, and the reader must put it together again.
TEST_F(FileFormat, StringsReadBackAsTheyWereWritten) {
  const char alphabet[] = "ab \t\n\r\"\\|\b\xe9\xa9  \\";
  std::mt19937 random(20240501);
  const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  for (int round = 0; round < 300; round++) {
    SCOPED_TRACE(testing::Message() << "round " << round);
    // Most rounds take few of the characters, for long words and for long runs of one kind.
    const int first = below(8);
    const int kinds = 1 + below(static_cast<int>(sizeof alphabet) - 1 - first);
    std::string texts[3];
    for (std::string& text : texts) {
      for (int left = below(200); left > 0; left--) text += alphabet[first + below(kinds)];
    }
    Speaker& speaker = Writing();
    ASSERT_EQ(speaker.outputFile.SetRightMargin(3 + below(78)), 0);
    for (int level = below(4); level > 0; level--) {
      ASSERT_EQ(speaker.outputFile.IncreaseIndent(), 0);
    }
    speaker.WriteStringStatement("NAME", texts[0].c_str());
    const KVN_stringArray list = StringsOf({texts[0].c_str(), texts[1].c_str(), texts[2].c_str()});
    speaker.WriteStringListStatement("LIST", list, false);

    Speaker& reading = Reading(Written());
    ASSERT_EQ(reading.ReadStatement("NAME", KVN_TOKEN_STRING), 0);
    EXPECT_EQ(reading.TokenText(), texts[0]);
    EXPECT_EQ(reading.AcceptToken(KVN_TOKEN_PUNCTUATOR, ";"), 0);
    EXPECT_EQ(reading.AcceptToken(KVN_TOKEN_IDENTIFIER, "LIST"), 0);
    EXPECT_EQ(reading.AcceptToken(KVN_TOKEN_PUNCTUATOR, "="), 0);
    KVN_stringArray readBack;
    ASSERT_EQ(reading.ReadStringList(readBack), 0);
    EXPECT_THAT(TextsOf(readBack), ElementsAre(texts[0], texts[1], texts[2]));
    EXPECT_EQ(reading.RequireToken(KVN_TOKEN_PUNCTUATOR, ";"), 0);
  }
}

}  // namespace
