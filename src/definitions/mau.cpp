#include "definitions/mau.h"

#include <algorithm>
#include <new>
#include <utility>

#include "definitions/mauExpressionTable.h"
#include "foundation/errorLog.h"
#include "foundation/resultCodes.h"
#include "network/network.h"

void KVN_mau::CleanUp(int deep) {
  if (deep != 0) weights.CleanUp();
  expressions.reset();
  (void)CheckReadiness(/*deep=*/0);
}

int KVN_mau::CheckReadiness(int /*deep*/) {
  SetReady(true);
  return KVN_SUCCESS;
}

// --- What the parents are.

KVN_mau::Kind KVN_mau::KindOf(int parent) const {
  switch (TypeOf(parent)) {
    case KVN_TYPE_LIST:
      return Kind::kDecision;
    case KVN_TYPE_TABLE:
    case KVN_TYPE_MAU:
      return Kind::kUtility;
    default:
      return Kind::kOther;
  }
}

int KVN_mau::ParentsOfKind(Kind kind, KVN_intArray& list, int left) const {
  if (!HasNode()) return KVN_SUCCESS;
  for (int parent : Parents()) {
    if (parent == left || KindOf(parent) != kind) continue;
    if (int result = list.Add(parent); result < 0) return result;
  }
  return KVN_SUCCESS;
}

int KVN_mau::ShapeForParents(KVN_intArray& shape, int left) const {
  KVN_intArray list;
  if (int result = ParentsOfKind(Kind::kDecision, list, left); result < 0) return result;
  for (int decision : list) {
    if (int result = shape.Add(OutcomesOf(decision)); result < 0) return result;
  }
  list.Flush();
  if (int result = ParentsOfKind(Kind::kUtility, list, left); result < 0) return result;
  return list.GetNumItems() > 0 ? shape.Add(list.GetNumItems()) : int{KVN_SUCCESS};
}

bool KVN_mau::NumbersFit() const {
  KVN_intArray shape;
  if (ShapeForParents(shape) < 0) return false;
  KVN_intArray cells;
  if (expressions != nullptr && (ShapeOfExpressions(cells) < 0 || !expressions->HasShape(cells))) {
    return false;
  }
  return std::equal(shape.begin(), shape.end(), weights.GetDimensions().GetItems(),
                    weights.GetDimensions().GetItems() + weights.GetNumberOfDimensions());
}

int KVN_mau::DecisionDimension(int parent) const {
  KVN_intArray decisions;
  if (int result = ParentsOfKind(Kind::kDecision, decisions); result < 0) return result;
  return decisions.FindPosition(parent);
}

// --- Edits that follow the graph.

template <class Edit>
int KVN_mau::EditExpressions(Edit edit) {
  if (expressions == nullptr) return KVN_SUCCESS;
  KVN_Dmatrix cells;
  if (int result = expressions->ListCells(cells); result < 0) return result;
  if (int result = edit(cells); result < 0) return result;
  return expressions->TakeCells(cells);
}

int KVN_mau::Finish(int result) {
  if (result < 0) return result;
  (void)CheckReadiness(/*deep=*/0);
  return KVN_SUCCESS;
}

int KVN_mau::AddParent(int parent) {
  if (!IsReady()) return KVN_NOT_READY;
  if (!HasNode() || PositionOf(parent) < 0) return KVN_REFUSED;
  switch (KindOf(parent)) {
    case Kind::kDecision:
      return Finish(AddDecision(parent));
    case Kind::kUtility:
      return Finish(AddUtility(parent));
    default:
      return KVN_REFUSED;
  }
}

int KVN_mau::AddUtility(int parent) {
  KVN_intArray utilities;
  if (int result = ParentsOfKind(Kind::kUtility, utilities); result < 0) return result;
  if (utilities.GetNumItems() == 1) {
    if (int result = weights.AppendDimension(1); result < 0) return result;
    weights.FillWith(1.0);
    return AddToExpressions(parent);
  }
  const int last = weights.GetNumberOfDimensions() - 1;
  if (int result = weights.PushSlice(last); result < 0) return result;
  if (int result = weights.ShiftSlice(last, utilities.FindPosition(parent), 1.0); result < 0) {
    return result;
  }
  return AddToExpressions(parent);
}

int KVN_mau::AddDecision(int parent) {
  const int position = DecisionDimension(parent);
  if (int result = weights.AddDimension(position, OutcomesOf(parent)); result < 0) return result;
  if (weights.GetNumberOfDimensions() == 1) weights.FillWith(1.0);
  return AddExpressionDimension(position, OutcomesOf(parent));
}

int KVN_mau::RemoveParent(int parent) {
  if (!IsReady()) return KVN_NOT_READY;
  if (!HasNode() || PositionOf(parent) < 0) return KVN_REFUSED;
  switch (KindOf(parent)) {
    case Kind::kDecision:
      return Finish(RemoveDecision(parent));
    case Kind::kUtility:
      return Finish(RemoveUtility(parent));
    default:
      // A node that has become another kind and whose arc goes for that. Which dimension it had
      // can't be told any more.
      return Finish(ResetWeights(parent));
  }
}

int KVN_mau::RemoveUtility(int parent) {
  KVN_intArray utilities;
  if (int result = ParentsOfKind(Kind::kUtility, utilities); result < 0) return result;
  const int last = weights.GetNumberOfDimensions() - 1;
  int result = KVN_SUCCESS;
  if (utilities.GetNumItems() == 1) {
    result = weights.RemoveDimension(last);
  } else {
    result = weights.RemoveSlice(last, utilities.FindPosition(parent));
    if (result == 0) result = weights.ShrinkDimension(last);
  }
  return result < 0 ? result : RemoveFromExpressions(parent);
}

int KVN_mau::RemoveDecision(int parent) {
  const int dimension = DecisionDimension(parent);
  if (int result = weights.RemoveDimension(dimension, /*value=*/0); result < 0) return result;
  if (int result = RemoveExpressionDimension(dimension); result < 0) return result;
  return PruneParents();
}

/// Weights of 1.0 in the shape for the parents but `left`; those that fit already stay.
int KVN_mau::ResetWeights(int left) {
  KVN_intArray shape;
  if (int result = ShapeForParents(shape, left); result < 0) return result;
  const KVN_intArray& present = weights.GetDimensions();
  if (std::equal(shape.begin(), shape.end(), present.GetItems(),
                 present.GetItems() + weights.GetNumberOfDimensions())) {
    return KVN_SUCCESS;
  }
  if (int result = weights.Setup(shape.GetItems(), shape.GetNumItems()); result < 0) return result;
  weights.FillWith(1.0);
  return KVN_SUCCESS;
}

int KVN_mau::ParentOutcomeInserted(int parent, int position) {
  if (!IsReady()) return KVN_NOT_READY;
  const int dimension = DecisionDimension(parent);
  if (dimension < 0) return KVN_SUCCESS;
  // ShiftSlice would refuse the position too, but with the new slice in the table already.
  const bool isDimension = dimension < weights.GetNumberOfDimensions();
  if (!isDimension || position < 0 || position > weights.GetSizeOfDimension(dimension)) {
    return KVN_REFUSED;
  }
  if (int result = weights.PushSlice(dimension); result < 0) return result;
  if (int result = weights.ShiftSlice(dimension, position, 1.0); result < 0) return result;
  return Finish(EditExpressions([&](KVN_Dmatrix& cells) {
    const int result = cells.PushSlice(dimension);
    return result < 0 ? result : cells.ShiftSlice(dimension, position, 0.0);
  }));
}

int KVN_mau::ParentOutcomeRemoved(int parent, int position) {
  if (!IsReady()) return KVN_NOT_READY;
  const int dimension = DecisionDimension(parent);
  if (dimension < 0) return KVN_SUCCESS;
  if (int result = weights.RemoveSlice(dimension, position); result < 0) return result;
  if (int result = weights.ShrinkDimension(dimension); result < 0) return result;
  int result = EditExpressions([&](KVN_Dmatrix& cells) {
    const int removed = cells.RemoveSlice(dimension, position);
    return removed < 0 ? removed : cells.ShrinkDimension(dimension);
  });
  if (result == 0) result = PruneParents();
  return Finish(result);
}

int KVN_mau::ParentOutcomesReordered(int parent, const KVN_intArray& order) {
  if (!IsReady()) return KVN_NOT_READY;
  const int dimension = DecisionDimension(parent);
  if (dimension < 0) return KVN_SUCCESS;
  if (int result = weights.ChangeOrderWithinDimension(dimension, order); result < 0) return result;
  return Finish(EditExpressions(
      [&](KVN_Dmatrix& cells) { return cells.ChangeOrderWithinDimension(dimension, order); }));
}

/// The network's list stands in the new order already: new place k holds old parent `order[k]`.
int KVN_mau::ReorderParents(const KVN_intArray& order) {
  if (!IsReady()) return KVN_NOT_READY;
  const int count = UsedCount(order);
  if (!HasNode() || count != NumberOfParents()) return KVN_REFUSED;
  KVN_intArray oldParents;  // by old place
  if (int result = oldParents.SetSize(count); result < 0) return result;
  if (int result = CheckPermutation(order, count); result < 0) return result;
  for (int i = 0; i < count; i++) oldParents[order[i]] = Parents()[i];

  // For each kind: the place that its k-th parent had among those of the kind.
  KVN_intArray places[2];
  for (int i = 0; i < count; i++) {
    const int parent = Parents()[i];
    const Kind kind = KindOf(parent);
    if (kind == Kind::kOther) continue;
    int place = 0;
    for (int k = 0; oldParents[k] != parent; k++) place += KindOf(oldParents[k]) == kind ? 1 : 0;
    if (int result = places[kind == Kind::kUtility ? 1 : 0].Add(place); result < 0) return result;
  }
  KVN_intArray& decisions = places[0];
  const KVN_intArray& utilities = places[1];
  if (utilities.GetNumItems() > 0) {
    const int last = weights.GetNumberOfDimensions() - 1;
    if (int result = weights.ChangeOrderWithinDimension(last, utilities); result < 0) return result;
  }
  if (decisions.GetNumItems() == 0) return Finish(KVN_SUCCESS);
  if (int result = EditExpressions(
          [&](KVN_Dmatrix& cells) { return cells.ChangeOrderOfDimensions(decisions); });
      result < 0) {
    return result;
  }
  if (utilities.GetNumItems() > 0) {  // their dimension stays last
    if (int result = decisions.Add(decisions.GetNumItems()); result < 0) return result;
  }
  return Finish(weights.ChangeOrderOfDimensions(decisions));
}

// --- The content as a whole.

int KVN_mau::ReCreate() {
  weights.CleanUp();
  expressions.reset();
  if (!HasNode()) return KVN_SUCCESS;
  for (int parent : Parents()) {
    if (KindOf(parent) != Kind::kOther) continue;
    (void)LogError(KVN_REFUSED, "Parent could not be added");
  }
  return Finish(ResetWeights(/*left=*/-1));
}

int KVN_mau::Assign(KVN_nodeDefinition& source) {
  if (!source.IsReady()) return KVN_NOT_READY;
  if (&source == this) return KVN_SUCCESS;
  if (int result = KVN_nodeDefinition::Assign(source); result < 0) return result;
  CleanUp(/*deep=*/1);
  int result = KVN_SUCCESS;
  switch (source.GetType()) {
    case KVN_TYPE_NONE:
    case KVN_TYPE_EQUATION:
    case KVN_TYPE_EQUATION_SCC:
      break;
    case KVN_TYPE_TABLE:
    case KVN_TYPE_CPT:
    case KVN_TYPE_TRUTHTABLE:
    case KVN_TYPE_NOISY_MAX:
    case KVN_TYPE_NOISY_ADDER:
      result = ReCreate();
      break;
    case KVN_TYPE_LIST:
      DropAllParents();
      result = ReCreate();
      break;
    case KVN_TYPE_MAU:
      result = TakeContent(static_cast<KVN_mau&>(source));
      break;
    default:
      return KVN_REFUSED;
  }
  if (result < 0) return result;
  (void)CheckReadiness(/*deep=*/1);
  (void)CheckConsistency(/*deep=*/1);
  Notify(KVN_CHANGE_DEFINITION);
  return KVN_SUCCESS;
}

int KVN_mau::TakeContent(KVN_mau& source) {
  if (int result = ReCreate(); result < 0) return result;
  if (int result = weights.Assign(source.weights); result < 0) return result;
  if (source.expressions == nullptr) return KVN_SUCCESS;
  std::unique_ptr<KVN_mauExpressionTable> copy(new (std::nothrow) KVN_mauExpressionTable);
  if (copy == nullptr) return KVN_NO_MEMORY;
  if (int result = copy->Assign(*source.expressions); result < 0) return result;
  expressions = std::move(copy);
  return KVN_SUCCESS;
}

int KVN_mau::RemoveNonDiscreteParents() {
  if (!HasNode()) return KVN_REFUSED;
  KVN_intArray list;  // the network's own loses entries
  if (int result = list.Assign(Parents()); result < 0) return result;
  for (int parent : list) {
    const int type = TypeOf(parent);
    if ((type & KVN_TYPE_BIT_DISCRETE) == 0 || type == KVN_TYPE_LIST) continue;
    if (int result = network->RemoveArc(parent, handle, /*layer=*/0); result < 0) return result;
  }
  return KVN_SUCCESS;
}

int KVN_mau::GetDefinition(KVN_doubleArray*& out) {
  out = &weights.GetItems();
  return KVN_SUCCESS;
}

int KVN_mau::GetDefinition(KVN_Dmatrix*& out) {
  out = &weights;
  return KVN_SUCCESS;
}

int KVN_mau::SetDefinition(const KVN_Dmatrix& source) { return weights.Assign(source); }

int KVN_mau::SetDefinition(const KVN_doubleArray& source) {
  const int count = std::min(weights.GetSize(), UsedCount(source));
  std::copy_n(source.GetItems(), count, weights.GetData());
  return KVN_SUCCESS;
}

const KVN_intArray& KVN_mau::GetRowMultipliers() const {
  return expressions != nullptr ? expressions->GetMultipliers() : weights.GetMultipliers();
}

double KVN_mau::Combine(const double* inputs, int count, int row) const {
  if (expressions != nullptr) return Evaluate(inputs, count, row);
  double sum = 0.0;
  for (int i = 0; i < count; i++) sum += inputs[i] * weights[row + i];
  return sum;
}
