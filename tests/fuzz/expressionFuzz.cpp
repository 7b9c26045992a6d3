// The expression parser on arbitrary bytes. A text is refused with a message and a place in it, or
// makes a tree: its text parses again and prints the same, its copy is the same, it simplifies to
// an end, and each variable that stands there once can be isolated as far as there are inverses.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "expressions/expression.h"
#include "expressions/expressionParser.h"
#include "expressions/expressionWalk.h"
#include "expressions/operators.h"
#include "expressions/variableVisitor.h"

namespace {

using Tree = std::unique_ptr<KVN_expression>;

constexpr int kMostNodes = 5000;  // simplified trees may grow so far
constexpr int kMostMoves = 5000;
// The printed form may enclose a negated sum twice where the text did once, and the parser follows
// no more than 256 levels.
constexpr int kMostLevelsToReread = 100;

void Complain(const char* what, const std::string& text, const std::string& other) {
  std::fprintf(stderr, "%s\n%s\n%s\n", what, text.c_str(), other.c_str());
  std::abort();
}

std::string Printed(const KVN_expression& tree) {
  std::string text;
  PrintSigned(tree, text);
  return text;
}

/// A conditional in the last branch of another one prints without the parentheses that it needs.
bool HoldsAmbiguousChoice(KVN_expression& tree) {
  bool found = false;
  KVN_expression* root = &tree;
  WalkTree(&root, [&](KVN_expression& node, KVN_expression**) {
    if (node.GetKind() == KVN_KIND_CONDITIONAL) {
      const KVN_expression& last = *static_cast<KVN_operatorConditional&>(node).whenFalse;
      found = found || (last.GetKind() == KVN_KIND_CONDITIONAL && last.sign > 0);
    }
    return true;
  });
  return found;
}

void CheckPrinting(KVN_expression& tree, const std::string& printed) {
  if (GetDepth(&tree) > kMostLevelsToReread || HoldsAmbiguousChoice(tree)) return;
  const Tree again(ParseExpression(printed.c_str(), nullptr, nullptr));
  if (again == nullptr) Complain("what was printed doesn't parse", printed, "");
  if (Printed(*again) != printed) Complain("printed differently", printed, Printed(*again));
}

void CheckIsolation(const KVN_expression& tree, const std::string& name) {
  KVN_expression* lhs = tree.Clone();
  KVN_expression* rhs = new KVN_variable("rhs");
  if (CountVariable(*lhs, name) == 1) {
    for (int i = 0; i < kMostMoves; i++) {
      const KVN_expression* before = lhs;
      if (!lhs->Isolate(name, lhs, rhs) || lhs == before) break;
      if (CountVariable(*lhs, name) != 1) Complain("lost in isolation", name, Printed(tree));
    }
  }
  delete lhs;
  delete rhs;
}

void CheckTree(KVN_expression& tree) {
  const std::string printed = Printed(tree);
  CheckPrinting(tree, printed);
  KVN_expression* copy = tree.Clone();
  if (Printed(*copy) != printed) Complain("copied differently", printed, Printed(*copy));
  std::vector<std::string> names;
  GetVariables(tree, names);
  if (names.size() < 5) {
    for (const std::string& name : names) CheckIsolation(tree, name);
  }
  // Rules evaluate, and one sample may take ten million draws.
  if (tree.IsDeterministic()) {
    if (SimplifyFully(copy, kMostNodes) == KVN_MAX_SIMPLIFY_PASSES) {
      Complain("simplifies without an end", printed, Printed(*copy));
    }
    (void)SignedValue(tree);
    (void)SignedValue(*copy);
  }
  delete copy;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const int length = static_cast<int>(std::string(text.c_str()).size());
  std::string message;
  int position = -1;
  const Tree tree(ParseExpression(text.c_str(), &position, &message));
  if (tree != nullptr) {
    if (!message.empty()) Complain("a tree and a message", text, message);
    CheckTree(*tree);
  } else if (message.empty() || position < 0 || position > length) {
    Complain("refused without a message or a place", text, message);
  }
  return 0;
}
