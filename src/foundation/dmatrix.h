#pragma once

#include <cstddef>

#include "foundation/doubleArray.h"
#include "foundation/intArray.h"

/// Dense table of doubles with any number of dimensions: every probability table, utility table,
/// belief and potential of the engine is one. A plain list of values has one dimension.
///
/// Layout: row-major, last dimension fastest. A node's table has the parents first, in parent-list
/// order, and its own outcomes last, so a *run* (neighbours along the last dimension) is one
/// distribution. Parents A(2), B(3), own outcomes X(2):
///
///     flat index    0    1    2    3  ...   10   11
///     (A,B,X)      000  001  010  011 ...  120  121      IndexOf = 6*A + 2*B + X
///
/// Invariants: multipliers[last] is 1 and every other is the next multiplier times the next size;
/// `items` has exactly the product of the sizes, at most 0x7fffffff; all three arrays are published
/// as full. The empty table has no dimensions and no cells.
///
/// Value type, copies are deep. Results are 0, KVN_REFUSED for a bad dimension, coordinate or
/// permutation, KVN_NO_MEMORY when memory is out or there would be too many cells; whatever fails
/// leaves the table as it was. New cells are 0.0. Operations that take a caller's array use its
/// UsedCount. Copy construction and `operator=` cannot give a code: after a failure the copy is
/// empty; Assign tells.
class KVN_Dmatrix {
 public:
  KVN_Dmatrix() = default;
  /// As Setup, but a failure leaves the table empty without notice.
  explicit KVN_Dmatrix(const KVN_intArray& sizes);
  KVN_Dmatrix(const KVN_Dmatrix& source);
  KVN_Dmatrix(KVN_Dmatrix&& source) noexcept = default;
  KVN_Dmatrix& operator=(const KVN_Dmatrix& source);
  KVN_Dmatrix& operator=(KVN_Dmatrix&& source) noexcept = default;
  ~KVN_Dmatrix() = default;

  /// Takes the shape `sizes`, one entry >= 1 per dimension, with all cells 0.0. No entry at all
  /// gives the empty table. `sizes` may be this table's own dimensions.
  [[nodiscard]] int Setup(const KVN_intArray& sizes);
  [[nodiscard]] int Setup(const int* sizes, int count);
  /// Empty table, no storage.
  void CleanUp();
  [[nodiscard]] int Assign(const KVN_Dmatrix& source);
  void Swap(KVN_Dmatrix& other) noexcept;

  int GetSize() const { return items.GetSize(); }
  int GetNumberOfDimensions() const { return dimensions.GetSize(); }
  /// Unchecked.
  int GetSizeOfDimension(int d) const { return dimensions[d]; }
  const KVN_intArray& GetDimensions() const { return dimensions; }
  const KVN_intArray& GetMultipliers() const { return multipliers; }
  /// Whoever changes an array through these three keeps the invariants.
  KVN_intArray& GetDimensions() { return dimensions; }
  KVN_intArray& GetMultipliers() { return multipliers; }
  KVN_doubleArray& GetItems() { return items; }
  const KVN_doubleArray& GetItems() const { return items; }
  double* GetData() { return items.GetItems(); }
  const double* GetData() const { return items.GetItems(); }

  /// Cell at a flat index, unchecked.
  double& operator[](int index) { return items[index]; }
  const double& operator[](int index) const { return items[index]; }
  /// Cell at coordinates, unchecked: the inner loops of inference run on these.
  double& At(const KVN_intArray& coordinates) { return items[IndexOf(coordinates)]; }
  const double& At(const KVN_intArray& coordinates) const { return items[IndexOf(coordinates)]; }
  /// Cell at coordinates; out of range a spare cell, set to 0.0 at each such call.
  double& Subscript(const KVN_intArray& coordinates);

  /// Flat index of coordinates, unchecked. 0 for the empty table.
  int IndexOf(const KVN_intArray& coordinates) const {
    const int last = dimensions.GetSize() - 1;
    if (last < 0) return 0;
    int index = coordinates[last];
    for (int i = 0; i < last; i++) index += multipliers[i] * coordinates[i];
    return index;
  }
  /// The same with the coordinates behind pointers, one per dimension.
  int IndexOf(const int* const* coordinates) const;
  /// The reverse of IndexOf; `coordinates` gets one slot per dimension. KVN_REFUSED outside
  /// [0, GetSize()).
  [[nodiscard]] int CoordinatesOf(int index, KVN_intArray& coordinates) const;
  /// Step to the next cell in flat order. KVN_REFUSED at the last one, `coordinates` unchanged.
  [[nodiscard]] int NextCoordinates(KVN_intArray& coordinates) const;
  /// False when there are fewer coordinates than dimensions or one is outside its dimension.
  /// Surplus coordinates are ignored, so any array is in range of the empty table.
  bool IsInRange(const KVN_intArray& coordinates) const;
  /// Same sizes in the same order.
  bool SameDimensions(const KVN_Dmatrix& other) const;

  void FillWith(double value) { items.FillWith(value); }
  /// This becomes a + b, cell by cell; KVN_REFUSED unless both have this table's shape.
  [[nodiscard]] int Add(const KVN_Dmatrix& a, const KVN_Dmatrix& b);
  /// Scales every run to sum 1. A run that sums to exactly 1.0 is not touched, so that a table read
  /// from a file is written back bit for bit; an exactly zero sum makes the run uniform. A run with
  /// a NaN is divided by its NaN sum.
  void Normalize();
  /// Sets the cell at the coordinates so that its run sums to 1 with the others as they are.
  /// The last coordinate is 0 afterwards.
  [[nodiscard]] int CompleteColumn(KVN_intArray& coordinates);
  [[nodiscard]] int CompleteColumn(int index);
  /// 1 when all cells of a slice equal `value` exactly, else 0. Coordinates >= 0 are fixed,
  /// negative ones run over their dimension. KVN_REFUSED, which is not 0, when there are fewer
  /// coordinates than dimensions or a fixed one is outside: compare with == 1.
  [[nodiscard]] int IsSliceAllEqualTo(double value, const KVN_intArray& coordinates) const;

  /// New dimension at `position` (0 to the number of dimensions); the cells repeat along it. On the
  /// empty table: Setup with that one size.
  [[nodiscard]] int AddDimension(int position, int size);
  [[nodiscard]] int AppendDimension(int size) {
    return AddDimension(GetNumberOfDimensions(), size);
  }
  /// Keeps only the slice with coordinate `value` in dimension d. Removing the only dimension gives
  /// the empty table.
  [[nodiscard]] int RemoveDimension(int d, int value);
  [[nodiscard]] int RemoveDimension(int d) { return RemoveDimension(d, 0); }
  /// Each new cell is the sum over k, ascending from 0.0, of weights[k] times the old cell with
  /// coordinate k in d. KVN_REFUSED also for fewer weights than d has indices.
  [[nodiscard]] int RemoveDimensionWeighted(int d, const KVN_doubleArray& weights);
  /// One more index at the end of d, its cells 0.0. A normalised table has to be normalised again.
  [[nodiscard]] int PushSlice(int d);
  /// Drops the last index of d; KVN_REFUSED when it has only one.
  [[nodiscard]] int ShrinkDimension(int d);
  /// Setup with another size of d; nothing if it is the present one.
  [[nodiscard]] int ResizeDimension(int d, int size);
  /// New dimension i is the old dimension order[i]; every cell keeps its meaning.
  [[nodiscard]] int ChangeOrderOfDimensions(const KVN_intArray& order);
  /// Slice i of d becomes the old slice order[i].
  [[nodiscard]] int ChangeOrderWithinDimension(int d, const KVN_intArray& order);
  /// Makes room at `index` of d: the slices from there move up by one, the last one is lost, and
  /// the freed one is filled with `value`. Shape and size stay: call PushSlice before it.
  [[nodiscard]] int ShiftSlice(int d, int index, double value);
  /// Reverse of ShiftSlice: the slices after `index` move down by one and the last becomes 0.0.
  /// Shape and size stay: call ShrinkDimension after it.
  [[nodiscard]] int RemoveSlice(int d, int index);

  /// Copies out the sizes without d and the cells with coordinate `value` in d. It is meant that a
  /// table of one dimension gives nothing and reports 0. The outputs must not be this table's.
  [[nodiscard]] int GetSlice(int d, int value, KVN_intArray& sizes, KVN_doubleArray& data) const;
  /// `result` becomes this table without the dimensions whose coordinate is >= 0, each fixed there.
  /// KVN_REFUSED for fewer coordinates than dimensions or one outside. `result` may be this table.
  [[nodiscard]] int Restrict(const KVN_intArray& coordinates, KVN_Dmatrix& result) const;
  /// `result` becomes what RemoveDimensionWeighted would make of this table; it may be this table.
  [[nodiscard]] int WeightedCopy(int d, const KVN_doubleArray& weights, KVN_Dmatrix& result) const;

 private:
  /// A table seen from one dimension: `outer` blocks of `size` slices of `inner` adjacent cells.
  struct Blocks {
    int outer, size;
    std::ptrdiff_t inner;
  };

  bool IsDimension(int d) const { return d >= 0 && d < GetNumberOfDimensions(); }
  Blocks BlocksOf(int d) const;
  int SetDimensions(const int* sizes, int count, int& cells);
  int MakeResized(int d, int size, KVN_Dmatrix& made) const;
  int MakeWithout(int d, KVN_Dmatrix& made) const;
  int MakeSlice(int d, int value, KVN_Dmatrix& made) const;

  KVN_intArray dimensions;
  KVN_intArray multipliers;
  KVN_doubleArray items;
};
