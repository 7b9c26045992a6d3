#include "formats/text/lexicalTables.h"

#include <array>
#include <cstring>
#include <initializer_list>

#include "foundation/resultCodes.h"

namespace {

enum Class : unsigned char {
  kLetter = 0,  // all but 'e' and 'E', which may start an exponent
  kDigit = 1,
  kUnderscore = 2,
  kSlash = 3,
  kEqual = 4,
  kStar = 5,
  kHash = 6,
  kPoint = 7,
  kSign = 8,
  kQuote = 9,
  kOther = 10,
  kBlank = 11,
  kUnknown = 12,
  kPercent = 13,
  kComma = 14,
  kBar = 15,
  kLetterE = 16,
};

// States; those that end a token without more ado are classes of tokens too (KVN_tokenType).
enum State : unsigned char {
  kStart = 0,
  kIdentifier = 1,
  kInteger = 2,
  kFraction = 3,
  kAfterSlash = 4,
  kAfterEqual = 5,
  kAfterDoubleEqual = 6,
  kAfterPoint = 7,
  kPunctuator = 8,
  kAfterSign = 9,
  kIntegerE = 10,
  kRealE = 11,
  kIntegerESign = 12,
  kRealESign = 13,
  kIntegerExponent = 14,
  kRealExponent = 15,
};

using ClassTable = std::array<unsigned char, 256>;

constexpr void SetAll(ClassTable& classes, const char* characters, unsigned char value) {
  for (; *characters != '\0'; ++characters) {
    classes[static_cast<unsigned char>(*characters)] = value;
  }
}

constexpr ClassTable MakeClasses() {
  ClassTable classes{};
  classes.fill(kUnknown);
  SetAll(classes, "abcdfghijklmnopqrstuvwxyzABCDFGHIJKLMNOPQRSTUVWXYZ", kLetter);
  SetAll(classes, "eE", kLetterE);
  SetAll(classes, "0123456789", kDigit);
  SetAll(classes, "_", kUnderscore);
  SetAll(classes, "/", kSlash);
  SetAll(classes, "=", kEqual);
  SetAll(classes, "*", kStar);
  SetAll(classes, "#", kHash);
  SetAll(classes, ".", kPoint);
  SetAll(classes, "+-", kSign);
  SetAll(classes, "\"", kQuote);
  SetAll(classes, "!@$^&()[]{};:'<>?~\\`", kOther);
  SetAll(classes, " \n\t", kBlank);
  classes[0] = kBlank;
  SetAll(classes, "%", kPercent);
  SetAll(classes, ",", kComma);
  SetAll(classes, "|", kBar);
  return classes;
}

struct Table {
  KVN_lexicalTransitions cells;

  constexpr void Set(State state, std::initializer_list<Class> classes, unsigned char value) {
    for (Class c : classes) cells[c][state] = value;
  }
  constexpr void SetState(State state, unsigned char value) {
    for (auto& row : cells) row[state] = value;
  }
};

constexpr Table MakeDefault() {
  Table t{};
  for (auto& row : t.cells) {
    for (unsigned char& cell : row) cell = KVN_LEXICAL_END;
  }
  t.Set(kStart, {kLetter, kLetterE}, kIdentifier);
  t.Set(kStart, {kDigit}, kInteger);
  t.Set(kStart, {kUnderscore, kStar, kHash, kOther, kPercent, kComma, kBar}, kPunctuator);
  t.Set(kStart, {kSlash}, kAfterSlash);
  t.Set(kStart, {kEqual}, kAfterEqual);
  t.Set(kStart, {kPoint}, kAfterPoint);
  t.Set(kStart, {kSign}, kAfterSign);
  t.Set(kStart, {kQuote}, KVN_LEXICAL_STRING);
  t.Set(kStart, {kBlank}, KVN_LEXICAL_SKIP);
  t.Set(kStart, {kUnknown}, KVN_LEXICAL_UNKNOWN);

  t.Set(kIdentifier, {kLetter, kLetterE, kDigit, kUnderscore}, kIdentifier);
  t.Set(kIdentifier, {kUnknown}, KVN_LEXICAL_UNKNOWN);

  t.Set(kAfterSlash, {kSlash}, KVN_LEXICAL_LINE_COMMENT);
  t.Set(kAfterSlash, {kStar}, KVN_LEXICAL_BLOCK_COMMENT);
  t.Set(kAfterSlash, {kHash}, KVN_LEXICAL_NESTED_COMMENT);
  t.Set(kAfterEqual, {kEqual}, kAfterDoubleEqual);
  t.Set(kAfterDoubleEqual, {kEqual}, KVN_LEXICAL_UNKNOWN);

  t.Set(kInteger, {kDigit}, kInteger);
  t.Set(kInteger, {kPoint}, kAfterPoint);
  t.Set(kInteger, {kLetterE}, kIntegerE);
  t.Set(kAfterPoint, {kDigit}, kFraction);
  t.Set(kAfterSign, {kDigit}, kInteger);
  t.Set(kAfterSign, {kPoint}, kFraction);
  t.Set(kFraction, {kDigit}, kFraction);
  t.Set(kFraction, {kLetterE}, kRealE);
  t.Set(kIntegerE, {kDigit}, kIntegerExponent);
  t.Set(kIntegerE, {kSign}, kIntegerESign);
  t.Set(kIntegerESign, {kDigit}, kIntegerExponent);
  t.Set(kIntegerExponent, {kDigit}, kIntegerExponent);
  t.Set(kRealE, {kDigit}, kRealExponent);
  t.Set(kRealE, {kSign}, kRealESign);
  t.Set(kRealESign, {kDigit}, kRealExponent);
  t.Set(kRealExponent, {kDigit}, kRealExponent);
  return t;
}

/// It is meant that in three of the tables the digits of an exponent lead back to the state before
/// them, so that a sign may follow an even number of them: "1e12+3" is one token there.
constexpr void LoopExponents(Table& t) {
  t.Set(kIntegerExponent, {kDigit}, kIntegerE);
  t.Set(kRealExponent, {kDigit}, kRealE);
}

constexpr Table MakeErgo() {
  Table t = MakeDefault();
  LoopExponents(t);
  t.Set(kStart, {kUnderscore, kEqual, kHash, kPoint, kQuote, kOther, kPercent, kComma, kBar},
        kIdentifier);
  t.Set(kStart, {kSlash, kStar}, kPunctuator);
  for (State state :
       {kIdentifier, kInteger, kFraction, kAfterSlash, kAfterPoint, kPunctuator, kAfterSign}) {
    t.SetState(state, kIdentifier);  // anything goes on with the word
    t.Set(state, {kBlank, kUnknown}, KVN_LEXICAL_END);
  }
  t.Set(kIdentifier, {kUnknown}, KVN_LEXICAL_UNKNOWN);
  for (State state : {kAfterSlash, kAfterPoint, kPunctuator, kAfterSign}) {
    t.Set(state, {kSlash, kStar, kLetterE}, KVN_LEXICAL_END);
  }
  t.Set(kInteger, {kDigit}, kInteger);
  t.Set(kInteger, {kPoint}, kAfterPoint);
  t.Set(kInteger, {kLetterE}, kIntegerE);
  t.Set(kFraction, {kDigit}, kFraction);
  t.Set(kFraction, {kLetterE}, kRealE);
  t.Set(kAfterPoint, {kDigit}, kFraction);
  t.Set(kAfterSign, {kDigit}, kInteger);
  t.Set(kAfterSign, {kPoint}, kFraction);
  return t;
}

constexpr Table MakeHugin() {
  Table t = MakeDefault();
  LoopExponents(t);
  t.Set(kStart, {kPercent}, KVN_LEXICAL_LINE_COMMENT);
  return t;
}

constexpr Table MakeMicrosoft() {
  Table t = MakeDefault();
  LoopExponents(t);
  t.Set(kStart, {kComma, kBar}, KVN_LEXICAL_SKIP);
  return t;
}

constexpr Table MakeUnsigned() {
  Table t = MakeDefault();
  t.Set(kStart, {kSign}, kPunctuator);
  return t;
}

// In the order of KVN_lexicalTableNumber, which starts at 1.
constexpr Table kTables[] = {MakeDefault(), MakeErgo(), MakeHugin(), MakeMicrosoft(),
                             MakeUnsigned()};
constexpr int kTableCount = static_cast<int>(std::size(kTables));

constexpr ClassTable kClasses = MakeClasses();

}  // namespace

const unsigned char* GetCharacterClasses() { return kClasses.data(); }

int CopyLexicalTable(int number, KVN_lexicalTransitions& transitions) {
  if (number < 1 || number > kTableCount) return KVN_REFUSED;
  std::memcpy(transitions, kTables[number - 1].cells, sizeof transitions);
  return 0;
}
