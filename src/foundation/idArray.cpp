#include "foundation/idArray.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "foundation/identifier.h"
#include "foundation/identifierIndex.h"
#include "foundation/intArray.h"
#include "foundation/resultCodes.h"

namespace {

/// Finds items of a list that it has been told of. Short lists are scanned, as is any list where
/// memory for the index is short.
class ItemIndex final : private KVN_identifierIndex::Source {
 public:
  /// `count` items are going to be added.
  ItemIndex(const KVN_stringArray& items, int count)
      : list(items), isScanned(count <= kLongestScanned) {}

  void Add(int position) {
    if (!isScanned) index.Add(list[position], position);
  }
  /// The lowest position before `end` with an equal text, or KVN_REFUSED.
  int FindBefore(int end, const char* text) const {
    const bool scan = isScanned || !index.IsUsable();
    const int found = scan ? list.FindPosition(text) : index.FindLowest(text);
    return found < end ? found : int{KVN_REFUSED};
  }
  /// `base` with the first number from `number` on that no item before `end` has; `number` goes on
  /// behind it.
  std::string MakeNumbered(const std::string& base, int end, int& number) const {
    std::string numbered;
    do numbered = base + std::to_string(number++);
    while (FindBefore(end, numbered.c_str()) >= 0);
    return numbered;
  }

 private:
  static constexpr int kLongestScanned = 16;

  const char* IdentifierOf(int position) const override { return list[position]; }

  const KVN_stringArray& list;
  bool isScanned;
  KVN_identifierIndex index{*this};
};

/// The list rule, without the test for repeats and not for empty texts.
bool HasLegalForm(const char* id) {
  if (!IsIdentifierStart(*id)) return false;
  while (IsIdentifierCharacter(*id)) id++;
  return *id == '\0';
}

bool IsEmpty(const char* text) { return text == nullptr || *text == '\0'; }

/// Writes an identifier to a caller's buffer, cut to what fits.
void CopyToBuffer(const std::string& id, char* out) {
  const std::size_t length = std::min<std::size_t>(id.size(), KVN_idArray::kBufferSize - 1);
  std::memcpy(out, id.c_str(), length);
  out[length] = '\0';
}

}  // namespace

KVN_idArray& KVN_idArray::operator=(const KVN_idArray& source) {
  KVN_stringArray::operator=(source);
  return *this;
}

KVN_idArray& KVN_idArray::operator=(KVN_idArray&& source) noexcept {
  KVN_stringArray::operator=(std::move(source));
  return *this;
}

int KVN_idArray::CheckConsistency(int /*deep*/) {
  bool consistent = true;
  ItemIndex earlier(*this, numItems);
  for (int i = 0; i < numItems && consistent; i++) {
    const char* id = (*this)[i];
    if (IsEmpty(id)) {
      consistent = id != nullptr && allowEmpty;
    } else {
      consistent = HasLegalForm(id) && earlier.FindBefore(i, id) < 0;
    }
    earlier.Add(i);
  }
  SetConsistent(consistent);
  return consistent ? KVN_SUCCESS : KVN_NOT_CONSISTENT;
}

int KVN_idArray::SetString(int position, const char* text) {
  if (!IsThisIdentifierValid(text, position)) return KVN_REFUSED;
  return KVN_stringArray::SetString(position, text);
}

int KVN_idArray::Insert(int position, const char* text) {
  if (!IsThisIdentifierValid(text)) return KVN_REFUSED;
  return KVN_stringArray::Insert(position, text);
}

bool KVN_idArray::IsThisIdentifierValid(const char* id, int skip) const {
  if (id == nullptr) return false;
  if (*id == '\0') return allowEmpty;
  return HasLegalForm(id) && FindPositionExcept(id, skip) < 0;
}

int KVN_idArray::MakeValidId(std::string& id) {
  if (id.empty()) return KVN_REFUSED;
  if (!IsIdentifierStart(id[0])) id.insert(id.begin(), 'x');
  std::replace_if(
      id.begin() + 1, id.end(), [](char c) { return !IsIdentifierCharacter(c); }, '_');
  return KVN_SUCCESS;
}

int KVN_idArray::MakeValidId(char* id) {
  if (IsEmpty(id)) return KVN_REFUSED;
  std::string text(id);
  if (int result = MakeValidId(text); result < 0) return result;
  CopyToBuffer(text, id);
  return KVN_SUCCESS;
}

int KVN_idArray::CreateValidId(const char* base, int start, std::string& out) const {
  out = IsEmpty(base) ? "x" : base;
  if (int result = MakeValidId(out); result < 0) return result;
  if (start < 0 && IsThisIdentifierValid(out.c_str())) return KVN_SUCCESS;
  const std::size_t baseLength = out.size();
  long long number = std::max(start, 0);
  do {
    out.resize(baseLength);
    out += std::to_string(number++);
  } while (!IsThisIdentifierValid(out.c_str()));
  return KVN_SUCCESS;
}

int KVN_idArray::CreateValidId(const char* base, int start, char* out) const {
  std::string cut(IsEmpty(base) ? "x" : base, 0, kMaxBase);
  std::string id;
  if (int result = CreateValidId(cut.c_str(), start, id); result < 0) return result;
  CopyToBuffer(id, out);
  return KVN_SUCCESS;
}

int KVN_idArray::CreateAndAddValidId(const char* base, int start) {
  return CreateAndInsertValidId(base, start, numItems);
}

int KVN_idArray::CreateAndInsertValidId(const char* base, int start, int position) {
  std::string id;
  if (int result = CreateValidId(base, start, id); result < 0) return result;
  return KVN_stringArray::Insert(position, id.c_str());  // tested just now
}

int KVN_idArray::MakeUnique() {
  if (!IsReady()) return KVN_NOT_READY;
  KVN_idArray mended(allowEmpty);
  if (int result = mended.SetSize(size); result < 0) return result;
  mended.growBy = growBy;
  ItemIndex index(mended, numItems);
  // Where counting goes on for the next repeat of an item, by its position, and for the next text
  // that has nothing to mend: counting from 2 each time would take time in proportion to the square
  // of the repeats.
  constexpr int kFirstNumber = 2;
  int numberForNothing = kFirstNumber;
  KVN_intArray numbers;
  if (int result = numbers.SetSize(numItems); result < 0) return result;
  numbers.FillWith(kFirstNumber);

  for (int i = 0; i < numItems; i++) {
    std::string id = IsEmpty((*this)[i]) ? "" : (*this)[i];
    (void)MakeValidId(id);  // a legal text stays, and so does the empty one
    if (!id.empty()) {
      const int first = index.FindBefore(i, id.c_str());
      if (first >= 0) id = index.MakeNumbered(id, i, numbers[first]);
    } else if (!allowEmpty) {
      id = index.MakeNumbered("x", i, numberForNothing);
    }
    if (int result = mended.KVN_stringArray::Insert(i, id.c_str()); result < 0) return result;
    index.Add(i);
  }
  Swap(mended);
  return KVN_SUCCESS;
}
