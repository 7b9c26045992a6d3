#pragma once

#include "foundation/array.h"
#include "foundation/rectangle.h"

/// List of rectangles, such as the places of the free texts on a diagram.
class KVN_rectangleArray : public KVN_array {
 public:
  explicit KVN_rectangleArray(int step = kDefaultGrowBy) : KVN_array(step) {}
  /// Copying cannot give a code: a failure leaves the new list empty. See Assign.
  KVN_rectangleArray(const KVN_rectangleArray& source);
  KVN_rectangleArray& operator=(const KVN_rectangleArray& source);

  void CleanUp(int deep) override;
  int CheckReadiness(int deep) override;
  ~KVN_rectangleArray() override;

  /// A position outside [0, size) gives a spare rectangle of this list, never an error; what is
  /// written to it is lost.
  KVN_rectangle& operator[](int position);
  const KVN_rectangle& operator[](int position) const;
  const KVN_rectangle& At(int position) const { return (*this)[position]; }

  /// Appends, growing by growBy when full. A rectangle that is not ready takes a slot, but its
  /// numbers are not read.
  [[nodiscard]] int Add(const KVN_rectangle& rectangle);
  /// KVN_REFUSED unless 0 <= position < size.
  [[nodiscard]] int Set(int position, const KVN_rectangle& rectangle);
  [[nodiscard]] int Delete(int position);
  /// `count` slots of zeros, none in use; the present size keeps the slots. KVN_REFUSED below 0.
  [[nodiscard]] int SetSize(int count);
  void Flush() { numItems = 0; }
  /// KVN_NOT_READY, KVN_NO_MEMORY: unchanged.
  [[nodiscard]] int Assign(const KVN_rectangleArray& source);

 private:
  int Resize(int count);

  KVN_rectangle* items = nullptr;  // owned
  KVN_rectangle spare;
};
