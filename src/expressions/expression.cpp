#include "expressions/expression.h"

#include <algorithm>
#include <new>

#include "expressions/expressionWalk.h"
#include "expressions/variableVisitor.h"
#include "foundation/numberText.h"

void KVN_expression::CollectDistributions(KVN_expression**, std::vector<KVN_expression**>&) {}
void KVN_expression::Accept(KVN_variableVisitor&) {}
bool KVN_expression::Isolate(const std::string&, KVN_expression*&, KVN_expression*&) {
  return false;
}
bool KVN_expression::Simplify(KVN_expression*&) { return false; }

KVN_expression* KVN_constant::Clone() const {
  auto* copy = new (std::nothrow) KVN_constant(value);
  if (copy != nullptr) copy->sign = sign;
  return copy;
}

void KVN_constant::Print(std::string& out) const {
  char text[kNumberTextSize];
  FormatDouble("%g", value, text, sizeof text);
  out += text;
}

KVN_variable::KVN_variable(const std::string& identifier)
    : name(identifier), value(KVN_UNDEFINED_VALUE) {}

KVN_expression* KVN_variable::Clone() const {
  auto* copy = new (std::nothrow) KVN_variable(name);
  if (copy == nullptr) return nullptr;
  copy->sign = sign;
  copy->value = value;
  return copy;
}

void KVN_variable::Accept(KVN_variableVisitor& visitor) { visitor.Visit(*this); }

void KVN_variable::Print(std::string& out) const { out += name; }

double SignedValue(const KVN_expression& root) { return root.Evaluate() * root.sign; }

bool IsConstant(const KVN_expression& node) { return node.GetKind() == KVN_KIND_CONSTANT; }

bool IsConstantOf(const KVN_expression& node, double signedValue) {
  return IsConstant(node) && SignedValue(node) == signedValue;
}

long long CountNodes(const KVN_expression* root) {
  long long count = 0;
  auto* start = const_cast<KVN_expression*>(root);
  WalkTree(&start, [&](KVN_expression&, KVN_expression**) {
    count++;
    return true;
  });
  return count;
}

int GetDepth(const KVN_expression* root) {
  struct Step {
    const KVN_expression* node;
    int level;
  };
  if (root == nullptr) return 0;
  int deepest = 0;
  KVN_pendingItems<Step> pending;
  pending.Push({root, 1});
  while (!pending.IsEmpty()) {
    const Step step = pending.Pop();
    deepest = std::max(deepest, step.level);
    for (int place = 0; place < GetChildPlaces(*step.node); place++) {
      const KVN_expression* child = GetChild(*step.node, place);
      if (child != nullptr) pending.Push({child, step.level + 1});
    }
  }
  return deepest;
}
