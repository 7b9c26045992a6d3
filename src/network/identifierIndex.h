#pragma once

#include "foundation/intArray.h"

/// Multi-map from identifier to small integers (node handles, submodel indexes), so that a look-up
/// by name doesn't scan the table. It keeps no texts: it stores a hash and the integer, and the
/// caller says through `Source` what identifier an integer has now.
///
/// Open addressing with linear probing and at most half of the cells in use; the hash is a fixed
/// one, so nothing depends on the process. Failure of memory leaves the index incomplete and
/// IsUsable() false; callers then scan.
class KVN_identifierIndex {
 public:
  /// Says what identifier an integer has.
  class Source {
   public:
    virtual const char* IdentifierOf(int number) const = 0;

   protected:
    ~Source() = default;
  };

  explicit KVN_identifierIndex(const Source& source);
  KVN_identifierIndex(const KVN_identifierIndex&) = delete;
  KVN_identifierIndex& operator=(const KVN_identifierIndex&) = delete;
  ~KVN_identifierIndex();

  bool IsUsable() const { return usable; }
  void Clear();
  void Add(const char* id, int number);
  /// Removes the pair; `id` is the identifier under which `number` was added.
  void Remove(const char* id, int number);
  /// The smallest number whose identifier is `id` now, leaving out `except`; KVN_REFUSED if none.
  int FindLowest(const char* id, int except = -1) const;

 private:
  struct Cell {
    unsigned hash = 0;
    int number = -1;  // -1 never used, -2 removed
  };

  void Grow();

  const Source& source;
  Cell* cells = nullptr;  // owned
  int capacity = 0;       // a power of two
  int used = 0;           // cells that are not "never used"
  bool usable = true;
};
