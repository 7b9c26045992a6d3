#pragma once

#include "foundation/dmatrix.h"
#include "foundation/intArray.h"
#include "foundation/object.h"

/// Walks the cells of a table in flat order, with dimensions that can be held fixed:
///
///     KVN_sysCoordinates walk;
///     if (int result = walk.Link(table); result < 0) return result;
///     walk[0] = 2;                      // the row of parent outcome 2
///     walk.Lock(0);
///     walk.GoToCurrentPosition();
///     do Use(walk.Value()); while (walk.Next() == 0);
///
/// A short-lived local: it does not own the table, and a change of the table's shape makes it stale
/// until the next Link.
class KVN_sysCoordinates : public KVN_object {
 public:
  KVN_sysCoordinates() = default;
  /// Link without its result: IsLinked tells.
  explicit KVN_sysCoordinates(KVN_Dmatrix& table);

  /// Forgets the table.
  void CleanUp(int deep) override;
  /// Ready when no table is linked, or there is a coordinate for each of its dimensions.
  int CheckReadiness(int deep) override;

  /// Takes a table, unlocks all and goes to the first cell. KVN_NO_MEMORY leaves it unlinked.
  [[nodiscard]] int Link(KVN_Dmatrix& table);
  /// The same with the table of a node's definition, a type that this folder doesn't know. A
  /// definition without one answers its code and changes nothing here.
  template <typename Definition>
  [[nodiscard]] int Link(Definition& definition) {
    KVN_Dmatrix* table = nullptr;
    if (int result = definition.GetDefinition(table); result < 0) return result;
    return Link(*table);
  }
  bool IsLinked() const { return matrix != nullptr; }

  /// To the first cell of the table. It is meant that locked dimensions go to 0 as well.
  void GoFirst();
  /// KVN_REFUSED for a bad dimension.
  int Lock(int d);
  void UnlockAll() { locked.FillWith(0); }
  bool IsLocked(int d) const { return locked[d] != 0; }
  /// To the next cell that agrees in the locked dimensions. KVN_REFUSED at the last one, and then
  /// nothing changes.
  int Next();
  /// After a change of the coordinates: finds the position anew. Coordinates that lead outside the
  /// table go back to the first cell, with KVN_REFUSED.
  int GoToCurrentPosition();
  /// To a flat index; a bad one goes to the first cell, with KVN_REFUSED.
  int GoTo(int index);

  /// The cell at the position; the table must be linked and not empty.
  double& Value() { return (*matrix)[position]; }
  double Value() const { return (*matrix)[position]; }
  int GetPosition() const { return position; }
  /// One coordinate, unchecked; call GoToCurrentPosition after writing.
  int& operator[](int d) { return coordinates[d]; }
  int operator[](int d) const { return coordinates[d]; }
  KVN_intArray& GetCoordinates() { return coordinates; }
  const KVN_intArray& GetCoordinates() const { return coordinates; }

 private:
  KVN_Dmatrix* matrix = nullptr;  // not owned
  KVN_intArray coordinates;       // one per dimension of the table
  int position = 0;               // flat index of the coordinates
  KVN_intArray locked;            // one per dimension; 1: held fixed
};
