#include "expressions/expressionWalk.h"

#include <memory>
#include <new>

#include "expressions/function.h"
#include "expressions/functionTable.h"
#include "expressions/operators.h"
#include "expressions/variableVisitor.h"

int GetChildPlaces(const KVN_expression& node) {
  switch (node.GetKind()) {
    case KVN_KIND_VARIABLE:
    case KVN_KIND_CONSTANT:
      return 0;
    case KVN_KIND_FUNCTION:
    case KVN_KIND_DISTRIBUTION:
      return KVN_MAX_ARGUMENTS;
    case KVN_KIND_CONDITIONAL:
      return 3;
    default:
      return 2;
  }
}

KVN_expression** GetChildSlot(KVN_expression& node, int place) {
  switch (node.GetKind()) {
    case KVN_KIND_FUNCTION:
    case KVN_KIND_DISTRIBUTION:
      return &static_cast<KVN_function&>(node).args[place];
    case KVN_KIND_CONDITIONAL: {
      auto& choice = static_cast<KVN_operatorConditional&>(node);
      return place == 0 ? &choice.condition : place == 1 ? &choice.whenTrue : &choice.whenFalse;
    }
    default: {
      auto& binary = static_cast<KVN_binaryOperator&>(node);
      return place == 0 ? &binary.left : &binary.right;
    }
  }
}

const KVN_expression* GetChild(const KVN_expression& node, int place) {
  return *GetChildSlot(const_cast<KVN_expression&>(node), place);
}

namespace {

/// The first place that is not null, or null when there is none.
KVN_expression** FirstChildSlot(KVN_expression& node) {
  for (int place = 0; place < GetChildPlaces(node); place++) {
    KVN_expression** slot = GetChildSlot(node, place);
    if (*slot != nullptr) return slot;
  }
  return nullptr;
}

}  // namespace

/// The slot of the child that the walk is in holds the way back up (Schorr and Waite 1967, An
/// efficient machine-independent procedure for garbage collection in various list structures, CACM
/// 10). Children go first to last, so on return that slot is the first one that isn't null. The
/// root's way back is itself.
void DeleteTree(KVN_expression* root) {
  if (root == nullptr) return;
  KVN_expression* node = root;
  KVN_expression* above = root;
  for (;;) {
    if (KVN_expression** slot = FirstChildSlot(*node)) {
      KVN_expression* child = *slot;
      *slot = above;
      above = node;
      node = child;
      continue;
    }
    const bool isRoot = node == root;
    delete node;
    if (isRoot) return;
    node = above;
    KVN_expression** wayBack = FirstChildSlot(*node);
    above = *wayBack;
    *wayBack = nullptr;
  }
}

namespace {

/// A copy of the node without its children; null when the memory ends.
KVN_expression* NewShell(const KVN_expression& node) {
  switch (node.GetKind()) {
    case KVN_KIND_VARIABLE:
    case KVN_KIND_CONSTANT:
      return node.Clone();
    case KVN_KIND_FUNCTION: {
      const auto& function = static_cast<const KVN_function&>(node);
      if (function.descriptor == &theUnknownFunctionRow) {
        return new (std::nothrow) KVN_unknownFunction(function.GetName());
      }
      return new (std::nothrow) KVN_function(function.descriptor);
    }
    case KVN_KIND_DISTRIBUTION:
      return new (std::nothrow) KVN_distribution(static_cast<const KVN_function&>(node).descriptor);
    case KVN_KIND_CONDITIONAL:
      return new (std::nothrow) KVN_operatorConditional(nullptr, nullptr, nullptr);
    default:
      return NewBinaryOperator(node.GetKind(), nullptr, nullptr);
  }
}

struct CopyStep {
  const KVN_expression* source;
  KVN_expression** target;
};

}  // namespace

KVN_expression* CloneTree(const KVN_expression& root) {
  KVN_expression* made = nullptr;
  KVN_pendingItems<CopyStep> pending;
  pending.Push({&root, &made});
  while (!pending.IsEmpty()) {
    const CopyStep step = pending.Pop();
    KVN_expression* copy = *step.target = NewShell(*step.source);
    if (copy == nullptr) {
      DeleteTree(made);
      return nullptr;
    }
    copy->sign = step.source->sign;
    for (int place = 0; place < GetChildPlaces(*copy); place++) {
      const KVN_expression* child = GetChild(*step.source, place);
      if (child != nullptr) pending.Push({child, GetChildSlot(*copy, place)});
    }
  }
  return made;
}

bool IsTreeDeterministic(const KVN_expression& root) {
  bool random = false;
  auto* start = const_cast<KVN_expression*>(&root);
  WalkTree(&start, [&](KVN_expression& node, KVN_expression**) {
    random = random || node.GetKind() == KVN_KIND_DISTRIBUTION;
    return !random;
  });
  return !random;
}

void AcceptTree(KVN_expression& root, KVN_variableVisitor& visitor) {
  KVN_expression* start = &root;
  WalkTree(&start, [&](KVN_expression& node, KVN_expression**) {
    if (node.GetKind() == KVN_KIND_VARIABLE) visitor.Visit(static_cast<KVN_variable&>(node));
    return true;
  });
}

void CollectInTree(KVN_expression& root, std::vector<KVN_expression**>& found) {
  struct Step {
    KVN_expression* node;
    KVN_expression** slot;
  };
  KVN_pendingItems<Step> pending;
  pending.Push({&root, nullptr});
  while (!pending.IsEmpty()) {
    const Step step = pending.Pop();
    if (step.node->GetKind() == KVN_KIND_DISTRIBUTION) {
      found.push_back(step.slot);
      continue;
    }
    // Meant: the children of a conditional all go by the slot of its condition.
    const bool isChoice = step.node->GetKind() == KVN_KIND_CONDITIONAL;
    for (int place = GetChildPlaces(*step.node) - 1; place >= 0; place--) {
      KVN_expression** slot = GetChildSlot(*step.node, place);
      if (*slot != nullptr) pending.Push({*slot, isChoice ? GetChildSlot(*step.node, 0) : slot});
    }
  }
}
