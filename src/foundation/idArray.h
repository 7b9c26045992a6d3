#pragma once

#include <string>

#include "foundation/stringArray.h"

/// List of identifiers: outcomes of a node, property keys. An identifier starts with a letter, goes
/// on with letters, digits and '_' (the C library's classes for the current locale), and does not
/// repeat. SetString, Add and Insert refuse anything else, null included, with KVN_REFUSED.
///
/// Names of nodes and submodels follow another rule: see identifier.h.
///
/// Lists that repeat by nature, and names that are to be mended later, are filled through
/// `KVN_stringArray::Insert`, which tests nothing; CheckConsistency then tells the state and
/// MakeUnique mends it.
class KVN_idArray : public KVN_stringArray {
 public:
  /// Buffer that the forms with `char*` write to; a base text is cut to kMaxBase bytes for them.
  static constexpr int kBufferSize = 1024;
  static constexpr int kMaxBase = 1000;

  /// With allowEmpty the empty text is legal any number of times.
  explicit KVN_idArray(bool allowEmptyIds = false) : allowEmpty(allowEmptyIds) {}
  KVN_idArray(const KVN_idArray&) = default;
  KVN_idArray(KVN_idArray&&) noexcept = default;
  /// Assignment takes the items only: whether empty texts are legal belongs to the place where the
  /// list stands and does not travel with its contents.
  KVN_idArray& operator=(const KVN_idArray& source);
  KVN_idArray& operator=(KVN_idArray&& source) noexcept;

  /// Consistent when every used item is legal and none repeats.
  int CheckConsistency(int deep) override;
  [[nodiscard]] int SetString(int position, const char* text) override;
  [[nodiscard]] int Insert(int position, const char* text) override;

  bool GetAllowEmpty() const { return allowEmpty; }
  void SetAllowEmpty(bool allow) { allowEmpty = allow; }

  bool IsThisIdentifierValid(const char* id) const { return IsThisIdentifierValid(id, -1); }
  /// As above, with position `skip` left out of the test for repeats.
  bool IsThisIdentifierValid(const char* id, int skip) const;

  /// Puts 'x' in front of a first character that is no letter and turns every other illegal one
  /// into '_'. Does not look at repeats. KVN_REFUSED for null and empty, which stay.
  [[nodiscard]] static int MakeValidId(std::string& id);
  [[nodiscard]] static int MakeValidId(char* id);

  /// A valid identifier made from `base` (null and empty count as "x"): with start < 0 the mended
  /// base itself if it is valid, otherwise base + "start", "start + 1", ... until one is valid.
  /// Negative numbers never are, so counting then begins at 0.
  [[nodiscard]] int CreateValidId(const char* base, int start, std::string& out) const;
  [[nodiscard]] int CreateValidId(const char* base, int start, char* out) const;
  [[nodiscard]] int CreateAndAddValidId(const char* base, int start);
  [[nodiscard]] int CreateAndInsertValidId(const char* base, int start, int position);

  /// Makes every item legal and different, keeping those that are legal when their turn comes:
  /// a refused item is mended, and numbered from 2 if it is still refused. On failure unchanged.
  [[nodiscard]] int MakeUnique();

 private:
  bool allowEmpty;
};
