#pragma once

#include <utility>

#include "foundation/intArray.h"
#include "foundation/resultCodes.h"

/// Binary heap over the items 0..n-1, each in it at most once, that finds an item again when its
/// key has changed. `Before(a, b)` tells whether item a comes out before item b; where it orders
/// all items, the order in which they come out doesn't depend on how they went in.
template <typename Before>
class IndexedHeap {
 public:
  explicit IndexedHeap(Before theBefore) : before(std::move(theBefore)) {}

  /// Empties the heap and gives it room for the items below `count`; KVN_NO_MEMORY.
  [[nodiscard]] int Reserve(int count) {
    if (int result = items.SetSize(count); result < 0) return result;
    if (int result = places.SetSize(count); result < 0) return result;
    places.FillWith(-1);
    size = 0;
    return KVN_SUCCESS;
  }
  bool IsEmpty() const { return size == 0; }
  /// Puts an item in, or moves it to where its changed key belongs.
  void Put(int item) {
    if (places[item] < 0) {
      places[item] = size;
      items[size++] = item;
    }
    SiftDown(SiftUp(places[item]));
  }
  /// The first item; the heap isn't empty.
  int Pop() {
    int top = items[0];
    places[top] = -1;
    int last = items[--size];
    if (size > 0) {
      Place(last, 0);
      SiftDown(0);
    }
    return top;
  }

 private:
  void Place(int item, int place) {
    items[place] = item;
    places[item] = place;
  }
  int SiftUp(int place) {
    int item = items[place];
    while (place > 0 && before(item, items[(place - 1) / 2])) {
      Place(items[(place - 1) / 2], place);
      place = (place - 1) / 2;
    }
    Place(item, place);
    return place;
  }
  void SiftDown(int place) {
    int item = items[place];
    for (;;) {
      int child = 2 * place + 1;
      if (child >= size) break;
      if (child + 1 < size && before(items[child + 1], items[child])) ++child;
      if (!before(items[child], item)) break;
      Place(items[child], place);
      place = child;
    }
    Place(item, place);
  }

  Before before;
  KVN_intArray items;   // the heap
  KVN_intArray places;  // by item: where it stands in the heap, -1 outside
  int size = 0;
};
