#include "expressions/expressionParser.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

#include "expressions/expression.h"
#include "expressions/function.h"
#include "expressions/functionTable.h"
#include "expressions/operators.h"
#include "foundation/numberText.h"

namespace {

using OwnedTree = std::unique_ptr<KVN_expression>;

// Token codes. One of a single character is that character.
constexpr int kEnd = 0;
constexpr int kIdentifier = 1;
constexpr int kNumber = 2;
constexpr int kNotEqual = 35;
constexpr int kLessEqual = 123;
constexpr int kGreaterEqual = 125;

constexpr int kLongestText = 1 << 30;  // bytes, so that a position is an int

constexpr char kNotATree[] = "Invalid expression";
constexpr char kSingleCharacters[] = "()*+,-/:<=>?^";

// The classes of the C library follow the locale, so that a host may allow letters beyond ASCII.
bool IsBlank(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }
bool IsLetter(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsNamePart(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

/// Operators by level, loosest first, each level ended by kEnd.
constexpr int kLevels = 5;
constexpr int kOperators[kLevels][5] = {
    {'=', kNotEqual, kEnd, kEnd, kEnd}, {kLessEqual, '<', kGreaterEqual, '>', kEnd},
    {'+', '-', kEnd, kEnd, kEnd},       {'*', '/', kEnd, kEnd, kEnd},
    {'^', kEnd, kEnd, kEnd, kEnd},
};

/// -1 for a token that is no binary operator.
int LevelOf(int token) {
  for (int level = 0; level < kLevels; level++) {
    for (const int* code = kOperators[level]; *code != kEnd; code++) {
      if (*code == token) return level;
    }
  }
  return -1;
}

int KindOf(int token) {
  switch (token) {
    case '=':
      return KVN_KIND_EQ;
    case kNotEqual:
      return KVN_KIND_NE;
    case '<':
      return KVN_KIND_LT;
    case kLessEqual:
      return KVN_KIND_LE;
    case '>':
      return KVN_KIND_GT;
    case kGreaterEqual:
      return KVN_KIND_GE;
    case '+':
      return KVN_KIND_PLUS;
    case '-':
      return KVN_KIND_MINUS;
    case '*':
      return KVN_KIND_MULTIPLY;
    case '/':
      return KVN_KIND_DIVIDE;
    default:
      return KVN_KIND_EXP;
  }
}

/// Null, and the operands are gone, when the memory ends.
KVN_expression* Combine(int token, KVN_expression* left, KVN_expression* right) {
  KVN_expression* made = NewBinaryOperator(KindOf(token), left, right);
  if (made == nullptr) {
    delete left;
    delete right;
  }
  return made;
}

}  // namespace

bool KVN_expressionParser::CheckVariable(const std::string&, std::string&) { return true; }

bool KVN_expressionParser::MakeFunction(const std::string& name, KVN_function*& function,
                                        int& arity) {
  const KVN_functionRow* row = FindFunction(name);
  if (row == nullptr) return false;
  KVN_function* made = row->density != nullptr ? new (std::nothrow) KVN_distribution(row)
                                               : new (std::nothrow) KVN_function(row);
  if (made == nullptr) return false;
  function = made;
  arity = row->arity;
  return true;
}

KVN_function* KVN_expressionParser::ValidateFunction(KVN_function* function, std::string&) {
  return function;
}

KVN_expression* KVN_expressionParser::Parse(const char* expressionText, std::string* message,
                                            int* place) {
  std::string ownMessage;
  int ownPlace = 0;
  text = expressionText != nullptr ? expressionText : "";
  length = static_cast<int>(std::min<std::size_t>(std::strlen(text), kLongestText + 1));
  position = 0;
  errorCount = 0;
  nesting = 0;
  errorMessage = message != nullptr ? message : &ownMessage;
  errorPosition = place != nullptr ? place : &ownPlace;
  KVN_expression* tree = ParseTop();
  errorMessage = nullptr;
  errorPosition = nullptr;
  return tree;
}

void KVN_expressionParser::Error(const std::string& message) {
  if (errorCount == 0) {
    *errorMessage = message;
    *errorPosition = position;
  }
  errorCount++;
}

/// At the end of the text `position` moves one past it; further calls stay there.
void KVN_expressionParser::NextToken() {
  token = kEnd;
  if (position > length) return;
  while (IsBlank(text[position])) position++;
  const char c = text[position++];
  if (c == '\0') return;
  if (c == '.' || IsDigit(c)) {
    ScanNumber();
  } else if (IsLetter(c)) {
    ScanIdentifier();
  } else if (std::strchr(kSingleCharacters, c) != nullptr) {
    token = c;
    if (c == '<' || c == '>') ScanComparison();
  } else {
    Error("Invalid token");
  }
}

void KVN_expressionParser::ScanComparison() {
  const char next = text[position];
  if (next == '=') {
    token = token == '<' ? kLessEqual : kGreaterEqual;
  } else if (token == '<' && next == '>') {
    token = kNotEqual;
  } else {
    return;
  }
  position++;
}

/// Everything that the C library takes for a number, hexadecimal and exponents included.
void KVN_expressionParser::ScanNumber() {
  position--;
  const char* start = text + position;
  const char* end = ScanDouble(start, number);
  if (end == start) {
    Error("Invalid token");
    return;
  }
  position += static_cast<int>(end - start);
  token = kNumber;
}

void KVN_expressionParser::ScanIdentifier() {
  const int start = position - 1;
  while (IsNamePart(text[position])) position++;
  identifier.assign(text + start, position - start);
  token = kIdentifier;
}

KVN_expression* KVN_expressionParser::ParseTop() {
  OwnedTree tree;
  if (length > kLongestText) {
    Error(kNotATree);
    return nullptr;
  }
  NextToken();
  if (token == kEnd) {
    Error("Empty expression");
  } else {
    tree.reset(ParseExpressionLevel());
    const bool whole = token == kEnd && tree != nullptr;
    if (!whole || GetDepth(tree.get()) > KVN_MAX_TREE_DEPTH) Error(kNotATree);
  }
  if (errorCount == 0) return tree.release();
  *errorPosition = std::min(*errorPosition, length);
  return nullptr;
}

/// The chain of conditionals is a loop, and that is meant: `a ? b : c ? d : e` has `a ? b : c` for
/// its condition. The last operand therefore takes no "?" of its own.
KVN_expression* KVN_expressionParser::ParseExpressionLevel() {
  if (nesting > KVN_MAX_NESTING) {
    Error(kNotATree);
    return nullptr;
  }
  nesting++;
  OwnedTree tree(ParseBinaryLevels());
  bool good = true;
  while (good && token == '?') good = ParseBranches(tree);
  nesting--;
  return good ? tree.release() : nullptr;
}

/// Makes `tree` the condition of a conditional. False after an error.
bool KVN_expressionParser::ParseBranches(OwnedTree& tree) {
  NextToken();
  OwnedTree whenTrue(ParseExpressionLevel());
  if (whenTrue == nullptr) return false;
  if (token != ':') {
    Error("':' expected");
    return false;
  }
  NextToken();
  OwnedTree whenFalse(ParseBinaryLevels());
  if (whenFalse == nullptr) return false;
  KVN_expression* made =
      new (std::nothrow) KVN_operatorConditional(tree.get(), whenTrue.get(), whenFalse.get());
  if (made == nullptr) return false;
  (void)tree.release();  // all three are in `made` now
  (void)whenTrue.release();
  (void)whenFalse.release();
  tree.reset(made);
  return true;
}

/// All binary levels at once: operands that wait for a right side, each of a tighter level than the
/// one before. Equal levels associate to the left, "^" too. An operand that failed is null and goes
/// on as it stands; the error it left makes ParseTop throw the tree away.
KVN_expression* KVN_expressionParser::ParseBinaryLevels() {
  struct Waiting {
    OwnedTree left;
    int token;
    int level;
  };
  Waiting waiting[kLevels];
  int count = 0;
  for (;;) {
    OwnedTree operand(ParseFactor());
    const int level = LevelOf(token);
    while (count > 0 && waiting[count - 1].level >= level) {
      Waiting& last = waiting[--count];
      operand.reset(Combine(last.token, last.left.release(), operand.release()));
      if (operand == nullptr) Error(kNotATree);  // no memory
    }
    if (level < 0) return operand.release();
    waiting[count++] = {std::move(operand), token, level};
    NextToken();
  }
}

/// A minus binds tighter than "^", and that is meant: `-2^3` is `(-2)^3`.
KVN_expression* KVN_expressionParser::ParseFactor() {
  int sign = 1;
  for (; token == '-'; NextToken()) sign = -sign;
  KVN_expression* factor = nullptr;
  if (token == kNumber) {
    factor = new (std::nothrow) KVN_constant(number);
    NextToken();
  } else if (token == '(') {
    factor = ParseParentheses();
  } else if (token == kIdentifier) {
    factor = ParseIdentifier();
  } else {
    Error("Factor expected");
  }
  if (factor != nullptr) {
    factor->sign *= sign;
  } else if (errorCount == 0) {
    Error(kNotATree);  // no memory
  }
  return factor;
}

KVN_expression* KVN_expressionParser::ParseParentheses() {
  NextToken();
  OwnedTree tree(ParseExpressionLevel());
  if (token != ')') {
    Error("')' expected");
    return nullptr;
  }
  NextToken();
  return tree.release();
}

KVN_expression* KVN_expressionParser::ParseIdentifier() {
  const std::string name = identifier;  // the next token may be one too
  NextToken();
  if (token == '(') return ParseCall(name);
  std::string reason;
  if (CheckVariable(name, reason)) return new (std::nothrow) KVN_variable(name);
  Error("Invalid variable '" + name + "': " + reason);
  return nullptr;
}

KVN_expression* KVN_expressionParser::ParseCall(const std::string& name) {
  KVN_function* made = nullptr;
  int arity = 0;
  if (!MakeFunction(name, made, arity)) {
    Error("Unknown function: " + name);
    return nullptr;
  }
  std::unique_ptr<KVN_function> function(made);
  NextToken();
  const bool good =
      arity < 0 ? ParseAnyArguments(*function, -arity) : ParseFixedArguments(*function, arity);
  if (!good) return nullptr;
  std::string reason;
  // After an error in an argument the call isn't whole, and the tree is thrown away anyway.
  KVN_function* validated =
      errorCount == 0 ? ValidateFunction(function.get(), reason) : function.get();
  if (validated == nullptr) {
    Error(reason);
    return nullptr;
  }
  (void)function.release();  // `validated` is it or has taken it over
  return validated;
}

/// Reads exactly `arity` arguments and the ")". False after an error that ends the call.
bool KVN_expressionParser::ParseFixedArguments(KVN_function& function, int arity) {
  for (int i = 0; i < arity; i++) {
    if (i > 0 && !ParseComma()) return false;
    function.args[i] = ParseExpressionLevel();
  }
  if (token != ')') {
    Error("')' expected in a function call");
    return false;
  }
  NextToken();
  return true;
}

/// Reads arguments up to the ")", `fewest` to 30.
bool KVN_expressionParser::ParseAnyArguments(KVN_function& function, int fewest) {
  int count = 0;
  for (; count < KVN_MAX_ARGUMENTS && token != ')'; count++) {
    if (count > 0 && !ParseComma()) return false;
    function.args[count] = ParseExpressionLevel();
  }
  const bool closed = token == ')';
  if (closed) NextToken();
  if (count < fewest) {
    Error("Too few parameters in vararg function call");
    return false;
  }
  if (!closed) {
    Error("Max parameter count for vararg function call exceeded");
    return false;
  }
  return true;
}

bool KVN_expressionParser::ParseComma() {
  if (token != ',') {
    Error(token == ')' ? "Too few parameters in function call"
                       : "Comma expected in a function call");
    return false;
  }
  NextToken();
  return true;
}

KVN_expression* ParseExpression(const char* text, int* errorPosition, std::string* errorMessage) {
  KVN_expressionParser parser;
  return parser.Parse(text, errorMessage, errorPosition);
}
