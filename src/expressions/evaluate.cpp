// Evaluation of the nodes with children. It is the inner loop of every sampler, so it recurses,
// which is several times faster than a walk with frames, but never beyond kMostLevels; what lies
// deeper is evaluated with frames on the heap.

#include <functional>
#include <limits>
#include <vector>

#include "expressions/function.h"
#include "expressions/functionTable.h"
#include "expressions/operators.h"

namespace {

constexpr int kMostLevels = 256;

int theLevel = 0;  // levels of the evaluation in progress

/// One level, given back on every way out: the walk with frames may throw where memory ends.
class Level {
 public:
  Level() { theLevel++; }
  Level(const Level&) = delete;
  Level& operator=(const Level&) = delete;
  ~Level() { theLevel--; }
};

double Call(const KVN_functionRow* row, const double* args, int count) {
  if (row == nullptr || row->evaluate == nullptr) return std::numeric_limits<double>::quiet_NaN();
  return row->evaluate(args, count);
}

/// The walk with frames: a stack of nodes that wait for the value of a child, and one of the signed
/// values that they have received.
class HeapEvaluation {
 public:
  double Run(const KVN_expression& root) {
    Enter(root);
    while (!frames.empty()) {
      const KVN_expression* child = NextChild(frames.back());
      if (child != nullptr) {
        Enter(*child);
      } else {
        Leave();
      }
    }
    return values.back() * root.sign;  // takes the sign of the root away again
  }

 private:
  struct Frame {
    const KVN_expression* node;
    int received;  // values of children so far
  };

  void Enter(const KVN_expression& node) {
    const int kind = node.GetKind();
    if (kind == KVN_KIND_CONSTANT || kind == KVN_KIND_VARIABLE) {
      values.push_back(SignedValue(node));
    } else {
      frames.push_back({&node, 0});
    }
  }

  /// The child whose value is wanted next; null when the node can be computed.
  const KVN_expression* NextChild(Frame& frame) {
    const int place = frame.received++;
    switch (frame.node->GetKind()) {
      case KVN_KIND_FUNCTION:
      case KVN_KIND_DISTRIBUTION: {
        const auto& function = static_cast<const KVN_function&>(*frame.node);
        return place < function.GetArgumentCount() ? function.args[place] : nullptr;
      }
      case KVN_KIND_CONDITIONAL:
        return NextOfConditional(static_cast<const KVN_operatorConditional&>(*frame.node), place);
      default: {
        const auto& binary = static_cast<const KVN_binaryOperator&>(*frame.node);
        return place == 0 ? binary.left : place == 1 ? binary.right : nullptr;
      }
    }
  }

  /// The condition, then the branch that it selects in its place.
  const KVN_expression* NextOfConditional(const KVN_operatorConditional& choice, int place) {
    if (place == 0) return choice.condition;
    if (place > 1) return nullptr;
    return Take() == 0.0 ? choice.whenFalse : choice.whenTrue;
  }

  void Leave() {
    const KVN_expression& node = *frames.back().node;
    frames.pop_back();
    values.push_back(Compute(node) * node.sign);
  }

  double Compute(const KVN_expression& node) {
    switch (node.GetKind()) {
      case KVN_KIND_FUNCTION:
      case KVN_KIND_DISTRIBUTION: {
        const auto& function = static_cast<const KVN_function&>(node);
        const int count = function.GetArgumentCount();
        const double* args = values.data() + values.size() - count;
        const double value = Call(function.descriptor, args, count);
        values.resize(values.size() - count);
        return value;
      }
      case KVN_KIND_CONDITIONAL:
        return Take();
      default: {
        const double b = Take();
        const double a = Take();
        return static_cast<const KVN_binaryOperator&>(node).Apply(a, b);
      }
    }
  }

  double Take() {
    const double value = values.back();
    values.pop_back();
    return value;
  }

  std::vector<Frame> frames;
  std::vector<double> values;
};

double EvaluateOnHeap(const KVN_expression& root) {
  HeapEvaluation evaluation;
  return evaluation.Run(root);
}

/// Value of a child in its parent's eyes: the product with the sign.
inline double Signed(const KVN_expression& child) {
  const double value = child.Evaluate();
  return child.sign < 0 ? -value : value;
}

template <typename Operation>
double EvaluateBinary(const KVN_binaryOperator& node, Operation operation) {
  if (theLevel == kMostLevels) return EvaluateOnHeap(node);
  const Level level;
  const double a = Signed(*node.left);
  const double b = Signed(*node.right);
  return operation(a, b);
}

}  // namespace

double KVN_binaryOperator::Evaluate() const {
  return EvaluateBinary(*this, [this](double a, double b) { return Apply(a, b); });
}

// The arithmetic operators go without the virtual call of Apply.

double KVN_operatorPlus::Evaluate() const { return EvaluateBinary(*this, std::plus<>()); }
double KVN_operatorMinus::Evaluate() const { return EvaluateBinary(*this, std::minus<>()); }
double KVN_operatorMultiply::Evaluate() const { return EvaluateBinary(*this, std::multiplies<>()); }
double KVN_operatorDivide::Evaluate() const { return EvaluateBinary(*this, std::divides<>()); }

double KVN_operatorConditional::Evaluate() const {
  if (theLevel == kMostLevels) return EvaluateOnHeap(*this);
  const Level level;
  const KVN_expression* chosen = Signed(*condition) == 0.0 ? whenFalse : whenTrue;
  return Signed(*chosen);
}

double KVN_function::Evaluate() const {
  if (theLevel == kMostLevels) return EvaluateOnHeap(*this);
  const Level level;
  double values[KVN_MAX_ARGUMENTS];
  const int count = GetArgumentCount();
  for (int i = 0; i < count; i++) values[i] = Signed(*args[i]);
  return Call(descriptor, values, count);
}
