// Text of the nodes with children. What is still to be written stands on a stack, so that a deep
// tree needs no stack of the thread.

#include <vector>

#include "expressions/function.h"
#include "expressions/operators.h"

namespace {

/// A node, to be written without its sign, or, when that is null, a text.
struct Piece {
  const KVN_expression* node;
  const char* text;
};

class Printer {
 public:
  explicit Printer(std::string& target) : out(target) {}

  void Print(const KVN_expression& root) {
    pending.push_back({&root, nullptr});
    while (!pending.empty()) {
      const Piece piece = pending.back();
      pending.pop_back();
      if (piece.node == nullptr) {
        out += piece.text;
      } else {
        Open(*piece.node);
      }
    }
  }

 private:
  /// Writes a leaf; replaces another node by its pieces.
  void Open(const KVN_expression& node) {
    pieces.clear();
    switch (node.GetKind()) {
      case KVN_KIND_VARIABLE:
      case KVN_KIND_CONSTANT:
        node.Print(out);
        return;
      case KVN_KIND_FUNCTION:
      case KVN_KIND_DISTRIBUTION:
        AddCall(static_cast<const KVN_function&>(node));
        break;
      case KVN_KIND_CONDITIONAL:
        AddConditional(static_cast<const KVN_operatorConditional&>(node));
        break;
      default:
        AddBinary(static_cast<const KVN_binaryOperator&>(node));
        break;
    }
    pending.insert(pending.end(), pieces.rbegin(), pieces.rend());
  }

  void AddText(const char* text) { pieces.push_back({nullptr, text}); }

  void AddSigned(const KVN_expression& node) {
    const bool enclosed = node.sign < 0 && node.IsOperator();
    if (node.sign < 0) AddText(enclosed ? "-(" : "-");
    pieces.push_back({&node, nullptr});
    if (enclosed) AddText(")");
  }

  void AddOperand(int parentPrecedence, const KVN_expression* child, bool isRight) {
    if (child == nullptr) return;
    const int precedence = PrecedenceOf(*child);
    const bool enclosed = child->IsOperator() && (precedence < parentPrecedence ||
                                                  (isRight && precedence == parentPrecedence));
    if (enclosed) AddText("(");
    AddSigned(*child);
    if (enclosed) AddText(")");
  }

  static int PrecedenceOf(const KVN_expression& node) {
    if (!node.IsOperator()) return 0;
    if (node.GetKind() == KVN_KIND_CONDITIONAL) {
      return static_cast<const KVN_operatorConditional&>(node).GetPrecedence();
    }
    return static_cast<const KVN_binaryOperator&>(node).GetPrecedence();
  }

  void AddBinary(const KVN_binaryOperator& node) {
    AddOperand(node.GetPrecedence(), node.left, /*isRight=*/false);
    AddText(node.GetSymbol());
    AddOperand(node.GetPrecedence(), node.right, /*isRight=*/true);
  }

  void AddConditional(const KVN_operatorConditional& node) {
    AddOperand(node.GetPrecedence(), node.condition, /*isRight=*/true);
    AddText(" ? ");
    AddOperand(node.GetPrecedence(), node.whenTrue, /*isRight=*/false);
    AddText(" : ");
    AddOperand(node.GetPrecedence(), node.whenFalse, /*isRight=*/false);
  }

  void AddCall(const KVN_function& node) {
    AddText(node.GetName());
    AddText("(");
    for (int i = 0; i < KVN_MAX_ARGUMENTS && node.args[i] != nullptr; i++) {
      if (i > 0) AddText(",");
      AddSigned(*node.args[i]);
    }
    AddText(")");
  }

  std::string& out;
  std::vector<Piece> pending;  // what comes next is at the end
  std::vector<Piece> pieces;   // of the node being opened
};

}  // namespace

void KVN_binaryOperator::Print(std::string& out) const { Printer(out).Print(*this); }
void KVN_operatorConditional::Print(std::string& out) const { Printer(out).Print(*this); }
void KVN_function::Print(std::string& out) const { Printer(out).Print(*this); }

void PrintSigned(const KVN_expression& root, std::string& out) {
  if (root.sign < 0) out += root.IsOperator() ? "-(" : "-";
  root.Print(out);
  if (root.sign < 0 && root.IsOperator()) out += ")";
}
