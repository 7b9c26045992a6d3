#include <algorithm>

#include "foundation/dmatrix.h"
#include "foundation/resultCodes.h"

/// The operations of KVN_Dmatrix that select, add, remove or permute. All move whole blocks of
/// adjacent cells, so their cost is that of copying the cells, whatever the number of dimensions.

namespace {

/// Visits cells of a table in the order of another shape: dimensions with a size and a stride each,
/// the last fastest. The last dimensions are merged into a block of adjacent cells where the
/// strides allow.
class StridedWalk {
 public:
  /// Makes room for `count` dimensions.
  int Reserve(int count) {
    if (int result = sizes.SetSizeFlush(count); result < 0) return result;
    if (int result = strides.SetSizeFlush(count); result < 0) return result;
    return counters.SetSizeFlush(count);
  }
  /// Appends a dimension; Reserve has made the room.
  void AddDimension(int size, int stride) {
    sizes[rank] = size;
    strides[rank] = stride;
    rank++;
  }
  /// Call after the last AddDimension: merges, and goes to the first block.
  void Start(int first) {
    offset = first;
    while (rank > 0 && strides[rank - 1] == block) block *= sizes[--rank];
    counters.FillWith(0);
  }

  int GetOffset() const { return offset; }
  /// Number of adjacent cells at the offset.
  int GetBlock() const { return block; }
  /// False after the last block.
  bool Next() {
    for (int d = rank - 1; d >= 0; d--) {
      offset += strides[d];
      if (++counters[d] < sizes[d]) return true;
      offset -= strides[d] * sizes[d];
      counters[d] = 0;
    }
    return false;
  }

 private:
  KVN_intArray sizes, strides, counters;
  int rank = 0;
  int offset = 0;
  int block = 1;
};

/// Copies all cells of a walk over `from` to `to`, one after the other.
void CopyCells(StridedWalk& walk, const double* from, double* to) {
  do {
    to = std::copy_n(from + walk.GetOffset(), walk.GetBlock(), to);
  } while (walk.Next());
}

/// KVN_REFUSED unless there is a coordinate for each dimension, none above its top. Negative ones
/// stand for "all".
int CheckSlice(const KVN_Dmatrix& table, const KVN_intArray& coordinates) {
  const int rank = table.GetNumberOfDimensions();
  if (UsedCount(coordinates) < rank) return KVN_REFUSED;
  for (int i = 0; i < rank; i++) {
    if (coordinates[i] >= table.GetSizeOfDimension(i)) return KVN_REFUSED;
  }
  return KVN_SUCCESS;
}

/// Sets up the walk over a slice that CheckSlice has passed.
int WalkSlice(const KVN_Dmatrix& table, const KVN_intArray& coordinates, StridedWalk& walk) {
  const int rank = table.GetNumberOfDimensions();
  if (int result = walk.Reserve(rank); result < 0) return result;
  int first = 0;
  for (int i = 0; i < rank; i++) {
    const int stride = table.GetMultipliers()[i];
    if (coordinates[i] >= 0) {
      first += stride * coordinates[i];
    } else {
      walk.AddDimension(table.GetSizeOfDimension(i), stride);
    }
  }
  walk.Start(first);
  return KVN_SUCCESS;
}

}  // namespace

int KVN_Dmatrix::IsSliceAllEqualTo(double value, const KVN_intArray& coordinates) const {
  if (int result = CheckSlice(*this, coordinates); result < 0) return result;
  if (GetSize() == 0) return 1;
  StridedWalk walk;
  if (int result = WalkSlice(*this, coordinates, walk); result < 0) return result;
  do {
    const double* block = GetData() + walk.GetOffset();
    for (int i = 0; i < walk.GetBlock(); i++) {
      if (block[i] != value) return 0;
    }
  } while (walk.Next());
  return 1;
}

int KVN_Dmatrix::Restrict(const KVN_intArray& coordinates, KVN_Dmatrix& result) const {
  if (int code = CheckSlice(*this, coordinates); code < 0) return code;
  KVN_intArray sizes;
  for (int i = 0; i < GetNumberOfDimensions(); i++) {
    if (coordinates[i] >= 0) continue;
    if (int code = sizes.Add(dimensions[i]); code < 0) return code;
  }
  KVN_Dmatrix made;
  if (sizes.GetNumItems() > 0) {
    if (int code = made.Setup(sizes); code < 0) return code;
    StridedWalk walk;
    if (int code = WalkSlice(*this, coordinates, walk); code < 0) return code;
    CopyCells(walk, GetData(), made.GetData());
  }
  result.Swap(made);
  return KVN_SUCCESS;
}

int KVN_Dmatrix::ChangeOrderOfDimensions(const KVN_intArray& order) {
  const int rank = GetNumberOfDimensions();
  if (UsedCount(order) != rank) return KVN_REFUSED;
  KVN_intArray sizes;
  if (int result = sizes.Assign(dimensions); result < 0) return result;
  if (int result = sizes.ChangeOrder(order); result < 0) return result;
  if (rank == 0) return KVN_SUCCESS;
  KVN_Dmatrix made;
  if (int result = made.Setup(sizes.GetItems(), rank); result < 0) return result;
  StridedWalk walk;
  if (int result = walk.Reserve(rank); result < 0) return result;
  for (int i = 0; i < rank; i++) walk.AddDimension(sizes[i], multipliers[order[i]]);
  walk.Start(/*first=*/0);
  CopyCells(walk, GetData(), made.GetData());
  Swap(made);
  return KVN_SUCCESS;
}

KVN_Dmatrix::Blocks KVN_Dmatrix::BlocksOf(int d) const {
  const int inner = multipliers[d];
  return {GetSize() / (inner * dimensions[d]), dimensions[d], inner};
}

/// Makes a table of this shape but with another size of d, all cells 0.0.
int KVN_Dmatrix::MakeResized(int d, int size, KVN_Dmatrix& made) const {
  KVN_intArray sizes;
  if (int result = sizes.Assign(dimensions); result < 0) return result;
  sizes[d] = size;
  return made.Setup(sizes.GetItems(), sizes.GetSize());
}

/// Makes a table of this shape without d, all cells 0.0.
int KVN_Dmatrix::MakeWithout(int d, KVN_Dmatrix& made) const {
  KVN_intArray sizes;
  if (int result = sizes.Assign(dimensions); result < 0) return result;
  if (int result = sizes.Delete(d); result < 0) return result;
  return made.Setup(sizes.GetItems(), sizes.GetNumItems());
}

int KVN_Dmatrix::AddDimension(int position, int size) {
  const int rank = GetNumberOfDimensions();
  if (position < 0 || position > rank || size < 1) return KVN_REFUSED;
  if (rank == 0) return Setup(&size, 1);
  KVN_intArray sizes;
  if (int result = sizes.Assign(dimensions); result < 0) return result;
  if (int result = sizes.Insert(position, size); result < 0) return result;
  KVN_Dmatrix made;
  if (int result = made.Setup(sizes.GetItems(), rank + 1); result < 0) return result;
  const int inner = made.multipliers[position];
  const double* from = GetData();
  const double* const end = from + GetSize();
  for (double* to = made.GetData(); from != end; from += inner) {
    for (int k = 0; k < size; k++) to = std::copy_n(from, inner, to);
  }
  Swap(made);
  return KVN_SUCCESS;
}

/// Makes the slice with coordinate `value` in d, one of several dimensions.
int KVN_Dmatrix::MakeSlice(int d, int value, KVN_Dmatrix& made) const {
  if (int result = MakeWithout(d, made); result < 0) return result;
  const Blocks blocks = BlocksOf(d);
  const std::ptrdiff_t length = blocks.size * blocks.inner;
  double* to = made.GetData();
  for (int o = 0; o < blocks.outer; o++) {
    to = std::copy_n(GetData() + o * length + value * blocks.inner, blocks.inner, to);
  }
  return KVN_SUCCESS;
}

int KVN_Dmatrix::RemoveDimension(int d, int value) {
  if (!IsDimension(d) || value < 0 || value >= dimensions[d]) return KVN_REFUSED;
  KVN_Dmatrix made;
  if (GetNumberOfDimensions() > 1) {
    if (int result = MakeSlice(d, value, made); result < 0) return result;
  }
  Swap(made);
  return KVN_SUCCESS;
}

int KVN_Dmatrix::RemoveDimensionWeighted(int d, const KVN_doubleArray& weights) {
  return WeightedCopy(d, weights, *this);
}

int KVN_Dmatrix::WeightedCopy(int d, const KVN_doubleArray& weights, KVN_Dmatrix& result) const {
  if (!IsDimension(d) || UsedCount(weights) < dimensions[d]) return KVN_REFUSED;
  KVN_Dmatrix made;
  if (GetNumberOfDimensions() > 1) {
    if (int code = MakeWithout(d, made); code < 0) return code;
    const Blocks blocks = BlocksOf(d);
    const double* from = GetData();
    double* to = made.GetData();
    for (int o = 0; o < blocks.outer; o++, to += blocks.inner) {
      for (int k = 0; k < blocks.size; k++, from += blocks.inner) {
        for (std::ptrdiff_t i = 0; i < blocks.inner; i++) to[i] += weights[k] * from[i];
      }
    }
  }
  result.Swap(made);
  return KVN_SUCCESS;
}

int KVN_Dmatrix::PushSlice(int d) {
  if (!IsDimension(d)) return KVN_REFUSED;
  if (dimensions[d] == 0x7fffffff) return KVN_NO_MEMORY;
  KVN_Dmatrix made;
  if (int result = MakeResized(d, dimensions[d] + 1, made); result < 0) return result;
  const Blocks blocks = BlocksOf(d);
  const std::ptrdiff_t length = blocks.size * blocks.inner;
  const double* from = GetData();
  double* to = made.GetData();
  for (int o = 0; o < blocks.outer; o++, from += length) {
    to = std::copy_n(from, length, to) + blocks.inner;
  }
  Swap(made);
  return KVN_SUCCESS;
}

int KVN_Dmatrix::ShrinkDimension(int d) {
  if (!IsDimension(d) || dimensions[d] == 1) return KVN_REFUSED;
  KVN_Dmatrix made;
  if (int result = MakeResized(d, dimensions[d] - 1, made); result < 0) return result;
  const Blocks blocks = BlocksOf(d);
  const std::ptrdiff_t length = (blocks.size - 1) * blocks.inner;
  const double* from = GetData();
  double* to = made.GetData();
  for (int o = 0; o < blocks.outer; o++, from += length + blocks.inner) {
    to = std::copy_n(from, length, to);
  }
  Swap(made);
  return KVN_SUCCESS;
}

int KVN_Dmatrix::ResizeDimension(int d, int size) {
  if (!IsDimension(d) || size < 1) return KVN_REFUSED;
  if (dimensions[d] == size) return KVN_SUCCESS;
  KVN_Dmatrix made;
  if (int result = MakeResized(d, size, made); result < 0) return result;
  Swap(made);
  return KVN_SUCCESS;
}

int KVN_Dmatrix::ChangeOrderWithinDimension(int d, const KVN_intArray& order) {
  if (!IsDimension(d)) return KVN_REFUSED;
  const Blocks blocks = BlocksOf(d);
  if (int result = CheckPermutation(order, blocks.size); result < 0) return result;
  const std::ptrdiff_t length = blocks.size * blocks.inner;
  KVN_doubleArray old;
  if (int result = old.SetSizeUnwritten(static_cast<int>(length)); result < 0) return result;
  double* to = GetData();
  for (int o = 0; o < blocks.outer; o++) {
    std::copy_n(to, length, old.GetItems());
    for (int i = 0; i < blocks.size; i++) {
      to = std::copy_n(old.GetItems() + order[i] * blocks.inner, blocks.inner, to);
    }
  }
  return KVN_SUCCESS;
}

int KVN_Dmatrix::ShiftSlice(int d, int index, double value) {
  if (!IsDimension(d) || index < 0 || index >= dimensions[d]) return KVN_REFUSED;
  const Blocks blocks = BlocksOf(d);
  double* block = GetData();
  for (int o = 0; o < blocks.outer; o++) {
    double* const slice = block + index * blocks.inner;
    block += blocks.size * blocks.inner;
    std::copy_backward(slice, block - blocks.inner, block);
    std::fill_n(slice, blocks.inner, value);
  }
  return KVN_SUCCESS;
}

int KVN_Dmatrix::RemoveSlice(int d, int index) {
  if (!IsDimension(d) || index < 0 || index >= dimensions[d]) return KVN_REFUSED;
  const Blocks blocks = BlocksOf(d);
  double* block = GetData();
  for (int o = 0; o < blocks.outer; o++) {
    double* const slice = block + index * blocks.inner;
    block += blocks.size * blocks.inner;
    double* const freed = std::copy(slice + blocks.inner, block, slice);
    std::fill(freed, block, 0.0);
  }
  return KVN_SUCCESS;
}

int KVN_Dmatrix::GetSlice(int d, int value, KVN_intArray& sizes, KVN_doubleArray& data) const {
  if (!IsDimension(d) || value < 0 || value >= dimensions[d]) return KVN_REFUSED;
  if (GetNumberOfDimensions() == 1) return KVN_SUCCESS;
  KVN_Dmatrix slice;
  if (int result = MakeSlice(d, value, slice); result < 0) return result;
  sizes.Swap(slice.dimensions);
  data.Swap(slice.items);
  return KVN_SUCCESS;
}
