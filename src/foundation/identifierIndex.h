#pragma once

/// Multi-map from identifier to small integers (node handles, positions in a list), so that a
/// look-up by name doesn't scan the table. It keeps no texts: it stores a hash for each integer,
/// and the caller says through `Source` what identifier an integer has now.
///
/// Chained hashing: `heads` has a power of two of chain heads, at least as many as there are
/// members, and the links lie in an array by number, doubly linked. So adding and removing take
/// constant time even where one identifier repeats thousands of times, as the "@" of helper nodes
/// does. The hash is a fixed one (FNV-1a), so nothing depends on the process.
///
/// Failure of memory leaves the index empty and IsUsable() false until Clear; callers then scan.
class KVN_identifierIndex {
 public:
  /// Says what identifier an integer has; null for none.
  class Source {
   public:
    virtual const char* IdentifierOf(int number) const = 0;

   protected:
    ~Source() = default;
  };

  explicit KVN_identifierIndex(const Source& numbers);
  KVN_identifierIndex(const KVN_identifierIndex&) = delete;
  KVN_identifierIndex& operator=(const KVN_identifierIndex&) = delete;
  ~KVN_identifierIndex();

  bool IsUsable() const { return usable; }
  void Clear();
  /// Null is not added; a number that is in the index already moves to the new identifier.
  void Add(const char* id, int number);
  /// Nothing happens for a number that isn't in the index.
  void Remove(int number);
  /// The smallest number whose identifier is `id` now, leaving out `except`; KVN_REFUSED if none.
  int FindLowest(const char* id, int except = -1) const;

 private:
  struct Link {
    unsigned hash = 0;
    int next = kNone;
    int previous = kNotIn;  // kNone for the first of a chain
  };
  static constexpr int kNone = -1;
  static constexpr int kNotIn = -2;

  bool Reserve(int number);
  bool GrowHeads();
  void LinkIn(int number);
  void Release();

  const Source& source;
  int* heads = nullptr;   // owned
  unsigned mask = 0;      // number of heads - 1
  Link* links = nullptr;  // owned, by number
  int capacity = 0;       // of `links`
  int members = 0;
  bool usable = true;
};
