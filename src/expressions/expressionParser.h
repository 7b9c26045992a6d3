#pragma once

#include <memory>
#include <string>

class KVN_expression;
class KVN_function;

/// Deepest tree that the parser makes, and deepest nesting of parentheses, calls and branches of a
/// conditional that it follows. Beyond it refuses with "Invalid expression".
constexpr int KVN_MAX_TREE_DEPTH = 2000;
constexpr int KVN_MAX_NESTING = 256;

/// Makes a tree from a text. A reader of a foreign syntax derives from it and decides what is a
/// variable and what a function; grammar and messages stay the same. docs/expressions.md has the
/// grammar.
///
///     expression  level0 { "?" expression ":" level0 }
///     level0      level1 { ("=" | "<>") level1 }
///     level1      level2 { ("<=" | "<" | ">=" | ">") level2 }
///     level2      level3 { ("+" | "-") level3 }
///     level3      level4 { ("*" | "/") level4 }
///     level4      factor { "^" factor }
///     factor      number | identifier [ "(" arguments ")" ] | "(" expression ")" | "-" factor
class KVN_expressionParser {
 public:
  KVN_expressionParser() = default;
  KVN_expressionParser(const KVN_expressionParser&) = delete;
  KVN_expressionParser& operator=(const KVN_expressionParser&) = delete;
  virtual ~KVN_expressionParser() = default;

  /// The tree, owned by the caller, or null. Then `message` holds the first error and `place` the
  /// index in the text at which the scanner stood when it was seen: past the token in question, at
  /// most the length of the text. On success neither is written. Either may be null. A null text is
  /// an empty one.
  KVN_expression* Parse(const char* expressionText, std::string* message, int* place);

 protected:
  /// Whether the identifier may stand for a variable; if not, `error` says why.
  virtual bool CheckVariable(const std::string& name, std::string& error);
  /// A new node for a call of that name, without arguments, and its arity as in KVN_functionRow.
  /// False when there is no such function; nothing is written then.
  virtual bool MakeFunction(const std::string& name, KVN_function*& function, int& arity);
  /// Sees a complete call. Answers the node to use: the same one, or another one that has taken it
  /// over. Null refuses the call, which the parser deletes, with `error` as the message.
  virtual KVN_function* ValidateFunction(KVN_function* function, std::string& error);

 private:
  void NextToken();
  void ScanComparison();
  void ScanNumber();
  void ScanIdentifier();
  void Error(const std::string& text);

  KVN_expression* ParseTop();
  KVN_expression* ParseExpressionLevel();
  bool ParseBranches(std::unique_ptr<KVN_expression>& tree);
  KVN_expression* ParseBinaryLevels();
  KVN_expression* ParseFactor();
  KVN_expression* ParseParentheses();
  KVN_expression* ParseIdentifier();
  KVN_expression* ParseCall(const std::string& name);
  bool ParseFixedArguments(KVN_function& function, int arity);
  bool ParseAnyArguments(KVN_function& function, int fewest);
  bool ParseComma();

  const char* text = "";  // not owned
  int length = 0;
  int position = 0;                     // index of the next character
  int errorCount = 0;                   // only the first error is recorded
  std::string* errorMessage = nullptr;  // not owned
  int* errorPosition = nullptr;         // not owned
  int token = 0;
  double number = 0.0;     // of the last number token
  std::string identifier;  // text of the last identifier token
  int nesting = 0;         // expressions that the current one lies in
};

/// The tree for a text in the plain language, owned by the caller, or null; see
/// KVN_expressionParser::Parse.
KVN_expression* ParseExpression(const char* text, int* errorPosition, std::string* errorMessage);
